// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that answer one number about a value. A reduction sees one vector; a
// matrix is reduced column by column by the element that calls it. The sum
// adds in storage order, so that its last bits are the same everywhere, and
// the mean follows it; where no order is fixed the loops work on several
// elements at once, in a way that does not depend on the machine.

#include "eval/function_types.h"

namespace vorpen::builtin {

// ---- reductions to a double

/// Added in storage order with one accumulator.
double sumOfElements(const Value& v);
double sumOfSquares(const Value& v);
double mean(const Value& v);
/// The biased form: mean of squares less the squared mean.
double variance(const Value& v);
double standardDeviation(const Value& v);
/// 0 for an empty vector. A NaN counts only in the first place.
double minimum(const Value& v);
double maximum(const Value& v);
double range(const Value& v);
double product(const Value& v);
/// The integral of samples a step of 1 apart, by Simpson's rule.
double integralOfSamples(const Value& v);
/// The Euclidean norm.
double norm(const Value& v);
double lastElement(const Value& v);
/// The sum of the diagonal of a square matrix.
double trace(const Value& v);

// ---- reductions to an integer; positions count from 1

int allNonZero(const Value& v);
int anyNonZero(const Value& v);
/// 0 for an empty vector.
int minimumIndex(const Value& v);
int maximumIndex(const Value& v);
/// 0 when all elements are zero.
int firstNonZero(const Value& v);
int lastNonZero(const Value& v);

// ---- queries of a whole value

int size(const Value& v);
int rowCount(const Value& v);
/// Columns of a plane for a 3-D array.
int columnCount(const Value& v);
/// The low four bits of the mark.
int formOf(const Value& v);
int markOf(const Value& v);
int isEmpty(const Value& v);
int isScalar(const Value& v);
int isVector(const Value& v);
int isBoolean(const Value& v);
int isString(const Value& v);
/// Says on the console that it is not implemented.
int isDefined(const Value& v);

}  // namespace vorpen::builtin
