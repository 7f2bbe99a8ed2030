// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Minima of functions of one variable, in two steps: a walk downhill that ends
// with three points of which the middle one is lowest, and the search for the
// minimum between them. No derivatives are asked for.

#include "numerics/function_ref.h"

namespace vorpen {

/// Three points in rising or falling order; the function is not higher at b
/// than at a and c.
struct Bracket {
    double a, b, c;
};

/// Walks downhill from ax and bx in steps that grow by the golden section, or
/// to the minimum of the parabola through the last three points, but never
/// farther than a hundred times the last step (the bracketing of W. H. Press,
/// B. P. Flannery, S. A. Teukolsky and W. T. Vetterling, Numerical Recipes,
/// 1986, section 10.1). A function without a minimum is followed until its
/// values or the points are infinite.
/// @throws RuntimeError "couldn't find a minimum" for a function that goes on
///     falling there
[[nodiscard]] Bracket bracketMinimum(RealFunction f, double ax, double bx);

struct Minimum {
    double x, value;
};

/// The minimum inside a bracket by R. P. Brent, Algorithms for Minimization
/// without Derivatives (1973), chapter 5: parabolas where they converge,
/// golden sections otherwise. The tolerance is relative to x. One evaluation,
/// and one in each of at most 100 rounds.
/// @throws RuntimeError when the rounds are used up
[[nodiscard]] Minimum brentMinimum(RealFunction f, const Bracket& bracket, double tol);

}  // namespace vorpen
