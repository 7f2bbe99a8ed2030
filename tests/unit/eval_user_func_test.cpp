// SPDX-License-Identifier: GPL-3.0-or-later

// Calls of user functions on trees made by hand: frames, references, quick
// calls, and what becomes of a function whose definition changes.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "base/errors.h"
#include "base/output.h"
#include "eval/assignment.h"
#include "eval/control_flow.h"
#include "eval/elements.h"
#include "eval/evaluation_statements.h"
#include "eval/expression.h"
#include "eval/function_reference.h"
#include "eval/run_state.h"
#include "eval/user_func.h"

namespace vorpen {
namespace {

class Recorder final : public Output {
public:
    void print(std::string_view text, bool, PrintMode) override { lines.emplace_back(text); }
    std::vector<std::string> lines;
};

/// A statement that runs a piece of the test.
class Do final : public Statement {
public:
    explicit Do(std::function<void()> action) : Statement(0), action_(std::move(action)) {}
    void exe() override { action_(); }

private:
    std::function<void()> action_;
};

/// An element that asks a piece of the test for its value.
class Ask final : public Evaluatable {
public:
    explicit Ask(std::function<double()> answer) : answer_(std::move(answer)) {}
    Value* pValue(Value* workspace) override { return storeScalar(workspace, answer_(), 0); }
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }

private:
    std::function<double()> answer_;
};

EvaluatablePtr variable(Value* v) { return std::make_unique<ValueElement>(v); }

EvaluatablePtr binary(EvaluatablePtr a, int op, EvaluatablePtr b) {
    ExpressionItems items;
    items.push_back({std::move(a), op});
    items.push_back({std::move(b), OP_END});
    return std::make_unique<SimpleMixedTypeExpression>(std::move(items));
}

template <class... Arguments>
std::vector<EvaluatablePtr> list(Arguments... arguments) {
    std::vector<EvaluatablePtr> result;
    (result.push_back(std::move(arguments)), ...);
    return result;
}

StatementPtr does(std::function<void()> action) { return std::make_unique<Do>(std::move(action)); }

DoubleValue row(std::initializer_list<double> items) {
    DoubleValue v;
    v.setSizeShapeMark(static_cast<int>(items.size()), 1, 0);
    std::ranges::copy(items, v.data());
    return v;
}

std::vector<double> elements(const Value& v) {
    const auto items = asDouble(v).items();
    return {items.begin(), items.end()};
}

class UserFunctions : public testing::Test {
protected:
    void SetUp() override { setOutput(&recorder); }
    void TearDown() override {
        setOutput(nullptr);
        runState().reset();
    }

    UserFunc& declare(std::string name, std::vector<std::string> parameters,
                      std::vector<std::string> outputs = {""}) {
        FunctionDesc desc;
        desc.name = std::move(name);
        desc.paramKinds.assign(parameters.size(), DOUBLE_VAL);
        desc.outputKinds.assign(outputs.size(), DOUBLE_VAL);
        if (parameters.size() <= 2 && outputs.size() == 1) desc.flags = FUNCTION_QUICK_ELIGIBLE;
        desc.paramNames = std::move(parameters);
        desc.outputNames = std::move(outputs);
        return table.declare(std::move(desc));
    }

    /// name(x) := x op number
    UserFunc& quick(const std::string& name, int op, double number) {
        UserFunc& f = declare(name, {"x"});
        giveExpression(f, binary(variable(local(f, 0)), op, makeNumber(number)));
        return f;
    }

    static void giveExpression(UserFunc& f, EvaluatablePtr expression) {
        f.finishFunction(std::make_unique<ReturnStm>(0, std::move(expression), &f.returnTarget()));
    }

    static Value* local(const UserFunc& f, int i) { return f.locals()[i].value.get(); }

    static double number(Evaluatable& call) {
        DoubleValue room;
        const Outcome outcome = call.evaluate(&room);
        return outcome.isScalar() ? outcome.number : outcome.value()->doubleValue();
    }

    static std::vector<double> array(Evaluatable& call) {
        DoubleValue room;
        return elements(*call.pValue(&room));
    }

    template <class Failure>
    static std::string messageOf(Evaluatable& call) {
        try {
            number(call);
        } catch (const Failure& failure) {
            return failure.message;
        }
        return "no failure";
    }

    Recorder recorder;
    UserFunctionTable table;
};

TEST_F(UserFunctions, QuickCallTakesNumbersAndArrays) {
    UserFunc& f = quick("f", OP_TIMES, 3);
    EXPECT_TRUE(f.isQuick());
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(2)))), 6);
    DoubleValue v = row({1, 2, 3});
    EXPECT_EQ(array(*makeCallElement(f, list(variable(&v)))), (std::vector<double>{3, 6, 9}));
    EXPECT_EQ(elements(v), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(local(f, 0)->size(), 0) << "no array is kept between calls";
    EXPECT_EQ(f.depth(), 0);
}

TEST_F(UserFunctions, QuickCallOfTheParameterAloneAnswersTheArgument) {
    UserFunc& f = declare("f", {"x"});
    giveExpression(f, variable(local(f, 0)));
    DoubleValue v = row({4, 5});
    auto call = makeCallElement(f, list(variable(&v)));
    DoubleValue room;
    EXPECT_EQ(call->evaluate(&room).value(), &v) << "nothing is copied";
    auto onTemporary = makeCallElement(f, list(binary(variable(&v), OP_PLUS, makeNumber(1))));
    EXPECT_EQ(array(*onTemporary), (std::vector<double>{5, 6}));
}

TEST_F(UserFunctions, LargeArraysGoStraightIntoTheTarget) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    DoubleValue v, target;
    v.setSizeShapeMark(1000, 1000, 0);
    std::ranges::fill(v.items(), 2.0);
    auto call = makeCallElement(f, list(variable(&v)));
    EXPECT_EQ(call->pValue(&target), &target);
    EXPECT_EQ(target.size(), 1000);
    EXPECT_EQ(target.nrow(), 1000);
    EXPECT_EQ(target[999], 3.0);
}

TEST_F(UserFunctions, TheWorkspaceMayBeTheInput) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    FuncRefElement reference(f);
    DoubleValue v;
    v.setSizeShapeMark(1000, 1, 0);
    std::ranges::fill(v.items(), 2.0);
    const Outcome input = Outcome::of(&v);
    EXPECT_EQ(reference.call({&input, 1}, &v).value(), &v);
    EXPECT_EQ(v.size(), 1000);
    EXPECT_EQ(v[0] + v[999], 6);
}

TEST_F(UserFunctions, ArgumentsOfAQuickCallAreEvaluatedBeforeAnyIsSet) {
    UserFunc& p = declare("p", {"a", "b"});
    giveExpression(p, binary(variable(local(p, 0)), OP_MINUS, variable(local(p, 1))));
    auto inner = makeCallElement(p, list(makeNumber(5), makeNumber(2)));
    EXPECT_EQ(number(*makeCallElement(p, list(makeNumber(10), std::move(inner)))), 7);
}

TEST_F(UserFunctions, FirstArgumentKeepsItsValueWhenTheSecondChangesTheVariable) {
    UserFunc& p = declare("p", {"a", "b"});
    giveExpression(p, binary(variable(local(p, 0)), OP_TIMES, variable(local(p, 1))));
    DoubleValue v = row({1, 2});
    auto change = std::make_unique<Ask>([&] {
        v = row({7, 7, 7});
        return 10.0;
    });
    EXPECT_EQ(array(*makeCallElement(p, list(variable(&v), std::move(change)))),
              (std::vector<double>{10, 20}));
}

TEST_F(UserFunctions, VectorisedCallRunsOverTheLastArgument) {
    UserFunc& f = declare("f", {"a", "x"});
    f.setFlag(FUNCTION_VECTORISED, true);
    std::vector<double> seen;
    giveExpression(f, std::make_unique<Ask>([&] {
                       seen.push_back(local(f, 1)->doubleValue());
                       return local(f, 0)->doubleValue() + seen.back();
                   }));
    DoubleValue x = row({1, 2, 3});
    EXPECT_EQ(array(*makeCallElement(f, list(makeNumber(10), variable(&x)))),
              (std::vector<double>{11, 12, 13}));
    EXPECT_EQ(seen, (std::vector<double>{1, 2, 3}));
}

TEST_F(UserFunctions, VectorisedCallNeedsADoubleResult) {
    UserFunc& f = declare("f", {"x"});
    f.setFlag(FUNCTION_VECTORISED, true);
    giveExpression(f, makeNumber(1));
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(makeNumber(1)))),
              "vectorization only implemented for functions of output-type double");
}

TEST_F(UserFunctions, VectorisedPointsMustGiveOneNumber) {
    UserFunc& f = declare("f", {"x"});
    f.setFlag(FUNCTION_VECTORISED, true);
    DoubleValue two = row({1, 2});
    giveExpression(f, binary(variable(local(f, 0)), OP_PLUS, variable(&two)));
    auto call = makeCallElement(f, list(variable(&two)));
    try {
        number(*call);
        FAIL();
    } catch (const OperatorFailure& failure) {
        EXPECT_EQ(failure.code, ']');
    }
    EXPECT_EQ(f.depth(), 0);
}

TEST_F(UserFunctions, ComplexArgumentsAndResultsDoNotFitAQuickCall) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(makeNumber(std::complex<double>(0, 1))))),
              "invalid data type for quick user function");
    UserFunc& g = declare("g", {"x"});
    giveExpression(g, makeNumber(std::complex<double>(0, 1)));
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(g, list(makeNumber(1)))),
              "incompatable data type in return statement");
    EXPECT_TRUE(recorder.lines.empty()) << "a quick call is no link of the chain";
}

/// y = n<1 ? 0 :: 1 + f(n-1), with a body of statements.
class UserFunctionCountdown : public UserFunctions {
protected:
    void SetUp() override {
        UserFunctions::SetUp();
        f = &declare("f", {"n"}, {"y"});
        n = local(*f, 0);
        y = f->addLocal("y", DOUBLE_VAL);
        inner = makeCallElement(*f, list(binary(variable(n), OP_MINUS, makeNumber(1))));
        f->finishFunction(does([this] {
            if (n->doubleValue() < 1) {
                y->assignDouble(0);
                return;
            }
            const double mine = n->doubleValue();
            const double below = number(*inner);
            EXPECT_EQ(n->doubleValue(), mine) << "the frame brings the parameter back";
            y->assignDouble(1 + below);
        }));
    }

    std::unique_ptr<Evaluatable> callWith(double x) { return makeCallElement(*f, list(makeNumber(x))); }

    UserFunc* f = nullptr;
    Value* n = nullptr;
    Value* y = nullptr;
    EvaluatablePtr inner;
};

TEST_F(UserFunctionCountdown, FiftyCallsAreTheLimit) {
    EXPECT_EQ(number(*callWith(49)), 49);
    EXPECT_EQ(messageOf<RuntimeError>(*callWith(50)), "in f: max recursion depth exceeded");
    EXPECT_EQ(recorder.lines, std::vector<std::string>(50, "in f;"));
    EXPECT_EQ(f->depth(), 0);
    EXPECT_EQ(number(*callWith(3)), 3);
}

TEST_F(UserFunctions, TheStackEndsInAFailureHoweverManyFunctionsShareIt) {
    constexpr int count = 3000;
    std::vector<EvaluatablePtr> calls;
    for (int i = 0; i < count; ++i) {
        UserFunc& f = declare("f" + std::to_string(i), {"x"});
        giveExpression(f, std::make_unique<Ask>([&calls, i] {
                           volatile char room[8192];
                           room[0] = 1;
                           const double below = i == 0 ? 0.0 : number(*calls[i - 1]);
                           return below + room[0];
                       }));
        calls.push_back(makeCallElement(f, list(makeNumber(1))));
    }
    EXPECT_EQ(number(*calls[100]), 101);
    const std::string message = messageOf<RuntimeError>(*calls.back());
    EXPECT_TRUE(message.ends_with(": max recursion depth exceeded")) << message;
    EXPECT_EQ(number(*calls[100]), 101);
}

TEST_F(UserFunctions, ArraysComeBackFromTheFrame) {
    UserFunc& f = declare("f", {"v"}, {"y"});
    Value* v = local(f, 0);
    Value* y = f.addLocal("y", DOUBLE_VAL);
    Value* kept = f.addLocal("kept", DOUBLE_VAL);
    auto inner = makeCallElement(f, list(variable(v)));
    int depth = 0;
    f.finishFunction(does([&] {
        EXPECT_EQ(kept->size(), depth == 0 ? kept->size() : 0) << "a further call begins with empty locals";
        asDouble(*kept) = row({1.0 * depth, 2, 3});
        if (depth++ < 3) {
            DoubleValue room;
            inner->pValue(&room);
        }
        --depth;
        EXPECT_EQ(elements(*kept), (std::vector<double>{1.0 * depth, 2, 3}));
        EXPECT_EQ(elements(*v), (std::vector<double>{8, 9})) << "its own argument reached the inner call";
        y->assign(*kept);
    }));
    DoubleValue argument = row({8, 9});
    EXPECT_EQ(array(*makeCallElement(f, list(variable(&argument)))), (std::vector<double>{0, 2, 3}));
    EXPECT_EQ(kept->size(), 0) << "arrays are released at the end of the outermost call";
}

TEST_F(UserFunctions, PersistentLocalsStayInPlace) {
    UserFunc& f = declare("f", {"n"}, {"y"});
    Value* n = local(f, 0);
    Value* calls = f.addPersistent("calls", 0);
    Value* y = f.addLocal("y", DOUBLE_VAL);
    EXPECT_EQ(f.addPersistent("late", 0), nullptr);
    auto inner = makeCallElement(f, list(binary(variable(n), OP_MINUS, makeNumber(1))));
    f.finishFunction(does([&] {
        calls->assignDouble(calls->doubleValue() + 1);
        if (n->doubleValue() > 0) number(*inner);
        y->assignDouble(calls->doubleValue());
    }));
    auto call = makeCallElement(f, list(makeNumber(3)));
    EXPECT_EQ(number(*call), 4);
    EXPECT_EQ(number(*call), 8);
}

TEST_F(UserFunctions, QuickRecursionIsLimitedAndChained) {
    UserFunc& f = declare("f", {"n"});
    EvaluatablePtr inner;
    giveExpression(f, std::make_unique<Ask>([&] {
                       const double n = local(f, 0)->doubleValue();
                       if (n < 1) return 0.0;
                       const double below = number(*inner);
                       EXPECT_EQ(local(f, 0)->doubleValue(), n);
                       return below + n;
                   }));
    inner = makeCallElement(f, list(binary(variable(local(f, 0)), OP_MINUS, makeNumber(1))));
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(49)))), 49 * 25);
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(makeNumber(50)))),
              "in f: max recursion depth exceeded");
    EXPECT_EQ(recorder.lines, std::vector<std::string>(50, "in f;"));
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(2)))), 3);
    EXPECT_EQ(recorder.lines.size(), 50u);
}

TEST_F(UserFunctions, RecursiveResultMayGoToALocalOfTheFunction) {
    UserFunc& f = declare("f", {"n"}, {"y"});
    Value* n = local(f, 0);
    auto* y = static_cast<DoubleValue*>(f.addLocal("y", DOUBLE_VAL));
    auto inner = std::make_unique<FastAssignStm>(
        0, y, makeCallElement(f, list(binary(variable(n), OP_MINUS, makeNumber(1)))));
    f.finishFunction(does([&] {
        if (n->doubleValue() < 1)
            *y = row({1, 1});
        else {
            inner->exe();
            EXPECT_EQ(y->size(), 2);
            (*y)[0] += n->doubleValue();
        }
    }));
    EXPECT_EQ(array(*makeCallElement(f, list(makeNumber(3)))), (std::vector<double>{7, 1}));
}

TEST_F(UserFunctions, DefaultsFillMissingArguments) {
    FunctionDesc desc;
    desc.name = "f";
    desc.paramNames = {"a", "b", "c"};
    desc.paramKinds = {DOUBLE_VAL, DOUBLE_VAL, DOUBLE_VAL};
    desc.defaults = {2, -1.5};
    UserFunc& f = table.declare(desc);
    giveExpression(f, binary(variable(local(f, 0)), OP_PLUS,
                             binary(variable(local(f, 1)), OP_TIMES, variable(local(f, 2)))));
    EXPECT_FALSE(f.isQuick());
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(1)))), -2);
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(1), makeNumber(4)))), -5);
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(1), makeNumber(4), makeNumber(3)))), 13);
}

class UserFunctionReferences : public UserFunctions {
protected:
    UserFunc& byReference(std::vector<std::string> parameters, std::uint32_t mask) {
        FunctionDesc desc;
        desc.name = "f";
        desc.paramKinds.assign(parameters.size(), DOUBLE_VAL);
        desc.paramNames = std::move(parameters);
        desc.outputNames = {"y"};
        desc.byReference = mask;
        UserFunc& f = table.declare(desc);
        f.addLocal("y", DOUBLE_VAL)->assignDouble(0);
        return f;
    }
};

TEST_F(UserFunctionReferences, GrowAndShrinkTheCallersVariable) {
    UserFunc& f = byReference({"a"}, 1);
    auto& a = asDouble(*local(f, 0));
    f.finishFunction(does([&] { a.resize(a.size() == 2 ? 4 : 1); }));
    DoubleValue v = row({5, 6});
    auto call = makeCallElement(f, list(variable(&v)));
    number(*call);
    EXPECT_EQ(v.size(), 4);
    EXPECT_EQ(v[1], 6);
    number(*call);
    EXPECT_EQ(elements(v), std::vector<double>{5});
    EXPECT_EQ(a.size(), 0);
}

TEST_F(UserFunctionReferences, MoveTheElementsAndDoNotCopyThem) {
    UserFunc& f = byReference({"a"}, 1);
    auto& a = asDouble(*local(f, 0));
    DoubleValue v = row({5, 6, 7});
    const double* before = v.data();
    f.finishFunction(does([&] {
        EXPECT_EQ(a.data(), before);
        EXPECT_EQ(v.size(), 0);
        a[0] = 1;
    }));
    number(*makeCallElement(f, list(variable(&v))));
    EXPECT_EQ(v.data(), before);
    EXPECT_EQ(v[0], 1);
}

TEST_F(UserFunctionReferences, ComeBackAfterAFailure) {
    UserFunc& f = byReference({"a"}, 1);
    auto& a = asDouble(*local(f, 0));
    f.finishFunction(does([&] {
        a[0] = 9;
        throw RuntimeError("no");
    }));
    DoubleValue v = row({5, 6});
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(variable(&v)))), "no");
    EXPECT_EQ(elements(v), (std::vector<double>{9, 6}));
    EXPECT_EQ(f.depth(), 0);
    EXPECT_EQ(recorder.lines, std::vector<std::string>{"in f;"});
}

TEST_F(UserFunctionReferences, OneVariableTwiceIsRefused) {
    UserFunc& f = byReference({"a", "b"}, 3);
    f.finishFunction(does([] {}));
    DoubleValue v = row({5, 6});
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(variable(&v), variable(&v)))),
              "argument has incorrect type");
    EXPECT_EQ(recorder.lines, (std::vector<std::string>{"invalid input argument", "in f;"}));
    EXPECT_EQ(elements(v), (std::vector<double>{5, 6}));
    EXPECT_EQ(f.depth(), 0);
}

TEST_F(UserFunctionReferences, OneVariableByValueAndByReference) {
    UserFunc& f = byReference({"a", "b"}, 1);
    f.finishFunction(
        does([&] { local(f, 2)->assignDouble(local(f, 0)->size() * 10 + local(f, 1)->size()); }));
    DoubleValue v = row({5, 6});
    EXPECT_EQ(number(*makeCallElement(f, list(variable(&v), variable(&v)))), 22);
    EXPECT_EQ(elements(v), (std::vector<double>{5, 6}));
}

TEST_F(UserFunctionReferences, LiteralsKeepTheirValue) {
    UserFunc& f = byReference({"a"}, 1);
    auto& a = asDouble(*local(f, 0));
    f.finishFunction(does([&] {
        a[0] += 1;
        local(f, 1)->assignDouble(a[0]);
    }));
    auto call = makeCallElement(f, list(makeNumber(2.5)));
    EXPECT_EQ(number(*call), 3.5);
    EXPECT_EQ(number(*call), 3.5);
}

TEST_F(UserFunctionReferences, IntegersDoNotTakeTheResultBack) {
    UserFunc& f = byReference({"a"}, 1);
    f.finishFunction(does([] {}));
    auto call = makeCallElement(f, list(makeNumber(2)));
    try {
        number(*call);
        FAIL();
    } catch (const OperatorFailure& failure) {
        EXPECT_EQ(failure.code, '=');
    }
    EXPECT_EQ(f.depth(), 0);
    EXPECT_EQ(recorder.lines, std::vector<std::string>{"in f;"});
}

TEST_F(UserFunctionReferences, ComplexVariablesAreRefused) {
    UserFunc& f = byReference({"a"}, 1);
    f.finishFunction(does([] {}));
    ComplexValue z(std::complex<double>(1, 2));
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(variable(&z)))),
              "argument has incorrect type");

    FunctionDesc desc = f.desc();
    desc.name = "g";
    desc.paramKinds = {COMPLEX_VAL};
    UserFunc& g = table.declare(desc);
    g.addLocal("y", DOUBLE_VAL);
    g.finishFunction(does([] {}));
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(g, list(variable(&z)))),
              "pass by reference not yet implemented for complex or list");
    EXPECT_EQ(z.size(), 1);
}

TEST_F(UserFunctionReferences, AParameterMayBePassedOnInARecursion) {
    UserFunc& f = byReference({"a", "n"}, 1);
    auto& a = asDouble(*local(f, 0));
    Value* n = local(f, 1);
    auto inner = makeCallElement(f, list(variable(&a), binary(variable(n), OP_MINUS, makeNumber(1))));
    f.finishFunction(does([&] {
        const double mine = n->doubleValue();
        if (mine > 0) number(*inner);
        a.resize(a.size() + 1);
        a[a.size() - 1] = mine;
        local(f, 2)->assignDouble(0);
    }));
    DoubleValue v = row({7, 8});
    number(*makeCallElement(f, list(variable(&v), makeNumber(2))));
    EXPECT_EQ(elements(v), (std::vector<double>{7, 8, 0, 1, 2}));
}

TEST_F(UserFunctions, ExtraOutputsGoToTheirTargets) {
    UserFunc& f = declare("f", {"x"}, {"a", "b"});
    Value* a = f.addLocal("a", DOUBLE_VAL);
    Value* b = f.addLocal("b", DOUBLE_VAL);
    f.finishFunction(does([&] {
        a->assignDouble(1);
        asDouble(*b) = row({2, 3});
    }));
    DoubleValue first, second;
    const std::vector<Value*> others = {&second};
    auto call = makeCallElement(f, list(makeNumber(0)));
    static_cast<MultiInputOutput_Element&>(*call).run(&others, first);
    EXPECT_EQ(elements(first), std::vector<double>{1});
    EXPECT_EQ(elements(second), (std::vector<double>{2, 3}));
    EXPECT_EQ(number(*call), 1);
}

TEST_F(UserFunctions, ExtraOutputsMustBeDoubles) {
    FunctionDesc desc;
    desc.name = "f";
    desc.outputNames = {"a", "b"};
    desc.outputKinds = {DOUBLE_VAL, COMPLEX_VAL};
    UserFunc& f = table.declare(desc);
    f.addLocal("a", DOUBLE_VAL)->assignDouble(1);
    f.addLocal("b", COMPLEX_VAL);
    f.finishFunction(does([] {}));
    ComplexValue second;
    DoubleValue first;
    const std::vector<Value*> others = {&second};
    auto call = makeCallElement(f, {});
    EXPECT_THROW(static_cast<MultiInputOutput_Element&>(*call).run(&others, first), RuntimeError);
    EXPECT_EQ(recorder.lines, std::vector<std::string>{"in f;"});
    EXPECT_EQ(f.depth(), 0);
}

TEST_F(UserFunctions, ABreakEndsTheCallAndGoesOn) {
    UserFunc& f = declare("f", {}, {"y"});
    f.addLocal("y", DOUBLE_VAL);
    f.finishFunction(std::make_unique<BreakStm>(0, false));
    auto call = makeCallElement(f, {});
    EXPECT_THROW(number(*call), BreakStm);
    EXPECT_EQ(f.depth(), 0);
    EXPECT_EQ(recorder.lines, std::vector<std::string>{"in f;"});
}

TEST_F(UserFunctions, ReturnLowersTheFlagAndTheCallRaisesIt) {
    UserFunc& f = declare("f", {"x"}, {"y"});
    Value* y = f.addLocal("y", DOUBLE_VAL);
    Block statements;
    statements.push_back(std::make_unique<ReturnStm>(0, makeNumber(3), y));
    statements.push_back(does([] { FAIL() << "behind a return"; }));
    f.finishFunction(std::make_unique<BlockStm>(0, std::move(statements)));
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(0)))), 3);
    EXPECT_TRUE(runState().goesOn());
}

// ---- the implicit return

TEST_F(UserFunctions, TheLastExpressionIsTheResult) {
    UserFunc& f = declare("f", {"x"});
    Block statements;
    statements.push_back(does([] {}));
    statements.push_back(std::make_unique<EvalStm>(0, binary(variable(local(f, 0)), OP_PLUS, makeNumber(1))));
    f.finishFunction(std::make_unique<BlockStm>(0, std::move(statements)));
    EXPECT_FALSE(f.isQuick());
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(4)))), 5);
}

TEST_F(UserFunctions, ALastAssignmentLeavesTheOutputAsItWas) {
    UserFunc& f = declare("f", {"x"});
    auto* a = static_cast<DoubleValue*>(f.addLocal("a", DOUBLE_VAL));
    Block statements;
    statements.push_back(std::make_unique<FastAssignStm>(0, a, makeNumber(1)));
    f.finishFunction(std::make_unique<BlockStm>(0, std::move(statements)));
    DoubleValue room;
    EXPECT_EQ(makeCallElement(f, list(makeNumber(4)))->pValue(&room)->size(), 0);
}

TEST_F(UserFunctions, AnyOtherLastStatementGivesTheEmptyValue) {
    UserFunc& f = declare("f", {"x"});
    Block statements;
    statements.push_back(does([] {}));
    f.finishFunction(std::make_unique<BlockStm>(0, std::move(statements)));
    f.returnTarget().assignDouble(7);
    DoubleValue room;
    EXPECT_EQ(makeCallElement(f, list(makeNumber(4)))->pValue(&room)->size(), 0);
}

std::string messageOfFinish(UserFunc& f, StatementPtr body) {
    try {
        f.finishFunction(std::move(body));
    } catch (const SyntaxError& failure) {
        return failure.message;
    }
    return "no failure";
}

TEST_F(UserFunctions, OutputsThatNothingSetsFail) {
    EXPECT_EQ(messageOfFinish(declare("f", {"x"}), does([] {})),
              "could not infer a return value for function f");
    UserFunc& g = declare("g", {"x"}, {"a", "b"});
    g.addLocal("a", DOUBLE_VAL);
    EXPECT_EQ(messageOfFinish(g, does([] {})), "b output has not been set");

    FunctionDesc desc;
    desc.name = "h";
    desc.outputKinds = {COMPLEX_VAL};
    Block statements;
    statements.push_back(does([] {}));
    EXPECT_EQ(messageOfFinish(table.declare(desc), std::make_unique<BlockStm>(0, std::move(statements))),
              "insertReturn: output Value type not implemented");
}

TEST_F(UserFunctions, AReturnAheadOfTheFirstAssignmentSharesTheOutput) {
    UserFunc& f = declare("f", {"x"}, {"y"});
    Value* early = &f.returnTarget();
    EXPECT_EQ(f.addLocal("y", INTEGER_VAL), early);
}

TEST_F(UserFunctions, ReturnRefusesANarrowerOutput) {
    DoubleValue output;
    ReturnStm complexResult(0, makeNumber(std::complex<double>(1, 1)), &output);
    EXPECT_THROW(complexResult.exe(), RuntimeError);
    ReturnStm integerResult(0, makeNumber(4), &output);
    integerResult.exe();
    EXPECT_EQ(output[0], 4);
    output.assignDouble(1);
    ReturnStm nothing(0, nullptr, &output);
    nothing.exe();
    EXPECT_EQ(output[0], 1);
    EXPECT_FALSE(runState().goesOn());
}

// ---- the life of a definition

TEST_F(UserFunctions, ACallRunsTheDefinitionInForce) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    auto call = makeCallElement(f, list(makeNumber(5)));
    EXPECT_EQ(number(*call), 6);
    FunctionDesc same = f.desc();
    f.resetFunction(same);
    giveExpression(f, binary(variable(local(f, 0)), OP_TIMES, makeNumber(10)));
    EXPECT_EQ(number(*call), 50);

    f.resetFunction(same);
    Block statements;
    statements.push_back(does([] {}));
    statements.push_back(
        std::make_unique<EvalStm>(0, binary(variable(local(f, 0)), OP_MINUS, makeNumber(1))));
    f.finishFunction(std::make_unique<BlockStm>(0, std::move(statements)));
    EXPECT_EQ(number(*call), 4) << "a quick call of a function that is no longer quick";
}

TEST_F(UserFunctions, ARedefinitionMayRefuseFormerCalls) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    auto one = makeCallElement(f, list(makeNumber(5)));
    FunctionDesc two = f.desc();
    two.paramNames = {"a", "b"};
    two.paramKinds = {DOUBLE_VAL, DOUBLE_VAL};
    f.resetFunction(two);
    giveExpression(f, binary(variable(local(f, 0)), OP_PLUS, variable(local(f, 1))));
    EXPECT_EQ(messageOf<RuntimeError>(*one), "f(...) has too few arguments");
    auto both = makeCallElement(f, list(makeNumber(5), makeNumber(6)));
    EXPECT_EQ(number(*both), 11);

    FunctionDesc none = two;
    none.paramNames.clear();
    none.paramKinds.clear();
    f.resetFunction(none);
    giveExpression(f, makeNumber(1.0));
    EXPECT_EQ(messageOf<RuntimeError>(*both), "f(...) has too many arguments");

    FunctionDesc ofList = two;
    ofList.paramKinds = {LIST_VAL, DOUBLE_VAL};
    f.resetFunction(ofList);
    giveExpression(f, makeNumber(1.0));
    EXPECT_EQ(messageOf<RuntimeError>(*both), "illegal argument type");
}

TEST_F(UserFunctions, ReadersOfAClearedVariableLoseTheirBodies) {
    DoubleValue a(1), b(2);
    UserFunc& reads = declare("reads", {"x"});
    giveExpression(reads, binary(variable(local(reads, 0)), OP_PLUS, variable(&a)));
    UserFunc& other = declare("other", {"x"});
    giveExpression(other, binary(variable(local(other, 0)), OP_PLUS, variable(&b)));
    auto call = makeCallElement(reads, list(makeNumber(1)));
    table.variableCleared(&a, "a");
    EXPECT_EQ(messageOf<RuntimeError>(*call), "function reads refers to a cleared variable: a");
    EXPECT_EQ(number(*makeCallElement(other, list(makeNumber(1)))), 3);
}

TEST_F(UserFunctions, CallersOfAClearedFunctionLoseTheirBodies) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    UserFunc& g = declare("g", {"x"});
    giveExpression(g, makeCallElement(f, list(variable(local(g, 0)))));
    auto direct = makeCallElement(f, list(makeNumber(1)));
    EXPECT_TRUE(direct->uses(f.token()));
    EXPECT_FALSE(direct->uses(g.token()));
    EXPECT_TRUE(table.remove("f"));
    EXPECT_FALSE(table.remove("f"));
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(g, list(makeNumber(1)))),
              "function g refers to a cleared function: f");
    EXPECT_EQ(messageOf<RuntimeError>(*direct), "function f has been cleared");
}

TEST_F(UserFunctions, AFunctionWithoutABodySaysSo) {
    UserFunc& f = declare("f", {"x"});
    EXPECT_EQ(messageOf<RuntimeError>(*makeCallElement(f, list(makeNumber(1)))),
              "function f is declared but has no body");
    EXPECT_TRUE(recorder.lines.empty());
}

TEST_F(UserFunctions, NothingIsClearedUnderACallInProgress) {
    DoubleValue a(1);
    UserFunc& f = declare("f", {"x"});
    std::string messages;
    giveExpression(f, binary(std::make_unique<Ask>([&] {
                                 try {
                                     table.remove("f");
                                 } catch (const SyntaxError& failure) {
                                     messages += failure.message + "|";
                                 }
                                 try {
                                     table.variableCleared(&a, "a");
                                 } catch (const SyntaxError& failure) {
                                     messages += failure.message;
                                 }
                                 return 1.0;
                             }),
                             OP_PLUS, variable(&a)));
    EXPECT_EQ(number(*makeCallElement(f, list(makeNumber(1)))), 2);
    EXPECT_EQ(messages,
              "function in use, can't be cleared here: f|variable in use, can't be cleared here: a");
}

TEST(FunctionSignature, ComparesKindsMarksAndDefaults) {
    FunctionDesc a;
    a.paramNames = {"x"};
    a.paramKinds = {DOUBLE_VAL};
    a.defaults = {1};
    FunctionDesc b = a;
    b.paramNames = {"other"};
    EXPECT_TRUE(sameSignature(a, b));
    b.defaults = {2};
    EXPECT_FALSE(sameSignature(a, b));
    a.defaults = b.defaults = {std::nan("")};
    EXPECT_FALSE(sameSignature(a, b));
    b = a;
    a.defaults = b.defaults = {};
    b.byReference = 1;
    EXPECT_FALSE(sameSignature(a, b));
    b.byReference = 0;
    b.outputKinds = {COMPLEX_VAL};
    EXPECT_FALSE(sameSignature(a, b));
}

// ---- references to functions

TEST_F(UserFunctions, AReferenceIsEmptyAsAValue) {
    UserFunc& f = quick("f", OP_PLUS, 1);
    FuncRefElement reference(f);
    DoubleValue room(3);
    EXPECT_EQ(reference.pValue(&room)->size(), 0);
    EXPECT_EQ(reference.elementKind(), ElementKind::functionReference);
    EXPECT_EQ(reference.inputCount(), 1);
    EXPECT_TRUE(reference.uses(f.token()));
}

TEST_F(UserFunctions, AReferenceCallsItsFunction) {
    UserFunc& p = declare("p", {"a", "x"});
    giveExpression(p, binary(variable(local(p, 0)), OP_MINUS, variable(local(p, 1))));
    FuncRefElement reference(p);
    DoubleValue room, v = row({1, 2});
    const Outcome numbers[] = {Outcome::scalar(5), Outcome::scalar(2)};
    EXPECT_EQ(reference.call(numbers, &room).number, 3);
    const Outcome mixed[] = {Outcome::scalar(5), Outcome::of(&v)};
    EXPECT_EQ(elements(*reference.call(mixed, &room).value()), (std::vector<double>{4, 3}));
    reference.callForEach(mixed, room);
    EXPECT_EQ(elements(room), (std::vector<double>{4, 3}));
    EXPECT_THROW(reference.call({numbers, 1}, &room), RuntimeError);
}

TEST_F(UserFunctions, AnAnonymousFunctionMayLeadBackToItself) {
    auto body = std::make_unique<AnonymousFunction>(1);
    DoubleValue* x = body->parameter(0);
    FuncRefElement* self = nullptr;
    body->setBody(std::make_unique<Ask>([&] {
        const double mine = (*x)[0];
        if (mine < 1) return 0.0;
        DoubleValue room;
        const Outcome less = Outcome::scalar(mine - 1);
        const double below = self->call({&less, 1}, &room).number;
        EXPECT_EQ((*x)[0], mine);
        return mine + below;
    }));
    FuncRefElement reference("", std::move(body));
    self = &reference;
    DoubleValue room;
    const Outcome three = Outcome::scalar(3);
    EXPECT_EQ(reference.call({&three, 1}, &room).number, 6);
    EXPECT_EQ(reference.userFunction(), nullptr);
    EXPECT_EQ(reference.inputCount(), 1);
}

TEST_F(UserFunctions, PointByPointNeedsOneNumberEach) {
    DoubleValue two = row({1, 2});
    UserFunc& f = declare("f", {"x"});
    giveExpression(f, binary(variable(local(f, 0)), OP_PLUS, variable(&two)));
    FuncRefElement reference(f);
    DoubleValue room;
    const Outcome input = Outcome::of(&two);
    EXPECT_THROW(reference.callForEach({&input, 1}, room), OperatorFailure);
}

}  // namespace
}  // namespace vorpen
