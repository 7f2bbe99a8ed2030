// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The text of the console: a ring of the last lines and the rules by which
// text is added to them. Everything that the program says passes through
// `print`. There is always one line being appended to; it may stay unfinished,
// so that the values of `x=1;? y=2;?` follow each other.
//
// Lines are kept marked up. A window draws them when it paints; a terminal has
// no second chance, so a listener hears of each line when it is finished and
// the unfinished one can be read at any time.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/output.h"

namespace vorpen {

/// How text is set in columns: what is appended to a line that is not empty
/// begins at a multiple of `tabWidth`, behind the separator and blanks. A width
/// of 0 means that nothing is aligned. The display of a list uses it with the
/// room for an item as width.
struct ColumnAlignment {
    int tabWidth = 0;
    char separator = ' ';
};

class ConsoleText final : public Output {
public:
    /// What a user can scroll back over. Line n of the session lies in slot
    /// n mod ringSize.
    static constexpr int ringSize = 350;
    static constexpr int defaultWrapWidth = 80;

    using LineListener = std::function<void(const std::string&)>;

    void print(std::string_view text, bool ownLine, PrintMode mode) override;

    /// Appends marked-up text to the current line, wrapped and aligned as the
    /// settings say.
    void appendToLine(std::string_view text);
    /// Finishes the current line, empty or not.
    void newLine();
    /// Finishes the current line unless it is empty.
    void endLine() {
        if (!currentText().empty()) newLine();
    }

    /// The session number of the line being appended to, from 0.
    [[nodiscard]] std::int64_t currentLine() const { return currentLine_; }
    /// The unfinished line.
    [[nodiscard]] const std::string& currentText() const { return lines_[slot(currentLine_)]; }
    /// A line by session number; empty when it is overwritten or does not
    /// exist yet.
    [[nodiscard]] const std::string& getLine(std::int64_t number) const;

    /// Word wrap, for running text.
    [[nodiscard]] bool wrap() const { return wrap_; }
    void setWrap(bool on) { wrap_ = on; }
    /// Columns of the pane, at least 1.
    [[nodiscard]] int wrapWidth() const { return wrapWidth_; }
    void setWrapWidth(int columns) { wrapWidth_ = columns < 1 ? 1 : columns; }
    [[nodiscard]] ColumnAlignment alignment() const { return alignment_; }
    void setAlignment(ColumnAlignment alignment) { alignment_ = alignment; }

    /// Called with each line when it is finished. The listener must not print.
    void setLineListener(LineListener listener) { listener_ = std::move(listener); }

private:
    static std::size_t slot(std::int64_t number) { return static_cast<std::size_t>(number % ringSize); }
    [[nodiscard]] std::string& current() { return lines_[slot(currentLine_)]; }
    void appendWrapped(std::string_view text, int room);
    void appendAligned(std::string_view text);

    std::vector<std::string> lines_ = std::vector<std::string>(1);
    std::int64_t currentLine_ = 0;
    bool wrap_ = false;
    int wrapWidth_ = defaultWrapWidth;
    ColumnAlignment alignment_;
    LineListener listener_;
};

/// The console that values are displayed on; one that nobody reads when none
/// has been set.
ConsoleText& console();

/// Makes a console the current one, and the current output with it; null
/// leaves the program without. The caller keeps ownership.
void setConsole(ConsoleText* text);

}  // namespace vorpen
