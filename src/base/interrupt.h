// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a run may be asked from outside while it goes on: that it ends, and that
// it lets the surroundings have a moment, so that a window is repainted while
// something long is computed. Both can be noted at any moment, by a signal
// handler or another thread, so they are bits of one flag and nothing else.
// What may run for long looks at it: loops in each round, calls when they
// begin, array kernels from block to block. The wish to end stays up until the
// run is over, so that no method that tries again after a failure goes on.

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace vorpen {

enum AttentionBit : unsigned char { attentionInterrupt = 1, attentionService = 2 };

inline constinit std::atomic<unsigned char> attention{0};
static_assert(std::atomic<unsigned char>::is_always_lock_free, "a signal handler sets the flag");

inline void requestInterrupt() noexcept { attention.fetch_or(attentionInterrupt, std::memory_order_relaxed); }
inline void forgetInterrupt() noexcept {
    attention.fetch_and(static_cast<unsigned char>(~attentionInterrupt), std::memory_order_relaxed);
}
[[nodiscard]] inline bool isInterrupted() noexcept {
    return (attention.load(std::memory_order_relaxed) & attentionInterrupt) != 0;
}
[[nodiscard]] inline bool isAttentionWanted() noexcept { return attention.load(std::memory_order_relaxed) != 0; }

/// What is done on the thread of the run when it was asked for a moment; null
/// for nothing. It must not run statements.
void setService(void (*serve)());
inline void requestService() noexcept { attention.fetch_or(attentionService, std::memory_order_relaxed); }
/// Does what was asked with requestService, if anything.
void serveIfAsked();

/// Raises the RuntimeError "interrupted".
[[noreturn]] void raiseInterrupted();

/// Gives the surroundings their moment, and raises if the run is to end.
void attend();

/// A place where a run may end: raises when the user asked for it. Not for
/// worker threads.
inline void checkInterrupt() {
    if (isAttentionWanted()) [[unlikely]]
        attend();
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
