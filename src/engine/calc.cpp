// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/calc.h"

#include <exception>

#include "base/errors.h"
#include "base/interrupt.h"
#include "builtins/engine_context.h"
#include "builtins/fit_figure_drawing.h"
#include "engine/query.h"
#include "engine/session.h"
#include "eval/run_state.h"
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

}  // namespace

Calc::Calc(Host& host, bool isSecondary)
    : host_(host),
      isSecondary_(isSecondary),
      programDirectory_(host.programDirectory()),
      paths_(host.startDirectory()),
      input_(paths_),
      symbols_(functions_),
      resources_(symbols_, input_),
      compiler_(symbols_, input_),
      events_(functions_, host_) {
    setConsole(&console_);
    runState().reset();
    EngineContext& context = engineContext();
    context = EngineContext{};
    context.host = &host_;
    context.paths = &paths_;
    context.evaluateText = [this](const std::string& text, DoubleValue& out) { evaluateText(text, out); };
    context.drawFit = drawFitFigure;
    interaction().setTarget(&events_);
    installGslErrorHandler();
    resources_.addDirectory(programDirectory_);
    resources_.addDirectory(host_.shareDirectory());
    symbols_.setResourceLoader([this](const std::string& name) { return resources_.load(name); });
    compiler_.setQueryHook([this](std::span<const Token> tokens) { query(tokens, symbols_, host_, console_); });
    if (!isSecondary_) loadFormerRun();
}

Calc::~Calc() {
    saveForNextRun();
    interaction().setTarget(nullptr);
    interaction().reset();
    figureList().reset();
    engineContext() = EngineContext{};
    runState().reset();
    setConsole(nullptr);
}

void Calc::loadFormerRun() {
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
    symbols_.forgetRemoved();
    resources_.beginInput();
    // The wish to interrupt may come before the first statement, and is kept;
    // whoever waits for the next input forgets it.
    runState().start();
    runState().forgetNotedLine();
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
