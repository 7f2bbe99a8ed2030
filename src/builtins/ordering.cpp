// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/ordering.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <numeric>

namespace vorpen {
namespace {

/// Below this length the counting of digits costs more than comparisons.
constexpr std::size_t radixThreshold = 1000;

// A digit of 11 bits keeps the counts of one pass in the first-level cache and
// needs six passes for 64 bits.
constexpr int digitBits = 11;
constexpr int passes = 6;
constexpr std::size_t buckets = std::size_t{1} << digitBits;
using Counts = std::array<std::array<std::uint32_t, buckets>, passes>;

constexpr std::uint64_t signBit = std::uint64_t{1} << 63;

/// Bits whose order as unsigned numbers is the order of the doubles. Both
/// zeros have the bits of one.
std::uint64_t orderedBits(double x) {
    if (std::isnan(x)) return ~std::uint64_t{0};
    const auto bits = std::bit_cast<std::uint64_t>(x + 0.0);  // -0 + 0 is 0
    return bits & signBit ? ~bits : bits | signBit;
}

std::size_t digitOf(std::uint64_t key, int pass) { return key >> (pass * digitBits) & (buckets - 1); }

Counts countDigits(std::span<const std::uint64_t> keys) {
    Counts counts{};
    for (const std::uint64_t key : keys)
        for (int p = 0; p < passes; ++p) ++counts[p][digitOf(key, p)];
    return counts;
}

/// True when all keys have the same digit, so that a pass would move nothing.
bool isUniform(const std::array<std::uint32_t, buckets>& counts, std::uint64_t anyKey, int pass, std::size_t n) {
    return counts[digitOf(anyKey, pass)] == n;
}

/// Turns counts into the places where the buckets begin.
void startsFromCounts(std::array<std::uint32_t, buckets>& counts) {
    std::exclusive_scan(counts.begin(), counts.end(), counts.begin(), std::uint32_t{0});
}

/// Sorts keys, and positions with them when there are any, by one pass a
/// digit from the lowest; each pass keeps the order of equal digits.
void radixSort(std::vector<std::uint64_t>& keys, std::vector<std::uint32_t>* positions) {
    const std::size_t n = keys.size();
    Counts counts = countDigits(keys);
    std::vector<std::uint64_t> otherKeys(n);
    std::vector<std::uint32_t> otherPositions(positions ? n : 0);
    for (int p = 0; p < passes; ++p) {
        auto& places = counts[p];
        if (isUniform(places, keys[0], p, n)) continue;
        startsFromCounts(places);
        if (positions) {
            for (std::size_t i = 0; i < n; ++i) {
                const std::uint32_t to = places[digitOf(keys[i], p)]++;
                otherKeys[to] = keys[i];
                otherPositions[to] = (*positions)[i];
            }
            positions->swap(otherPositions);
        } else {
            for (const std::uint64_t key : keys) otherKeys[places[digitOf(key, p)]++] = key;
        }
        keys.swap(otherKeys);
    }
}

double fromOrderedBits(std::uint64_t key) {
    if (key == ~std::uint64_t{0}) return std::numeric_limits<double>::quiet_NaN();
    return std::bit_cast<double>(key & signBit ? key & ~signBit : ~key);
}

/// The zeros of a sorted array stand together; their signs are put back in the
/// order in which they came.
void restoreZeroSigns(std::span<double> sorted, const std::vector<bool>& negativeZeros) {
    if (std::ranges::find(negativeZeros, true) == negativeZeros.end()) return;
    auto zero = std::ranges::lower_bound(sorted, 0.0, comesBefore);
    for (const bool negative : negativeZeros) *zero++ = negative ? -0.0 : 0.0;
}

}  // namespace

void sortAscending(std::span<double> items) {
    if (items.size() < radixThreshold) {
        std::ranges::stable_sort(items, comesBefore);
        return;
    }
    std::vector<std::uint64_t> keys(items.size());
    std::vector<bool> negativeZeros;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i] == 0) negativeZeros.push_back(std::signbit(items[i]));
        keys[i] = orderedBits(items[i]);
    }
    radixSort(keys, nullptr);
    std::ranges::transform(keys, items.begin(), fromOrderedBits);
    restoreZeroSigns(items, negativeZeros);
}

std::vector<std::uint32_t> sortingOrder(std::span<const double> items) {
    std::vector<std::uint32_t> positions(items.size());
    std::iota(positions.begin(), positions.end(), 0u);
    if (items.size() < radixThreshold) {
        std::ranges::stable_sort(positions, comesBefore, [&](std::uint32_t i) { return items[i]; });
        return positions;
    }
    std::vector<std::uint64_t> keys(items.size());
    std::ranges::transform(items, keys.begin(), orderedBits);
    radixSort(keys, &positions);
    return positions;
}

}  // namespace vorpen
