// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/quadrature.h"

#include <gsl/gsl_integration.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "numerics/gsl_callback.h"
#include "numerics/gsl_errors.h"
#include "numerics/gsl_pointer.h"

namespace vorpen {
namespace {

/// Intervals that a workspace of GSL's has room for, about half a megabyte.
constexpr std::size_t maxIntervals = 500;

constexpr double relativeTolerance = 1e-07;

/// An interval of 2^-12 of the whole that is not smooth holds a singularity.
constexpr int maxDepth = 12;

struct Integrand {
    RealFunction f;
    GuardedCalls calls;

    static double at(double x, void* integrand) {
        auto& self = *static_cast<Integrand*>(integrand);
        double y = std::numeric_limits<double>::quiet_NaN();
        return self.calls.make([&] { y = self.f(x); }) ? y : std::numeric_limits<double>::quiet_NaN();
    }
};

double overFiniteInterval(const gsl_function& f, double a, double b, double tolerance) {
    double result = std::numeric_limits<double>::quiet_NaN(), error = 0;
    std::size_t evaluations = 0;
    const auto workspace = ownedByGuard<gsl_integration_cquad_workspace_free>(
        gsl_integration_cquad_workspace_alloc(maxIntervals));
    gsl_integration_cquad(&f, a, b, tolerance, relativeTolerance, workspace.get(), &result, &error,
                          &evaluations);
    return result;
}

double overInfiniteInterval(gsl_function& f, double a, double b, double tolerance) {
    double result = std::numeric_limits<double>::quiet_NaN(), error = 0;
    const auto workspace =
        ownedByGuard<gsl_integration_workspace_free>(gsl_integration_workspace_alloc(maxIntervals));
    if (!std::isinf(b))
        gsl_integration_qagil(&f, b, tolerance, relativeTolerance, maxIntervals, workspace.get(), &result,
                              &error);
    else if (!std::isinf(a))
        gsl_integration_qagiu(&f, a, tolerance, relativeTolerance, maxIntervals, workspace.get(), &result,
                              &error);
    else
        gsl_integration_qagi(&f, tolerance, relativeTolerance, maxIntervals, workspace.get(), &result,
                             &error);
    return result;
}

// ---- ten-point Gauss rules

/// Abscissae and weights of the ten-point rule on [-1, 1], one of each pair
/// that lies about 0 (M. Abramowitz and I. A. Stegun, Handbook of Mathematical
/// Functions, 1964, table 25.4).
constexpr std::array<double, gaussPoints / 2> gaussAbscissae = {
    0.1488743389816312, 0.4333953941292472, 0.6794095682990244, 0.8650633666889845, 0.9739065285171717};
constexpr std::array<double, gaussPoints / 2> gaussWeights = {
    0.2955242247147529, 0.2692667193099963, 0.219086362515982, 0.1494513491505806, 0.0666713443086881};

class AdaptiveGauss {
public:
    explicit AdaptiveGauss(GaussFunction f) : f_(f) {}

    double rule(double a, double b) const {
        const double middle = (a + b) / 2, half = (b - a) / 2;
        std::array<double, gaussPoints> x;
        for (std::size_t i = 0; i < gaussAbscissae.size(); ++i) {
            x[2 * i] = middle - half * gaussAbscissae[i];
            x[2 * i + 1] = middle + half * gaussAbscissae[i];
        }
        const auto y = f_(x);
        double sum = 0.0;
        for (std::size_t i = 0; i < gaussWeights.size(); ++i)
            sum += gaussWeights[i] * (y[2 * i] + y[2 * i + 1]);
        return half * sum;
    }

    double integral(int depth, double tolerance, double a, double b, double whole) {
        deepest_ = std::max(deepest_, depth);
        const double middle = (a + b) * 0.5;
        const double left = rule(a, middle);
        const double right = rule(middle, b);
        const double sum = left + right;
        if (std::fabs(sum * tolerance) >= std::fabs(sum - whole) || depth > maxDepth) return sum;
        const double ofLeft = integral(depth + 1, tolerance / 2, a, middle, left);
        const double ofRight = integral(depth + 1, tolerance / 2, middle, b, right);
        return ofLeft + ofRight;
    }

    [[nodiscard]] bool converged() const { return deepest_ <= maxDepth; }

private:
    GaussFunction f_;
    int deepest_ = 0;
};

}  // namespace

double integrate(RealFunction f, double a, double b, double tolerance) {
    installGslErrorHandler();
    Integrand integrand{f, {}};
    gsl_function function = {Integrand::at, &integrand};
    const bool isFinite = !std::isinf(a) && !std::isinf(b);
    const double result = isFinite ? overFiniteInterval(function, a, b, tolerance)
                                   : overInfiniteInterval(function, a, b, tolerance);
    integrand.calls.rethrow();
    return result;
}

SmoothIntegral integrateSmooth(GaussFunction f, double a, double b, double tolerance) {
    AdaptiveGauss method(f);
    const double whole = method.rule(a, b);
    const double value = method.integral(1, tolerance, a, b, whole);
    return {value, method.converged()};
}

}  // namespace vorpen
