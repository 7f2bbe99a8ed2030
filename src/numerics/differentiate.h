// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Derivatives of functions by central differences of five points.

#include <span>

#include "numerics/function_ref.h"

namespace vorpen {

inline constexpr std::size_t stencilSize = 5;

/// The values of a function at five points. They are read before the function
/// is called again.
using StencilFunction =
    FunctionRef<std::span<const double, stencilSize>(std::span<const double, stencilSize>)>;

/// The step between the points for derivatives over a range of abscissae: a
/// small part of the range, or of 1 where all are equal; 0 for none.
[[nodiscard]] double derivativeStep(std::span<const double> x);

/// The derivative at each x, with an error of fourth order in the step
/// (M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964,
/// table 25.2). The function is called once for each x, on all five points.
/// `derivative` is as long as x.
void differentiate(StencilFunction f, std::span<const double> x, double step, std::span<double> derivative);

}  // namespace vorpen
