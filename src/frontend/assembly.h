// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The flat list of operands and operators that the parser makes of an
// expression, and what becomes of it: precedence, a static type, conversions,
// and one of the evaluator classes. Types are settled here, once, so that a
// running expression never asks for them.
//
// The evaluators know the precedence of arithmetic and logic themselves. Only
// what they could not see is grouped here: the sides of a comparison, the
// parts of a fraction, the elements of a row and the rows of a matrix, and the
// parts of a query. An expression of constants is computed at once and costs
// nothing when it runs.

#include <vector>

#include "eval/evaluatable.h"

namespace vorpen {

class Assembly {
public:
    Assembly() = default;

    [[nodiscard]] bool isEmpty() const { return items_.empty(); }
    /// True if the last operand has no operator behind it yet.
    [[nodiscard]] bool endsInOperand() const { return !items_.empty() && items_.back().op == 0; }
    /// The operator behind the last operand; there must be an operand.
    [[nodiscard]] char lastOperator() const { return items_.back().op; }
    void setOperator(char op) { items_.back().op = op; }

    void append(EvaluatablePtr operand) { items_.push_back({std::move(operand), 0}); }
    /// Puts a prefix or postfix operator around the last operand.
    void appendUnary(char op);
    /// Appends part of a variable. One or two indices, prepared by the parser;
    /// mode is an IndexCode, type the static type of what is selected.
    void appendIndexed(Value& target, std::vector<EvaluatablePtr> indices, int mode, int type);
    /// Makes the last two operands a sequence, or gives the sequence before
    /// the last operand its end: a:b:c.
    void foldSequence();

    /// Groups the sides of comparisons and puts one element in the place of
    /// each. With hadFractions the sides are fractions first.
    void comparisonStep(bool hadFractions);
    /// Turns `%` and `//` into quotients. The first divides all that stands
    /// left of it, the second its near neighbour, and both by all that stands
    /// right; neither reaches beyond its part of a query.
    void fractionStep();
    /// Makes each run of operands that are joined by operators below a level
    /// one operand, and so on within it down to the last level.
    void regroup(int level, int stopLevel);

    /// The element to use; the list is spent.
    [[nodiscard]] EvaluatablePtr finish();

private:
    struct Item {
        EvaluatablePtr operand;
        char op;
    };
    using Items = std::vector<Item>;

    explicit Assembly(Items items) : items_(std::move(items)) {}

    template <class EndsPart>
    [[nodiscard]] static std::vector<Items> splitBehind(Items items, EndsPart endsPart);
    [[nodiscard]] static Item compareSides(Items run, bool hadFractions);
    [[nodiscard]] static EvaluatablePtr makeComparison(Items sides);
    [[nodiscard]] static Items divideFar(Items items);
    [[nodiscard]] static Items divideNear(Items items);

    void groupSeparators();
    [[nodiscard]] int staticType() const;
    [[nodiscard]] bool isConstant() const;
    [[nodiscard]] EvaluatablePtr makeEvaluator(int type);

    Items items_;
};

/// A constant with `-` or `~` applied to a copy of it now.
[[nodiscard]] EvaluatablePtr applyToConstant(char op, const Evaluatable& constant);

}  // namespace vorpen
