// SPDX-License-Identifier: GPL-3.0-or-later

// The debugger's logic, with a view that answers from a script and records
// what it was shown.

#include "engine/debugger.h"

#include <gtest/gtest.h>

#include <deque>

#include "eval/run_state.h"
#include "unit/engine_support.h"
#include "values/list_value.h"

namespace vorpen {
namespace {

using testing::TemporaryFolder;
using testing::TypedEngine;
using Command = DebuggerCommand;

class ScriptedView final : public DebuggerView {
public:
    std::deque<Command> answers;
    std::vector<DebuggerPage> pages;
    bool canOpen = true;
    bool isOpen = false, isShown = false;
    int opened = 0, destroyed = 0;
    std::function<void()> whileWaiting;

    bool open() override {
        opened += canOpen && !isOpen;
        isOpen = canOpen;
        return canOpen;
    }
    void show(const DebuggerPage& page) override {
        isShown = true;
        pages.push_back(page);
    }
    Command waitForCommand() override {
        if (whileWaiting) whileWaiting();
        if (answers.empty()) {
            ADD_FAILURE() << "a stop that nobody expected: " << pages.back().title;
            return Command::close;
        }
        const Command answer = answers.front();
        answers.pop_front();
        return answer;
    }
    void hide() override { isShown = false; }
    void destroy() override {
        isOpen = isShown = false;
        ++destroyed;
    }
    void pressWhileIdle(Command command) const { reportIdleCommand(command); }

    [[nodiscard]] std::vector<std::string> titles() const {
        std::vector<std::string> result;
        for (const DebuggerPage& page : pages) result.push_back(page.title);
        return result;
    }
};

using Titles = std::vector<std::string>;

class DebuggerTest : public ::testing::Test {
protected:
    DebuggerTest() { engine.calc.debugger().setView(&view); }
    ~DebuggerTest() override {
        EXPECT_TRUE(view.answers.empty()) << "it did not stop so often";
        engine.calc.debugger().setView(nullptr);
    }

    std::string type(const std::string& line, std::deque<Command> answers = {}) {
        view.pages.clear();
        view.answers = std::move(answers);
        return engine.type(line);
    }
    void write(const std::string& name, const std::string& text) { engine.folder.write(name, text); }
    /// A script with a breakpoint in a function that is called twice.
    void writeScript() {
        write("s.vrp",
              "function y=area(r)\n"
              "    y=pi r^2;!\n"
              "    y=2*y;\n"
              "end\n"
              "s=area(1);\n"
              "t=s;\n"
              "s=area(2);\n"
              "'end';;\n");
    }

    TypedEngine engine;
    ScriptedView view;
};

// ---- stopping and going on

TEST_F(DebuggerTest, StopsAtEachBreakpoint) {
    EXPECT_EQ(type("x=1;! y=2;! x+y", {Command::proceed, Command::proceed}), "3");
    EXPECT_EQ(view.titles(), (Titles{"Breakpoint at line 0", "Breakpoint at line 0"}));
    EXPECT_EQ(view.opened, 1);
    EXPECT_FALSE(view.isShown);
    EXPECT_TRUE(view.isOpen);
}

TEST_F(DebuggerTest, StepsBehindEachStatementOfABlock) {
    writeScript();
    type("use s", {Command::step, Command::step, Command::step, Command::step, Command::step, Command::proceed,
                   Command::proceed});
    // Behind the breakpoint's own statement, too, and the breakpoint stops in
    // a walk of steps as well.
    EXPECT_EQ(view.titles(), (Titles{"Breakpoint at line 2 in area", "Stepping at line 2", "Stepping at line 3",
                                     "Stepping at line 5", "Stepping at line 6", "Stepping at line 2 in area"}));
    EXPECT_EQ(view.answers.size(), 1u);
    view.answers.clear();
}

TEST_F(DebuggerTest, ContinuingEndsTheSteps) {
    writeScript();
    EXPECT_EQ(type("use s", {Command::step, Command::proceed, Command::proceed}), "end");
    EXPECT_EQ(view.titles(), (Titles{"Breakpoint at line 2 in area", "Stepping at line 2",
                                     "Breakpoint at line 2 in area"}));
}

TEST_F(DebuggerTest, HaltFailsLikeAnyError) {
    writeScript();
    EXPECT_EQ(type("use s", {Command::halt}), "in area; | execution halted from debugger");
    EXPECT_FALSE(view.isShown);
    // Locals are free for the next call, and breakpoints stop again.
    EXPECT_EQ(type("area(1)", {Command::proceed}), "6.28318531       = (2pi)");
}

TEST_F(DebuggerTest, HaltWhileSteppingKeepsTheWindow) {
    writeScript();
    EXPECT_EQ(type("use s", {Command::step, Command::halt}), "in area; | execution halted from debugger");
    EXPECT_TRUE(view.isShown);
    view.pressWhileIdle(Command::proceed);
    EXPECT_FALSE(view.isShown);
}

TEST_F(DebuggerTest, ClosingLetsTheScriptFinish) {
    writeScript();
    EXPECT_EQ(type("use s", {Command::close}), "end");
    EXPECT_EQ(view.destroyed, 1);
    // The next command stops again, in a new window.
    EXPECT_EQ(type("use s", {Command::proceed, Command::close}), "end");
    EXPECT_EQ(view.opened, 2);
    EXPECT_EQ(view.destroyed, 2);
}

TEST_F(DebuggerTest, ClosingEndsTheSteps) {
    writeScript();
    EXPECT_EQ(type("use s", {Command::step, Command::step, Command::close}), "end");
    EXPECT_EQ(type("p=1; q=2"), "2");
}

TEST_F(DebuggerTest, SteppingGoesOnInTheNextInputWithItsWindowOnView) {
    EXPECT_EQ(type("p=1;! q=2;", {Command::step, Command::step, Command::step}), "");
    EXPECT_TRUE(view.isShown);
    type("p=3; q=4;", {Command::step, Command::proceed});
    EXPECT_EQ(view.titles(), (Titles{"Stepping at line 0", "Stepping at line 0"}));
    EXPECT_FALSE(view.isShown);
}

TEST_F(DebuggerTest, CommandsWhileNothingRuns) {
    type("p=1;! q=2;", {Command::step, Command::step, Command::step});
    view.pressWhileIdle(Command::halt);
    EXPECT_TRUE(view.isShown);
    view.pressWhileIdle(Command::close);
    EXPECT_EQ(view.destroyed, 1);
    EXPECT_EQ(type("p=3; q=4"), "4");
    type("p=1;! q=2;", {Command::proceed});
}

TEST_F(DebuggerTest, WithoutAWindowTheRunGoesOnAndSaysItOnce) {
    view.canOpen = false;
    EXPECT_EQ(type("for i=1:3 { x=i;! }; x"), "3");
    EXPECT_EQ(engine.host.boxes,
              (std::vector<TestHost::Box>{{"Warning!", "Could not create the debugger window"}}));
    engine.calc.debugger().setView(nullptr);
    EXPECT_EQ(type("x=4;! x"), "4");
    EXPECT_EQ(engine.host.boxes.size(), 2u);
    EXPECT_TRUE(view.pages.empty());
}

TEST_F(DebuggerTest, SwitchedOffBreakpointsAreNotCompiled) {
    EXPECT_EQ(type("debug(0); x=1;! x", {Command::proceed}), "1");
    EXPECT_EQ(type("x=2;! x"), "2");
    type("debug(1);");
    EXPECT_EQ(type("x=3;! x", {Command::proceed}), "3");
}

TEST_F(DebuggerTest, FunctionsKeepTheBreakpointsThatTheyWereCompiledWith) {
    write("d.vrp", "function y=d1(x)\n    y=x;!\nend\n");
    type("use d; debug(0);");
    EXPECT_EQ(type("d1(2)", {Command::proceed}), "2");
}

TEST_F(DebuggerTest, AnInterruptDuringAStopEndsTheRun) {
    view.whileWaiting = [] { runState().interrupt(); };
    EXPECT_EQ(type("x=1;! x", {Command::close}), "interrupted");
    forgetInterrupt();
    view.whileWaiting = {};
}

TEST_F(DebuggerTest, NothingStopsInsideAStop) {
    view.whileWaiting = [&] {
        runState().debugPause(7, nullptr, nullptr);
        EXPECT_TRUE(engine.calc.debugger().isWaiting());
    };
    type("x=1;!", {Command::proceed});
    EXPECT_EQ(view.pages.size(), 1u);
    EXPECT_FALSE(engine.calc.debugger().isWaiting());
}

TEST_F(DebuggerTest, AnotherEngineDoesNotStep) {
    Calc second(engine.host, engine.calc);
    ScriptedView otherView;
    second.debugger().setView(&otherView);
    engine.host.events.push_back([&] {
        second.beginInput("p=1; q=2; r=3;", '>');
        EXPECT_TRUE(second.run());
    });
    type("p=1;! pause(1); q=2;", {Command::step, Command::step, Command::step, Command::proceed});
    EXPECT_EQ(view.pages.size(), 4u);
    EXPECT_TRUE(otherView.pages.empty());
    otherView.answers = {Command::proceed};
    second.beginInput("p=1;!", '>');
    second.run();
    EXPECT_EQ(otherView.titles(), Titles{"Breakpoint at line 0"});
    second.debugger().setView(nullptr);
}

TEST_F(DebuggerTest, FastFormsOfFunctionsAreSteppedThrough) {
    // A function on numbers alone is evaluated without its statements, unless
    // someone steps.
    write("n.vrp",
          "function y=n1(x)\n    y=x+1;\n    y=y*2;\nend\n"
          "s=0; for i=1:200 { s=s+n1(i); }\n"
          "p=1;!\ns=n1(3);\ns;;\n");
    EXPECT_EQ(type("use n", {Command::step, Command::step, Command::step, Command::step, Command::proceed}), "8");
    EXPECT_EQ(view.titles(), (Titles{"Breakpoint at line 6", "Stepping at line 6", "Stepping at line 2",
                                     "Stepping at line 3", "Stepping at line 7"}));
}

TEST_F(DebuggerTest, ALoopIsSteppedThroughFromAnyRoundOn) {
    // A loop that has run for some rounds has a form without statements.
    const auto titlesFrom = [&](const std::string& round) {
        write("l.vrp", "s=0\nfor i=1:30;\n    s += i\n    if i == " + round +
                           ";\n        s += 1;!\n    s += 2\n    t = s\ns;;\n");
        EXPECT_EQ(type("use l", {Command::step, Command::step, Command::step, Command::step, Command::step,
                                 Command::step, Command::step, Command::proceed}),
                  "526");
        return view.titles();
    };
    const Titles early = titlesFrom("3");
    EXPECT_EQ(early, (Titles{"Breakpoint at line 5", "Stepping at line 4", "Stepping at line 6", "Stepping at line 7",
                             "Stepping at line 3", "Stepping at line 4", "Stepping at line 6", "Stepping at line 7"}));
    EXPECT_EQ(titlesFrom("25"), early);
}

// ---- what is shown

TEST_F(DebuggerTest, OutsideAFunctionThereIsTheValueAlone) {
    type("x=1:3;!", {Command::proceed});
    EXPECT_EQ(view.pages[0].names(), "expr value");
    EXPECT_EQ(view.pages[0].values(), "(1x3) 1 2 3");
    EXPECT_TRUE(view.pages[0].source.lines.empty());
}

TEST_F(DebuggerTest, AnExpressionShowsItsResult) {
    type("2+3;!", {Command::proceed});
    EXPECT_EQ(view.pages[0].values(), "5");
    type("L=list('abc',2);", {});
    type("L[1];!", {Command::proceed});
    EXPECT_EQ(view.pages[0].values(), "abc");
}

TEST_F(DebuggerTest, AFunctionShowsItsLocals) {
    write("f.vrp",
          "function [y,z]=f(x,L[])\n"
          "    persistent n=4\n"
          "    z='two words';\n"
          "    w=1+1i;\n"
          "    y=[1/3;2];!\n"
          "end\n");
    type("use f");
    type("f(0.1,list(1,'a'))", {Command::proceed});
    ASSERT_EQ(view.pages.size(), 1u);
    EXPECT_EQ(view.pages[0].names(), "expr value\nLocals:\nx\nL\nn\nz\nw\ny");
    const auto& rows = view.pages[0].rows;
    EXPECT_EQ(rows[0].value, "(2x1) 0.33333");
    EXPECT_EQ(rows[1].value, "");
    EXPECT_EQ(rows[2].value, "0.1");
    EXPECT_EQ(rows[5].value, "two words");
    EXPECT_EQ(rows[6].value, "1+i");
}

TEST_F(DebuggerTest, ARecursiveFunctionShowsTheLocalsOfItsInnermostCall) {
    write("r.vrp",
          "function y=r1(n)\n    m=10*n;\n    if n>1: m=m+r1(n-1);\n    y=m;!\nend\n");
    type("use r");
    EXPECT_EQ(type("r1(3)", {Command::proceed, Command::proceed, Command::proceed}), "60");
    EXPECT_EQ(view.pages[0].rows[2].value, "1");
    EXPECT_EQ(view.pages[0].rows[3].value, "10");
    EXPECT_EQ(view.pages[2].rows[2].value, "3");
    EXPECT_EQ(view.pages[2].rows[3].value, "60");
}

TEST_F(DebuggerTest, StepsShowTheAssignedValueAndNoFunction) {
    writeScript();
    type("use s", {Command::step, Command::step, Command::close});
    EXPECT_EQ(view.pages[2].names(), "expr value");
    EXPECT_EQ(view.pages[2].values(), "6.2832");
    EXPECT_TRUE(view.pages[2].source.lines.empty());
}

TEST_F(DebuggerTest, TheSourceOfATypedFunctionIsWhatWasTyped) {
    type("typed(x) := { z=x; y=z+1;! y }");
    type("typed(1)", {Command::proceed});
    ASSERT_EQ(view.pages.size(), 1u);
    EXPECT_EQ(view.pages[0].title, "Breakpoint at line 0 in typed");
    EXPECT_NE(view.pages[0].source.text().find("y=z+1;!"), std::string::npos) << view.pages[0].source.text();
    EXPECT_EQ(view.pages[0].source.currentRow, -1);
}

TEST_F(DebuggerTest, AValueIsOneLineOfLimitedLength) {
    engine.folder.write("lines.txt", "one\ntwo\n");
    type("L=readtext('lines.txt'); x=join(L,10);!", {Command::proceed});
    EXPECT_EQ(view.pages[0].rows[0].value.find('\n'), std::string::npos);
    type("x=str(1:1000);!", {Command::proceed});
    EXPECT_EQ(view.pages[0].rows[0].value.size(), 253u);
    EXPECT_EQ(view.pages[0].rows[0].value.substr(250), "...");
}

TEST(Summaries, OfAllKindsOfValues) {
    TypedEngine engine;
    const auto summaryOf = [&](const std::string& expression) {
        engine.type("x9=" + expression + ";");
        return summarise(engine.calc.symbols().classify("x9").found);
    };
    EXPECT_EQ(summarise(nullptr), "");
    EXPECT_EQ(summaryOf("3"), "3");
    EXPECT_EQ(summaryOf("1/3"), "0.33333");
    EXPECT_EQ(summaryOf("123456789"), "1.2346e8");
    EXPECT_EQ(summaryOf("1:10"), "(1x10) 1 2 3 4 5 6 7 8 9 10");
    EXPECT_EQ(summaryOf("1:11"), "(1x11) 1 2 3 4 5 6 7 8 9 10 ...");
    EXPECT_EQ(summaryOf("(1:11)'"), "(11x1) 1");
    EXPECT_EQ(summaryOf("[1,2,3;4,5,6]"), "(2x3) 1 2 3");
    EXPECT_EQ(summaryOf("zeros(30,40)"), "(30x40) 0 0 0 0 0 0 0 0 0 0 ...");
    EXPECT_EQ(summaryOf("'text'"), "text");
    EXPECT_EQ(summaryOf("''"), "");
    engine.type("clear x9");
    EXPECT_EQ(summaryOf("2-1i"), "2-1i");
    engine.type("clear x9");
    EXPECT_EQ(summaryOf("list(1,'two',[3,4])"), "[ 1, two, 3 4 ]");
    // An integer value, which no variable holds.
    IntValue integers;
    integers.setSizeShapeMark(2, 1, FORM_NUMERIC);
    integers.data()[0] = 4;
    integers.data()[1] = -5;
    EXPECT_EQ(summarise(&integers), "(1x2) 4 -5");
}

TEST(Sources, LinesAroundTheCurrentOne) {
    TemporaryFolder folder;
    std::string text;
    for (int i = 1; i <= 30; ++i) text += "line " + std::to_string(i) + (i % 2 ? "\n" : "\r\n");
    folder.write("a.vrp", text);
    const std::string file = folder.path() + "/a.vrp";
    const SourceExcerpt middle = showSource(file, 12);
    EXPECT_EQ(middle.lines.front(), "line 7");
    EXPECT_EQ(middle.lines.back(), "line 22");
    EXPECT_EQ(middle.firstNumber, 7);
    EXPECT_EQ(middle.currentRow, 5);
    EXPECT_EQ(middle.text().substr(0, 16), "line 7\r\nline 8\r\n");
    const SourceExcerpt start = showSource(file, 2);
    EXPECT_EQ(start.lines.front(), "line 1");
    EXPECT_EQ(start.lines.size(), 12u);
    EXPECT_EQ(start.currentRow, 1);
    const SourceExcerpt end = showSource(file, 29);
    EXPECT_EQ(end.lines.back(), "line 30");
    EXPECT_EQ(end.lines.size(), 7u);
    // A file that has changed since it was read.
    EXPECT_TRUE(showSource(file, 100).lines.empty());
    EXPECT_EQ(showSource(file, 2147483647).currentRow, -1);
    EXPECT_EQ(showSource(file, 0).currentRow, -1);
}

TEST(Sources, AFileThatCannotBeReadIsNamed) {
    EXPECT_EQ(showSource("/nowhere/a.vrp", 3).text(), "/nowhere/a.vrpcould not open file\r\n");
    EXPECT_EQ(showSource("/", 3).currentRow, -1);
    TemporaryFolder folder;
    folder.write("empty.vrp", "");
    EXPECT_TRUE(showSource(folder.path() + "/empty.vrp", 1).lines.empty());
}

}  // namespace
}  // namespace vorpen
