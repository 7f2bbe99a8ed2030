// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "base/interrupt.h"

namespace vorpen {
namespace {

using Work = std::function<void(std::int64_t, std::int64_t)>;

/// One job at a time, cut into pieces that the threads take in turn.
class Pool {
public:
    Pool() {
        for (int i = 1; i < parallelThreads(); ++i) workers_.emplace_back([this] { serve(); });
    }
    ~Pool() {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        for (auto& worker : workers_) worker.join();
    }

    void run(std::int64_t n, std::int64_t grain, const Work& work) {
        {
            std::lock_guard lock(mutex_);
            work_ = &work;
            end_ = n;
            piece_ = pieceSize(n, grain);
            next_ = 0;
            busy_ = static_cast<int>(workers_.size());
            ++job_;
        }
        wake_.notify_all();
        takePieces();
        std::unique_lock lock(mutex_);
        done_.wait(lock, [this] { return busy_ == 0; });
        work_ = nullptr;
    }

private:
    /// About eight pieces a thread even out threads that are slowed down.
    static std::int64_t pieceSize(std::int64_t n, std::int64_t grain) {
        const std::int64_t wanted = n / (8 * parallelThreads()) + 1;
        return (wanted + grain - 1) / grain * grain;
    }

    void takePieces() {
        for (;;) {
            const std::int64_t begin = next_.fetch_add(piece_);
            if (begin >= end_ || isInterrupted()) return;
            (*work_)(begin, std::min(end_, begin + piece_));
        }
    }

    void serve() {
        std::uint64_t seen = 0;
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [&] { return stopping_ || job_ != seen; });
                if (stopping_) return;
                seen = job_;
            }
            takePieces();
            std::lock_guard lock(mutex_);
            if (--busy_ == 0) done_.notify_one();
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_, done_;
    const Work* work_ = nullptr;
    std::int64_t end_ = 0, piece_ = 1;
    std::atomic<std::int64_t> next_{0};
    std::uint64_t job_ = 0;
    int busy_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace

int parallelThreads() {
    // Array kernels are bound by memory; more threads than this add nothing.
    static const int count = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 8);
    return count;
}

void parallelFor(std::int64_t n, std::int64_t grain, const Work& work) {
    if (n < parallelThreshold || parallelThreads() == 1) {
        if (n > 0) work(0, n);
        return;
    }
    static Pool pool;
    pool.run(n, grain, work);
    checkInterrupt();
}

}  // namespace vorpen
