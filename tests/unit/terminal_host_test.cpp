// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/terminal_host.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

#include "base/interrupt.h"

namespace vorpen {
namespace {

std::array<int, 2> openPipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    return ends;
}

class SignalsEndWaitTest : public testing::Test {
protected:
    ~SignalsEndWaitTest() override {
        close(ends[0]);
        close(ends[1]);
    }
    std::array<int, 2> ends = openPipe();
    TextInput input{ends[0]};
};

TEST_F(SignalsEndWaitTest, SignalBeforeTheWaitEndsIt) {
    const SignalsEndWait guard(input);
    raise(SIGINT);
    EXPECT_EQ(input.readLine(), std::nullopt);
    EXPECT_TRUE(input.interrupted());
    EXPECT_FALSE(SignalsEndWait::mustLeave());
}

TEST_F(SignalsEndWaitTest, SignalThatNoWaitMetDoesNoHarm) {
    ASSERT_EQ(write(ends[1], "a\n", 2), 2);
    {
        const SignalsEndWait guard(input);
        EXPECT_EQ(input.readLine(), "a");
        raise(SIGINT);
    }
    EXPECT_FALSE(input.interrupted());
}

TEST_F(SignalsEndWaitTest, HangUpAsksToLeave) {
    const SignalsEndWait guard(input);
    raise(SIGHUP);
    EXPECT_EQ(input.readLine(), std::nullopt);
    EXPECT_TRUE(input.interrupted());
    EXPECT_TRUE(SignalsEndWait::mustLeave());
}

class InterruptedHostTest : public SignalsEndWaitTest {
protected:
    InterruptedHostTest() { requestInterrupt(); }
    ~InterruptedHostTest() override { forgetInterrupt(); }
    TextOutput output{STDOUT_FILENO, false};
    TerminalHost host{output, input, std::nullopt};
};

// Nothing ever comes through the pipe: a wait that began would last for ever.
TEST_F(InterruptedHostTest, WaitForACharacterDoesNotBegin) { EXPECT_EQ(host.readCharacter(), std::nullopt); }

TEST_F(InterruptedHostTest, WaitForALineDoesNotBegin) { EXPECT_EQ(host.readLine(), std::nullopt); }

}  // namespace
}  // namespace vorpen
