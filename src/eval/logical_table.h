// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The bitwise and logical operators that work element by element, for integers
// and for doubles. On doubles the bitwise ones truncate both sides to integers
// first.

#include "values/mathmatrix.h"

namespace vorpen {

constexpr bool hasLogicalEntry(int code) {
    return code == OP_BIT_AND || code == OP_BIT_OR || code == OP_BIT_XOR || code == OP_AND || code == OP_OR ||
           code == OP_XOR;
}

inline int applyLogical(int code, int a, int b) {
    switch (code) {
        case OP_BIT_AND: return a & b;
        case OP_BIT_OR: return a | b;
        case OP_BIT_XOR: return a ^ b;
        case OP_AND: return a != 0 && b != 0;
        case OP_OR: return a != 0 || b != 0;
        default: return (a != 0) != (b != 0);
    }
}

inline double applyLogical(int code, double a, double b) {
    switch (code) {
        case OP_AND: return a != 0 && b != 0;
        case OP_OR: return a != 0 || b != 0;
        case OP_XOR: return (a != 0) != (b != 0);
        default: return applyLogical(code, truncateToInt(a), truncateToInt(b));
    }
}

}  // namespace vorpen
