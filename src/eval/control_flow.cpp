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

void BlockStm::runFrom(std::size_t first) {
    RunState& state = runState();
    for (const StatementPtr& statement : std::span(statements_).subspan(first)) {
        if (!state.goesOn()) return;
        statement->exe();
        // Also when it was this statement that began the stepping.
        if (state.debugStepping) [[unlikely]]
            stopBehind(*statement);
    }
}

void BlockStm::goOnBehind(std::size_t k) {
    if (runState().debugStepping) stopBehind(*statements_[k]);
    runFrom(k + 1);
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

/// The rounds of one run of a loop, by the form for numbers while that may run.
/// A round by the form is all in line: what else a round may have to do stands
/// apart.
class LoopStm::Rounds {
public:
    explicit Rounds(LoopStm& loop) : loop_(loop) {}

    /// Runs the body once; false when the loop is to be left.
    bool runNext() {
        try {
            if (!form_) [[unlikely]]
                runFirst();
            else if (!form_->runRound()) [[unlikely]]
                form_ = nullptr;
        } catch (const ContinueStm&) {
            form_ = nullptr;
            checkInterrupt();
            return true;
        } catch (const BreakStm&) {
            return false;
        }
        return runState().goesOn() || isToGoOn();
    }

    /// The form for numbers, where the next round will be run by it, or null.
    [[nodiscard]] const NumberLoop* form() const { return form_; }
    /// What the form takes for granted may be so no longer.
    void release() { form_ = nullptr; }

private:
    /// The next round, which the form runs where it may do so again.
    [[gnu::noinline]] void runFirst() {
        const NumberLoop* form = loop_.findForm();
        if (!form)
            loop_.runBody();
        else if (form->runRound())
            form_ = form;
    }

    /// Behind a round that stopped the run.
    [[gnu::noinline]] static bool isToGoOn() {
        RunState& state = runState();
        checkInterrupt();
        const LoopSignal signal = state.takeSignal();
        if (signal == LoopSignal::none) return false;
        state.resume();
        return signal == LoopSignal::next;
    }

    LoopStm& loop_;
    const NumberLoop* form_ = nullptr;
};

const NumberLoop* LoopStm::findForm() {
    if (roundsBeforeForm_ > 0) {
        if (--roundsBeforeForm_ > 0) return nullptr;
        form_ = makeForm();
    }
    return form_ && form_->mayRun() ? form_.get() : nullptr;
}

std::unique_ptr<NumberLoop> WhileStm::makeForm() const {
    return NumberLoop::compile(body(), nullptr, expression());
}

Condition::Truth WhileStm::test(Rounds& rounds) const {
    if (const NumberLoop* form = rounds.form(); form && form->hasCondition()) [[likely]] {
        const bool truth = form->test();
        if (!NotKnown::take()) [[likely]]
            return truth ? Condition::Truth::yes : Condition::Truth::no;
    }
    // A condition may run code of the user.
    rounds.release();
    return condition_.test();
}

void WhileStm::exe() {
    if (!runState().goesOn()) return;
    Rounds rounds(*this);
    do {
        const Condition::Truth truth = test(rounds);
        require(truth != Condition::Truth::notScalar, "non-scalar condition in while clause");
        if (truth == Condition::Truth::no) return;
    } while (rounds.runNext());
}

ForStm::ForStm(int line, EvaluatablePtr range, StatementPtr body, Value* loopVariable)
    : LoopStm(line, std::move(range), std::move(body)),
      loopVariable_(loopVariable),
      number_(dynamic_cast<DoubleValue*>(loopVariable)),
      sequence_(expression()->elementKind() == ElementKind::sequence
                    ? static_cast<SequenceElement*>(expression())
                    : nullptr) {}

std::unique_ptr<NumberLoop> ForStm::makeForm() const {
    return number_ ? NumberLoop::compile(body(), number_, nullptr) : nullptr;
}

void ForStm::setLoopVariable(double x) {
    if (number_)
        storeNumber(*number_, x, FORM_NUMERIC);
    else
        loopVariable_->assignDouble(x);
}

void ForStm::setLoopVariable(int x) {
    if (number_)
        storeNumber(*number_, x, FORM_NUMERIC);
    else
        loopVariable_->assignInt(x);
}

template <class Number, class Next>
void ForStm::walk(int count, Number x, const Next& next) {
    LoopProgress progress(count);
    Rounds rounds(*this);
    for (int i = 0; i < count; ++i, x = next(x)) {
        progress.noteDone(i);
        if (rounds.form()) [[likely]]
            (*number_)[0] = x;
        else
            setLoopVariable(x);
        if (!rounds.runNext()) return;
    }
}

void ForStm::walkRange(const SequenceElement::Range& range) {
    walk(range.count, range.start, [&](double x) { return x + range.step; });
}

void ForStm::walkIntegers(const SequenceElement::Range& range) {
    const auto step = static_cast<unsigned>(truncateToInt(range.step));
    walk(range.count, truncateToInt(range.start),
         [step](int x) { return static_cast<int>(static_cast<unsigned>(x) + step); });
}

void ForStm::walkArray() {
    Workspace workspace(expression()->type());
    const Value* range = expression()->pValue(workspace.get());
    LoopProgress progress(range->size());
    Rounds rounds(*this);
    for (int i = 0; i < range->size(); ++i) {
        progress.noteDone(i);
        if (range->valueType() == INTEGER_VAL)
            loopVariable_->assignInt(asInt(*range)[i]);
        else if (range->valueType() == DOUBLE_VAL)
            setLoopVariable(asDouble(*range)[i]);
        else
            fail("a loop needs integers or doubles", "for loop");
        if (!rounds.runNext()) return;
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
    Rounds rounds(*this);
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
        if (!rounds.runNext()) return;
    }
}

}  // namespace vorpen
