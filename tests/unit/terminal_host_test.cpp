// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/terminal_host.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace vorpen {
namespace {

ProgramPlaces allPlaces() {
    ProgramPlaces places;
    places.home = "/given";
    places.executableDirectory = "/home/ada/vorpen/build/bin";
    places.executableDirectoryWritable = true;
    places.userData = "/home/ada/data";
    places.userHome = "/home/ada";
    places.startDirectory = "/tmp";
    return places;
}

TEST(ProgramDirectory, GivenOneComesFirst) { EXPECT_EQ(chooseProgramDirectory(allPlaces()), "/given"); }

TEST(ProgramDirectory, ThenThatOfTheExecutable) {
    auto places = allPlaces();
    places.home.reset();
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/vorpen/build/bin");
}

TEST(ProgramDirectory, UnlessItCannotBeWritten) {
    auto places = allPlaces();
    places.home.reset();
    places.executableDirectoryWritable = false;
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/data/vorpen");
}

TEST(ProgramDirectory, UnlessItBelongsToTheSystem) {
    auto places = allPlaces();
    places.home.reset();
    for (const char* directory : {"/usr/bin", "/usr/local/bin", "/opt/vorpen/bin", "/bin", "/usr"}) {
        places.executableDirectory = directory;
        EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/data/vorpen") << directory;
    }
    places.executableDirectory = "/usrs/ada";
    EXPECT_EQ(chooseProgramDirectory(places), "/usrs/ada");
}

TEST(ProgramDirectory, UserDataHasADefault) {
    auto places = allPlaces();
    places.home.reset();
    places.executableDirectory.clear();
    places.userData.clear();
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/.local/share/vorpen");
    places.userData = "relative";
    EXPECT_EQ(chooseProgramDirectory(places), "/home/ada/.local/share/vorpen");
    places.userHome.clear();
    EXPECT_EQ(chooseProgramDirectory(places), "/tmp");
}

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

}  // namespace
}  // namespace vorpen
