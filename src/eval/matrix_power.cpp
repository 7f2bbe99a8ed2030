// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/matrix_power.h"

#include <cmath>

#include "base/errors.h"
#include "numerics/lu.h"
#include "numerics/symmetric_eigen.h"

namespace vorpen {
namespace {

DoubleValue identity(int n) {
    DoubleValue result;
    result.fill(std::int64_t{n} * n, n, 0.0);
    for (int i = 0; i < n; ++i) result[i * n + i] = 1.0;
    return result;
}

void invert(DoubleValue& matrix) {
    LuForm lu;
    lu.factorise(matrix.items(), matrix.nrow());
    lu.inverse(matrix.items());
}

/// The power by repeated squaring; `exponent` is whole and not negative. From
/// 2^53 on doubles are even, so that halving the number keeps every bit.
void raiseToWhole(DoubleValue& matrix, double exponent) {
    DoubleValue result = identity(matrix.nrow());
    while (exponent > 0) {
        if (std::fmod(exponent, 2.0) == 1.0) result.matrixProduct(matrix);
        exponent = std::floor(exponent / 2);
        if (exponent > 0) {
            const DoubleValue factor = matrix;
            matrix.matrixProduct(factor);
        }
    }
    matrix.adopt(std::move(result));
}

/// V diag(d^p) V' of the symmetric matrix.
void raiseToBroken(DoubleValue& matrix, double exponent) {
    const int n = matrix.nrow();
    DoubleValue destroyed = matrix;
    const EigenSystem system = symmetricEigenSystem(destroyed.items(), n);
    for (const double d : system.values)
        if (d < 0) throw OperatorFailure{'R'};
    DoubleValue scaled, vectors;
    scaled.setShape(n, n);
    vectors.setShape(n, n);
    for (int k = 0; k < n; ++k) {
        const double factor = std::pow(system.values[k], exponent);
        for (int i = 0; i < n; ++i) {
            vectors[k * n + i] = system.vectors[k * n + i];
            scaled[k * n + i] = factor * system.vectors[k * n + i];
        }
    }
    vectors.transpose();
    scaled.matrixProduct(vectors);
    matrix.adopt(std::move(scaled));
}

}  // namespace

void matrixPower(DoubleValue& matrix, const DoubleValue& exponent) {
    if (exponent.size() != 1) throw OperatorFailure{'^'};
    if (std::int64_t{matrix.nrow()} * matrix.nrow() != matrix.size()) throw OperatorFailure{'^'};
    if (matrix.isEmpty()) return;
    double p = exponent[0];
    if (p < 0) {
        invert(matrix);
        p = -p;
    }
    if (p == std::floor(p) && std::isfinite(p))
        raiseToWhole(matrix, p);
    else
        raiseToBroken(matrix, p);
    matrix.setMark(FORM_NUMERIC);
}

}  // namespace vorpen
