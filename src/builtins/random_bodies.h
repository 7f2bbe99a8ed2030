// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that draw from the language's source of random numbers. The
// argument gives the shape: nothing for the empty array; sizes alone for
// `rand`; for the others a parameter of the distribution, then the sizes.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// One uniform number from 0 to 1, both included.
double uniformNumber();
/// Begins the sequence of a seed; answers it.
int setSeed(int seed);

/// n: a row of n uniform numbers; [rows, columns]: a matrix of them.
void uniformArray(const Value& sizes, DoubleValue& out);
/// Exponential deviates: [rate], [rate, n] or [rate, rows, columns].
void exponentialArray(const Value& v, DoubleValue& out);
/// Normal deviates of mean 0: [standard deviation], and sizes as above.
void normalArray(const Value& v, DoubleValue& out);
/// Integers from 0 to n-1, at most 32767: [n], and sizes as above.
void integerArray(const Value& v, IntValue& out);

}  // namespace vorpen::builtin
