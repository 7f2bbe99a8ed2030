// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Typing into an engine: each line has a number, is shown like the console
// shows a typed line if that is wanted, and runs to its end. An output line
// that the line before left unfinished is finished first, as in a window,
// where the typed line stands below it.

#include <functional>
#include <string>
#include <string_view>

#include "engine/calc.h"

namespace vorpen {

class TypedSession {
public:
    /// Hears of each finished line of the console, marked up.
    using LineSink = std::function<void(const std::string& line)>;

    /// Lends the engine. Lines that the console has already are passed on at
    /// once.
    TypedSession(Calc& calc, bool echo, LineSink sink);
    TypedSession(const TypedSession&) = delete;
    TypedSession& operator=(const TypedSession&) = delete;
    ~TypedSession();

    /// Types one line, given in UTF-8, and adds it to the history; false when
    /// it failed.
    bool typeLine(std::string_view utf8);

    /// The same for a line in the program's encoding that is in the history
    /// already.
    bool runLine(const std::string& line);
    /// Runs what the host has on its clipboard.
    bool runClipboard();

    /// Changes to the directory of a script and runs it by the command `use`.
    bool runScript(const std::string& path);

    /// Finishes an output line that is still open.
    void finishOutput();

    /// The number of the line that is typed next, from 1.
    [[nodiscard]] int nextNumber() const { return nextNumber_; }

private:
    Calc& calc_;
    bool echo_;
    int nextNumber_ = 1;
};

/// The typed line `text` as the console shows it, marked up.
[[nodiscard]] std::string echoLine(int number, std::string_view text);

}  // namespace vorpen
