// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/run_state.h"

#include <string>

#include "base/output.h"

namespace vorpen {

RunState theRunState;

bool RunState::goesOnAfterLook() {
    serveIfAsked();
    if (stopped_ || isInterrupted()) return false;
    resume();
    return true;
}

void RunState::noteLine(int line) {
    if (line <= 0 || line == notedLine_) return;
    notedLine_ = line;
    output().print("at line " + std::to_string(line), true, PrintMode::markup);
}

double RunState::loopShare() const {
    const int rounds = loopRounds_.load(std::memory_order_relaxed);
    return rounds == 0 ? -1 : static_cast<double>(loopRoundsDone_.load(std::memory_order_relaxed)) / rounds;
}

void RunState::reset() {
    start();
    debugStepping = false;
    breakHandler = nullptr;
    notedLine_ = 0;
    ownAnswer_.reset();
    useAnswer(nullptr);
}

}  // namespace vorpen
