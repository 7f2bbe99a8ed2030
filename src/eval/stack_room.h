// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How much of the machine's stack is left. Each function may be in progress
// only so many times, but functions that call each other multiply that, and so
// does the depth of the expressions that call. No count of calls tells when
// the stack ends; its own pointer does.

#include <cstdint>

namespace vorpen {

/// The address below which no further call begins: a quarter of the stack is
/// left to the expressions and built-ins of the innermost call.
std::uintptr_t lowestCallAddress();

/// False when a call of a user function may no longer begin.
inline bool stackHasRoom() {
    thread_local constinit std::uintptr_t lowest = 0;
    if (lowest == 0) [[unlikely]]
        lowest = lowestCallAddress();
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) > lowest;
}

}  // namespace vorpen
