// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The console's lines on their way to standard output: decoded, or with their
// markup. On a terminal the beginning of a line may have to be shown before
// the line is finished, because the program waits for the user; the rest
// follows behind it when the line is finished.

#include <string>

#include "console/terminal_text.h"
#include "terminal/activity_line.h"
#include "terminal/text_output.h"

namespace vorpen {

class Screen {
public:
    /// Without colours the text is plain.
    Screen(TextOutput& output, bool markedUp, ColourDepth colours)
        : output_(output), markedUp_(markedUp), colours_(colours) {}

    /// The row that has to go while something is written; lent.
    void setActivityLine(ActivityLine* line) { activity_ = line; }

    void showLine(const std::string& line);
    void showUnfinished(const std::string& line);

private:
    [[nodiscard]] std::string form(const std::string& line) const;

    TextOutput& output_;
    bool markedUp_;
    ColourDepth colours_;
    ActivityLine* activity_ = nullptr;
    std::string shown_;  ///< what stands on the terminal of the unfinished line
};

}  // namespace vorpen
