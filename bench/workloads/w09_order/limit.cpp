// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstring>
#include <utility>

#include "../timed.h"

/// Sorts by digits of 11 bits, from the lowest on. Numbers not below 0 have the
/// order of their bits.
template <class Item, class Bits>
void sortByDigits(std::vector<Item>& items, Bits bitsOf) {
    constexpr int width = 11, passes = 6, values = 1 << width;
    static std::vector<Item> other;
    other.resize(items.size());
    std::vector<std::uint32_t> counts(passes * values);
    for (const Item& item : items)
        for (int p = 0; p < passes; ++p) ++counts[p * values + (bitsOf(item) >> p * width & (values - 1))];
    for (int p = 0; p < passes; ++p) {
        std::uint32_t* const at = &counts[p * values];
        std::uint32_t next = 0;
        for (int v = 0; v < values; ++v) next += std::exchange(at[v], next);
        for (const Item& item : items) other[at[bitsOf(item) >> p * width & (values - 1)]++] = item;
        items.swap(other);
    }
}

std::uint64_t bitsOf(double x) {
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

int main() {
    const std::size_t n = 1000000;  // check: 1000
    const Numbers x = fractions(n);
    Numbers y = x, z;
    for (double& number : y) number = std::floor(number * 1e5);
    timed("sort", 7, [&] {
        z = x;
        sortByDigits(z, bitsOf);
    });
    result("sort", z[n / 2 - 1]);
    timed("unique", 7, [&] {
        z = y;
        sortByDigits(z, bitsOf);
        z.erase(std::unique(z.begin(), z.end()), z.end());
    });
    result("unique", static_cast<double>(z.size()));
    struct Placed {
        std::uint64_t bits;
        std::uint32_t index;
    };
    std::vector<Placed> placed(n);
    timed("sortind", 7, [&] {
        for (std::size_t k = 0; k < n; ++k) placed[k] = {bitsOf(x[k]), static_cast<std::uint32_t>(k + 1)};
        sortByDigits(placed, [](const Placed& p) { return p.bits; });
        z.resize(n);
        for (std::size_t k = 0; k < n; ++k) z[k] = placed[k].index;
    });
    result("sortind", z[n / 2 - 1]);
}
