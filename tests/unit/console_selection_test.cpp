// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_selection.h"

#include <gtest/gtest.h>

namespace vorpen {
namespace {

TEST(WordAt, reachesFromBlankToBlank) {
    EXPECT_EQ(wordAt("one two three", 4), (StyledWord{"two", 0}));
    EXPECT_EQ(wordAt("one two three", 6), (StyledWord{"two", 0}));
    EXPECT_EQ(wordAt("one two three", 0), (StyledWord{"one", 0}));
    EXPECT_EQ(wordAt("one two three", 12), (StyledWord{"three", 0}));
}

TEST(WordAt, isEmptyOnABlankAndBehindTheEnd) {
    EXPECT_EQ(wordAt("one two", 3), StyledWord());
    EXPECT_EQ(wordAt("one two", 7), StyledWord());
    EXPECT_EQ(wordAt("one two", 1000), StyledWord());
    EXPECT_EQ(wordAt("one two", -1), StyledWord());
    EXPECT_EQ(wordAt("", 0), StyledWord());
}

TEST(WordAt, hasTheStyleOfTheRunThatItBegins) {
    EXPECT_EQ(wordAt("see {=plot} and {*axis}", 5), (StyledWord{"plot", '='}));
    EXPECT_EQ(wordAt("see {=plot} and {*axis}", 14), (StyledWord{"axis", '*'}));
    EXPECT_EQ(wordAt("see {=plot} and {*axis}", 10), (StyledWord{"and", 0}));
    // A run that begins inside the word does not count.
    EXPECT_EQ(wordAt("see x{=plot}", 6), (StyledWord{"xplot", 0}));
}

TEST(WordAt, atTheStartOfALineHasNoStyle) {
    EXPECT_EQ(wordAt("{=plot} draws", 1), (StyledWord{"plot", 0}));
    EXPECT_EQ(wordAt(" {=plot} draws", 1), (StyledWord{"plot", '='}));
}

TEST(CommandOfLine, isWhatStandsBehindTheNumber) {
    EXPECT_EQ(commandOfLine("12> x=3"), "x=3");
    EXPECT_EQ(commandOfLine("1> "), "");
    EXPECT_EQ(commandOfLine("1>"), "");
    EXPECT_EQ(commandOfLine("x=3"), "x=3");
    EXPECT_EQ(commandOfLine("> x"), "> x");
    EXPECT_EQ(commandOfLine("12"), "12");
    EXPECT_EQ(commandOfLine("12 > 3"), "12 > 3");
    EXPECT_EQ(commandOfLine(""), "");
}

class SelectionTest : public testing::Test {
protected:
    SelectionTest() {
        for (const char* line : {"{g 1> {b:x=3", "3", "{g 2> {b:?", "see {=plot} now", "last"})
            text.print(line, true, PrintMode::markup);
    }
    ConsoleText text;
    ConsoleSelection selection;
};

TEST_F(SelectionTest, aClickSelectsALine) {
    selection.click(text, 2, 0);
    EXPECT_EQ(selection.firstLine(), 0);
    EXPECT_EQ(selection.lastLine(), 1);
    EXPECT_EQ(selection.column(), 2);
    EXPECT_EQ(selection.selectedCommand(), "x=3");
    EXPECT_TRUE(selection.isHighlighted(0));
    EXPECT_FALSE(selection.isHighlighted(1));
}

TEST_F(SelectionTest, aClickOnAnUnderlinedWordChangesNothingElse) {
    selection.click(text, 0, 1);
    selection.click(text, 5, 3);
    EXPECT_EQ(selection.hotWord(), "plot");
    EXPECT_EQ(selection.firstLine(), 1);
    EXPECT_EQ(selection.selectedCommand(), "3");
    selection.click(text, 0, 3);
    EXPECT_EQ(selection.hotWord(), "");
    EXPECT_EQ(selection.selectedCommand(), "see plot now");
}

TEST_F(SelectionTest, aClickBehindTheLastLineClearsTheSelection) {
    selection.click(text, 0, 1);
    selection.click(text, 0, 5);
    EXPECT_EQ(selection.firstLine(), 4);
    EXPECT_EQ(selection.lastLine(), 5);
    EXPECT_EQ(selection.selectedCommand(), "");
    EXPECT_FALSE(selection.isHighlighted(4));
    EXPECT_EQ(selection.copySelection(text), "");
}

TEST_F(SelectionTest, draggingDownTakesFurtherLines) {
    selection.click(text, 0, 0);
    EXPECT_TRUE(selection.dragTo(text, 2));
    EXPECT_FALSE(selection.dragTo(text, 2));
    EXPECT_EQ(selection.firstLine(), 0);
    EXPECT_EQ(selection.lastLine(), 3);
    EXPECT_TRUE(selection.dragTo(text, 1));
    EXPECT_EQ(selection.lastLine(), 2);
    EXPECT_FALSE(selection.dragTo(text, 5)) << "behind the text";
    EXPECT_FALSE(selection.dragTo(text, -1));
}

TEST_F(SelectionTest, draggingAboveTheFirstLineTurnsTheSelectionRound) {
    selection.click(text, 0, 3);
    EXPECT_TRUE(selection.dragTo(text, 1));
    EXPECT_EQ(selection.firstLine(), 1);
    EXPECT_EQ(selection.lastLine(), 3);
}

TEST_F(SelectionTest, copiesPlainLinesWithoutTheirNumbers) {
    EXPECT_EQ(selection.copySelection(text), "");
    selection.click(text, 0, 0);
    selection.dragTo(text, 3);
    EXPECT_EQ(selection.copySelection(text), "x=3\r\n3\r\n?\r\nsee plot now\r\n");
}

TEST_F(SelectionTest, linesThatAreOverwrittenAreEmpty) {
    selection.click(text, 0, 0);
    for (int i = 0; i < 2 * ConsoleText::ringSize; ++i) text.newLine();
    EXPECT_EQ(selection.copySelection(text), "");
    selection.click(text, 0, -7);
    EXPECT_EQ(selection.firstLine(), 0);
    EXPECT_EQ(selection.selectedCommand(), "");
}

}  // namespace
}  // namespace vorpen
