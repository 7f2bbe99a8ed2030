// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/buffer.h"

#include <malloc.h>
#include <sys/mman.h>

#include <cstdlib>
#include <new>
#include <utility>

namespace vorpen {
namespace {

constexpr std::size_t hugePage = std::size_t{2} << 20;
// Below this a huge page would be mostly unused memory.
constexpr std::size_t hugeThreshold = std::size_t{4} << 20;

/// The large block that was freed last, for the next result of about its size:
/// the system clears every page that it hands out, which takes as long as the
/// arithmetic on it. `x = x*2` on 1e7 numbers in a loop takes half the time.
/// While the block waits, the system may take its pages where memory runs
/// short. Values live on one thread, and so does this.
class SpareBlock {
public:
    /// A block of at least so many bytes, and not much more, or null.
    void* take(std::size_t bytes) {
        if (size_ < bytes || size_ / 2 > bytes) return nullptr;
        size_ = 0;
        return std::exchange(block_, nullptr);
    }
    void keep(void* block, std::size_t size) {
        drop();
        if (size > most) return std::free(block);
        madvise(block, size / hugePage * hugePage, MADV_FREE);
        block_ = block;
        size_ = size;
    }
    void drop() {
        size_ = 0;
        std::free(std::exchange(block_, nullptr));
    }

private:
    /// What may lie idle: an array of 1e7 numbers, and somewhat more.
    static constexpr std::size_t most = std::size_t{128} << 20;

    void* block_ = nullptr;
    std::size_t size_ = 0;
};

constinit SpareBlock spareBlock;

void* allocateHuge(std::size_t bytes) {
    if (void* spare = spareBlock.take(bytes)) return spare;
    spareBlock.drop();
    const std::size_t rounded = (bytes + hugePage - 1) / hugePage * hugePage;
    void* block = std::aligned_alloc(hugePage, rounded);
    if (block) madvise(block, rounded, MADV_HUGEPAGE);
    return block;
}

/// Only such blocks begin with a huge page, but for a rare other one.
bool mayBeHuge(const void* block) { return block && reinterpret_cast<std::uintptr_t>(block) % hugePage == 0; }

}  // namespace

void* allocateItems(std::int64_t n, std::size_t itemSize) {
    if (n > maxElements) throw std::bad_alloc();
    const std::size_t bytes = static_cast<std::size_t>(n) * itemSize;
    void* block = bytes >= hugeThreshold ? allocateHuge(bytes) : std::malloc(bytes);
    if (!block) throw std::bad_alloc();
    return block;
}

void freeItems(void* block) noexcept {
    if (mayBeHuge(block))
        if (const std::size_t size = malloc_usable_size(block); size >= hugeThreshold)
            return spareBlock.keep(block, size);
    std::free(block);
}

}  // namespace vorpen
