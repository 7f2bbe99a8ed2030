// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/linear_bodies.h"

#include <algorithm>

#include "builtins/arguments.h"
#include "numerics/fourier.h"
#include "numerics/lu.h"
#include "numerics/symmetric_eigen.h"

namespace vorpen::builtin {
namespace {

/// One plane with as many columns as rows. The planes of a 3-D array make no
/// matrix, whatever their number of elements.
bool isSquare(const Value& m) {
    return m.columns() == m.nrow() && std::int64_t{m.nrow()} * m.nrow() == m.size();
}

/// The factors of a matrix, or the stored ones for a string.
const LuForm& factorsFor(const Value& m) {
    if (!m.isString()) factorise(m);
    return storedLuForm();
}

const LuForm& existingFactorsFor(const Value& m) {
    const LuForm& lu = factorsFor(m);
    Require(lu.order() > 0 || !m.isString(), "invalid argument");
    return lu;
}

/// A matrix of n rows from elements stored by column.
void storeMatrix(DoubleValue& out, std::span<const double> elements, int rows) {
    out.setSizeShapeMark(static_cast<std::int64_t>(elements.size()), rows, FORM_NUMERIC);
    std::ranges::copy(elements, out.data());
}

/// The value as complex numbers in `out`, which may be the value.
void makeComplex(const Value& v, ComplexValue& out) {
    if (&v == &out) return;
    out.setSizeShapeMark(v.size(), v.nrow(), FORM_NUMERIC);
    const auto copyItems = [&](const auto& from) { std::ranges::copy(from.items(), out.data()); };
    switch (v.valueType()) {
        case INTEGER_VAL: return copyItems(asInt(v));
        case DOUBLE_VAL: return copyItems(asDouble(v));
        default: copyItems(asComplex(v));
    }
}

void transform(std::span<FuncArgument> arguments, FourierDirection direction, Value& result) {
    const Value& v = argumentValue(arguments[0]);
    Require(isPowerOf2(static_cast<std::size_t>(v.size())), "sorry, non power of 2 not yet implemented");
    Require(v.isNumericKind(), "argument has wrong type (should be double or complex)", "fft");
    const bool column = isColumn(v);
    ComplexValue& out = asComplex(result);
    makeComplex(v, out);
    out.setNrow(column ? out.size() : 1);
    out.setMark(FORM_NUMERIC);
    fourierTransform(out.items(), direction);
}

template <class Matrix>
void copyDiagonal(const Matrix& m, ComplexValue& out) {
    for (int i = 0; i < m.nrow(); ++i) out[i] = m[i + i * m.nrow()];
}

}  // namespace

int factorise(const Value& m) {
    Require(m.valueType() == INTEGER_VAL || m.valueType() == DOUBLE_VAL, "invalid data type");
    Require(isSquare(m), "matrix must be square");
    DoubleValue scratch;
    return storedLuForm().factorise(asDoubles(m, scratch).items(), static_cast<std::size_t>(m.nrow()));
}

void solveLinear(const Value& m, const DoubleValue* b, Value& result) {
    DoubleValue& out = doubleResult(result, "solve");
    const LuForm& lu = factorsFor(m);
    Require(b != nullptr, "invalid argument");
    Require(b->nrow() == static_cast<int>(lu.order()), "rhs argument has wrong size", "solve");
    copyIn(out, *b);
    if (out.form() != FORM_3D) out.setMark(FORM_NUMERIC);
    lu.solve(out.items());
}

void inverse(const Value& m, DoubleValue& out) {
    const LuForm& lu = existingFactorsFor(m);
    const auto n = static_cast<std::int64_t>(lu.order());
    shapeResult(out, n, n);
    lu.inverse(out.items());
}

void determinant(const Value& m, DoubleValue& out) {
    const double value = existingFactorsFor(m).determinant();
    out.assignDouble(value);
}

void eigenvalues(DoubleValue& m, DoubleValue& out) {
    Require(isSquare(m), "non-square matrix", "eigval");
    const std::vector<double> values = symmetricEigenvalues(m.items(), static_cast<std::size_t>(m.nrow()));
    storeMatrix(out, values, static_cast<int>(values.size()));
}

void eigenvectors(DoubleValue& m, DoubleValue& out) {
    Require(isSquare(m), "non-square matrix", "eigen-system");
    const int rows = m.nrow();
    const EigenSystem system = symmetricEigenSystem(m.items(), static_cast<std::size_t>(rows));
    storeMatrix(out, system.vectors, rows);
}

void eigenSystem(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& result) {
    DoubleValue copy;
    copy.copyFrom(argumentValue(arguments[0]));
    Require(isSquare(copy), "non-square matrix", "eigen-system");
    const int rows = copy.nrow();
    const EigenSystem system = symmetricEigenSystem(copy.items(), static_cast<std::size_t>(rows));
    const auto store = [](Value& out, std::span<const double> elements, int count) {
        DoubleValue matrix;
        storeMatrix(matrix, elements, count);
        out.assign(matrix);
    };
    store(result, system.values, rows);
    if (extraOutputs && !extraOutputs->empty()) store(*extraOutputs->front(), system.vectors, rows);
}

void fourierForward(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    transform(arguments, FourierDirection::forward, out);
}

void fourierBackward(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    transform(arguments, FourierDirection::backward, out);
}

void complexDiagonal(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    const Value& m = argumentValue(arguments[0]);
    Require(isSquare(m), "non-square matrix", "diag");
    Require(m.isNumericKind(), "invalid argument type");
    ComplexValue diagonal;
    diagonal.setSizeShapeMark(m.nrow(), 1, partMark(m));
    switch (m.valueType()) {
        case INTEGER_VAL: copyDiagonal(asInt(m), diagonal); break;
        case DOUBLE_VAL: copyDiagonal(asDouble(m), diagonal); break;
        default: copyDiagonal(asComplex(m), diagonal);
    }
    asComplex(result).adopt(std::move(diagonal));
}

}  // namespace vorpen::builtin
