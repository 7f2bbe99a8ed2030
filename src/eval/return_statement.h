// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// `return`: stores the result in the output of its function and stops the run
// state, so that every block and loop around it ends at its next look. It
// throws nothing.

#include "eval/number_source.h"
#include "eval/statement.h"

namespace vorpen {

class ReturnStm final : public Statement {
public:
    /// The expression may be missing, and so may the output of a function that
    /// has none; then nothing is stored.
    ReturnStm(int line, EvaluatablePtr expression, Value* lhs);
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override { return v == lhs_ || Statement::uses(v); }
    [[nodiscard]] Value* lhs() const { return lhs_; }

private:
    Value* lhs_;
    DoubleValue* number_;  ///< the output, or null for another kind
    NumberSource source_;
};

/// Makes the last statement of a body provide the result: an expression is
/// returned, behind an assignment the output keeps what it has, and after
/// anything else the function returns the empty value. Fails with a SyntaxError
/// unless the output is a double.
void insertReturn(BlockStm& body, Value& output);

}  // namespace vorpen
