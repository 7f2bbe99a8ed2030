// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/stack_room.h"

#include <cstddef>

#ifdef __GLIBC__
#include <pthread.h>
#endif

namespace vorpen {

namespace {

/// Where the system does not tell, the smallest stack that is usual.
constexpr std::size_t assumedStack = std::size_t{1} << 20;

}  // namespace

std::uintptr_t lowestCallAddress() {
    std::uintptr_t end = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - assumedStack;
    std::size_t size = assumedStack;
#ifdef __GLIBC__
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        void* lowest = nullptr;
        std::size_t given = 0;
        if (pthread_attr_getstack(&attributes, &lowest, &given) == 0 && given > 0) {
            end = reinterpret_cast<std::uintptr_t>(lowest);
            size = given;
        }
        pthread_attr_destroy(&attributes);
    }
#endif
    return end + size / 4;
}

}  // namespace vorpen
