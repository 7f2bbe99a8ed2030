// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/simple_functors.h"

#include <gsl/gsl_sf_bessel.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/errors.h"
#include "numerics/gsl_errors.h"

namespace vorpen {
namespace {

/// Truncates; NaN counts as 0.
double truncated(double x) { return std::isnan(x) ? 0.0 : std::trunc(x); }

PeakParameters padded(std::span<const double> parameters) {
    PeakParameters p = {1.0, 1.0, 0.0, 0.0};
    std::copy_n(parameters.begin(), std::min(parameters.size(), p.size()), p.begin());
    return p;
}

/// GSL's order is an int, of which it takes the modulus.
constexpr double maxBesselOrder = std::numeric_limits<std::int32_t>::max();

constexpr int pascalRows = 10;

using PascalTriangle = std::array<std::array<double, pascalRows>, pascalRows>;

constexpr PascalTriangle makePascalTriangle() {
    PascalTriangle triangle{};
    for (std::size_t n = 0; n < pascalRows; ++n) {
        triangle[n][0] = triangle[n][n] = 1;
        for (std::size_t k = 1; k < n; ++k) triangle[n][k] = triangle[n - 1][k - 1] + triangle[n - 1][k];
    }
    return triangle;
}

constexpr PascalTriangle pascalTriangle = makePascalTriangle();

/// The product of this many quotients is still more exact than the form with
/// gamma functions.
constexpr double maxProductTerms = 100;

}  // namespace

Poly_eval::Poly_eval(std::span<const double> coefficients) : c(coefficients) {
    Require(!c.empty(), "polynomial has empty coefficient array");
}

double Poly_eval::operator()(double x) {
    double value = c.back();
    for (std::size_t i = c.size() - 1; i > 0; --i) value = value * x + c[i - 1];
    return value;
}

PoissonDistributionFunction::PoissonDistributionFunction(std::span<const double> parameters)
    : mean(parameters.empty() ? 1.0 : parameters[0]), logMean(std::log(mean)) {}

double PoissonDistributionFunction::operator()(double k) {
    return std::exp(k * logMean - mean - std::lgamma(k + 1));
}

BinomialDistributionFunction::BinomialDistributionFunction(std::span<const double> parameters) {
    Require(parameters.size() == 2, "[n,p] should be two scalar numbers");
    n = truncated(parameters[0]);
    logP = std::log(parameters[1]);
    logNotP = std::log(1 - parameters[1]);
    logFactorialN = std::lgamma(n + 1);
}

double BinomialDistributionFunction::operator()(double k) {
    Require(!(k < 0), "negative k in binomial distribution");
    if (k > n) return 0.0;
    return std::exp((n - k) * logNotP + k * logP + logFactorialN - std::lgamma(k + 1) -
                    std::lgamma(n + 1 - k));
}

GaussianFunction::GaussianFunction(std::span<const double> parameters) : p(padded(parameters)) {}

double GaussianFunction::operator()(double x) {
    const auto& [amplitude, sigma, mu, offset] = p;
    const double t = (x - mu) / sigma;
    return amplitude * std::exp(-0.5 * (t * t)) + offset;
}

LorentzianFunction::LorentzianFunction(std::span<const double> parameters) : p(padded(parameters)) {}

double LorentzianFunction::operator()(double x) {
    const auto& [amplitude, width, centre, offset] = p;
    const double h = width * width * 0.25;
    const double t = x - centre;
    return h * amplitude / (t * t + h) + offset;
}

BinomialCoefficients::BinomialCoefficients(std::span<const double> parameters) {
    Require(parameters.size() == 1, "need n to be scalar", "bnc");
    n = truncated(parameters[0]);
}

double BinomialCoefficients::operator()(double x) {
    double k = truncated(x);
    if (2 * k >= n) k = n - k;
    if (n < 2) return 1.0;
    if (n < pascalRows) {
        if (!(k >= 1 && k <= n - 1)) return 1.0;
        return pascalTriangle[static_cast<std::size_t>(n)][static_cast<std::size_t>(k)];
    }
    if (k < maxProductTerms) {
        double product = 1.0;
        for (double i = 0; i < k; ++i) product *= (n - i) / (i + 1);
        return std::round(product);
    }
    return std::round(std::exp(std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1)));
}

BesselFunction::BesselFunction(std::span<const double> parameters) {
    if (parameters.size() != 1) throw OperatorFailure{']'};
    installGslErrorHandler();
    order = static_cast<std::int32_t>(std::clamp(truncated(parameters[0]), -maxBesselOrder, maxBesselOrder));
}

double BesselFunction::operator()(double x) { return gsl_sf_bessel_Jn(order, x); }

CubicInterpolation::CubicInterpolation(std::span<const double> table, std::size_t rows, bool cubic)
    : cubic(cubic) {
    Require(rows >= 2 && table.size() / rows >= 2, "too few data points for interpolation", "interp");
    X = table.first(rows);
    Y = table.subspan(rows, rows);
}

double CubicInterpolation::operator()(double x) {
    const std::size_t i = findSegment(x);
    if (i != segment) useSegment(i);
    const double t = x - X[i];
    if (!cubic) return slope * t + Y[i];
    const double& m = slope;
    const double& mL = slopeLeft;
    const double& mR = slopeRight;
    return (((mL - 2 * m + mR) * t / dx + 3 * m - 2 * mL - mR) * t / dx + mL) * t + Y[i];
}

std::size_t CubicInterpolation::findSegment(double x) const {
    const std::size_t last = X.size() - 2;
    if (std::isnan(x)) return last;
    const std::size_t start = segment <= last && x > X[segment] ? segment : 0;
    if (X[start + 1] > x) return start;
    const auto bound = std::lower_bound(X.begin() + static_cast<std::ptrdiff_t>(start), X.end(), x);
    const auto position = static_cast<std::size_t>(bound - X.begin());
    // Position 0 arises when the abscissae do not ascend.
    return std::min(position > 0 ? position - 1 : 0, last);
}

void CubicInterpolation::useSegment(std::size_t i) {
    segment = i;
    dx = X[i + 1] - X[i];
    slope = (Y[i + 1] - Y[i]) / dx;
    slopeLeft = i == 0 ? slope : (Y[i + 1] - Y[i - 1]) / (X[i + 1] - X[i - 1]);
    slopeRight = i == X.size() - 2 ? slope : (Y[i + 2] - Y[i]) / (X[i + 2] - X[i]);
}

double OrderedListFind::operator()(double x) {
    return static_cast<double>(std::lower_bound(v.begin(), v.end(), x) - v.begin() + 1);
}

}  // namespace vorpen
