// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/edit_row.h"

#include <algorithm>

namespace vorpen {
namespace {

/// A finished line that is longer is left as it is shown, in part: it would
/// push everything else off the screen.
constexpr std::size_t longestRepeated = 2000;

}  // namespace

void EditRow::setColumns(int columns) { width_ = static_cast<std::size_t>(std::max(columns - 1, 1)); }

void EditRow::forget() {
    shown_.clear();
    cursor_ = 0;
    offset_ = 0;
}

void EditRow::erase() {
    if (!shown_.empty()) output_.write("\r\x1b[J");
    forget();
}

void EditRow::eraseFolded(int columns) {
    const std::size_t above = cursor_ / static_cast<std::size_t>(std::max(columns, 1));
    if (above > 0) output_.write("\x1b[" + std::to_string(above) + "A");
    erase();
}

/// The cells of the part that is shown. The line may be very long, so only
/// that part is looked at closely.
EditRow::Cells EditRow::cellsOf(const CommandLine& line, bool withMatch) const {
    const std::string prompt = line.promptColumns() > 0 ? line.prompt() + " " : std::string();
    Cells cells;
    const auto add = [&](std::string_view text, std::size_t column, Colour colour) {
        const std::size_t from = std::max(column, offset_);
        const std::size_t to = std::min(column + text.size(), offset_ + width_);
        for (std::size_t at = from; at < to; ++at) cells.push_back({text[at - column], colour});
    };
    add(prompt, 0, promptColour);
    const std::string_view text = line.line();
    for (const ColouredPiece& piece : colourPieces(text, lineColour))
        add(text.substr(piece.offset, piece.length), prompt.size() + piece.offset, piece.colour);
    const int lit = withMatch ? line.litBracket() : -1;
    const std::size_t place = prompt.size() + static_cast<std::size_t>(std::max(lit, 0)) - offset_;
    if (lit >= 0 && place < cells.size()) cells[place].colour = matchColour;
    return cells;
}

void EditRow::moveTo(std::size_t column) {
    if (column == cursor_) return;
    if (column == 0)
        output_.write("\r");
    else if (column < cursor_)
        output_.write("\x1b[" + std::to_string(cursor_ - column) + "D");
    else
        output_.write("\x1b[" + std::to_string(column - cursor_) + "C");
    cursor_ = column;
}

void EditRow::change(Cells wanted, std::size_t cursor) {
    const std::size_t common = std::min(wanted.size(), shown_.size());
    std::size_t first = 0;
    while (first < common && wanted[first] == shown_[first]) ++first;
    std::size_t end = wanted.size();
    if (wanted.size() == shown_.size())
        while (end > first && wanted[end - 1] == shown_[end - 1]) --end;
    if (first < end) {
        moveTo(first);
        std::string text, style;
        const auto flush = [&] {
            output_.write(styledText(style, text));
            text.clear();
        };
        for (std::size_t at = first; at < end; ++at) {
            const std::string wantedStyle = colourSequence(wanted[at].colour, colours_);
            if (wantedStyle != style) {
                flush();
                style = wantedStyle;
            }
            text += wanted[at].character;
        }
        flush();
        cursor_ = end;
    }
    if (wanted.size() < shown_.size()) {
        moveTo(wanted.size());
        output_.write("\x1b[K");
    }
    shown_ = std::move(wanted);
    moveTo(cursor);
}

void EditRow::show(const CommandLine& line) {
    const auto caret = static_cast<std::size_t>(line.promptColumns() + line.caret());
    // The caret has moved out of the part that is shown: it comes to the middle.
    if (caret < offset_ || caret >= offset_ + width_) offset_ = caret - std::min(caret, width_ / 2);
    if (caret < width_) offset_ = 0;
    change(cellsOf(line, true), caret - offset_);
    output_.flush();
}

void EditRow::finish(const CommandLine& line) {
    const std::size_t length = static_cast<std::size_t>(line.promptColumns()) + line.line().size();
    if (length <= width_) {
        offset_ = 0;
        change(cellsOf(line, false), length);
    } else if (length <= longestRepeated) {
        erase();
        const bool withPrompt = line.promptColumns() > 0;
        output_.write(terminalText(withPrompt ? line.takeEchoLine() : "{b:" + line.line(), colours_));
    }
    output_.write("\r\n");
    output_.flush();
    forget();
}

}  // namespace vorpen
