// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Statements that evaluate an expression for its own sake, and those that show
// what a statement gave. What is shown becomes the last answer.

#include <string>

#include "eval/statement.h"

namespace vorpen {

/// Evaluates and drops the result.
class EvalStm : public Statement {
public:
    EvalStm(int line, EvaluatablePtr expression) : Statement(line, std::move(expression)) {}
    void exe() override;
};

/// Evaluates into a fresh value, which becomes the last answer and is shown.
class EvalAndDisplayStm final : public EvalStm {
public:
    using EvalStm::EvalStm;
    void exe() override;
};

/// Shows a variable after the assignment to it.
class AssignAndDisplayStm final : public WithStm {
public:
    /// The value is shown behind the name unless the name is empty.
    AssignAndDisplayStm(int line, StatementPtr assignment, Value* value, std::string name)
        : WithStm(line, nullptr, std::move(assignment)), value_(value), name_(std::move(name)) {}
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override { return v == value_ || WithStm::uses(v); }
    [[nodiscard]] const Value* assignedValue() const override { return value_; }

private:
    Value* value_;
    std::string name_;
};

/// Stops in the debugger after a statement.
class BreakPointStm final : public WithStm {
public:
    /// The value is the variable that the statement assigns to; null for an
    /// expression, whose result is then shown. The function is the one whose
    /// body this stands in; null outside of any.
    BreakPointStm(int line, StatementPtr statement, Value* value, const UserFunc* function)
        : WithStm(line, nullptr, std::move(statement)), value_(value), function_(function) {}
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override { return v == value_ || WithStm::uses(v); }
    [[nodiscard]] const Value* assignedValue() const override { return value_; }

private:
    void stopAfterExpression();

    Value* value_;
    const UserFunc* function_;
};

}  // namespace vorpen
