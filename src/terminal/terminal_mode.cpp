// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/terminal_mode.h"

#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <string_view>

#include "base/interrupt.h"
#include "eval/run_state.h"

namespace vorpen {
namespace {

constexpr std::string_view pasteMarksOn = "\x1b[?2004h";
constexpr std::string_view pasteMarksOff = "\x1b[?2004l";
constexpr std::string_view plainStyle = "\x1b[0m";

// What a signal handler needs to undo the changes, or to make them anew.
termios found, present;
int changedFile = -1;
std::atomic<bool> isChanged{false}, marksPastes{false};

void writeAll(int file, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) return;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
}

constexpr std::array fatalSignals = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTERM, SIGHUP, SIGQUIT};

void onFatalSignal(int signal) {
    restoreTerminal();
    // The action has gone back to the default, and takes place when this returns.
    raise(signal);
}

void (*leaveProgram)() = nullptr;
double lastInterrupt = 0;

double monotonicSeconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void onInterrupt(int) {
    constexpr double patienceSeconds = 1;
    const int kept = errno;
    const double now = monotonicSeconds();
    const bool unanswered = isInterrupted() && now - lastInterrupt < patienceSeconds;
    lastInterrupt = now;
    runState().interrupt();
    if (unanswered && leaveProgram) leaveProgram();
    errno = kept;
}

}  // namespace

namespace {

termios modeOf(TerminalMode::Kind kind) {
    termios wanted = found;
    if (kind == TerminalMode::Kind::found) return wanted;
    wanted.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    wanted.c_iflag &= ~static_cast<tcflag_t>(ICRNL);
    if (kind == TerminalMode::Kind::editing) {
        wanted.c_lflag &= ~static_cast<tcflag_t>(ISIG | IEXTEN);
        wanted.c_iflag &= ~static_cast<tcflag_t>(IXON | INLCR | IGNCR | ISTRIP);
    }
    wanted.c_cc[VMIN] = 1;
    wanted.c_cc[VTIME] = 0;
    return wanted;
}

}  // namespace

TerminalMode::TerminalMode(int file, Kind kind) : file_(file), changed_(tcgetattr(file, &before_) == 0) {
    isInner_ = isChanged;
    changed_ = changed_ && (isInner_ || kind != Kind::found);
    if (!changed_) return;
    if (isInner_)
        before_ = present;
    else
        found = before_;
    present = modeOf(kind);
    changedFile = file;
    isChanged = true;
    tcsetattr(file, TCSADRAIN, &present);
    if (kind == Kind::editing && isatty(STDOUT_FILENO)) {
        marksPastes = marksPastes_ = true;
        writeAll(STDOUT_FILENO, pasteMarksOn);
    }
}

TerminalMode::~TerminalMode() {
    // Whoever restored the terminal meanwhile wants it left alone.
    if (!changed_ || !isChanged) return;
    present = before_;
    if (!isInner_) isChanged = false;
    // The keys act as before again before it shows.
    tcsetattr(file_, TCSADRAIN, &before_);
    if (marksPastes_ && marksPastes.exchange(false)) writeAll(STDOUT_FILENO, pasteMarksOff);
}

void renewTerminalMode() noexcept {
    if (isChanged && tcgetpgrp(changedFile) == getpgrp()) tcsetattr(changedFile, TCSANOW, &present);
}

void restoreTerminal() noexcept {
    if (marksPastes.exchange(false)) {
        writeAll(STDOUT_FILENO, pasteMarksOff);
        writeAll(STDOUT_FILENO, plainStyle);
    }
    if (isChanged.exchange(false)) tcsetattr(changedFile, TCSANOW, &found);
}

TerminalSize terminalSize(int file) {
    winsize size{};
    if (ioctl(file, TIOCGWINSZ, &size) != 0) size = {};
    return {size.ws_col ? size.ws_col : 80, size.ws_row ? size.ws_row : 24};
}

void restoreTerminalOnFatalSignals() {
    // Room for the handler when it is the stack that has run out.
    alignas(16) static std::array<char, 1 << 16> room;
    stack_t own{};
    own.ss_sp = room.data();
    own.ss_size = room.size();
    sigaltstack(&own, nullptr);
    struct sigaction action {};
    action.sa_handler = onFatalSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_ONSTACK;
    for (const int signal : fatalSignals) sigaction(signal, &action, nullptr);
}

InterruptibleRun::InterruptibleRun(void (*leave)()) {
    leaveProgram = leave;
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, &before_);
}

InterruptibleRun::~InterruptibleRun() {
    sigaction(SIGINT, &before_, nullptr);
    leaveProgram = nullptr;
}

}  // namespace vorpen
