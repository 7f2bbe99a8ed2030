// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The user's wish that what runs may end. It can be noted at any moment, by a
// signal handler too, so it is one flag and nothing else. What may run for long
// looks at it: loops in each round, calls when they begin, array kernels from
// block to block. It stays up until the run is over, so that no method that
// tries again after a failure goes on.

#include <atomic>

namespace vorpen {

inline constinit std::atomic<bool> interruptNoted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets the flag");

inline void requestInterrupt() noexcept { interruptNoted.store(true, std::memory_order_relaxed); }
inline void forgetInterrupt() noexcept { interruptNoted.store(false, std::memory_order_relaxed); }
[[nodiscard]] inline bool isInterrupted() noexcept { return interruptNoted.load(std::memory_order_relaxed); }

/// Raises the RuntimeError "interrupted".
[[noreturn]] void raiseInterrupted();

/// A place where a run may end: raises when the user asked for it. Not for
/// worker threads.
inline void checkInterrupt() {
    if (isInterrupted()) [[unlikely]]
        raiseInterrupted();
}

}  // namespace vorpen
