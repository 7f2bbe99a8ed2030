// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -lgsl -lgslcblas
#include <gsl/gsl_fft_complex.h>

#include "../timed.h"

int main() {
    const std::size_t n = 1048576;
    const Numbers x = fractions(n);
    Numbers z(2 * n);
    timed("fft", 4, [&] {
        for (std::size_t k = 0; k < n; ++k) {
            z[2 * k] = x[k];
            z[2 * k + 1] = 0;
        }
        gsl_fft_complex_radix2_forward(z.data(), 1, n);
    });
}
