// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/text_writer.h"

#include <cstdint>
#include <string>
#include <vector>

#include "console/markup.h"

namespace vorpen {
namespace {

constexpr Colour overflowColour = 0x0000AA;
constexpr std::string_view overflowSign = "\x85";

/// A line of text while it lives.
class Line {
public:
    Line(DrawingSurface& surface, Pixel anchor) : surface_(surface) { surface_.beginLine(anchor); }
    ~Line() { surface_.endLine(); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

private:
    DrawingSurface& surface_;
};

}  // namespace

void TextWriter::overflowMark(DrawingSurface& surface, Pixel at) const {
    surface.text(at, overflowSign, font(), overflowColour);
}

std::size_t TextWriter::writePlain(DrawingSurface& surface, Pixel at, std::string_view text) const {
    if (text.empty()) return 0;
    surface.text(at, text, font(), colour_);
    const int right = surface.rightEdge(), average = surface.metrics(font()).averageWidth;
    if (static_cast<std::int64_t>(text.size()) * average + at.x > right)
        overflowMark(surface, {right - average - 1, at.y});
    return text.size();
}

std::size_t TextWriter::write(DrawingSurface& surface, int x, int y, std::string_view text) const {
    const int line = top_ + y;
    if (!holdsMarkup(text)) return writePlain(surface, {x, line}, text);

    const Line whole(surface, {x, line});
    std::vector<TextRun> runs;
    const std::string plain = decode(text, colour_, runs);
    const int startX = x, right = surface.rightEdge();
    std::size_t begin = 0;
    for (std::size_t k = 0; k < runs.size(); ++k) {
        const TextRun& run = runs[k];
        const std::string_view part = std::string_view(plain).substr(begin, run.end - begin);
        begin = run.end;
        if (part.empty()) continue;
        const Font runFont = font(run.code);
        surface.text({x, line - run.rise * size_ / 8}, part, runFont, run.colour);
        const bool sharesPlace = run.code == '_' && k + 1 < runs.size() && runs[k + 1].code == '^';
        if (!sharesPlace) x += surface.textWidth(part, runFont);
        if (x <= right) continue;
        if (runs.front().code == '-') {
            // The end stays visible: all again, moved left by what is too much.
            write(surface, right - x + (startX - 1), y, text);
            overflowMark(surface, {0, line});
        } else {
            overflowMark(surface, {right - surface.metrics(font()).averageWidth - 1, line});
        }
        break;
    }
    return plain.size();
}

}  // namespace vorpen
