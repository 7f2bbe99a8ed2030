// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/freed_memory.h"

#include <cstdlib>  // says which C library this is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vorpen {

void keepFreedMemory() {
#ifdef __GLIBC__
    // The largest that the library accepts, and the twofold, as it keeps them
    // itself.
    constexpr int largestReused = 32 << 20;
    mallopt(M_MMAP_THRESHOLD, largestReused);
    mallopt(M_TRIM_THRESHOLD, 2 * largestReused);
#endif
}

}  // namespace vorpen
