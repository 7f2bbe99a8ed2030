// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies of the model functions: a functor made of the parameters is applied
// to each point. No points give no values, whatever the parameters.

#include "eval/function_types.h"

namespace vorpen::builtin {

void polynomial(const DoubleValue& coefficients, const DoubleValue& x, DoubleValue& out);
void poisson(const DoubleValue& mean, const DoubleValue& k, DoubleValue& out);
void binomial(const DoubleValue& nAndP, const DoubleValue& k, DoubleValue& out);
void binomialCoefficient(const DoubleValue& n, const DoubleValue& k, DoubleValue& out);
void gaussian(const DoubleValue& parameters, const DoubleValue& x, DoubleValue& out);
void lorentzian(const DoubleValue& parameters, const DoubleValue& x, DoubleValue& out);
void besselOfOrder(const DoubleValue& order, const DoubleValue& x, DoubleValue& out);
void cubicInterpolation(const DoubleValue& table, const DoubleValue& x, DoubleValue& out);
void linearInterpolation(const DoubleValue& table, const DoubleValue& x, DoubleValue& out);
void positionInSorted(const DoubleValue& sorted, const DoubleValue& x, DoubleValue& out);

}  // namespace vorpen::builtin
