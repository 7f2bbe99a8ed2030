// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The running program as one object: the console, the input stack, the path
// list, the user functions, the symbols and the compiler. A piece of input
// takes one way through it. All of it is compiled to one tree before anything
// runs, scripts included; the tree is run once and deleted; and whatever was
// thrown on the way ends here as a red line on the console. After a failure
// the input is empty again, and symbols, functions and values keep the state
// that they reached.
//
// There may be several engines in the program, which take turns in its one
// thread. Each has its variables, functions, console, paths, last answer and
// debugger; figures, the mouse and the stored factorisation are shared. What
// built-in functions and statements reach through accessors (console(),
// engineContext(), runState(), the target of events) is that of the engine that
// is current: the one that runs, or between runs the one whose console was
// chosen last.

#include <string>
#include <string_view>

#include "base/host.h"
#include "builtins/engine_context.h"
#include "console/command_history.h"
#include "console/console_text.h"
#include "engine/debugger.h"
#include "engine/event_functions.h"
#include "eval/last_answer.h"
#include "eval/user_func.h"
#include "files/dir.h"
#include "frontend/input.h"
#include "frontend/resource_functions.h"
#include "frontend/statement_compiler.h"
#include "frontend/symbol_table.h"

namespace vorpen {

class Calc {
public:
    /// A primary engine loads the variables, the typed lines and the path list
    /// of the run before from the program's directory and saves them at its
    /// end; a secondary one keeps to itself. The new engine is current.
    explicit Calc(Host& host, bool isSecondary = false);
    /// A secondary engine beside a running one, with the same directories.
    Calc(Host& host, const Calc& running);
    /// The engine must not be running. Another one becomes current, the
    /// primary one if there is one; figures are closed with the last engine.
    ~Calc();
    Calc(const Calc&) = delete;
    Calc& operator=(const Calc&) = delete;

    /// Puts a piece of input on the stack: '>' a typed line, 's' text given by
    /// the program, 'c' the clipboard's text, 'f' a script by name. Any other
    /// kind does nothing.
    void beginInput(std::string_view text, char kind);

    /// Compiles and runs what is on the input stack. Never throws; false when
    /// it ended in a failure. Another engine may be running: it waits, and goes
    /// on afterwards as it was. The same engine refuses a second input while
    /// one is running.
    bool run();
    [[nodiscard]] bool isRunning() const { return isRunning_; }

    /// To be called when the user turns to this engine's console. While an
    /// engine runs it stays current; the chosen one follows it.
    void makeCurrent();
    /// The engine that is current; null without any.
    [[nodiscard]] static Calc* current();
    [[nodiscard]] bool isSecondary() const { return isSecondary_; }

    [[nodiscard]] Host& host() { return host_; }
    [[nodiscard]] ConsoleText& console() { return console_; }
    [[nodiscard]] Dir& paths() { return paths_; }
    /// The typed lines. Whoever takes a line from the user adds it.
    [[nodiscard]] CommandHistory& history() { return history_; }
    [[nodiscard]] SymbolTable& symbols() { return symbols_; }
    [[nodiscard]] UserFunctionTable& functions() { return functions_; }
    [[nodiscard]] ResourceFunctions& resources() { return resources_; }
    [[nodiscard]] EventFunctions& events() { return events_; }
    [[nodiscard]] Debugger& debugger() { return debugger_; }

    /// Saves what the end of a primary engine saves, for a program that cannot
    /// wait for that end. Nothing happens in a secondary one.
    void saveForNextRun();

private:
    class Turn;
    struct Directories {
        std::string start, program;
    };

    Calc(Host& host, bool isSecondary, const Directories& directories);
    void connect();
    void retire();
    bool runInput();
    void loadFormerRun();
    StatementPtr compileInput();
    void printError(const std::string& message);
    void printMessage(const std::string& message);
    void evaluateText(const std::string& text, DoubleValue& out);

    Host& host_;
    const bool isSecondary_;
    bool isRunning_ = false;
    bool refusedInput_ = false;  ///< that came while another one was running
    const std::string programDirectory_;
    ConsoleText console_;
    CommandHistory history_;
    Dir paths_;
    UserInput input_;
    UserFunctionTable functions_;
    SymbolTable symbols_;
    ResourceFunctions resources_;
    StatementCompiler compiler_;
    EventFunctions events_;
    Debugger debugger_;
    LastAnswer answer_;
    EngineContext context_;
    std::string pendingFailure_;  ///< of a script that could not be begun
};

}  // namespace vorpen
