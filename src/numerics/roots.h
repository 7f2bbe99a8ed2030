// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Roots of functions of one variable. A root is found between two points where
// the function has opposite signs; with a single point, a search to both sides
// finds the other one first. Signs are compared strictly: a point where the
// function is exactly zero has no sign, and only the ends of an interval are
// recognised as roots.

#include <span>
#include <vector>

#include "numerics/function_ref.h"

namespace vorpen {

/// The other end of an interval with a change of sign: from x to alternate
/// sides in steps that double, then once more in steps ten times finer, and so
/// on. At most 301 evaluations.
/// @throws RuntimeError "couldn't find a zero-crossing"
[[nodiscard]] double findZeroCrossing(RealFunction f, double x);

struct Root {
    double x;
    bool converged;  ///< false when the rounds were used up; x is the last estimate
};

/// The root between x1 and x2, which may stand in either order, by C. Ridders,
/// "A new algorithm for computing a single root of a real continuous
/// function", IEEE Transactions on Circuits and Systems 26 (1979) 979. The
/// tolerance is absolute, for two estimates in a row and for the interval. Two
/// evaluations, and two in each of at most 60 rounds.
/// @throws RuntimeError when f has no change of sign and no zero at the ends
[[nodiscard]] Root ridders(RealFunction f, double x1, double x2, double tol);

/// Where the line from each sample to the next one meets zero: positions
/// counted from 1, in order. A sample that is zero ends the interval before it
/// and begins the one behind it, so an inner one is found twice; an interval
/// between two zeros gives its left end.
[[nodiscard]] std::vector<double> zeroCrossings(std::span<const double> y);

/// The same at the abscissae x, as many as there are samples.
[[nodiscard]] std::vector<double> zeroCrossings(std::span<const double> y, std::span<const double> x);

}  // namespace vorpen
