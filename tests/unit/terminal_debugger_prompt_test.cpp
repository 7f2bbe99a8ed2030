// SPDX-License-Identifier: GPL-3.0-or-later

// The debugger of a terminal: what it writes, and what the answers mean.

#include "terminal/debugger_prompt.h"

#include <gtest/gtest.h>

#include "unit/engine_support.h"

namespace vorpen {
namespace {

using testing::TypedEngine;

class AtTerminal : public ::testing::Test {
protected:
    AtTerminal() { engine.calc.debugger().setView(&prompt); }
    ~AtTerminal() override { engine.calc.debugger().setView(nullptr); }

    std::string type(const std::string& line, std::deque<std::string> answers) {
        engine.host.typedLines = std::move(answers);
        return engine.type(line);
    }

    TypedEngine engine;
    DebuggerPrompt prompt{engine.host};
};

constexpr const char* question = "c continue, s or Enter step, h halt, q close: ";

TEST_F(AtTerminal, WritesTheStopAndAsks) {
    engine.folder.write("f.vrp", "function y=f(x)\n    y=x+1;\n    y=2*y;!\nend\n");
    type("use f", {});
    EXPECT_EQ(type("f(1)", {"c"}),
              std::string("Breakpoint at line 3 in f |   expr value  4 |   Locals: |   x           1 |   y           4 | "
                          "  1  function y=f(x) |   2      y=x+1; | > 3      y=2*y;! |   4  end | ") +
                  question + " | 4");
}

TEST_F(AtTerminal, AsksAgainWhenItDoesNotUnderstand) {
    EXPECT_EQ(type("x=3;! x", {"what", "12", " C"}),
              std::string("Breakpoint at line 0 |   expr value  3 | ") + question + " | " + question + " | " +
                  question + " | 3");
}

TEST_F(AtTerminal, TheEndOfTheInputGoesOnWithoutStopping) {
    EXPECT_EQ(type("for i=1:3 { x=i;! }; x", {}),
              std::string("Breakpoint at line 0 |   expr value  1 | ") + question + " | 3");
}

TEST_F(AtTerminal, HaltEndsTheRun) {
    EXPECT_EQ(type("x=3;! x", {"halt"}),
              std::string("Breakpoint at line 0 |   expr value  3 | ") + question +
                  " | execution halted from debugger");
}

TEST(DebuggerAnswers, BeginWithALetter) {
    EXPECT_EQ(debuggerCommandOf("c"), DebuggerCommand::proceed);
    EXPECT_EQ(debuggerCommandOf(" Cont"), DebuggerCommand::proceed);
    EXPECT_EQ(debuggerCommandOf("s"), DebuggerCommand::step);
    EXPECT_EQ(debuggerCommandOf(""), DebuggerCommand::step);
    EXPECT_EQ(debuggerCommandOf(" \t\r"), DebuggerCommand::step);
    EXPECT_EQ(debuggerCommandOf("H"), DebuggerCommand::halt);
    EXPECT_EQ(debuggerCommandOf("quit"), DebuggerCommand::close);
    EXPECT_EQ(debuggerCommandOf("1"), std::nullopt);
}

}  // namespace
}  // namespace vorpen
