// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/style.h"

#include <gtest/gtest.h>

#include <random>

namespace vorpen {

void PrintTo(const PlotStyle& style, std::ostream* out) {
    *out << std::hex << style.lineColour << std::dec << " pen " << static_cast<int>(style.penStyle)
         << " width " << style.width << (style.xorMode ? " xor" : "") << (style.drawLine ? " line" : "")
         << std::hex << " fill " << style.fillColour << std::dec;
}

namespace {

constexpr Colour red = 0x0000AA, blue = 0x640000, paleYellow = 0xC8FFFF;

/// A style as a curve owns it, after reading a text.
PlotStyle parsed(std::string_view text) {
    PlotStyle style;
    style.lineColour = 0x006400;
    style.width = 2;
    style.parseStyle(text);
    return style;
}

PlotStyle curve(Colour colour = 0x006400, int width = 2) {
    PlotStyle style;
    style.lineColour = colour;
    style.width = width;
    return style;
}

TEST(PlotStyle, FreshIsABlackLineOfWidthFive) {
    const PlotStyle style;
    EXPECT_EQ(style.width, 5);
    EXPECT_EQ(style.penStyle, PenStyle::Solid);
    EXPECT_TRUE(style.drawLine);
    EXPECT_FALSE(style.xorMode);
    EXPECT_EQ(style.fillColour, 0u);
}

TEST(PlotStyle, AColourLetterSetsTheLine) {
    EXPECT_EQ(parsed("r"), curve(red));
    EXPECT_EQ(parsed("R"), curve(0x0000FF));
    EXPECT_EQ(parsed("k"), curve(0));
    EXPECT_EQ(parsed("b3"), curve(blue, 3));
    EXPECT_EQ(parsed(""), curve());
    // letters without a colour change nothing
    EXPECT_EQ(parsed("?"), curve());
    EXPECT_EQ(parsed("h"), curve());
}

TEST(PlotStyle, ABlackRowThatIsNotCalledKChangesNothing) {
    colourTable().set('u', 0);
    EXPECT_EQ(parsed("u"), curve());
    colourTable().reset();
}

TEST(PlotStyle, LinePatterns) {
    PlotStyle dashed = curve(red, 1);
    dashed.penStyle = PenStyle::Dash;
    EXPECT_EQ(parsed("r="), dashed);
    dashed.width = 2;
    EXPECT_EQ(parsed("r=2"), dashed);
    EXPECT_EQ(parsed("r:").penStyle, PenStyle::Dot);
    EXPECT_EQ(parsed("r;").penStyle, PenStyle::DashDot);
    EXPECT_EQ(parsed("r-"), curve(red));
    // the first one counts
    EXPECT_EQ(parsed("r-=").penStyle, PenStyle::Solid);
}

TEST(PlotStyle, AMarkerAloneDrawsNoLine) {
    for (const char* text : {"ro", "r+", "rx", "r.", "rs", "rt", "r~", "r|", "r!", "r_"})
        EXPECT_FALSE(parsed(text).drawLine) << text;
    EXPECT_TRUE(parsed("r-o").drawLine);
    EXPECT_TRUE(parsed("r").drawLine);
}

TEST(PlotStyle, DigitsBehindAMarkerAreItsSize) {
    EXPECT_EQ(parsed("r+5").width, 2);
    EXPECT_EQ(parsed("r+2 1").width, 1);
    EXPECT_EQ(parsed("20").width, 20);
    EXPECT_EQ(parsed("w#b 1").width, 1);
    EXPECT_EQ(parsed("r0").width, 0);
    EXPECT_EQ(parsed("r99999999999999999999").width, maxWidth);
}

TEST(PlotStyle, FillingHasTheLetterBehindItsSign) {
    PlotStyle filled = curve(0);
    filled.fillColour = paleYellow;
    filled.drawLine = false;
    EXPECT_EQ(parsed("k#y"), filled);
    // a lone letter behind the sign is the line's too
    filled.lineColour = filled.fillColour = red;
    EXPECT_EQ(parsed("#r"), filled);
    EXPECT_EQ(parsed("#").fillColour, 0u);
    EXPECT_FALSE(parsed("#").drawLine);
    EXPECT_TRUE(parsed("#r-").drawLine);
    EXPECT_EQ(parsed("r#").fillColour, 0u);
}

TEST(PlotStyle, Inverting) {
    PlotStyle inverting = curve(blue);
    inverting.xorMode = true;
    EXPECT_EQ(parsed("b^"), inverting);
    EXPECT_EQ(parsed("^b"), inverting);
}

TEST(PlotStyle, ALaterStyleKeepsWhatItDoesNotName) {
    PlotStyle style = parsed("r=3");
    style.parseStyle("b");
    EXPECT_EQ(style, curve(blue, 3));
}

TEST(MarkerStyle, TheFirstMarkerAndItsDigits) {
    EXPECT_EQ(markerOf("r"), MarkerStyle());
    EXPECT_EQ(markerOf("ro"), (MarkerStyle{'o', 4}));
    EXPECT_EQ(markerOf("r-o3"), (MarkerStyle{'o', 3}));
    EXPECT_EQ(markerOf("r+12 1"), (MarkerStyle{'+', 12}));
    EXPECT_EQ(markerOf("r+ 5"), (MarkerStyle{'+', 4}));
    EXPECT_EQ(markerOf("x99999999999"), (MarkerStyle{'x', maxWidth}));
}

TEST(PlotStyle, AnyBytesAreAStyle) {
    std::mt19937 random(7);
    for (int k = 0; k < 20000; ++k) {
        std::string text(random() % 12, ' ');
        for (char& c : text) c = static_cast<char>(random());
        const PlotStyle style = parsed(text);
        EXPECT_GE(style.width, 0);
        EXPECT_LE(style.width, maxWidth);
        EXPECT_GE(markerOf(text).size, 0);
    }
}

}  // namespace
}  // namespace vorpen
