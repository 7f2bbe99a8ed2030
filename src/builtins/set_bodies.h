// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies for sorting, for sets as sorted vectors, for permutations and for the
// view of an array as a stack of rows. NaNs sort last. A set operation walks
// two sorted vectors side by side; on unsorted ones it runs as it is.
//
// The bodies that change their argument are given the variable itself, or a
// copy of anything that is not a variable.

#include "eval/function_types.h"

namespace vorpen::builtin {

// ---- sorting

/// All elements in ascending order, shape and form kept; or the rows of a
/// matrix by one column, counted from 1, equal rows in their order.
void sort(const Value& v, const DoubleValue* column, Value& out);
/// Sorts the variable; the result is it, truncated to integers.
void sortInPlace(DoubleValue& v, IntValue& out);
/// The permutation from 1 that sorts v; equal elements keep their order.
void sortIndices(const Value& v, IntValue& out);
/// The order from 1 of whole rows, compared from the first column on.
void sortedRowOrder(const Value& m, IntValue& out);
/// Sorted, each value once: a column for a column, else a row.
void unique(const Value& v, DoubleValue& out);
/// A random permutation of the elements of a vector or the rows of a matrix.
void shuffle(const Value& v, DoubleValue& out);

// ---- sets; the result is a column when the first argument with elements is one

void isSubset(const Value& a, const DoubleValue* b, Value& out);
void intersection(const Value& a, const DoubleValue* b, Value& out);
void unionOf(const Value& a, const DoubleValue* b, Value& out);
void difference(const Value& a, const DoubleValue* b, Value& out);
void symmetricDifference(const Value& a, const DoubleValue* b, Value& out);

/// 1 when a sorts before b, element by element, a shorter beginning first;
/// empty without b.
void before(const Value& a, const DoubleValue* b, Value& out);

// ---- permutations of the variable; the result is empty

void nextPermutation(DoubleValue& v, IntValue& out);
void previousPermutation(DoubleValue& v, IntValue& out);

// ---- rows

/// The matrix with two rows exchanged.
void swapRows(const Value& m, const DoubleValue* rows, Value& out);
/// Adds a last row to the variable; the result is a copy of it.
void push(DoubleValue& stack, const DoubleValue* row, DoubleValue& out);
/// The last row.
void top(const Value& stack, DoubleValue& out);
/// Removes the last or the first row of the variable and answers it.
void pop(DoubleValue& stack, DoubleValue& out);
void popFirst(DoubleValue& queue, DoubleValue& out);

}  // namespace vorpen::builtin
