// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/terminal_host.h"

#include <unistd.h>

#include "base/encoding.h"
#include "base/interrupt.h"
#include "base/line_ends.h"
#include "base/program_directory.h"

namespace vorpen {
namespace {

void writeToStandardError(const std::string& text) {
    TextOutput error(STDERR_FILENO, false);
    error.write(text);
}

std::optional<bool> meaningOfAnswer(std::string answer) {
    for (char& c : answer) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    if (answer == "y" || answer == "yes" || answer == "ok") return true;
    if (answer == "n" || answer == "no" || answer == "cancel") return false;
    return std::nullopt;
}

volatile std::sig_atomic_t leavingSignalArrived = 0;

void onSignal(int signal) {
    if (signal != SIGINT) leavingSignalArrived = 1;
}

}  // namespace

TerminalHost::TerminalHost(TextOutput& output, TextInput& input, std::optional<std::string> home)
    : output_(output), input_(input), home_(std::move(home)) {
    input_.setBeforeWait([this] { beforeWait(); });
}

void TerminalHost::beforeWait() {
    if (showUnfinished_) showUnfinished_();
    output_.flush();
}

void TerminalHost::messageBox(std::string_view title, std::string_view text) {
    const ActivityLine::Pause pause(activity_);
    output_.flush();
    const std::string heading = title.empty() ? std::string() : std::string(title) + ": ";
    const std::string shown = toUtf8(heading + std::string(text));
    const bool waits = activity_ && activity_->isRunning() && isatty(STDIN_FILENO) && isatty(STDERR_FILENO) &&
                       !SignalsEndWait::mustLeave();
    writeToStandardError(waits ? shown + " [Enter]" : shown + "\n");
    if (!waits) return;
    waitForEnter();
    writeToStandardError("\n");
}

/// A box stands until the user has read it.
void TerminalHost::waitForEnter() {
    const TerminalMode keys(STDIN_FILENO, TerminalMode::Kind::keys);
    std::optional<std::string> character;
    do {
        character = read(TerminalMode::Kind::keys, &TextInput::readCharacter);
    } while (character && *character != "\r" && *character != "\n");
}

bool TerminalHost::ask(std::string_view title, std::string_view text, bool safe) {
    if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO) || SignalsEndWait::mustLeave()) {
        messageBox(title, text);
        return safe;
    }
    const ActivityLine::Pause pause(activity_);
    const SignalsEndWait guard(input_);
    const TerminalMode lines(STDIN_FILENO, TerminalMode::Kind::found);
    for (;;) {
        beforeWait();
        writeToStandardError(toUtf8(std::string(title) + ": " + std::string(text) + " [y/n] "));
        const auto answer = input_.readLine();
        if (!answer) return safe;
        if (const auto meaning = meaningOfAnswer(*answer)) return *meaning;
    }
}

void TerminalHost::setPastedText(std::string_view utf8) {
    pasted_ = withClipboardLineEnds(fromUtf8(utf8));
}

/// What is read for the program that runs; nothing when it is to end. A wait
/// that a signal ended is the end of what runs, and one that came just before
/// the wait, for the run's own handler, has ended it already.
std::optional<std::string> TerminalHost::read(TerminalMode::Kind kind,
                                              std::optional<std::string> (TextInput::*readNext)()) {
    const SignalsEndWait guard(input_);
    const TerminalMode mode(STDIN_FILENO, kind);
    if (isInterrupted()) return std::nullopt;
    auto text = (input_.*readNext)();
    if (!text && input_.interrupted()) requestInterrupt();
    return text;
}

std::optional<int> TerminalHost::readCharacter() {
    const ActivityLine::Pause pause(activity_);
    const auto character = read(TerminalMode::Kind::keys, &TextInput::readCharacter);
    if (!character) return std::nullopt;
    const std::string code = fromUtf8(*character);
    return code.empty() ? 0 : static_cast<unsigned char>(code[0]);
}

std::optional<std::string> TerminalHost::readLine() {
    const ActivityLine::Pause pause(activity_);
    if (readTypedLine_) return readTypedLine_();
    const auto line = read(TerminalMode::Kind::found, &TextInput::readLine);
    if (!line) return std::nullopt;
    return fromUtf8(*line);
}

void TerminalHost::sleepMilliseconds(double milliseconds, bool serveEvents) {
    beforeWait();
    Host::sleepMilliseconds(milliseconds, serveEvents);
}

std::string TerminalHost::programDirectory() {
    if (!programDirectory_) programDirectory_ = makeProgramDirectory(home_, startDirectory());
    return *programDirectory_;
}

std::string TerminalHost::shareDirectory() { return installedShareDirectory(); }

int TerminalHost::runCommand(const std::string& command) {
    const ActivityLine::Pause pause(activity_);
    beforeWait();
    const TerminalMode mode(STDIN_FILENO, TerminalMode::Kind::found);
    return Host::runCommand(command);
}

int TerminalHost::runProgram(const std::string& path, const std::vector<std::string>& arguments,
                             const ProgramSettings& settings) {
    const ActivityLine::Pause pause(activity_);
    beforeWait();
    return Host::runProgram(path, arguments, settings);
}

SignalsEndWait::SignalsEndWait(TextInput& input) : input_(input) {
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int signal : signals_) sigaddset(&blocked, signal);
    sigprocmask(SIG_BLOCK, &blocked, &blockedBefore_);
    struct sigaction action {};
    action.sa_handler = onSignal;
    for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signals_[i], &action, &actionsBefore_[i]);
    input_.setBlockedDuringWait(&blockedBefore_);
}

SignalsEndWait::~SignalsEndWait() {
    input_.setBlockedDuringWait(nullptr);
    // A signal that is still waiting arrives where they are unblocked, while it
    // does no harm. An interrupt goes to whom it is meant for, who runs next;
    // but it never ends the program.
    static_assert(signals_[0] == SIGINT);
    if (actionsBefore_[0].sa_handler != SIG_DFL) sigaction(SIGINT, &actionsBefore_[0], nullptr);
    sigprocmask(SIG_SETMASK, &blockedBefore_, nullptr);
    for (std::size_t i = 0; i < signals_.size(); ++i) sigaction(signals_[i], &actionsBefore_[i], nullptr);
}

void SignalsEndWait::noteLeaving() { leavingSignalArrived = 1; }

bool SignalsEndWait::mustLeave() { return leavingSignalArrived != 0; }

}  // namespace vorpen
