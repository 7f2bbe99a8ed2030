// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/activity_line.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string_view>

#include "base/interrupt.h"
#include "eval/run_state.h"
#include "terminal/terminal_mode.h"

namespace vorpen {
namespace {

/// A shorter run needs no sign of life.
constexpr double patienceSeconds = 1;
constexpr auto interval = std::chrono::milliseconds(250);

double now() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

void writeAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno != EINTR) return;
        if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
    }
}

/// A thread that never takes a signal: they are for the main thread, whose
/// waits they end.
template <class Work>
std::thread startWithoutSignals(Work work) {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::thread thread(work);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

}  // namespace

std::string activityText(double seconds, double share) {
    const auto whole = static_cast<long long>(std::max(seconds, 0.0));
    char text[64];
    if (whole < 60)
        std::snprintf(text, sizeof text, "running %lld s", whole);
    else if (whole < 3600)
        std::snprintf(text, sizeof text, "running %lld:%02lld", whole / 60, whole % 60);
    else
        std::snprintf(text, sizeof text, "running %lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    std::string result = text;
    if (share >= 0) result += ", " + std::to_string(static_cast<int>(100 * std::min(share, 1.0))) + " % done";
    return result;
}

ActivityLine::~ActivityLine() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        leaving_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

void ActivityLine::begin() {
    runs_ = true;
    if (!enabled_) return;
    {
        const std::lock_guard lock(mutex_);
        running_ = true;
        keysErased_ = false;
        start_ = now();
    }
    if (!thread_.joinable()) {
        thread_ = startWithoutSignals([this] { watch(); });
    } else {
        changed_.notify_one();
    }
}

void ActivityLine::end() {
    runs_ = false;
    if (!enabled_) return;
    {
        const std::lock_guard lock(mutex_);
        running_ = false;
        erase();
    }
}

void ActivityLine::pause() {
    if (!enabled_) return;
    const std::lock_guard lock(mutex_);
    ++pauses_;
    erase();
}

void ActivityLine::resume() {
    if (!enabled_) return;
    const std::lock_guard lock(mutex_);
    --pauses_;
}

void ActivityLine::watch() {
    std::unique_lock lock(mutex_);
    while (!leaving_) {
        if (!running_) {
            changed_.wait(lock, [this] { return running_ || leaving_; });
            continue;
        }
        changed_.wait_for(lock, interval, [this] { return leaving_; });
        const double seconds = now() - start_;
        if (running_ && !leaving_ && pauses_ == 0 && !rowTaken_ && seconds >= patienceSeconds) draw(seconds);
    }
}

void ActivityLine::draw(double seconds) {
    const std::string text = activityText(seconds, runState().loopShare());
    const auto columns = static_cast<std::size_t>(std::max(terminalSize(file_).columns - 1, 1));
    writeAll(file_, "\r" + text.substr(0, columns) + "\x1b[K");
    drawn_ = true;
}

void ActivityLine::erase() {
    // The terminal shows the keys of an interrupt at the cursor.
    const bool showsKeys = isInterrupted() && !keysErased_ && !rowTaken_;
    keysErased_ = keysErased_ || showsKeys;
    if (!drawn_ && !showsKeys) return;
    writeAll(file_, "\r\x1b[K");
    drawn_ = false;
}

}  // namespace vorpen
