// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The form of a user function for calls with numbers. A function that only
// computes, whose locals hold a number each and which changes nothing beside
// them, has its body made a second time, over a frame of doubles on the
// machine's stack: a call then saves and restores nothing, and a recursion
// costs a few dozen machine instructions.
//
// Such a body is made of assignments to locals, conditions, blocks and
// returns. Every local must have got its value before it is read, and every
// output before the end, since what a former call left behind is not here, nor
// is anything left behind for a later one.
// Anything else, and a step limit, a missing room or a value that is no number
// at run time, makes the answer "not known"; the call then runs in the general
// way from its start.

#include <memory>
#include <vector>

#include "eval/number_source.h"

namespace vorpen {

class Statement;
class UserFunc;

/// A statement of such a body.
class NumberStatement {
public:
    enum class Flow : unsigned char { next, done, notKnown };

    virtual ~NumberStatement() = default;
    [[nodiscard]] virtual Flow exe(double* frame) const = 0;
    /// The expression of a statement that only returns one; it is moved out.
    virtual std::unique_ptr<NumberNode> takeReturned() { return nullptr; }
};

class NumberFunction {
public:
    NumberFunction(std::unique_ptr<NumberStatement> body, int output)
        : body_(std::move(body)), output_(output), returned_(body_->takeReturned()) {}

    /// Null when the body asks for more.
    static std::unique_ptr<NumberFunction> compile(UserFunc& function, Statement& body, const Value& output);

    /// The frame holds the arguments first. As a node of the lane does, it may
    /// note that the answer is not known.
    [[nodiscard]] double run(double* frame) const {
        if (returned_) return returned_->number(frame);
        return body_->exe(frame) == NumberStatement::Flow::notKnown ? 0 : frame[output_];
    }

private:
    std::unique_ptr<NumberStatement> body_;
    int output_;
    std::unique_ptr<NumberNode> returned_;  ///< all of a body that is a lone return
};

}  // namespace vorpen
