// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/service_clock.h"

#include <pthread.h>

#include <chrono>
#include <csignal>

#include "eval/run_state.h"

namespace vorpen {
namespace {

using namespace std::chrono_literals;

/// A user notices a wait of this length, and at this rate a window seems alive.
constexpr auto firstWait = 150ms, furtherWaits = 40ms;

}  // namespace

ServiceClock::ServiceClock() : thread_([this] { ask(); }) {}

ServiceClock::~ServiceClock() {
    {
        const std::lock_guard lock(mutex_);
        isOver_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void ServiceClock::beginRun() {
    {
        const std::lock_guard lock(mutex_);
        ++runs_;
    }
    changed_.notify_one();
}

void ServiceClock::endRun() {
    {
        const std::lock_guard lock(mutex_);
        --runs_;
    }
    changed_.notify_one();
}

void ServiceClock::ask() {
    // Signals belong to the thread that runs.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    std::unique_lock lock(mutex_);
    const auto isAtRest = [this] { return isOver_ || runs_ == 0; };
    for (;;) {
        changed_.wait(lock, [this] { return isOver_ || runs_ > 0; });
        if (isOver_) return;
        for (auto pause = firstWait; !changed_.wait_for(lock, pause, isAtRest); pause = furtherWaits)
            runState().askForService();
    }
}

}  // namespace vorpen
