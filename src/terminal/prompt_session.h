// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program at a terminal: a numbered prompt, a line that is edited, its
// results, and so on until the user leaves.

#include "engine/calc.h"
#include "terminal/activity_line.h"
#include "terminal/line_editor.h"
#include "terminal/terminal_host.h"
#include "terminal/terminal_mode.h"
#include "terminal/typed_session.h"

namespace vorpen {

/// What runs may be interrupted by Control+C as long as this lives, and shows
/// that it is alive. A program that does not answer is left, its session saved.
class WatchedRun {
public:
    WatchedRun(Calc& calc, ActivityLine& activity);
    WatchedRun(const WatchedRun&) = delete;
    WatchedRun& operator=(const WatchedRun&) = delete;
    ~WatchedRun();

private:
    InterruptibleRun interruptible_;
    ActivityLine::Run activity_;
};

class PromptSession {
public:
    struct Parts {
        Calc& calc;
        TypedSession& session;
        TerminalHost& host;
        TextInput& input;
        TextOutput& output;
        ActivityLine& activity;
    };

    PromptSession(const Parts& parts, ColourDepth colours);
    PromptSession(const PromptSession&) = delete;
    PromptSession& operator=(const PromptSession&) = delete;
    ~PromptSession();

    /// Goes on until the user leaves; false when a line failed.
    bool run();

private:
    bool runTyped();
    bool runPasted();
    void showPasted(std::string_view text);
    void fitConsole();
    std::optional<std::string> readForProgram();

    /// What is typed while something runs is for the next prompt.
    class KeysForLater {
    public:
        KeysForLater();
        KeysForLater(const KeysForLater&) = delete;
        KeysForLater& operator=(const KeysForLater&) = delete;
        ~KeysForLater();

    private:
        TerminalMode mode_;
        struct sigaction before_ {};
    };

    Parts parts_;
    /// Also for the moments between a line and its run.
    InterruptibleRun interrupts_{nullptr};
    ColourDepth colours_;
    CommandLine line_;
    LineEditor editor_;
};

}  // namespace vorpen
