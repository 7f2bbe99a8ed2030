// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Least-squares fits of any model by the method of K. Levenberg, "A method for
// the solution of certain non-linear problems in least squares", Quarterly of
// Applied Mathematics 2 (1944) 164, and D. W. Marquardt, "An algorithm for
// least-squares estimation of nonlinear parameters", SIAM Journal 11 (1963)
// 431: the step is that of the linearised model, with the diagonal of the
// normal matrix raised by a factor 1+lambda. lambda falls tenfold with each
// step that brings the fit nearer and grows tenfold with each that does not.
// Derivatives are forward differences, one evaluation of the whole model for
// each free parameter.

#include <span>
#include <vector>

#include "numerics/function_ref.h"

namespace vorpen {

/// The values of the model at all points, for given parameters. They are read
/// before the model is evaluated again.
using CurveModel = FunctionRef<std::span<const double>(std::span<const double> parameters)>;

struct CurveData {
    std::span<const double> y;
    std::span<const double> sigma = {};  ///< standard errors of y; none for equal weights of 1
};

struct CurveFit {
    std::vector<double> parameters;
    bool converged;
    double chi2;                     ///< the sum of squared residuals in units of sigma, or of 1
    double q;                        ///< the probability of a greater chi2; 1 without degrees of freedom
    int degreesOfFreedom;            ///< points less free parameters; may be below 0
    std::vector<double> covariance;  ///< of the free parameters, by column: the inverse normal matrix
    std::vector<double> errors;      ///< standard errors of the free parameters
    std::vector<double> values;      ///< of the model at the final parameters
};

inline constexpr double curveFitTolerance = 1e-06;

/// Fits the parameters for which `free` is not 0, as many flags as there are
/// parameters. The fit ends when chi2 has changed by less than `tol`, or `tol`
/// times chi2 where that is greater, four times in all, or without convergence
/// after 1000 steps. One evaluation for each step and one for each of its
/// derivatives, the same at the start, and one at the end.
/// @throws RuntimeError "sig array has the wrong length"; "LUform: matrix has a
///     row of zeros" when the model does not depend on a free parameter
[[nodiscard]] CurveFit fitCurve(CurveModel model, const CurveData& data, std::span<const double> start,
                                std::span<const char> free, double tol = curveFitTolerance);

}  // namespace vorpen
