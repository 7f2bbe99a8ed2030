// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/incomplete_gamma.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/errors.h"
#include "numerics/simpson.h"

namespace vorpen {
namespace {

constexpr double epsilon = 2.220446049250313e-16;

/// Stands for a denominator that vanished in Lentz's method.
constexpr double tiny = 1.0020841800044864e-292;

/// From this parameter on the series and the continued fraction need many
/// terms, and the integrand is smooth enough for quadrature.
constexpr double quadratureFrom = 101;

/// A range of more points than this, ten thousand standard deviations, holds
/// the whole distribution.
constexpr double maxPoints = 1e5;

/// x^a exp(-x) / gamma(a)
double prefactor(double a, double x) { return std::exp(a * std::log(x) - x - std::lgamma(a)); }

/// The regularised lower function P(a, x), for x below a+1.
double lowerBySeries(double a, double x) {
    // P is 1 up to rounding, and the sum below would overflow.
    if (a < 1e-300) return 1;
    double term = 1 / a;
    double sum = term;
    double b = a;
    do {
        b += 1;
        term = term * x / b;
        sum += term;
    } while (!(std::fabs(term) < std::fabs(sum) * epsilon));
    return sum * prefactor(a, x);
}

double awayFromZero(double v) { return std::fabs(v) < tiny ? tiny : v; }

/// Q(a, x) for x from a+1.
double upperByFraction(double a, double x) {
    // Far out, where the iteration would lose its way among subnormal numbers.
    const double factor = prefactor(a, x);
    if (factor == 0) return 0;
    double b = x + 1 - a;
    double c = 1 / tiny;
    double d = 1 / b;
    double h = d;
    double del;
    double i = 0;
    do {
        i += 1;
        const double an = -i * (i - a);
        b += 2;
        d = 1 / awayFromZero(an * d + b);
        c = awayFromZero(b + an / c);
        del = d * c;
        h *= del;
    } while (std::fabs(del - 1) > epsilon);
    return h * factor;
}

}  // namespace

double gammaByQuadrature(double a, double x, bool lower) {
    const double s = std::sqrt(a - 1);
    const double from = lower ? std::max(0.0, std::min(x - 5 * s, a - 1 - 7.5 * s)) : x;
    const double to = lower ? x : std::max(x + 6 * s, a - 1 + 11.5 * s);
    const double wanted = (to - from) / (s * 0.1);
    if (std::isnan(wanted)) return wanted;
    if (wanted > maxPoints) return 1;
    const double intervals = std::max(4 * std::ceil((wanted - 1) / 4), 4.0);
    const double h = (to - from) / intervals;
    const double logGamma = std::lgamma(a);
    std::vector<double> integrand(static_cast<std::size_t>(intervals) + 1);
    for (std::size_t i = 0; i < integrand.size(); ++i) {
        const double t = from + static_cast<double>(i) * h;
        integrand[i] = std::exp((a - 1) * std::log(t) - t - logGamma);
    }
    return simpson(integrand, h);
}

double gammaQ(double a, double x) {
    if (std::isnan(a) || std::isnan(x)) return a + x;
    if (a <= 0) throw PlainFailure{"a must be positive for incomplete Gamma function"};
    if (x < 0) throw PlainFailure{"x must be >=0 for incomplete Gamma function"};
    if (x == 0) return 1;
    if (std::isinf(a) || std::isinf(x)) return 0;
    if (a >= quadratureFrom) return gammaByQuadrature(a, x, false);
    return x < a + 1 ? 1 - lowerBySeries(a, x) : upperByFraction(a, x);
}

}  // namespace vorpen
