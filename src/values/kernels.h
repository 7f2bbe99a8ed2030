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

/// The same for two numbers.
inline double applyOperator(int code, double a, double b) {
    switch (code) {
        case 16: return a + b;
        case 17: return a - b;
        case 8: return a * b;
        case 9: return a / b;
        case 13: return std::floor(a / b);
        case 18: return std::fmod(a, b);
        default: return std::pow(a, b);
    }
}

/// True for the codes that applyOperator knows.
constexpr bool isElementwise(int code) {
    return code == 0 || code == 8 || code == 9 || code == 13 || (code >= 16 && code <= 18);
}

}  // namespace vorpen
