// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the program changes about the terminal, and that it is always undone:
// when it waits no more, and when it ends, also by a signal that can be
// answered (a crash, a hang-up), whose handler restores the terminal. While a
// line of the prompt runs, what is typed is not shown between its output but
// kept for the next prompt.

#include <termios.h>

#include <csignal>

namespace vorpen {

/// While it lives, the terminal is in a mode of the program; then in the one
/// before. Modes nest.
class TerminalMode {
public:
    enum class Kind {
        found,    ///< as it was before the program changed anything
        keys,     ///< keys are delivered one by one and not shown; Control+C and its like act
        editing,  ///< so are Control+C and its like, and what is pasted is marked
    };

    TerminalMode(int file, Kind kind);
    TerminalMode(const TerminalMode&) = delete;
    TerminalMode& operator=(const TerminalMode&) = delete;
    ~TerminalMode();

private:
    termios before_{};
    int file_;
    bool changed_;
    bool isInner_ = false;
    bool marksPastes_ = false;
};

/// Takes effect again where a program goes on that was stopped, and stands in
/// the foreground.
void renewTerminalMode() noexcept;

struct TerminalSize {
    int columns, rows;
};

/// At least 1 by 1; 80 by 24 where the terminal does not tell.
[[nodiscard]] TerminalSize terminalSize(int file);

/// From now on a crash and a signal that ends the program restore the terminal
/// before they take their course.
void restoreTerminalOnFatalSignals();

/// Puts the terminal back as it was found. May be called in a signal handler.
void restoreTerminal() noexcept;

/// While it lives, Control+C interrupts what runs. When the program has not
/// answered that, a second one within a second calls `leave`, which must end
/// the program; it is called in the signal handler, in the hope that what hangs
/// does not hold what it needs.
class InterruptibleRun {
public:
    explicit InterruptibleRun(void (*leave)());
    InterruptibleRun(const InterruptibleRun&) = delete;
    InterruptibleRun& operator=(const InterruptibleRun&) = delete;
    ~InterruptibleRun();

private:
    struct sigaction before_ {};
};

}  // namespace vorpen
