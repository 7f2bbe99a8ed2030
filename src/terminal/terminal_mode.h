// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the program changes about the terminal, and that it is always undone.
// Keys come one by one only while the program waits for them; while a line
// runs the terminal is in the state in which it was found, so that not even a
// kill that no program can answer leaves it unusable. What can be answered (a
// crash, a hang-up) restores the terminal in its signal handler.

#include <csignal>

namespace vorpen {

/// While it lives, keys are delivered one by one and not shown. Modes do not
/// nest.
class TerminalMode {
public:
    /// `editing` also delivers Control+C and its like as keys, and has the
    /// terminal mark what is pasted. `keys` leaves them their meaning.
    enum class Kind { keys, editing };

    TerminalMode(int file, Kind kind);
    TerminalMode(const TerminalMode&) = delete;
    TerminalMode& operator=(const TerminalMode&) = delete;
    ~TerminalMode();

private:
    bool changed_;
};

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
