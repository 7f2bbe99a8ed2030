// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a run of statements shares: whether it goes on, the line last named in
// a message, and the doors to the last answer and the debugger of its engine.
// One run goes on at a time, so there is one of these, at a fixed address that
// loops read at no cost; everyone reaches it through runState(). A run that
// begins while another one waits puts the state of that one aside.

#include <atomic>
#include <utility>

#include "base/interrupt.h"
#include "eval/last_answer.h"

namespace vorpen {

/// What stopped the statements of a body, for the loop around them.
enum class LoopSignal : unsigned char { none, leave, next };

/// A flag that a signal handler may change, at the cost of a plain one.
class SharedFlag {
public:
    explicit SharedFlag(bool up) : up_(up) {}
    operator bool() const { return up_.load(std::memory_order_relaxed); }
    SharedFlag& operator=(bool up) {
        up_.store(up, std::memory_order_relaxed);
        return *this;
    }

private:
    std::atomic<bool> up_;
};

class UserFunc;

/// The debugger, as statements need it.
class BreakHandler {
public:
    virtual ~BreakHandler() = default;
    /// Stops at a breakpoint or a step. There may be no value; the function is
    /// the one whose body holds the breakpoint, null elsewhere and for a step.
    virtual void debugPause(int line, const Value* value, const UserFunc* function) = 0;
};

class RunState {
public:
    RunState() = default;
    RunState(const RunState&) = delete;
    RunState& operator=(const RunState&) = delete;

    /// True while statements may go on. What lowers the flag that is looked at
    /// here: a return, until the end of its call; a break or continue, until the
    /// loop around it; the start of the next input raises it in any case. An
    /// interrupt keeps it low until the run is over, and whoever finds it low
    /// looks for that first. A wish for service lowers it for that moment.
    [[nodiscard]] bool goesOn() {
        if (running_) [[likely]]
            return true;
        return goesOnAfterLook();
    }

    /// Lets no further statement run until `resume`.
    void stop(LoopSignal signal = LoopSignal::none) {
        stopped_ = true;
        loopSignal_ = signal;
        running_ = false;
    }

    /// What stopped the statements, for the loop around them; forgotten by this.
    [[nodiscard]] LoopSignal takeSignal() { return std::exchange(loopSignal_, LoopSignal::none); }
    [[nodiscard]] LoopSignal signal() const { return loopSignal_; }

    /// Statements may go on, since what stopped them has had its effect.
    void resume() {
        stopped_ = false;
        running_ = true;
        // In this order nothing is lost that comes between the two.
        if (isAttentionWanted()) [[unlikely]]
            running_ = false;
    }

    /// Starts a run of statements.
    void start() {
        loopSignal_ = LoopSignal::none;
        resume();
    }

    /// Ends the run at the next place where it looks. For a signal handler.
    void interrupt() noexcept {
        requestInterrupt();
        running_ = false;
    }

    /// Has the service of the surroundings done at the next place where the run
    /// looks. For any thread.
    void askForService() noexcept {
        requestService();
        running_ = false;
    }

    /// While it is set a block stops at the debugger after each statement.
    bool debugStepping = false;
    /// Where breakpoints and steps stop; null passes them by. Not owned.
    BreakHandler* breakHandler = nullptr;

    void debugPause(int line, const Value* value, const UserFunc* function) const {
        if (breakHandler) breakHandler->debugPause(line, value, function);
    }

    /// Writes "at line N" unless N is 0 or was the last line so named.
    void noteLine(int line);
    /// Lets the next failure name its line again.
    void forgetNotedLine() { notedLine_ = 0; }

    /// The last answer of the engine that is current.
    [[nodiscard]] Value& ans() { return answer_->value(); }
    void setAns(const Value& v) { answer_->set(v); }
    /// As setAns, but takes over the contents of a value that is no longer
    /// needed.
    void moveToAns(Value& v) { answer_->take(v); }
    /// Whose last answer it is from now on; lent. Null goes back to one that
    /// belongs to no engine.
    void useAnswer(LastAnswer* answer) { answer_ = answer ? answer : &ownAnswer_; }

    /// How much of the outermost `for` loop is done, from 0 to 1, or -1 outside
    /// loops. May be asked by any thread.
    [[nodiscard]] double loopShare() const;

    /// Back to the state at the start of the program.
    void reset();

private:
    friend class LoopProgress;
    friend class RunPause;

    bool goesOnAfterLook();

    SharedFlag running_{true};
    bool stopped_ = false;
    LoopSignal loopSignal_ = LoopSignal::none;
    int notedLine_ = 0;
    LastAnswer ownAnswer_;
    LastAnswer* answer_ = &ownAnswer_;
    std::atomic<int> loopRounds_{0};      ///< of the outermost loop, 0 outside loops
    std::atomic<int> loopRoundsDone_{0};
};

extern RunState theRunState;
inline RunState& runState() { return theRunState; }

/// A run that waits while another one goes on, as when an event calls a
/// function of the user's: its state is put back when the other has ended. An
/// interrupt that came meanwhile ends the one that waited, too.
class RunPause {
public:
    RunPause() { runState().start(); }
    RunPause(const RunPause&) = delete;
    RunPause& operator=(const RunPause&) = delete;
    ~RunPause() {
        RunState& state = runState();
        state.notedLine_ = notedLine_;
        state.loopSignal_ = LoopSignal::none;
        state.resume();
        if (stopped_) state.stop(signal_);
    }

private:
    const bool stopped_ = runState().stopped_;
    const LoopSignal signal_ = runState().loopSignal_;
    const int notedLine_ = runState().notedLine_;
};

/// The rounds of a `for` loop as they are counted for those who wait. Only the
/// outermost loop is shown; any other counts for itself.
class LoopProgress {
public:
    explicit LoopProgress(int rounds) {
        RunState& state = runState();
        if (rounds <= 0 || state.loopRounds_.load(std::memory_order_relaxed) != 0) return;
        done_ = &state.loopRoundsDone_;
        noteDone(0);
        state.loopRounds_.store(rounds, std::memory_order_relaxed);
    }
    LoopProgress(const LoopProgress&) = delete;
    LoopProgress& operator=(const LoopProgress&) = delete;
    ~LoopProgress() {
        if (done_ != &own_) runState().loopRounds_.store(0, std::memory_order_relaxed);
    }

    void noteDone(int rounds) { done_->store(rounds, std::memory_order_relaxed); }

private:
    std::atomic<int> own_{0};
    std::atomic<int>* done_ = &own_;
};

}  // namespace vorpen
