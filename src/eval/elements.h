// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The leaves of a compiled expression, the conversions between kinds that the
// front end inserts, and the operators of one operand.

#include <complex>
#include <string>

#include "eval/evaluatable.h"

namespace vorpen {

/// A variable; the value belongs to the symbol table or to its function.
class ValueElement final : public Evaluatable {
public:
    explicit ValueElement(Value* variable) : variable_(variable) {}
    Value* pValue(Value*) override { return variable_; }
    Outcome evaluate(Value*) override { return outcomeOf(variable_); }
    [[nodiscard]] int type() const override { return variable_->valueType(); }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::namedValue; }
    [[nodiscard]] bool uses(const Value* v) const override { return v == variable_; }
    [[nodiscard]] bool isPure() const override { return true; }
    [[nodiscard]] Value* variable() const { return variable_; }

private:
    Value* variable_;
};

/// A literal or a folded constant.
class NumberElement : public Evaluatable {
public:
    explicit NumberElement(std::unique_ptr<Value> value)
        : value_(std::move(value)), outcome_(outcomeOf(value_.get())) {}
    Value* pValue(Value*) override { return value_.get(); }
    Outcome evaluate(Value*) override { return outcome_; }
    [[nodiscard]] int type() const override { return value_->valueType(); }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::constant; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }
    [[nodiscard]] bool isPure() const override { return true; }
    [[nodiscard]] const Value& value() const { return *value_; }

private:
    std::unique_ptr<Value> value_;
    Outcome outcome_;
};

EvaluatablePtr makeNumber(int i);
EvaluatablePtr makeNumber(double x);
EvaluatablePtr makeNumber(std::complex<double> z);
/// The literal "[]": an empty integer value.
EvaluatablePtr makeEmptySet();

/// A string literal. Its static type is integer; in a double workspace the
/// string is held in doubles.
class StringLiteralElement final : public Evaluatable {
public:
    explicit StringLiteralElement(std::string text) : text_(std::move(text)) {}
    Value* pValue(Value* workspace) override {
        workspace->assignString(text_);
        return workspace;
    }
    [[nodiscard]] int type() const override { return INTEGER_VAL; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }
    [[nodiscard]] bool isPure() const override { return true; }
    [[nodiscard]] const std::string& text() const { return text_; }

private:
    std::string text_;
};

/// A bare ":"; it means something only as an index.
class OpenSequenceElement final : public Evaluatable {
public:
    Value* pValue(Value*) override { raiseIncorrectUse(); }
    [[nodiscard]] int type() const override { return INTEGER_VAL; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::openSequence; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }

private:
    [[noreturn]] static void raiseIncorrectUse();
};

/// `++x` and `--x`: changes every element of the variable in place.
class IncDecElement final : public Evaluatable {
public:
    /// direction is 'i' to add 1, anything else to take 1 away.
    IncDecElement(Value* variable, char direction) : variable_(variable), step_(direction == 'i' ? 1 : -1) {}
    Value* pValue(Value*) override;
    [[nodiscard]] int type() const override { return variable_->valueType(); }
    [[nodiscard]] bool uses(const Value* v) const override { return v == variable_; }

private:
    Value* variable_;
    int step_;
};

/// An integer child delivered as a double array.
class IntToDoubleElement final : public With1Evaluatable {
public:
    explicit IntToDoubleElement(EvaluatablePtr child) : With1Evaluatable(std::move(child)) {}
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
    [[nodiscard]] Evaluatable& inner() const { return *child(0); }
};

/// A double child delivered as integers, truncated, into an integer workspace;
/// any other workspace gets the double itself, which an index may want to see.
class DoubleToIntElement final : public With1Evaluatable {
public:
    explicit DoubleToIntElement(EvaluatablePtr child) : With1Evaluatable(std::move(child)) {}
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return INTEGER_VAL; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::doubleToInt; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
    [[nodiscard]] Evaluatable& inner() const { return *child(0); }
};

/// Stands around an argument whose kind is known only at run time; it is
/// delivered as a double array, or as integers into an integer workspace.
class TypeCheckElement final : public With1Evaluatable {
public:
    explicit TypeCheckElement(EvaluatablePtr child) : With1Evaluatable(std::move(child)) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
};

/// A child of any numeric kind delivered as complex numbers.
class ToComplexElement final : public With1Evaluatable {
public:
    explicit ToComplexElement(EvaluatablePtr child) : With1Evaluatable(std::move(child)) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return COMPLEX_VAL; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
};

/// An operator of one operand, by its character: `!` factorial, `'` transpose,
/// `"` conjugate transpose, `-` negation, `~` logical not, `:` flattened to
/// one row.
class UnaryOpElement final : public With1Evaluatable {
public:
    UnaryOpElement(EvaluatablePtr child, char op)
        : With1Evaluatable(std::move(child)), op_(op) {}
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return child(0)->type(); }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
    [[nodiscard]] char op() const { return op_; }
    [[nodiscard]] Evaluatable& inner() const { return *child(0); }

private:
    /// Integers follow the rules of integers in a workspace of doubles too.
    void apply(Value& operand) const;

    char op_;
};

}  // namespace vorpen
