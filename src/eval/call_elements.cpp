// SPDX-License-Identifier: GPL-3.0-or-later

// The elements of expressions that call user functions.

#include <array>
#include <optional>

#include "base/errors.h"
#include "eval/indexing.h"
#include "eval/user_func.h"

namespace vorpen {

namespace {

/// Doubles for the arguments of one call, made when they are asked for.
class DoubleRooms {
public:
    DoubleValue& add() { return rooms_[count_++].emplace(); }

private:
    std::array<std::optional<DoubleValue>, maxPlainArguments> rooms_;
    std::size_t count_ = 0;
};

}  // namespace

std::vector<Evaluatable*> UserCallElement::pointersTo(const std::vector<EvaluatablePtr>& arguments) {
    std::vector<Evaluatable*> pointers;
    for (const auto& argument : arguments) pointers.push_back(argument.get());
    return pointers;
}

UserCallElement::UserCallElement(UserFunc& function, std::vector<Evaluatable*> pointers,
                                 std::vector<EvaluatablePtr>&& arguments)
    : MultiInputOutput_Element(std::move(arguments), function.outputType()),
      function_(&function),
      arguments_(std::move(pointers)),
      version_(function.version()) {
    plainArguments_ = arguments_.size() <= maxPlainArguments;
    for (Evaluatable* argument : arguments_) {
        argumentTypes_.push_back(argument->type());
        argumentNumbers_.emplace_back(*argument);
        const bool isReference = argument->elementKind() == ElementKind::functionReference;
        const bool isNumber = argument->type() <= DOUBLE_VAL || argument->type() == UNKNOWN_VAL;
        if (isReference || !isNumber) plainArguments_ = false;
    }
}

Value* UserCallElement::evaluateArgument(std::size_t i, Workspaces& workspaces) {
    Evaluatable& argument = *arguments_[i];
    if (argument.elementKind() == ElementKind::functionReference) return nullptr;
    // An item of a list goes to a complex or list parameter as it is.
    const int kind = function_->desc().paramKinds[i];
    if (argument.elementKind() == ElementKind::listItem && argument.type() == UNKNOWN_VAL &&
        kind > DOUBLE_VAL)
        return &static_cast<ListItemElement&>(argument).fetchItem();
    return argument.pValue(workspaces.add(argument.type()).get());
}

void UserCallElement::run(ExtraOutputs extraOutputs, Value& out) {
    if (function_->version() != version_) {
        function_->checkArguments(argumentTypes_);
        const int wanted = extraOutputs ? static_cast<int>(extraOutputs->size()) + 1 : 1;
        Require(wanted <= function_->outputCount(), "too many output arguments");
    }
    Workspaces workspaces;
    std::array<FuncArgument, maxPlainArguments> near;
    std::vector<FuncArgument> far(arguments_.size() > maxPlainArguments ? arguments_.size() : 0);
    const auto records = far.empty() ? std::span(near).first(arguments_.size()) : std::span(far);
    for (std::size_t i = 0; i < records.size(); ++i) {
        records[i].element = arguments_[i];
        records[i].value = evaluateArgument(i, workspaces);
    }
    function_->call(records, extraOutputs, out);
}

Outcome UserCallElement::evaluateByRun(Value* workspace) {
    run(nullptr, *workspace);
    return outcomeOf(workspace);
}

/// An argument as a number or as a value in the room.
inline Outcome UserCallElement::evaluateArgument(std::size_t i, DoubleValue& room) {
    const Outcome input = arguments_[i]->evaluate(&room);
    if (input.isScalar() || input.value() == &room) return input;
    if (input.value()->valueType() > DOUBLE_VAL) function_->failAtArgument();
    room.copyFrom(*input.value());
    return Outcome::of(&room);
}

Outcome UserCallElement::evaluatePlain(Value* workspace) {
    const std::size_t count = arguments_.size();
    Outcome inputs[maxPlainArguments];
    std::size_t known = 0;
    while (known < count && argumentNumbers_[known].read(inputs[known])) ++known;
    if (known < count) return evaluateWithRooms(workspace);
    return function_->callOnNumbers({inputs, count}, workspace);
}

Outcome UserCallElement::evaluateWithRooms(Value* workspace) {
    const std::size_t count = arguments_.size();
    DoubleRooms rooms;
    Outcome inputs[maxPlainArguments];
    for (std::size_t i = 0; i < count; ++i) inputs[i] = evaluateArgument(i, rooms.add());
    return function_->callPlain({inputs, count}, workspace);
}

Outcome UserFuncElement::evaluate(Value* workspace) {
    return isPlainCall() ? evaluatePlain(workspace) : evaluateByRun(workspace);
}

EvaluatablePtr makeCallElement(UserFunc& function, std::vector<EvaluatablePtr> arguments) {
    if (function.isQuick()) return std::make_unique<QuickUserFuncElement>(function, std::move(arguments));
    return std::make_unique<UserFuncElement>(function, std::move(arguments));
}

}  // namespace vorpen
