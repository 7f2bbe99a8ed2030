// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The inner loops of conditions on arrays. A truth value is one byte, 0 or 1,
// so that those of a block stay in the first-level cache beside what they are
// made from.

#include <cstdint>

#include "values/kernels.h"

namespace vorpen {

/// truths[i] = a[i] op b[i] for an operator from OP_LESS to OP_GREATER without
/// OP_IDENTICAL.
void compareItems(int op, unsigned char* truths, Operand a, Operand b, std::int64_t n);

/// left[i] = left[i] op right[i] for a bitwise or logical operator.
void joinTruths(int op, unsigned char* left, const unsigned char* right, std::int64_t n);

[[nodiscard]] std::int64_t countTruths(const unsigned char* truths, std::int64_t n);

void widenTruths(int* out, const unsigned char* truths, std::int64_t n);

/// Copies the items that a truth of 1 stands beside. There are `count` of
/// them, and nothing behind them is written.
void selectItems(double* out, std::int64_t count, const double* items, const unsigned char* truths);

}  // namespace vorpen
