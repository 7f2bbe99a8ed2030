// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that fit lines and curves to data, and that smooth data.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (x, y), (x, y, dy), (x, y, dy, [plot, tick limit]): the line y = a + b x as
/// [a, b; sigmaA, sigmaB; chi2, q]. dy is the standard error of y, one for all
/// points or one for each; without it, or when it is empty, it is estimated.
/// The errors are rounded to one digit, a and b to the place of that digit; a
/// second output gets [a, b] unrounded. Advice on the quality goes to the
/// console.
void straightLineFit(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (f, p, x, y), (f, p, free, x, y), and behind either the standard errors of
/// y and [plot, tol]: the parameters of the function f(p, x) that fit best, in
/// the shape of p. `free`, as long as p, is 0 for each parameter that stays as
/// it is. Further outputs get the standard errors of the free parameters, in
/// the orientation of p; [chi2, q]; and the covariances of the free parameters.
void curveFit(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// A smoothing filter in a row: [], [window], [window, order], [left, right,
/// order], [left, right, order, derivative].
void smoothingFilter(const Value& shape, DoubleValue& out);

/// The data, or each column of a matrix, under a smoothing filter.
void smoothed(const Value& v, const DoubleValue* shape, Value& out);

}  // namespace vorpen::builtin
