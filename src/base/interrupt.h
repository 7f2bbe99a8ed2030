// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The user's wish that what runs may end. It can be noted at any moment, by a
// signal handler too, so it is one flag and nothing else. What may run for long
// looks at it: loops in each round, calls when they begin, array kernels from
// block to block. It stays up until the run is over, so that no method that
// tries again after a failure goes on.

#include <algorithm>
#include <atomic>
#include <cstdint>

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

/// Calls work(begin, end) on consecutive pieces of 0 to n, each of a few
/// milliseconds at most, with a place where the run may end before each. What
/// the work has done up to there stays done.
template <class Work>
void inRounds(std::int64_t n, Work work) {
    constexpr std::int64_t round = std::int64_t{1} << 18;
    for (std::int64_t begin = 0; begin < n; begin += round) {
        checkInterrupt();
        work(begin, std::min(n, begin + round));
    }
}

}  // namespace vorpen
