// SPDX-License-Identifier: GPL-3.0-or-later

// vorpen-cli: the calculator without a window.

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "base/freed_memory.h"
#include "base/interrupt.h"
#include "console/console_text.h"
#include "console/terminal_text.h"
#include "engine/calc.h"
#include "terminal/activity_line.h"
#include "terminal/debugger_prompt.h"
#include "terminal/options.h"
#include "terminal/prompt_session.h"
#include "terminal/screen.h"
#include "terminal/terminal_host.h"
#include "terminal/terminal_mode.h"
#include "terminal/text_input.h"
#include "terminal/text_output.h"
#include "terminal/typed_session.h"

namespace vorpen {
namespace {

enum ExitStatus { allRan = 0, lineFailed = 1, wrongOptions = 2 };

void complain(const std::string& text) {
    TextOutput error(STDERR_FILENO, false);
    error.writeLine("vorpen-cli: " + text);
}

bool isDirectory(const std::string& path) {
    struct stat facts {};
    return stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

std::string_view environmentText(const char* name) {
    const char* text = std::getenv(name);
    return text ? text : "";
}

bool holds(std::string_view text, std::string_view part) { return text.find(part) != std::string_view::npos; }

/// Whether the terminal understands where to put the cursor.
bool terminalCanEdit() {
    const std::string_view terminal = environmentText("TERM");
    return !terminal.empty() && terminal != "dumb";
}

ColourDepth terminalColours() {
    if (!isatty(STDOUT_FILENO) || !environmentText("NO_COLOR").empty() || !terminalCanEdit()) return ColourDepth::none;
    const std::string_view terminal = environmentText("TERM"), colours = environmentText("COLORTERM");
    if (holds(colours, "truecolor") || holds(colours, "24bit") || holds(terminal, "-direct")) return ColourDepth::full;
    return holds(terminal, "256color") ? ColourDepth::palette : ColourDepth::sixteen;
}

/// Everything that one run of the program is made of.
struct Program {
    const Options& options;
    bool atPrompt;
    Calc& calc;
    TypedSession& session;
    TerminalHost& host;
    TextInput& input;
    TextOutput& output;
    ActivityLine& activity;

    bool typeLine(std::string_view line) {
        const WatchedRun watch(calc, activity);
        return session.typeLine(line);
    }

    /// After an interrupt no further line is typed.
    bool typePipedLines() {
        bool allWell = true;
        while (!isInterrupted()) {
            const auto line = input.readLine();
            if (!line) break;
            allWell &= typeLine(*line);
        }
        return allWell;
    }

    /// For a terminal that cannot show a line that is edited.
    bool promptForLines() {
        bool allWell = true;
        for (;;) {
            session.finishOutput();
            output.write(terminalText(echoLine(session.nextNumber(), ""), false));
            forgetInterrupt();
            std::optional<std::string> line;
            {
                const SignalsEndWait guard(input);
                line = input.readLine();
            }
            if (line) {
                allWell &= typeLine(*line);
                continue;
            }
            output.writeLine("");
            if (!input.interrupted() || SignalsEndWait::mustLeave()) return allWell;
        }
    }

    bool runAtPrompt() {
        if (!terminalCanEdit()) return promptForLines();
        return PromptSession({calc, session, host, input, output, activity}, terminalColours()).run();
    }

    bool runAll() {
        bool allWell = true;
        for (const auto& line : options.lines)
            if (!isInterrupted()) allWell &= typeLine(line);
        if (options.script && !isInterrupted()) {
            const WatchedRun watch(calc, activity);
            return session.runScript(*options.script) && allWell;
        }
        if (!options.lines.empty()) return allWell;
        return atPrompt ? runAtPrompt() : typePipedLines();
    }
};

/// A file that would grow beyond the limit of the user's shell is then a
/// failed write like any other and not the end of the program.
void outliveFileSizeLimit() { signal(SIGXFSZ, SIG_IGN); }

ExitStatus runSession(const Options& options) {
    outliveFileSizeLimit();
    const bool onTerminal = isatty(STDOUT_FILENO);
    const bool atPrompt = options.lines.empty() && !options.script && isatty(STDIN_FILENO) && onTerminal;
    TextOutput output(STDOUT_FILENO, onTerminal);
    TextInput input(STDIN_FILENO);
    TerminalHost host(output, input, options.home);
    Screen screen(output, options.markup, terminalColours());
    // Declared before the engine, since the engine's end may still write.
    ActivityLine activity(STDOUT_FILENO, onTerminal && terminalCanEdit());
    screen.setActivityLine(&activity);
    host.setActivityLine(&activity);
    if (onTerminal || isatty(STDIN_FILENO)) restoreTerminalOnFatalSignals();
    bool allWell = false;
    {
        Calc calc(host, !options.session.value_or(atPrompt));
        TypedSession session(calc, options.echo, [&](const std::string& line) { screen.showLine(line); });
        DebuggerPrompt debugger(host);
        if (onTerminal && isatty(STDIN_FILENO)) calc.debugger().setView(&debugger);
        if (onTerminal) host.setShowUnfinished([&] { screen.showUnfinished(calc.console().currentText()); });
        allWell = Program{options, atPrompt, calc, session, host, input, output, activity}.runAll();
        session.finishOutput();
        host.setShowUnfinished({});
        calc.debugger().setView(nullptr);
    }
    output.flush();
    if (output.failed()) complain("the output could not be written");
    return allWell && !output.failed() ? allRan : lineFailed;
}

ExitStatus start(const std::vector<std::string_view>& arguments) {
    const Options options = parseOptions(arguments);
    if (!options.fault.empty()) {
        complain(options.fault + "\nTry 'vorpen-cli --help'.");
        return wrongOptions;
    }
    if (options.help || options.version) {
        TextOutput output(STDOUT_FILENO, false);
        output.write(options.help ? helpText : std::string_view("vorpen-cli " VORPEN_VERSION "\n"));
        return allRan;
    }
    if (options.home && !isDirectory(*options.home)) {
        complain("no such directory: '" + *options.home + "'");
        return wrongOptions;
    }
    return runSession(options);
}

}  // namespace
}  // namespace vorpen

int main(int count, char** words) {
    vorpen::keepFreedMemory();
    try {
        return vorpen::start(std::vector<std::string_view>(words + (count > 0), words + count));
    } catch (const std::exception& fault) {
        vorpen::complain(std::string("the program could not go on: ") + fault.what());
        return vorpen::lineFailed;
    }
}
