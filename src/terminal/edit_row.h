// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One row of the terminal in which a line is edited. It knows what stands on
// the screen and sends only what differs, so that typing at the end of a line
// sends the characters typed and nothing else. A line that is longer than the
// row is shown in part, the part around the caret.

#include <string>
#include <string_view>
#include <vector>

#include "console/command_line.h"
#include "console/terminal_text.h"
#include "terminal/text_output.h"

namespace vorpen {

class EditRow {
public:
    EditRow(TextOutput& output, ColourDepth colours) : output_(output), colours_(colours) {}

    /// The columns of the terminal; the last one stays empty, so that no
    /// terminal begins a new row.
    void setColumns(int columns);

    /// Makes the row show the prompt and the line, with the caret.
    void show(const CommandLine& line);
    /// Shows the line as it is when it is finished, without caret and lit
    /// bracket, and whole unless it is very long; the cursor is on the next row afterwards.
    void finish(const CommandLine& line);
    /// Erases the row and forgets it; the next `show` draws it anew.
    void erase();
    /// Erases what the row has become in a terminal of other width, which may
    /// have folded it.
    void eraseFolded(int columns);
    /// Forgets the row, of which nothing is on the screen.
    void forget();

private:
    struct Cell {
        char character;
        Colour colour;
        bool operator==(const Cell&) const = default;
    };
    using Cells = std::vector<Cell>;

    [[nodiscard]] Cells cellsOf(const CommandLine& line, bool withMatch) const;
    void change(Cells wanted, std::size_t cursor);
    void moveTo(std::size_t column);

    TextOutput& output_;
    ColourDepth colours_;
    std::size_t width_ = 79;
    std::size_t offset_ = 0;  ///< of the part that is shown
    Cells shown_;
    std::size_t cursor_ = 0;
};

}  // namespace vorpen
