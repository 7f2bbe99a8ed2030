// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The arithmetic of numeric arrays. Every operation works in place on its left
// operand, the accumulator of the evaluators, so that a chain of operators
// needs no temporaries. Operators come as codes: level times 8 plus a number
// within the level, a lower level binding tighter.
//
// Element-wise operators take three shapes: a right side of one element meets
// every element of the left; a left side of one element is first repeated to
// the shape of the right; otherwise sizes and rows must be equal, or the
// operator's letter is raised as an operator failure. Marks never matter, and
// the left keeps its own.

#include "values/jmatrix.h"

namespace vorpen {

/// Operator codes; code >> 3 is the level.
enum OpCode : int {
    OP_POWER = 0,
    OP_MATRIX_POWER = 3,
    OP_TIMES = 8,
    OP_DIVIDE = 9,
    OP_PRODUCT = 10,
    OP_TENSOR = 11,
    OP_CROSS = 12,
    OP_QUOTIENT = 13,
    OP_PLUS = 16,
    OP_MINUS = 17,
    OP_REMAINDER = 18,
    OP_ADD_LINES = 19,
    OP_SUBTRACT_LINES = 20,
    OP_BIT_AND = 24,
    OP_BIT_OR = 32,
    OP_BIT_XOR = 33,
    OP_LESS = 40,
    OP_LESS_EQUAL = 41,
    OP_EQUAL = 42,
    OP_IDENTICAL = 43,
    OP_NOT_EQUAL = 44,
    OP_GREATER_EQUAL = 45,
    OP_GREATER = 46,
    OP_AND_THEN = 48,
    OP_AND = 49,
    OP_OR_ELSE = 56,
    OP_OR = 57,
    OP_XOR = 58,
    OP_COMMA = 64,
    OP_SEMICOLON = 72,
    OP_QUERY = 80,
    OP_QUERY_ELSE = 81,
    OP_END = 88,
};

/// The letter by which an element-wise operator of levels 0 to 2 is known in
/// failures.
char operatorLetter(int code);

template <class T>
class MathMatrix : public JMatrix<T> {
public:
    using JMatrix<T>::JMatrix;
    using JMatrix<T>::operator=;

    void assignString(std::string_view text) override;
    void assignDouble(double x) override;
    void assignInt(int i) override;
    void stringItem(std::string& out, int i, int precision) const override;
    void toString(std::string& out) const override;
    void logicalNot() override;
    void negate() override;

    /// left op= right, element by element. Integer quotients and remainders by
    /// zero fail.
    void operate(int code, const MathMatrix& right);

    /// Matrix product; with transposeLeft the product of the transposed left.
    void matrixProduct(const MathMatrix& right, bool transposeLeft = false);
    void tensorProduct(const MathMatrix& right);
    void crossProduct(const MathMatrix& right);
    /// Adds (sign 1) or subtracts (sign -1) a row to each row or a column to
    /// each column.
    void addLines(const MathMatrix& right, int sign);

    void plusAssign(const MathMatrix& right) { operate(OP_PLUS, right); }
    void minusAssign(const MathMatrix& right) { operate(OP_MINUS, right); }
    void timesAssign(const MathMatrix& right) { operate(OP_TIMES, right); }
    void divideAssign(const MathMatrix& right) { operate(OP_DIVIDE, right); }

    /// part op= right with op one of P, M, T, D (add, subtract, multiply,
    /// divide); indices from 1. The caller has checked sizes and bounds.
    void mathIndexedAssign(int irc, IndexList indices, const MathMatrix& rhs, char op);
    void mathIndexedAssign(IndexList rows, IndexList cols, const MathMatrix& rhs, char op);

private:
    void repeatTo(const MathMatrix& shape);
};

class DoubleValue;

class IntValue final : public MathMatrix<int> {
public:
    IntValue() : MathMatrix(INTEGER_VAL) {}
    explicit IntValue(int i) : IntValue() { assignInt(i); }
    /// Each element truncated toward zero.
    explicit IntValue(const DoubleValue& source);
    using MathMatrix::operator=;
};

class DoubleValue final : public MathMatrix<double> {
public:
    DoubleValue() : MathMatrix(DOUBLE_VAL) {}
    explicit DoubleValue(double x) : DoubleValue() { assignDouble(x); }
    explicit DoubleValue(const IntValue& source) : DoubleValue() { copyFrom(source); }
    using MathMatrix::operator=;

    /// left op= right for a right side of integers, which are converted one by
    /// one. With a left side of one element and an array on the right the left
    /// takes the shape and mark of the right; a difference is then element
    /// minus scalar.
    void operateInt(int code, const IntValue& right);
};

class ComplexValue final : public MathMatrix<std::complex<double>> {
public:
    ComplexValue() : MathMatrix(COMPLEX_VAL) {}
    explicit ComplexValue(std::complex<double> z) : ComplexValue() { fillOne(z); }
    using MathMatrix::operator=;
};

/// The value as its kind; the caller knows the kind.
inline IntValue& asInt(Value& v) {
    assert(v.valueType() == INTEGER_VAL);
    return static_cast<IntValue&>(v);
}
inline const IntValue& asInt(const Value& v) {
    assert(v.valueType() == INTEGER_VAL);
    return static_cast<const IntValue&>(v);
}
inline DoubleValue& asDouble(Value& v) {
    assert(v.valueType() == DOUBLE_VAL);
    return static_cast<DoubleValue&>(v);
}
inline const DoubleValue& asDouble(const Value& v) {
    assert(v.valueType() == DOUBLE_VAL);
    return static_cast<const DoubleValue&>(v);
}
inline ComplexValue& asComplex(Value& v) {
    assert(v.valueType() == COMPLEX_VAL);
    return static_cast<ComplexValue&>(v);
}
inline const ComplexValue& asComplex(const Value& v) {
    assert(v.valueType() == COMPLEX_VAL);
    return static_cast<const ComplexValue&>(v);
}

/// Truncation toward zero to 32 bits; what does not fit, and NaN, give the
/// lowest integer.
inline int truncateToInt(double x) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<int>(x) : INT32_MIN;
}

}  // namespace vorpen
