// SPDX-License-Identifier: GPL-3.0-or-later

// What figures look like in the picture of a window, pixel by pixel.

#include <array>

#include "window/painter_surface.h"

namespace vorpen {
namespace {

constexpr QRgb white = qRgb(255, 255, 255), black = qRgb(0, 0, 0), red = qRgb(170, 0, 0),
               yellow = qRgb(255, 255, 200);
constexpr Colour redPen = 0x0000AA, yellowBrush = 0xC8FFFF;

PlotStyle style(std::string_view text) {
    PlotStyle result;
    result.width = 1;
    result.parseStyle(text);
    return result;
}

class PainterSurfaceTest : public ::testing::Test {
protected:
    PainterSurfaceTest() {
        surface.resize(200, 100);
        surface.resumeFrame(outline());
    }
    /// A frame in the picture with a data area in it.
    static FrameOutline outline() {
        return {0, {10, 10, 190, 90}, {20, 20, 180, 80}, {19, 19, 181, 82}, 0xFFFFFF};
    }
    [[nodiscard]] QRgb at(int x, int y) const { return surface.image().pixel(x, y); }
    [[nodiscard]] QRect boxOf(const std::function<bool(QRgb)>& wanted) const {
        QRect box;
        for (int y = 0; y < 100; ++y)
            for (int x = 0; x < 200; ++x)
                if (wanted(at(x, y))) box |= QRect(x, y, 1, 1);
        return box;
    }
    /// The pixels that are not white.
    [[nodiscard]] QRect drawn() const {
        return boxOf([](QRgb c) { return c != white; });
    }
    void line(std::vector<Pixel> points, const PlotStyle& pen) {
        surface.beginStroke(pen);
        surface.polyline(points);
        surface.endGroup(GroupEnd::Line);
    }
    void write(Pixel at, const TextGroup& group, int height = 20, std::string_view text = "Hxg") {
        surface.beginText(group);
        surface.text(at, text, Font{Face::Times, height}, 0);
        surface.endText();
    }
    /// Draws twice and expects the first picture again, and another between.
    void expectNoTrace(const std::function<void()>& draw) {
        const QImage before = surface.image().copy();
        draw();
        EXPECT_NE(surface.image(), before);
        draw();
        EXPECT_EQ(surface.image(), before);
    }

    PainterSurface surface;
};

TEST_F(PainterSurfaceTest, LinesHaveTheColourAndWidthOfTheirPen) {
    line({{30, 50}, {150, 50}}, style("r1"));
    EXPECT_EQ(at(30, 50), red);
    EXPECT_EQ(at(150, 50), red);
    EXPECT_EQ(drawn(), QRect(QPoint(30, 50), QPoint(150, 50)));
    line({{30, 70}, {150, 70}}, style("r2"));
    EXPECT_EQ(at(90, 69), red);
    EXPECT_EQ(at(90, 70), red);
    EXPECT_EQ(at(90, 71), white);
    line({{30, 30}, {150, 30}}, style("r9"));
    EXPECT_EQ(at(90, 26), red);
    EXPECT_EQ(at(90, 34), red);
    EXPECT_EQ(at(90, 35), white);
}

TEST_F(PainterSurfaceTest, BrokenLinesHaveGaps) {
    line({{30, 50}, {150, 50}}, style("r="));
    EXPECT_EQ(at(47, 50), red);
    EXPECT_EQ(at(48, 50), white);
    EXPECT_EQ(at(54, 50), red);
}

TEST_F(PainterSurfaceTest, ClippingEndsAtTheDataArea) {
    surface.setClipping(true);
    line({{-500, 50}, {700, 50}}, style("r3"));
    surface.setClipping(false);
    EXPECT_EQ(drawn(), QRect(QPoint(19, 49), QPoint(180, 51)));
    line({{-500, 60}, {700, 60}}, style("r1"));
    EXPECT_EQ(drawn().left(), 10);
    EXPECT_EQ(drawn().right(), 189);
}

TEST_F(PainterSurfaceTest, AFrameIsErasedAloneWithItsBackground) {
    surface.beginFrame({1, {100, 0, 200, 50}, {110, 10, 190, 40}, {110, 10, 190, 40}, 0x00FF00});
    surface.endFrame();
    EXPECT_EQ(drawn(), QRect(100, 0, 100, 50));
    EXPECT_EQ(at(150, 20), qRgb(0, 255, 0));
}

TEST_F(PainterSurfaceTest, KnowsWhatHasChanged) {
    (void)surface.takeChanged();
    line({{30, 50}, {40, 55}}, style("r1"));
    EXPECT_EQ(surface.takeChanged(), QRect(QPoint(30, 50), QPoint(40, 55)));
    EXPECT_TRUE(surface.takeChanged().isEmpty());
    surface.erase();
    EXPECT_EQ(surface.takeChanged(), QRect(0, 0, 200, 100));
}

TEST_F(PainterSurfaceTest, BarsHaveAFillingAndAnOutlineInside) {
    PlotStyle bar = style("r1");
    bar.fillColour = yellowBrush;
    surface.beginStrokeAndFill(bar);
    surface.bar({30, 40, 51, 70});
    surface.bar({60, 70, 60, 70});
    surface.bar({60, 70, 70, 70});
    surface.endGroup(GroupEnd::Line);
    EXPECT_EQ(drawn(), QRect(QPoint(30, 40), QPoint(50, 69)));
    EXPECT_EQ(at(30, 40), red);
    EXPECT_EQ(at(50, 69), red);
    EXPECT_EQ(at(31, 41), yellow);
}

TEST_F(PainterSurfaceTest, BoxesAreOutlinedAndFilledWhenAsked) {
    surface.box({20, 20, 180, 80}, false);
    EXPECT_EQ(at(20, 20), black);
    EXPECT_EQ(at(180, 80), black);
    EXPECT_EQ(at(100, 50), white);
    PlotStyle pen = style("r1");
    pen.fillColour = yellowBrush;
    surface.beginStroke(pen);
    surface.box({40, 40, 60, 60}, true);
    surface.endGroup(GroupEnd::LeftOpen);
    EXPECT_EQ(at(40, 60), red);
    EXPECT_EQ(at(50, 50), yellow);
}

TEST_F(PainterSurfaceTest, CirclesAndPolygons) {
    PlotStyle pen = style("r1");
    pen.fillColour = yellowBrush;
    surface.beginStroke(pen);
    surface.circle({50, 50}, 10);
    surface.endGroup(GroupEnd::Bare);
    EXPECT_EQ(at(60, 50), red);
    EXPECT_EQ(at(50, 50), white);
    surface.beginStrokeAndFill(pen);
    surface.circle({90, 50}, 10);
    surface.endGroup(GroupEnd::Bare);
    EXPECT_EQ(at(100, 50), red);
    EXPECT_EQ(at(90, 50), yellow);
    surface.beginStrokeAndFill(pen);
    surface.polygon(std::array<Pixel, 3>{{{120, 40}, {160, 40}, {120, 70}}});
    surface.endGroup(GroupEnd::Line);
    EXPECT_EQ(at(125, 45), yellow);
    EXPECT_EQ(at(158, 68), white);
    EXPECT_EQ(at(119, 45), white);
}

TEST_F(PainterSurfaceTest, WhatInvertsDisappearsWhenItIsDrawnAgain) {
    // Something of all colours to be drawn over.
    write({30, 50}, {TextAnchor::Start, TextBaseline::Middle, 0, false}, 40, "abcdefgh");
    line({{20, 20}, {180, 80}}, style("g3"));
    for (const char* pen : {"r1^", "b2^", "m5^", "k=^", "y:2^"}) {
        PlotStyle inverting = style(pen);
        inverting.fillColour = yellowBrush;
        expectNoTrace([&] { line({{30, 30}, {150, 70}, {150, 30}, {30, 70}, {90, 20}}, inverting); });
        expectNoTrace([&] {
            surface.beginStrokeAndFill(inverting);
            surface.polygon(std::array<Pixel, 4>{{{30, 30}, {150, 70}, {150, 30}, {30, 70}}});
            surface.circle({90, 50}, 30);
            surface.bar({30, 30, 70, 60});
            surface.box({60, 40, 120, 70}, true);
            surface.endGroup(GroupEnd::Line);
        });
    }
    for (const int angle : {0, 90})
        expectNoTrace([&] { write({90, 50}, {TextAnchor::Middle, TextBaseline::Middle, angle, true}); });
}

TEST_F(PainterSurfaceTest, OnWhiteAnInvertingPenShowsItsColour) {
    line({{30, 50}, {150, 50}, {30, 50}}, style("r1^"));
    EXPECT_EQ(at(30, 50), red);
    EXPECT_EQ(at(90, 50), red);
}

// ---- Text ---------------------------------------------------------------------------------

TEST_F(PainterSurfaceTest, TextLiesAboutItsAnchor) {
    const auto box = [this](TextAnchor anchor, TextBaseline baseline, int angle) {
        surface.erase();
        write({100, 50}, {anchor, baseline, angle, false});
        return drawn();
    };
    const QRect east = box(TextAnchor::Start, TextBaseline::Middle, 0);
    EXPECT_GE(east.left(), 99);
    EXPECT_NEAR(east.center().y(), 50, 4);
    const QRect west = box(TextAnchor::End, TextBaseline::Middle, 0);
    EXPECT_LE(west.right(), 101);
    EXPECT_NEAR(box(TextAnchor::Middle, TextBaseline::Middle, 0).center().x(), 100, 2);
    EXPECT_LE(box(TextAnchor::Middle, TextBaseline::Alphabetic, 0).bottom(), 50);
    EXPECT_GE(box(TextAnchor::Middle, TextBaseline::Top, 0).top(), 50);
    // and turned
    const QRect upright = box(TextAnchor::Middle, TextBaseline::Middle, 90);
    EXPECT_GT(upright.height(), upright.width());
    EXPECT_NEAR(upright.center().y(), 50, 2);
    EXPECT_NEAR(upright.center().x(), 100, 4);
    EXPECT_LE(box(TextAnchor::End, TextBaseline::Middle, 90).right(), 100);
    EXPECT_GE(box(TextAnchor::Start, TextBaseline::Middle, 90).left(), 99);
    EXPECT_LE(box(TextAnchor::Middle, TextBaseline::Alphabetic, 90).bottom(), 51);
    EXPECT_GE(box(TextAnchor::Middle, TextBaseline::Top, 90).top(), 49);
}

TEST_F(PainterSurfaceTest, RunsOfALineAreOneWhole) {
    surface.beginText({TextAnchor::Middle, TextBaseline::Middle});
    surface.beginLine({100, 50});
    const Font font{Face::Times, 20};
    int x = 100;
    for (const auto& [text, colour] : {std::pair{"mmm", redPen}, {"mmm", Colour{0}}, {"mmm", Colour{0xAA0000}}}) {
        surface.text({x, 50}, text, font, colour);
        x += surface.textWidth(text, font);
    }
    surface.endLine();
    surface.endText();
    const QRect all = drawn();
    EXPECT_NEAR(all.center().x(), 100, 2);
    EXPECT_NEAR(all.width(), x - 100, 4);
    const auto isRed = [](QRgb c) { return qRed(c) > qBlue(c) + 60; };
    const auto isBlue = [](QRgb c) { return qBlue(c) > qRed(c) + 60; };
    EXPECT_LT(boxOf(isRed).right(), boxOf(isBlue).left());
}

TEST_F(PainterSurfaceTest, TextThatTheFrameWouldCutIsMovedInside) {
    write({100, 14}, {TextAnchor::Middle, TextBaseline::Alphabetic});
    EXPECT_GE(drawn().top(), 10);
    EXPECT_GT(drawn().height(), 12);
    surface.erase();
    // one that is anchored elsewhere is cut
    write({100, 2}, {TextAnchor::Middle, TextBaseline::Top});
    EXPECT_EQ(drawn().top(), 10);
    EXPECT_LT(drawn().height(), 13);
}

TEST_F(PainterSurfaceTest, ALineIsAsHighAsItsFont) {
    for (const int height : {8, 12, 16, 20, 40, 100})
        EXPECT_NEAR(surface.metrics(Font{Face::Times, height}).lineHeight, height, 1) << height;
    const Font font{Face::Times, 20};
    EXPECT_GT(surface.metrics(font).averageWidth, 5);
    EXPECT_LT(surface.metrics(font).averageWidth, 10);
    EXPECT_EQ(surface.textWidth("", font), 0);
    EXPECT_GT(surface.textWidth("iiii", Font{Face::Courier, 20}), surface.textWidth("iiii", font));
    EXPECT_EQ(surface.textWidth("iiii", Font{Face::Courier, 20}), surface.textWidth("MMMM", Font{Face::Courier, 20}));
}

TEST_F(PainterSurfaceTest, SymbolsAreGreek) {
    EXPECT_EQ(faceText("ab", Face::Symbol), QString::fromUtf8("αβ"));
    EXPECT_EQ(faceText("\xA3", Face::Symbol), QString::fromUtf8("≤"));
    EXPECT_EQ(faceText("\xB5m", Face::Times), QString::fromUtf8("µm"));
}

TEST_F(PainterSurfaceTest, OnlyTextFromItsAnchorOnMeetsTheEdge) {
    surface.beginText({TextAnchor::Start, TextBaseline::Middle});
    EXPECT_EQ(surface.rightEdge(), 200);
    surface.endText();
    surface.beginText({TextAnchor::Middle, TextBaseline::Middle});
    EXPECT_EQ(surface.rightEdge(), std::numeric_limits<int>::max());
    surface.endText();
}

// ---- Pictures ---------------------------------------------------------------------------

TEST_F(PainterSurfaceTest, PicturesMayHaveHoles) {
    Bitmap picture{2, 2, {0x0000FF, 0x00FF00, 0xFF0000, 0x0000FF}};
    surface.bitmap({50, 50}, picture, false);
    EXPECT_EQ(at(50, 50), qRgb(255, 0, 0));
    EXPECT_EQ(at(51, 50), qRgb(0, 255, 0));
    EXPECT_EQ(at(50, 51), qRgb(0, 0, 255));
    surface.bitmap({60, 50}, picture, true);
    EXPECT_EQ(at(60, 50), white);
    EXPECT_EQ(at(61, 50), qRgb(0, 255, 0));
    EXPECT_EQ(at(61, 51), white);
    surface.bitmap({9, 9}, picture, false);
    EXPECT_EQ(at(9, 9), white);
    EXPECT_EQ(at(10, 10), qRgb(255, 0, 0));
    for (const int far : {-32768, 32767, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        surface.bitmap({far, far}, picture, true);
    surface.bitmap({50, 50}, Bitmap{}, true);
}

// ---- Limits --------------------------------------------------------------------------------

TEST_F(PainterSurfaceTest, WildPlacesAndSizesAreHarmless) {
    constexpr int far = 32767;
    for (const QSize size : {QSize(200, 100), QSize(1, 1), QSize(0, 0)}) {
        surface.resize(size.width(), size.height());
        for (const PixelRect& frame : {PixelRect{0, 0, 200, 100}, {-far, -far, far, far}, {50, 50, 10, 10}, {}}) {
            surface.beginFrame({0, frame, frame, {-far, far, far, -far}, 0});
            for (const char* pen : {"r1", "r=", "b32767", "k^", "k9^"}) {
                surface.beginStrokeAndFill(style(pen));
                surface.polyline(std::array<Pixel, 3>{{{-far, -far}, {far, 5}, {5, far}}});
                surface.polygon(std::array<Pixel, 3>{{{-far, -far}, {far, 5}, {5, far}}});
                surface.bar({-far, -far, far, far});
                surface.box({far, far, -far, -far}, true);
                surface.circle({far, -far}, far);
                surface.circle({0, 0}, 2 * far);
                surface.endGroup(GroupEnd::Line);
            }
            for (const int height : {0, -5, 1, far})
                write({-far, far}, {TextAnchor::Middle, TextBaseline::Top, 90, height > 0}, height);
            surface.endFrame();
        }
    }
    surface.polyline({});
    surface.endGroup(GroupEnd::Bare);
    surface.endLine();
    surface.endText();
}

}  // namespace
}  // namespace vorpen
