// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Integrals of functions of one variable. `integrate` is GSL's: doubly
// adaptive Clenshaw-Curtis quadrature on a finite interval (P. Gonnet,
// "Increasing the reliability of adaptive quadrature using explicit
// interpolants", ACM Transactions on Mathematical Software 37, 2010), which
// takes values that are no numbers for holes, and the adaptive Gauss-Kronrod
// rule of QUADPACK (R. Piessens and others, 1983) on an infinite one.
// `integrateSmooth` asks for ten values at once, which suits functions that are
// quick on arrays: it halves an interval until two ten-point Gauss rules agree
// with one.

#include <cstddef>
#include <span>

#include "numerics/function_ref.h"

namespace vorpen {

/// The integral from a to b to an absolute error of `tolerance` or a relative
/// one of 1e-7, whichever is met first. An infinite limit counts as minus
/// infinity in the first place and as plus infinity in the second, whatever its
/// sign. What GSL has to say is shown as a warning, and the answer is what it
/// has found so far; NaN when it did not begin. A failure of the function
/// passes through.
[[nodiscard]] double integrate(RealFunction f, double a, double b, double tolerance);

inline constexpr std::size_t gaussPoints = 10;

/// The values of a function at ten points. They are read before the function
/// is called again.
using GaussFunction = FunctionRef<std::span<const double, gaussPoints>(std::span<const double, gaussPoints>)>;

struct SmoothIntegral {
    double value;
    bool converged;  ///< false when some interval was still not good enough after 12 halvings
};

/// The integral between finite limits. An interval is good enough when halving
/// it changes its part by at most `tolerance` of it; each half gets half of the
/// tolerance.
[[nodiscard]] SmoothIntegral integrateSmooth(GaussFunction f, double a, double b, double tolerance);

}  // namespace vorpen
