// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/function_arguments.h"

#include "builtins/arguments.h"

namespace vorpen {
namespace {

FuncRefElement& referenceOf(std::span<FuncArgument> arguments) {
    Evaluatable* first = arguments.empty() ? nullptr : arguments[0].function;
    Require(first && first->elementKind() == ElementKind::functionReference,
            "1st argument must be a function");
    return static_cast<FuncRefElement&>(*first);
}

/// The inputs that have no default.
int neededInputs(const FuncRefElement& function) {
    return function.userFunction() ? function.userFunction()->minArguments() : function.inputCount();
}

DoubleValue* doublesOf(FuncArgument& argument) {
    Value& v = argumentValue(argument);
    if (v.valueType() == DOUBLE_VAL) return &asDouble(v);
    Require(v.valueType() == INTEGER_VAL, "invalid argument type");
    argument.inner = std::make_unique<DoubleValue>(asInt(v));
    return argument.inner.get();
}

/// Where the parameter and the point stand; no place when there is none.
struct Places {
    static constexpr std::size_t none = 0;
    std::size_t parameter = none, point = none, extra = none;
};

Places placesOf(std::span<FuncArgument> arguments, ArgumentForm form, const FuncRefElement& function) {
    const std::size_t count = arguments.size();
    if (form == ArgumentForm::equations && count > 3) return {2, 3, 4};
    if (form == ArgumentForm::fit && count > 2) return {1, 2, 3};
    const bool oneInput = function.inputCount() == 1;
    if (form == ArgumentForm::minimum && count == 3 && oneInput) return {Places::none, 1, 2};
    const bool withoutParameter = count == 2 || (count == 4 && argumentValue(arguments[2]).isEmpty());
    if (withoutParameter) {
        Require(neededInputs(function) <= 1, "missing parameter value");
        return {Places::none, 1, 3};
    }
    Require(!oneInput && count <= 4, "too many arguments for the specified function");
    return {1, 2, 3};
}

}  // namespace

FunctionArgs bindFunctionArgs(std::span<FuncArgument> arguments, ArgumentForm form) {
    FunctionArgs bound;
    bound.function = &referenceOf(arguments);
    Require(arguments.size() >= 2, "invalid argument");
    const Places places = placesOf(arguments, form, *bound.function);
    if (places.parameter != Places::none) bound.parameter = doublesOf(arguments[places.parameter]);
    bound.point = doublesOf(arguments[places.point]);
    if (places.extra < arguments.size()) bound.extra = doublesOf(arguments[places.extra]);
    const bool isEmpty = bound.point->isEmpty() || (bound.extra && bound.extra->isEmpty());
    Require(!isEmpty, "illegal use of empty argument []");
    return bound;
}

MethodFunction::MethodFunction(FuncRefElement& function) : function_(function), realBody_(function.realBody()) {
    Require(function.type() == DOUBLE_VAL, "non-real result type not yet implemented");
}

bool MethodFunction::isUserFunction() const {
    const bool writtenOnTheSpot = function_.name().empty();
    return writtenOnTheSpot || function_.userFunction();
}

void MethodFunction::setCallInputs(DoubleValue* parameter, DoubleValue* point) {
    parameter_ = parameter;
    point_ = point;
}

const DoubleValue& MethodFunction::asArray(Outcome result) {
    const DoubleValue& values = asDouble(*valueOf(result, &workspace_));
    Require(!values.isEmpty(), "function returned empty vector []");
    return values;
}

const DoubleValue& MethodFunction::evaluate() { return asArray(call(outcomeOf(point_))); }

const DoubleValue& MethodFunction::evaluateAtEach(std::string_view name) {
    if (!elementByElement_) {
        const DoubleValue& values = evaluate();
        if (values.size() == point_->size()) return values;
        Require(isUserFunction(), "user function did not return the requested number of values", name);
        elementByElement_ = true;
    }
    function_.callForEach(inputsWith(Outcome::of(point_)), workspace_);
    return workspace_;
}

}  // namespace vorpen
