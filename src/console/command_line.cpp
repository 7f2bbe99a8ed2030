// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/command_line.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vorpen {
namespace {

constexpr int tabWidth = 4;

/// What a step by word stops at.
constexpr std::string_view wordStops = ";=([{}])";

/// An opening bracket at place k closes with the one at 7 - k.
constexpr std::string_view brackets = " ([{}])";
constexpr std::size_t lastOpener = 3;

/// 1 to 6 for a bracket, 0 or npos for anything else.
std::size_t bracketIndex(char c) { return c == ' ' ? std::string_view::npos : brackets.find(c); }

/// Columns are signed 32-bit numbers, so this is the longest line.
constexpr std::size_t longestLine = std::numeric_limits<int>::max() / 2;

}  // namespace

std::vector<ColouredPiece> colourPieces(std::string_view text, Colour plain) {
    std::vector<ColouredPiece> pieces;
    const auto add = [&](std::size_t from, std::size_t to, Colour colour) {
        if (to > from) pieces.push_back({from, to - from, colour});
    };
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t opening = std::min(text.find_first_of("'\"()", start), text.size());
        add(start, opening, plain);
        if (opening == text.size()) break;
        const char c = text[opening];
        const bool isQuote = c == '\'' || c == '"';
        const std::size_t closing = isQuote ? text.find(c, opening + 1) : text.find_first_of("()", opening + 1);
        const std::size_t end = closing == std::string_view::npos ? text.size() : closing + 1;
        add(opening, end, delimitedColour);
        start = end;
    }
    return pieces;
}

int matchBracket(std::string_view line, int position, int& count) {
    count = 0;
    if (position < 0 || static_cast<std::size_t>(position) >= line.size()) return -1;
    if (bracketIndex(line[position]) == std::string_view::npos) return -1;
    struct Open {
        int position;
        std::size_t index;
    };
    std::vector<Open> open;
    const int length = static_cast<int>(line.size());
    for (int i = 0; i < length; ++i) {
        const std::size_t index = bracketIndex(line[i]);
        if (index == std::string_view::npos) continue;
        if (index <= lastOpener) {
            ++count;
            open.push_back({i, index});
            continue;
        }
        if (open.empty() || open.back().index != 7 - index) return -i;
        if (i == position) return open.back().position;
        if (open.back().position == position) return i;
        open.pop_back();
    }
    return -1;
}

// ---- keys

int CommandLine::onKey(KeyKind kind, int key, int repeat) {
    int answer = 0;
    if (kind == KeyKind::character) {
        if (key == '\r') {
            history_.add(line_);
            caret_ = 0;
            answer = finished;
        } else if (control_) {
            takeControlCharacter(key);
        } else {
            for (int i = 0; i < repeat; ++i) takeCharacter(key);
        }
    } else {
        switch (key) {
            case keyEnd: caret_ = length(); break;
            case keyHome: caret_ = 0; break;
            case keyLeft: moveLeft(); break;
            case keyRight: moveRight(); break;
            case keyDelete:
                if (caret_ < length()) line_.erase(caret_, 1);
                break;
            case keyUp: recallOlder(); break;
            case keyDown: showRecalled(history_.next()); break;
            case keyF5: command(LineCommand::f5); break;
            case keyF9: command(LineCommand::runClipboard); break;
            default: break;
        }
    }
    lastMessage_ = kind;
    lastKey_ = key;
    return answer;
}

void CommandLine::takeCharacter(int key) {
    switch (key) {
        case '\b':
            if (caret_ > 0) line_.erase(--caret_, 1);
            break;
        case '\t':
            do insert(' ');
            while (caret_ % tabWidth != 0);
            break;
        case 27:
            line_.clear();
            caret_ = 0;
            break;
        default: insert(static_cast<char>(key)); break;
    }
}

void CommandLine::takeControlCharacter(int key) {
    switch (key) {
        case 2:
        case 29: wrapRightSide(); break;
        case 3: command(LineCommand::copy); break;
        case 22: command(LineCommand::paste); break;
        default:
            // A character that is typed with Control and another key together.
            if (key >= ' ' && key != 127) insert(static_cast<char>(key));
            break;
    }
}

void CommandLine::insert(char c) {
    if (line_.size() < longestLine) line_.insert(caret_++, 1, c);
}

void CommandLine::wrapRightSide() {
    if (caret_ == 0) return;
    insert(')');
    std::size_t start = line_.find('=');
    start = start == std::string::npos ? 0 : start + 1;
    if (start > 0 && start < line_.size() && line_[start] == '=') ++start;
    line_.insert(start, 1, '(');
    ++caret_;
}

void CommandLine::moveLeft() {
    if (caret_ == 0) return;
    if (!control_) {
        --caret_;
        return;
    }
    const std::size_t stop = line_.find_last_of(wordStops, caret_ - 1);
    caret_ = stop == std::string::npos ? 0 : static_cast<int>(stop);
}

void CommandLine::moveRight() {
    if (caret_ == length()) return;
    ++caret_;
    if (control_) caret_ = static_cast<int>(std::min(line_.find_first_of(wordStops, caret_), line_.size()));
}

void CommandLine::recallOlder() {
    const bool goesOn = lastMessage_ == KeyKind::down && (lastKey_ == keyUp || lastKey_ == keyDown);
    if (!goesOn) history_.beginSearch(line_);
    showRecalled(history_.previous());
}

void CommandLine::showRecalled(const std::string& answer) {
    if (!answer.empty()) setLine(answer);
}

void CommandLine::paste(std::string_view text) {
    std::string inserted(text);
    if (!text.starts_with('\n')) std::erase_if(inserted, [](char c) { return c == '\n' || c == '\r'; });
    inserted.resize(std::min(inserted.size(), longestLine - std::min(longestLine, line_.size())));
    line_.insert(caret_, inserted);
    caret_ += static_cast<int>(inserted.size());
    lastKey_ = 0;
}

// ---- the line

void CommandLine::setLine(std::string_view text) {
    line_ = text.substr(0, longestLine);
    caret_ = length();
}

std::string CommandLine::takeLine() {
    caret_ = 0;
    return std::exchange(line_, {});
}

void CommandLine::setCaret(int column) { caret_ = std::clamp(column, 0, length()); }

std::string CommandLine::takeEchoLine() const { return "{g " + prompt_ + " {b:" + line_; }

void CommandLine::updatePrompt() {
    prompt_ = std::to_string(commandNumber_) + ">";
    promptColumns_ = static_cast<int>(prompt_.size()) + 1;
}

// ---- drawing

void CommandLine::keepAbove(int clientBottom) {
    lineY_ = std::min(lineY_, clientBottom - metrics_.lineHeight - paneTop_ - 3);
}

void CommandLine::drawPrompt(LineSurface& surface) {
    updatePrompt();
    surface.eraseBelow(y());
    for (const ColouredPiece& piece : colourPieces(prompt_, promptColour))
        surface.drawText(xOfColumn(0), y(), std::string_view(prompt_).substr(piece.offset, piece.length), piece.colour);
}

void CommandLine::drawLine(LineSurface& surface) const {
    const std::string text = line_ + " ";
    const int start = promptColumns();
    const auto draw = [&](std::size_t offset, std::size_t length, Colour colour) {
        surface.drawText(xOfColumn(start + static_cast<int>(offset)), y(),
                         std::string_view(text).substr(offset, length), colour);
    };
    for (const ColouredPiece& piece : colourPieces(text, lineColour)) draw(piece.offset, piece.length, piece.colour);
    if (const int lit = litBracket(); lit >= 0) draw(lit, 1, matchColour);
}

Rectangle CommandLine::caretBox() const {
    return {xOfColumn(promptColumns() + caret_), y(), metrics_.charWidth / 4, metrics_.lineHeight - 2};
}

int CommandLine::litBracket() const {
    if (caret_ == 0) return -1;
    int count = 0;
    const int match = matchBracket(line_, caret_ - 1, count);
    return count >= 2 ? match : -1;
}

}  // namespace vorpen
