// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/fourier.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "base/multiversion.h"
#include "base/parallel.h"

namespace vorpen {
namespace {

using Complex = std::complex<double>;

/// Transforms of this length stay in the second-level cache, a quarter of a
/// mebibyte, and are finished one after the other before they are combined.
constexpr std::size_t cachedLength = std::size_t{1} << 14;

/// Factors of a stage that are made at once; they stay in the first-level
/// cache together with the numbers they are for.
constexpr std::size_t factorsAtOnce = 256;

/// A square of so many numbers, twice, stays in the first-level cache while its
/// places are exchanged.
constexpr int tileBits = 5;
constexpr std::size_t tile = std::size_t{1} << tileBits;

/// From this length on several threads work. There are a few steps that all of
/// them have to end, and on a busy machine the wait for another thread is as
/// long as a shorter transform.
constexpr std::size_t threadedLength = std::size_t{1} << 19;

/// Calls work(begin, end) on pieces that cover 0 to n, in a transform of a length.
template <class Work>
void inPieces(std::size_t length, std::size_t n, std::size_t grain, const Work& work) {
    if (length < threadedLength) return work(std::size_t{0}, n);
    parallelFor(static_cast<std::int64_t>(n), static_cast<std::int64_t>(grain),
                [&work](std::int64_t begin, std::int64_t end) {
                    work(static_cast<std::size_t>(begin), static_cast<std::size_t>(end));
                });
}

std::size_t reversed(std::size_t index, int bits) {
    std::size_t result = 0;
    for (int k = 0; k < bits; ++k, index >>= 1) result = result << 1 | (index & 1);
    return result;
}

/// For few numbers: each index is made from the one before it, by adding 1 from
/// the top bit down.
void reverseSmall(std::span<Complex> z) {
    for (std::size_t i = 0, j = 0; i < z.size(); ++i) {
        if (i < j) std::swap(z[i], z[j]);
        std::size_t bit = z.size() / 2;
        for (; (j & bit) != 0; bit /= 2) j ^= bit;
        j |= bit;
    }
}

/// Brings each number to the index with the bits of its own in reverse order.
/// The high and the low bits of an index span a tile for each value of the
/// middle bits, which is turned as a whole, so that runs of memory are read and
/// written (L. Carter, K. S. Gatlin, "Towards an optimal bit-reversal
/// permutation program", Symposium on Foundations of Computer Science, 1998).
void reverseBits(std::span<Complex> z) {
    const int bits = std::countr_zero(z.size()), middleBits = bits - 2 * tileBits;
    if (middleBits < 0) return reverseSmall(z);
    std::array<std::size_t, tile> turned;
    for (std::size_t k = 0; k < tile; ++k) turned[k] = reversed(k, tileBits);
    const std::size_t rowDistance = z.size() / tile;
    using Square = std::array<Complex, tile * tile>;
    const auto read = [&](std::size_t middle, Square& square) {
        for (std::size_t row = 0; row < tile; ++row)
            std::copy_n(&z[row * rowDistance + middle * tile], tile, &square[row * tile]);
    };
    const auto writeTurned = [&](std::size_t middle, const Square& square) {
        for (std::size_t row = 0; row < tile; ++row) {
            Complex* const out = &z[row * rowDistance + middle * tile];
            for (std::size_t k = 0; k < tile; ++k) out[k] = square[turned[k] * tile + turned[row]];
        }
    };
    // The tiles that change places are the matter of the one with the lower number.
    inPieces(z.size(), z.size(), tile * tile, [&](std::size_t begin, std::size_t end) {
        Square first, second;
        for (std::size_t middle = begin / (tile * tile); middle < end / (tile * tile); ++middle) {
            const std::size_t other = reversed(middle, middleBits);
            if (other < middle) continue;
            read(middle, first);
            if (other != middle) {
                read(other, second);
                writeTurned(middle, second);
            }
            writeTurned(other, first);
        }
    });
}

/// The factors of a stage, exp(i*k*angle) for k = 1, 2, ..., each from the one
/// before it.
class Factors {
public:
    explicit Factors(double angle)
        : sine_(std::sin(angle)), twoSquares_(2 * std::sin(angle / 2) * std::sin(angle / 2)) {}
    /// The two parts of so many.
    void make(double* out, std::size_t count) {
        for (std::size_t k = 0; k < count; ++k) {
            step();
            out[2 * k] = re_;
            out[2 * k + 1] = im_;
        }
    }

private:
    void step() {
        const double re = re_ - sine_ * im_ - twoSquares_ * re_;
        im_ = im_ + sine_ * re_ - twoSquares_ * im_;
        re_ = re;
    }

    double sine_, twoSquares_;
    double re_ = 1, im_ = 0;
};

/// Combines a pair of numbers, the far one with a factor.
/// @param near, far, factor  the two parts of each
inline void combinePair(double* near, double* far, const double* factor) {
    const double re = factor[0] * far[0] - factor[1] * far[1];
    const double im = factor[0] * far[1] + factor[1] * far[0];
    far[0] = near[0] - re;
    far[1] = near[1] - im;
    near[0] += re;
    near[1] += im;
}

/// The same with the factor 1. No product is formed, since there would be one
/// of infinity and 0.
inline void combinePair(double* near, double* far) {
    const double re = far[0], im = far[1];
    far[0] = near[0] - re;
    far[1] = near[1] - im;
    near[0] += re;
    near[1] += im;
}

/// Combines `count` pairs that lie a distance apart, each with its factor.
VORPEN_MULTIVERSION
void combineRun(double* z, const double* factors, std::size_t count, std::size_t distance) {
    for (std::size_t k = 0; k < 2 * count; k += 2) combinePair(z + k, z + 2 * distance + k, factors + k);
}

/// Joins `n` numbers that are transforms of a length too short for a call for
/// each.
VORPEN_MULTIVERSION
void joinShort(double* z, const double* factors, std::size_t n, std::size_t length) {
    for (std::size_t b = 0; b < 2 * n; b += 4 * length) {
        combinePair(z + b, z + b + 2 * length);
        for (std::size_t k = 2; k < 2 * length; k += 2)
            combinePair(z + b + k, z + b + 2 * length + k, factors + k - 2);
    }
}

double* parts(Complex& number) { return reinterpret_cast<double*>(&number); }

Factors factorsOf(std::size_t length, double sign) {
    return Factors(2 * sign * std::numbers::pi / static_cast<double>(2 * length));
}

/// Joins the transforms of a length, which lie one behind the other, in pairs.
void joinPairs(std::span<Complex> z, std::size_t length, double sign) {
    constexpr std::size_t longRun = 32;
    Factors factors = factorsOf(length, sign);
    std::array<double, 2 * factorsAtOnce> made;
    if (length < longRun) {
        factors.make(made.data(), length - 1);
        return joinShort(parts(z.front()), made.data(), z.size(), length);
    }
    for (std::size_t b = 0; b < z.size(); b += 2 * length) combinePair(parts(z[b]), parts(z[b + length]));
    for (std::size_t a = 1; a < length; a += factorsAtOnce) {
        const std::size_t count = std::min(factorsAtOnce, length - a);
        factors.make(made.data(), count);
        for (std::size_t b = a; b < z.size(); b += 2 * length)
            combineRun(parts(z[b]), made.data(), count, length);
    }
}

/// The same for long transforms. Each factor needs the one before it, so they
/// are made first; then all threads combine.
void joinLong(std::span<Complex> z, std::size_t length, double sign, std::vector<double>& made) {
    made.resize(2 * length);
    factorsOf(length, sign).make(made.data() + 2, length - 1);
    // Pieces are of pairs, counted as they lie.
    inPieces(z.size(), z.size() / 2, factorsAtOnce, [&](std::size_t begin, std::size_t end) {
        for (std::size_t at = begin; at < end;) {
            const std::size_t a = at % length, b = (at - a) * 2;
            const std::size_t count = std::min(end - at, length - a);
            const std::size_t ones = a == 0 ? 1 : 0;
            if (ones) combinePair(parts(z[b]), parts(z[b + length]));
            combineRun(parts(z[b + a + ones]), &made[2 * (a + ones)], count - ones, length);
            at += count;
        }
    });
}

}  // namespace

void fourierTransform(std::span<Complex> z, FourierDirection direction) {
    assert(isPowerOf2(z.size()));
    const double sign = direction == FourierDirection::forward ? -1 : 1;
    reverseBits(z);
    const std::size_t cached = std::min(z.size(), cachedLength);
    inPieces(z.size(), z.size(), cached, [&](std::size_t begin, std::size_t end) {
        for (std::size_t first = begin; first < end; first += cached)
            for (std::size_t length = 1; length < cached; length *= 2)
                joinPairs(z.subspan(first, cached), length, sign);
    });
    std::vector<double> factors;
    for (std::size_t length = cached; length < z.size(); length *= 2) joinLong(z, length, sign, factors);
}

}  // namespace vorpen
