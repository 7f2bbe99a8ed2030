// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_selection.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "console/markup.h"

namespace vorpen {
namespace {

std::string plainText(std::string_view line) {
    std::vector<TextRun> runs;
    return decode(line, 0, runs);
}

}  // namespace

StyledWord wordAt(std::string_view line, std::int64_t column) {
    std::vector<TextRun> runs;
    const std::string plain = decode(line, 0, runs);
    if (column < 0 || column >= static_cast<std::int64_t>(plain.size())) return {};
    const auto place = static_cast<std::size_t>(column);
    if (plain[place] == ' ') return {};
    const std::size_t blank = plain.rfind(' ', place);
    const std::size_t start = blank == std::string::npos ? 0 : blank + 1;
    const std::size_t end = std::min(plain.find(' ', place), plain.size());
    StyledWord found{plain.substr(start, end - start), 0};
    const auto before = std::ranges::find(runs, start, &TextRun::end);
    if (before != runs.end() && before + 1 != runs.end()) found.style = (before + 1)->code;
    return found;
}

std::string commandOfLine(std::string_view plain) {
    const std::size_t digits = std::min(plain.find_first_not_of("0123456789"), plain.size());
    if (digits == 0 || digits == plain.size() || plain[digits] != '>') return std::string(plain);
    return std::string(plain.substr(std::min(digits + 2, plain.size())));
}

void ConsoleSelection::click(const ConsoleText& text, std::int64_t column, std::int64_t line) {
    hotWord_.clear();
    if (line >= text.currentLine()) {
        firstLine_ = std::max<std::int64_t>(text.currentLine() - 1, 0);
        lastLine_ = text.currentLine();
        selectedCommand_.clear();
        highlighted_ = false;
        return;
    }
    const std::string& marked = text.getLine(line);
    const StyledWord clicked = wordAt(marked, column);
    if (clicked.style == '=') {
        hotWord_ = clicked.word;
        return;
    }
    firstLine_ = std::max<std::int64_t>(line, 0);
    lastLine_ = line + 1;
    column_ = column;
    selectedCommand_ = commandOfLine(plainText(marked));
    highlighted_ = true;
}

bool ConsoleSelection::dragTo(const ConsoleText& text, std::int64_t line) {
    if (line < 0 || line >= text.currentLine()) return false;
    const std::int64_t first = firstLine_, last = lastLine_;
    lastLine_ = line + 1;
    if (line < firstLine_) {
        lastLine_ = firstLine_;
        firstLine_ = line;
    }
    const bool wasHighlighted = std::exchange(highlighted_, true);
    return !wasHighlighted || first != firstLine_ || last != lastLine_;
}

std::string ConsoleSelection::copySelection(const ConsoleText& text) const {
    std::string copied;
    // Lines that are overwritten by now are empty, however many were selected.
    const std::int64_t first = std::max(firstLine_, text.currentLine() - ConsoleText::ringSize);
    if (!highlighted_) return copied;
    for (std::int64_t n = first; n < lastLine_; ++n)
        copied += commandOfLine(plainText(text.getLine(n))) + "\r\n";
    return copied;
}

}  // namespace vorpen
