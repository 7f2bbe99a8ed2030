// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_text.h"

#include <algorithm>

#include "console/markup.h"

namespace vorpen {
namespace {

/// A line is broken at a blank only behind this column; a blank further left
/// would leave more gap than text.
constexpr int leastBrokenLine = 15;

/// A line longer than this gives its memory back when its slot is reused.
constexpr std::size_t keptCapacity = 4096;

/// The last place at or before a column that holds a blank, or the bound when
/// there is none above it.
int lastBlank(std::string_view text, int column, int bound) {
    while (column > bound && text[column] != ' ') --column;
    return column;
}

ConsoleText* currentConsole = nullptr;

}  // namespace

void ConsoleText::print(std::string_view text, bool ownLine, PrintMode mode) {
    if (mode != PrintMode::symbols && mode != PrintMode::markup && mode != PrintMode::verbatim) return;
    if (ownLine) endLine();
    // A line feed at the very end has ended the line already.
    bool atLineStart = false;
    if (mode == PrintMode::markup) {
        std::size_t start = 0;
        for (std::size_t feed; (feed = text.find('\n', start)) != std::string_view::npos; start = feed + 1) {
            appendToLine(text.substr(start, feed - start));
            newLine();
        }
        atLineStart = start > 0 && start == text.size();
        appendToLine(text.substr(start));
    } else if (holdsMarkup(text)) {
        appendToLine((mode == PrintMode::symbols ? "{;" : "{:") + std::string(text));
    } else {
        appendToLine(text);
    }
    if (ownLine && !atLineStart) newLine();
}

void ConsoleText::appendToLine(std::string_view text) {
    if (wrap_) {
        const auto used = static_cast<std::int64_t>(current().size());
        const std::int64_t room = wrapWidth_ - used;
        if (static_cast<std::int64_t>(text.size()) > room) {
            appendWrapped(text, static_cast<int>(std::max<std::int64_t>(room, 0)));
            return;
        }
    }
    if (alignment_.tabWidth > 0) {
        appendAligned(text);
    } else {
        current() += text;
    }
}

/// Breaks text that is longer than the room on the current line. The blank at
/// a break is dropped, and no other character.
void ConsoleText::appendWrapped(std::string_view text, int room) {
    const int first = lastBlank(text, room, 0);
    current() += text.substr(0, first);
    std::string_view rest = text.substr(text[first] == ' ' ? first + 1 : first);
    while (rest.size() > static_cast<std::size_t>(wrapWidth_)) {
        newLine();
        const int blank = lastBlank(rest, wrapWidth_, leastBrokenLine);
        const bool broken = rest[blank] == ' ';
        const int width = broken ? blank : wrapWidth_;
        current() = rest.substr(0, width);
        rest.remove_prefix(broken ? width + 1 : width);
    }
    if (rest.empty()) return;
    newLine();
    current() = rest;
}

void ConsoleText::appendAligned(std::string_view text) {
    const auto tab = static_cast<std::size_t>(alignment_.tabWidth);
    const std::size_t used = current().size();
    const std::size_t pad = used == 0 ? 0 : tab - strippedLength(current()) % tab;
    if (used + text.size() + pad > static_cast<std::size_t>(wrapWidth_)) {
        newLine();
    } else if (pad > 0) {
        current() += alignment_.separator;
        current().append(pad - 1, ' ');
    }
    current() += text;
}

void ConsoleText::newLine() {
    if (listener_) listener_(current());
    ++currentLine_;
    if (lines_.size() < ringSize) {
        lines_.emplace_back();
        return;
    }
    std::string& line = current();
    line.clear();
    if (line.capacity() > keptCapacity) line.shrink_to_fit();
}

const std::string& ConsoleText::getLine(std::int64_t number) const {
    static const std::string nothing;
    const bool kept = number >= 0 && number <= currentLine_ && number > currentLine_ - ringSize;
    return kept ? lines_[slot(number)] : nothing;
}

ConsoleText& console() {
    static ConsoleText unread;
    return currentConsole ? *currentConsole : unread;
}

void setConsole(ConsoleText* text) {
    currentConsole = text;
    setOutput(text);
}

}  // namespace vorpen
