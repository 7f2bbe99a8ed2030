// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/random.h"

#include <cmath>

namespace vorpen {

double RandomSource::exponential(double rate) { return -std::log(uniform()) / rate; }

double RandomSource::normal(double sigma) {
    for (;;) {
        const double u = uniform();
        const double w = 1.7156 * (uniform() - 0.5);
        const double x = u - 0.449871;
        const double y = std::fabs(w) + 0.386595;
        const double q = x * x + y * (0.196 * y - 0.25472 * x);
        // Between the inner and the outer bound the exact test decides; it
        // fails for u = 0.
        if (q <= 0.27597 || (q <= 0.27846 && w * w <= -4 * std::log(u) * u * u)) return w * sigma / u;
    }
}

RandomSource& randomSource() {
    static RandomSource source;
    return source;
}

}  // namespace vorpen
