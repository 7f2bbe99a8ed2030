// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The console's lines on their way to standard output: decoded, or with their
// markup. On a terminal the beginning of a line may have to be shown before
// the line is finished, because the program waits for the user; the rest
// follows behind it when the line is finished.

#include <string>

#include "terminal/text_output.h"

namespace vorpen {

class Screen {
public:
    enum class Text { markedUp, plain, coloured };

    Screen(TextOutput& output, Text text) : output_(output), text_(text) {}

    void showLine(const std::string& line);
    void showUnfinished(const std::string& line);

private:
    [[nodiscard]] std::string form(const std::string& line) const;

    TextOutput& output_;
    Text text_;
    std::string shown_;  ///< what stands on the terminal of the unfinished line
};

}  // namespace vorpen
