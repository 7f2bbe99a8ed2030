// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The straight line y = a + b x through points with errors in y, by least
// squares, with the errors of a and b and the probability of so bad a fit (W.
// H. Press, B. P. Flannery, S. A. Teukolsky and W. T. Vetterling, Numerical
// Recipes, 1986, section 14.2). The abscissae are centred before their squares
// are summed, so that data far from x = 0 lose no digits. What cannot be
// computed, as for points above one another, comes out as NaN.

#include <span>
#include <string>
#include <vector>

namespace vorpen {

struct LineFit {
    double a, b;            ///< intercept and slope
    double sigmaA, sigmaB;  ///< their standard errors
    double chi2;            ///< the sum of squared residuals in units of the errors
    double q;               ///< the probability of a greater chi2
    std::vector<double> residuals;
    std::vector<double> errors;  ///< of y: one for all points, or one for each
    int dubiousPoints;           ///< farther from the line than their error explains
};

/// Fits a line to at least two points. `errors` holds one standard error of y
/// for all points, or one for each. Without any the error is estimated by
/// estimateNoise, and below 30 points q is 1. Where even that leaves no error,
/// as for points exactly on a line, the errors of a and b and chi2 are 0 and q
/// is 1. q is also 1 for two points.
/// @throws RuntimeError "not enough points"
[[nodiscard]] LineFit fitLine(std::span<const double> x, std::span<const double> y,
                              std::span<const double> errors = {});

/// The standard deviation of y about lines through blocks of ten points, the
/// last one with what remains: what is left of smooth data when their trend
/// is taken away. Undefined (NaN) for two points.
[[nodiscard]] double estimateNoise(std::span<const double> x, std::span<const double> y);

/// Advice on the quality of a fit of n points, empty when there is none to
/// give.
[[nodiscard]] std::string fitRemark(int dubiousPoints, double q, std::size_t n, double chi2);

struct ValueWithError {
    double value, error;
};

/// The error rounded to one significant digit and the value rounded to the
/// decimal place of that digit, as it was before rounding: 0.96 becomes 1, and
/// its value keeps one decimal. Unchanged when the error is 0, infinite or NaN.
[[nodiscard]] ValueWithError roundedToError(double value, double error);

}  // namespace vorpen
