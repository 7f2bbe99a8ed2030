// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_text.h"

#include <gtest/gtest.h>

namespace vorpen {
namespace {

class ConsoleTextTest : public testing::Test {
protected:
    ConsoleTextTest() {
        text.setLineListener([this](const std::string& line) { finished.push_back(line); });
    }
    using Lines = std::vector<std::string>;

    ConsoleText text;
    Lines finished;
};

TEST_F(ConsoleTextTest, StartsWithOneEmptyLine) {
    EXPECT_EQ(text.currentLine(), 0);
    EXPECT_EQ(text.currentText(), "");
    EXPECT_FALSE(text.wrap());
    EXPECT_EQ(text.wrapWidth(), 80);
    EXPECT_EQ(text.alignment().tabWidth, 0);
}

// ---- Own lines and shared ones -------------------------------------------------------

TEST_F(ConsoleTextTest, TextWithoutALineOfItsOwnFollowsTheLast) {
    text.print("a", false, PrintMode::markup);
    text.print("b", false, PrintMode::markup);
    EXPECT_EQ(text.currentText(), "ab");
    EXPECT_EQ(finished, Lines{});
}

TEST_F(ConsoleTextTest, ALineOfItsOwnEndsTheOneBeforeAndItself) {
    text.print("a", false, PrintMode::markup);
    text.print("b", true, PrintMode::markup);
    text.print("c", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"a", "b"}));
    EXPECT_EQ(text.currentText(), "c");
}

TEST_F(ConsoleTextTest, LineFeedsCutMarkedUpText) {
    text.print("a\nb", true, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"a", "b"}));
    EXPECT_EQ(text.currentText(), "");
    EXPECT_EQ(text.currentLine(), 2);
    text.print("c\n\nd", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"a", "b", "c", ""}));
    EXPECT_EQ(text.currentText(), "d");
}

TEST_F(ConsoleTextTest, ALineFeedAtTheEndMakesNoExtraLine) {
    text.print("a\n", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"a"}));
    text.print("b\n", true, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"a", "b"}));
    EXPECT_EQ(text.currentText(), "");
}

TEST_F(ConsoleTextTest, AnEmptyTextOfItsOwnIsAnEmptyLine) {
    text.print("", true, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{""}));
}

TEST_F(ConsoleTextTest, EndLineFinishesOnlyALineWithText) {
    text.endLine();
    EXPECT_EQ(text.currentLine(), 0);
    text.print("a", false, PrintMode::markup);
    text.endLine();
    text.endLine();
    EXPECT_EQ(finished, (Lines{"a"}));
}

// ---- Modes -------------------------------------------------------------------------------

TEST_F(ConsoleTextTest, SymbolModeMarksTextThatHoldsSpecialCharacters) {
    text.print("plain", true, PrintMode::symbols);
    text.print("\\a_x", true, PrintMode::symbols);
    text.print("a\nb", true, PrintMode::symbols);
    EXPECT_EQ(finished, (Lines{"plain", "{;\\a_x", "a\nb"}));
}

TEST_F(ConsoleTextTest, VerbatimModeMarksTextThatHoldsSpecialCharacters) {
    text.print("plain", true, PrintMode::verbatim);
    text.print("{r a}", true, PrintMode::verbatim);
    text.print("x^2", true, PrintMode::verbatim);
    EXPECT_EQ(finished, (Lines{"plain", "{:{r a}", "{:x^2"}));
}

TEST_F(ConsoleTextTest, EachSpecialCharacterIsReasonEnough) {
    for (const char special : std::string("{}_^\\")) {
        const std::string shown = std::string("a") + special;
        text.print(shown, true, PrintMode::symbols);
        text.print(shown, true, PrintMode::verbatim);
        text.print(shown, true, PrintMode::markup);
        EXPECT_EQ(finished, (Lines{"{;" + shown, "{:" + shown, shown}));
        finished.clear();
    }
}

TEST_F(ConsoleTextTest, AnyOtherModePrintsNothing) {
    text.print("a", false, PrintMode::markup);
    text.print("b", true, static_cast<PrintMode>(3));
    EXPECT_EQ(text.currentText(), "a");
}

// ---- The ring -------------------------------------------------------------------------------

TEST_F(ConsoleTextTest, LinesAreKnownByTheirSessionNumber) {
    for (int line = 0; line < 349; ++line) text.print(std::to_string(line), true, PrintMode::markup);
    EXPECT_EQ(text.currentLine(), 349);
    EXPECT_EQ(text.getLine(0), "0");
    EXPECT_EQ(text.getLine(348), "348");
    EXPECT_EQ(text.getLine(350), "");
    EXPECT_EQ(text.getLine(-1), "");
}

TEST_F(ConsoleTextTest, TheOldestOf351LinesIsOverwritten) {
    for (int line = 0; line < 351; ++line) text.print(std::to_string(line), true, PrintMode::markup);
    EXPECT_EQ(text.currentLine(), 351);
    EXPECT_EQ(text.getLine(0), "");
    EXPECT_EQ(text.getLine(1), "");
    EXPECT_EQ(text.getLine(2), "2");
    EXPECT_EQ(text.getLine(350), "350");
    EXPECT_EQ(text.currentText(), "");
    for (int line = 351; line < 2000; ++line) text.print(std::to_string(line), true, PrintMode::markup);
    EXPECT_EQ(text.getLine(1999), "1999");
    EXPECT_EQ(text.getLine(1651), "1651");
    EXPECT_EQ(text.getLine(1650), "");
}

// ---- Word wrap --------------------------------------------------------------------------------

class WrapTest : public ConsoleTextTest {
protected:
    WrapTest() {
        text.setWrap(true);
        text.setWrapWidth(20);
    }
    Lines shown(std::string_view running) {
        text.print(running, true, PrintMode::markup);
        return finished;
    }
};

TEST_F(WrapTest, TextIsBrokenAtBlanks) {
    EXPECT_EQ(shown("the quick brown fox jumps over the lazy dog"),
              (Lines{"the quick brown fox", "jumps over the lazy", "dog"}));
}

TEST_F(WrapTest, TextThatJustFitsIsNotBroken) {
    EXPECT_EQ(shown("12345 12345 12345 12"), (Lines{"12345 12345 12345 12"}));
}

TEST_F(WrapTest, ABlankMayStandRightBehindTheWidth) {
    EXPECT_EQ(shown("12345 12345 12345 12 x"), (Lines{"12345 12345 12345 12", "x"}));
}

TEST_F(WrapTest, ALineOfItsOwnHasTheWholeWidth) {
    text.print("0123456789", false, PrintMode::markup);
    EXPECT_EQ(shown(" abcd efghi"), (Lines{"0123456789", " abcd efghi"}));
}

TEST_F(WrapTest, TextBehindTextIsBrokenInTheRoomLeft) {
    text.print("0123456789", false, PrintMode::markup);
    text.print(" abcd efghi", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"0123456789 abcd"}));
    EXPECT_EQ(text.currentText(), "efghi");
}

TEST_F(WrapTest, ALineThatIsFullTakesNothing) {
    text.setWrap(false);
    text.print("0123456789012345678901234", false, PrintMode::markup);
    text.setWrap(true);
    text.print("abc", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"0123456789012345678901234"}));
    EXPECT_EQ(text.currentText(), "abc");
}

TEST_F(WrapTest, ALongWordIsCutAtTheWidthAndNothingIsLost) {
    text.print("see ", false, PrintMode::markup);
    text.print("aaaaaaaaaabbbbbbbbbbccccccccccdddddddddd", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"see ", "aaaaaaaaaabbbbbbbbbb"}));
    EXPECT_EQ(text.currentText(), "ccccccccccdddddddddd");
}

TEST_F(WrapTest, ABlankFarToTheLeftIsNoPlaceToBreak) {
    text.print("x ", false, PrintMode::markup);
    text.print("aaaa bbbbbbbbbbbbbbbbbbbbbbbb", false, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"x aaaa", "bbbbbbbbbbbbbbbbbbbb"}));
    EXPECT_EQ(text.currentText(), "bbbb");
    text.newLine();
    text.print("cccccccccccccc dddddddddddddddddddddddddddddddd e", false, PrintMode::markup);
    EXPECT_EQ(finished.back(), "dddddddddddddddddddd");
    EXPECT_EQ(text.currentText(), "dddddddddddd e");
}

TEST_F(WrapTest, ANarrowPaneStillTakesEverything) {
    text.setWrapWidth(0);
    EXPECT_EQ(text.wrapWidth(), 1);
    text.print("abc", false, PrintMode::markup);
    EXPECT_EQ(text.currentText(), "c");
}

TEST_F(WrapTest, AMegabyteIsWrapped) {
    text.print(std::string(1000000, 'x'), true, PrintMode::markup);
    EXPECT_EQ(text.currentLine(), 50001);
    text.print("ab " + std::string(1000000, ' '), true, PrintMode::markup);
}

TEST_F(ConsoleTextTest, WithoutWrapALongTextStaysOneLine) {
    text.print(std::string(1000, 'x'), true, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{std::string(1000, 'x')}));
}

// ---- Columns -------------------------------------------------------------------------------------

class AlignedTest : public ConsoleTextTest {
protected:
    void append(std::initializer_list<const char*> pieces) {
        for (const char* piece : pieces) text.print(piece, false, PrintMode::markup);
    }
};

TEST_F(AlignedTest, PiecesBeginAtMultiplesOfTheWidth) {
    text.setAlignment({5, ','});
    append({"a", "bb", "cccc", "ddddd", "e"});
    EXPECT_EQ(text.currentText(), "a,   bb,  cccc,ddddd,    e");
}

TEST_F(AlignedTest, MarksDoNotCountAsWidth) {
    text.setAlignment({4, ';'});
    append({"{k 1", "{k 2", "{k 3", "{k 4"});
    EXPECT_EQ(text.currentText(), "{k 1;  {k 2;  {k 3;  {k 4");
}

TEST_F(AlignedTest, APieceThatDoesNotFitBeginsALineWithoutPadding) {
    text.setAlignment({6, ','});
    text.setWrapWidth(16);
    append({"aaa", "bbb", "ccc", "ddd"});
    EXPECT_EQ(finished, (Lines{"aaa,  bbb,  ccc"}));
    EXPECT_EQ(text.currentText(), "ddd");
}

TEST_F(AlignedTest, TheTestForRoomCountsTheMarks) {
    text.setAlignment({6, ','});
    text.setWrapWidth(14);
    append({"{k aaa", "{k bbb"});
    EXPECT_EQ(finished, (Lines{"{k aaa"}));
    EXPECT_EQ(text.currentText(), "{k bbb");
}

TEST_F(AlignedTest, WithoutAWidthPiecesFollowEachOther) {
    text.setAlignment({0, ','});
    append({"a", "b"});
    EXPECT_EQ(text.currentText(), "ab");
}

// ---- The current console ---------------------------------------------------------------------------

TEST_F(ConsoleTextTest, TheCurrentConsoleIsTheOutputToo) {
    setConsole(&text);
    EXPECT_EQ(&console(), &text);
    output().print("said", true, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"said"}));
    setConsole(nullptr);
    output().print("lost", true, PrintMode::markup);
    console().print("unread", true, PrintMode::markup);
    EXPECT_EQ(finished, (Lines{"said"}));
}

}  // namespace
}  // namespace vorpen
