// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that find roots, derivatives and minima: of a function that is given
// by name or written on the spot, or of samples.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (f, [x1, x2]) or (f, x1): one root, by default to 1e-10; with a parameter
/// and a tolerance where the function arguments have them. A tolerance with a
/// second element other than 0 leaves the result as it was.
/// (y), (y, x): the zero crossings of samples, in a column.
void fzero(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// (f, x), (f, parameter, x): the derivative at each x, in the shape of x.
/// (y), (y, h), (y, x): the derivative of evenly spaced samples.
void differ(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// (f, x1), (f, [x1, x2]), (f, parameter, x): three points around a minimum,
/// in a row.
void fminbrac(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// The same and (f, x, tol): where the minimum is, by default to 1e-8 of x.
/// A second output gets the value there.
void fmin(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

}  // namespace vorpen::builtin
