// SPDX-License-Identifier: GPL-3.0-or-later

// A run that is asked again and again for a moment for its surroundings, by
// another thread, grants it and computes what it would have computed.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "base/interrupt.h"
#include "engine/calc.h"
#include "eval/run_state.h"
#include "test_host.h"

namespace vorpen {
namespace {

int served = 0;

class ServiceTest : public testing::Test {
protected:
    ServiceTest() {
        served = 0;
        setService([] { ++served; });
    }
    ~ServiceTest() override {
        setService(nullptr);
        serveIfAsked();
        forgetInterrupt();
        runState().start();
    }

    /// Runs a line while it is asked for service all the time.
    void runAsked(const std::string& line) {
        std::atomic<bool> over = false;
        std::thread asker([&over] {
            while (!over) {
                runState().askForService();
                std::this_thread::sleep_for(std::chrono::microseconds(20));
            }
        });
        calc_.beginInput(line, 's');
        EXPECT_TRUE(calc_.run());
        over = true;
        asker.join();
    }

    [[nodiscard]] double number(const std::string& name) {
        return calc_.symbols().classify(name).found->doubleValue();
    }

    TestHost host_{"/nowhere"};
    Calc calc_{host_, true};
};

TEST_F(ServiceTest, ItIsDoneOnceForEachWish) {
    checkInterrupt();
    EXPECT_EQ(served, 0);
    runState().askForService();
    EXPECT_TRUE(runState().goesOn());
    EXPECT_EQ(served, 1);
    runState().askForService();
    checkInterrupt();
    EXPECT_EQ(served, 2);
    EXPECT_TRUE(runState().goesOn());
    EXPECT_EQ(served, 2);
}

TEST_F(ServiceTest, AStoppedRunStaysStopped) {
    runState().stop();
    runState().askForService();
    EXPECT_FALSE(runState().goesOn());
    EXPECT_EQ(served, 1);
    runState().resume();
    EXPECT_TRUE(runState().goesOn());
}

TEST_F(ServiceTest, LoopsWithBreakAndContinueAreNotCutShort) {
    runAsked(
        "s=0; for i=1:300000 { if i-3*floor(i/3)==0: continue; for j=1:5 { if j==3: break; s=s+j; } }");
    EXPECT_EQ(number("s"), 600000);
    EXPECT_GT(served, 0);
}

TEST_F(ServiceTest, CallsReturnWhatTheyWould) {
    // With a list beside it the function is none of numbers alone.
    for (const char* extra : {"", "L={1}; "}) {
        const std::string setup = std::string("function y=fib(n); ") + extra + "if n<2 { y=n; return; } y=fib(n-1)+fib(n-2); end";
        calc_.beginInput(setup, 's');
        ASSERT_TRUE(calc_.run());
        runAsked("k=0; s=0; while k<600 { k=k+1; s=s+fib(15); }");
        EXPECT_EQ(number("s"), 366000);
        EXPECT_GT(served, 0);
    }
}

TEST_F(ServiceTest, AnInterruptActsBesideIt) {
    setService([] { runState().interrupt(); });
    runState().askForService();
    calc_.beginInput("while 1 { x=1; }", 's');
    EXPECT_FALSE(calc_.run());
}

}  // namespace
}  // namespace vorpen
