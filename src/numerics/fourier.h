// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The discrete Fourier transform of a power of 2 of points, by GSL's
// radix-2 decimation in time (J. W. Cooley and J. W. Tukey, "An algorithm for
// the machine calculation of complex Fourier series", Mathematics of
// Computation 19, 1965). Neither direction is scaled: the one after the other
// multiplies by the number of points.

#include <complex>
#include <cstddef>
#include <span>

namespace vorpen {

enum class FourierDirection {
    forward,   ///< with exp(-2 pi i j k / n)
    backward,  ///< with exp(+2 pi i j k / n)
};

[[nodiscard]] constexpr bool isPowerOf2(std::size_t n) { return n > 0 && (n & (n - 1)) == 0; }

/// Transforms n points in place; n is a power of 2.
void fourierTransform(std::span<std::complex<double>> z, FourierDirection direction);

}  // namespace vorpen
