// SPDX-License-Identifier: GPL-3.0-or-later

// What plot commands draw in a window, and when: all anew, or one item alone.

#include <gtest/gtest.h>

#include "unit/engine_support.h"
#include "unit/plot_support.h"

namespace vorpen {
namespace {

using test::RecordingView;
using testing::TypedEngine;

class RecordingDesktop final : public FigureDesktop {
public:
    RecordingView* view = nullptr;  ///< of the figure opened last
    std::vector<std::string> titles;
    bool opens = true;

    std::unique_ptr<FigureView> openWindow(Figure&, const std::string& title) override {
        titles.push_back(title);
        if (!opens) return nullptr;
        auto made = std::make_unique<RecordingView>();
        view = made.get();
        return made;
    }
    [[nodiscard]] int screenWidth() const override { return 1000; }
    [[nodiscard]] int screenHeight() const override { return 800; }
    [[nodiscard]] PixelRect consolePlace() const override { return {10, 20, 510, 420}; }
};

class Windows : public ::testing::Test {
protected:
    Windows() { figureList().setDesktop(&desktop); }
    ~Windows() override {
        figureList().reset();
        figureList().setDesktop(nullptr);
    }
    std::string type(const std::string& line) { return engine.type(line); }
    /// What a line draws.
    std::string drawnBy(const std::string& line) {
        desktop.view->drawn.take();
        type(line);
        return desktop.view->drawn.take();
    }
    static bool isWhole(const std::string& drawn) { return drawn.starts_with("frame 0"); }

    TypedEngine engine;
    RecordingDesktop desktop;
};

TEST_F(Windows, AreOpenedByNumber) {
    type("figure(3);");
    EXPECT_EQ(desktop.titles, std::vector<std::string>{"Figure 3"});
    desktop.opens = false;
    EXPECT_EQ(type("figure(4)"), "in figure: Graphics or memory problem: could not open a window");
    EXPECT_EQ(type("figure(-1)"), "3");
    type("close(0);");
    EXPECT_EQ(type("plot(1:3,1:3)"), "in plot: Graphics or memory problem: could not open a window");
}

TEST_F(Windows, ANewPlotDrawsTheFrame) {
    type("figure;");
    EXPECT_TRUE(isWhole(drawnBy("plot(1:3,1:3);")));
}

TEST_F(Windows, AFixedFrameGetsTheNewItemAlone) {
    type("plot(1:3,1:3);");
    type("fix;");
    EXPECT_EQ(drawnBy("plot([1,2,3],[3,2,1]);"),
              "resume 0; clip; stroke; line 57,29 299,134 541,239; end; unclip; end frame");
}

TEST_F(Windows, ATextDrawsTheFrameUnlessThatIsSwitchedOff) {
    type("plot(1:3,1:3);");
    EXPECT_TRUE(isWhole(drawnBy("text(2,2,\"a\");")));
    type("set(\"text\",0);");
    const std::string drawn = drawnBy("text(2,3,\"b\");");
    EXPECT_TRUE(drawn.starts_with("resume 0; text")) << drawn;
    EXPECT_TRUE(drawnBy("text(2,3,\"c\");").starts_with("resume 0; text"));
}

TEST_F(Windows, ACurveWithNewDataIsDrawnInverting) {
    type("fix;");
    type("plot([0,1,0],[0,1,1]);");
    EXPECT_TRUE(isWhole(drawnBy("replot(-1,[1,1,0]);")));
    // the old line goes, the new one comes
    const std::string drawn = drawnBy("replot(-1,[0,1,0]);");
    EXPECT_TRUE(drawn.starts_with("resume 0; clip; stroke inverting; line ")) << drawn;
    EXPECT_EQ(drawnBy("replot(-1,[0,1,0]);"), "");
}

TEST_F(Windows, EverythingIsDrawnAnewWhenAsked) {
    type("plot(1:3,1:3);");
    EXPECT_TRUE(isWhole(drawnBy("replot();")));
    EXPECT_TRUE(isWhole(drawnBy("replot(1);")));
    EXPECT_TRUE(isWhole(drawnBy("update;")));
    EXPECT_TRUE(isWhole(drawnBy("grid(0);")));
    EXPECT_TRUE(isWhole(drawnBy("axis(\"off\");")));
    EXPECT_TRUE(isWhole(drawnBy("wipe;")));
}

TEST_F(Windows, HaveTheirPlaces) {
    EXPECT_EQ(type("figpos"), "1 1000 1 800");
    EXPECT_EQ(type("figpos(0)"), "10 510 380 780");
    type("figure;");
    EXPECT_EQ(type("figpos(0.5,0.9,0.1,0.9)"), "500 900 80 720");
    EXPECT_EQ(desktop.view->place, (PixelRect{500, 80, 900, 720}));
}

TEST_F(Windows, ShowControlsAndMenus) {
    type("figure;");
    type("createButton(\"go\",\"b\",[50,50,0]);");
    ASSERT_FALSE(desktop.view->controls.empty());
    EXPECT_EQ(desktop.view->controls.back(), "go 299,176 20x20");
    type("menu(list(\"File\"),list(list(\"open->1\")));");
    ASSERT_EQ(desktop.view->menus.size(), 1u);
    EXPECT_EQ(desktop.view->menus[0].heading, "File");
    EXPECT_EQ(desktop.view->menus[0].items[0].label, "open");
    type("wipe;");
    EXPECT_EQ(desktop.view->controls.back(), "removed 1");
}

TEST_F(Windows, ControlsStandWhereTheirNumbersSay) {
    type("figure; axis(0,10,0,10);");
    const auto placed = [this](const std::string& arguments) {
        type("createButton(" + arguments + ");");
        return desktop.view->controls.back();
    };
    // Two and four numbers are of the axes, three and five percent of them.
    EXPECT_EQ(placed("\"go\""), "go 57,345 20x20");
    EXPECT_EQ(placed("\"go\",[5,5]"), "go 299,176 20x20");
    EXPECT_EQ(placed("\"go\",\"b\",[5,5]"), "go 299,176 20x20");
    EXPECT_EQ(placed("\"go\",\"b\",[5,5,1,2]"), "go 299,176 48x68");
    EXPECT_EQ(placed("\"go\",\"b\",[50,50,0]"), "go 299,176 20x20");
    EXPECT_EQ(placed("\"go\",\"b\",[50,50,10,20,0]"), "go 299,176 48x68");
    EXPECT_EQ(placed("[5,5,1,2],\"go\",\"e\""), "go 299,176 48x68");
    EXPECT_EQ(figureList().requireFigure().controls.rbegin()->first, 7) << "they are counted";
}

TEST_F(Windows, TheCursorOfAFunctionFollowsTheMouse) {
    type("fplot(x;x,[-1,1]);");
    desktop.view->drawn.take();
    interaction().mouseMove({299, 100}, false);
    EXPECT_NE(desktop.view->drawn.take().find("stroke inverting"), std::string::npos);
    std::string file;
    figureList().requireFigure().writeSvg(file);
    EXPECT_EQ(file.find("rgb(170,0,170)"), std::string::npos);
}

}  // namespace
}  // namespace vorpen
