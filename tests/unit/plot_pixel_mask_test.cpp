// SPDX-License-Identifier: GPL-3.0-or-later

// Which pixels lines, circles and fillings touch.

#include "plot/pixel_mask.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <random>
#include <string>

namespace vorpen {
namespace {

constexpr PixelRect area{0, 0, 12, 8};

std::string shown(const PixelMask& mask) {
    std::string all;
    for (int y = mask.area().top; y < mask.area().bottom; ++y) {
        for (int x = 0; x < mask.area().width(); ++x) all += mask.row(y)[x] ? '#' : '.';
        all += '\n';
    }
    return all;
}

int countOf(const PixelMask& mask) {
    int count = 0;
    for (const char c : shown(mask)) count += c == '#';
    return count;
}

PixelMask lineOf(const std::vector<Pixel>& points, PenStyle style = PenStyle::Solid, int pen = 1) {
    PixelMask mask;
    mask.reset(area);
    mask.polyline(points, dashLengths(style, pen));
    return mask;
}

TEST(PixelMask, ALineHasOnePixelAlongItsLongerSide) {
    EXPECT_EQ(shown(lineOf({{1, 1}, {9, 3}})),
              "............\n"
              ".##.........\n"
              "...####.....\n"
              ".......###..\n"
              "............\n"
              "............\n"
              "............\n"
              "............\n");
    EXPECT_EQ(shown(lineOf({{9, 3}, {1, 1}})), shown(lineOf({{1, 1}, {9, 3}})));
    EXPECT_EQ(shown(lineOf({{2, 6}, {3, 0}, {3, 0}})),
              "...#........\n"
              "...#........\n"
              "...#........\n"
              "...#........\n"
              "..#.........\n"
              "..#.........\n"
              "..#.........\n"
              "............\n");
    EXPECT_EQ(countOf(lineOf({{4, 4}})), 1);
    EXPECT_EQ(countOf(lineOf({{4, 4}, {4, 4}, {4, 4}})), 1);
    EXPECT_EQ(countOf(lineOf({})), 0);
}

TEST(PixelMask, WhatIsOutsideChangesNothingInside) {
    PixelMask wide, narrow;
    wide.reset({-3000, -3000, 3000, 3000});
    narrow.reset(area);
    std::mt19937 random(1);
    std::uniform_int_distribution<int> place(-2900, 2900);
    for (int k = 0; k < 300; ++k) {
        const std::array<Pixel, 2> ends{{{place(random), place(random)}, {place(random), place(random)}}};
        wide.polyline(ends);
        narrow.polyline(ends);
        const std::array<Pixel, 2> near{{{place(random) / 300, place(random) / 300}, ends[0]}};
        wide.polyline(near, dashLengths(PenStyle::DashDot, 2));
        narrow.polyline(near, dashLengths(PenStyle::DashDot, 2));
    }
    for (int y = area.top; y < area.bottom; ++y)
        for (int x = area.left; x < area.right; ++x)
            ASSERT_EQ(wide.row(y)[x + 3000], narrow.row(y)[x]) << x << ' ' << y;
    EXPECT_GT(countOf(narrow), 0);
}

void drawWildly(int low, int high) {
    PixelMask mask;
    mask.reset(area);
    const std::vector<Pixel> wild{{low, low}, {high, high}, {low, high}, {high, low}, {4, 4},
                                  {high, 4},  {low, 4},     {4, low},    {4, high},   {low, 0}};
    for (const auto style : {PenStyle::Solid, PenStyle::Dash, PenStyle::Dot, PenStyle::DashDot}) {
        mask.polyline(wild, dashLengths(style));
        mask.polyline(wild, dashLengths(style, 512));
    }
    mask.fillPolygon(wild);
    for (const Pixel p : wild)
        for (const int radius : {0, 1, high, -high, 2 * high, std::numeric_limits<int>::max()}) {
            mask.circle(p, radius);
            mask.fillCircle(p, radius);
        }
    mask.fillRectangle({low, low, high, high});
    EXPECT_EQ(countOf(mask), 12 * 8);
    PixelMask none;
    none.reset({});
    none.polyline(wild);
    none.fillPolygon(wild);
    none.fillRectangle({low, low, high, high});
    none.addWidened(mask, 3);
    PixelMask tiny;
    tiny.reset({0, 0, 1, 1});
    tiny.polyline(wild);
    tiny.fillCircle({0, 0}, 5);
    EXPECT_EQ(countOf(tiny), 1);
}

TEST(PixelMask, WildPlacesAreHarmless) {
    drawWildly(std::numeric_limits<short>::min(), std::numeric_limits<short>::max());
    // The ends of the longest bars and errors where a pixel is four dots wide.
    drawWildly(-(1 << 28), 1 << 28);
}

TEST(PixelMask, ALongCurveHasThePixelsOfItsLines) {
    std::mt19937 random(7);
    std::uniform_int_distribution<int> height(-3, 11);
    std::vector<Pixel> points;
    for (int k = 0; k < 300; ++k) points.push_back({k / 20 - 1, height(random)});
    for (int k = 0; k < 30; ++k) points.push_back({5, height(random) / 4});
    PixelMask lines;
    lines.reset(area);
    for (std::size_t k = 1; k < points.size(); ++k)
        lines.polyline(std::array<Pixel, 2>{points[k - 1], points[k]});
    EXPECT_EQ(shown(lineOf(points)), shown(lines));
}

TEST(PixelMask, PatternsGoOnFromLineToLine) {
    PixelMask mask;
    mask.reset({0, 0, 60, 1});
    mask.polyline(std::array<Pixel, 2>{{{0, 0}, {60, 0}}}, dashLengths(PenStyle::Dash));
    EXPECT_EQ(shown(mask), "##################......##################......############\n");
    const std::string whole = shown(mask);
    mask.reset({0, 0, 60, 1});
    mask.polyline(std::array<Pixel, 4>{{{0, 0}, {20, 0}, {21, 0}, {60, 0}}}, dashLengths(PenStyle::Dash));
    EXPECT_EQ(shown(mask), whole);
    mask.reset({0, 0, 60, 1});
    mask.polyline(std::array<Pixel, 2>{{{0, 0}, {60, 0}}}, dashLengths(PenStyle::Dot));
    EXPECT_EQ(shown(mask), "###...###...###...###...###...###...###...###...###...###...\n");
    mask.reset({0, 0, 60, 1});
    mask.polyline(std::array<Pixel, 2>{{{0, 0}, {60, 0}}}, dashLengths(PenStyle::DashDot));
    EXPECT_EQ(shown(mask), "#########......###......#########......###......#########...\n");
    mask.reset({0, 0, 24, 1});
    mask.polyline(std::array<Pixel, 2>{{{0, 0}, {24, 0}}}, dashLengths(PenStyle::Dot, 2));
    EXPECT_EQ(shown(mask), "######......######......\n");
}

TEST(PixelMask, AWidePenIsRound) {
    const auto dot = [](int pen) {
        PixelMask thin, wide;
        thin.reset({-8, -8, 20, 16});
        thin.polyline(std::array<Pixel, 1>{{{5, 4}}});
        wide.reset(area);
        wide.addWidened(thin, pen);
        return shown(wide);
    };
    EXPECT_EQ(dot(2),
              "............\n"
              "............\n"
              "............\n"
              "....##......\n"
              "....##......\n"
              "............\n"
              "............\n"
              "............\n");
    EXPECT_EQ(dot(5),
              "............\n"
              "............\n"
              "....###.....\n"
              "...#####....\n"
              "...#####....\n"
              "...#####....\n"
              "....###.....\n"
              "............\n");
    PixelMask thin, wide;
    thin.reset({-20, -20, 32, 28});
    thin.polyline(std::array<Pixel, 2>{{{-6, -2}, {30, -2}}});
    wide.reset(area);
    wide.addWidened(thin, 6);
    // a line above the area reaches into it
    EXPECT_EQ(shown(wide).substr(0, 26), "############\n............\n");
}

TEST(PixelMask, APenMayReachFurtherToOneSide) {
    const auto row = [](int pen, int reach) {
        PixelMask thin, wide;
        thin.reset({-8, -8, 20, 16});
        thin.polyline(std::array<Pixel, 2>{{{-8, 4}, {20, 4}}});
        wide.reset(area);
        wide.addWidened(thin, pen, reach);
        std::string rows;
        for (int y = 0; y < 8; ++y) rows += wide.row(y)[5] ? '#' : '.';
        EXPECT_EQ(wide.touched().top, 4 - reach);
        EXPECT_EQ(wide.touched().bottom, 4 - reach + pen);
        return rows;
    };
    EXPECT_EQ(row(2, 0), "....##..");
    EXPECT_EQ(row(2, 1), "...##...");
    EXPECT_EQ(row(4, 3), ".####...");
}

TEST(PixelMask, DashesGrowWithThePenAndTheResolution) {
    using Lengths = std::vector<int>;
    EXPECT_EQ(dashLengths(PenStyle::Solid, 3, 2), Lengths{});
    EXPECT_EQ(dashLengths(PenStyle::Dash), (Lengths{18, 6}));
    EXPECT_EQ(dashLengths(PenStyle::Dot, 2), (Lengths{6, 6}));
    // a pen of two pixels adds one to what is drawn
    EXPECT_EQ(dashLengths(PenStyle::Dot, 1, 2), (Lengths{5, 7}));
    EXPECT_EQ(dashLengths(PenStyle::DashDot, 1, 1.5), (Lengths{13, 10, 4, 10}));
    EXPECT_EQ(dashLengths(PenStyle::Dot, 0), (Lengths{3, 3}));
}

TEST(PixelMask, APolygonIsFilledBetweenItsLines) {
    PixelMask mask;
    mask.reset(area);
    mask.fillPolygon(std::array<Pixel, 4>{{{2, 1}, {6, 1}, {6, 4}, {2, 4}}});
    EXPECT_EQ(shown(mask).substr(0, 13 * 5),
              "............\n"
              "..####......\n"
              "..####......\n"
              "..####......\n"
              "............\n");
    // What is surrounded twice is outside.
    mask.reset(area);
    mask.fillPolygon(std::array<Pixel, 10>{
        {{0, 0}, {12, 0}, {12, 8}, {0, 8}, {0, 0}, {4, 2}, {8, 2}, {8, 6}, {4, 6}, {4, 2}}});
    EXPECT_EQ(mask.row(4)[5], 0);
    EXPECT_NE(mask.row(4)[2], 0);
    EXPECT_NE(mask.row(4)[9], 0);
    mask.reset(area);
    mask.fillPolygon(std::array<Pixel, 2>{{{0, 0}, {9, 9}}});
    EXPECT_EQ(countOf(mask), 0);
}

TEST(PixelMask, ALongPolygonIsFilledLikeAShortOne) {
    std::vector<Pixel> shortOne{{2, 7}, {2, 1}, {9, 1}, {9, 7}}, longOne;
    for (const int y : {7, 3, 6, 5, 0, 2, 4, 1}) longOne.push_back({2, y});
    for (const int y : {1, 7, 5, 6, 0, 2, 7}) longOne.push_back({9, y});
    PixelMask a, b;
    a.reset(area);
    b.reset(area);
    a.fillPolygon(shortOne);
    b.fillPolygon(longOne);
    EXPECT_EQ(shown(a), shown(b));
}

TEST(PixelMask, CirclesAreClosed) {
    // (2, 3) and (1, 4) are the pixels next to the curve: 2^2 + 3.46^2 and
    // 1^2 + 3.87^2 are 4^2.
    PixelMask mask;
    mask.reset({0, 0, 9, 9});
    mask.circle({4, 4}, 4);
    EXPECT_EQ(shown(mask),
              "...###...\n"
              "..#...#..\n"
              ".#.....#.\n"
              "#.......#\n"
              "#.......#\n"
              "#.......#\n"
              ".#.....#.\n"
              "..#...#..\n"
              "...###...\n");
    mask.reset({0, 0, 9, 9});
    mask.fillCircle({4, 4}, 4);
    mask.circle({4, 4}, 4);
    EXPECT_EQ(mask.row(1)[0], 0);
    EXPECT_NE(mask.row(4)[4], 0);
    mask.reset({0, 0, 9, 9});
    mask.circle({4, 4}, 0);
    EXPECT_EQ(countOf(mask), 1);
}

TEST(PixelMask, IsEmptyAgainAfterAReset) {
    PixelMask mask = lineOf({{0, 0}, {11, 7}});
    mask.fillCircle({6, 4}, 9);
    mask.reset(area);
    EXPECT_EQ(countOf(mask), 0);
    EXPECT_EQ(mask.touched(), PixelRect{});
    mask.polyline(std::array<Pixel, 1>{{{3, 3}}});
    mask.reset({5, 5, 17, 13});
    EXPECT_EQ(countOf(mask), 0);
}

}  // namespace
}  // namespace vorpen
