// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/run_state.h"

#include <string>

#include "base/output.h"

namespace vorpen {

RunState theRunState;

RunState::RunState() {
    for (int type = INTEGER_VAL; type <= LIST_VAL; ++type) answers_[type] = newValue(type);
}

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

void RunState::selectAnswer(int type) {
    if (type == answerType_) return;
    answers_[answerType_]->clear();
    answerType_ = type;
}

void RunState::setAns(const Value& v) {
    Value& answer = *answers_[v.valueType()];
    if (&answer != &v) answer.copyFrom(v);
    selectAnswer(v.valueType());
}

void RunState::moveToAns(Value& v) {
    Value& answer = *answers_[v.valueType()];
    if (&answer != &v) {
        SavedData contents = v.detachData();
        answer.adoptData(contents);
    }
    selectAnswer(v.valueType());
}

double RunState::loopShare() const {
    const int rounds = loopRounds_.load(std::memory_order_relaxed);
    return rounds == 0 ? -1 : static_cast<double>(loopRoundsDone_.load(std::memory_order_relaxed)) / rounds;
}

void RunState::reset() {
    start();
    debugStepping = false;
    debugPause = nullptr;
    notedLine_ = 0;
    answerType_ = DOUBLE_VAL;
    for (int type = INTEGER_VAL; type <= LIST_VAL; ++type) answers_[type] = newValue(type);
}

}  // namespace vorpen
