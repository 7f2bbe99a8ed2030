// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Element-wise functions that the standard mathematical library does not have,
// or defines in another way. Each maps one number to one number and knows
// nothing of arrays. Outside its domain a function answers NaN or an infinity;
// those that call GSL also show GSL's warning.

#include <cstdint>

namespace vorpen {

/// ln(x)*1.4426950408889634 + 2.220446049250313e-16. The small summand is part
/// of the definition, so that the logarithm of 1 is not 0.
double log2Raised(double x);

/// 1 above 0, 0 at 0, else -1 (also for NaN).
double sign(double x);

/// The step function: 1 above 0, 1/2 at 0, else 0.
double fstep(double x);

/// 1 strictly between 0 and 1, 1/2 at 0 and at 1, else 0.
double tophat(double x);

/// sin(x)/x, and 1 at 0.
double sinc(double x);

/// The phase of a real number: 0 or pi.
double phase(double x);

/// 1 for NaN, else 0.
double nanFlag(double x);

/// Bessel functions of the first kind, of order 0 and 1.
double besselJ0(double x);
double besselJ1(double x);

/// The precision with which airy works, truncated to GSL's mode: 0 double, 1
/// single, 2 approximate. One for the program; starts as 1e-9, which is
/// double.
double& airyPrecision();

/// The Airy function Ai.
double airy(double x);

/// The quantile of the standard normal distribution: the x below which a
/// deviate lies with the given probability. Infinite at 0 and 1.
double erfinv(double probability);

/// Riemann's zeta function; a pole at 1.
double zeta(double x);

/// The count of one bits, of a negative number in its 32-bit pattern.
std::int32_t bitWeight(std::int32_t n);

/// The code of the small letter for a capital letter A to Z, any other code as
/// it is.
std::int32_t lowerCase(std::int32_t code);

}  // namespace vorpen
