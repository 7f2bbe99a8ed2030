// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/mask_kernels.h"

#include <algorithm>

#include "base/multiversion.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

template <class Compare>
[[gnu::always_inline]] inline void compareLoop(Compare compare, unsigned char* __restrict truths, Operand a,
                                               Operand b, std::int64_t n) {
    const double* x = a.items;
    const double* y = b.items;
    if (b.one) {
        const double right = *y;
        for (std::int64_t i = 0; i < n; ++i) truths[i] = compare(x[i], right);
    } else if (a.one) {
        const double left = *x;
        for (std::int64_t i = 0; i < n; ++i) truths[i] = compare(left, y[i]);
    } else {
        for (std::int64_t i = 0; i < n; ++i) truths[i] = compare(x[i], y[i]);
    }
}

VORPEN_MULTIVERSION void lessLoop(unsigned char* truths, Operand a, Operand b, std::int64_t n) {
    compareLoop([](double x, double y) { return x < y; }, truths, a, b, n);
}

VORPEN_MULTIVERSION void lessEqualLoop(unsigned char* truths, Operand a, Operand b, std::int64_t n) {
    compareLoop([](double x, double y) { return x <= y; }, truths, a, b, n);
}

VORPEN_MULTIVERSION void equalLoop(unsigned char* truths, Operand a, Operand b, std::int64_t n) {
    compareLoop([](double x, double y) { return x == y; }, truths, a, b, n);
}

VORPEN_MULTIVERSION void notEqualLoop(unsigned char* truths, Operand a, Operand b, std::int64_t n) {
    compareLoop([](double x, double y) { return x != y; }, truths, a, b, n);
}

}  // namespace

void compareItems(int op, unsigned char* truths, Operand a, Operand b, std::int64_t n) {
    switch (op) {
        case OP_LESS: return lessLoop(truths, a, b, n);
        case OP_LESS_EQUAL: return lessEqualLoop(truths, a, b, n);
        case OP_EQUAL: return equalLoop(truths, a, b, n);
        case OP_NOT_EQUAL: return notEqualLoop(truths, a, b, n);
        case OP_GREATER_EQUAL: return lessEqualLoop(truths, b, a, n);
        default: return lessLoop(truths, b, a, n);
    }
}

void joinTruths(int op, unsigned char* __restrict left, const unsigned char* __restrict right, std::int64_t n) {
    switch (op) {
        case OP_BIT_AND:
        case OP_AND:
            for (std::int64_t i = 0; i < n; ++i) left[i] &= right[i];
            break;
        case OP_BIT_OR:
        case OP_OR:
            for (std::int64_t i = 0; i < n; ++i) left[i] |= right[i];
            break;
        default:
            for (std::int64_t i = 0; i < n; ++i) left[i] ^= right[i];
    }
}

VORPEN_MULTIVERSION std::int64_t countTruths(const unsigned char* truths, std::int64_t n) {
    // A short sum fits a byte, and bytes are added many at a time.
    constexpr std::int64_t lanes = 64, rounds = 255;
    std::int64_t count = 0, i = 0;
    while (i + lanes <= n) {
        unsigned char partial[lanes] = {};
        const std::int64_t end = std::min(n - lanes, i + (rounds - 1) * lanes);
        for (; i <= end; i += lanes)
            for (std::int64_t k = 0; k < lanes; ++k) partial[k] += truths[i + k];
        for (const unsigned char p : partial) count += p;
    }
    for (; i < n; ++i) count += truths[i];
    return count;
}

VORPEN_MULTIVERSION void widenTruths(int* __restrict out, const unsigned char* __restrict truths, std::int64_t n) {
    for (std::int64_t i = 0; i < n; ++i) out[i] = truths[i];
}

void selectItems(double* __restrict out, std::int64_t count, const double* __restrict items,
                 const unsigned char* __restrict truths) {
    for (std::int64_t i = 0, k = 0; k < count; ++i) {
        out[k] = items[i];
        k += truths[i];
    }
}

}  // namespace vorpen
