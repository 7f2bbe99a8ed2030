// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/freed_memory.h"

#include <cstdlib>  // says which C library this is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace vorpen {

void keepFreedMemory() {
#ifdef __GLIBC__
    constexpr int mebibyte = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, 4 * mebibyte);
    mallopt(M_TRIM_THRESHOLD, 64 * mebibyte);
#endif
}

}  // namespace vorpen
