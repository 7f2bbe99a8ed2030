// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/differentiate.h"

#include <algorithm>
#include <array>

namespace vorpen {
namespace {

// Where truncation and rounding of the five-point formula are both small for
// functions that vary over their range.
constexpr double relativeStep = 1e-05;

}  // namespace

double derivativeStep(std::span<const double> x) {
    if (x.empty()) return 0;
    double least = x[0], greatest = x[0];
    for (const double item : x) {
        if (item < least) least = item;
        if (item > greatest) greatest = item;
    }
    const double step = (greatest - least) * relativeStep;
    return step == 0 ? relativeStep : step;
}

void differentiate(StencilFunction f, std::span<const double> x, double step, std::span<double> derivative) {
    for (std::size_t i = 0; i < x.size(); ++i) {
        const std::array<double, stencilSize> points = {x[i] - 2 * step, x[i] - step, x[i], x[i] + step,
                                                        x[i] + 2 * step};
        const auto v = f(points);
        derivative[i] = (8 * (v[3] - v[1]) - v[4] + v[0]) / 12;
    }
    for (double& d : derivative) d /= step;
}

}  // namespace vorpen
