// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The incomplete gamma function, which turns the chi-square of a fit into the
// probability of so bad a fit.

namespace vorpen {

/// The regularised upper incomplete gamma function Q(a, x): the integral of
/// t^(a-1) exp(-t) from x to infinity, over gamma(a). 1 at x = 0, 0 for an
/// infinite argument, NaN for a NaN. By the series below a+1, by Lentz's
/// continued fraction above, and by quadrature from a = 101.
///
/// M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964,
/// 6.5; W. J. Lentz, Generating Bessel functions in Mie scattering
/// calculations using continued fractions, 1976.
///
/// Raises a PlainFailure unless a > 0 and x >= 0.
double gammaQ(double a, double x);

/// The integral of t^(a-1) exp(-t) / gamma(a) by Simpson's rule, in about ten
/// points for each standard deviation: from x upwards, or, when `lower` is
/// set, from 0 to x, the tail cut where it no longer counts. For a above 1.
double gammaByQuadrature(double a, double x, bool lower);

}  // namespace vorpen
