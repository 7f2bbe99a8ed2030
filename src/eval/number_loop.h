// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The form of a loop for numbers. A loop that has run for some rounds shows
// what its variables hold: from then on those that hold one number each, and
// the arrays that are read and written element by element, are held
// (`Hold` in number_lane.h). Once it is known that all of them are still what
// they were, a round looks at none of them again: the statements that only
// compute with them are run by nodes that read and write the elements where
// they stand. So nothing has to be carried back, and whoever looks at a
// variable meanwhile finds it as it is.
//
// Any other statement, an inner loop among them, is run as it is, and what is
// held is looked at behind it. The same is done for a statement whose operands
// turn out to be no numbers, as when an index grows its array. When something
// is no longer as it was, or somebody wants the run to stop or to step through
// it, the rest of the round is run by the statements themselves, and the next
// round begins with a look at what is held.

#include <memory>

#include "eval/number_lane.h"
#include "eval/truth_source.h"

namespace vorpen {

class Statement;

/// A statement of such a body.
class NumberStep {
public:
    virtual ~NumberStep() = default;
    /// False when the statements behind it are to be run as they are.
    [[nodiscard]] virtual bool exe() const = 0;
};

/// A body of steps, or an empty one. A block of one statement is passed by.
class NumberBody {
public:
    NumberBody() = default;
    NumberBody(std::unique_ptr<NumberStep> step, const Statement* onlyOne)
        : step_(std::move(step)), onlyOne_(onlyOne) {}
    [[nodiscard]] bool isEmpty() const { return !step_; }
    [[nodiscard]] bool exe() const {
        if (step_->exe()) [[likely]]
            return true;
        stopBehindOnlyOne();
        return false;
    }

private:
    void stopBehindOnlyOne() const;

    std::unique_ptr<NumberStep> step_;
    const Statement* onlyOne_ = nullptr;  ///< of a block that is passed by
};

class NumberLoop {
public:
    /// Null when the form would bring nothing. The variable of the loop may be
    /// missing, and so may a condition that is tested before each round.
    static std::unique_ptr<NumberLoop> compile(Statement& body, const DoubleValue* loopVariable,
                                               Evaluatable* condition);
    /// True while all that is held is as it was. To be asked before the first
    /// round, and again after one that has answered false.
    [[nodiscard]] bool mayRun() const;
    /// Runs the body once.
    [[nodiscard]] bool runRound() const { return body_.exe(); }
    /// True when it can test the condition.
    [[nodiscard]] bool hasCondition() const { return condition_ != nullptr; }
    /// The truth of the condition. As in the lane, it may be noted that it is
    /// not known.
    [[nodiscard]] bool test() const { return condition_->test(nullptr); }

private:
    Hold hold_;
    NumberBody body_;
    std::unique_ptr<TruthNode> condition_;
};

}  // namespace vorpen
