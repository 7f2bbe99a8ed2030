// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/kernels.h"

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

void powerLoop(double* out, Operand a, Operand b, std::int64_t n) {
    loop([](double x, double y) { return std::pow(x, y); }, out, a, b, n);
}

}  // namespace

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
