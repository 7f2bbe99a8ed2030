// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/command_line.h"

#include <gtest/gtest.h>

#include <random>

namespace vorpen {
namespace {

class CommandLineTest : public testing::Test {
protected:
    int type(std::string_view text) {
        int answer = 0;
        for (const char c : text) answer = line.onKey(KeyKind::character, static_cast<unsigned char>(c));
        return answer;
    }
    void press(int key, int times = 1) {
        for (int i = 0; i < times; ++i) line.onKey(KeyKind::down, key);
    }
    void control(KeyKind kind, int key) {
        line.setControl(true);
        line.onKey(kind, key);
        line.setControl(false);
    }
    /// Finishes lines as a window does that runs them.
    void run(std::string_view text) {
        type(text);
        EXPECT_EQ(type("\r"), CommandLine::finished);
        line.takeLine();
        line.countCommand();
    }
    void start(std::string_view text, int caret) {
        line.setLine(text);
        line.setCaret(caret);
    }
    std::string shown() const {
        std::string text = line.line();
        return text.insert(line.caret(), "|");
    }

    CommandHistory history;
    CommandLine line{history};
};

TEST_F(CommandLineTest, BeginsEmptyWithTheFirstNumber) {
    EXPECT_EQ(line.line(), "");
    EXPECT_EQ(line.caret(), 0);
    EXPECT_EQ(line.commandNumber(), 1);
    EXPECT_EQ(line.prompt(), "1>");
    EXPECT_EQ(line.promptColumns(), 3);
    EXPECT_TRUE(line.promptVisible());
}

// ---- characters

TEST_F(CommandLineTest, CharactersGoInAtTheCaret) {
    EXPECT_NE(type("ac"), CommandLine::finished);
    press(keyLeft);
    type("b");
    EXPECT_EQ(shown(), "ab|c");
}

TEST_F(CommandLineTest, AKeyThatIsHeldRepeats) {
    line.onKey(KeyKind::character, 'x', 3);
    EXPECT_EQ(shown(), "xxx|");
    line.onKey(KeyKind::character, '\b', 5);
    EXPECT_EQ(shown(), "|");
}

TEST_F(CommandLineTest, EnterFinishesTheLineAndKeepsIt) {
    EXPECT_EQ(type("x=3\r"), CommandLine::finished);
    EXPECT_EQ(shown(), "|x=3");
    EXPECT_EQ(history.entries().back(), "x=3");
    EXPECT_EQ(line.takeLine(), "x=3");
    EXPECT_EQ(line.line(), "");
}

TEST_F(CommandLineTest, BackspaceRemovesTheCharacterBefore) {
    start("abc", 2);
    type("\b");
    EXPECT_EQ(shown(), "a|c");
    type("\b\b\b");
    EXPECT_EQ(shown(), "|c");
}

TEST_F(CommandLineTest, TabGoesToTheNextMultipleOfFour) {
    type("ab\t");
    EXPECT_EQ(shown(), "ab  |");
    type("\t");
    EXPECT_EQ(shown(), "ab      |");
    start("", 0);
    type("\t");
    EXPECT_EQ(shown(), "    |");
}

TEST_F(CommandLineTest, EscapeEmptiesTheLine) {
    start("abc", 1);
    type("\x1b");
    EXPECT_EQ(shown(), "|");
}

TEST_F(CommandLineTest, ControlBWrapsTheRightSide) {
    const auto wrapped = [this](std::string_view text, int caret, int key) {
        start(text, caret);
        control(KeyKind::character, key);
        return shown();
    };
    EXPECT_EQ(wrapped("a=b+c", 5, 2), "a=(b+c)|");
    EXPECT_EQ(wrapped("a==b", 4, 2), "a==(b)|");
    EXPECT_EQ(wrapped("b+c", 3, 29), "(b+c)|");
    EXPECT_EQ(wrapped("a=b+c", 3, 2), "a=(b)|+c");
    EXPECT_EQ(wrapped("a=b", 0, 2), "|a=b");
    EXPECT_EQ(wrapped("a=", 2, 2), "a=()|");
}

TEST_F(CommandLineTest, ControlKeysAreCommandsOfTheWindow) {
    std::vector<LineCommand> heard;
    line.setCommandSink([&](LineCommand command) { heard.push_back(command); });
    start("abc", 3);
    control(KeyKind::character, 3);
    control(KeyKind::character, 22);
    control(KeyKind::character, 24);
    press(keyF5);
    press(keyF9);
    EXPECT_EQ(heard, (std::vector{LineCommand::copy, LineCommand::paste, LineCommand::f5, LineCommand::runClipboard}));
    EXPECT_EQ(shown(), "abc|");
}

TEST_F(CommandLineTest, OtherControlCharactersDoNothing) {
    bool isHeard = false;
    line.setCommandSink([&](LineCommand) { isHeard = true; });
    for (int key = 1; key < 32; ++key) {
        if (key == 2 || key == 3 || key == '\r' || key == 22 || key == 29) continue;
        start("a=bc", 3);
        control(KeyKind::character, key);
        EXPECT_EQ(shown(), "a=b|c") << key;
    }
    EXPECT_FALSE(isHeard);
}

// ---- the caret

TEST_F(CommandLineTest, HomeAndEnd) {
    start("abc", 1);
    press(keyEnd);
    EXPECT_EQ(line.caret(), 3);
    press(keyHome);
    EXPECT_EQ(line.caret(), 0);
}

TEST_F(CommandLineTest, LeftAndRightStayInTheLine) {
    start("ab", 1);
    press(keyLeft, 5);
    EXPECT_EQ(line.caret(), 0);
    press(keyRight, 5);
    EXPECT_EQ(line.caret(), 2);
}

TEST_F(CommandLineTest, WithControlTheCaretGoesFromMarkToMark) {
    start("x=f(a,b);y", 10);
    std::vector<int> stops;
    for (int i = 0; i < 6; ++i) {
        control(KeyKind::down, keyLeft);
        stops.push_back(line.caret());
    }
    EXPECT_EQ(stops, (std::vector{8, 7, 3, 1, 0, 0}));
    stops.clear();
    for (int i = 0; i < 6; ++i) {
        control(KeyKind::down, keyRight);
        stops.push_back(line.caret());
    }
    EXPECT_EQ(stops, (std::vector{1, 3, 7, 8, 10, 10}));
}

TEST_F(CommandLineTest, EachMarkStopsTheCaret) {
    for (const char mark : std::string(";=([{}])")) {
        const std::string text = std::string("ab") + mark + "cd";
        start(text, 5);
        control(KeyKind::down, keyLeft);
        EXPECT_EQ(line.caret(), 2) << mark;
        control(KeyKind::down, keyLeft);
        EXPECT_EQ(line.caret(), 0) << mark;
        control(KeyKind::down, keyRight);
        EXPECT_EQ(line.caret(), 2) << mark;
        control(KeyKind::down, keyRight);
        EXPECT_EQ(line.caret(), 5) << mark;
    }
    start("ab,c+d'e\"f g.h", 14);
    control(KeyKind::down, keyLeft);
    EXPECT_EQ(line.caret(), 0) << "nothing else stops it";
}

TEST_F(CommandLineTest, DeleteRemovesTheCharacterUnderTheCaret) {
    start("abc", 1);
    press(keyDelete);
    EXPECT_EQ(shown(), "a|c");
    press(keyDelete, 3);
    EXPECT_EQ(shown(), "a|");
}

TEST_F(CommandLineTest, OtherKeysDoNothing) {
    start("abc", 1);
    for (const int key : {0, 16, 17, 45, 112, 255, -1, 100000}) press(key);
    EXPECT_EQ(shown(), "a|bc");
    EXPECT_EQ(line.lastKey(), 100000);
    EXPECT_EQ(line.lastMessage(), KeyKind::down);
}

// ---- recall

TEST_F(CommandLineTest, UpRecallsOlderLinesAndDownNewerOnes) {
    for (const char* text : {"a", "b", "c"}) run(text);
    press(keyUp, 2);
    EXPECT_EQ(shown(), "b|");
    press(keyDown);
    EXPECT_EQ(shown(), "c|");
    press(keyDown);
    EXPECT_EQ(shown(), "c|");  // nothing newer: the line stays
}

TEST_F(CommandLineTest, RecallKeepsToThePrefixThatWasTyped) {
    for (const char* text : {"plot(a)", "x=1", "plot(b)", "y=2"}) run(text);
    type("pl");
    press(keyUp);
    EXPECT_EQ(shown(), "plot(b)|");
    press(keyUp);
    EXPECT_EQ(shown(), "plot(a)|");
    press(keyDown);
    EXPECT_EQ(shown(), "plot(b)|");
}

TEST_F(CommandLineTest, AnotherKeyBeginsANewSearch) {
    for (const char* text : {"plot(a)", "plot(b)", "y=2"}) run(text);
    type("pl");
    press(keyUp);
    type("\x1by");
    press(keyUp);
    EXPECT_EQ(shown(), "y=2|");
}

TEST_F(CommandLineTest, DownFirstGoesRoundToTheOldest) {
    for (const char* text : {"a", "b"}) run(text);
    press(keyDown);
    EXPECT_EQ(shown(), "|") << "the empty line of the start";
    press(keyDown);
    EXPECT_EQ(shown(), "a|");
}

TEST_F(CommandLineTest, RecallThatFindsNothingLeavesTheLine) {
    run("x=1");
    type("zz");
    press(keyUp);
    EXPECT_EQ(shown(), "zz|");
}

TEST_F(CommandLineTest, TheSameLineTwiceIsOneEntry) {
    run("a");
    run("a");
    EXPECT_EQ(history.entries(), (std::vector<std::string>{"", "a"}));
}

// ---- pasting and echo

TEST_F(CommandLineTest, PastedTextGoesInAtTheCaretWithoutLineEnds) {
    start("xy", 1);
    line.paste("1\r\n2\n");
    EXPECT_EQ(shown(), "x12|y");
    start("", 0);
    line.paste("\na\r\n");
    EXPECT_EQ(line.line(), "\na\r\n");
    EXPECT_EQ(line.caret(), 4);
}

TEST_F(CommandLineTest, EchoHidesTheMarkupOfWhatWasTyped) {
    type("{r x}");
    EXPECT_EQ(line.takeEchoLine(), "{g 1> {b:{r x}");
    for (int i = 0; i < 11; ++i) line.countCommand();
    line.updatePrompt();
    EXPECT_EQ(line.takeEchoLine(), "{g 12> {b:{r x}");
    EXPECT_EQ(line.promptColumns(), 4);
}

// ---- brackets

int matchOf(std::string_view text, int position) {
    int count = 0;
    return matchBracket(text, position, count);
}

TEST(MatchBracket, FindsTheOtherOne) {
    EXPECT_EQ(matchOf("(a[b]{c})", 8), 0);
    EXPECT_EQ(matchOf("(a[b]{c})", 0), 8);
    EXPECT_EQ(matchOf("(a[b]{c})", 2), 4);
    EXPECT_EQ(matchOf("(a[b]{c})", 7), 5);
}

TEST(MatchBracket, AnswersBelowZeroWithoutOne) {
    EXPECT_EQ(matchOf("(a", 0), -1);
    EXPECT_EQ(matchOf("ab", 0), -1);
    EXPECT_EQ(matchOf("a b", 1), -1);
    EXPECT_EQ(matchOf("", 0), -1);
    EXPECT_EQ(matchOf("()", 2), -1);
    EXPECT_EQ(matchOf("()", -1), -1);
    EXPECT_EQ(matchOf("(]", 0), -1);  // the place where they do not fit
    EXPECT_EQ(matchOf("ab(]", 2), -3);
}

TEST(MatchBracket, PairsEachKindWithItselfAlone) {
    const std::string openers = "([{", closers = ")]}";
    for (int open = 0; open < 3; ++open)
        for (int close = 0; close < 3; ++close) {
            const std::string text = std::string("a") + openers[open] + "b" + closers[close];
            SCOPED_TRACE(text);
            EXPECT_EQ(matchOf(text, 1), open == close ? 3 : -3);
            EXPECT_EQ(matchOf(text, 3), open == close ? 1 : -3);
        }
    EXPECT_EQ(matchOf("a)", 1), -1) << "a closer without an opener";
    EXPECT_EQ(matchOf("'('()", 4), 3) << "quotes are not considered";
    EXPECT_EQ(matchOf("'('()", 1), -1);
}

TEST(MatchBracket, CountsOpeningOnes) {
    int count = -1;
    EXPECT_EQ(matchBracket("((a))", 4, count), 0);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(matchBracket("(a)", 2, count), 0);
    EXPECT_EQ(count, 1);
}

TEST_F(CommandLineTest, ABracketIsLitWhenThereAreTwo) {
    start("f((a))", 6);
    EXPECT_EQ(line.litBracket(), 1);
    start("f((a))", 5);
    EXPECT_EQ(line.litBracket(), 2);
    start("f(a)", 4);
    EXPECT_EQ(line.litBracket(), -1);
    start("f((a))", 0);
    EXPECT_EQ(line.litBracket(), -1);
    start("f((a))", 1);
    EXPECT_EQ(line.litBracket(), -1);
}

// ---- colours and drawing

std::string coloursOf(std::string_view text) {
    std::string colours;
    for (const ColouredPiece& piece : colourPieces(text, lineColour)) {
        EXPECT_EQ(piece.offset, colours.size());
        colours.append(piece.length, piece.colour == lineColour ? '.' : '#');
    }
    return colours;
}

TEST(ColourPieces, QuotesAndBracketsAreSetOff) {
    EXPECT_EQ(coloursOf("x=1"), "...");
    EXPECT_EQ(coloursOf("x=\"a\"+1"), "..###..");
    EXPECT_EQ(coloursOf("f(a)+1"), ".###..");
    EXPECT_EQ(coloursOf("f(a(b)c)"), ".###.###");
    EXPECT_EQ(coloursOf("'(')"), "####");
    EXPECT_EQ(coloursOf("\"it's\""), "######");
    EXPECT_EQ(coloursOf("x='abc"), "..####");
    EXPECT_EQ(coloursOf(""), "");
}

class RecordingSurface final : public LineSurface {
public:
    void eraseBelow(int y) override { calls.push_back("erase " + std::to_string(y)); }
    void drawText(int x, int y, std::string_view text, Colour colour) override {
        calls.push_back(std::to_string(x) + "," + std::to_string(y) + " " + std::string(text) + " " + std::to_string(colour));
    }
    std::vector<std::string> calls;
};

TEST_F(CommandLineTest, IsDrawnInPixels) {
    line.setFont({8, 16});
    line.setPaneTop(24);
    line.setLineY(33);
    RecordingSurface surface;
    line.drawPrompt(surface);
    type("a(b");
    line.drawLine(surface);
    EXPECT_EQ(surface.calls, (std::vector<std::string>{"erase 57", "1,57 1> " + std::to_string(0x006400),
                                                       "25,57 a " + std::to_string(0x640000),
                                                       "33,57 (b  " + std::to_string(0x008200)}));
    EXPECT_EQ(line.caretBox(), (Rectangle{49, 57, 2, 14}));
}

TEST_F(CommandLineTest, TheMatchIsDrawnAgainInRed) {
    type("((a))");
    RecordingSurface surface;
    line.drawLine(surface);
    EXPECT_EQ(surface.calls.back(), "4,24 ( " + std::to_string(0x0000AA));
}

TEST_F(CommandLineTest, StaysAboveTheBottom) {
    line.setFont({8, 16});
    line.setLineY(500);
    line.keepAbove(400);
    EXPECT_EQ(line.lineY(), 400 - 16 - 24 - 3);
    line.setLineY(10);
    line.keepAbove(400);
    EXPECT_EQ(line.lineY(), 10);
}

TEST_F(CommandLineTest, WithoutAPromptTheLineBeginsAtTheEdge) {
    line.setPromptVisible(false);
    EXPECT_EQ(line.promptColumns(), 0);
    EXPECT_EQ(line.caretBox().x, 1);
}

TEST_F(CommandLineTest, AnyKeysInAnyOrderAreInOrder) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        line.setControl(random() % 4 == 0);
        const auto kind = random() % 2 ? KeyKind::down : KeyKind::character;
        const int key = static_cast<int>(random() % 300) - 20;
        if (line.onKey(kind, key, static_cast<int>(random() % 3)) == CommandLine::finished && i % 2) line.takeLine();
        ASSERT_GE(line.caret(), 0);
        ASSERT_LE(line.caret(), static_cast<int>(line.line().size()));
        ASSERT_LT(line.litBracket(), static_cast<int>(line.line().size()));
    }
}

}  // namespace
}  // namespace vorpen
