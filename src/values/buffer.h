// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Raw memory for the elements of arrays. Small blocks come from the ordinary
// heap. Large ones are aligned to the huge pages of the system and marked for
// them, because touching a fresh large array costs more in page faults than
// the arithmetic on it.

#include <cstddef>
#include <cstdint>

namespace vorpen {

/// Memory for n items of a size in bytes; raises std::bad_alloc when there is
/// none. n must be at least 1.
void* allocateItems(std::int64_t n, std::size_t itemSize);
void freeItems(void* block) noexcept;

/// The largest number of elements of a value: sizes are 32-bit.
inline constexpr std::int64_t maxElements = INT32_MAX;

}  // namespace vorpen
