// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that integrate: a function over an interval, and a system of
// differential equations from a state at a point.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (f, [a, b]), (f, parameter, [a, b]), (f, [a, b], [], tolerance): the
/// integral by values at single points, to 1e-9 or a relative 1e-7. Limits may
/// be infinite.
void integ(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// The same by ten values at once, to a relative 1e-9; a function that answers
/// one number for them is called point by point. Infinite limits go to integ.
void qinteg(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// (f, jacobian, parameter, x, y0): the states of y' = f(parameter, y) at the
/// points x, one in each column, y0 in the first. A function of one input gets
/// y alone. y has the shape of y0.
void ode(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// The same for the van der Pol oscillator with the parameter as mu. The first
/// two arguments are of no matter.
void odetest(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

}  // namespace vorpen::builtin
