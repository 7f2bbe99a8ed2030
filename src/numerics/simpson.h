// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <span>

namespace vorpen {

/// The integral of a function that is known at n points a step h apart, by
/// Simpson's composite rule. With an even number of points the last interval
/// is a trapezium. Fewer than two points give 0.
inline double simpson(std::span<const double> v, double h) {
    const std::size_t n = v.size();
    if (n < 2) return 0;
    const std::size_t odd = n % 2 == 0 ? n - 1 : n;
    double integral = 0;
    if (odd > 1) {
        double fourfold = 0;
        double twofold = 0;
        for (std::size_t i = 1; i < odd - 1; i += 2) fourfold += v[i];
        for (std::size_t i = 2; i < odd - 1; i += 2) twofold += v[i];
        integral = (v[0] + 4 * fourfold + 2 * twofold + v[odd - 1]) / 3;
    }
    if (odd != n) integral += (v[n - 2] + v[n - 1]) / 2;
    return integral * h;
}

}  // namespace vorpen
