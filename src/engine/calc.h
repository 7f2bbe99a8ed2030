// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The running program as one object: the console, the input stack, the path
// list, the user functions, the symbols and the compiler. A piece of input
// takes one way through it. All of it is compiled to one tree before anything
// runs, scripts included; the tree is run once and deleted; and whatever was
// thrown on the way ends here as a red line on the console. After a failure
// the input is empty again, and symbols, functions and values keep the state
// that they reached.

#include <string>
#include <string_view>

#include "base/host.h"
#include "console/command_history.h"
#include "console/console_text.h"
#include "engine/event_functions.h"
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
    /// end; a secondary one keeps to itself.
    explicit Calc(Host& host, bool isSecondary = false);
    ~Calc();
    Calc(const Calc&) = delete;
    Calc& operator=(const Calc&) = delete;

    /// Puts a piece of input on the stack: '>' a typed line, 's' text given by
    /// the program, 'c' the clipboard's text, 'f' a script by name. Any other
    /// kind does nothing.
    void beginInput(std::string_view text, char kind);

    /// Compiles and runs what is on the input stack. Never throws; false when
    /// it ended in a failure.
    bool run();

    [[nodiscard]] Host& host() { return host_; }
    [[nodiscard]] ConsoleText& console() { return console_; }
    [[nodiscard]] Dir& paths() { return paths_; }
    /// The typed lines. Whoever takes a line from the user adds it.
    [[nodiscard]] CommandHistory& history() { return history_; }
    [[nodiscard]] SymbolTable& symbols() { return symbols_; }
    [[nodiscard]] UserFunctionTable& functions() { return functions_; }
    [[nodiscard]] ResourceFunctions& resources() { return resources_; }
    [[nodiscard]] EventFunctions& events() { return events_; }

    /// Saves what the end of a primary engine saves, for a program that cannot
    /// wait for that end. Nothing happens in a secondary one.
    void saveForNextRun();

private:
    void loadFormerRun();
    StatementPtr compileInput();
    void printError(const std::string& message);
    void printMessage(const std::string& message);
    void evaluateText(const std::string& text, DoubleValue& out);

    Host& host_;
    const bool isSecondary_;
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
    std::string pendingFailure_;  ///< of a script that could not be begun
};

}  // namespace vorpen
