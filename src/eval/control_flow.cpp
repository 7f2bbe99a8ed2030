// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/control_flow.h"

#include "base/errors.h"
#include "base/interrupt.h"
#include "eval/run_state.h"
#include "eval/store.h"

namespace vorpen {
namespace {

Condition::Truth truthOf(const Outcome& outcome) {
    if (!outcome.isScalar() && outcome.value()->size() != 1) return Condition::Truth::notScalar;
    const double x = outcome.isScalar() ? outcome.number : outcome.value()->doubleValue();
    return isTrue(x) ? Condition::Truth::yes : Condition::Truth::no;
}

}  // namespace

void Statement::fail(std::string_view message, std::string_view context) const {
    runState().noteLine(line_);
    raiseRuntimeError(message, context);
}

// ---- sequences of statements

void BlockStm::exe() {
    RunState& state = runState();
    for (const StatementPtr& statement : statements_) {
        if (!state.goesOn()) return;
        statement->exe();
        // Also when it was this statement that began the stepping.
        if (state.debugStepping) [[unlikely]]
            stopBehind(*statement);
    }
}

void stopBehind(const Statement& statement) {
    const RunState& state = runState();
    if (state.signal() != LoopSignal::none) return;
    state.debugPause(statement.line(), statement.assignedValue(), nullptr);
}

bool BlockStm::uses(const Value* v) const {
    for (const StatementPtr& statement : statements_)
        if (statement->uses(v)) return true;
    return Statement::uses(v);
}

void BreakStm::exe() {
    if (!insideLoop_) throw *this;
    runState().stop(LoopSignal::leave);
}

void ContinueStm::exe() {
    if (!insideLoop_) throw *this;
    runState().stop(LoopSignal::next);
}

// ---- conditions

Condition::Truth Condition::evaluate() const {
    Workspace workspace(type_);
    return truthOf(expression_->evaluate(workspace.get()));
}

void IfStm::exe() {
    const Condition::Truth truth = condition_.test();
    require(truth != Condition::Truth::notScalar, "non-scalar condition in if clause");
    if (truth == Condition::Truth::yes) runBody();
}

void UnlessStm::exe() {
    const Condition::Truth truth = condition_.test();
    require(truth != Condition::Truth::notScalar, "non-scalar condition in while clause");
    if (truth == Condition::Truth::no) runBody();
}

void IfElseStm::exe() {
    const Condition::Truth truth = condition_.test();
    require(truth != Condition::Truth::notScalar, "non-scalar condition in if clause");
    if (truth == Condition::Truth::yes)
        runBody();
    else
        elseRun_.exe();
}

// ---- loops

bool LoopStm::runRound() {
    try {
        runBody();
    } catch (const ContinueStm&) {
        checkInterrupt();
        return true;
    } catch (const BreakStm&) {
        return false;
    }
    RunState& state = runState();
    if (state.goesOn()) return true;
    checkInterrupt();
    const LoopSignal signal = state.takeSignal();
    if (signal == LoopSignal::none) return false;
    state.resume();
    return signal == LoopSignal::next;
}

void WhileStm::exe() {
    if (!runState().goesOn()) return;
    do {
        const Condition::Truth truth = condition_.test();
        require(truth != Condition::Truth::notScalar, "non-scalar condition in while clause");
        if (truth == Condition::Truth::no) return;
    } while (runRound());
}

ForStm::ForStm(int line, EvaluatablePtr range, StatementPtr body, Value* loopVariable)
    : LoopStm(line, std::move(range), std::move(body)),
      loopVariable_(loopVariable),
      number_(dynamic_cast<DoubleValue*>(loopVariable)),
      sequence_(expression()->elementKind() == ElementKind::sequence
                    ? static_cast<SequenceElement*>(expression())
                    : nullptr) {}

void ForStm::setLoopVariable(double x) {
    if (number_)
        storeNumber(*number_, x, FORM_NUMERIC);
    else
        loopVariable_->assignDouble(x);
}

void ForStm::walkRange(const SequenceElement::Range& range) {
    double x = range.start;
    LoopProgress progress(range.count);
    for (int i = 0; i < range.count; ++i, x += range.step) {
        progress.noteDone(i);
        setLoopVariable(x);
        if (!runRound()) return;
    }
}

void ForStm::walkIntegers(const SequenceElement::Range& range) {
    const auto step = static_cast<unsigned>(truncateToInt(range.step));
    auto x = static_cast<unsigned>(truncateToInt(range.start));
    LoopProgress progress(range.count);
    for (int i = 0; i < range.count; ++i, x += step) {
        progress.noteDone(i);
        if (number_)
            storeNumber(*number_, static_cast<int>(x), FORM_NUMERIC);
        else
            loopVariable_->assignInt(static_cast<int>(x));
        if (!runRound()) return;
    }
}

void ForStm::walkArray() {
    Workspace workspace(expression()->type());
    const Value* range = expression()->pValue(workspace.get());
    LoopProgress progress(range->size());
    for (int i = 0; i < range->size(); ++i) {
        progress.noteDone(i);
        if (range->valueType() == INTEGER_VAL)
            loopVariable_->assignInt(asInt(*range)[i]);
        else if (range->valueType() == DOUBLE_VAL)
            setLoopVariable(asDouble(*range)[i]);
        else
            fail("a loop needs integers or doubles", "for loop");
        if (!runRound()) return;
    }
}

void ForStm::exe() {
    if (!runState().goesOn()) return;
    if (!sequence_) return walkArray();
    const SequenceElement::Range range = sequence_->readRange();
    if (sequence_->type() == INTEGER_VAL)
        walkIntegers(range);
    else
        walkRange(range);
}

void ForInStm::takeItem(const Value& item) {
    const int from = item.valueType(), to = value_->valueType();
    require(from == to || (from < to && to < LIST_VAL), "incompatible types assigning from list", "for loop");
    // The item lies in the value itself when the loop runs over its own variable.
    if (value_ == collection_)
        value_->copyFrom(*newValueCopy(item));
    else
        value_->copyFrom(item);
}

void ForInStm::exe() {
    if (!runState().goesOn()) return;
    LoopProgress progress(collection_->size());
    for (int k = 0; k < collection_->size();) {
        progress.noteDone(k);
        switch (collection_->valueType()) {
            case INTEGER_VAL: value_->assignInt(asInt(*collection_)[k]); break;
            case DOUBLE_VAL: value_->assignDouble(asDouble(*collection_)[k]); break;
            case LIST_VAL: {
                const Value* item = static_cast<ListValue&>(*collection_)[k].get();
                require(item != nullptr, "the item has no value", "for loop");
                takeItem(*item);
                break;
            }
            default: return;
        }
        ++k;
        if (index_) index_->assignInt(k);
        if (!runRound()) return;
    }
}

}  // namespace vorpen
