// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -ffast-math -lmvec -lm
// With the functions of the vector library, which differ from those of the
// standard library in the last digits.
#include "operands.h"

int main() {
    const std::size_t n = 10000000;  // check: 1000
    const Operands o(n);
    const double* const x = o.x.data();
    Numbers y(n);
    timed("sincos", 5, [&] {
        for (std::size_t k = 0; k < n; ++k) {
            const double s = std::sin(x[k]), c = std::cos(x[k]);
            y[k] = s * s + c * c;
        }
    });
    result("sincos", sum(y));
    timed("sqrtexp", 5, [&] {
        for (std::size_t k = 0; k < n; ++k) y[k] = std::sqrt(x[k]) * std::exp(-x[k]);
    });
    result("sqrtexp", sum(y));
}
