// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/kernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "base/multiversion.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

template <class Op>
[[gnu::always_inline]] inline void loop(Op op, double* out, Operand a, Operand b, std::int64_t n) {
    const double* x = a.items;
    const double* y = b.items;
    if (b.one) {
        const double right = *y;
#pragma GCC ivdep
        for (std::int64_t i = 0; i < n; ++i) out[i] = op(x[i], right);
    } else if (a.one) {
        const double left = *x;
#pragma GCC ivdep
        for (std::int64_t i = 0; i < n; ++i) out[i] = op(left, y[i]);
    } else {
#pragma GCC ivdep
        for (std::int64_t i = 0; i < n; ++i) out[i] = op(x[i], y[i]);
    }
}

VORPEN_MULTIVERSION void addLoop(double* out, Operand a, Operand b, std::int64_t n) {
    loop([](double x, double y) { return x + y; }, out, a, b, n);
}

VORPEN_MULTIVERSION void subtractLoop(double* out, Operand a, Operand b, std::int64_t n) {
    loop([](double x, double y) { return x - y; }, out, a, b, n);
}

VORPEN_MULTIVERSION void multiplyLoop(double* out, Operand a, Operand b, std::int64_t n) {
    loop([](double x, double y) { return x * y; }, out, a, b, n);
}

VORPEN_MULTIVERSION void divideLoop(double* out, Operand a, Operand b, std::int64_t n) {
    loop([](double x, double y) { return x / y; }, out, a, b, n);
}

/// Squares that are certain to be those of the library, and marks for the
/// others. The GNU C library states for its pow (e_pow.c) an error of 0.511 of
/// a unit in the last place, and 1.5 * 2^-68 for its logarithm: together less
/// than 0.52 where the square lies between 1e-84 and 1e84. So where the product
/// is within 0.48 of a unit of the exact square, rounding left nothing to
/// choose; four squares in a hundred are not. What the product lost is found by
/// splitting the factor (T. J. Dekker, A Floating-Point Technique for Extending
/// the Available Precision, 1971). Below a power of two the units are half as
/// long, so there the square has to be exact.
VORPEN_MULTIVERSION void squareWhereCertain(const double* x, double* squares, double* doubtful,
                                            std::int64_t n) {
    constexpr double splitter = 134217729.0;  // 2^27 + 1
    constexpr double least = 1e-42, most = 1e42;
    constexpr double margin = 0.48 / 4503599627370496.0;  // of 2^52 units
    constexpr std::uint64_t exponentBits = 0x7FF0000000000000u, fractionBits = 0x000FFFFFFFFFFFFFu;
    for (std::int64_t i = 0; i < n; ++i) {
        const double square = x[i] * x[i];
        const double scaled = splitter * x[i];
        const double high = scaled - (scaled - x[i]);
        const double low = x[i] - high;
        const double lost = ((high * high - square) + 2 * high * low) + low * low;
        const auto bits = std::bit_cast<std::uint64_t>(square);
        const double unit =
            (bits & fractionBits) == 0 ? 0 : std::bit_cast<double>(bits & exponentBits) * margin;
        const double modulus = std::fabs(x[i]);
        const bool inRange = (modulus <= most) & ((modulus >= least) | (x[i] == 0));
        squares[i] = square;
        doubtful[i] = inRange & (std::fabs(lost) <= unit) ? 0 : 1;
    }
}

/// pow(x, two) to the bit, most of the time without calling it. The exponent
/// is handed over because of a constant one the compiler makes a product.
void squareLoop(double* out, const double* x, double two, std::int64_t n) {
    constexpr std::int64_t blockLength = 256;
    double squares[blockLength], doubtful[blockLength];
    for (std::int64_t first = 0; first < n; first += blockLength) {
        const std::int64_t count = std::min(blockLength, n - first);
        squareWhereCertain(x + first, squares, doubtful, count);
        for (std::int64_t i = 0; i < count; ++i)
            out[first + i] = doubtful[i] == 0 ? squares[i] : std::pow(x[first + i], two);
    }
}

void powerLoop(double* out, Operand a, Operand b, std::int64_t n) {
    if (b.one && *b.items == 2) return squareLoop(out, a.items, *b.items, n);
    loop([](double x, double y) { return std::pow(x, y); }, out, a, b, n);
}

template <class Function>
[[gnu::always_inline]] inline void eachOf(Function function, double* out, const double* x, std::int64_t n) {
#pragma GCC ivdep
    for (std::int64_t i = 0; i < n; ++i) out[i] = function(x[i]);
}

VORPEN_MULTIVERSION void squareRootLoop(double* out, const double* x, std::int64_t n) {
    eachOf([](double item) { return std::sqrt(item); }, out, x, n);
}

VORPEN_MULTIVERSION void modulusLoop(double* out, const double* x, std::int64_t n) {
    eachOf([](double item) { return std::fabs(item); }, out, x, n);
}

VORPEN_MULTIVERSION void floorLoop(double* out, const double* x, std::int64_t n) {
    eachOf([](double item) { return std::floor(item); }, out, x, n);
}

VORPEN_MULTIVERSION void ceilingLoop(double* out, const double* x, std::int64_t n) {
    eachOf([](double item) { return std::ceil(item); }, out, x, n);
}

}  // namespace

void applyFunction(double (*function)(double), double* out, const double* x, std::int64_t n) {
    if (function == ::sqrt) return squareRootLoop(out, x, n);
    if (function == ::fabs) return modulusLoop(out, x, n);
    if (function == ::floor) return floorLoop(out, x, n);
    if (function == ::ceil) return ceilingLoop(out, x, n);
    for (std::int64_t i = 0; i < n; ++i) out[i] = function(x[i]);
}

void sineAndCosine(double* sines, double* cosines, const double* x, std::int64_t n) {
    for (std::int64_t i = 0; i < n; ++i) {
#ifdef __GLIBC__
        ::sincos(x[i], sines + i, cosines + i);
#else
        sines[i] = std::sin(x[i]);
        cosines[i] = std::cos(x[i]);
#endif
    }
}

void applyOperator(int code, double* out, Operand a, Operand b, std::int64_t n) {
    switch (code) {
        case OP_PLUS: return addLoop(out, a, b, n);
        case OP_MINUS: return subtractLoop(out, a, b, n);
        case OP_TIMES: return multiplyLoop(out, a, b, n);
        case OP_DIVIDE: return divideLoop(out, a, b, n);
        case OP_QUOTIENT: return loop([](double x, double y) { return std::floor(x / y); }, out, a, b, n);
        case OP_REMAINDER: return loop([](double x, double y) { return remainderOf(x, y); }, out, a, b, n);
        default: return powerLoop(out, a, b, n);
    }
}

}  // namespace vorpen
