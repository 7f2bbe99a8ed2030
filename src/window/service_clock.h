// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Asks what runs for a moment now and then, so that a window stays alive while
// something long computes. A run that ends soon is never asked.

#include <condition_variable>
#include <mutex>
#include <thread>

namespace vorpen {

class ServiceClock {
public:
    ServiceClock();
    ServiceClock(const ServiceClock&) = delete;
    ServiceClock& operator=(const ServiceClock&) = delete;
    ~ServiceClock();

    /// A run begins or ends; runs may be inside each other.
    void beginRun();
    void endRun();

private:
    void ask();

    std::mutex mutex_;
    std::condition_variable changed_;
    int runs_ = 0;
    bool isOver_ = false;
    std::thread thread_;
};

}  // namespace vorpen
