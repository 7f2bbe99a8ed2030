// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/svg_surface.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "base/encoding.h"

namespace vorpen {
namespace {

/// What viewers show text in that names no size (the value "medium" of the
/// property font-size: World Wide Web Consortium, Scalable Vector Graphics 1.1,
/// 2011, section 10.10).
constexpr int viewerFontSize = 16;

constexpr std::size_t numberSize = 11;  ///< of the text of an int at most

/// The text of a number below 1000, which most pixels are.
struct ShortNumber {
    std::array<char, 3> digits{};
    unsigned char length = 0;
};

constexpr std::array<ShortNumber, 1000> shortNumbers = [] {
    std::array<ShortNumber, 1000> table;
    for (int n = 0; n < 1000; ++n) {
        ShortNumber& text = table[static_cast<std::size_t>(n)];
        for (const int power : {100, 10, 1})
            if (n >= power || power == 1)
                text.digits[text.length++] = static_cast<char>('0' + n / power % 10);
    }
    return table;
}();

/// Writes a number and answers its end; there must be room for numberSize.
char* writeNumber(char* at, int n) {
    const auto index = static_cast<unsigned>(n);
    if (index >= shortNumbers.size()) return std::to_chars(at, at + numberSize, n).ptr;
    const ShortNumber& text = shortNumbers[index];
    std::memcpy(at, &text, sizeof text);
    return at + text.length;
}

std::string_view anchorName(TextAnchor anchor) {
    switch (anchor) {
        case TextAnchor::End: return "end";
        case TextAnchor::Middle: return "middle";
        case TextAnchor::Start: break;
    }
    return "start";
}

std::string_view baselineName(TextBaseline baseline) {
    switch (baseline) {
        case TextBaseline::Alphabetic: return "auto";
        case TextBaseline::Middle: return "middle";
        case TextBaseline::Top: break;
    }
    return "hanging";
}

/// Appends UTF-8 as the content of an element. Characters that no XML text may
/// hold are replaced.
void appendEscaped(std::string& out, std::string_view utf8) {
    constexpr std::string_view replacement = "\xEF\xBF\xBD";
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const char c = utf8[at];
        if (c == '&') {
            out += "&amp;";
        } else if (c == '<') {
            out += "&lt;";
        } else if (c == '>') {
            out += "&gt;";
        } else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
            out += replacement;
        } else if (utf8.substr(at, 3) == "\xEF\xBF\xBE" || utf8.substr(at, 3) == "\xEF\xBF\xBF") {
            out += replacement;
            at += 2;
        } else {
            out += c;
        }
    }
}

}  // namespace

SvgSurface::SvgSurface(std::string& out, int width, int height) : out_(out) {
    out_ += "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n<svg width=\"";
    number(width);
    out_ += "\" height=\"";
    number(height);
    out_ +=
        "\"\nxmlns=\"http://www.w3.org/2000/svg\" stroke=\"black\"  stroke-width=\"1\""
        " stroke-linecap=\"round\" stroke-linejoin=\"round\" fill=\"none\"\n>\n";
}

void SvgSurface::finish() {
    for (; openGroups_ > 0; --openGroups_) out_ += "</svg>\n";
    out_ += "</svg>\n";
}

void SvgSurface::number(int n) {
    std::array<char, numberSize> digits;
    out_.append(digits.data(), writeNumber(digits.data(), n));
}

void SvgSurface::colour(Colour colour) {
    out_ += "\"rgb(";
    number(static_cast<int>(colour & 0xFF));
    out_ += ',';
    number(static_cast<int>(colour >> 8 & 0xFF));
    out_ += ',';
    number(static_cast<int>(colour >> 16 & 0xFF));
    out_ += ")\"";
}

void SvgSurface::beginFrame(const FrameOutline& outline) {
    clipNumber_ = outline.index;
    out_ += "<clipPath id = \"myClip";
    number(clipNumber_);
    out_ += "\"> <rect x = \"";
    number(outline.plotArea.left);
    out_ += "\" y = \"";
    number(outline.plotArea.top);
    out_ += "\" width = \"";
    number(outline.plotArea.width());
    out_ += "\" height = \"";
    number(outline.plotArea.height());
    out_ += "\"/> </clipPath>\n";
}

void SvgSurface::beginStroke(const PlotStyle& style) {
    ++openGroups_;
    out_ += "<svg stroke=";
    colour(style.lineColour);
    out_ += " stroke-width=\"";
    number(style.width);
    out_ += "\">\n";
}

void SvgSurface::beginStrokeAndFill(const PlotStyle& style) {
    ++openGroups_;
    out_ += "<svg stroke=";
    colour(style.lineColour);
    out_ += " stroke-width=\"";
    number(style.width);
    out_ += "\" fill=";
    colour(style.fillColour);
    out_ += ">\n";
}

void SvgSurface::endGroup(GroupEnd end) {
    if (end == GroupEnd::LeftOpen) return;
    --openGroups_;
    out_ += end == GroupEnd::Bare ? "</svg>" : "</svg>\n";
}

void SvgSurface::pointList(std::string_view element, std::span<const Pixel> points) {
    out_ += '<';
    out_ += element;
    out_ += " points=\"\n";
    // Room at once for points of three digits, and a buffer, since a string is
    // slow to append to number by number.
    if (const std::size_t room = out_.size() + points.size() * 10; room > out_.capacity())
        out_.reserve(std::max(room, 2 * out_.capacity()));
    constexpr std::size_t pointSize = 2 * numberSize + 3;
    std::array<char, 4096> buffer;
    char* const last = buffer.data() + buffer.size();
    char* at = buffer.data();
    for (const Pixel& point : points) {
        if (static_cast<std::size_t>(last - at) < pointSize) {
            out_.append(buffer.data(), at);
            at = buffer.data();
        }
        at = writeNumber(at, point.x);
        *at++ = ' ';
        at = writeNumber(at, point.y);
        *at++ = ',';
        *at++ = ' ';
    }
    out_.append(buffer.data(), at);
    out_ += "\n\" clip-path=\"url(#myClip";
    number(clipNumber_);
    out_ += ")\"></";
    out_ += element;
    out_ += ">\n";
}

void SvgSurface::polyline(std::span<const Pixel> points) {
    if (points.size() != 2) return pointList("polyline", points);
    out_ += "<line x1=\"";
    number(points[0].x);
    out_ += "\" y1=\"";
    number(points[0].y);
    out_ += "\" x2=\"";
    number(points[1].x);
    out_ += "\" y2=\"";
    number(points[1].y);
    out_ += "\"></line>\n";
}

void SvgSurface::polygon(std::span<const Pixel> points) { pointList("polygon", points); }

void SvgSurface::box(const PixelRect& edges, bool) {
    out_ += "<rect x = \"";
    number(edges.left);
    out_ += "\" y = \"";
    number(edges.top);
    out_ += "\" width = \"";
    number(edges.width());
    out_ += "\"  height = \"";
    number(edges.height());
    out_ += "\"/>\n";
}

void SvgSurface::bar(const PixelRect& edges) {
    out_ += "<rect x=\"";
    number(edges.left);
    out_ += "\" y=\"";
    number(edges.top);
    out_ += "\" width =\"";
    number(edges.width());
    out_ += "\" height=\"";
    number(edges.height());
    out_ += "\"></rect>\n";
}

void SvgSurface::circle(Pixel centre, int radius) {
    out_ += "<circle cx=\"";
    number(centre.x);
    out_ += "\" cy=\"";
    number(centre.y);
    out_ += "\" r=\"";
    number(radius);
    out_ += "\"/>\n";
}

void SvgSurface::beginText(const TextGroup& group) {
    ++openGroups_;
    angle_ = group.angle;
    out_ += "<svg style=\"fill: #000000; stroke: none; text-anchor:";
    out_ += anchorName(group.anchor);
    out_ += "; dominant-baseline:";
    out_ += baselineName(group.baseline);
    out_ += "; xml-space:preserve\">\n";
}

void SvgSurface::text(Pixel at, std::string_view bytes, const Font& font, Colour) {
    out_ += "<text x=\"";
    number(at.x);
    out_ += "\" y=\"";
    number(at.y);
    out_ += "\" xml:space=\"preserve\"";
    if (angle_ != 0) {
        out_ += " transform=\"translate(";
        number(at.x - at.y);
        out_ += ',';
        number(at.y);
        out_ += ") rotate(";
        number(-angle_);
        out_ += ")\"";
    }
    out_ += ">\n";
    appendEscaped(out_, font.face == Face::Symbol ? symbolToUtf8(bytes) : toUtf8(bytes));
    out_ += "</text>\n";
}

void SvgSurface::endText() { endGroup(GroupEnd::Line); }

int SvgSurface::textWidth(std::string_view bytes, const Font& font) const {
    constexpr std::int64_t limit = std::numeric_limits<short>::max();
    return static_cast<int>(std::min(limit, (faceWidth(font.face, bytes) * viewerFontSize + 500) / 1000));
}

FontMetrics SvgSurface::metrics(const Font&) const {
    // The average width of the lower case letters, and the height of a line of
    // Times, in a font of viewerFontSize.
    return {7, 18};
}

int SvgSurface::rightEdge() const { return std::numeric_limits<int>::max(); }

}  // namespace vorpen
