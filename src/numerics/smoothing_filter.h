// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Filters of A. Savitzky and M. J. E. Golay, "Smoothing and Differentiation of
// Data by Simplified Least Squares Procedures", Analytical Chemistry 36 (1964)
// 1627, and the convolution that applies them. A filter answers at each sample
// the value, or a derivative, of the polynomial that fits its neighbours best.

#include <cstdint>
#include <span>
#include <vector>

namespace vorpen {

struct FilterShape {
    std::int64_t left = 0, right = 0;  ///< samples before and behind the one in the middle
    std::int64_t order = 0;            ///< of the polynomial
    std::int64_t derivative = 0;       ///< 0 for the value itself

    /// The greater of left and right.
    [[nodiscard]] std::int64_t reach() const { return left > right ? left : right; }
};

/// The places of a filter's array, 2*reach+1.
/// @throws RuntimeError "inconsistent arguments for smoothing filter" for
///     negative numbers, an order of left+right+1 or more, a derivative above
///     the order, and orders whose powers are beyond the range of numbers
/// @throws std::bad_alloc for more places than an array can have
[[nodiscard]] std::int64_t filterLength(const FilterShape& shape);

/// The coefficient for the sample at offset k, from -left to right, is the
/// value at k of a polynomial; these are its factors by ascending powers. The
/// filter answers the factor of degree `derivative` of the polynomial through
/// the data, which is the derivative over its factorial.
/// @throws as filterLength
[[nodiscard]] std::vector<double> savitzkyGolay(const FilterShape& shape);

/// A filter as an array of filterLength places: offset 0 in place `right`,
/// offsets above it before, those below it behind, wrapped around the ends
/// where one side is longer. The other places are 0.
void wrappedFilter(const FilterShape& shape, std::span<double> places);

/// The same array as `convolve` takes it: offset 0 in the middle, positive
/// offsets before it.
void centredFilter(const FilterShape& shape, std::span<double> places);

/// The results from position `first` of v on, as many as out has places: the
/// one at i is the sum over j of h[j] v[i+m-j], with m = (length of h - 1)/2 in
/// whole numbers; the first and the last sample stand for those beyond the
/// ends. v and out do not overlap. Each sum is taken in the order of h.
/// @throws RuntimeError "y1 must have fewer points than y2 in convolve" when h
///     is longer than v
void convolve(std::span<const double> h, std::span<const double> v, std::span<double> out,
              std::int64_t first = 0);

/// Applies a filter. Beyond its ends the data come back in mirrored order,
/// without the end sample itself, and where they are used up the last of them
/// is repeated. v and out are of one length and may be the same.
/// @throws as filterLength and convolve do
void smooth(const FilterShape& shape, std::span<const double> v, std::span<double> out);

/// The filter for n samples when none is asked for: a parabola through a
/// twentieth of them.
[[nodiscard]] inline FilterShape standardFilter(std::int64_t n) { return {n / 40 + 1, n / 40 + 1, 2, 0}; }

}  // namespace vorpen
