// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/calc.h"

#include <algorithm>
#include <cassert>
#include <exception>
#include <vector>

#include "base/encoding.h"
#include "base/errors.h"
#include "base/interrupt.h"
#include "base/replace_file.h"
#include "builtins/engine_context.h"
#include "builtins/fit_figure_drawing.h"
#include "engine/query.h"
#include "engine/session.h"
#include "eval/run_state.h"
#include "eval/stack_room.h"
#include "frontend/function_declaration.h"
#include "frontend/parser.h"
#include "numerics/gsl_errors.h"
#include "plot/figure_list.h"

namespace vorpen {
namespace {

/// The only line of an input that is a text: the evaluator of `eval` needs no
/// further ones.
class OneLine final : public LexInput {
public:
    bool getLine(std::string&, bool throwAtEnd, bool) override {
        if (throwAtEnd) throw OperatorFailure{'e'};
        return false;
    }
    [[nodiscard]] bool isInteractive() const override { return false; }
    [[nodiscard]] int lineNumber() const override { return 0; }
    void sourceName(std::string& out) const override { out.clear(); }
    [[nodiscard]] int commentStartLine() const override { return -1; }
};

/// All engines of the program and whose turn it is.
struct Engines {
    std::vector<Calc*> all;  ///< in the order in which they were made
    Calc* chosen = nullptr;  ///< by the user
    /// What runs, each waiting for the one behind it.
    std::vector<Calc*> running;

    [[nodiscard]] Calc* current() const { return running.empty() ? chosen : running.back(); }
};

Engines& engines() {
    static Engines engines;
    return engines;
}

}  // namespace

/// The run of one engine, while which it is current.
class Calc::Turn {
public:
    explicit Turn(Calc& calc) : calc_(calc) {
        engines().running.push_back(&calc);
        calc_.isRunning_ = true;
        calc_.connect();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn() {
        calc_.isRunning_ = false;
        engines().running.pop_back();
        if (Calc* next = engines().current(); next && next != &calc_) next->connect();
    }

private:
    Calc& calc_;
    RunPause formerRun_;
};

Calc::Calc(Host& host, bool isSecondary)
    : Calc(host, isSecondary, {host.startDirectory(), host.programDirectory()}) {}

Calc::Calc(Host& host, const Calc& running)
    : Calc(host, true, {running.paths_.current(), running.programDirectory_}) {}

Calc::Calc(Host& host, bool isSecondary, const Directories& directories)
    : host_(host),
      isSecondary_(isSecondary),
      programDirectory_(directories.program),
      paths_(directories.start),
      input_(paths_),
      symbols_(functions_),
      resources_(symbols_, input_),
      compiler_(symbols_, input_),
      events_(functions_, host_),
      debugger_(host_) {
    context_.host = &host_;
    context_.paths = &paths_;
    context_.evaluateText = [this](const std::string& text, DoubleValue& out) { evaluateText(text, out); };
    context_.drawFit = drawFitFigure;
    installGslErrorHandler();
    resources_.addDirectory(programDirectory_);
    resources_.addDirectory(host_.shareDirectory());
    symbols_.setResourceLoader([this](const std::string& name) { return resources_.load(name); });
    compiler_.setQueryHook([this](std::span<const Token> tokens) { query(tokens, symbols_, host_, console_); });
    if (engines().all.empty()) runState().reset();
    engines().all.push_back(this);
    makeCurrent();
    try {
        if (!isSecondary_) loadFormerRun();
    } catch (...) {
        retire();
        throw;
    }
}

Calc::~Calc() {
    assert(!isRunning_);
    saveForNextRun();
    retire();
}

/// Leaves the program to the other engines.
void Calc::retire() {
    std::vector<Calc*>& others = engines().all;
    std::erase(others, this);
    if (!others.empty()) {
        const auto primary = std::ranges::find_if(others, [](const Calc* calc) { return !calc->isSecondary_; });
        if (engines().chosen == this) engines().chosen = primary == others.end() ? others.front() : *primary;
        engines().current()->connect();
        return;
    }
    engines().chosen = nullptr;
    interaction().setTarget(nullptr);
    interaction().reset();
    figureList().reset();
    setEngineContext(nullptr);
    runState().reset();
    setConsole(nullptr);
}

Calc* Calc::current() { return engines().current(); }

void Calc::makeCurrent() {
    engines().chosen = this;
    engines().current()->connect();
}

/// Everything of an engine that others reach without knowing it.
void Calc::connect() {
    setConsole(&console_);
    setEngineContext(&context_);
    runState().useAnswer(&answer_);
    runState().breakHandler = &debugger_;
    runState().debugStepping = debugger_.isStepping();
    interaction().setTarget(&events_);
}

void Calc::loadFormerRun() {
    removeAbandonedTemporaries(toUtf8(programDirectory_), "vorpen_");
    loadSession(programDirectory_, symbols_, host_);
    history_.loadHistory(programDirectory_);
    paths_.load(programDirectory_, host_);
}

void Calc::saveForNextRun() {
    if (isSecondary_) return;
    // Whatever happens to one of the files, the others are still written.
    const auto attempt = [](const auto& save) {
        try {
            save();
        } catch (const std::exception&) {
            // out of memory: the former file stands
        }
    };
    attempt([this] { saveSession(programDirectory_, symbols_, host_); });
    attempt([this] { history_.saveHistory(programDirectory_); });
    attempt([this] { paths_.save(programDirectory_); });
}

void Calc::beginInput(std::string_view text, char kind) {
    refusedInput_ = isRunning_;
    if (refusedInput_) return;
    switch (kind) {
        case '>':
        case 's': input_.beginText(std::string(text), kind); break;
        case 'c': input_.beginText(host_.clipboardText().value_or(std::string()), 'c'); break;
        case 'f':
            try {
                input_.beginFile(std::string(text));
            } catch (const PlainFailure& failure) {
                pendingFailure_ = failure.message;
            }
            break;
        default: break;
    }
}

StatementPtr Calc::compileInput() {
    try {
        if (!pendingFailure_.empty()) throw PlainFailure{std::exchange(pendingFailure_, {})};
        StatementPtr statement = compiler_.compileAll();
        compilePendingFunctions(compiler_);
        // What a query has left unread does not run with the next input.
        input_.abandon();
        return statement;
    } catch (...) {
        compiler_.reset();
        resources_.dropIncomplete();
        input_.abandon();
        throw;
    }
}

bool Calc::run() {
    if (isRunning_) {
        // Its tree and its values are in use.
        if (std::exchange(refusedInput_, false)) printMessage("wait for the end of the former input");
        return false;
    }
    const Turn turn(*this);
    return runInput();
}

bool Calc::runInput() {
    symbols_.forgetRemoved();
    resources_.beginInput();
    // The wish to interrupt may come before the first statement, and is kept;
    // whoever waits for the next input forgets it.
    runState().start();
    runState().forgetNotedLine();
    debugger_.beginRun();
    try {
        if (const StatementPtr statement = compileInput()) statement->exe();
        checkInterrupt();
        return true;
    } catch (const SyntaxError& error) {
        printError(error.message);
    } catch (const RuntimeError& error) {
        printMessage(error.message);
    } catch (const OperatorFailure& failure) {
        printMessage(operatorFailureText(failure.code));
    } catch (const PlainFailure& failure) {
        printMessage(failure.message);
    } catch (...) {
        printMessage("unspecified error");
    }
    return false;
}

void Calc::printError(const std::string& message) {
    if (input_.errorLine() > 0)
        console_.print("{r at line " + std::to_string(input_.errorLine()) + "}", true, PrintMode::markup);
    // The source stands as it was typed, whatever braces it holds.
    console_.print(input_.errorText(), true, PrintMode::verbatim);
    printMessage(message);
}

void Calc::printMessage(const std::string& message) {
    // Behind one of these characters the closing brace would be read with it;
    // an opener without its brace styles the line to its end all the same.
    const bool joinsBrace = !message.empty() && std::string_view("_^\\").find(message.back()) != std::string_view::npos;
    console_.print("{r " + message + (joinsBrace ? "" : "}"), true, PrintMode::markup);
}

void Calc::evaluateText(const std::string& text, DoubleValue& out) {
    // A text may evaluate itself.
    Require(stackHasRoom(), "max recursion depth exceeded", "eval");
    try {
        resources_.beginInput();
        OneLine noFurtherLines;
        ScannedLine line = scanLine(text, noFurtherLines);
        auto statements = splitStatements(std::move(line), false);
        if (statements.size() != 1) throw SyntaxError{"one expression is wanted"};
        const EvaluatablePtr expression = Parser(symbols_).parseOperand(statements.front());
        compilePendingFunctions(compiler_);
        if (expression->type() == COMPLEX_VAL || expression->type() == LIST_VAL) throw SyntaxError{"not a real value"};
        Workspace workspace(expression->type());
        out.copyFrom(*expression->pValue(workspace.get()));
    } catch (const SyntaxError&) {
        resources_.dropIncomplete();
        raiseRuntimeError("Not yet implemented (Evaluate " + text + ")");
    }
}

}  // namespace vorpen
