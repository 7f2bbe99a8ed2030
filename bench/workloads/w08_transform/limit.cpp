// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -lfftw3
#include <fftw3.h>

#include <complex>

#include "../timed.h"

int main() {
    const std::size_t n = 1048576;  // check: 1024
    const Numbers x = fractions(n);
    std::vector<std::complex<double>> z(n), y(n);
    const auto parts = [](std::vector<std::complex<double>>& v) { return reinterpret_cast<fftw_complex*>(v.data()); };
    const fftw_plan plan = fftw_plan_dft_1d(static_cast<int>(n), parts(z), parts(y), FFTW_FORWARD, FFTW_ESTIMATE);
    timed("fft", 7, [&] {
        for (std::size_t k = 0; k < n; ++k) z[k] = x[k];
        fftw_execute(plan);
    });
    result("fft", std::abs(y[5]));
    fftw_destroy_plan(plan);
}
