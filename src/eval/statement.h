// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A compiled statement. Running it is one virtual call, with no interpreter
// loop around it: a block calls its statements, a loop calls its body.
//
// Three things cut that walk short. `return` stops the run state, which every
// block and loop asks whether it goes on. `break` and
// `continue` do the same with a note for the loop; where no loop stands around
// them in their function they are thrown, up to a loop that called it. A
// failure passes through to the engine.
//
// `uses` finds the readers of a variable, so that the compiler can refuse to
// clear or retype one that a compiled statement points at. A function is found
// the same way, by the value that stands for it in its calls.

#include <memory>
#include <string_view>
#include <vector>

#include "eval/evaluatable.h"
#include "eval/run_state.h"

namespace vorpen {

class Statement {
public:
    virtual ~Statement() = default;
    Statement& operator=(const Statement&) = delete;

    virtual void exe() = 0;

    /// True if running this statement reads (or, for an assignment, changes)
    /// the value.
    [[nodiscard]] virtual bool uses(const Value* v) const { return expression_ && expression_->uses(v); }

    /// The variable that this statement gave a value, for a debugger; or null.
    [[nodiscard]] virtual const Value* assignedValue() const { return nullptr; }

    /// The right side, condition or call; may be missing.
    [[nodiscard]] Evaluatable* expression() const { return expression_.get(); }
    [[nodiscard]] EvaluatablePtr takeExpression() { return std::move(expression_); }
    /// The source line: 0 for a typed one.
    [[nodiscard]] int line() const { return line_; }

protected:
    explicit Statement(int line, EvaluatablePtr expression = nullptr)
        : expression_(std::move(expression)), line_(line) {}
    Statement(const Statement& other) : line_(other.line_) {}

    /// A check of the statement's own: shows the line before it fails.
    void require(bool condition, std::string_view message, std::string_view context = {}) const {
        if (!condition) [[unlikely]]
            fail(message, context);
    }
    /// Shows the line and raises a RuntimeError.
    [[noreturn]] void fail(std::string_view message, std::string_view context = {}) const;

private:
    EvaluatablePtr expression_;
    int line_;
};

using StatementPtr = std::unique_ptr<Statement>;

/// The statements of one level, run in order.
using Block = std::vector<StatementPtr>;

/// A sequence of statements as one.
class BlockStm final : public Statement {
public:
    BlockStm(int line, Block statements) : Statement(line), statements_(std::move(statements)) {}
    void exe() override { runFrom(0); }
    /// Goes on behind statement number k (from 0), which has just been run.
    void goOnBehind(std::size_t k);
    [[nodiscard]] bool uses(const Value* v) const override;
    [[nodiscard]] Block& statements() { return statements_; }
    [[nodiscard]] const Block& statements() const { return statements_; }

private:
    void runFrom(std::size_t first);

    Block statements_;
};

/// A step of the debugger: stops behind a statement of a block that has run,
/// unless it left for the loop around it.
void stopBehind(const Statement& statement);

/// A body as it is run: a block of one statement is passed by. The statement
/// is not owned.
class RunnableBody {
public:
    RunnableBody() = default;
    explicit RunnableBody(Statement& body) : body_(&body), inner_(&body) {
        auto* block = dynamic_cast<BlockStm*>(&body);
        if (block && block->statements().size() == 1) inner_ = block->statements().front().get();
    }
    void exe() const {
        inner_->exe();
        if (runState().debugStepping) [[unlikely]]
            if (inner_ != body_) stopBehind(*inner_);
    }

private:
    Statement* body_ = nullptr;
    Statement* inner_ = nullptr;
};

/// A statement that controls another one.
class WithStm : public Statement {
public:
    [[nodiscard]] bool uses(const Value* v) const override { return body_->uses(v) || Statement::uses(v); }
    [[nodiscard]] Statement& body() const { return *body_; }

protected:
    WithStm(int line, EvaluatablePtr expression, StatementPtr body)
        : Statement(line, std::move(expression)), body_(std::move(body)), run_(*body_) {}
    void runBody() const { run_.exe(); }

private:
    StatementPtr body_;
    RunnableBody run_;
};

/// Leaves the nearest loop. Where that loop stands around it in the same
/// function the run state is told, at no cost; else the statement throws a copy
/// of itself, which reaches a loop in the caller.
class BreakStm final : public Statement {
public:
    BreakStm(int line, bool insideLoop) : Statement(line), insideLoop_(insideLoop) {}
    void exe() override;

private:
    bool insideLoop_;
};

/// Goes on with the next round of the nearest loop, in the same two ways.
class ContinueStm final : public Statement {
public:
    ContinueStm(int line, bool insideLoop) : Statement(line), insideLoop_(insideLoop) {}
    void exe() override;

private:
    bool insideLoop_;
};

}  // namespace vorpen
