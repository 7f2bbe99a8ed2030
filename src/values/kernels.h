// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The inner loops of element-wise arithmetic on doubles, compiled for wide
// vectors. An operand is an array or one number that meets every element; the
// result may be an operand's own memory.

#include <cmath>
#include <cstdint>

namespace vorpen {

/// Elements of an operand: consecutive, or one for all.
struct Operand {
    const double* items;
    bool one;
};

/// out[i] = a[i] op b[i] for an operator code of levels 0 to 2 that works
/// element by element: + - * / ^ _/ mod.
void applyOperator(int code, double* out, Operand a, Operand b, std::int64_t n);

/// out[i] = function(x[i]). The functions that a processor has as an operation
/// on vectors, exact by IEEE 754, go without calls: a root takes 0.9 ns for an
/// element instead of 3.
void applyFunction(double (*function)(double), double* out, const double* x, std::int64_t n);

/// sines[i] = sin(x[i]) and cosines[i] = cos(x[i]), with the bits of each call
/// alone: the GNU C library makes both by the same routines. A test holds it
/// to that.
void sineAndCosine(double* sines, double* cosines, const double* x, std::int64_t n);

/// The remainder of a / b with the sign of a, as fmod has it. Whole numbers below
/// 2^53 go through integer division, or a mask where b is a power of 2: a
/// fraction of the time, and the same bits.
inline double remainderOf(double a, double b) {
    constexpr double largest = 9007199254740992.0;
    const double x = std::fabs(a), y = std::fabs(b);
    if (!(x < largest && y < largest)) return std::fmod(a, b);
    const auto m = static_cast<std::int64_t>(x), n = static_cast<std::int64_t>(y);
    if (static_cast<double>(m) != x || static_cast<double>(n) != y || n == 0) return std::fmod(a, b);
    std::int64_t rest;
    if ((n & (n - 1)) == 0)
        rest = m & (n - 1);
    else if (((m | n) >> 32) == 0)
        rest = static_cast<std::uint32_t>(m) % static_cast<std::uint32_t>(n);
    else
        rest = m % n;
    return std::copysign(static_cast<double>(rest), a);
}

/// An operator on two numbers.
inline double applyOperator(int code, double a, double b) {
    switch (code) {
        case 16: return a + b;
        case 17: return a - b;
        case 8: return a * b;
        case 9: return a / b;
        case 13: return std::floor(a / b);
        case 18: return remainderOf(a, b);
        default: return std::pow(a, b);
    }
}

/// True for the codes that applyOperator knows.
constexpr bool isElementwise(int code) {
    return code == 0 || code == 8 || code == 9 || code == 13 || (code >= 16 && code <= 18);
}

}  // namespace vorpen
