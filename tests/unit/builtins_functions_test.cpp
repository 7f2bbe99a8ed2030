// SPDX-License-Identifier: GPL-3.0-or-later

// Built-ins that are given a function: how their arguments are read, and the
// sum and the table of a function.

#include <gtest/gtest.h>

#include <math.h>

#include "builtins/array_bodies.h"
#include "builtins/function_arguments.h"
#include "builtins_support.h"
#include "eval/elements.h"
#include "eval/function_elements.h"

namespace vorpen {
namespace {

using namespace testing;

/// The square root of the last of so many inputs.
FuncRefElement squareRoot(int inputs) {
    auto function = std::make_unique<AnonymousFunction>(inputs);
    auto input = std::make_unique<ValueElement>(function->parameter(inputs - 1));
    function->setBody(std::make_unique<SimpleFuncElement>(std::move(input), static_cast<RealBody>(::sqrt)));
    return {"squareRoot", std::move(function)};
}

/// The first of two inputs, an array.
FuncRefElement firstInput() {
    auto function = std::make_unique<AnonymousFunction>(2);
    function->setBody(std::make_unique<ValueElement>(function->parameter(0)));
    return {"firstInput", std::move(function)};
}

std::vector<FuncArgument> argumentsOf(FuncRefElement& function, const std::vector<Value*>& values) {
    std::vector<FuncArgument> arguments(1 + values.size());
    arguments[0].function = &function;
    for (std::size_t i = 0; i < values.size(); ++i) arguments[1 + i].value = values[i];
    return arguments;
}

std::string resultOf(GeneralBody body, FuncRefElement&& function, const std::vector<Value*>& values) {
    auto arguments = argumentsOf(function, values);
    DoubleValue out;
    const std::string fault = failure([&] { body(arguments, nullptr, out); });
    return fault == "no failure" ? described(out) : fault;
}

TEST(FunctionArguments, AreBoundByTheirNumber) {
    FuncRefElement one = squareRoot(1), two = squareRoot(2);
    DoubleValue x(1.0), y(2.0), z(3.0), none;
    auto arguments = argumentsOf(one, {&x});
    FunctionArgs bound = bindFunctionArgs(arguments);
    EXPECT_EQ(bound.point, &x);
    EXPECT_EQ(bound.parameter, nullptr);
    EXPECT_EQ(bound.extra, nullptr);
    arguments = argumentsOf(one, {&x, &none, &z});
    bound = bindFunctionArgs(arguments);
    EXPECT_EQ(bound.point, &x);
    EXPECT_EQ(bound.parameter, nullptr);
    EXPECT_EQ(bound.extra, &z);
    arguments = argumentsOf(two, {&x, &y});
    bound = bindFunctionArgs(arguments);
    EXPECT_EQ(bound.parameter, &x);
    EXPECT_EQ(bound.point, &y);
    arguments = argumentsOf(two, {&x, &y, &z});
    bound = bindFunctionArgs(arguments);
    EXPECT_EQ(bound.parameter, &x);
    EXPECT_EQ(bound.point, &y);
    EXPECT_EQ(bound.extra, &z);
}

TEST(FunctionArguments, ConvertIntegers) {
    FuncRefElement one = squareRoot(1);
    IntValue whole = integers({4, 9});
    auto arguments = argumentsOf(one, {&whole});
    EXPECT_EQ(described(*bindFunctionArgs(arguments).point), "4 9");
}

TEST(FunctionArguments, Fail) {
    const auto bindingOf = [](FuncRefElement&& function, const std::vector<Value*>& values) {
        auto arguments = argumentsOf(function, values);
        return failure([&] { (void)bindFunctionArgs(arguments); });
    };
    DoubleValue x(1.0), none;
    ComplexValue z({1, 2});
    EXPECT_EQ(bindingOf(squareRoot(1), {&x, &x}), "too many arguments for the specified function");
    EXPECT_EQ(bindingOf(squareRoot(1), {&x, &x, &x}), "too many arguments for the specified function");
    EXPECT_EQ(bindingOf(squareRoot(2), {&x}), "missing parameter value");
    EXPECT_EQ(bindingOf(squareRoot(2), {&x, &none, &x}), "missing parameter value");
    EXPECT_EQ(bindingOf(squareRoot(1), {&none}), "illegal use of empty argument []");
    EXPECT_EQ(bindingOf(squareRoot(1), {&x, &none, &none}), "illegal use of empty argument []");
    EXPECT_EQ(bindingOf(squareRoot(1), {&z}), "invalid argument type");
    EXPECT_EQ(bindingOf(squareRoot(1), {nullptr}), "invalid argument");
    EXPECT_EQ(bindingOf(squareRoot(1), {}), "invalid argument");
    std::vector<FuncArgument> noFunction(2);
    noFunction[0].value = noFunction[1].value = &x;
    EXPECT_EQ(failure([&] { (void)bindFunctionArgs(noFunction); }), "1st argument must be a function");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::table, {&x, &x}), "1st argument must be a function");
}

TEST(SumAndTable, OfNumbers) {
    DoubleValue points = row({1, 4, 9}), none;
    EXPECT_EQ(resultOf(builtin::sum, squareRoot(1), {&points}), "6");
    EXPECT_EQ(resultOf(builtin::table, squareRoot(1), {&points}), "1; 2; 3");
    EXPECT_EQ(resultOf(builtin::sum, squareRoot(1), {&none}), "illegal use of empty argument []");
    EXPECT_EQ(resultOf(builtin::table, squareRoot(1), {&none}), "illegal use of empty argument []");
}

TEST(SumAndTable, OfArrays) {
    DoubleValue points = row({1, 2}), pair = row({5, 7}), none;
    EXPECT_EQ(resultOf(builtin::sum, firstInput(), {&pair, &points}), "10 14");
    EXPECT_EQ(resultOf(builtin::table, firstInput(), {&pair, &points}), "5 7; 5 7");
    EXPECT_EQ(resultOf(builtin::table, firstInput(), {&none, &points}), "function returned empty vector []");
}

}  // namespace
}  // namespace vorpen
