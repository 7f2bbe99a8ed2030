// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/function_assembly.h"

#include <utility>
#include <variant>

#include "base/errors.h"
#include "builtins/data_file_bodies.h"
#include "eval/elements.h"
#include "eval/function_elements.h"

namespace vorpen {
namespace {

template <class Element>
EvaluatablePtr wrap(EvaluatablePtr child) {
    return std::make_unique<Element>(std::move(child));
}

/// Integers as doubles: a literal at once, anything else when it is evaluated.
EvaluatablePtr widened(EvaluatablePtr argument) {
    if (argument->type() != INTEGER_VAL) return argument;
    if (argument->elementKind() != ElementKind::constant)
        return wrap<IntToDoubleElement>(std::move(argument));
    auto converted = std::make_unique<DoubleValue>();
    converted->copyFrom(static_cast<NumberElement&>(*argument).value());
    return std::make_unique<NumberElement>(std::move(converted));
}

EvaluatablePtr truncated(EvaluatablePtr argument) {
    return argument->type() == INTEGER_VAL ? std::move(argument)
                                           : wrap<DoubleToIntElement>(std::move(argument));
}

[[noreturn]] void refuseComplex() { throw SyntaxError{"this function does not accept a complex argument"}; }

EvaluatablePtr makeComplexMap(const BuiltinInfo& builtin, EvaluatablePtr argument) {
    const RealBody* real = std::get_if<RealBody>(&builtin.body);
    const auto variant = real ? complexVariantOf(*real) : std::nullopt;
    if (!variant) refuseComplex();
    if (const auto* body = std::get_if<ComplexBody>(&variant->body))
        return std::make_unique<SimpleFuncComplexElement>(std::move(argument), *body);
    return std::make_unique<SimpleFuncCtoDElement>(std::move(argument),
                                                   std::get<ComplexToRealBody>(variant->body));
}

EvaluatablePtr makeMap(const BuiltinInfo& builtin, EvaluatablePtr argument) {
    if (const auto* body = std::get_if<IntBody>(&builtin.body))
        return std::make_unique<SimpleFuncIntElement>(truncated(std::move(argument)), *body);
    return std::make_unique<SimpleFuncElement>(widened(std::move(argument)), std::get<RealBody>(builtin.body),
                                               builtin.has(THREAD_SAFE));
}

EvaluatablePtr makeColumnFunction(const BuiltinInfo& builtin, EvaluatablePtr argument) {
    if (const auto* body = std::get_if<ValueToDoubleBody>(&builtin.body))
        return std::make_unique<ColumnWiseFuncD_Element>(widened(std::move(argument)), *body);
    return std::make_unique<ColumnWiseFuncI_Element>(
        widened(std::move(argument)), std::get<ValueToIntBody>(builtin.body), builtin.has(LOGICAL));
}

EvaluatablePtr makeValueFunction(const BuiltinInfo& builtin, EvaluatablePtr argument) {
    if (const auto* body = std::get_if<ValueToDoubleBody>(&builtin.body))
        return std::make_unique<Value2ScalarD_Element>(widened(std::move(argument)), *body);
    return std::make_unique<Value2ScalarI_Element>(widened(std::move(argument)),
                                                   std::get<ValueToIntBody>(builtin.body));
}

EvaluatablePtr makeVectorFunction(const BuiltinInfo& builtin, EvaluatablePtr argument) {
    argument = widened(std::move(argument));
    if (const auto* body = std::get_if<VectorToDoubleBody>(&builtin.body))
        return std::make_unique<DVal_DValFuncElement>(std::move(argument), *body, builtin.has(PURE));
    if (const auto* body = std::get_if<VectorToIntBody>(&builtin.body))
        return std::make_unique<DVal_IValFuncElement>(std::move(argument), *body);
    if (const auto* body = std::get_if<ChangingToDoubleBody>(&builtin.body))
        return std::make_unique<ChangingFuncElement<DoubleValue>>(std::move(argument), *body);
    if (const auto* body = std::get_if<ChangingToIntBody>(&builtin.body))
        return std::make_unique<ChangingFuncElement<IntValue>>(std::move(argument), *body);
    throw SyntaxError{"?bug: AppendFunc VECTOR2VECTOR with complex type"};
}

/// Arguments of functions that take no complex numbers and lists; what is not
/// known yet is looked at when it is there.
void checkTypes(std::vector<EvaluatablePtr>& arguments) {
    for (EvaluatablePtr& argument : arguments) {
        if (argument->elementKind() == ElementKind::functionReference) continue;
        const int type = argument->type();
        if (type == COMPLEX_VAL || type == LIST_VAL) throw SyntaxError{"illegal argument type"};
        if (type == UNKNOWN_VAL) argument = wrap<TypeCheckElement>(std::move(argument));
    }
}

/// The static type of a call. A value that is read from a file which is there
/// already has its kind.
int resultTypeOf(const BuiltinInfo& builtin, const std::vector<EvaluatablePtr>& arguments) {
    if (!builtin.has(TYPED_BY_FILE)) return builtin.resultType;
    const auto* name = dynamic_cast<const StringLiteralElement*>(arguments.front().get());
    if (!name) return builtin.resultType;
    return builtin::typeOfStoredValue(name->text()).value_or(static_cast<ValueType>(builtin.resultType));
}

EvaluatablePtr takeOr(std::vector<EvaluatablePtr>& arguments, std::size_t i) {
    return i < arguments.size() ? std::move(arguments[i]) : nullptr;
}

}  // namespace

EvaluatablePtr makeArrayFunction(const BuiltinInfo& builtin, EvaluatablePtr argument) {
    const int type = argument->type();
    if (type == COMPLEX_VAL && builtin.kind == SCALAR2SCALAR)
        return makeComplexMap(builtin, std::move(argument));
    if (type == COMPLEX_VAL && (builtin.kind == VECTOR2VECTOR || builtin.resultType == DOUBLE_VAL))
        refuseComplex();
    if (type == LIST_VAL && builtin.kind != VALUE2SCALAR)
        throw SyntaxError{"function may not be applied to a list"};
    if (type == UNKNOWN_VAL) argument = wrap<TypeCheckElement>(std::move(argument));
    switch (builtin.kind) {
        case SCALAR2SCALAR: return makeMap(builtin, std::move(argument));
        case COLUMN2SCALAR: return makeColumnFunction(builtin, std::move(argument));
        case VALUE2SCALAR: return makeValueFunction(builtin, std::move(argument));
        case VECTOR2VECTOR: return makeVectorFunction(builtin, std::move(argument));
        default: throw SyntaxError{"vorpen bug: AppendFunc called with wrong function type"};
    }
}

EvaluatablePtr makeGeneralFunction(const BuiltinInfo& builtin, std::vector<EvaluatablePtr> arguments) {
    if (!builtin.anyArgument()) checkTypes(arguments);
    EvaluatablePtr first, second;
    if (builtin.kind != GENERAL) {
        first = takeOr(arguments, 0);
        second = takeOr(arguments, 1);
    }
    switch (builtin.kind) {
        case TICLIKE: return std::make_unique<TicLikeFuncElement>(std::get<TicLikeBody>(builtin.body));
        case ANSFUNC:
            return std::make_unique<AnsFuncElement>(std::get<AnsBody>(builtin.body), std::move(first));
        case TWOARG:
            if (const auto* body = std::get_if<ChangingTwoArgBody>(&builtin.body))
                return std::make_unique<ChangingTwoArgElement>(std::move(first), std::move(second), *body);
            return std::make_unique<TwoArgFuncElement>(std::move(first), std::move(second),
                                                       std::get<TwoArgBody>(builtin.body), builtin.has(PURE));
        case FUNCTOR:
            return std::make_unique<SimpleFunctorElement>(std::move(first), std::move(second),
                                                          std::get<FunctorBody>(builtin.body));
        case GENERAL: {
            const int type = resultTypeOf(builtin, arguments);
            return std::make_unique<GeneralFuncElement>(std::move(arguments), type,
                                                        std::get<GeneralBody>(builtin.body),
                                                        builtin.has(KEEPS_RESULT));
        }
        default: throw SyntaxError{"vorpen bug: AppendFunc called with wrong function type"};
    }
}

}  // namespace vorpen
