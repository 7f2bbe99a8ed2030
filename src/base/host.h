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

/// How a program is started and what it may use up.
struct ProgramSettings {
    std::string directory;         ///< its working directory; empty: that of this process
    double secondsAllowed = 0;     ///< it is ended when they are over; 0: as long as it likes
    std::int64_t largestFile = 0;  ///< bytes that it may write into one file; 0: any number
    bool silent = false;           ///< what it writes on its standard streams goes nowhere
};

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

    /// The directory of what comes with the program and is only read, such as
    /// its own folder "resource"; empty when there is none.
    virtual std::string shareDirectory();

    /// Runs a command of the system with an empty standard input and waits;
    /// answers its status.
    virtual int runCommand(const std::string& command);

    /// The directories beside the program's own in which helper programs are
    /// looked for: that of the executable, and where an installation puts them.
    virtual std::vector<std::string> helperDirectories();

    /// Starts a program with arguments, an empty standard input and no shell,
    /// and waits; answers its status, or -1 when it could not be started, did
    /// not end by itself or was ended because its time was over.
    virtual int runProgram(const std::string& path, const std::vector<std::string>& arguments,
                           const ProgramSettings& settings = {});
};

/// The directory of the executable of this process; empty when it is not known.
[[nodiscard]] std::string executableDirectory();

}  // namespace vorpen
