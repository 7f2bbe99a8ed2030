// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/roots.h"

#include <cmath>

#include "base/errors.h"

namespace vorpen {
namespace {

// The search for a change of sign: 30 doublings take a step of 1 beyond 1e9,
// and 10 scales take the first step down to 1e-9.
constexpr int stepScales = 10;
constexpr int stepsOfScale = 30;

// A round usually does better than to halve the interval, and 60 halvings use
// up the bits of any root that is about as large as its interval.
constexpr int ridderRounds = 60;

/// Stands for the estimate before the first; no root is expected there.
constexpr double noEstimate = -1.234567e+89;

bool haveOppositeSigns(double a, double b) { return (a < 0 && b > 0) || (a > 0 && b < 0); }

/// Calls found(left) for each interval between neighbours that touches zero.
template <class Found>
void forEachCrossing(std::span<const double> y, Found found) {
    for (std::size_t i = 0; i + 1 < y.size(); ++i)
        if (y[i] * y[i + 1] <= 0) found(i);
}

}  // namespace

double findZeroCrossing(RealFunction f, double x0) {
    const double f0 = f(x0);
    double firstStep = 1.0;
    for (int scale = 0; scale < stepScales; ++scale, firstStep *= 0.1) {
        double x = x0;
        double step = firstStep;
        for (int i = 0; i < stepsOfScale; ++i, step *= -2.0) {
            x += step;
            if (f(x) * f0 < 0) return x;
        }
    }
    raiseRuntimeError("couldn't find a zero-crossing");
}

Root ridders(RealFunction f, double x1, double x2, double tol) {
    double xl = x1, xh = x2;
    double fl = f(xl), fh = f(xh);
    if (!haveOppositeSigns(fl, fh)) {
        if (fl == 0) return {x1, true};
        if (fh == 0) return {x2, true};
        raiseRuntimeError("fzero: f(x1) and f(x2) have same sign");
    }
    double estimate = noEstimate;
    for (int round = 0; round < ridderRounds; ++round) {
        const double xm = (xl + xh) * 0.5;
        const double fm = f(xm);
        const double s = std::sqrt(fm * fm - fl * fh);
        if (s == 0) return {estimate, true};
        const double sign = fl < fh ? -1.0 : 1.0;
        const double xnew = xm + (xm - xl) * (sign * fm / s);
        if (std::fabs(xnew - estimate) <= tol) return {estimate, true};
        estimate = xnew;
        const double fnew = f(estimate);
        if (haveOppositeSigns(fm, fnew)) {
            xl = xm;
            fl = fm;
            xh = estimate;
            fh = fnew;
        } else if (haveOppositeSigns(fl, fnew)) {
            xh = estimate;
            fh = fnew;
        } else if (haveOppositeSigns(fh, fnew)) {
            xl = estimate;
            fl = fnew;
        }
        if (std::fabs(xh - xl) <= tol) return {estimate, true};
    }
    return {estimate, false};
}

std::vector<double> zeroCrossings(std::span<const double> y) {
    std::vector<double> positions;
    forEachCrossing(y, [&](std::size_t i) {
        const double left = static_cast<double>(i + 1);
        const bool bothZero = y[i] == 0 && y[i + 1] == 0;
        positions.push_back(bothZero ? left : left - y[i] / (y[i + 1] - y[i]));
    });
    return positions;
}

std::vector<double> zeroCrossings(std::span<const double> y, std::span<const double> x) {
    std::vector<double> positions;
    forEachCrossing(y, [&](std::size_t i) {
        const bool bothZero = y[i] == 0 && y[i + 1] == 0;
        positions.push_back(bothZero ? x[i] : (x[i] * y[i + 1] - x[i + 1] * y[i]) / (y[i + 1] - y[i]));
    });
    return positions;
}

}  // namespace vorpen
