// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/ordering.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <memory>
#include <numeric>
#include <tuple>
#include <utility>

#include "base/interrupt.h"
#include "values/buffer.h"

// Long arrays are sorted by the upper half of their bit patterns first: three
// digits, one pass for each, from the lowest to the highest, and each pass keeps
// the order of equal digits (D. E. Knuth, The Art of Computer Programming,
// volume 3 (1998), section 5.2.5). Hardly any two numbers of a measurement agree
// in sign, exponent and 21 further bits, so what is left are runs of a few
// neighbours, settled by comparisons. A long run is sorted by the digits of the
// lower half in its turn. So the time grows with the length alone, whatever the
// contents; a million random doubles take half as many passes as six digits in a
// row, and 0.6 of the time.

namespace vorpen {
namespace {

/// Below this length the counting of digits costs more than comparisons.
constexpr std::size_t radixThreshold = 1000;

/// Up to this length a run is sorted by insertion.
constexpr std::size_t insertionLimit = 24;

// A digit of 11 bits keeps the counts of a pass in the first-level cache.
constexpr int digitBits = 11;
constexpr int digitsOfHalf = 3;
constexpr std::size_t buckets = std::size_t{1} << digitBits;
constexpr int upperShift = 64 - digitsOfHalf * digitBits;

constexpr std::uint64_t signBit = std::uint64_t{1} << 63;

/// Bits whose order as unsigned numbers is the order of the doubles. Both
/// zeros have the bits of one.
std::uint64_t orderedBits(double x) {
    if (std::isnan(x)) return ~std::uint64_t{0};
    const auto bits = std::bit_cast<std::uint64_t>(x + 0.0);  // -0 + 0 is 0
    return bits & signBit ? ~bits : bits | signBit;
}

double fromOrderedBits(std::uint64_t key) {
    if (key == ~std::uint64_t{0}) return std::numeric_limits<double>::quiet_NaN();
    return std::bit_cast<double>(key & signBit ? key & ~signBit : ~key);
}

/// Memory whose contents are undefined at first.
template <class T>
class Room {
public:
    explicit Room(std::size_t n)
        : items_(static_cast<T*>(allocateItems(static_cast<std::int64_t>(n), sizeof(T)))) {}
    [[nodiscard]] T* data() const { return items_.get(); }

private:
    struct Free {
        void operator()(T* items) const { freeItems(items); }
    };
    std::unique_ptr<T, Free> items_;
};

/// Takes the place of positions where keys alone are sorted.
struct NoPosition {};

/// One of the two places between which the keys go to and fro, with the
/// positions that belong to them.
template <class Position>
struct Half {
    std::uint64_t* keys;
    Position* positions;
};

template <class Position>
constexpr bool hasPositions = !std::is_same_v<Position, NoPosition>;

std::size_t digitOf(std::uint64_t key, int shift) { return key >> shift & (buckets - 1); }

/// Sorts n keys by three digits above a shift. Answers which of the two places
/// holds them.
template <class Position>
Half<Position> sortByDigits(Half<Position> present, Half<Position> other, std::size_t n, int lowestShift) {
    std::array<std::array<std::uint32_t, buckets>, digitsOfHalf> counts{};
    inRounds(static_cast<std::int64_t>(n), [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i)
            for (int d = 0; d < digitsOfHalf; ++d)
                ++counts[d][digitOf(present.keys[i], lowestShift + d * digitBits)];
    });
    for (int d = 0; d < digitsOfHalf; ++d) {
        const int shift = lowestShift + d * digitBits;
        auto& places = counts[d];
        // A digit that all keys share would move nothing.
        if (places[digitOf(present.keys[0], shift)] == n) continue;
        std::exclusive_scan(places.begin(), places.end(), places.begin(), std::uint32_t{0});
        inRounds(static_cast<std::int64_t>(n), [&](std::int64_t begin, std::int64_t end) {
            for (std::int64_t i = begin; i < end; ++i) {
                const std::uint64_t key = present.keys[i];
                const std::uint32_t to = places[digitOf(key, shift)]++;
                other.keys[to] = key;
                if constexpr (hasPositions<Position>) other.positions[to] = present.positions[i];
            }
        });
        std::swap(present, other);
    }
    return present;
}

template <class Position>
void sortByInsertion(Half<Position> run, std::size_t n) {
    for (std::size_t i = 1; i < n; ++i) {
        const std::uint64_t key = run.keys[i];
        if (run.keys[i - 1] <= key) continue;
        [[maybe_unused]] Position position{};
        if constexpr (hasPositions<Position>) position = run.positions[i];
        std::size_t to = i;
        for (; to > 0 && run.keys[to - 1] > key; --to) {
            run.keys[to] = run.keys[to - 1];
            if constexpr (hasPositions<Position>) run.positions[to] = run.positions[to - 1];
        }
        run.keys[to] = key;
        if constexpr (hasPositions<Position>) run.positions[to] = position;
    }
}

/// Equal keys have ascending positions, so that pairs need no stable sort.
template <class Position>
void sortByComparisons(Half<Position> run, std::size_t n) {
    if constexpr (hasPositions<Position>) {
        std::vector<std::pair<std::uint64_t, Position>> pairs(n);
        for (std::size_t i = 0; i < n; ++i) pairs[i] = {run.keys[i], run.positions[i]};
        std::ranges::sort(pairs);
        for (std::size_t i = 0; i < n; ++i) std::tie(run.keys[i], run.positions[i]) = pairs[i];
    } else {
        std::sort(run.keys, run.keys + n);
    }
}

template <class Position>
Half<Position> behind(Half<Position> half, std::size_t n) {
    if constexpr (hasPositions<Position>)
        return {half.keys + n, half.positions + n};
    else
        return {half.keys + n, nullptr};
}

/// Sorts a run of keys that agree in their upper half. `room` lies beside it.
template <class Position>
void sortRun(Half<Position> run, Half<Position> room, std::size_t n) {
    if (n <= insertionLimit) return sortByInsertion(run, n);
    if (n < radixThreshold) return sortByComparisons(run, n);
    const Half<Position> sorted = sortByDigits(run, room, n, 0);
    if (sorted.keys == run.keys) return;
    std::copy_n(sorted.keys, n, run.keys);
    if constexpr (hasPositions<Position>) std::copy_n(sorted.positions, n, run.positions);
}

/// Sorts n keys, and answers which of the two places holds them.
template <class Position>
Half<Position> sortKeys(Half<Position> keys, Half<Position> room, std::size_t n) {
    const Half<Position> sorted = sortByDigits(keys, room, n, upperShift);
    const Half<Position> other = sorted.keys == keys.keys ? room : keys;
    constexpr std::size_t keysAtOnce = 1 << 18;
    for (std::size_t first = 0, look = 0; first < n;) {
        if (first >= look) {
            checkInterrupt();
            look = first + keysAtOnce;
        }
        const std::uint64_t upper = sorted.keys[first] >> upperShift;
        std::size_t end = first + 1;
        while (end < n && sorted.keys[end] >> upperShift == upper) ++end;
        if (end - first > 1) sortRun(behind(sorted, first), behind(other, first), end - first);
        first = end;
    }
    return sorted;
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
    const std::size_t n = items.size();
    if (n < radixThreshold) {
        std::ranges::stable_sort(items, comesBefore);
        return;
    }
    const Room<std::uint64_t> keys(n), room(n);
    std::vector<bool> negativeZeros;
    inRounds(static_cast<std::int64_t>(n), [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i) {
            if (items[i] == 0) negativeZeros.push_back(std::signbit(items[i]));
            keys.data()[i] = orderedBits(items[i]);
        }
    });
    const auto sorted = sortKeys<NoPosition>({keys.data(), nullptr}, {room.data(), nullptr}, n);
    std::transform(sorted.keys, sorted.keys + n, items.begin(), fromOrderedBits);
    restoreZeroSigns(items, negativeZeros);
}

/// The 32 bits of an integer lie in the upper half of a key, so its digits are
/// all that there is to sort.
void sortAscending(std::span<int> items) {
    const std::size_t n = items.size();
    if (n < radixThreshold) {
        std::ranges::sort(items);
        return;
    }
    constexpr int place = 32;
    constexpr std::uint32_t sign = std::uint32_t{1} << 31;
    const Room<std::uint64_t> keys(n), room(n);
    inRounds(static_cast<std::int64_t>(n), [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end; ++i)
            keys.data()[i] = std::uint64_t{static_cast<std::uint32_t>(items[i]) ^ sign} << place;
    });
    const auto sorted = sortByDigits<NoPosition>({keys.data(), nullptr}, {room.data(), nullptr}, n, upperShift);
    std::transform(sorted.keys, sorted.keys + n, items.begin(),
                   [](std::uint64_t key) { return static_cast<int>(static_cast<std::uint32_t>(key >> place) ^ sign); });
}

std::vector<std::uint32_t> sortingOrder(std::span<const double> items) {
    const std::size_t n = items.size();
    std::vector<std::uint32_t> positions(n);
    std::iota(positions.begin(), positions.end(), 0u);
    if (n < radixThreshold) {
        std::ranges::stable_sort(positions, comesBefore, [&](std::uint32_t i) { return items[i]; });
        return positions;
    }
    const Room<std::uint64_t> keys(n), room(n);
    inRounds(static_cast<std::int64_t>(n), [&](std::int64_t begin, std::int64_t end) {
        std::transform(items.data() + begin, items.data() + end, keys.data() + begin, orderedBits);
    });
    std::vector<std::uint32_t> otherPositions(n);
    const auto sorted = sortKeys<std::uint32_t>({keys.data(), positions.data()},
                                                {room.data(), otherPositions.data()}, n);
    if (sorted.positions != positions.data()) positions.swap(otherPositions);
    return positions;
}

}  // namespace vorpen
