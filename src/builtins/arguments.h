// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the bodies of built-in functions share when they read their arguments
// and shape their results. Each operation states the failure that the user
// sees when an argument is not what the body needs.

#include <cmath>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>

#include "base/errors.h"
#include "eval/function_types.h"
#include "values/buffer.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {

/// A size or count given as a number: truncated, NaN counts as 0. Numbers
/// beyond every possible size keep their sign and stay beyond it.
inline std::int64_t countOf(double x) {
    constexpr double beyond = 4611686018427387904.0;  // 2^62: sums of two still fit 64 bits
    if (std::isnan(x)) return 0;
    return static_cast<std::int64_t>(std::fmin(std::fmax(x, -beyond), beyond));
}

/// A dimension as the record of a value holds it.
/// @throws std::bad_alloc when no array is that long.
inline int dimensionOf(std::int64_t n) {
    if (n > maxElements) throw std::bad_alloc();
    return static_cast<int>(n);
}

/// Makes `out` rows by columns without mark; the elements are undefined.
/// @throws std::bad_alloc when there is no memory for it.
inline void shapeResult(Value& out, std::int64_t rows, std::int64_t columns) {
    const int nrow = dimensionOf(rows), ncol = dimensionOf(columns);
    out.setSizeShapeMark(std::int64_t{nrow} * ncol, nrow, FORM_NUMERIC);
}

/// Makes `out` the empty array without mark.
inline void makeEmpty(Value& out) { out.setSizeShapeMark(0, 0, FORM_NUMERIC); }

/// True for more than one element in one column. A scalar counts as a row.
inline bool isColumn(const Value& v) { return v.size() > 1 && v.nrow() == v.size(); }

/// Makes `out` a vector of n elements without mark that lies as `like` does.
inline void shapeVector(Value& out, std::int64_t n, bool column) {
    shapeResult(out, column ? n : 1, column ? 1 : n);
}

/// The mark of a part of a value: without the planes of a 3-D one.
inline int partMark(const Value& v) { return v.form() == FORM_3D ? int{FORM_NUMERIC} : v.form(); }

/// The number in a value that must hold exactly one.
/// @throws OperatorFailure `]` for any other size.
inline double scalarArgument(const Value& v) {
    if (v.size() != 1) throw OperatorFailure{']'};
    return v.doubleValue();
}

/// The elements of a numeric value as doubles: the value itself, or `scratch`
/// with converted integers.
/// @throws RuntimeError "invalid argument type" for complex values and lists.
inline const DoubleValue& asDoubles(const Value& v, DoubleValue& scratch) {
    if (v.valueType() == DOUBLE_VAL) return asDouble(v);
    Require(v.valueType() == INTEGER_VAL, "invalid argument type");
    scratch.copyFrom(v);
    return scratch;
}

/// The result of a body of two arguments, whose elements are doubles.
/// @throws RuntimeError "invalid return type".
inline DoubleValue& doubleResult(Value& out, std::string_view name) {
    Require(out.valueType() == DOUBLE_VAL, "invalid return type", name);
    return asDouble(out);
}

/// The value of an argument that may not be a reference to a function.
/// @throws RuntimeError "invalid argument".
inline Value& argumentValue(const FuncArgument& argument) {
    Require(argument.value != nullptr, "invalid argument");
    return *argument.value;
}

/// Fails with a text of the user's, exactly as it stands, however short.
[[noreturn]] inline void raiseUserText(std::string text) {
    RuntimeError failure("");
    failure.message = std::move(text);
    throw failure;
}

}  // namespace vorpen
