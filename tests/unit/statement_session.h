// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Statements without an engine: text goes through the scanner and the
// statement compiler, and what the statements print is kept.

#include <string>
#include <vector>

#include "base/errors.h"
#include "base/output.h"
#include "eval/run_state.h"
#include "eval/user_func.h"
#include "frontend/input.h"
#include "frontend/statement_compiler.h"
#include "frontend/symbol_table.h"

namespace vorpen {

class StatementSession : private Output {
public:
    StatementSession() : symbols(functions) {
        runState().reset();
        setOutput(this);
    }
    ~StatementSession() override {
        setOutput(nullptr);
        runState().reset();
    }

    /// Compiles a text as one input, typed or as a script with numbered lines.
    StatementPtr compile(const std::string& text, SourceMode mode = SourceMode::text) {
        InputSource input(text, mode);
        StatementCompiler compiler(symbols, input);
        compiler.setQueryHook([this](std::span<const Token> tokens) { queries.push_back(tokens.size()); });
        return compiler.compileAll();
    }
    void run(const std::string& text, SourceMode mode = SourceMode::text) {
        runState().start();
        if (const StatementPtr statement = compile(text, mode)) statement->exe();
    }

    /// The message of the failure, with a letter for its kind: s syntax, r run
    /// time, o operator, p plain, u anything else; "none" when there is none.
    std::string failure(const std::string& text, SourceMode mode = SourceMode::text) {
        try {
            run(text, mode);
            return "none";
        } catch (const SyntaxError& e) {
            return "s " + e.message;
        } catch (const RuntimeError& e) {
            return "r " + e.message;
        } catch (const OperatorFailure& e) {
            return std::string("o ") + e.code;
        } catch (const PlainFailure& e) {
            return "p " + e.message;
        } catch (...) {
            return "u";
        }
    }

    [[nodiscard]] Value& variable(const std::string& name) { return *symbols.classify(name).found; }
    [[nodiscard]] DoubleValue& doubles(const std::string& name) { return asDouble(variable(name)); }
    [[nodiscard]] std::vector<double> items(const std::string& name) {
        const auto span = doubles(name).items();
        return {span.begin(), span.end()};
    }
    [[nodiscard]] double number(const std::string& name) { return variable(name).doubleValue(); }

    UserFunctionTable functions;
    SymbolTable symbols;
    std::vector<std::string> lines;
    std::vector<std::size_t> queries;

private:
    void print(std::string_view text, bool, PrintMode) override { lines.emplace_back(text); }
};

}  // namespace vorpen
