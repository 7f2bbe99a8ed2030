// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_layout.h"

#include <gtest/gtest.h>

namespace vorpen {
namespace {

ScrollState pane(int width, int clientBottom) {
    ScrollState state;
    state.lineHeight = 20;
    state.charWidth = 10;
    state.resize(width, clientBottom);
    return state;
}

TEST(ConsoleLayout, thePaneLiesBetweenTheStripAndTheInputLine) {
    const ScrollState state = pane(801, 600);
    EXPECT_EQ(state.rect, (Rectangle{0, 24, 801, 556}));
    EXPECT_EQ(state.rows, 27);
    EXPECT_EQ(state.columns(), 80);
}

TEST(ConsoleLayout, aTinyWindowHasARow) {
    for (const int size : {-5, 0, 1, 30}) {
        const ScrollState state = pane(size, size);
        EXPECT_GE(state.rows, 1);
        EXPECT_GE(state.rect.height, 0);
        EXPECT_GE(state.rect.width, 0);
    }
}

TEST(ConsoleLayout, theLastLineKeepsItsFeet) {
    // The input line ends three pixels above the bottom; the text above it may
    // not reach into it.
    for (int height = 100; height < 200; ++height) {
        const int used = usableHeight(height, 20);
        EXPECT_LE(used, height);
        EXPECT_GE(used, height - 4);
        const ScrollState state = pane(500, used);
        EXPECT_LE(24 + state.yOfRow(state.rows), used - 20 - 3) << height;
    }
}

TEST(ConsoleLayout, theTextEndsInSight) {
    const ScrollState state = pane(500, 144);
    ASSERT_EQ(state.rows, 5);
    EXPECT_EQ(state.endPosition(0), 0);
    EXPECT_EQ(state.endPosition(5), 0);
    EXPECT_EQ(state.endPosition(6), 1);
    EXPECT_EQ(state.endPosition(400), 395);
}

TEST(ConsoleLayout, aPlaceIsARowAndAColumn) {
    ScrollState state = pane(500, 144);
    state.position = 7;
    EXPECT_EQ(state.lineAt(24), 7);
    EXPECT_EQ(state.lineAt(43), 7);
    EXPECT_EQ(state.lineAt(44), 8);
    EXPECT_EQ(state.lineAt(10), 6);
    EXPECT_EQ(state.columnAt(1), 0);
    EXPECT_EQ(state.columnAt(10), 0);
    EXPECT_EQ(state.columnAt(11), 1);
    EXPECT_EQ(state.yOfRow(0), 1);
    EXPECT_EQ(state.yOfRow(3), 61);
}

TEST(ConsoleLayout, actionsOfTheScrollBarMoveTheText) {
    ScrollState state = pane(500, 144);
    state.position = 10;
    state.lineCount = 40;
    EXPECT_EQ(scrollDelta(state, ScrollAction::lineUp, 0), 1);
    EXPECT_EQ(scrollDelta(state, ScrollAction::lineDown, 0), -1);
    EXPECT_EQ(scrollDelta(state, ScrollAction::thumbPosition, 25), -15);
    EXPECT_EQ(scrollDelta(state, ScrollAction::thumbTrack, 4), 6);
    EXPECT_EQ(scrollDelta(state, ScrollAction::top, 0), -10);
    EXPECT_EQ(scrollDelta(state, ScrollAction::bottom, 0), 30);
    EXPECT_EQ(scrollDelta(state, ScrollAction::pageUp, 0), 0);
    EXPECT_EQ(scrollDelta(state, ScrollAction::pageDown, 0), 0);
    EXPECT_EQ(scrollDelta(state, ScrollAction::end, 0), 0);
}

TEST(ConsoleLayout, anExposedStripIsRows) {
    const ScrollState state = pane(500, 150);  // 5 rows in a pane of 106 pixels
    EXPECT_EQ(exposedRows(state, 24, 44), (RowRange{0, 1}));
    EXPECT_EQ(exposedRows(state, 110, 130), (RowRange{4, 5}));
    EXPECT_EQ(exposedRows(state, 24, 64), (RowRange{0, 2}));
}

TEST(ConsoleLayout, theDirectoryBoxHoldsWhatFits) {
    // Sixteen characters of 8 pixels.
    EXPECT_EQ(boxCharacters(128), 34);
    EXPECT_EQ(boxCharacters(100000), 1);
    EXPECT_GE(boxCharacters(0), 1);
}

}  // namespace
}  // namespace vorpen
