// SPDX-License-Identifier: GPL-3.0-or-later

// Calls of functions of one expression: nothing is saved, no statement runs,
// and numbers stay in registers.

#include <utility>

#include "base/errors.h"
#include "eval/store.h"
#include "eval/user_func.h"

namespace vorpen {

namespace {

/// Below this size of an argument a result is not worth the look whether it
/// may be computed straight into the target.
constexpr int largeInput = 256;

}  // namespace

void UserFunc::setInput(DoubleValue& input, Outcome argument, const DoubleValue* room) {
    if (argument.isScalar()) [[likely]] {
        storeNumber(input, argument.number, argument.mark());
        return;
    }
    Value& value = *argument.value();
    if (&value == room) {
        input = std::move(asDouble(value));
        return;
    }
    if (value.valueType() > DOUBLE_VAL) throw RuntimeError("invalid data type for quick user function");
    // Nothing in a pure body can change the caller's value, so it is read where
    // it stands.
    if (quickBodyIsPure_ && value.valueType() == DOUBLE_VAL && value.size() > 1 &&
        !desc_.has(FUNCTION_VECTORISED))
        input.viewOf(asDouble(value).data(), value.size(), value.nrow(), value.mark());
    else
        input.copyFrom(value);
}

bool UserFunc::hasLargeInput(const QuickArguments& arguments) {
    const auto isLarge = [](Outcome argument) {
        return !argument.isScalar() && argument.value()->size() >= largeInput;
    };
    return isLarge(arguments.first) || isLarge(arguments.second);
}

Outcome UserFunc::quickResult(const QuickArguments& arguments, Value* workspace) {
    if (quickBodyType_ == COMPLEX_VAL || quickBodyType_ == LIST_VAL)
        throw RuntimeError("incompatable data type in return statement");
    DoubleValue room;
    if (arguments.ownsWorkspace) room = std::move(asDouble(*workspace));
    DoubleValue* place = &room;
    const bool isInput = arguments.first.value() == workspace || arguments.second.value() == workspace;
    if (quickBodyIsPure_ && !arguments.ownsWorkspace && hasLargeInput(arguments) && !isInput && !quickBody_->uses(workspace))
        place = &asDouble(*workspace);

    const Outcome result = quickBody_->evaluate(place);
    return result.isScalar() ? result : settleQuickResult(result.value(), arguments, room, workspace);
}

/// Brings a result to a place where it may stay: a parameter will not keep it.
Outcome UserFunc::settleQuickResult(Value* value, const QuickArguments& arguments, DoubleValue& room,
                                    Value* workspace) {
    if (value->valueType() > DOUBLE_VAL) throw RuntimeError("incompatable data type in return statement");
    if (value == &room) {
        asDouble(*workspace) = std::move(room);
        return Outcome::of(workspace);
    }
    for (std::size_t i = 0; i < desc_.paramNames.size(); ++i) {
        if (value != &parameter(i)) continue;
        const Outcome argument = i == 0 ? arguments.first : arguments.second;
        // Empty values have no data to share.
        const bool isView =
            !argument.isScalar() && !value->isEmpty() && argument.value()->rawData() == value->rawData();
        if (isView) return argument;
        asDouble(*workspace) = std::move(parameter(i));
        return Outcome::of(workspace);
    }
    if (value->valueType() == DOUBLE_VAL) return Outcome::of(value);
    workspace->copyFrom(*value);
    return Outcome::of(workspace);
}

Outcome UserFunc::quickForEach(Value* workspace) {
    Require(quickBodyType_ == DOUBLE_VAL,
            "vectorization only implemented for functions of output-type double");
    DoubleValue& input = parameter(desc_.paramNames.size() - 1);
    const DoubleValue points = std::move(input);
    DoubleValue result;
    result.setSizeShapeMark(points.size(), points.nrow(), points.mark());
    for (int i = 0; i < points.size(); ++i) {
        checkInterrupt();
        storeNumber(input, points[i], 0);
        DoubleValue room;
        const Outcome answer = quickBody_->evaluate(&room);
        if (!answer.isScalar() && answer.value()->size() != 1) throw OperatorFailure{']'};
        result[i] = answer.isScalar() ? answer.number : answer.value()->doubleValue();
    }
    asDouble(*workspace) = std::move(result);
    return outcomeOf(workspace);
}

Outcome UserFunc::evaluateQuick(const QuickArguments& arguments, Value* workspace) {
    const std::size_t count = desc_.paramNames.size();
    if (count > 0) setInput(parameter(0), arguments.first, arguments.firstRoom);
    if (count > 1) setInput(parameter(1), arguments.second, arguments.secondRoom);
    return desc_.has(FUNCTION_VECTORISED) ? quickForEach(workspace) : quickResult(arguments, workspace);
}

void UserFunc::releaseInputs() noexcept {
    for (std::size_t i = 0; i < desc_.paramNames.size(); ++i)
        if (parameter(i).size() != 1) parameter(i).clear();
}

Outcome UserFunc::callQuickAgain(QuickArguments arguments, Value* workspace) {
    DoubleValue copies[2];
    const auto settle = [](Outcome& argument, DoubleValue*& room, DoubleValue& copy) {
        if (argument.isScalar() || argument.value() == room || argument.value()->valueType() > DOUBLE_VAL)
            return;
        copy.copyFrom(*argument.value());
        argument = Outcome::of(&copy);
        room = &copy;
    };
    settle(arguments.first, arguments.firstRoom, copies[0]);
    settle(arguments.second, arguments.secondRoom, copies[1]);
    begin();
    try {
        const Outcome result = evaluateQuick(arguments, workspace);
        end();
        return result;
    } catch (...) {
        unwind();
        throw;
    }
}

Outcome UserFunc::callQuick(const QuickArguments& arguments, Value* workspace) {
    if (depth_ != 0) return callQuickAgain(arguments, workspace);
    requireRoom();
    depth_ = 1;
    try {
        const Outcome result = evaluateQuick(arguments, workspace);
        depth_ = 0;
        releaseInputs();
        return result;
    } catch (...) {
        leaveAfterFailure();
        throw;
    }
}

void UserFunc::leaveAfterFailure() {
    depth_ = 0;
    releaseInputs();
    if (std::exchange(enteredAgain_, false)) printInChain();
}

Outcome UserFunc::callQuickOnNumbers(Outcome first, Outcome second, DoubleValue& room, Value* workspace) {
    if (!numberBody_ || depth_ != 0) [[unlikely]] {
        QuickArguments arguments;
        arguments.first = first;
        arguments.second = second;
        return callQuick(arguments, workspace);
    }
    requireRoom();
    if (inputs_[0]) storeNumber(*inputs_[0], first.number, first.mark());
    if (inputs_[1]) storeNumber(*inputs_[1], second.number, second.mark());
    depth_ = 1;
    try {
        Outcome result = numberBody_->evaluate(&room);
        if (!result.isScalar()) [[unlikely]] {
            result = settleQuickResult(result.value(), {}, room, workspace);
            releaseInputs();
        }
        depth_ = 0;
        return result;
    } catch (...) {
        leaveAfterFailure();
        throw;
    }
}

// ---- the element

QuickUserFuncElement::QuickUserFuncElement(UserFunc& function, std::vector<EvaluatablePtr> arguments)
    : UserCallElement(function, std::move(arguments)) {
    if (this->arguments().size() > 0) first_ = this->arguments()[0];
    if (this->arguments().size() > 1) second_ = this->arguments()[1];
}

Outcome QuickUserFuncElement::evaluateWithTwo(Value* workspace) {
    DoubleValue rooms[2];
    UserFunc::QuickArguments inputs;
    inputs.firstRoom = &rooms[0];
    inputs.secondRoom = &rooms[1];
    inputs.first = first_->evaluate(&rooms[0]);
    // The second argument may change the variable that the first one is.
    if (!inputs.first.isScalar() && inputs.first.value() != &rooms[0] &&
        inputs.first.value()->valueType() <= DOUBLE_VAL && !second_->isPure()) {
        rooms[0].copyFrom(*inputs.first.value());
        inputs.first = Outcome::of(&rooms[0]);
    }
    inputs.second = second_->evaluate(&rooms[1]);
    if (inputs.first.isScalar() && inputs.second.isScalar())
        return function_->callQuickOnNumbers(inputs.first, inputs.second, rooms[0], workspace);
    return function_->callQuick(inputs, workspace);
}

Outcome QuickUserFuncElement::evaluate(Value* workspace) {
    if (!function_->isQuick()) [[unlikely]]
        return isPlainCall() ? evaluatePlain(workspace) : evaluateByRun(workspace);
    if (!isPlainCall()) [[unlikely]] {
        if (isForPresentSignature()) throw RuntimeError("invalid data type for quick user function");
        return evaluateByRun(workspace);
    }
    if (second_) return evaluateWithTwo(workspace);
    DoubleValue room;
    const Outcome input = first_ ? first_->evaluate(&room) : Outcome::scalar(0);
    if (input.isScalar()) [[likely]]
        return function_->callQuickOnNumbers(input, input, room, workspace);
    UserFunc::QuickArguments inputs;
    inputs.first = input;
    inputs.firstRoom = &room;
    return function_->callQuick(inputs, workspace);
}

}  // namespace vorpen
