// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The one way out for text, as the layers below the console see it. The
// console implements it; array code uses it for the few warnings that do not
// stop a computation.

#include <string_view>

namespace vorpen {

enum class PrintMode {
    symbols = 0,   ///< symbol names behind a backslash are decoded
    markup = 1,    ///< marked-up text, cut at line feeds
    verbatim = 2,  ///< shown exactly as it stands
};

class Output {
public:
    virtual ~Output() = default;
    /// With ownLine the text gets a line of its own.
    virtual void print(std::string_view text, bool ownLine, PrintMode mode) = 0;
};

/// The output of the current engine; one that drops everything when there is
/// no engine.
Output& output();

/// Makes an output the current one; null goes back to the one that drops
/// everything. The caller keeps ownership.
void setOutput(Output* output);

}  // namespace vorpen
