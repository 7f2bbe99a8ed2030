// SPDX-License-Identifier: GPL-3.0-or-later

// Roots, derivatives and minima of functions: how the arguments are bound, and
// what holds while a function of the user's runs inside a method. The results
// themselves are in the transcripts.

#include "builtins/function_bodies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "builtins/function_arguments.h"
#include "builtins_support.h"
#include "engine/calc.h"
#include "eval/elements.h"

namespace vorpen {
namespace {

using namespace testing;

/// An engine that runs scripts; what they print is kept.
class Session {
public:
    Session() : host_(std::filesystem::temp_directory_path().string()), calc_(host_, true) {
        calc_.console().setLineListener([this](const std::string& line) { printed_.push_back(line); });
    }

    /// Runs a script of whole lines; the lines that it printed.
    std::vector<std::string> run(const std::string& script) {
        printed_.clear();
        calc_.beginInput(script, 's');
        calc_.run();
        calc_.console().endLine();
        return printed_;
    }

    UserFunc& function(const std::string& name) { return *calc_.functions().find(name); }
    DoubleValue& variable(const std::string& name) { return asDouble(*calc_.symbols().classify(name).found); }
    double number(const std::string& name) { return variable(name)[0]; }

private:
    TestHost host_;
    Calc calc_;
    std::vector<std::string> printed_;
};

using Lines = std::vector<std::string>;

/// The last of so many inputs.
FuncRefElement lastInput(int inputs) {
    auto function = std::make_unique<AnonymousFunction>(inputs);
    function->setBody(std::make_unique<ValueElement>(function->parameter(inputs - 1)));
    return {"lastInput", std::move(function)};
}

/// A function whose answer is this value.
FuncRefElement constantFunction(std::unique_ptr<Value> value) {
    auto function = std::make_unique<AnonymousFunction>(1);
    function->setBody(std::make_unique<NumberElement>(std::move(value)));
    return {"", std::move(function)};
}

std::vector<FuncArgument> argumentsOf(FuncRefElement& function, const std::vector<Value*>& values) {
    std::vector<FuncArgument> arguments(1 + values.size());
    arguments[0].function = &function;
    for (std::size_t i = 0; i < values.size(); ++i) arguments[1 + i].value = values[i];
    return arguments;
}

/// What binding with values 1, 2, 3, ... finds: parameter, point, extra.
std::string bound(FuncRefElement&& function, int count, ArgumentForm form) {
    std::vector<DoubleValue> values;
    for (int i = 1; i <= count; ++i) values.emplace_back(i);
    std::vector<Value*> pointers;
    for (DoubleValue& value : values) pointers.push_back(&value);
    auto arguments = argumentsOf(function, pointers);
    std::string found;
    const std::string fault = failure([&] {
        const FunctionArgs args = bindFunctionArgs(arguments, form);
        for (const DoubleValue* value : {args.parameter, args.point, args.extra})
            found += value ? described(*value) + " " : "- ";
    });
    return fault == "no failure" ? found : fault;
}

TEST(ArgumentForms, OfAMethodWithOnePoint) {
    const auto standard = ArgumentForm::standard;
    EXPECT_EQ(bound(lastInput(1), 1, standard), "- 1 - ");
    EXPECT_EQ(bound(lastInput(1), 2, standard), "too many arguments for the specified function");
    EXPECT_EQ(bound(lastInput(1), 3, standard), "too many arguments for the specified function");
    EXPECT_EQ(bound(lastInput(2), 1, standard), "missing parameter value");
    EXPECT_EQ(bound(lastInput(2), 2, standard), "1 2 - ");
    EXPECT_EQ(bound(lastInput(2), 3, standard), "1 2 3 ");
    EXPECT_EQ(bound(lastInput(2), 4, standard), "too many arguments for the specified function");
    EXPECT_EQ(bound(lastInput(1), 0, standard), "invalid argument");
}

TEST(ArgumentForms, OfAMinimumTakeAToleranceInThirdPlace) {
    const auto minimum = ArgumentForm::minimum;
    EXPECT_EQ(bound(lastInput(1), 1, minimum), "- 1 - ");
    EXPECT_EQ(bound(lastInput(1), 2, minimum), "- 1 2 ");
    EXPECT_EQ(bound(lastInput(2), 1, minimum), "missing parameter value");
    EXPECT_EQ(bound(lastInput(2), 2, minimum), "1 2 - ");
}

TEST(ArgumentForms, OfFitsAndEquationsDoNotDependOnTheFunction) {
    for (const int inputs : {1, 2}) {
        EXPECT_EQ(bound(lastInput(inputs), 3, ArgumentForm::fit), "1 2 3 ");
        EXPECT_EQ(bound(lastInput(inputs), 6, ArgumentForm::fit), "1 2 3 ");
        EXPECT_EQ(bound(lastInput(inputs), 4, ArgumentForm::equations), "2 3 4 ");
    }
}

TEST(ArgumentForms, AnInputWithADefaultNeedsNoParameter) {
    Session session;
    EXPECT_EQ(session.run("function y=f(x, p:3); y=x-p; end"), Lines{});
    FuncRefElement f(session.function("f"));
    DoubleValue point(1.0), parameter(2.0);
    auto arguments = argumentsOf(f, {&point});
    MethodFunction alone(bindFunctionArgs(arguments));
    EXPECT_EQ(alone.inputCount(), 2);
    EXPECT_EQ(alone.valueAt(10), 7);
    arguments = argumentsOf(f, {&parameter, &point});
    MethodFunction both(bindFunctionArgs(arguments));
    EXPECT_EQ(both.valueAt(10), 2 - 10);
}

TEST(MethodFunctions, ReadTheirInputsAnewAtEachCall) {
    FuncRefElement reference = lastInput(2);
    MethodFunction function(reference);
    DoubleValue parameter = row({1, 2}), point(3.0);
    function.setCallInputs(&parameter, &point);
    EXPECT_EQ(described(function.evaluate()), "3");
    point[0] = 4;
    EXPECT_EQ(described(function.evaluate()), "4");
    point = row({5, 6});
    EXPECT_EQ(described(function.evaluate()), "5 6");
    EXPECT_EQ(described(function.evaluateAtEach("caller")), "5 6");
    EXPECT_EQ(function.valueAt(7), 7);
    EXPECT_FALSE(function.isUserFunction());
}

TEST(MethodFunctions, FailWithoutANumber) {
    FuncRefElement nothing = constantFunction(std::make_unique<DoubleValue>());
    MethodFunction function(nothing);
    DoubleValue point(1.0);
    function.setCallInputs(nullptr, &point);
    EXPECT_EQ(failure([&] { function.evaluate(); }), "function returned empty vector []");
    EXPECT_EQ(failure([&] { (void)function.valueAt(1); }), "function returned empty vector []");
    EXPECT_EQ(failure([&] { function.evaluateAtEach("caller"); }), "function returned empty vector []");
    FuncRefElement complex = constantFunction(std::make_unique<ComplexValue>(std::complex<double>(1, 2)));
    EXPECT_EQ(failure([&] { MethodFunction refused(complex); }), "non-real result type not yet implemented");
    FuncRefElement list = constantFunction(std::make_unique<ListValue>());
    EXPECT_EQ(failure([&] { MethodFunction refused(list); }), "non-real result type not yet implemented");
}

TEST(MethodFunctions, GoPointByPointWhenTheCountIsWrong) {
    FuncRefElement five = constantFunction(std::make_unique<DoubleValue>(5.0));
    DoubleValue points = row({1, 2, 3});
    MethodFunction function(five);
    function.setCallInputs(nullptr, &points);
    EXPECT_TRUE(function.isUserFunction());
    EXPECT_EQ(described(function.evaluateAtEach("caller")), "5 5 5");
    FuncRefElement pair = constantFunction(std::make_unique<DoubleValue>(row({1, 2})));
    MethodFunction wrong(pair);
    wrong.setCallInputs(nullptr, &points);
    EXPECT_EQ(failure([&] { wrong.evaluateAtEach("caller"); }), "operator ]");
}

template <class Out>
std::string intoKind(GeneralBody body, int values) {
    FuncRefElement function = lastInput(1);
    DoubleValue x = row({1, 2});
    auto arguments = argumentsOf(function, std::vector<Value*>(static_cast<std::size_t>(values), &x));
    Out out;
    return failure([&] { body(arguments, nullptr, out); });
}

TEST(FunctionBodies, AnswerRealNumbersOnly) {
    const std::string message = ": non-real result type not yet implemented";
    EXPECT_EQ(intoKind<ComplexValue>(builtin::fzero, 1), "in fzero" + message);
    EXPECT_EQ(intoKind<ComplexValue>(builtin::differ, 1), "in differ" + message);
    EXPECT_EQ(intoKind<ListValue>(builtin::fminbrac, 1), "in fminbrac" + message);
    EXPECT_EQ(intoKind<IntValue>(builtin::fmin, 1), "in fmin1d" + message);
}

TEST(FunctionBodies, FminGivesTheValueToTheFirstFurtherOutput) {
    Session session;
    EXPECT_EQ(session.run("f(x) := (x-2)^2+5"), Lines{});
    EXPECT_EQ(session.run("v=0;w=7;"), Lines{});
    EXPECT_EQ(session.run("[x,v,w]=fmin(f,0);"), Lines{});
    EXPECT_NEAR(session.number("x"), 2, 1e-7);
    EXPECT_NEAR(session.number("v"), 5, 1e-12);
    EXPECT_EQ(session.number("w"), 7);
}

TEST(FunctionBodies, AToleranceWithASecondElementLeavesTheOutput) {
    FuncRefElement function = lastInput(1);
    DoubleValue limits = row({-1, 2}), none, options = row({1e-3, 1}), out = row({8, 9});
    auto arguments = argumentsOf(function, {&limits, &none, &options});
    builtin::fzero(arguments, nullptr, out);
    EXPECT_EQ(described(out), "8 9");
    options[1] = -0.9;  // truncated to 0
    builtin::fzero(arguments, nullptr, out);
    EXPECT_EQ(described(out), "0");
    options[1] = NAN;
    out = row({8, 9});
    builtin::fzero(arguments, nullptr, out);
    EXPECT_EQ(described(out), "0");
}

TEST(FunctionBodies, AFailureOfTheFunctionUnwindsTheMethod) {
    Session session;
    EXPECT_EQ(session.run("f(x) := { if any(x<1.6) { error('too small'); } return x-1; }"), Lines{});
    for (const char* call : {"fzero(f,[0,3])", "fzero(f,2)", "fmin(f,2)", "fminbrac(f,2)", "differ(f,1:3)",
                             "sum(f,1:3)", "table(f,1:3)", "integ(f,[0,3])", "integ(f,[3,0])", "integ(f,[-inf,3])",
                             "integ(f,[-inf,inf])", "qinteg(f,[0,3])", "ode(f,f,[],[0,1],1)"}) {
        EXPECT_EQ(session.run("x=42;"), Lines{});
        EXPECT_EQ(session.run(std::string("x=") + call + ";"), (Lines{"in f;", "{r too small}"})) << call;
        EXPECT_EQ(session.function("f").depth(), 0) << call;
        EXPECT_EQ(session.number("x"), 42) << call;
    }
    EXPECT_EQ(session.run("x=sum(f,2:4);"), Lines{});
    EXPECT_EQ(session.number("x"), 6);
}

TEST(FunctionBodies, AMethodMayRunInsideItsOwnFunction) {
    Session session;
    // The square root of y as a root, so that the outer root is 9.
    session.run("below(p,x) := x^2-p");
    session.run("function y=outer(x); y=fzero(below,x,[0,10])-3; end");
    EXPECT_EQ(session.run("r=fzero(outer,[1,20]);"), Lines{});
    EXPECT_NEAR(session.number("r"), 9, 1e-8);
    // A function that asks for a root of itself, one level down.
    session.run("again(n,x) := { if n>0 { return x-n-fzero(again,n-1,[-9,9]); } return x-n; }");
    EXPECT_EQ(session.run("r=fzero(again,3,[-20,20]);"), Lines{});
    EXPECT_NEAR(session.number("r"), 6, 1e-8);
    EXPECT_EQ(session.function("again").depth(), 0);
    session.run("least(p) := fmin((x-p)^2;x,0)");
    session.run("height(p) := (least(p)-4)^2");
    EXPECT_EQ(session.run("r=fmin(height,0);"), Lines{});
    EXPECT_NEAR(session.number("r"), 4, 1e-5);
}

TEST(FunctionBodies, TheFunctionMayChangeTheVariablesThatHoldTheArguments) {
    Session session;
    session.run("x=[1,2,3]; p=[1,1];");
    EXPECT_EQ(session.run("function y=f(q,t); global x,p; x=[]; p=[10,20,30]; y=q[1]*t; end"), Lines{});
    for (const auto& [line, result] : std::vector<std::pair<std::string, std::string>>{
             {"r=table(f,p,x);", "1; 20; 30"}, {"r=sum(f,p,x);", "51"}, {"r=fzero(f,p,x-2);", "0"}}) {
        session.run("x=[1,2,3]; p=[1,1];");
        EXPECT_EQ(session.run(line), Lines{}) << line;
        EXPECT_EQ(described(session.variable("r")), result) << line;
        EXPECT_TRUE(session.variable("x").isEmpty()) << line;
    }
}

}  // namespace
}  // namespace vorpen
