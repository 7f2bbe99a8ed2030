// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Numbers as the text that the user reads. A number is written with a count of
// significant digits, in the shorter of fixed and scientific notation and
// without trailing zeros; the exponent of the scientific notation has neither
// a plus sign nor a zero in front, so that it can be typed back as it stands.
// Every place that shows a number (console, strings, text files, axes) uses
// these operations, and they are on the way of every displayed element, so
// they use no streams and no locale.

#include <complex>
#include <string>

namespace vorpen {

/// `x` with `precision` significant digits: 1e20, 1e-5, 0.333333333. A
/// precision of 0 counts as 1, a negative one as 6. NaN of either sign is
/// "nan", the infinities are "inf" and "-inf".
std::string doubleText(double x, int precision);

/// Appends the text of `x` to `text`, as doubleText gives it.
void appendDoubleText(std::string& text, double x, int precision);

/// A complex number: 1+2i, 1-2.5i, 1+i, 2i. A part that is smaller than the
/// other by more than fifteen decimal places is left out.
std::string complexText(std::complex<double> z, int precision);

}  // namespace vorpen
