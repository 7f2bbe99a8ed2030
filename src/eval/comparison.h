// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Comparisons. Two parts, or three in a chain such as `1 < x <= 3`; the third
// is looked at only when the first comparison holds somewhere. The result is an
// integer array of boolean form.

#include "eval/number_source.h"

namespace vorpen {

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

private:
    Outcome compareParts(Value* workspace);

    int op1_;
    int op2_;
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
