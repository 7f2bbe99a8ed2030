// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Worker threads for array kernels. Nothing of the language ever runs on them:
// a kernel is plain arithmetic on memory that cannot fail. The workers start
// with the first large array and sleep between kernels.

#include <cstdint>
#include <functional>

namespace vorpen {

/// Below this number of elements waking a worker costs more than it brings.
inline constexpr std::int64_t parallelThreshold = 100000;

/// Calls work(begin, end) on pieces that cover 0 to n, on several threads when
/// n is large. Pieces begin at multiples of `grain`. Returns when all is done.
/// `work` must not throw. An interrupt leaves the rest undone and is raised.
void parallelFor(std::int64_t n, std::int64_t grain, const std::function<void(std::int64_t, std::int64_t)>& work);

/// Threads that take part, the calling one included.
int parallelThreads();

}  // namespace vorpen
