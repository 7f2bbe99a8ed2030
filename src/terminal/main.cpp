// SPDX-License-Identifier: GPL-3.0-or-later

// vorpen-cli: the calculator without a window.

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "console/console_text.h"
#include "console/terminal_text.h"
#include "engine/calc.h"
#include "terminal/options.h"
#include "terminal/screen.h"
#include "terminal/terminal_host.h"
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

bool terminalHasColours() {
    const char* off = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) && !(off && *off) && !(terminal && std::string_view(terminal) == "dumb");
}

Screen::Text textFor(const Options& options) {
    if (options.markup) return Screen::Text::markedUp;
    return terminalHasColours() ? Screen::Text::coloured : Screen::Text::plain;
}

bool typePipedLines(TypedSession& session, TextInput& input) {
    bool allWell = true;
    while (const auto line = input.readLine()) allWell &= session.typeLine(*line);
    return allWell;
}

bool promptForLines(TypedSession& session, TextInput& input, TextOutput& output) {
    bool allWell = true;
    for (;;) {
        session.finishOutput();
        output.write(terminalText(echoLine(session.nextNumber(), ""), terminalHasColours()));
        std::optional<std::string> line;
        {
            const SignalsEndWait guard(input);
            line = input.readLine();
        }
        if (line) {
            allWell &= session.typeLine(*line);
            continue;
        }
        output.writeLine("");
        if (!input.interrupted() || SignalsEndWait::mustLeave()) return allWell;
    }
}

bool runAll(const Options& options, bool atPrompt, TypedSession& session, TextInput& input,
            TextOutput& output) {
    bool allWell = true;
    for (const auto& line : options.lines) allWell &= session.typeLine(line);
    if (options.script) return session.runScript(*options.script) && allWell;
    if (!options.lines.empty()) return allWell;
    return atPrompt ? promptForLines(session, input, output) : typePipedLines(session, input);
}

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
    Screen screen(output, textFor(options));
    bool allWell = false;
    {
        Calc calc(host, !options.session.value_or(atPrompt));
        TypedSession session(calc, options.echo, [&](const std::string& line) { screen.showLine(line); });
        if (onTerminal) host.setShowUnfinished([&] { screen.showUnfinished(calc.console().currentText()); });
        allWell = runAll(options, atPrompt, session, input, output);
        session.finishOutput();
        host.setShowUnfinished({});
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
    try {
        return vorpen::start(std::vector<std::string_view>(words + (count > 0), words + count));
    } catch (const std::exception& fault) {
        vorpen::complain(std::string("the program could not go on: ") + fault.what());
        return vorpen::lineFailed;
    }
}
