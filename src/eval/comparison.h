// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Comparisons. Two parts, or three in a chain such as `1 < x <= 3`; the third
// is looked at only when the first comparison holds somewhere. The result is an
// integer array of boolean form.

#include "eval/number_source.h"

namespace vorpen {

/// How two numbers can lie, as bits; `unordered` is for a NaN among them.
enum Ordering : unsigned { ORDER_LESS = 1, ORDER_EQUAL = 2, ORDER_GREATER = 4, ORDER_NONE = 8 };

/// The orderings for which a comparison holds.
[[nodiscard]] unsigned acceptedOrderings(int op);

/// Whether two numbers lie in one of the accepted orderings. Without a branch
/// on the operator, which a loop that compares in many places would miss.
inline bool comparesTrue(unsigned accepted, double a, double b) {
    const unsigned less = a < b, equal = a == b, greater = a > b;
    const unsigned none = (less | equal | greater) ^ 1u;
    return (accepted & (less | equal << 1 | greater << 2 | none << 3)) != 0;
}

/// a op1 b, or a op1 b op2 c; parts are numbers of any kinds known or unknown
/// while compiling. Complex and list parts have no order: the result is empty.
/// The operator codes are OP_LESS to OP_GREATER without OP_IDENTICAL.
class ComparatorElement final : public With3Evaluatable {
public:
    ComparatorElement(EvaluatablePtr a, int op1, EvaluatablePtr b, int op2 = 0, EvaluatablePtr c = nullptr);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return INTEGER_VAL; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }

    [[nodiscard]] Evaluatable& left() const { return *child(0); }
    [[nodiscard]] Evaluatable& right() const { return *child(1); }
    [[nodiscard]] bool isChain() const { return child(2) != nullptr; }
    [[nodiscard]] Evaluatable& third() const { return *child(2); }
    [[nodiscard]] int firstOperator() const { return op1_; }
    [[nodiscard]] int secondOperator() const { return op2_; }
    /// The orderings of the first two parts for which their comparison holds.
    [[nodiscard]] unsigned accepted() const { return accepted_; }

    /// A comparison of two numbers that need no evaluation; false when it is
    /// none.
    bool readTruth(bool& truth) const {
        double a, b;
        if (!first_.read(a) || !second_.read(b)) return false;
        truth = comparesTrue(accepted_, a, b);
        return true;
    }

private:
    Outcome compareParts(Value* workspace);

    bool isMask_;  ///< it may run as a mask
    int op1_;
    int op2_;
    unsigned accepted_;
    NumberSource first_, second_;  ///< the parts of a comparison of two
};

/// a === b: 1 when form, shape and all elements are equal, else 0; never a
/// failure of its own.
class FullyCompareElement final : public With2Evaluatable {
public:
    FullyCompareElement(EvaluatablePtr a, EvaluatablePtr b) : With2Evaluatable(std::move(a), std::move(b)) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return INTEGER_VAL; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
};

}  // namespace vorpen
