// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/function_reference.h"

#include <algorithm>
#include <array>

#include "base/errors.h"
#include "eval/elements.h"
#include "eval/function_elements.h"
#include "eval/number_lane.h"
#include "eval/run_state.h"
#include "eval/store.h"

namespace vorpen {

namespace {

/// Makes the contents of a parameter those of an input.
void setParameter(DoubleValue& parameter, Outcome input) {
    if (input.isScalar())
        storeNumber(parameter, input.number, input.mark());
    else
        parameter.copyFrom(*input.value());
}

/// The function of `f(x)` when the expression is that and nothing more.
RealBody bodyOfCall(const Evaluatable& expression, const Value* x) {
    const auto* call = dynamic_cast<const SimpleFuncElement*>(&expression);
    if (!call) return nullptr;
    const auto* argument = dynamic_cast<const ValueElement*>(&call->inner());
    return argument && argument->variable() == x ? call->body() : nullptr;
}

/// A debugger wants to see the statements run.
const NumberFunction* numberFormOf(const UserFunc& function) {
    return runState().debugStepping ? nullptr : function.numberFunction();
}

/// A call by the form of the function for numbers (number_function.h), the
/// shortest way for a method that calls it many times. False, with nothing
/// done, where there is none, or the call asks for more.
bool callOnFrame(UserFunc& function, std::span<const Outcome> inputs, double& result) {
    const NumberFunction* onNumbers = numberFormOf(function);
    if (!onNumbers) return false;
    double frame[FrameSlots::maxSlots];
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        if (inputs[i].mark() != FORM_NUMERIC) return false;
        frame[i] = inputs[i].number;
    }
    result = function.callNumberFunction(*onNumbers, frame);
    return !NotKnown::take();
}

/// An empty value of a kind, read only and shared.
Value* emptyValue(int type) {
    static const std::array<std::unique_ptr<Value>, UNKNOWN_VAL + 1> values = {
        newHolder(INTEGER_VAL), newHolder(DOUBLE_VAL), newHolder(COMPLEX_VAL), newHolder(LIST_VAL),
        newHolder(UNKNOWN_VAL)};
    return values[type].get();
}

}  // namespace

// ---- anonymous functions

AnonymousFunction::AnonymousFunction(int parameterCount) {
    for (int i = 0; i < parameterCount; ++i) parameters_.push_back(std::make_unique<DoubleValue>());
}

void AnonymousFunction::setBody(EvaluatablePtr body) {
    body_ = std::move(body);
    isPure_ = body_->isPure();
    const bool isReal = body_->type() != COMPLEX_VAL && body_->type() != LIST_VAL;
    type_ = isReal ? int{DOUBLE_VAL} : body_->type();
    if (parameters_.size() == 1) realBody_ = bodyOfCall(*body_, parameter(0));
}

/// Keeps the parameters' contents while a call runs: the body may lead back to
/// this function.
class AnonymousFunction::Frame {
public:
    explicit Frame(AnonymousFunction& function) : function_(function) {
        if (function_.depth_++ == 0) return;
        for (auto& parameter : function_.parameters_) saved_.push_back(parameter->detachData());
    }
    ~Frame() {
        if (--function_.depth_ == 0) {
            for (auto& parameter : function_.parameters_)
                if (parameter->size() > 1) parameter->clear();
            return;
        }
        for (std::size_t i = 0; i < saved_.size(); ++i) function_.parameters_[i]->adoptData(saved_[i]);
    }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

private:
    AnonymousFunction& function_;
    std::vector<SavedData> saved_;
};

/// A body that runs no code of the user's cannot change an array of the
/// caller's, and reads it where it stands.
void AnonymousFunction::setInput(DoubleValue& parameter, Outcome input) const {
    if (isPure_ && !input.isScalar() && input.value()->valueType() == DOUBLE_VAL && input.value()->size() > 1) {
        DoubleValue& array = asDouble(*input.value());
        parameter.viewOf(array.data(), array.size(), array.nrow(), array.mark());
    } else {
        setParameter(parameter, input);
    }
}

Outcome AnonymousFunction::call(std::span<const Outcome> inputs, Value* workspace) {
    if (inputs.size() != parameters_.size()) throw RuntimeError("missing parameter value");
    Require(depth_ < maxCallsInProgress, "max recursion depth exceeded");
    const Frame frame(*this);
    for (std::size_t i = 0; i < inputs.size(); ++i) setInput(*parameters_[i], inputs[i]);

    if (type_ != DOUBLE_VAL) {
        Value* result = body_->pValue(workspace);
        if (result == workspace) return Outcome::of(result);
        workspace->copyFrom(*result);
        return Outcome::of(workspace);
    }
    DoubleValue room = std::move(asDouble(*workspace));
    const Outcome result = body_->evaluate(&room);
    if (result.isScalar()) return result;
    if (result.value() == &room)
        asDouble(*workspace) = std::move(room);
    else
        workspace->copyFrom(*result.value());
    return Outcome::of(workspace);
}

// ---- references

Value* FuncRefElement::pValue(Value*) { return emptyValue(type()); }

int FuncRefElement::type() const {
    return function_ ? function_->outputType() : anonymous_->type();
}

bool FuncRefElement::uses(const Value* v) const {
    return function_ ? v == function_->token() : anonymous_->uses(v);
}

int FuncRefElement::inputCount() const {
    return function_ ? function_->parameterCount() : anonymous_->parameterCount();
}

Outcome FuncRefElement::callUserFunction(std::span<const Outcome> inputs, Value* workspace) {
    const bool numbers = std::ranges::all_of(inputs, &Outcome::isScalar);
    const bool full = static_cast<int>(inputs.size()) == function_->parameterCount();
    double result;
    if (numbers && full && callOnFrame(*function_, inputs, result)) return Outcome::scalar(result);
    if (numbers && full && !inputs.empty() && function_->isQuick()) {
        DoubleValue room;
        return function_->callQuickOnNumbers(inputs.front(), inputs.back(), room, workspace);
    }
    constexpr std::array<int, maxInputs> doubles = {DOUBLE_VAL, DOUBLE_VAL, DOUBLE_VAL, DOUBLE_VAL};
    if (inputs.size() > maxInputs) throw RuntimeError(name_ + "(...) has too many arguments");
    if (!full || !function_->isPlain()) function_->checkArguments(std::span(doubles).first(inputs.size()));
    if (function_->isQuick()) {
        UserFunc::QuickArguments arguments;
        arguments.ownsWorkspace = true;
        if (inputs.size() > 0) arguments.first = inputs[0];
        if (inputs.size() > 1) arguments.second = inputs[1];
        return function_->callQuick(arguments, workspace);
    }
    if (numbers && function_->isPlain()) return function_->callPlain(inputs, workspace);

    std::array<DoubleValue, maxInputs> copies;
    if (function_->isPlain()) {
        std::array<Outcome, maxInputs> plain;
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            plain[i] = inputs[i];
            if (inputs[i].isScalar()) continue;
            setParameter(copies[i], inputs[i]);
            plain[i] = Outcome::of(&copies[i]);
        }
        return function_->callPlain(std::span<const Outcome>(plain).first(inputs.size()), workspace);
    }
    std::array<FuncArgument, maxInputs> records;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        setParameter(copies[i], inputs[i]);
        records[i].value = &copies[i];
    }
    function_->call(std::span(records).first(inputs.size()), nullptr, *workspace);
    return outcomeOf(workspace);
}

bool FuncRefElement::callOnNumber(double x, double& result) {
    if (!function_ || function_->parameterCount() != 1) return false;
    const NumberFunction* onNumbers = numberFormOf(*function_);
    if (!onNumbers) return false;
    double frame[FrameSlots::maxSlots];
    frame[0] = x;
    result = function_->callNumberFunction(*onNumbers, frame);
    return !NotKnown::take();
}

Outcome FuncRefElement::call(std::span<const Outcome> inputs, Value* workspace) {
    return function_ ? callUserFunction(inputs, workspace) : anonymous_->call(inputs, workspace);
}

void FuncRefElement::callForEach(std::span<const Outcome> inputs, DoubleValue& workspace) {
    DoubleValue points;
    setParameter(points, inputs.back());
    std::vector<Outcome> point(inputs.begin(), inputs.end());
    DoubleValue result;
    result.setSizeShapeMark(points.size(), points.nrow(), points.mark());
    for (int i = 0; i < points.size(); ++i) {
        point.back() = Outcome::scalar(points[i]);
        Workspace room(type());
        const Outcome answer = call(point, room.get());
        if (!answer.isScalar() && answer.value()->size() != 1) throw OperatorFailure{']'};
        result[i] = answer.isScalar() ? answer.number : answer.value()->doubleValue();
    }
    workspace = std::move(result);
}

}  // namespace vorpen
