// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/buffer.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace vorpen {
namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
// Below this a huge page would be mostly unused memory.
constexpr std::size_t hugeThreshold = std::size_t{4} << 20;

void* allocateHuge(std::size_t bytes) {
    const std::size_t rounded = (bytes + hugePage - 1) / hugePage * hugePage;
    void* block = std::aligned_alloc(hugePage, rounded);
    if (block) madvise(block, rounded, MADV_HUGEPAGE);
    return block;
}

}  // namespace

void* allocateItems(std::int64_t n, std::size_t itemSize) {
    if (n > maxElements) throw std::bad_alloc();
    const std::size_t bytes = static_cast<std::size_t>(n) * itemSize;
    void* block = bytes >= hugeThreshold ? allocateHuge(bytes) : std::malloc(bytes);
    if (!block) throw std::bad_alloc();
    return block;
}

void freeItems(void* block) noexcept { std::free(block); }

}  // namespace vorpen
