// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/elements.h"

#include <array>
#include <cmath>

#include "base/errors.h"
#include "eval/indexing.h"

namespace vorpen {
namespace {

// 170! is the last factorial that a double holds, 12! the last of 32 bits.
constexpr int doubleFactorials = 171;
constexpr int integerFactorials = 13;

template <class T, int n>
constexpr std::array<T, n> factorialTable() {
    std::array<T, n> table{1};
    for (int i = 1; i < n; ++i) table[i] = table[i - 1] * i;
    return table;
}

double factorial(double x) {
    static constexpr auto table = factorialTable<double, doubleFactorials>();
    const double rounded = std::round(x);
    const int n = truncateToInt(rounded);
    if (n < 0) return INFINITY;
    return n < doubleFactorials ? table[n] : std::exp(std::lgamma(n + 1.0));
}

int factorial(int n) {
    static constexpr auto table = factorialTable<int, integerFactorials>();
    Require(n >= 0, "n! with integer n < 0 is not allowed", "factorial");
    Require(n < integerFactorials, "integer overflow", "factorial");
    return table[n];
}

void applyFactorial(Value& value) {
    if (value.valueType() == INTEGER_VAL)
        for (int& x : asInt(value).items()) x = factorial(x);
    else if (value.valueType() == DOUBLE_VAL)
        for (double& x : asDouble(value).items()) x = factorial(x);
}

void applyInPlace(char op, Value& value) {
    switch (op) {
        case '!': applyFactorial(value); break;
        case '"':
            value.transpose();
            value.conjugate();
            break;
        case '\'': value.transpose(); break;
        case '-': value.negate(); break;
        case ':': value.setShape(1, value.size()); break;
        case '~': value.logicalNot(); break;
        default: break;
    }
}

double applyToNumber(char op, double x, bool integer) {
    switch (op) {
        case '!': return integer ? factorial(static_cast<int>(x)) : factorial(x);
        // Integers wrap around and have no negative zero.
        case '-': return !integer ? -x : x == INT32_MIN ? x : 0 - x;
        case '~': return x == 0;
        default: return x;
    }
}

void truncateInto(IntValue& target, const Value& source) {
    if (source.valueType() == DOUBLE_VAL)
        target = IntValue(asDouble(source));
    else
        target.copyFrom(source);
}

}  // namespace

EvaluatablePtr makeNumber(int i) { return std::make_unique<NumberElement>(std::make_unique<IntValue>(i)); }

EvaluatablePtr makeNumber(double x) { return std::make_unique<NumberElement>(std::make_unique<DoubleValue>(x)); }

EvaluatablePtr makeNumber(std::complex<double> z) {
    return std::make_unique<NumberElement>(std::make_unique<ComplexValue>(z));
}

EvaluatablePtr makeEmptySet() { return std::make_unique<NumberElement>(std::make_unique<IntValue>()); }

void OpenSequenceElement::raiseIncorrectUse() { raiseRuntimeError("incorrect use of ':'"); }

Value* IncDecElement::pValue(Value*) {
    if (variable_->valueType() == DOUBLE_VAL)
        for (double& x : asDouble(*variable_).items()) x += step_;
    else
        asInt(*variable_).operate(OP_PLUS, IntValue(step_));
    return variable_;
}

Value* IntToDoubleElement::pValue(Value* workspace) {
    IntValue local;
    const Value* result = child(0)->pValue(&local);
    workspace->copyFrom(*result);
    return workspace;
}

Outcome IntToDoubleElement::evaluate(Value* workspace) {
    IntValue local;
    const Outcome outcome = child(0)->evaluate(&local);
    if (outcome.isScalar()) return outcome;
    workspace->copyFrom(*outcome.value());
    return outcomeOf(workspace);
}

Value* DoubleToIntElement::pValue(Value* workspace) {
    if (workspace->valueType() != INTEGER_VAL) return child(0)->pValue(workspace);
    DoubleValue local;
    truncateInto(asInt(*workspace), *child(0)->pValue(&local));
    return workspace;
}

Outcome DoubleToIntElement::evaluate(Value* workspace) {
    DoubleValue local;
    const Outcome outcome = child(0)->evaluate(&local);
    if (outcome.isScalar()) return Outcome::scalar(truncateToInt(outcome.number), outcome.mark());
    if (workspace->valueType() == INTEGER_VAL)
        truncateInto(asInt(*workspace), *outcome.value());
    else
        workspace->copyFrom(*outcome.value());
    return Outcome::of(workspace);
}

Value* TypeCheckElement::pValue(Value* workspace) {
    const int kind = workspace->valueType();
    Require(kind == INTEGER_VAL || kind == DOUBLE_VAL, "invalid argument type");
    // An item that does not widen to a double is the wrong argument.
    DoubleValue local;
    if (auto* item = dynamic_cast<ListItemElement*>(child(0))) {
        const Value& found = item->fetchItem();
        Require(found.valueType() <= DOUBLE_VAL, "invalid argument type");
        local.copyFrom(found);
    } else {
        copyIn(local, *child(0)->pValue(&local));
    }
    if (kind == INTEGER_VAL)
        truncateInto(asInt(*workspace), local);
    else
        asDouble(*workspace).adopt(std::move(local));
    return workspace;
}

Value* ToComplexElement::pValue(Value* workspace) {
    Workspace local(child(0)->type() == INTEGER_VAL ? INTEGER_VAL : DOUBLE_VAL);
    workspace->copyFrom(*child(0)->pValue(local.get()));
    return workspace;
}

Value* UnaryOpElement::pValue(Value* workspace) {
    const Value* result = child(0)->pValue(workspace);
    if (result != workspace) workspace->assign(*result);
    apply(*workspace);
    return workspace;
}

Outcome UnaryOpElement::evaluate(Value* workspace) {
    const Outcome outcome = child(0)->evaluate(workspace);
    if (outcome.isScalar())
        return Outcome::scalar(applyToNumber(op_, outcome.number, type() == INTEGER_VAL), outcome.mark());
    if (outcome.value() != workspace) workspace->assign(*outcome.value());
    apply(*workspace);
    return outcomeOf(workspace);
}

void UnaryOpElement::apply(Value& operand) const {
    if (type() != INTEGER_VAL || operand.valueType() != DOUBLE_VAL) return applyInPlace(op_, operand);
    IntValue integers(asDouble(operand));
    applyInPlace(op_, integers);
    operand.copyFrom(integers);
}

}  // namespace vorpen
