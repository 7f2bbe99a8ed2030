// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/fourier.h"

#include <gsl/gsl_fft_complex.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vorpen {
namespace {

using Numbers = std::vector<std::complex<double>>;

Numbers randomNumbers(std::size_t n) {
    std::mt19937_64 bits(n);
    std::uniform_real_distribution<double> part(-1, 1);
    Numbers z(n);
    for (auto& number : z) number = {part(bits), part(bits)};
    return z;
}

/// Whether the bits are those of the library's transform. A NaN counts as any
/// other.
bool agreesWithLibrary(const Numbers& z, FourierDirection direction) {
    Numbers ours = z, theirs = z;
    fourierTransform(ours, direction);
    gsl_fft_complex_radix2_transform(reinterpret_cast<double*>(theirs.data()), 1, z.size(),
                                     direction == FourierDirection::forward ? gsl_fft_forward : gsl_fft_backward);
    const auto same = [](double a, double b) {
        return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
    };
    for (std::size_t k = 0; k < z.size(); ++k)
        if (!same(ours[k].real(), theirs[k].real()) || !same(ours[k].imag(), theirs[k].imag())) return false;
    return true;
}

TEST(FourierTest, HasTheBitsOfTheLibrary) {
    // Below and above the lengths from which tiles, blocks and threads are used.
    for (std::size_t n = 1; n <= std::size_t{1} << 19; n *= 2)
        for (const auto direction : {FourierDirection::forward, FourierDirection::backward})
            EXPECT_TRUE(agreesWithLibrary(randomNumbers(n), direction)) << n;
}

TEST(FourierTest, NumbersWithoutLimitAreCombinedAlike) {
    constexpr double inf = std::numeric_limits<double>::infinity();
    for (const std::size_t n : {2u, 8u, 2048u}) {
        Numbers z = randomNumbers(n);
        z[1] = {inf, 0};
        z[n / 2] = {-0.0, -0.0};
        EXPECT_TRUE(agreesWithLibrary(z, FourierDirection::forward)) << n;
        z[0] = {0, -inf};
        EXPECT_TRUE(agreesWithLibrary(z, FourierDirection::backward)) << n;
    }
}

TEST(FourierTest, AWaveHasOneFrequency) {
    // Of exp(2 pi i 3 k / n) only number 3 is not 0, and it is n.
    constexpr std::size_t n = 4096;
    Numbers z(n);
    for (std::size_t k = 0; k < n; ++k) z[k] = std::polar(1.0, 2 * M_PI * 3 * static_cast<double>(k) / n);
    fourierTransform(z, FourierDirection::forward);
    for (std::size_t k = 0; k < n; ++k) EXPECT_NEAR(std::abs(z[k] - (k == 3 ? double{n} : 0.0)), 0, 1e-9) << k;
}

TEST(FourierTest, ThereAndBackMultipliesByTheNumberOfPoints) {
    const Numbers z = randomNumbers(32768);
    Numbers back = z;
    fourierTransform(back, FourierDirection::forward);
    fourierTransform(back, FourierDirection::backward);
    for (std::size_t k = 0; k < z.size(); ++k) ASSERT_NEAR(std::abs(back[k] / 32768.0 - z[k]), 0, 1e-11) << k;
}

}  // namespace
}  // namespace vorpen
