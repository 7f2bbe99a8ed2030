// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Reading a line at a terminal with the editor of `CommandLine`: its keys, and
// those that a terminal adds. Control+C drops the line, Control+D at an empty
// line ends the input, Control+L clears the screen, Control+Space (or Tab
// behind a letter) completes a name, Control+Z stops the program. A paste of
// one line goes into the line; one of several is handed over as it is.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "console/candidates.h"
#include "console/command_line.h"
#include "terminal/edit_row.h"
#include "terminal/key_decoder.h"
#include "terminal/text_input.h"

namespace vorpen {

class LineEditor {
public:
    enum class End {
        line,     ///< Enter
        paste,    ///< several lines were pasted
        dropped,  ///< Control+C
        input,    ///< there is no more input
    };

    LineEditor(TextInput& input, TextOutput& output, CommandLine& line, ColourDepth colours)
        : input_(input), output_(output), line_(line), row_(output, colours) {}

    void setCompleter(Completer completer) { completer_ = std::move(completer); }

    /// Reads on until something ends it. The line stays in the command line.
    /// The terminal is in its own mode again afterwards.
    End read();
    /// What was pasted, in UTF-8.
    [[nodiscard]] const std::string& pasted() const { return pasted_; }

private:
    std::optional<End> takeKeys();
    std::optional<End> takeKey(const TerminalKey& key);
    std::optional<End> takePaste(const TerminalKey& key);
    void finishRow();
    bool completes(const TerminalKey& key) const;
    void completeLine();
    void clearScreen();
    void stop();
    void noteSize();

    TextInput& input_;
    TextOutput& output_;
    CommandLine& line_;
    EditRow row_;
    KeyDecoder decoder_;
    Completer completer_;
    std::string pasted_;
    int columns_ = 80;
    bool mustStop_ = false;
};

}  // namespace vorpen
