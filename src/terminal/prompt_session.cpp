// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/prompt_session.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "base/encoding.h"
#include "base/interrupt.h"
#include "engine/completion.h"
#include "terminal/terminal_mode.h"

namespace vorpen {
namespace {

/// Fewer columns than this are no reason to wrap: nothing could be read.
constexpr int leastWrapWidth = 20;

/// Of what was pasted, the lines that are shown before it runs.
constexpr int pastedLinesShown = 20;

/// What those type who look for the way out.
bool isFarewell(std::string_view line) {
    constexpr std::string_view words[] = {"exit", "exit()", "quit", "quit()", "bye", "logout", "q"};
    return std::ranges::find(words, line) != std::end(words);
}

Calc* runningCalc = nullptr;

/// Runs in a signal handler while the program hangs in something that looks at
/// no flag. Saving there may fail; then the files of the former session stand,
/// since each takes its place by a rename, and the alarm ends the program.
void leaveAndSave() {
    constexpr unsigned patienceSeconds = 5;
    SignalsEndWait::noteLeaving();
    signal(SIGALRM, SIG_DFL);
    alarm(patienceSeconds);
    if (runningCalc) runningCalc->saveForNextRun();
    restoreTerminal();
    constexpr std::string_view farewell = "\r\nleft while a computation was running\r\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, farewell.data(), farewell.size());
    _exit(128 + SIGINT);
}

}  // namespace

WatchedRun::WatchedRun(Calc& calc, ActivityLine& activity) : interruptible_(leaveAndSave), activity_(activity) {
    runningCalc = &calc;
}

WatchedRun::~WatchedRun() { runningCalc = nullptr; }

PromptSession::PromptSession(const Parts& parts, ColourDepth colours)
    : parts_(parts),
      colours_(colours),
      line_(parts.calc.history()),
      editor_(parts.input, parts.output, line_, colours) {
    editor_.setCompleter([this](std::string_view line, std::size_t caret) {
        return completionAt(parts_.calc, line, caret);
    });
    parts_.host.setLineReader([this] { return readForProgram(); });
}

PromptSession::~PromptSession() { parts_.host.setLineReader({}); }

bool PromptSession::run() {
    bool allWell = true;
    for (;;) {
        parts_.session.finishOutput();
        parts_.output.flush();
        if (SignalsEndWait::mustLeave()) return allWell;
        line_.updatePrompt();
        forgetInterrupt();
        const LineEditor::End end = editor_.read();
        // A request to leave that came just behind the line holds: who sent it
        // will not wait for what the line does.
        if (SignalsEndWait::mustLeave()) return allWell;
        switch (end) {
            case LineEditor::End::line: allWell &= runTyped(); break;
            case LineEditor::End::paste: allWell &= runPasted(); break;
            case LineEditor::End::dropped: line_.takeLine(); break;
            case LineEditor::End::input: return allWell;
        }
    }
}

PromptSession::KeysForLater::KeysForLater() : mode_(STDIN_FILENO, TerminalMode::Kind::keys) {
    // The shell has its own mode while the program is stopped.
    struct sigaction action {};
    action.sa_handler = [](int) { renewTerminalMode(); };
    action.sa_flags = SA_RESTART;
    sigaction(SIGCONT, &action, &before_);
}

PromptSession::KeysForLater::~KeysForLater() { sigaction(SIGCONT, &before_, nullptr); }

bool PromptSession::runTyped() {
    const std::string line = line_.takeLine();
    fitConsole();
    const KeysForLater keys;
    const WatchedRun watch(parts_.calc, parts_.activity);
    const bool well = parts_.session.runLine(line);
    line_.countCommand();
    if (!well && isFarewell(line)) parts_.output.writeLine("(Control+D leaves)");
    return well;
}

/// The line that was being typed is still there afterwards.
bool PromptSession::runPasted() {
    showPasted(editor_.pasted());
    parts_.host.setPastedText(editor_.pasted());
    fitConsole();
    const KeysForLater keys;
    const WatchedRun watch(parts_.calc, parts_.activity);
    const bool well = parts_.session.runClipboard();
    line_.countCommand();
    return well;
}

void PromptSession::showPasted(std::string_view text) {
    std::string heading = "{g " + line_.prompt() + " {b:";
    int shown = 0, lines = 0;
    for (std::size_t start = 0; start < text.size(); ++lines) {
        const std::size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        if (shown < pastedLinesShown) {
            parts_.output.writeLine(terminalText(heading + fromUtf8(text.substr(start, end - start)), colours_));
            heading = "{g " + std::string(line_.prompt().size(), ' ') + " {b:";
            ++shown;
        }
        start = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
    }
    if (lines > shown) parts_.output.writeLine("(" + std::to_string(lines - shown) + " more lines)");
    parts_.output.flush();
}

void PromptSession::fitConsole() {
    const int columns = terminalSize(STDOUT_FILENO).columns;
    parts_.calc.console().setWrapWidth(std::max(columns, leastWrapWidth));
}

std::optional<std::string> PromptSession::readForProgram() {
    parts_.session.finishOutput();
    parts_.output.flush();
    if (isInterrupted()) return std::nullopt;
    line_.setPromptVisible(false);
    LineEditor::End end = editor_.read();
    line_.setPromptVisible(true);
    if (end == LineEditor::End::paste) {
        // Its first line is what was asked for, the others answer what is asked next.
        const std::string& text = editor_.pasted();
        const std::size_t first = text.find_first_of("\r\n");
        const std::size_t next = text.find_first_not_of('\n', first + 1);
        if (next != std::string::npos) parts_.input.giveBack(std::string_view(text).substr(next));
        return line_.takeLine() + fromUtf8(std::string_view(text).substr(0, first));
    }
    if (end == LineEditor::End::line) return line_.takeLine();
    line_.takeLine();
    if (end == LineEditor::End::dropped || SignalsEndWait::mustLeave()) requestInterrupt();
    return std::nullopt;
}

}  // namespace vorpen
