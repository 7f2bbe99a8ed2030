// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The lane of plain numbers. Loops spend their time on expressions such as
// `n/2`, `x[i] == 1` or `s + a[i,k]*b[k,j]` whose operands are variables that
// hold one number each. For an expression that cannot change anything a second
// tree is made beside the first: its nodes answer with a number in a register
// and know the kinds of their operands, so that a variable or a constant is
// read without a call.
//
// Where an operand turns out to be no single number, or an index does not fit,
// the answer is "not known", and whoever asked evaluates the first tree from
// the start. That is unseen, since nothing in the lane has an effect: it runs
// no code of the user, prints nothing and never fails.
//
// "Not known" is one flag for the whole lane and no part of an answer, so that
// a number that is certain costs no look at it: whoever asks the lane looks
// once, when the answer has come. What nodes compute behind an operand that is
// not known means nothing; a node that calls a function looks before the call.

#include <memory>

#include "eval/evaluatable.h"

namespace vorpen {

struct LaneNumber;

/// The flag. It is down whenever nobody waits for an answer. The lane runs on
/// the main thread alone.
class NotKnown {
public:
    /// Raises it, and stands for the number.
    static double note() {
        noted_ = true;
        return 0;
    }
    [[nodiscard]] static bool isNoted() { return noted_; }
    /// For whoever asked the lane: whether it is up; it is down afterwards.
    [[nodiscard]] static bool take() {
        if (!noted_) [[likely]]
            return false;
        noted_ = false;
        return true;
    }

private:
    static inline constinit bool noted_ = false;
};

/// A node of the lane.
class NumberNode {
public:
    virtual ~NumberNode() = default;
    /// The frame holds the locals of the function around, if they are slots.
    [[nodiscard]] virtual double number(const double* frame) const = 0;
};

/// The number in a variable that holds one in one row.
inline bool readNumber(const DoubleValue& variable, double& x) {
    if (variable.size() != 1 || variable.nrow() != 1) return false;
    x = variable[0];
    return true;
}

/// The way of one expression through the lane. Without one every read fails.
class NumberSource {
public:
    NumberSource() = default;
    /// The source refers to what the element refers to, and lives no longer.
    explicit NumberSource(Evaluatable& element);
    explicit NumberSource(LaneNumber number);

    /// The number, or false when the element must be evaluated.
    bool read(double& x) const {
        if (kind_ == Kind::node) {
            // An expression on arrays costs the lane no more than this look.
            if (variable_ && variable_->size() != 1) return false;
            x = node_->number(nullptr);
            return !NotKnown::take();
        }
        if (kind_ == Kind::variable) return readNumber(*variable_, x);
        x = constant_;
        return kind_ == Kind::constant;
    }
    [[nodiscard]] bool isKnown() const { return kind_ != Kind::none; }

    /// The mark of the number just read: that of the leftmost operand.
    [[nodiscard]] int mark() const { return marked_ ? marked_->mark() : constantMark_; }

    /// As read, with the mark.
    bool read(Outcome& outcome) const {
        double x;
        if (!read(x)) return false;
        outcome = Outcome::scalar(x, mark());
        return outcome.where < Outcome::markLimit;
    }

    /// As read, for an index: a truth value is none, it is a mask.
    bool readIndex(double& k) const { return read(k) && (mark() & 15) == FORM_NUMERIC; }

private:
    enum class Kind : unsigned char { none, variable, constant, node };

    Kind kind_ = Kind::none;
    int constantMark_ = FORM_NUMERIC;
    const Value* marked_ = nullptr;  ///< carries the mark; null for a constant
    const DoubleValue* variable_ = nullptr;  ///< the variable, or the leftmost one of a node; may be null for a node
    double constant_ = 0;
    std::unique_ptr<NumberNode> node_;
};

}  // namespace vorpen
