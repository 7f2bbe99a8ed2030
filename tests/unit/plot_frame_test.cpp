// SPDX-License-Identifier: GPL-3.0-or-later

// The map from data to pixels, the items of a frame and what commands change
// in it.

#include "plot/frame.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"
#include "unit/plot_support.h"

namespace vorpen {
namespace {

using test::RecordingView;

constexpr double infinity = std::numeric_limits<double>::infinity();

class FrameTest : public testing::Test {
protected:
    FrameTest() { figureList().reset(); }
    /// Gives the figure a window.
    RecordingView& window() {
        auto made = std::make_unique<RecordingView>();
        RecordingView& result = *made;
        figure.setView(std::move(made));
        result.drawn.calls.clear();
        return result;
    }
    void setLimits(const Limits& limits) {
        frame.setExactLimits(limits);
        frame.rescale();
    }
    template <class T, class... Arguments>
    std::int32_t add(Arguments&&... arguments) {
        return frame.addItem(std::make_unique<T>(std::forward<Arguments>(arguments)...));
    }
    std::string failure(const std::function<void()>& action) {
        try {
            action();
        } catch (const RuntimeError& error) {
            return error.message;
        }
        return "none";
    }

    Figure figure{1};
    Frame& frame = figure.frame(0);
};

// ---- The transform --------------------------------------------------------------

TEST_F(FrameTest, StartsWithItsOutlineAndUnitLimits) {
    EXPECT_EQ(frame.limits(), (Limits{0, 1, 0, 1}));
    EXPECT_EQ(frame.itemCount(), 1);
    EXPECT_NE(frame.boxItem(), nullptr);
    EXPECT_EQ(frame.outline().plotArea, (PixelRect{57, 8, 541, 345}));
    EXPECT_EQ(frame.outline().frame, (PixelRect{0, 0, 570, 406}));
    EXPECT_EQ(frame.outline().clip, (PixelRect{56, 7, 542, 347}));
    EXPECT_TRUE(frame.yScale.isY);
    EXPECT_FALSE(frame.xScale.isY);
}

TEST_F(FrameTest, LinearTransform) {
    setLimits({0, 10, 0, 20});
    EXPECT_EQ(frame.pixel(0, 0), (Pixel{57, 345}));
    EXPECT_EQ(frame.pixel(10, 20), (Pixel{541, 8}));
    EXPECT_EQ(frame.pixelX(5), 299);
    EXPECT_EQ(frame.pixelY(10), 176);
    // cut toward zero
    EXPECT_EQ(frame.pixelX(-1.19), 0);
    EXPECT_NEAR(frame.valueX(frame.pixelX(5)), 5, 0.03);
    EXPECT_NEAR(frame.valueY(176.5), 10, 1e-12);
}

TEST_F(FrameTest, LogTransform) {
    frame.xScale.linear = frame.yScale.linear = false;
    setLimits({1, 100, 0.1, 1000});
    EXPECT_EQ(frame.pixel(1, 0.1), (Pixel{57, 345}));
    EXPECT_EQ(frame.pixelX(10), 299);
    EXPECT_EQ(frame.pixelY(10), 176);
    EXPECT_NEAR(frame.valueX(299), 10, 1e-12);
    // what has no logarithm is at the lower limit
    EXPECT_EQ(frame.pixel(0, -5), (Pixel{57, 345}));
    EXPECT_EQ(frame.pixelX(-infinity), 57);
    EXPECT_EQ(frame.pixelX(infinity), 32767);
}

TEST_F(FrameTest, LogLimitsAreBroughtAboveZero) {
    frame.xScale.linear = frame.yScale.linear = false;
    setLimits({-1, 100, -2, -1});
    EXPECT_EQ(frame.limits(), (Limits{1e-8, 100, 1e-10 / 1e10, 1e-10}));
}

TEST_F(FrameTest, PixelsAreLimited) {
    setLimits({0, 1, 0, 1});
    EXPECT_EQ(frame.pixel(1e300, 1e300), (Pixel{32767, -32768}));
    EXPECT_EQ(frame.pixel(-infinity, -infinity), (Pixel{-32768, 32767}));
    EXPECT_EQ(frame.pixel(std::nan(""), std::nan("")), (Pixel{-32768, -32768}));
}

TEST_F(FrameTest, AllPointsAtOnceAreThePointsOneByOne) {
    const std::vector<double> x = {0, 0.5, 3, std::nan(""), -1e9, infinity},
                              y = {1, 0.25, -1, 2, std::nan(""), 0};
    for (const bool linear : {true, false}) {
        frame.xScale.linear = frame.yScale.linear = linear;
        setLimits({0.1, 10, 0.1, 10});
        std::vector<Pixel> pixels;
        frame.toPixels(x, y, pixels);
        ASSERT_EQ(pixels.size(), x.size());
        for (std::size_t k = 0; k < x.size(); ++k) EXPECT_EQ(pixels[k], frame.pixel(x[k], y[k])) << k;
    }
}

TEST_F(FrameTest, EqualScalesKeepThePlotInTheMiddle) {
    frame.equal = true;
    setLimits({-1, 1, -1, 1});
    EXPECT_EQ(frame.pixelsPerX(), -frame.pixelsPerY());
    EXPECT_EQ(frame.pixelX(0), 299);
    EXPECT_EQ(frame.pixelY(0), 176);
    EXPECT_EQ(frame.pixelX(1) - frame.pixelX(0), frame.pixelY(0) - frame.pixelY(1));
    EXPECT_EQ(frame.pixelY(-1), 345);
}

TEST_F(FrameTest, PercentOfTheAxes) {
    setLimits({0, 10, 5, 25});
    EXPECT_EQ(frame.percentToPixels(0, 0), (Pixel{57, 345}));
    EXPECT_EQ(frame.percentToPixels(50, 102), (Pixel{299, 1}));
    frame.xScale.linear = false;
    setLimits({1, 100, 5, 25});
    EXPECT_EQ(frame.percentToPixels(50, 0).x, 299);
}

TEST_F(FrameTest, PolylinesAreHeldWithinEightHeights) {
    setLimits({0, 1, 0, 1});
    EXPECT_EQ(frame.polylineRange(), (std::array<int, 2>{8 - 8 * 337, 345 + 8 * 337}));
    frame.yScale.linear = false;
    setLimits({0, 1, 1, 100});
    EXPECT_EQ(frame.polylineRange(), (std::array<int, 2>{8 - 8 * 337, 345 + 8 * 337}));
}

TEST_F(FrameTest, UselessLimitsGivePixelsAllTheSame) {
    for (const Limits& limits :
         {Limits{1, 1, 2, 2}, Limits{0, 5e-324, 0, 5e-324}, Limits{-1.7e308, 1.7e308, -1.7e308, 1.7e308},
          Limits{std::nan(""), std::nan(""), -infinity, infinity}, Limits{1e-300, 2e-300, 1e299, 1e300}}) {
        setLimits(limits);
        for (const double x : {0.0, 1.0, -1e300, 5e-324, std::nan("")}) {
            EXPECT_GE(frame.pixelX(x), -32768);
            EXPECT_LE(frame.pixelY(x), 32767);
        }
    }
}

TEST_F(FrameTest, LimitsOfDataAreWidened) {
    frame.setLimits(0, 10, 0, 10);
    EXPECT_EQ(frame.limits(), (Limits{0, 10, 0, 11}));
}

TEST_F(FrameTest, ASubplotIsMeasuredFromTheBottom) {
    figure.selectFrame({0, 0.5, 0.5, 0.5});
    EXPECT_EQ(figure.currentFrame().outline().frame, (PixelRect{0, 0, 285, 203}));
    EXPECT_EQ(figure.currentFrame().outline().plotArea, (PixelRect{28, 4, 270, 172}));
}

TEST_F(FrameTest, PlotArea) {
    const FractionRect before = frame.plotArea();
    frame.setPlotArea({0.5, 0.5, 0, 0});
    EXPECT_EQ(frame.plotArea(), before);
    frame.setPlotArea({0, 0, 1, 0});
    EXPECT_EQ(frame.plotArea(), (FractionRect{0, 0.15, 1, 0.83}));
    frame.setPlotArea({0.5, 0, 0, 1});
    EXPECT_EQ(frame.plotArea(), (FractionRect{0, 0, 1, 1}));
    frame.setPlotArea({0.1, 0.2, 0.3, 0.4});
    EXPECT_EQ(frame.plotArea(), (FractionRect{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(frame.boxItem()->x, 0.1);
    EXPECT_EQ(frame.boxItem()->height, 0.4);
    EXPECT_EQ(frame.pixelX(0), 57);
    frame.wipeFrame(0);
    EXPECT_EQ(failure([&] { frame.setPlotArea(wholeBox); }), "bug? in Frame::setPlotArea: empty plotable[]");
}

// ---- Items ------------------------------------------------------------------------

TEST_F(FrameTest, IdsHoldFrameAndItem) {
    EXPECT_EQ(add<Curve>(std::vector<double>{1}, std::vector<double>{1}, ""), 1);
    figure.selectFrame({0, 0, 0.5, 1});
    figure.selectFrame({0.5, 0, 0.5, 1});
    EXPECT_EQ(figure.currentFrame().addItem(std::make_unique<SinglePoint>(1, 2, "")), 65537);
    EXPECT_EQ(&figure.idToFrame(65537), &figure.currentFrame());
    EXPECT_EQ(figure.currentFrame().itemValue(65537), std::vector<double>{2});
    EXPECT_EQ(failure([&] { (void)figure.idToFrame(131072); }), "id not recognized: invalid frame");
    EXPECT_EQ(failure([&] { (void)figure.idToFrame(-1); }), "id not recognized: invalid frame");
    EXPECT_EQ(failure([&] { (void)figure.currentFrame().itemValue(1); }),
              "invalid id: no such item in the frame");
    EXPECT_EQ(failure([&] { (void)figure.currentFrame().itemValue(65540); }),
              "invalid id: no such item in the frame");
}

TEST_F(FrameTest, ATextReplacesTheOneAtItsPlace) {
    EXPECT_EQ(add<TextLabel>(1, 2, "a", "NE", ""), 1);
    EXPECT_EQ(add<TextLabel>(1, 2, "b", "E", ""), 2);
    EXPECT_EQ(add<TextLabel>(1, 2, "c", "ne", ""), 1);
    EXPECT_EQ(frame.itemCount(), 3);
    EXPECT_EQ(frame.findItem<TextLabel>(1)->text, "c");
    EXPECT_EQ(add<TextLabel>(1, 2.5, "d", "NE", ""), 3);
}

TEST_F(FrameTest, ATextIsFoundWhereItWasMovedTo) {
    const auto moved = add<TextLabel>(1, 2, "a", "NE", ""), other = add<TextLabel>(5, 6, "b", "NE", "");
    ASSERT_TRUE(frame.moveItem(moved, 4, 4));
    EXPECT_EQ(add<TextLabel>(5, 6, "c", "NE", ""), moved) << "the first of two at one place";
    frame.placeItem(moved, 7, 8);
    EXPECT_EQ(add<TextLabel>(5, 6, "d", "NE", ""), other);
    const double x = 9, y = -0.0;
    frame.replotItem(moved, {&x, 1}, {&y, 1});
    EXPECT_EQ(add<TextLabel>(9, 0, "e", "NE", ""), moved);
    frame.alignText(moved, TextAlignment::of("SW"));
    EXPECT_EQ(add<TextLabel>(9, 0, "f", "SW", ""), moved);
    EXPECT_EQ(add<TextLabel>(9, 0, "g", "NE", ""), 3);
    frame.alignText(0, TextAlignment::of("SW"));
    frame.wipeFrame(2);
    EXPECT_EQ(add<TextLabel>(5, 6, "h", "NE", ""), 2) << "a new text";
    EXPECT_EQ(add<TextLabel>(9, 0, "i", "SW", ""), moved);
}

TEST_F(FrameTest, ATextAtNoNumberHasNoPlace) {
    EXPECT_EQ(add<TextLabel>(NAN, 2, "a", "NE", ""), 1);
    EXPECT_EQ(add<TextLabel>(NAN, 2, "b", "NE", ""), 2);
    EXPECT_EQ(add<TextLabel>(1, 2, "c", "NE", ""), 3);
    ASSERT_TRUE(frame.moveItem(3, NAN, 0));
    EXPECT_EQ(add<TextLabel>(1, 2, "d", "NE", ""), 4);
}

TEST_F(FrameTest, WipingForgetsDragging) {
    add<SinglePoint>(1, 2, "");
    frame.dragables[1] = {};
    frame.tracker.vertical = 1;
    frame.wipeFrame(1);
    EXPECT_EQ(frame.itemCount(), 1);
    EXPECT_TRUE(frame.dragables.empty());
    EXPECT_FALSE(frame.tracker.active());
}

TEST_F(FrameTest, AFrameHasNoMoreItemsThanItsIdsCanCount) {
    for (int k = 1; k < 65536; ++k) add<SinglePoint>(0, 0, "");
    EXPECT_EQ(failure([&] { add<SinglePoint>(0, 0, ""); }), "too many items in the frame");
}

TEST_F(FrameTest, NewDataForACurve) {
    const auto id = add<Curve>(std::vector<double>{1, 2, 3}, std::vector<double>{1, 2, 3}, "");
    add<TextLabel>(1, 2, "a", "NE", "");
    auto& curve = *frame.findItem<Curve>(1);
    EXPECT_EQ(frame.replotItem(id, {}, std::vector<double>{3, 2, 1}), id);
    EXPECT_EQ(curve.ys, (std::vector<double>{3, 2, 1}));
    EXPECT_TRUE(curve.style.xorMode);
    EXPECT_EQ(frame.replotItem(-1, std::vector<double>{5, 6}, std::vector<double>{7, 8}), id);
    EXPECT_EQ(curve.xs, (std::vector<double>{5, 6}));
    EXPECT_EQ(failure([&] { frame.replotItem(id, {}, std::vector<double>{1}); }), "wrong number of points");
    EXPECT_EQ(failure([&] {
                  frame.replotItem(id, std::vector<double>{1}, std::vector<double>{1, 2});
              }),
              "wrong number of points");
    frame.replotItem(id, {}, {});
    EXPECT_TRUE(curve.xs.empty() && curve.ys.empty());
}

TEST_F(FrameTest, NewDataForOtherItems) {
    const auto text = add<TextLabel>(1, 2, "a", "NE", ""), point = add<SinglePoint>(1, 2, "o"),
               box = add<Box>(0, 0, 1, 1, ""), circle = add<MyCircle>(0, 0, 1, "");
    const std::vector<double> one = {4}, two = {4, 5}, four = {1, 2, 3, 4};
    frame.replotItem(text, one, one);
    EXPECT_EQ(frame.item(1).x, 4);
    frame.item(2).visible = false;
    frame.replotItem(point, {}, one);
    EXPECT_EQ(frame.item(2).y, 4);
    EXPECT_TRUE(frame.item(2).visible);
    EXPECT_EQ(failure([&] { frame.replotItem(point, {}, two); }), "x,y must be scalar for a single point");
    EXPECT_EQ(failure([&] { frame.replotItem(text, two, one); }), "x,y must be scalar for a single point");
    frame.replotItem(box, {}, four);
    EXPECT_EQ(frame.findItem<Box>(3)->height, 4);
    EXPECT_EQ(failure([&] { frame.replotItem(box, {}, two); }), "a box must be indicated by [x,y,w,h]");
    EXPECT_EQ(failure([&] { frame.replotItem(circle, {}, one); }),
              "the plot item is not a curve, point, box or text");
    EXPECT_EQ(failure([&] { frame.replotItem(0, {}, one); }),
              "the plot item is not a curve, point, box or text");
    for (const std::int32_t id : {-1, -2, 5, 65536, 1 << 30})
        EXPECT_EQ(failure([&] { frame.replotItem(id, {}, one); }), "id not recognized") << id;
}

TEST_F(FrameTest, StyleAndTextOfAnItem) {
    const auto text = add<TextLabel>(1, 2, "a", "NE", "");
    const auto curve = add<Curve>(std::vector<double>{1, 2}, std::vector<double>{1, 2}, "");
    EXPECT_TRUE(frame.changeStyle(text, StyleChange::Text, "new"));
    EXPECT_EQ(frame.findItem<TextLabel>(1)->text, "new");
    EXPECT_TRUE(frame.changeStyle(text, StyleChange::Style, "r30"));
    EXPECT_EQ(frame.item(1).style.width, 30);
    EXPECT_TRUE(frame.changeStyle(curve, StyleChange::Style, "ro6"));
    EXPECT_EQ(frame.findItem<Curve>(2)->marker, (MarkerStyle{'o', 6}));
    EXPECT_FALSE(frame.item(2).style.drawLine);
    EXPECT_FALSE(frame.changeStyle(curve, StyleChange::Text, "x"));
    EXPECT_FALSE(frame.changeStyle(77, StyleChange::Style, "x"));
    EXPECT_FALSE(frame.changeStyle(-1, StyleChange::Style, "x"));
}

TEST_F(FrameTest, ItemsMove) {
    const auto curve = add<Curve>(std::vector<double>{1, 2}, std::vector<double>{3, 4}, "");
    const auto text = add<TextLabel>(1, 2, "a", "NE", "");
    EXPECT_TRUE(frame.moveItem(curve, 1, -1));
    EXPECT_EQ(frame.findItem<Curve>(1)->xs, (std::vector<double>{2, 3}));
    EXPECT_EQ(frame.findItem<Curve>(1)->ys, (std::vector<double>{2, 3}));
    EXPECT_TRUE(frame.moveItem(text, 1, 1));
    EXPECT_EQ(frame.item(2).x, 2);
    EXPECT_FALSE(frame.moveItem(9, 1, 1));
}

// ---- Axes and labels -----------------------------------------------------------------

TEST_F(FrameTest, AxisModes) {
    EXPECT_EQ(frame.setAxisMode(1), 0);
    EXPECT_EQ(frame.setAxisMode(257), 1);
    EXPECT_TRUE(frame.equal);
    EXPECT_EQ(frame.setAxisMode(0), 257);
    // the mode 0 hides the axes and changes nothing else
    EXPECT_TRUE(frame.equal);
    EXPECT_FALSE(frame.item(1).visible);
    EXPECT_EQ(frame.setAxisMode(513), 256);
    EXPECT_FALSE(frame.equal);
    EXPECT_FALSE(frame.boxItem()->visible);
    EXPECT_EQ(frame.setAxisMode(1025), 513);
    EXPECT_TRUE(frame.boxItem()->visible);
    EXPECT_EQ(frame.plotArea(), wholeBox);
    EXPECT_EQ(frame.itemCount(), 2);
    frame.wipeFrame(0);
    EXPECT_EQ(failure([&] { frame.setAxisMode(1); }), "vorpen bug! figure graphics has no items");
}

TEST_F(FrameTest, TickFlags) {
    frame.setTickFlags(0, 0);
    EXPECT_EQ(frame.itemCount(), 1);
    frame.setTickFlags(4, 0);
    EXPECT_EQ(frame.findItem<AxisTicks>(1)->xFlags, 4);
    frame.setTickFlags(1024 + 4, 1024);
    EXPECT_EQ(frame.plotArea(), wholeBox);
    EXPECT_EQ(frame.itemCount(), 2);
}

TEST_F(FrameTest, Labels) {
    EXPECT_EQ(frame.setLabel("top", "r30", 't'), 1);
    EXPECT_EQ(frame.setLabel("along", "", 'x'), 1);
    EXPECT_EQ(frame.setLabel("up", "", 'y'), 1);
    const auto* labels = frame.findItem<MainLabels>(1);
    EXPECT_EQ(labels->title.text, "top");
    EXPECT_EQ(labels->title.style.width, 30);
    EXPECT_EQ(labels->xLabel.text, "along");
    EXPECT_EQ(labels->yLabel.text, "up");
    EXPECT_EQ(frame.plotArea(), (FractionRect{0.13, 0.15, 0.83, 0.75}));
}

// ---- In a window -------------------------------------------------------------------------

TEST_F(FrameTest, WithoutAWindowNothingIsHeld) {
    EXPECT_FALSE(frame.On());
    EXPECT_FALSE(frame.Off());
    frame.redraw();
    frame.drawItem(0);
    frame.finishAdd();
}

TEST_F(FrameTest, HoldingTheSurface) {
    RecordingView& view = window();
    const int before = view.presented;
    EXPECT_FALSE(frame.On());
    EXPECT_TRUE(frame.On());
    frame.redraw();
    EXPECT_EQ(view.presented, before);
    EXPECT_TRUE(frame.Off());
    EXPECT_FALSE(frame.Off());
    EXPECT_EQ(view.presented, before + 1);
}

TEST_F(FrameTest, TheOutlineIsDrawnLastAndHiddenItemsAreNot) {
    RecordingView& view = window();
    add<Curve>(std::vector<double>{0, 1}, std::vector<double>{0, 1}, "");
    add<SinglePoint>(0, 0, "o");
    frame.item(2).visible = false;
    frame.redraw();
    EXPECT_EQ(view.drawn.take(),
              "frame 0; clip; stroke; line 57,345 541,8; end; unclip; box 57,8 541,345; end frame");
}

TEST_F(FrameTest, AFixedFrameDrawsOnlyTheNewItem) {
    RecordingView& view = window();
    frame.fixed = true;
    add<Curve>(std::vector<double>{0, 1}, std::vector<double>{0, 1}, "");
    frame.finishAdd();
    EXPECT_EQ(view.drawn.take(), "resume 0; clip; stroke; line 57,345 541,8; end; unclip; end frame");
    frame.fixed = false;
    frame.finishAdd();
    EXPECT_TRUE(view.drawn.take().starts_with("frame 0"));
}

TEST_F(FrameTest, ACurveWithNewDataInvertsFromThenOn) {
    RecordingView& view = window();
    const auto id = add<Curve>(std::vector<double>{0, 1}, std::vector<double>{0, 1}, "");
    frame.replotItem(id, {}, std::vector<double>{1, 0});
    EXPECT_TRUE(view.drawn.take().find("stroke inverting; line 57,8 541,345") != std::string::npos);
    // the old line goes and the new one comes, without the frame
    frame.replotItem(id, {}, std::vector<double>{1, 1});
    EXPECT_EQ(view.drawn.take(),
              "resume 0; clip; stroke inverting; line 57,8 541,345; end; unclip; clip; stroke inverting; "
              "line 57,8 541,8; end; unclip; end frame");
    // the same pixels again are not drawn
    frame.replotItem(id, {}, std::vector<double>{1, 1});
    EXPECT_EQ(view.drawn.take(), "");
}

TEST_F(FrameTest, ACurveMovesOnAFinerSurfaceAlsoWhenAFileWasWritten) {
    RecordingView& view = window();
    view.drawn.dots = 2;
    const auto id = add<Curve>(std::vector<double>{0, 1}, std::vector<double>{0, 1}, "");
    frame.replotItem(id, {}, std::vector<double>{1, 0});
    view.drawn.take();
    std::string file;
    figure.writeSvg(file);
    frame.replotItem(id, {}, std::vector<double>{1, 1});
    EXPECT_EQ(view.drawn.take(),
              "resume 0; clip; stroke inverting; line 114,16 1082,690; end; unclip; clip; stroke inverting; "
              "line 114,16 1082,16; end; unclip; end frame");
}

TEST_F(FrameTest, APointMovesByBeingDrawnTwice) {
    RecordingView& view = window();
    const auto id = add<SinglePoint>(0, 0, "r|^");
    frame.replotItem(id, std::vector<double>{1}, std::vector<double>{1});
    EXPECT_EQ(view.drawn.take(),
              "resume 0; clip; stroke inverting; line 57,349 57,341; end bare; unclip; end frame; "
              "resume 0; clip; stroke inverting; line 541,12 541,4; end bare; unclip; end frame");
}

}  // namespace
}  // namespace vorpen
