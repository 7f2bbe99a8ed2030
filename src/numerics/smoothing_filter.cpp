// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/smoothing_filter.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "base/errors.h"
#include "base/multiversion.h"
#include "base/parallel.h"
#include "numerics/lu.h"
#include "values/buffer.h"

namespace vorpen {
namespace {

/// Results that are summed together; they and as many samples stay in the
/// first-level cache.
constexpr std::int64_t blockLength = 512;

void requireConsistent(bool condition) { Require(condition, "inconsistent arguments for smoothing filter"); }

/// The sums of k^power over the offsets, for powers from 0 to 2*order. Exact
/// as long as they are below 2^53.
std::vector<double> powerSums(const FilterShape& shape) {
    std::vector<double> sums(static_cast<std::size_t>(2 * shape.order + 1), 0.0);
    for (std::int64_t k = -shape.left; k <= shape.right; ++k) {
        double power = 1;
        for (double& sum : sums) {
            sum += power;
            power *= static_cast<double>(k);
        }
    }
    return sums;
}

/// Puts the coefficients into an array; the places without one become 0.
template <class PlaceOf>
void fillPlaces(const FilterShape& shape, std::span<double> places, PlaceOf placeOf) {
    const std::vector<double> factors = savitzkyGolay(shape);
    std::ranges::fill(places, 0.0);
    for (std::int64_t k = -shape.left; k <= shape.right; ++k) {
        double coefficient = 0, power = 1;
        for (const double factor : factors) {
            coefficient += factor * power;
            power *= static_cast<double>(k);
        }
        places[static_cast<std::size_t>(placeOf(k))] = coefficient;
    }
}

/// n results from the one at the first of these samples on. All samples that
/// they ask for are there, also those before.
VORPEN_MULTIVERSION
void convolveInside(std::span<const double> h, const double* v, double* out, std::int64_t n) {
    const auto length = static_cast<std::int64_t>(h.size());
    for (std::int64_t first = 0; first < n; first += blockLength) {
        const std::int64_t count = std::min(blockLength, n - first);
        double* const sums = out + first;
        std::fill_n(sums, count, 0.0);
        const double* const samples = v + first + (length - 1) / 2;
        std::int64_t j = 0;
        // Four coefficients at a time: each sum is read and written once for them.
        for (; j + 4 <= length; j += 4) {
            const double* const factors = h.data() + j;
            const double f0 = factors[0], f1 = factors[1], f2 = factors[2], f3 = factors[3];
            const double* const x = samples - j;
#pragma GCC ivdep
            for (std::int64_t i = 0; i < count; ++i)
                sums[i] = (((sums[i] + f0 * x[i]) + f1 * x[i - 1]) + f2 * x[i - 2]) + f3 * x[i - 3];
        }
        for (; j < length; ++j) {
            const double factor = h[static_cast<std::size_t>(j)];
#pragma GCC ivdep
            for (std::int64_t i = 0; i < count; ++i) sums[i] += factor * samples[i - j];
        }
    }
}

/// One result, with the end samples in place of those beyond.
double convolveAtEnd(std::span<const double> h, std::span<const double> v, std::int64_t i) {
    const auto length = static_cast<std::int64_t>(h.size());
    const auto last = static_cast<std::int64_t>(v.size()) - 1;
    double sum = 0;
    for (std::int64_t j = 0; j < length; ++j) {
        const std::int64_t sample = std::clamp<std::int64_t>(i + (length - 1) / 2 - j, 0, last);
        sum += h[static_cast<std::size_t>(j)] * v[static_cast<std::size_t>(sample)];
    }
    return sum;
}

/// The data with `reach` more samples on either side.
std::vector<double> mirrored(std::span<const double> v, std::int64_t reach) {
    const auto n = static_cast<std::int64_t>(v.size());
    std::vector<double> extended(static_cast<std::size_t>(n + 2 * reach));
    std::ranges::copy(v, extended.begin() + reach);
    for (std::int64_t k = 1; k <= reach && n > 0; ++k) {
        extended[static_cast<std::size_t>(reach - k)] = v[static_cast<std::size_t>(std::min(k, n - 1))];
        extended[static_cast<std::size_t>(reach + n - 1 + k)] =
            v[static_cast<std::size_t>(std::max<std::int64_t>(n - 1 - k, 0))];
    }
    return extended;
}

}  // namespace

std::int64_t filterLength(const FilterShape& shape) {
    requireConsistent(shape.left >= 0 && shape.right >= 0);
    if (shape.reach() > (maxElements - 1) / 2) throw std::bad_alloc();
    requireConsistent(shape.derivative >= 0 && shape.derivative <= shape.order);
    requireConsistent(shape.order <= shape.left + shape.right);
    const auto highest = static_cast<double>(2 * shape.order);
    requireConsistent(std::isfinite(std::pow(static_cast<double>(shape.reach()), highest)));
    return 2 * shape.reach() + 1;
}

std::vector<double> savitzkyGolay(const FilterShape& shape) {
    (void)filterLength(shape);
    const auto terms = static_cast<std::size_t>(shape.order + 1);
    const std::vector<double> sums = powerSums(shape);
    std::vector<double> normal(terms * terms);
    for (std::size_t i = 0; i < terms; ++i)
        for (std::size_t j = 0; j < terms; ++j) normal[i + j * terms] = sums[i + j];
    LuForm lu;
    lu.factorise(normal, terms);
    std::vector<double> factors(terms, 0.0);
    factors[static_cast<std::size_t>(shape.derivative)] = 1;
    lu.solve(factors);
    return factors;
}

void wrappedFilter(const FilterShape& shape, std::span<double> places) {
    const auto length = static_cast<std::int64_t>(places.size());
    fillPlaces(shape, places, [&](std::int64_t k) { return (length + shape.right - k) % length; });
}

void centredFilter(const FilterShape& shape, std::span<double> places) {
    fillPlaces(shape, places, [&](std::int64_t k) { return shape.reach() - k; });
}

void convolve(std::span<const double> h, std::span<const double> v, std::span<double> out,
              std::int64_t first) {
    Require(h.size() <= v.size(), "y1 must have fewer points than y2 in convolve");
    if (h.empty()) {
        std::ranges::fill(out, 0.0);
        return;
    }
    const auto length = static_cast<std::int64_t>(h.size());
    const std::int64_t middle = (length - 1) / 2;
    const std::int64_t last = first + static_cast<std::int64_t>(out.size());
    // Inside, the samples i+middle-(length-1) to i+middle are there.
    const std::int64_t begin = std::clamp(length - 1 - middle, first, last);
    const std::int64_t end = std::clamp(static_cast<std::int64_t>(v.size()) - middle, begin, last);
    const auto resultAt = [&](std::int64_t i) { return out.data() + (i - first); };
    for (std::int64_t i = first; i < begin; ++i) *resultAt(i) = convolveAtEnd(h, v, i);
    for (std::int64_t i = end; i < last; ++i) *resultAt(i) = convolveAtEnd(h, v, i);
    parallelFor(end - begin, blockLength, [&](std::int64_t from, std::int64_t to) {
        convolveInside(h, v.data() + begin + from, resultAt(begin + from), to - from);
    });
}

void smooth(const FilterShape& shape, std::span<const double> v, std::span<double> out) {
    std::vector<double> filter(static_cast<std::size_t>(filterLength(shape)));
    centredFilter(shape, filter);
    convolve(filter, mirrored(v, shape.reach()), out, shape.reach());
}

}  // namespace vorpen
