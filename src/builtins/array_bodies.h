// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that build arrays, from sizes or limits or from other arrays. Every
// result is without mark unless the text below says that the form is kept. A
// body may be asked to write its result over its argument.

#include "eval/function_types.h"

namespace vorpen::builtin {

// ---- construction

/// [a, b, n]: n evenly spaced points in a row from a towards b, as a running
/// sum; [a, b]: 100 points.
void evenlySpaced(const Value& limits, DoubleValue& out);
/// Sizes to an array of zeros: n by n, rows by columns, or rows by columns by
/// planes. Negative sizes and more than three fail.
void zeros(const Value& sizes, DoubleValue& out);
void ones(const Value& sizes, DoubleValue& out);
/// The identity of n rows.
void identity(const Value& n, DoubleValue& out);
/// All elements in one row, or in the given number of rows and columns; the
/// form stays, planes are given up.
void reshape(const Value& v, const DoubleValue* shape, Value& out);
/// A vector on a diagonal of a square matrix, or a diagonal of a square matrix
/// as a column; k above the main diagonal.
void diagonal(const Value& v, const DoubleValue* k, Value& out);
/// (real parts, imaginary parts) of one size.
void complexFromParts(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

// ---- arrays from arrays

/// Positions of the non-zero elements, in a row when v is one.
void findAll(const Value& v, IntValue& out);
/// [rows, columns]
void shape(const Value& v, IntValue& out);
/// Running sum in storage order; shape and form stay.
void runningSum(const Value& v, DoubleValue& out);
/// Elements in reverse storage order; shape and form stay.
void reverse(const Value& v, DoubleValue& out);
/// A row.
void columnSums(const Value& m, DoubleValue& out);
/// A column.
void rowSums(const Value& m, DoubleValue& out);
/// First and second differences, one and two elements shorter than the vector.
void differences(const Value& v, DoubleValue& out);
void secondDifferences(const Value& v, DoubleValue& out);
/// The derivative of evenly spaced samples at unit spacing.
void sampledDerivative(const Value& v, DoubleValue& out);
/// (array): a vector to a number, a matrix to its column sums. (function,
/// points): the results at all points added.
void sum(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// (function, points): the results at all points as rows. The first one fixes
/// the width; a shorter one leaves zeros.
void table(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

// ---- undirected graphs, as square matrices of zeros and ones

/// The number of connected components.
double componentCount(const Value& adjacency);
/// The component of each vertex, numbered from 1 by first vertex, in a row.
void components(const Value& adjacency, IntValue& out);

}  // namespace vorpen::builtin
