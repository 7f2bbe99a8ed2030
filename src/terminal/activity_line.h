// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A sign of life while a line runs long: after a second a row below the output
// shows the time that has passed and, in a `for` loop, how much of it is done.
// It is written by a thread of its own, which knows nothing of the language but
// two counters, so it lives on whatever the main thread is deep in. Whoever
// writes to the terminal meanwhile holds a `Pause`, which takes the row away.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace vorpen {

/// The row's text. A negative share is not known.
[[nodiscard]] std::string activityText(double seconds, double share);

class ActivityLine {
public:
    /// Writes to a terminal; nothing is ever written when `enabled` is false.
    ActivityLine(int file, bool enabled) : file_(file), enabled_(enabled) {}
    ActivityLine(const ActivityLine&) = delete;
    ActivityLine& operator=(const ActivityLine&) = delete;
    ~ActivityLine();

    /// While it lives, something runs.
    class Run {
    public:
        explicit Run(ActivityLine& line) : line_(line) { line_.begin(); }
        Run(const Run&) = delete;
        Run& operator=(const Run&) = delete;
        ~Run() { line_.end(); }

    private:
        ActivityLine& line_;
    };

    /// While it lives, the row is not there. Pauses nest.
    class Pause {
    public:
        explicit Pause(ActivityLine* line) : line_(line) {
            if (line_) line_->pause();
        }
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;
        ~Pause() {
            if (line_) line_->resume();
        }

    private:
        ActivityLine* line_;
    };

    /// Whether something runs, also where the row is never shown.
    [[nodiscard]] bool isRunning() const { return runs_; }

    /// Told when the cursor does not stand at the start of a row; then there is
    /// no place for the line.
    void setRowTaken(bool taken) { rowTaken_ = taken; }

private:
    void begin();
    void end();
    void pause();
    void resume();
    void watch();
    void draw(double seconds);
    void erase();

    const int file_;
    const bool enabled_;
    std::atomic<bool> rowTaken_{false}, runs_{false};
    std::mutex mutex_;
    std::condition_variable changed_;
    bool running_ = false, leaving_ = false, drawn_ = false, keysErased_ = false;
    int pauses_ = 0;
    double start_ = 0;
    std::thread thread_;
};

}  // namespace vorpen
