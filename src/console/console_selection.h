// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a click in the console's text means: a word that is underlined is a
// question to be asked, any other place selects its line, and dragging selects
// several. A line that shows a typed command stands for that command, without
// its number.

#include <cstdint>
#include <string>
#include <string_view>

#include "console/console_text.h"

namespace vorpen {

/// A word of a line and the code of the style that it is shown in.
struct StyledWord {
    std::string word;
    char style = 0;
    bool operator==(const StyledWord&) const = default;
};

/// The word at a column of a marked-up line; empty, with style 0, on a blank
/// and behind the end. The style is that of the run that begins where the word
/// does. A word at the very start of a line has none, as no run ends there.
[[nodiscard]] StyledWord wordAt(std::string_view line, std::int64_t column);

/// The plain text of a line without a number and ">" in front.
[[nodiscard]] std::string commandOfLine(std::string_view plain);

class ConsoleSelection {
public:
    /// The underlined word under the last click; empty when there is none.
    [[nodiscard]] const std::string& hotWord() const { return hotWord_; }
    void clearHotWord() { hotWord_.clear(); }

    /// Takes a click at a column of a line, by session number.
    void click(const ConsoleText& text, std::int64_t column, std::int64_t line);
    /// Extends the selection to a line; answers whether it changed.
    bool dragTo(const ConsoleText& text, std::int64_t line);

    /// Session numbers, the last one exclusive.
    [[nodiscard]] std::int64_t firstLine() const { return firstLine_; }
    [[nodiscard]] std::int64_t lastLine() const { return lastLine_; }
    [[nodiscard]] std::int64_t column() const { return column_; }
    /// The command of the line that was clicked last.
    [[nodiscard]] const std::string& selectedCommand() const { return selectedCommand_; }
    /// Whether a line is drawn over the colour of a selection.
    [[nodiscard]] bool isHighlighted(std::int64_t line) const {
        return highlighted_ && line >= firstLine_ && line < lastLine_;
    }

    /// The plain text of the selected lines, each ended by carriage return and
    /// line feed; empty without a selection.
    [[nodiscard]] std::string copySelection(const ConsoleText& text) const;

private:
    std::string hotWord_;
    std::int64_t firstLine_ = 0, lastLine_ = 0;
    std::int64_t column_ = 0;
    std::string selectedCommand_;
    bool highlighted_ = false;
};

}  // namespace vorpen
