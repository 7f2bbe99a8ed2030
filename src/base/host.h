// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Everything that the program needs of its surroundings, as one interface.
// The engine and all that lies below it know no window, no terminal and no
// process; they ask the host. There are three hosts: the desktop, the
// terminal, and one for tests that answers from a script. The defaults are
// those of a program that nobody sits at: a question gets the answer that
// loses nothing, the clipboard is empty, there is no key to read.

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

class Host {
public:
    virtual ~Host() = default;

    /// A box with a title and a text that the user dismisses.
    virtual void messageBox(std::string_view title, std::string_view text) = 0;

    /// A question with two answers, true for OK or Yes. `safe` is the answer
    /// taken where no one can be asked.
    virtual bool ask(std::string_view title, std::string_view text, bool safe);

    /// The text on the clipboard, lines ended by carriage return and line
    /// feed; nothing when there is none.
    virtual std::optional<std::string> clipboardText();
    virtual void setClipboardText(std::string_view text);

    /// Lets the user choose a folder; nothing when the choice was cancelled.
    virtual std::optional<std::string> chooseFolder(std::string_view title, std::string_view start);

    /// Serves waiting events without blocking.
    virtual void pumpEvents();

    /// Waits for an event and serves it; false where none can come.
    virtual bool waitForEvent();

    /// One character typed at the console, waited for; nothing at the end of
    /// the input.
    virtual std::optional<int> readCharacter();

    /// A line typed at the console, waited for.
    virtual std::optional<std::string> readLine();

    /// Seconds on a clock that only goes forward.
    virtual double clockSeconds();
    virtual std::tm localTime();

    /// Waits, serving events when `serveEvents` is set.
    virtual void sleepMilliseconds(double milliseconds, bool serveEvents);

    /// The directory that the process was started in.
    virtual std::string startDirectory();

    /// The directory of the program: session files, the folder "resource",
    /// helper programs and their results.
    virtual std::string programDirectory() = 0;

    /// Runs a command of the system with an empty standard input and waits;
    /// answers its status.
    virtual int runCommand(const std::string& command);

    /// Starts a program with arguments and waits; answers its status, or -1
    /// when it could not be started.
    virtual int runProgram(const std::string& path, const std::vector<std::string>& arguments);
};

}  // namespace vorpen
