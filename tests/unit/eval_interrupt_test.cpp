// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/interrupt.h"

#include <gtest/gtest.h>

#include "base/errors.h"
#include "base/parallel.h"
#include "eval/run_state.h"

namespace vorpen {
namespace {

class InterruptTest : public testing::Test {
protected:
    ~InterruptTest() override {
        forgetInterrupt();
        runState().start();
    }
};

TEST_F(InterruptTest, IsRaisedWhereItIsLookedFor) {
    EXPECT_NO_THROW(checkInterrupt());
    requestInterrupt();
    try {
        checkInterrupt();
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "interrupted");
    }
    // It holds to the end of the run.
    EXPECT_THROW(checkInterrupt(), RuntimeError);
    forgetInterrupt();
    EXPECT_NO_THROW(checkInterrupt());
}

TEST_F(InterruptTest, ARunIsNotResumedAfterIt) {
    runState().stop();
    runState().resume();
    EXPECT_TRUE(runState().goesOn());
    runState().interrupt();
    EXPECT_FALSE(runState().goesOn());
    runState().resume();
    EXPECT_FALSE(runState().goesOn());
}

TEST_F(InterruptTest, ParallelWorkEndsBetweenPieces) {
    requestInterrupt();
    const auto work = [] { parallelFor(10 * parallelThreshold, 1, [](std::int64_t, std::int64_t) {}); };
    if (parallelThreads() > 1) {
        EXPECT_THROW(work(), RuntimeError);
    }
    forgetInterrupt();
    EXPECT_NO_THROW(work());
}

TEST_F(InterruptTest, TheOutermostLoopIsShown) {
    EXPECT_LT(runState().loopShare(), 0);
    {
        LoopProgress outer(4);
        outer.noteDone(1);
        EXPECT_EQ(runState().loopShare(), 0.25);
        {
            LoopProgress inner(10);
            inner.noteDone(9);
            EXPECT_EQ(runState().loopShare(), 0.25);
        }
        EXPECT_EQ(runState().loopShare(), 0.25);
    }
    EXPECT_LT(runState().loopShare(), 0);
}

}  // namespace
}  // namespace vorpen
