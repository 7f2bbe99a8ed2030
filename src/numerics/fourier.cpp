// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/fourier.h"

#include <gsl/gsl_fft_complex.h>

#include <cassert>

#include "numerics/gsl_errors.h"

namespace vorpen {

void fourierTransform(std::span<std::complex<double>> z, FourierDirection direction) {
    assert(isPowerOf2(z.size()));
    installGslErrorHandler();
    const auto sign = direction == FourierDirection::forward ? gsl_fft_forward : gsl_fft_backward;
    // A complex number may be read as its two parts, one behind the other.
    gsl_fft_complex_radix2_transform(reinterpret_cast<double*>(z.data()), 1, z.size(), sign);
}

}  // namespace vorpen
