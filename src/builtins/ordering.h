// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Sorting of doubles. The order is that of the numbers with all NaNs last; -0
// and 0 are equal. Long arrays are sorted by the digits of their bit patterns,
// which takes time in proportion to their length whatever their contents;
// digits that all elements share are skipped. An interrupt ends a long sort and
// leaves the items as they were.

#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

namespace vorpen {

/// Whether a comes before b: NaN stands behind every number.
[[nodiscard]] inline bool comesBefore(double a, double b) { return a < b || (std::isnan(b) && !std::isnan(a)); }

void sortAscending(std::span<double> items);
void sortAscending(std::span<int> items);

/// The positions from 0 in the order that sorts the items; equal items keep
/// their order.
[[nodiscard]] std::vector<std::uint32_t> sortingOrder(std::span<const double> items);

}  // namespace vorpen
