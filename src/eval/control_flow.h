// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Conditions and loops. A condition must be a single number and is truncated
// before it is tested, so 0.5 is false; what is empty is an error and not
// false. A loop looks at the run state after each round and catches what a
// function in its body throws to leave it.
//
// Nothing is allocated for a round: the condition's workspace and the loop's
// numbers live in the loop's frame, and a range of numbers is walked without
// being made, since nobody could tell.

#include "eval/indexing.h"
#include "eval/number_loop.h"
#include "eval/statement.h"
#include "eval/truth_source.h"

namespace vorpen {

/// The condition of a statement.
class Condition {
public:
    explicit Condition(Evaluatable* expression)
        : expression_(expression), type_(expression->type()), source_(*expression) {}

    enum class Truth { no, yes, notScalar };
    [[nodiscard]] Truth test() const {
        const TruthSource::Truth truth = source_.read();
        return truth == TruthSource::Truth::notKnown ? evaluate() : static_cast<Truth>(truth);
    }

private:
    /// Apart, so that a condition on numbers needs no room for it.
    [[nodiscard, gnu::noinline]] Truth evaluate() const;

    Evaluatable* expression_;
    int type_;
    TruthSource source_;
};

class IfStm final : public WithStm {
public:
    IfStm(int line, EvaluatablePtr condition, StatementPtr body)
        : WithStm(line, std::move(condition), std::move(body)), condition_(expression()) {}
    void exe() override;

private:
    Condition condition_;
};

class UnlessStm final : public WithStm {
public:
    UnlessStm(int line, EvaluatablePtr condition, StatementPtr body)
        : WithStm(line, std::move(condition), std::move(body)), condition_(expression()) {}
    void exe() override;

private:
    Condition condition_;
};

class IfElseStm final : public WithStm {
public:
    IfElseStm(int line, EvaluatablePtr condition, StatementPtr body, StatementPtr elseBody)
        : WithStm(line, std::move(condition), std::move(body)),
          condition_(expression()),
          elseBody_(std::move(elseBody)),
          elseRun_(*elseBody_) {}
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override { return WithStm::uses(v) || elseBody_->uses(v); }
    [[nodiscard]] Statement& elseBody() const { return *elseBody_; }

private:
    Condition condition_;
    StatementPtr elseBody_;
    RunnableBody elseRun_;
};

/// A statement whose body runs in rounds. One that has run for a few of them
/// may get a form for numbers.
class LoopStm : public WithStm {
protected:
    using WithStm::WithStm;
    class Rounds;

private:
    /// The form, as long as it may run; else null.
    [[nodiscard]] const NumberLoop* findForm();
    /// Made when the variables are as they are in a round.
    [[nodiscard]] virtual std::unique_ptr<NumberLoop> makeForm() const { return nullptr; }

    /// Rounds that show what the variables hold, and that the form is worth
    /// its making.
    int roundsBeforeForm_ = 16;
    std::unique_ptr<NumberLoop> form_;
};

class WhileStm final : public LoopStm {
public:
    WhileStm(int line, EvaluatablePtr condition, StatementPtr body)
        : LoopStm(line, std::move(condition), std::move(body)), condition_(expression()) {}
    void exe() override;

private:
    [[nodiscard]] Condition::Truth test(Rounds& rounds) const;
    [[nodiscard]] std::unique_ptr<NumberLoop> makeForm() const override;

    Condition condition_;
};

/// `for i = range`: one round for each element, in storage order. The range is
/// evaluated once. When it is a variable its size is looked at in each round,
/// so that a body may let it grow or shrink.
class ForStm final : public LoopStm {
public:
    ForStm(int line, EvaluatablePtr range, StatementPtr body, Value* loopVariable);
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override { return v == loopVariable_ || LoopStm::uses(v); }

private:
    [[nodiscard]] std::unique_ptr<NumberLoop> makeForm() const override;
    void setLoopVariable(double x);
    void setLoopVariable(int x);
    template <class Number, class Next>
    void walk(int count, Number x, const Next& next);
    void walkRange(const SequenceElement::Range& range);
    void walkIntegers(const SequenceElement::Range& range);
    void walkArray();

    Value* loopVariable_;
    DoubleValue* number_;        ///< the loop variable, or null for another kind
    SequenceElement* sequence_;  ///< the range, or null for another expression
};

/// `for x in v` and `for i, x in v`: one round for each element of a variable.
/// The index counts from 1.
class ForInStm final : public LoopStm {
public:
    /// `index` may be null.
    ForInStm(int line, StatementPtr body, Value* index, Value* value, Value* collection)
        : LoopStm(line, nullptr, std::move(body)), index_(index), value_(value), collection_(collection) {}
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override {
        return v == index_ || v == value_ || v == collection_ || LoopStm::uses(v);
    }

private:
    void takeItem(const Value& item);

    Value* index_;
    Value* value_;
    Value* collection_;
};

}  // namespace vorpen
