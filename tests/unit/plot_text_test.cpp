// SPDX-License-Identifier: GPL-3.0-or-later

// Fonts of styled runs, their widths, and where runs stand.

#include <gtest/gtest.h>

#include "plot/font.h"
#include "plot/text_writer.h"
#include "unit/plot_support.h"

namespace vorpen {
namespace {

using test::RecordingSurface;

TEST(Font, OfEachStyleCode) {
    const Font plain = selectFont(Face::Times, 20, '.', 0);
    EXPECT_EQ(plain, (Font{Face::Times, 20, 400, false, false, 0}));
    for (const char code : {' ', '-', ':', ';'})
        EXPECT_EQ(selectFont(Face::Times, 20, code, 0), plain) << code;
    EXPECT_EQ(selectFont(Face::Courier, 20, '*', 0), (Font{Face::Courier, 20, 700, false, false, 0}));
    EXPECT_EQ(selectFont(Face::Times, 20, '/', 0), (Font{Face::Times, 20, 400, true, false, 0}));
    EXPECT_EQ(selectFont(Face::Times, 20, '=', 0), (Font{Face::Times, 20, 400, false, true, 0}));
    EXPECT_EQ(selectFont(Face::Courier, 20, '$', 900), (Font{Face::Symbol, 20, 400, false, false, 900}));
    EXPECT_EQ(selectFont(Face::Times, 18, '^', 0).height, 13);
    EXPECT_EQ(selectFont(Face::Times, 18, '_', 0).height, 13);
}

TEST(Font, Names) {
    EXPECT_EQ(faceName(Face::Times), "Times New Roman");
    EXPECT_EQ(faceName(Face::Courier), "Courier New");
    EXPECT_EQ(faceName(Face::Symbol), "Symbol");
}

// Adobe Font Metrics of Times-Roman, Courier and Symbol.
TEST(Font, AdvanceWidths) {
    EXPECT_EQ(faceWidth(Face::Times, "AWim 1"), 722 + 944 + 278 + 778 + 250 + 500);
    EXPECT_EQ(faceWidth(Face::Times, "\xE9\x80\xFF"), 444 + 500 + 500);
    EXPECT_EQ(faceWidth(Face::Courier, "iW\xE9"), 3 * 600);
    EXPECT_EQ(faceWidth(Face::Symbol, "a\xA3\xE5"), 631 + 549 + 713);
    EXPECT_EQ(faceWidth(Face::Times, std::string_view("\0\t\x7F", 3)), 0);
}

std::string written(std::string_view text, int edge = 100000, int size = 16, std::size_t* length = nullptr) {
    RecordingSurface surface;
    surface.edge = edge;
    const std::size_t count = TextWriter(Face::Times, size).write(surface, 10, 50, text);
    if (length) *length = count;
    return surface.take();
}

TEST(TextWriter, PlainTextIsOnePiece) {
    std::size_t length = 0;
    EXPECT_EQ(written("abc", 1000, 16, &length), "abc 10,50 16");
    EXPECT_EQ(length, 3u);
    EXPECT_EQ(written(""), "");
}

TEST(TextWriter, RunsFollowEachOther) {
    std::size_t length = 0;
    EXPECT_EQ(written("ab{*cd}e", 1000, 16, &length), "ab 10,50 16; cd 26,50 16*; e 42,50 16");
    EXPECT_EQ(length, 5u);
    EXPECT_EQ(written("{r red}"), "red 10,50 16 colour 170");
    EXPECT_EQ(written("{$c}x"), "c 10,50 16$; x 18,50 16");
}

TEST(TextWriter, IndicesAreRaisedAndLoweredAndStandAboveEachOther) {
    EXPECT_EQ(written("x_{1}^{2}y", 1000, 20), "x 10,50 20; 1 20,57 15; 2 20,45 15; y 27,50 20");
    EXPECT_EQ(written("x^{2}_{1}", 1000, 20), "x 10,50 20; 2 20,45 15; 1 27,57 15");
    // the rise is cut toward zero, up and down
    EXPECT_EQ(written("_{1}", 1000, 13), "1 10,54 9");
    EXPECT_EQ(written("^{1}", 1000, 13), "1 10,47 9");
}

TEST(TextWriter, EmptyRunsDrawNothing) {
    EXPECT_EQ(written("{r }"), "");
    EXPECT_EQ(written("{;\\a\\b}"), "a 10,50 16$; b 18,50 16$");
}

TEST(TextWriter, PositionsCountFromTheTopOfTheRectangle) {
    RecordingSurface surface;
    TextWriter writer(Face::Courier, 16);
    writer.setTop(24);
    writer.setColour(5);
    writer.write(surface, 1, 1, "a");
    EXPECT_EQ(surface.take(), "a 1,25 16 colour 5");
}

TEST(TextWriter, TextOverTheEdgeIsMarked) {
    EXPECT_EQ(written("abc", 33), "abc 10,50 16; \x85 24,50 16 colour 170");
    EXPECT_EQ(written("abc", 34), "abc 10,50 16");
    EXPECT_EQ(written("ab{*c}", 33), "ab 10,50 16; c 26,50 16*; \x85 24,50 16 colour 170");
}

TEST(TextWriter, TextThatBeginsWithAMinusShowsItsEnd) {
    // the whole is drawn again, ending one pixel before the edge
    EXPECT_EQ(written("{-abcd}", 33), "abcd 10,50 16; abcd 0,50 16; \x85 0,50 16 colour 170");
}

TEST(TextWriter, UnbalancedMarksAreShown) {
    EXPECT_EQ(written("{r open"), "open 10,50 16 colour 170");
    EXPECT_EQ(written("a}b"), "a 10,50 16; b 18,50 16");
    EXPECT_EQ(written("{{{"), "{{{ 10,50 16");
}

}  // namespace
}  // namespace vorpen
