// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <thread>

#include "terminal/screen.h"
#include "terminal/text_input.h"
#include "terminal/text_output.h"

namespace vorpen {
namespace {

class Pipe {
public:
    Pipe() {
        if (pipe(ends_.data()) != 0) throw std::runtime_error("no pipe");
    }
    ~Pipe() {
        close(ends_[0]);
        closeWriter();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    [[nodiscard]] int reader() const { return ends_[0]; }
    [[nodiscard]] int writer() const { return ends_[1]; }
    void closeWriter() {
        if (ends_[1] >= 0) close(ends_[1]);
        ends_[1] = -1;
    }
    /// What has been written so far.
    std::string arrived() const {
        fcntl(ends_[0], F_SETFL, O_NONBLOCK);
        std::string all;
        std::array<char, 4096> piece{};
        for (ssize_t n; (n = read(ends_[0], piece.data(), piece.size())) > 0;) all.append(piece.data(), n);
        return all;
    }

private:
    std::array<int, 2> ends_{};
};

/// Puts a text and its end into a pipe, which has room for it.
void fill(Pipe& pipe, std::string_view text) {
    TextOutput(pipe.writer(), false).write(text);
    pipe.closeWriter();
}

TEST(TextInput, LinesWithEitherEnd) {
    Pipe pipe;
    fill(pipe, "one\ntwo\r\n\nlast");
    TextInput input(pipe.reader());
    EXPECT_EQ(input.readLine(), "one");
    EXPECT_EQ(input.readLine(), "two");
    EXPECT_EQ(input.readLine(), "");
    EXPECT_EQ(input.readLine(), "last");
    EXPECT_EQ(input.readLine(), std::nullopt);
    EXPECT_EQ(input.readLine(), std::nullopt);
}

TEST(TextInput, ZeroBytesBelongToTheLine) {
    Pipe pipe;
    fill(pipe, std::string_view("a\0b\n", 4));
    TextInput input(pipe.reader());
    EXPECT_EQ(input.readLine(), std::string("a\0b", 3));
}

TEST(TextInput, LineOfManyPieces) {
    Pipe pipe;
    const std::string line(1000000, 'x');
    std::thread writer([&] {
        TextOutput(pipe.writer(), false).writeLine(line);
        pipe.closeWriter();
    });
    TextInput input(pipe.reader());
    EXPECT_EQ(input.readLine(), line);
    EXPECT_EQ(input.readLine(), std::nullopt);
    writer.join();
}

TEST(TextInput, CharactersAndLinesShareWhatWasRead) {
    Pipe pipe;
    fill(pipe, "ab\nc\xC3\xA9\xE2\x82\xAC\n");
    TextInput input(pipe.reader());
    EXPECT_EQ(input.readCharacter(), "a");
    EXPECT_EQ(input.readLine(), "b");
    EXPECT_EQ(input.readCharacter(), "c");
    EXPECT_EQ(input.readCharacter(), "\xC3\xA9");
    EXPECT_EQ(input.readCharacter(), "\xE2\x82\xAC");
    EXPECT_EQ(input.readCharacter(), "\n");
    EXPECT_EQ(input.readCharacter(), std::nullopt);
}

TEST(TextInput, BrokenUtf8IsReadByteByByte) {
    Pipe pipe;
    fill(pipe, "\xC3z\xE2\x82");
    TextInput input(pipe.reader());
    EXPECT_EQ(input.readCharacter(), "\xC3");
    EXPECT_EQ(input.readCharacter(), "z");
    EXPECT_EQ(input.readCharacter(), "\xE2\x82");
    EXPECT_EQ(input.readCharacter(), std::nullopt);
}

TEST(TextInput, CallsBeforeItWaits) {
    Pipe pipe;
    fill(pipe, "a\nb\n");
    int waits = 0;
    TextInput input(pipe.reader());
    input.setBeforeWait([&] { ++waits; });
    input.readLine();
    EXPECT_EQ(waits, 1);
    input.readLine();
    EXPECT_EQ(waits, 1);
    input.readLine();
    EXPECT_EQ(waits, 2);
}

TEST(TextOutput, IsHeldBackUntilFlushed) {
    Pipe pipe;
    TextOutput output(pipe.writer(), false);
    output.writeLine("one");
    EXPECT_EQ(pipe.arrived(), "");
    output.flush();
    EXPECT_EQ(pipe.arrived(), "one\n");
}

TEST(TextOutput, OnATerminalEachLineGoesOutAtOnce) {
    Pipe pipe;
    TextOutput output(pipe.writer(), true);
    output.write("on");
    EXPECT_EQ(pipe.arrived(), "");
    output.writeLine("e");
    EXPECT_EQ(pipe.arrived(), "one\n");
}

TEST(TextOutput, TellsThatItCouldNotWrite) {
    const int full = open("/dev/full", O_WRONLY);
    ASSERT_GE(full, 0);
    {
        TextOutput output(full, false);
        output.writeLine("lost");
        EXPECT_FALSE(output.failed());
        output.flush();
        EXPECT_TRUE(output.failed());
    }
    close(full);
}

class ScreenTest : public testing::Test {
protected:
    std::string shown() {
        output.flush();
        return pipe.arrived();
    }
    Pipe pipe;
    TextOutput output{pipe.writer(), false};
};

TEST_F(ScreenTest, DecodesLines) {
    Screen screen(output, false, ColourDepth::none);
    screen.showLine("{r wrong} {;\\a}\xE9");
    EXPECT_EQ(shown(), "wrong \xCE\xB1\xC3\xA9\n");
}

TEST_F(ScreenTest, LeavesMarkup) {
    Screen screen(output, true, ColourDepth::none);
    screen.showLine("{r wrong}\xE9");
    EXPECT_EQ(shown(), "{r wrong}\xC3\xA9\n");
}

TEST_F(ScreenTest, RestFollowsTheUnfinishedLine) {
    Screen screen(output, false, ColourDepth::none);
    screen.showUnfinished("x=1 ");
    EXPECT_EQ(shown(), "x=1 ");
    screen.showUnfinished("x=1 y=2 ");
    EXPECT_EQ(shown(), "y=2 ");
    screen.showLine("x=1 y=2 z=3");
    EXPECT_EQ(shown(), "z=3\n");
    screen.showLine("next");
    EXPECT_EQ(shown(), "next\n");
}

TEST_F(ScreenTest, LineThatChangedIsShownAnew) {
    Screen screen(output, false, ColourDepth::none);
    screen.showUnfinished("abc");
    screen.showLine("xyz");
    EXPECT_EQ(shown(), "abc\nxyz\n");
}

}  // namespace
}  // namespace vorpen
