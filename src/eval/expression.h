// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An operator expression is no tree of two-way nodes: it is a flat list of
// operands, each with the code of the operator behind it, and an evaluator
// walks that list. The front end chooses the evaluator by the kinds of the
// operands and the operators present: the simple ones are two fixed loops for
// + - * / with two accumulators, the general ones climb the precedence levels.
//
// All of them carry scalars in registers as long as the operands are scalars.
// An expression on doubles whose operators work element by element is run as
// one pass over memory (block_program.h).

#include "eval/block_program.h"
#include "eval/expression_items.h"
#include "eval/mask_program.h"
#include "eval/number_array.h"

namespace vorpen {

/// Base of the evaluators: the list and the static type of the result.
class Expression : public Evaluatable {
public:
    [[nodiscard]] int type() const override { return type_; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::expression; }
    [[nodiscard]] bool uses(const Value* v) const override;
    [[nodiscard]] bool isPure() const override { return pure_; }
    [[nodiscard]] const ExpressionItems& items() const { return items_; }

protected:
    Expression(ExpressionItems items, int type);

    ExpressionItems items_;
    int type_;
    bool pure_;
};

/// Only + - * /, all operands of the type of the result: integer, double or
/// complex.
class SimpleExpression final : public Expression {
public:
    SimpleExpression(ExpressionItems items, int type);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;

private:
    std::unique_ptr<BlockProgram> program_;  ///< for doubles
};

/// Only + - * / on a mixture of integers and doubles; the result is double.
class SimpleMixedTypeExpression final : public Expression {
public:
    explicit SimpleMixedTypeExpression(ExpressionItems items);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;

private:
    std::unique_ptr<BlockProgram> program_;
};

/// Base of the evaluators for all other operators.
class GeneralExpression : public Expression {
protected:
    GeneralExpression(ExpressionItems items, int type);
    int minLevel_ = 100;
    int maxLevel_ = 0;
};

class GeneralIntegerExpression final : public GeneralExpression {
public:
    explicit GeneralIntegerExpression(ExpressionItems items);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;

private:
    std::unique_ptr<MaskProgram> mask_;  ///< for comparisons joined element by element
};

class GeneralMixedTypeExpression final : public GeneralExpression {
public:
    explicit GeneralMixedTypeExpression(ExpressionItems items);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;

private:
    std::unique_ptr<BlockProgram> program_;  ///< when all operators work element by element
    std::unique_ptr<NumberArray> numbers_;   ///< when numbers are joined to an array
};

class GeneralComplexExpression final : public GeneralExpression {
public:
    explicit GeneralComplexExpression(ExpressionItems items);
    Value* pValue(Value* workspace) override;
};

}  // namespace vorpen
