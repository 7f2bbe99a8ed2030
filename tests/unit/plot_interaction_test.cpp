// SPDX-License-Identifier: GPL-3.0-or-later

// What mouse, keys and controls of a figure do to the mouse's record, to
// dragable items and to user functions. In the frame 0 to 10 of each test,
// pixels are 57 to 541 and 345 to 8.

#include "plot/interaction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <stdexcept>

#include "base/errors.h"
#include "base/interrupt.h"
#include "unit/plot_support.h"

namespace vorpen {
namespace {

/// An engine with functions of some names, which records their calls.
class RecordingTarget final : public EventTarget {
public:
    std::map<std::string, std::function<double()>, std::less<>> functions;
    std::set<std::string, std::less<>> disabled;
    std::vector<std::string> calls, boxes, printed, typed;

    [[nodiscard]] bool hasFunction(std::string_view name) const override { return functions.contains(name); }
    double callFunction(std::string_view name, std::array<double, 2> place,
                        std::span<const double> second) override {
        std::string call(name);
        for (const double x : {place[0], place[1]})
            call += " " + std::to_string(static_cast<int>(std::round(x)));
        for (const double x : second) call += " " + std::to_string(static_cast<int>(x));
        calls.push_back(call);
        return functions.find(name)->second();
    }
    [[nodiscard]] bool isEnabled(std::string_view name) const override { return !disabled.contains(name); }
    void disable(std::string_view name) override { disabled.emplace(name); }
    void messageBox(std::string_view text) override { boxes.emplace_back(text); }
    void print(std::string_view text) override { printed.emplace_back(text); }
    void typeCommand(std::string_view text) override { typed.emplace_back(text); }

    std::string take() {
        std::string all;
        for (const std::string& call : calls) all += (all.empty() ? "" : "; ") + call;
        calls.clear();
        return all;
    }
};

class InteractionTest : public testing::Test {
protected:
    InteractionTest() : figure(makeFigure()), frame(figure.frame(0)) {
        events.reset();
        events.setTarget(&target);
        for (const char* name : {"onKeyDown", "onLDown", "onLUp", "onLDouble", "onRDown", "onRUp", "onMove",
                                 "onDrag", "onDragable", "onButton"})
            target.functions[name] = [] { return 7.0; };
        frame.setExactLimits({0, 10, 0, 10});
        frame.rescale();
    }
    ~InteractionTest() override {
        events.setTarget(nullptr);
        events.reset();
        figureList().reset();
    }
    static Figure& makeFigure() {
        figureList().reset();
        return figureList().openFigure(1);
    }
    std::int32_t addPoint(double x, double y) {
        return frame.addItem(std::make_unique<SinglePoint>(x, y, "ro^"));
    }

    RecordingTarget target;
    Figure& figure;
    Frame& frame;
    Interaction& events = interaction();
};

constexpr Pixel middle{299, 176}, corner{57, 345};

TEST_F(InteractionTest, LettersOfTheRecord) {
    EXPECT_EQ(MouseState::entryOf('x'), MOUSE_X);
    EXPECT_EQ(MouseState::entryOf('D'), MOUSE_DOUBLE);
    EXPECT_EQ(MouseState::entryOf('k'), MOUSE_KEY);
    EXPECT_EQ(MouseState::entryOf('z'), -1);
    EXPECT_EQ(MouseState::entryOf('\0'), -1);
}

TEST_F(InteractionTest, PressAndRelease) {
    events.leftPress(middle);
    EXPECT_EQ(events.mouse[MOUSE_LEFT], 1);
    EXPECT_EQ(events.mouse[MOUSE_CLICKED], 1);
    EXPECT_NEAR(events.mouse[MOUSE_PRESS_X], 5, 0.02);
    EXPECT_NEAR(events.mouse[MOUSE_PRESS_Y], 5, 0.02);
    EXPECT_EQ(events.mouse.pressPixel, middle);
    events.doubleClick();
    EXPECT_EQ(events.mouse[MOUSE_DOUBLE], 1);
    events.leftRelease();
    EXPECT_EQ(events.mouse[MOUSE_LEFT], 0);
    EXPECT_EQ(events.mouse[MOUSE_DOUBLE], 0);
    events.rightPress();
    EXPECT_EQ(events.mouse[MOUSE_RIGHT], 1);
    events.rightRelease();
    EXPECT_EQ(events.mouse[MOUSE_RIGHT], 0);
    EXPECT_EQ(target.take(), "onLDown 5 5 0; onLDouble 5 5 0; onLUp 5 5 0; onRDown 5 5 0; onRUp 5 5 0");
    EXPECT_EQ(events.mouse[MOUSE_RESULT], 7);
    EXPECT_EQ(events.mouse.read(MOUSE_CLEAR_CLICK), 0);
    EXPECT_EQ(events.mouse.read(MOUSE_CLICKED), 0);
}

TEST_F(InteractionTest, Keys) {
    events.keyDown('A');
    EXPECT_EQ(events.mouse[MOUSE_KEY], 'A');
    EXPECT_EQ(target.take(), "");
    events.character('a');
    EXPECT_EQ(events.mouse[MOUSE_KEY], 'a');
    EXPECT_EQ(target.calls, std::vector<std::string>{"onKeyDown -1 10 0"});
    events.keyUp();
    EXPECT_EQ(events.mouse[MOUSE_KEY], 0);
    events.keyDown(37);
    EXPECT_EQ(target.calls.size(), 2u);
    // function keys bring no character
    events.keyDown(112);
    events.keyDown(135);
    EXPECT_EQ(target.calls.size(), 4u);
    events.keyDown(111);
    events.keyDown(136);
    EXPECT_EQ(target.calls.size(), 4u);
}

TEST_F(InteractionTest, CodesBelow65AreKeysAndFrom65OnCharacters) {
    for (int code = 1; code < 200; ++code) {
        events.keyDown(code);
        const bool isFunctionKey = code >= 112 && code <= 135;
        EXPECT_EQ(target.calls.size(), code < 65 || isFunctionKey ? 1u : 0u) << code;
        EXPECT_EQ(events.mouse[MOUSE_KEY], code);
        target.take();
    }
}

TEST_F(InteractionTest, EachPressIsRememberedUntilAsked) {
    figure.menuCommands = {"x=1"};
    const std::vector<std::function<void()>> presses = {
        [this] { events.leftPress(middle); }, [this] { events.rightPress(); },
        [this] { events.controlPressed(figure, 1, 0); }, [this] { events.menuChosen(figure, 0); }};
    for (std::size_t k = 0; k < presses.size(); ++k) {
        EXPECT_EQ(events.mouse.read(MOUSE_CLICKED), 0) << k;
        presses[k]();
        EXPECT_EQ(events.mouse.read(MOUSE_CLICKED), 1) << k;
        events.mouse.read(MOUSE_CLEAR_CLICK);
    }
    for (const auto& other : std::vector<std::function<void()>>{
             [this] { events.leftRelease(); }, [this] { events.rightRelease(); },
             [this] { events.doubleClick(); }, [this] { events.mouseMove(corner, true); },
             [this] { events.character('a'); }}) {
        other();
        EXPECT_EQ(events.mouse.read(MOUSE_CLICKED), 0);
    }
}

TEST_F(InteractionTest, WithoutFunctionFigureOrTargetNothingHappens) {
    target.functions.clear();
    events.leftPress(middle);
    EXPECT_EQ(target.take(), "");
    figureList().closeFigure(1);
    events.mouseMove(corner, false);
    events.leftPress(corner);
    events.setTarget(nullptr);
    events.leftPress(corner);
    events.fireEvent("onLUp");
}

TEST_F(InteractionTest, WithoutAFigurePressesAreToldAndMovesAreNot) {
    figureList().closeFigure(1);
    events.mouseMove(corner, false);
    events.mouseMove(corner, true);
    EXPECT_EQ(target.take(), "");
    EXPECT_EQ(events.mouse.pixel, corner);
    events.leftPress(middle);
    EXPECT_EQ(target.calls.size(), 1u);
    EXPECT_TRUE(target.take().starts_with("onLDown"));
    EXPECT_EQ(events.mouse[MOUSE_LEFT], 1);
    events.leftRelease();
    EXPECT_TRUE(target.take().starts_with("onLUp"));
}

TEST_F(InteractionTest, MovesWithAndWithoutTheButton) {
    events.mouseMove(middle, false);
    events.mouseMove(corner, true);
    EXPECT_EQ(target.take(), "onMove 5 5 0; onDrag 0 0 0");
    EXPECT_NEAR(events.mouse[MOUSE_X], 0, 0.02);
    target.disabled = {"onMove", "onDrag"};
    events.mouseMove(middle, false);
    events.mouseMove(corner, true);
    EXPECT_EQ(target.take(), "");
}

TEST_F(InteractionTest, TheFrameUnderTheMouseIsCurrentDuringACall) {
    figure.selectFrame({0, 0, 1, 0.5});
    figure.selectFrame({0, 0.5, 1, 0.5});
    figure.currentFrame().setExactLimits({0, 100, 0, 100});
    figure.currentFrame().rescale();
    int current = -1;
    target.functions["onLDown"] = [&] {
        current = figure.currentIndex();
        // what the function makes current does not stay
        figureList().openFigure(2);
        figure.setCurrentFrame(0);
        return 0.0;
    };
    events.leftPress({299, 88});
    EXPECT_EQ(current, 1);
    EXPECT_EQ(events.mouse[MOUSE_FRAME], 1);
    EXPECT_EQ(target.take(), "onLDown 50 50 0");
    EXPECT_EQ(figureList().currentFigure(), &figure);
    EXPECT_EQ(figure.currentIndex(), 1);
}

TEST_F(InteractionTest, WithoutAFunctionTheCurrentFrameStays) {
    target.functions.clear();
    figure.selectFrame({0, 0, 1, 0.5});
    figure.currentFrame().setExactLimits({0, 100, 0, 100});
    figure.currentFrame().rescale();
    figure.selectFrame({0, 0.5, 1, 0.5});
    ASSERT_EQ(figure.currentIndex(), 1);
    const int below = figure.frameUnderMouse({299, 300});
    for (const bool leftDown : {false, true}) events.mouseMove({299, 300}, leftDown);
    events.leftPress({299, 300});
    EXPECT_EQ(figure.currentIndex(), 1);
    // What scripts ask for is that of the frame under the mouse.
    EXPECT_EQ(events.mouse[MOUSE_FRAME], below);
    EXPECT_NEAR(events.mouse[MOUSE_X], 50, 0.2);
    EXPECT_NEAR(events.mouse[MOUSE_PRESS_X], 50, 0.2);
}

TEST_F(InteractionTest, AFunctionMayCloseItsFigure) {
    target.functions["onLDown"] = [] {
        figureList().closeFigure(1);
        return 0.0;
    };
    events.leftPress(middle);
    EXPECT_EQ(figureList().currentFigure(), nullptr);
}

TEST_F(InteractionTest, FailuresAreShownAndStopFrequentEvents) {
    const auto fails = []() -> double { raiseRuntimeError("index must be positive", "f"); };
    target.functions["onMove"] = target.functions["onLDown"] = fails;
    events.mouseMove(middle, false);
    events.mouseMove(middle, false);
    EXPECT_EQ(target.calls.size(), 1u);
    events.leftPress(middle);
    events.leftPress(middle);
    EXPECT_EQ(target.calls.size(), 3u);
    EXPECT_EQ(target.boxes, (std::vector<std::string>{"onMove --> in f: index must be positive disabled",
                                                      "onLDown --> in f: index must be positive disabled",
                                                      "onLDown --> in f: index must be positive disabled"}));
    target.functions["onLUp"] = []() -> double { throw OperatorFailure{'B'}; };
    events.leftRelease();
    EXPECT_EQ(target.boxes.back(), "onLUp --> " + operatorFailureText('B') + " disabled");
}

TEST_F(InteractionTest, UnknownFailuresPassOn) {
    target.functions["onLDown"] = []() -> double { throw std::runtime_error("?"); };
    try {
        events.leftPress(middle);
        FAIL();
    } catch (const PlainFailure& failure) {
        EXPECT_EQ(failure.message, "error during mouse function");
    }
}

TEST_F(InteractionTest, AFunctionIsNotEnteredAgain) {
    target.functions["onLDown"] = [this] {
        events.leftPress(corner);
        return 1.0;
    };
    events.leftPress(middle);
    EXPECT_EQ(target.calls.size(), 1u);
    EXPECT_EQ(target.boxes,
              std::vector<std::string>{"onLDown --> recursion not allowed in mouse function disabled"});
    // and works the next time
    target.functions["onLDown"] = [] { return 2.0; };
    events.leftPress(middle);
    EXPECT_EQ(events.mouse[MOUSE_RESULT], 2);
}

TEST_F(InteractionTest, MovesDuringAMoveAreOneMoreCall) {
    int moves = 0;
    target.functions["onMove"] = [&] {
        EXPECT_TRUE(events.isCalling());
        if (++moves == 1)
            for (const Pixel at : {corner, Pixel{100, 100}, middle}) events.mouseMove(at, false);
        return 0.0;
    };
    events.mouseMove(corner, false);
    EXPECT_EQ(target.take(), "onMove 0 0 0; onMove 5 5 0");
    EXPECT_TRUE(target.boxes.empty());
    EXPECT_FALSE(events.isCalling());
    // A function that fails or goes away in between is not called again.
    target.functions["onMove"] = [&]() -> double {
        events.mouseMove(middle, false);
        raiseRuntimeError("no");
    };
    events.mouseMove(corner, false);
    EXPECT_EQ(target.calls.size(), 1u);
    EXPECT_EQ(target.boxes, std::vector<std::string>{"onMove --> no disabled"});
}

TEST_F(InteractionTest, AnInterruptedFunctionIsToldOnALine) {
    target.functions["onMove"] = []() -> double {
        requestInterrupt();
        checkInterrupt();
        return 0;
    };
    events.mouseMove(corner, false);
    forgetInterrupt();
    EXPECT_TRUE(target.boxes.empty());
    EXPECT_TRUE(target.disabled.empty());
    EXPECT_EQ(target.printed, std::vector<std::string>{"{r onMove interrupted}"});
}

// ---- Dragging --------------------------------------------------------------------

TEST_F(InteractionTest, PickingTheItemNearThePixel) {
    const auto id = addPoint(5, 5);
    EXPECT_EQ(events.pick(figure, middle), 0);
    Interaction::makeDragable(figure, id);
    EXPECT_TRUE(frame.item(1).dragable);
    EXPECT_EQ(events.pick(figure, middle), id);
    // 10 and 10 pixels away are 200 squared, which is not below
    EXPECT_EQ(events.pick(figure, {309, 186}), 0);
    EXPECT_EQ(events.pick(figure, {309, 185}), id);
    EXPECT_EQ(events.pick(figure, {-2147483647, 2147483647}), 0);
}

TEST_F(InteractionTest, AnItemOfAnotherFrameIsPickedToo) {
    figure.selectFrame({0, 0, 1, 0.5});
    figure.selectFrame({0, 0.5, 1, 0.5});
    ASSERT_EQ(figure.frameCount(), 2);
    for (const int k : {0, 1}) {
        figure.setCurrentFrame(k);
        figure.currentFrame().setExactLimits({0, 10, 0, 10});
        figure.currentFrame().rescale();
    }
    const std::int32_t id = figure.frame(1).addItem(std::make_unique<SinglePoint>(5, 5, "ro^"));
    EXPECT_EQ(id, 65536 + ItemId::of(id).item);
    const std::int32_t first = figure.frame(0).addItem(std::make_unique<SinglePoint>(1, 1, "ro^"));
    Interaction::makeDragable(figure, first);
    Interaction::makeDragable(figure, id);
    EXPECT_EQ(events.pick(figure, figure.frame(1).pixel(5, 5)), id);
    EXPECT_EQ(events.pick(figure, figure.frame(0).pixel(1, 1)), first);
}

TEST_F(InteractionTest, ThePickRadiusCanBeSet) {
    const auto id = addPoint(5, 5);
    Interaction::makeDragable(figure, id);
    EXPECT_EQ(events.pickRadiusSquared, 200);
    events.pickRadiusSquared = 50;
    EXPECT_EQ(events.pick(figure, {309, 176}), 0);
    EXPECT_EQ(events.pick(figure, {306, 176}), id);
    events.reset();
    EXPECT_EQ(events.pickRadiusSquared, 200);
}

TEST_F(InteractionTest, ADraggedItemStaysInItsRegion) {
    const auto id = addPoint(5, 5);
    const DragRegion region{4, 4, 2, 3};
    Interaction::makeDragable(figure, id, &region);
    events.leftPress(middle);
    EXPECT_EQ(events.mouse[MOUSE_ITEM], id);
    EXPECT_EQ(target.take(), "onDragable 5 5 1; onLDown 5 5 0");
    events.mouseMove({541, 8}, true);
    EXPECT_EQ(target.take(), "onDragable 10 10 1");
    EXPECT_EQ(frame.item(1).x, 6);
    EXPECT_EQ(frame.item(1).y, 7);
    events.mouseMove(corner, true);
    EXPECT_EQ(frame.item(1).x, 4);
    EXPECT_EQ(frame.item(1).y, 4);
    events.leftPress(corner);
    EXPECT_EQ(events.mouse[MOUSE_ITEM], 0);
}

TEST_F(InteractionTest, ItemsThatAreGoneLeaveTheList) {
    addPoint(1, 1);
    frame.dragables[7] = {};
    frame.dragables[9] = {};
    EXPECT_EQ(events.pick(figure, middle), 0);
    EXPECT_EQ(target.printed, std::vector<std::string>{"The list of dragable items has become invalid."});
    EXPECT_EQ(frame.dragables.count(7), 0u);
    EXPECT_EQ(frame.dragables.count(9), 1u);
    Interaction::dragTo(figure, 9, middle);
    Interaction::dragTo(figure, -1, middle);
    Interaction::dragTo(figure, 1 << 24, middle);
}

TEST_F(InteractionTest, OnlyItemsThatExistAreDragable) {
    const auto failure = [this](std::int32_t id) -> std::string {
        try {
            Interaction::makeDragable(figure, id);
        } catch (const RuntimeError& error) {
            return error.message;
        }
        return "none";
    };
    EXPECT_EQ(failure(9), "invalid id: no such item in the frame");
    EXPECT_EQ(failure(65536), "id not recognized: invalid frame");
    EXPECT_EQ(failure(-1), "id not recognized: invalid frame");
}

// ---- Controls and menus --------------------------------------------------------------

TEST_F(InteractionTest, ControlsFireWithTheirIdAndState) {
    auto button = std::make_unique<PlotableButton>(ControlKind::CheckBox, "on");
    const int control = button->controlId = figure.nextControlId();
    figure.controls[control] = frame.addItem(std::move(button));
    events.controlPressed(figure, control, 1);
    EXPECT_EQ(target.take(), "onButton -1 10 1 1");
    EXPECT_EQ(frame.item(1).value(), std::vector<double>{1});
    EXPECT_EQ(events.mouse[MOUSE_CLICKED], 1);
    events.controlPressed(figure, 99, 1);
    figure.controls[5] = 77;
    figure.controls[6] = -1;
    events.controlPressed(figure, 5, 1);
    events.controlPressed(figure, 6, 1);
    EXPECT_EQ(target.take(), "");
}

TEST_F(InteractionTest, MenusTypeTheirCommand) {
    figure.menuCommands = {"x=1", "y=2"};
    events.menuChosen(figure, 1);
    events.menuChosen(figure, 2);
    events.menuChosen(figure, -1);
    EXPECT_EQ(target.typed, std::vector<std::string>{"y=2"});
}

// ---- The cursor on a curve -----------------------------------------------------------

std::vector<double> sampled(const std::function<double(double)>& f) {
    std::vector<double> values;
    for (int k = 0; k <= 500; ++k) values.push_back(f(k * 0.02));
    return values;
}

TEST(CurveFeature, ZerosAndExtremaNearAPoint) {
    const std::vector<double> x = sampled([](double t) { return t; });
    const std::vector<double> sine = sampled([](double t) { return std::sin(t); });
    const CurveFeature zero = featureNear(x, sine, 155);
    ASSERT_TRUE(zero.found);
    EXPECT_NEAR(zero.x, 3.14159265, 1e-4);
    EXPECT_EQ(zero.y, 0);
    const CurveFeature top = featureNear(x, sine, 85);
    ASSERT_TRUE(top.found);
    EXPECT_NEAR(top.x, 1.57079633, 1e-4);
    EXPECT_NEAR(top.y, 1, 1e-6);
    EXPECT_FALSE(featureNear(x, sine, 40).found);
    EXPECT_FALSE(featureNear(x, sine, 9999).found);
    EXPECT_FALSE(featureNear({}, {}, 0).found);
    EXPECT_FALSE(featureNear(x, std::vector<double>(501, std::nan("")), 5).found);
}

TEST(CurveFeature, ZerosAreLookedForNearerThanExtrema) {
    // Of 500 points a zero counts within 5 and an extremum within 25.
    std::vector<double> x(500), line(500), parabola(500);
    for (int k = 0; k < 500; ++k) {
        x[static_cast<std::size_t>(k)] = k;
        line[static_cast<std::size_t>(k)] = k - 250;
        parabola[static_cast<std::size_t>(k)] = 1000 + (k - 250.0) * (k - 250.0);
    }
    for (int k = 200; k < 300; ++k) {
        const auto index = static_cast<std::size_t>(k);
        // The interval on either side of the zero counts.
        EXPECT_EQ(featureNear(x, line, index).found, k >= 250 - 6 && k <= 250 + 5) << k;
        EXPECT_EQ(featureNear(x, parabola, index).found, k >= 250 - 25 && k <= 250 + 25) << k;
    }
    EXPECT_EQ(featureNear(x, line, 246).x, 250);
    EXPECT_EQ(featureNear(x, parabola, 270).x, 250);
}

TEST_F(InteractionTest, TheCursorFollowsTheMouse) {
    trackCurve(frame, sampled([](double t) { return t; }), sampled([](double t) { return t * t / 10 + 1; }));
    ASSERT_TRUE(frame.tracker.active());
    for (int k = 1; k < 5; ++k) EXPECT_FALSE(frame.item(k).visible);
    events.mouseMove(middle, false);
    const auto& vertical = *frame.findItem<Curve>(frame.tracker.vertical);
    const auto& horizontal = *frame.findItem<Curve>(frame.tracker.horizontal);
    EXPECT_TRUE(vertical.visible && horizontal.visible && vertical.style.xorMode);
    const auto isDrawnIn = [](const Curve& curve, const char* text) {
        PlotStyle style;
        style.parseStyle(text);
        return curve.style.lineColour == style.lineColour && curve.style.width == 1 && curve.style.xorMode;
    };
    EXPECT_TRUE(isDrawnIn(vertical, "m"));
    EXPECT_TRUE(isDrawnIn(horizontal, "m"));
    EXPECT_TRUE(isDrawnIn(*frame.findItem<Curve>(frame.tracker.marker), "g"));
    EXPECT_NEAR(vertical.xs[0], 5, 0.02);
    EXPECT_NEAR(horizontal.ys[0], 3.5, 0.02);
    EXPECT_FALSE(frame.findItem<TextLabel>(frame.tracker.label)->visible);
    // far to both sides it stays on the curve
    events.mouseMove({-5000, 0}, false);
    EXPECT_EQ(vertical.xs[0], 0);
    events.mouseMove({5000, 0}, false);
    EXPECT_EQ(vertical.xs[0], 10);
    std::string out;
    figure.writeSvg(out);
    EXPECT_EQ(out.find("rgb(170,0,170)"), std::string::npos);
}

TEST_F(InteractionTest, TheCursorSnapsToAnExtremum) {
    trackCurve(frame, sampled([](double t) { return t; }),
               sampled([](double t) { return 8 - (t - 4) * (t - 4) / 4; }));
    events.mouseMove({frame.pixelX(4.1), 100}, false);
    const auto& label = *frame.findItem<TextLabel>(frame.tracker.label);
    EXPECT_TRUE(label.visible);
    EXPECT_EQ(label.text, "4");
    const auto& marker = *frame.findItem<Curve>(frame.tracker.marker);
    EXPECT_TRUE(marker.visible);
    EXPECT_EQ(marker.xs.size(), 21u);
    events.mouseMove({frame.pixelX(7), 100}, false);
    EXPECT_FALSE(label.visible);
    EXPECT_FALSE(marker.visible);
}

TEST_F(InteractionTest, ACursorNeedsTwoPoints) {
    trackCurve(frame, {1}, {2});
    EXPECT_FALSE(frame.tracker.active());
    frame.tracker.vertical = 55;
    events.mouseMove(middle, false);
}

}  // namespace
}  // namespace vorpen
