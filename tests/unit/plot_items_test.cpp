// SPDX-License-Identifier: GPL-3.0-or-later

// What each kind of item draws, in a frame with limits 0 to 10 on both axes,
// where pixels are 57 to 541 and 345 to 8.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"
#include "plot/frame_painter.h"
#include "unit/plot_support.h"

namespace vorpen {
namespace {

using test::RecordingSurface;
using Numbers = std::vector<double>;

constexpr double infinity = std::numeric_limits<double>::infinity();

class ItemTest : public testing::Test {
protected:
    ItemTest() {
        frame.setExactLimits({0, 10, 0, 10});
        frame.rescale();
    }
    std::string drawn(Plotable& item) {
        FramePainter painter(frame, surface);
        item.draw(painter);
        return surface.take();
    }
    std::string drawn(Plotable&& item) { return drawn(item); }
    std::string written(Plotable&& item) {
        std::string out;
        SvgSurface svg(out, 1, 1);
        const std::size_t head = out.size();
        FramePainter painter(frame, svg);
        item.draw(painter);
        return out.substr(head);
    }

    Figure figure{1};
    Frame& frame = figure.frame(0);
    RecordingSurface surface;
};

// ---- Curves ----------------------------------------------------------------------

TEST_F(ItemTest, CurveOfALine) {
    EXPECT_EQ(drawn(Curve({0, 5, 10}, {0, 10, 0}, "")),
              "clip; stroke; line 57,345 299,8 541,345; end; unclip");
    EXPECT_EQ(written(Curve({0, 10}, {0, 10}, "r")),
              "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"2\">\n"
              "<line x1=\"57\" y1=\"345\" x2=\"541\" y2=\"8\"></line>\n</svg>\n");
}

TEST_F(ItemTest, ShapesAreInTheDotsOfTheirSurfaceAndTextsInPixels) {
    const std::string label = drawn(TextLabel(2.52, 5, "ab", "E", ""));
    const std::string upright = drawn(SinglePoint(2.52, 5, "r!"));
    surface.dots = 2;
    // 2.52 is at the pixel 178.97
    EXPECT_EQ(drawn(Curve({0, 2.52, 10}, {0, 10, 0}, "")),
              "clip; stroke; line 114,690 357,16 1082,690; end; unclip");
    EXPECT_EQ(drawn(SinglePoint(0, 0, "r_2")), "clip; stroke; line 110,690 118,690; end bare; unclip");
    EXPECT_EQ(drawn(SinglePoint(0, 0, "ro3")), "clip; stroke; circle 114,690 6; end bare; unclip");
    EXPECT_EQ(drawn(TextLabel(2.52, 5, "ab", "E", "")), label);
    EXPECT_NE(drawn(SinglePoint(2.52, 5, "r!")), upright);
    surface.dots = 1.5;
    EXPECT_EQ(drawn(Curve({0, 10}, {0, 10}, "")), "clip; stroke; line 85,517 811,12; end; unclip");
    EXPECT_EQ(drawn(TextLabel(2.52, 5, "ab", "E", "")), label);
}

TEST_F(ItemTest, CurveWithMarkersAndFilling) {
    EXPECT_EQ(drawn(Curve({0, 10}, {0, 10}, "r-_2")),
              "clip; stroke; line 57,345 541,8; end; unclip; "
              "clip; stroke; line 55,345 59,345; line 539,8 543,8; end bare; unclip");
    EXPECT_EQ(drawn(Curve({0, 5, 10}, {0, 10, 0}, "#r")),
              "clip; fill; polygon 57,345 299,8 541,345; end; unclip");
    EXPECT_EQ(Curve({}, {}, "ro").marker, (MarkerStyle{'o', 4}));
    EXPECT_EQ(Curve({}, {}, "").style.lineColour, 0x006400u);
    EXPECT_EQ(Curve({}, {}, "").style.width, 2);
}

TEST_F(ItemTest, ADashedCurveHasUnbrokenMarkers) {
    Curve curve({0, 10}, {0, 10}, "r=o");
    drawn(curve);
    EXPECT_EQ(curve.style.penStyle, PenStyle::Dash);
}

TEST_F(ItemTest, CurvesWithoutPointsDrawNothing) {
    EXPECT_EQ(drawn(Curve({}, {}, "r-o#")), "");
    EXPECT_EQ(drawn(ErrorBars({}, {}, {})), "");
    EXPECT_EQ(drawn(BarChart({}, {}, {}, "")), "");
}

TEST_F(ItemTest, CurveOfOnePoint) {
    EXPECT_EQ(drawn(Curve({5}, {5}, "r")), "clip; stroke; line 299,176; end; unclip");
}

TEST_F(ItemTest, WildPointsAreHeldNearThePlot) {
    constexpr int top = 8 - 8 * 337, bottom = 345 + 8 * 337;
    const std::string wild = "line 57," + std::to_string(top) + " 299," + std::to_string(bottom) + " 541," +
                             std::to_string(top) + " -32768,345";
    EXPECT_EQ(drawn(Curve({0, 5, 10, std::nan("")}, {infinity, -1e300, std::nan(""), 0}, "")),
              "clip; stroke; " + wild + "; end; unclip");
    EXPECT_EQ(drawn(Curve({0, 5, 10, std::nan("")}, {infinity, -1e300, std::nan(""), 0}, "#")),
              "clip; fill; polygon" + wild.substr(4) + "; end; unclip");
    // a segment is written as it is
    EXPECT_EQ(drawn(Curve({0, 5}, {infinity, -infinity}, "")),
              "clip; stroke; line 57,-32768 299,32767; end; unclip");
}

TEST_F(ItemTest, MovingACurveMovesItsPoints) {
    Curve curve({0, 1}, {2, 3}, "");
    curve.move(1, -2);
    EXPECT_EQ(curve.xs, (Numbers{1, 2}));
    EXPECT_EQ(curve.ys, (Numbers{0, 1}));
    EXPECT_EQ(curve.x, 0);
}

TEST_F(ItemTest, XAndYOfDifferentLengthsAreCut) { EXPECT_EQ(Curve({0, 1, 2}, {1, 2}, "").xs.size(), 2u); }

// ---- Markers -------------------------------------------------------------------------

TEST_F(ItemTest, EachMarker) {
    const auto marker = [this](const char* style) {
        const std::string all = drawn(SinglePoint(5, 5, style));
        constexpr std::string_view front = "clip; stroke; ", back = "; end bare; unclip";
        EXPECT_TRUE(all.starts_with(front) && all.ends_with(back)) << all;
        return all.substr(front.size(), all.size() - front.size() - back.size());
    };
    EXPECT_EQ(marker("+3"), "line 296,176 302,176; line 299,179 299,173");
    EXPECT_EQ(marker("x3"), "line 296,173 302,179; line 296,179 302,173");
    EXPECT_EQ(marker(".9"), "line 298,176 300,176; line 299,177 299,175");
    EXPECT_EQ(marker("o3"), "circle 299,176 3");
    EXPECT_EQ(marker("s3"), "line 296,173 302,173 302,179 296,179 296,173");
    EXPECT_EQ(marker("t3"), "line 296,179 302,179 299,173 296,179");
    EXPECT_EQ(marker("|3"), "line 299,179 299,173");
    EXPECT_EQ(marker("!3"), "line 299,176 299,345");
    EXPECT_EQ(marker("_"), "line 295,176 303,176");
    EXPECT_EQ(drawn(SinglePoint(5, 5, "r")), "");
}

TEST_F(ItemTest, MarkersInAFileEndOnTheirLine) {
    EXPECT_EQ(written(SinglePoint(5, 5, "r|")),
              "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"2\">\n"
              "<line x1=\"299\" y1=\"180\" x2=\"299\" y2=\"172\"></line>\n</svg>");
    EXPECT_EQ(
        written(SinglePoint(5, 5, "ro")),
        "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"2\">\n<circle cx=\"299\" cy=\"176\" r=\"4\"/>\n</svg>");
}

TEST_F(ItemTest, AnUnknownMarkerFails) {
    FramePainter painter(frame, surface);
    const Pixel at{1, 2};
    for (const char marker : {'q', '\x7F', '\xFF'}) {
        try {
            painter.drawMarkers({&at, 1}, {}, marker, 4);
            FAIL() << marker;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.message, "unrecognized marker character");
        }
    }
    EXPECT_EQ(surface.take(), "");
}

TEST_F(ItemTest, ErrorBarsHaveACrossAndCaps) {
    ErrorBars bars({5}, {5}, {1});
    EXPECT_EQ(bars.style.lineColour, 0x006400u);
    EXPECT_EQ(bars.style.width, 1);
    EXPECT_EQ(bars.kind(), PlotableKind::Curve);
    EXPECT_EQ(
        drawn(bars),
        "clip; stroke; line 298,175 300,177; line 298,177 300,175; end bare; unclip; "
        "clip; stroke; line 295,209 303,209; line 299,209 299,143; line 295,143 303,143; end bare; unclip");
    // one error for each point
    const std::string two = drawn(ErrorBars({5, 5}, {5, 5}, {0, 2}));
    EXPECT_NE(two.find("line 299,176 299,176"), std::string::npos) << two;
    EXPECT_NE(two.find("line 299,243 299,109"), std::string::npos) << two;
    drawn(ErrorBars({5, 5}, {5, 5}, {std::nan(""), infinity}));
}

// ---- Bars ------------------------------------------------------------------------------

TEST_F(ItemTest, BarsAreAsWideAsTheSmallestDistance) {
    BarChart chart({4, 1, 2}, {4, -1, 2}, {}, "w#b 1");
    EXPECT_EQ(chart.xs, (Numbers{1, 2, 4}));
    EXPECT_EQ(chart.ys, (Numbers{-1, 2, 4}));
    EXPECT_EQ(chart.barWidth, 1);
    EXPECT_EQ(drawn(chart),
              "clip; fill; bar 81,345 130,378; bar 129,277 178,345; bar 226,210 275,345; end; unclip");
    EXPECT_EQ(BarChart({3}, {3}, {}, "").barWidth, 1);
    EXPECT_EQ(BarChart({3, 5}, {3, 3}, {}, "", 0.5).barWidth, 1.5);
}

TEST_F(ItemTest, BarsWithWidthsOfTheirOwn) {
    BarChart chart({4, 1}, {4, 1}, {2, 0.5}, "");
    EXPECT_EQ(chart.widths, (Numbers{0.5, 2}));
    EXPECT_EQ(drawn(chart), "clip; fill; bar 93,311 118,345; bar 202,210 299,345; end; unclip");
    EXPECT_EQ(BarChart({4, 1}, {4, 1}, {2}, "").widths, (Numbers{2, 2}));
}

TEST_F(ItemTest, BarsOfBadNumbers) {
    BarChart chart({std::nan(""), 1, infinity}, {1, std::nan(""), -infinity}, {}, "");
    EXPECT_EQ(chart.xs[0], 1);
    drawn(chart);
    drawn(BarChart({1, 2}, {1, 2}, {1e300, -1e300}, ""));
}

TEST_F(ItemTest, BarsInAFile) {
    EXPECT_EQ(written(BarChart({5}, {5}, {}, "w#b 1")),
              "<svg stroke=\"rgb(255,255,255)\" stroke-width=\"1\" fill=\"rgb(0,0,100)\">\n"
              "<rect x=\"275\" y=\"176\" width =\"49\" height=\"169\"></rect>\n</svg>\n");
}

// ---- Shapes ---------------------------------------------------------------------------

TEST_F(ItemTest, CirclesHaveTheirRadiusInUnitsOfX) {
    EXPECT_EQ(drawn(MyCircle(5, 5, 1, "r")), "clip; stroke; circle 299,176 48; end bare; unclip");
    EXPECT_EQ(drawn(MyCircle(5, 5, -1, "r#y")), "clip; fill; circle 299,176 49; end bare; unclip");
    EXPECT_EQ(MyCircle(0, 0, 1, "r").style.width, 5);
    EXPECT_EQ(
        written(MyCircle(5, 5, 1, "r")),
        "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"5\">\n<circle cx=\"299\" cy=\"176\" r=\"48\"/>\n</svg>");
}

TEST_F(ItemTest, ABoxLeavesItsGroupOpen) {
    EXPECT_EQ(drawn(Box(1, 1, 2, 3, "r")), "stroke; box 105,210 202,311; left open");
    EXPECT_EQ(drawn(Box(3, 4, -2, -3, "r#y")), "stroke; filled box 105,210 202,311; left open");
    EXPECT_EQ(written(Box(1, 1, 2, 3, "r1")),
              "<svg stroke=\"rgb(170,0,0)\" stroke-width=\"1\">\n"
              "<rect x = \"105\" y = \"210\" width = \"97\"  height = \"101\"/>\n");
}

TEST_F(ItemTest, TheOutlineHasNoStyle) {
    EXPECT_EQ(drawn(frame.item(0)), "box 57,8 541,345");
    frame.item(0).visible = false;
    EXPECT_EQ(drawn(frame.item(0)), "");
}

TEST_F(ItemTest, PicturesAreDrawnOnWindowsOnly) {
    Bitmap picture{2, 1, {1, 2}};
    EXPECT_EQ(drawn(MyBitmap(5, 5, picture, true)), "bitmap 299,176 2 masked");
    EXPECT_EQ(written(MyBitmap(5, 5, picture, false)), "");
}

TEST_F(ItemTest, KindsAndValues) {
    EXPECT_EQ(Curve({}, {}, "").kind(), PlotableKind::Curve);
    EXPECT_EQ(TextLabel(0, 0, "", "", "").kind(), PlotableKind::Text);
    EXPECT_EQ(MainLabels().kind(), PlotableKind::Labels);
    EXPECT_EQ(SinglePoint(0, 0, "").kind(), PlotableKind::Point);
    EXPECT_EQ(MyCircle(0, 0, 1, "").kind(), PlotableKind::Circle);
    EXPECT_EQ(Box(0, 0, 1, 1, "").kind(), PlotableKind::Box);
    EXPECT_EQ(PlotableButton(ControlKind::CheckBox, "").kind(), PlotableKind::Button);
    for (const PlotableKind kind :
         {BarChart({}, {}, {}, "").kind(), AxisTicks().kind(), BoxRel(0, 0, 1, 1).kind(),
          MyBitmap(0, 0, {}, false).kind(), Raster().kind()})
        EXPECT_EQ(kind, PlotableKind::Other);
    EXPECT_EQ(SinglePoint(1, 2, "").value(), Numbers{2});
    PlotableButton box(ControlKind::ThreeState, "t");
    box.state = 2;
    EXPECT_EQ(box.value(), Numbers{2});
}

// ---- Texts ----------------------------------------------------------------------------

TEST(TextAlignment, OfPlacements) {
    const auto code = [](const char* placement) { return TextAlignment::of(placement).code; };
    EXPECT_EQ(code(""), 5);
    EXPECT_EQ(code("e"), 6);
    EXPECT_EQ(code("W"), 4);
    EXPECT_EQ(code("n"), 1);
    EXPECT_EQ(code("NE"), 2);
    EXPECT_EQ(code("sw"), 8);
    EXPECT_EQ(code("SE"), 10);
    EXPECT_EQ(code("nsew"), 5);
    EXPECT_EQ(code("zebra"), 6);
    EXPECT_EQ(TextAlignment::of("|"), (TextAlignment{5, 90}));
    EXPECT_EQ(TextAlignment::of("W|"), (TextAlignment{4, 90}));
}

TEST_F(ItemTest, TextLabels) {
    EXPECT_EQ(drawn(TextLabel(5, 5, "hi", "NE", "")), "text 20 0; hi 299,176 20 colour 6553600; end text");
    EXPECT_EQ(drawn(TextLabel(50, 102, "hi", "N", "k30", true)), "text 10 0; hi 299,1 30; end text");
    EXPECT_EQ(drawn(TextLabel(5, 5, "hi", "|", "k")), "text 11 90; hi 299,176 20; end text");
    EXPECT_EQ(drawn(TextLabel(5, 5, "", "N", "")), "");
    EXPECT_EQ(drawn(TextLabel(5, 5, "a", "", "k^")), "text 11 0 inverting; a 299,176 20; end text");
    EXPECT_EQ(written(TextLabel(5, 5, "x_{1}^{2}", "SW", "")),
              "<svg style=\"fill: #000000; stroke: none; text-anchor:end; dominant-baseline:hanging; "
              "xml-space:preserve\">\n"
              "<text x=\"299\" y=\"176\" xml:space=\"preserve\">\nx</text>\n"
              "<text x=\"307\" y=\"183\" xml:space=\"preserve\">\n1</text>\n"
              "<text x=\"307\" y=\"171\" xml:space=\"preserve\">\n2</text>\n</svg>\n");
}

TEST_F(ItemTest, MainLabelsLeaveOutEmptyOnes) {
    MainLabels labels;
    EXPECT_EQ(drawn(labels), "");
    labels.label('t').text = "top";
    labels.label('x').text = "along";
    labels.label('y').text = "up";
    EXPECT_EQ(drawn(labels),
              "text 12 0; along 299,378 20 colour 6553600; end text; "
              "text 01 90; up 18,176 20 colour 6553600; end text; "
              "text 10 0; top 299,1 20 colour 6553600; end text");
}

// ---- Axes -------------------------------------------------------------------------------

TEST_F(ItemTest, ARasterInPixelsAndInUnits) {
    Raster raster;
    raster.count = 2;
    raster.length = 10;
    raster.additive = true;
    raster.step = 5;
    EXPECT_EQ(drawn(raster), "stroke; line 57,345 57,335; line 299,345 299,335; end");
    raster.horizontal = true;
    raster.lengthInPixels = false;
    EXPECT_EQ(drawn(raster), "stroke; line 57,345 541,345; line 57,176 541,176; end");
    // lines outside of the limits are left out, an empty row has no group
    raster.y = 7;
    EXPECT_EQ(drawn(raster), "stroke; line 57,109 541,109; end");
    raster.y = 11;
    EXPECT_EQ(drawn(raster), "");
}

/// How often a text occurs in another.
int occurrences(std::string_view text, std::string_view part) {
    int count = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

TEST_F(ItemTest, AxesWithoutFlagsDrawNothing) { EXPECT_EQ(drawn(AxisTicks(0, 0)), ""); }

TEST_F(ItemTest, AnXAxisPartByPart) {
    frame.xScale.grid = 0;
    EXPECT_EQ(drawn(AxisTicks(TICKS_NEAR, 0)),
              "stroke; line 57,345 57,335; line 153,345 153,335; line 250,345 250,335; line 347,345 347,335; "
              "line 444,345 444,335; line 541,345 541,335; end; "
              "stroke; line 57,345 57,340; line 81,345 81,340; line 105,345 105,340; line 129,345 129,340; "
              "line 153,345 153,340; line 178,345 178,340; line 202,345 202,340; line 226,345 226,340; "
              "line 250,345 250,340; line 274,345 274,340; line 299,345 299,340; line 323,345 323,340; "
              "line 347,345 347,340; line 371,345 371,340; line 395,345 395,340; line 420,345 420,340; "
              "line 444,345 444,340; line 468,345 468,340; line 492,345 492,340; line 516,345 516,340; end");
    EXPECT_EQ(drawn(AxisTicks(TICKS_FAR, 0)),
              "stroke; line 57,18 57,8; line 153,18 153,8; line 250,18 250,8; line 347,18 347,8; "
              "line 444,18 444,8; line 541,18 541,8; end");
    EXPECT_TRUE(drawn(AxisTicks(TICKS_NEAR | TICK_LABELS, 0))
                    .find("text 12 0; 0 57,350 16; 2 153,350 16; 4 250,350 16; 6 347,350 16; 8 444,350 16; "
                          "10 541,350 16; end text") != std::string::npos);
    frame.xScale.grid = 1;
    EXPECT_TRUE(drawn(AxisTicks(TICKS_NEAR, 0)).starts_with("stroke; line 57,345 57,8; line 153,345 153,8;"));
}

TEST_F(ItemTest, AYAxisPartByPart) {
    // the tick at 0.3 is above the limit by rounding
    frame.setExactLimits({0, 10, -0.3, 0.3});
    frame.rescale();
    frame.yScale.grid = 0;
    const std::string near = drawn(AxisTicks(0, TICKS_NEAR | TICK_LABELS));
    EXPECT_TRUE(near.starts_with("stroke; line 57,345 67,345; line 57,288 67,288;")) << near;
    EXPECT_NE(near.find("text 01 0; -0.3 50,345 16; -0.2 50,288 16; -0.1 50,232 16; 0 50,176 16; "
                        "0.1 50,120 16; 0.2 50,64 16; end text"),
              std::string::npos)
        << near;
    EXPECT_TRUE(drawn(AxisTicks(0, TICKS_FAR)).starts_with("stroke; line 531,345 541,345;"));
}

TEST_F(ItemTest, LinesThroughZero) {
    frame.setExactLimits({-10, 10, -10, 10});
    frame.rescale();
    EXPECT_EQ(drawn(AxisTicks(LINE_AT_ZERO, LINE_AT_ZERO)),
              "stroke; line 299,345 299,8; end; stroke; line 57,176 541,176; end");
    frame.setExactLimits({0, 10, 1, 10});
    frame.rescale();
    EXPECT_EQ(drawn(AxisTicks(LINE_AT_ZERO, LINE_AT_ZERO)), "");
}

TEST_F(ItemTest, TicksAtTheLineThroughZero) {
    frame.setExactLimits({-10, 10, -10, 10});
    frame.rescale();
    frame.xScale.grid = 0;
    const std::string ticks = drawn(AxisTicks(TICKS_AT_ZERO, 0));
    EXPECT_EQ(occurrences(ticks, "stroke"), 2) << ticks;
    EXPECT_NE(ticks.find("line 57,176 57,171;"), std::string::npos) << ticks;
    EXPECT_NE(ticks.find("line 57,176 57,166;"), std::string::npos) << ticks;
}

TEST_F(ItemTest, EqualScalesShowTheEdgesOfTheLimits) {
    frame.equal = true;
    frame.rescale();
    const std::string axes = drawn(AxisTicks(TICKS_NEAR, TICKS_NEAR));
    EXPECT_TRUE(axes.ends_with("stroke; line 130,345 467,345; end; stroke; line 130,345 130,8; end")) << axes;
}

TEST_F(ItemTest, LogAxesHaveLinesAtTwoToNine) {
    frame.xScale.linear = false;
    frame.xScale.grid = 0;
    frame.setExactLimits({1, 100, 0, 10});
    frame.rescale();
    EXPECT_EQ(drawn(AxisTicks(TICKS_NEAR, 0)),
              "stroke; line 57,345 57,335; line 299,345 299,335; line 541,345 541,335; end; "
              "stroke; line 129,345 129,8; line 172,345 172,8; line 202,345 202,8; line 226,345 226,8; "
              "line 245,345 245,8; line 261,345 261,8; line 275,345 275,8; line 287,345 287,8; end; "
              "stroke; line 371,345 371,8; line 414,345 414,8; line 444,345 444,8; line 468,345 468,8; "
              "line 487,345 487,8; line 503,345 503,8; line 517,345 517,8; line 529,345 529,8; end");
}

TEST_F(ItemTest, TenDecadesAndMoreShowAllSevenLabels) {
    frame.yScale.linear = false;
    frame.setExactLimits({0, 10, 1e-5, 1e7});
    frame.rescale();
    const std::string axes = drawn(AxisTicks(0, TICKS_NEAR | TICK_LABELS));
    for (const char* label : {"1e-5", "0.001", "0.1", "10", "1000", "1e5", "1e7"})
        EXPECT_NE(axes.find(std::string("; ") + label + " 50,"), std::string::npos)
            << label << " in " << axes;
}

TEST_F(ItemTest, ColoursOfTheGrid) {
    const std::string linear = written(AxisTicks(TICKS_NEAR, 0));
    EXPECT_TRUE(linear.starts_with("<svg stroke=\"rgb(173,216,230)\" stroke-width=\"1\">\n")) << linear;
    frame.xScale.linear = false;
    frame.setExactLimits({1, 100, 0, 10});
    frame.rescale();
    const std::string log = written(AxisTicks(TICKS_NEAR, 0));
    EXPECT_TRUE(log.starts_with("<svg stroke=\"rgb(135,206,250)\" stroke-width=\"1\">\n")) << log;
    EXPECT_EQ(occurrences(log, "rgb(173,216,230)"), 2);
}

// ---- Controls ---------------------------------------------------------------------------

TEST_F(ItemTest, ControlsAreShownByTheWindow) {
    auto made = std::make_unique<test::RecordingView>();
    auto& view = *made;
    figure.setView(std::move(made));
    PlotableButton button(ControlKind::PushButton, "go");
    button.x = 5;
    button.y = 5;
    EXPECT_EQ(drawn(button), "");
    button.width = 1;
    button.height = 2;
    drawn(button);
    button.relative = true;
    button.x = button.y = 50;
    button.width = 10;
    button.height = 20;
    drawn(button);
    EXPECT_EQ(view.controls,
              (std::vector<std::string>{"go 299,176 20x20", "go 299,176 48x68", "go 299,176 48x68"}));
    EXPECT_EQ(button.style.width, 12);
    EXPECT_EQ(PlotableButton(ControlKind::Label, "").style.width, 16);
}

}  // namespace
}  // namespace vorpen
