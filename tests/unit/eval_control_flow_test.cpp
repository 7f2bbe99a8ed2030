// SPDX-License-Identifier: GPL-3.0-or-later

// Control flow by what a transcript cannot reach: which statements run after a
// return, who catches a break, what the debugger is told.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>

#include "base/errors.h"
#include "eval/assignment.h"
#include "eval/control_flow.h"
#include "eval/elements.h"
#include "eval/run_state.h"
#include "unit/statement_session.h"

namespace vorpen {
namespace {

/// A statement that runs a piece of the test.
class Do final : public Statement {
public:
    explicit Do(std::function<void()> action, int line = 0) : Statement(line), action_(std::move(action)) {}
    void exe() override { action_(); }

private:
    std::function<void()> action_;
};

StatementPtr does(std::function<void()> action, int line = 0) {
    return std::make_unique<Do>(std::move(action), line);
}

template <class... Statements>
StatementPtr block(Statements... statements) {
    Block list;
    (list.push_back(std::move(statements)), ...);
    return std::make_unique<BlockStm>(0, std::move(list));
}

class ControlFlow : public testing::Test {
protected:
    ControlFlow() { runState().reset(); }
    ~ControlFlow() override { runState().reset(); }

    EvaluatablePtr range(int from, int to) {
        return std::make_unique<SequenceElement>(makeNumber(from), makeNumber(to), nullptr, INTEGER_VAL);
    }
    StatementPtr returns() {
        return does([] { runState().stop(); });
    }

    DoubleValue i;
    int count = 0;
    StatementPtr counts() {
        return does([this] { ++count; });
    }
};

TEST_F(ControlFlow, ABlockStopsBehindAReturn) {
    block(counts(), returns(), counts())->exe();
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(runState().goesOn());
    block(counts())->exe();
    EXPECT_EQ(count, 1);
}

TEST_F(ControlFlow, LoopsStopBehindAReturn) {
    ForStm(0, range(1, 5), block(counts(), returns()), &i).exe();
    EXPECT_EQ(count, 1);
    ForStm(0, range(1, 5), counts(), &i).exe();
    WhileStm(0, makeNumber(1), counts()).exe();
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(runState().goesOn());
}

TEST_F(ControlFlow, ABreakInsideTheLoopThrowsNothing) {
    const auto insideLoop = std::make_unique<BreakStm>(0, true);
    EXPECT_NO_THROW(insideLoop->exe());
    EXPECT_FALSE(runState().goesOn());
    EXPECT_EQ(runState().signal(), LoopSignal::leave);
}

TEST_F(ControlFlow, TheNearestLoopTakesTheSignal) {
    auto inner =
        std::make_unique<ForStm>(0, range(1, 5), block(counts(), std::make_unique<BreakStm>(0, true)), &i);
    DoubleValue j;
    ForStm(0, range(1, 3), block(std::move(inner), counts()), &j).exe();
    EXPECT_EQ(count, 6);
    EXPECT_TRUE(runState().goesOn());
    EXPECT_EQ(runState().signal(), LoopSignal::none);
}

TEST_F(ControlFlow, AContinueGoesOnWithTheNextRound) {
    ForStm(0, range(1, 3), block(counts(), std::make_unique<ContinueStm>(0, true), counts()), &i).exe();
    EXPECT_EQ(count, 3);
    EXPECT_TRUE(runState().goesOn());
}

TEST_F(ControlFlow, AThrownBreakIsCaughtByALoopAndIsAStatement) {
    ForStm(0, range(1, 3), block(counts(), std::make_unique<BreakStm>(0, false)), &i).exe();
    EXPECT_EQ(count, 1);
    ForStm(0, range(1, 3), block(counts(), std::make_unique<ContinueStm>(0, false)), &i).exe();
    EXPECT_EQ(count, 4);
    EXPECT_THROW(BreakStm(7, false).exe(), BreakStm);
    try {
        ContinueStm(7, false).exe();
        FAIL();
    } catch (const Statement& thrown) {
        EXPECT_EQ(thrown.line(), 7);
    }
}

TEST_F(ControlFlow, AFailureLeavesRunningAlone) {
    ForStm loop(0, range(1, 3), does([] { raiseRuntimeError("no"); }), &i);
    EXPECT_THROW(loop.exe(), RuntimeError);
    EXPECT_TRUE(runState().goesOn());
}

TEST_F(ControlFlow, TheLoopVariableIsANumberInTheObject) {
    i.setSizeShapeMark(100, 1, FORM_STRING);
    ForStm(0, range(4, 4), does([] {}), &i).exe();
    EXPECT_EQ(i.size(), 1);
    EXPECT_EQ(i[0], 4);
    EXPECT_EQ(i.mark(), FORM_NUMERIC);
    const auto* begin = reinterpret_cast<const char*>(&i);
    const auto* element = reinterpret_cast<const char*>(i.data());
    EXPECT_TRUE(element >= begin && element < begin + sizeof(i));
}

TEST_F(ControlFlow, ALoopOverABillionsRangeMakesNoArray) {
    ForStm(0, range(1, INT32_MAX), block(counts(), std::make_unique<BreakStm>(0, true)), &i).exe();
    EXPECT_EQ(count, 1);
}

TEST_F(ControlFlow, AnIntegerRangeWrapsLikeTheArray) {
    SequenceElement* sequence =
        new SequenceElement(makeNumber(2147483646.0), makeNumber(2147483649.0), nullptr, INTEGER_VAL);
    std::vector<double> seen;
    ForStm(0, EvaluatablePtr(sequence), does([&] { seen.push_back(i[0]); }), &i).exe();
    EXPECT_EQ(seen, (std::vector<double>{2147483646.0, 2147483647.0, -2147483648.0, -2147483647.0}));
}

TEST_F(ControlFlow, LoopVariablesOfOtherKinds) {
    ComplexValue w;
    ForStm(0, range(2, 2), does([] {}), &w).exe();
    EXPECT_EQ(w[0], std::complex<double>(2, 0));
    ListValue list;
    ForStm(0, range(2, 2), does([] {}), &list).exe();
    EXPECT_EQ(list[0].get()->doubleValue(), 2);
}

TEST_F(ControlFlow, ForInReadsTheCollectionAnewInEachRound) {
    DoubleValue v, index;
    v.setSizeShapeMark(3, 1, 0);
    v[0] = 1, v[1] = 2, v[2] = 3;
    ForInStm(0, does([&] { ++count, v.resize(2); }), &index, &i, &v).exe();
    EXPECT_EQ(count, 2);
    EXPECT_EQ(index[0], 2);
    EXPECT_EQ(i[0], 2);
}

TEST_F(ControlFlow, ForInOverAListOfListsInItself) {
    ListValue list;
    list.setSizeShapeMark(2, 1, FORM_TEXT);
    for (int k = 0; k < 2; ++k) {
        auto inner = std::make_unique<ListValue>();
        inner->assignDouble(k);
        list[k].set(std::move(inner));
    }
    ForInStm(0, counts(), nullptr, &list, &list).exe();
    EXPECT_EQ(count, 1);
    EXPECT_EQ(list[0].get()->doubleValue(), 0);
}

TEST_F(ControlFlow, ForInMeetsAnItemWithoutValue) {
    ListValue list;
    list.setSizeShapeMark(1, 1, FORM_TEXT);
    EXPECT_THROW(ForInStm(0, counts(), nullptr, &i, &list).exe(), RuntimeError);
}

TEST_F(ControlFlow, UsesFindsReadersInEveryPart) {
    DoubleValue a, b, c, other;
    const auto reads = [](Value& v) { return std::make_unique<AssignStm>(0, &asDouble(v), makeNumber(1)); };
    IfElseStm branch(0, std::make_unique<ValueElement>(&a), reads(b), reads(c));
    for (const Value* v : {&a, &b, &c}) EXPECT_TRUE(branch.uses(v));
    EXPECT_FALSE(branch.uses(&other));
    ForInStm loop(0, reads(c), &a, &b, &i);
    for (const Value* v : {&a, &b, &c, &i}) EXPECT_TRUE(loop.uses(v));
    EXPECT_FALSE(loop.uses(&other));
    EXPECT_TRUE(block(reads(a), reads(b))->uses(&b));
}

// ---- lines and stepping

TEST(NotedLine, IsShownOnceAndOnlyForScripts) {
    StatementSession session;
    runState().noteLine(0);
    runState().noteLine(3);
    runState().noteLine(3);
    runState().noteLine(4);
    EXPECT_EQ(session.lines, (std::vector<std::string>{"at line 3", "at line 4"}));
    runState().forgetNotedLine();
    runState().noteLine(4);
    EXPECT_EQ(session.lines.size(), 3u);
}

TEST(NotedLine, AConditionThatIsNoNumberNamesItsLine) {
    StatementSession session;
    EXPECT_EQ(session.failure("x=[1,2];\r\nif x\r\n    y=1;\r\n"), "r non-scalar condition in if clause");
    EXPECT_EQ(session.lines, (std::vector<std::string>{"at line 2"}));
}

/// Notes where it was called, and switches stepping on and off when told.
class Stops final : public BreakHandler {
public:
    struct Stop {
        int line;
        const Value* value;
        const UserFunc* function;
    };
    std::vector<Stop> all;
    std::map<std::size_t, bool> stepping;  ///< from the number of a stop to what is pressed there

    Stops() { runState().breakHandler = this; }
    ~Stops() override { runState().breakHandler = nullptr; }

    void debugPause(int line, const Value* value, const UserFunc* function) override {
        if (const auto wish = stepping.find(all.size()); wish != stepping.end())
            runState().debugStepping = wish->second;
        all.push_back({line, value, function});
    }
    [[nodiscard]] std::vector<int> lines() const {
        std::vector<int> result;
        for (const Stop& stop : all) result.push_back(stop.line);
        return result;
    }
};

TEST(Stepping, StopsAfterEachStatementOfABlock) {
    StatementSession session;
    Stops stops;
    runState().debugStepping = true;
    session.run("x=1;\r\nif x: 5;\r\n");
    EXPECT_EQ(stops.lines(), (std::vector<int>{1, 2}));
    EXPECT_EQ(stops.all[0].value, &session.variable("x"));
    EXPECT_EQ(stops.all[1].value, nullptr);
}

TEST(Stepping, StopsInBlocksOfLoopsAndOfCalledFunctions) {
    StatementSession session;
    Stops stops;
    session.run("function y=f(x)\r\n    y=x+1;\r\n    y=2*y;\r\nend\r\n");
    runState().debugStepping = true;
    session.run("for i=1:2 {\r\n    x=f(i);\r\n    z=x;\r\n}\r\nx=0;\r\n");
    // Twice in the function, behind the call and the copy; and that twice.
    EXPECT_EQ(stops.lines(), (std::vector<int>{2, 3, 2, 3, 2, 3, 2, 3, 1, 5}));
}

TEST(Stepping, BeginsBehindTheStatementThatSwitchedItOn) {
    StatementSession session;
    Stops stops;
    stops.stepping = {{0, true}, {3, false}};
    session.run("p=1;\r\nq=2;!\r\nr=3;\r\ns=4;\r\nt=5;\r\n");
    EXPECT_EQ(stops.lines(), (std::vector<int>{2, 2, 3, 4}));
}

TEST(Stepping, ABodyThatIsNoBlockDoesNotStop) {
    StatementSession session;
    Stops stops;
    stops.stepping = {{0, true}};
    session.run("for i=1:3 { x=i;! }\r\n");
    EXPECT_EQ(stops.lines(), (std::vector<int>{1, 1, 1}));
}

TEST(Stepping, LoopsThatAreLeftDoNotStopAtTheWayOut) {
    StatementSession session;
    Stops stops;
    runState().debugStepping = true;
    session.run("for i=1:3 {\r\n    if i==2: break;\r\n    x=i;\r\n}\r\n");
    EXPECT_EQ(stops.lines(), (std::vector<int>{2, 3}));
}

TEST(Stepping, ABreakpointHandsOverItsValue) {
    StatementSession session;
    Stops stops;
    session.run("x=4;!");
    EXPECT_EQ(stops.all[0].value, &session.variable("x"));
    EXPECT_EQ(stops.all[0].function, nullptr);
    EXPECT_EQ(runState().ans().doubleValue(), 4);
}

TEST(Stepping, ABreakpointBehindAnExpressionShowsItsResultAndLeavesTheAnswer) {
    StatementSession session;
    class Reader final : public BreakHandler {
    public:
        void debugPause(int, const Value* value, const UserFunc*) override { number = value->doubleValue(); }
        double number = 0;
    } reader;
    session.run("4;;");
    runState().breakHandler = &reader;
    session.run("3;!");
    runState().breakHandler = nullptr;
    EXPECT_EQ(reader.number, 3);
    EXPECT_EQ(runState().ans().doubleValue(), 4);
}

}  // namespace
}  // namespace vorpen
