// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The source of random numbers. It gives 15-bit integers, from which the
// deviates of the distributions are made. It starts from a fixed seed, so that
// a run of a script can be repeated; a script that wants another sequence sets
// the seed.

#include <cstdint>

namespace vorpen {

class RandomSource {
public:
    /// The largest number that rand gives.
    static constexpr std::int32_t maxValue = 32767;

    /// Begins the sequence that belongs to a seed.
    void srand(std::int32_t seed) { state = static_cast<std::uint32_t>(seed); }

    /// The next integer, from 0 to 32767.
    ///
    /// The linear congruential generator and its constants are those of the
    /// example in ISO/IEC 9899:1990, Programming languages - C, 7.10.2.2.
    std::int32_t rand() {
        state = state * 1103515245u + 12345u;
        return static_cast<std::int32_t>((state >> 16) & 0x7fffu);
    }

    /// From 0 to 1, both included.
    double uniform() { return rand() / 32767.0; }

    /// An integer from 0 to n-1, at most 32767; n is above 0.
    std::int32_t below(std::int32_t n) { return rand() % n; }

    /// An exponential deviate with the given rate; infinite once in 32768.
    double exponential(double rate);

    /// A normal deviate of mean 0 and the given standard deviation.
    ///
    /// A. J. Kinderman and J. F. Monahan, Computer generation of random
    /// variables using the ratio of uniform deviates, 1977, with the bounds of
    /// J. L. Leva, A fast normal random number generator, 1992.
    double normal(double sigma);

private:
    static constexpr std::uint32_t startSeed = 753;

    std::uint32_t state = startSeed;
};

/// The source that the language uses.
RandomSource& randomSource();

}  // namespace vorpen
