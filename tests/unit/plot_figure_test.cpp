// SPDX-License-Identifier: GPL-3.0-or-later

// Figures by number, their frames and windows, and the files they are written
// to.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>

#include "base/errors.h"
#include "unit/plot_support.h"

namespace vorpen {
namespace {

using test::RecordingView;

template <class Action>
std::string failure(Action action) {
    try {
        action();
    } catch (const RuntimeError& error) {
        return error.message;
    }
    return "none";
}

class FigureTest : public testing::Test {
protected:
    FigureTest() { list.reset(); }
    ~FigureTest() override {
        list.setDesktop(nullptr);
        list.reset();
    }
    FigureList& list = figureList();
};

// ---- The list -------------------------------------------------------------------

TEST_F(FigureTest, NumbersOfFigures) {
    EXPECT_EQ(list.selectFigure(1), 1);
    EXPECT_EQ(list.selectFigure(3), 3);
    EXPECT_EQ(list.selectFigure(0), 2);
    EXPECT_EQ(list.selectFigure(-1), 2);
    EXPECT_EQ(list.selectFigure(1), 1);
    EXPECT_EQ(list.currentFigure()->number(), 1);
    EXPECT_EQ(list.figures().size(), 3u);
    EXPECT_EQ(list.selectFigure(128), 128);
    for (const int number : {-2, 129, 1000000})
        EXPECT_EQ(failure([&] { list.selectFigure(number); }), "in figure: number must be between 0 and 128");
}

TEST_F(FigureTest, MinusOneOpensOneWhenThereIsNone) {
    EXPECT_EQ(list.selectFigure(-1), 1);
    list.selectFigure(4);
    list.closeFigure(4);
    EXPECT_EQ(list.currentFigure(), nullptr);
    EXPECT_EQ(list.selectFigure(-1), 1);
}

TEST_F(FigureTest, WhenAllNumbersAreTakenTheNextOneIs129) {
    for (int k = 1; k <= 128; ++k) list.selectFigure(k);
    EXPECT_EQ(list.selectFigure(0), 129);
}

TEST_F(FigureTest, Closing) {
    list.selectFigure(2);
    EXPECT_EQ(list.closeFigure(2), 2);
    EXPECT_EQ(list.closeFigure(2), 0);
    list.selectFigure(4);
    list.selectFigure(7);
    EXPECT_EQ(list.closeFigure(4), 4);
    EXPECT_EQ(list.currentFigure()->number(), 7);
    EXPECT_EQ(list.closeFigure(-3), -3);
    EXPECT_TRUE(list.figures().empty());
    EXPECT_EQ(failure([&] { (void)list.requireFigure(); }), "a figure is required but none was found");
}

/// A desktop of a test, whose windows it remembers.
class RecordingDesktop final : public FigureDesktop {
public:
    std::vector<RecordingView*> windows;
    std::string title;
    bool refuses = false;

    std::unique_ptr<FigureView> openWindow(Figure&, const std::string& windowTitle) override {
        title = windowTitle;
        if (refuses) return nullptr;
        auto view = std::make_unique<RecordingView>();
        windows.push_back(view.get());
        return view;
    }
    [[nodiscard]] int screenWidth() const override { return 1000; }
    [[nodiscard]] int screenHeight() const override { return 800; }
    [[nodiscard]] PixelRect consolePlace() const override { return {}; }
};

TEST_F(FigureTest, ADesktopGivesEachFigureAWindow) {
    RecordingDesktop desktop;
    list.setDesktop(&desktop);
    list.selectFigure(5);
    EXPECT_EQ(desktop.title, "Figure 5");
    EXPECT_EQ(desktop.windows[0]->raised, 1);
    list.selectFigure(-1);
    EXPECT_EQ(desktop.windows[0]->raised, 2);
    desktop.refuses = true;
    EXPECT_EQ(failure([&] { list.selectFigure(6); }), "Graphics or memory problem: could not open a window");
    EXPECT_EQ(list.find(6), nullptr);
    EXPECT_EQ(list.currentFigure()->number(), 5);
}

// ---- Frames ------------------------------------------------------------------------

TEST_F(FigureTest, TheFirstSubplotDiscardsTheWholeFrame) {
    Figure figure(1);
    EXPECT_EQ(figure.selectFrame({0, 0.5, 1, 0.5}), 0);
    EXPECT_EQ(figure.frameCount(), 1);
    EXPECT_EQ(figure.selectFrame({0, 0, 1, 0.5}), 1);
    EXPECT_EQ(figure.currentFrame().id(), 1);
    EXPECT_EQ(figure.selectFrame({0, 0.5, 1, 0.5}), 0);
    EXPECT_EQ(figure.frameCount(), 2);
    EXPECT_EQ(figure.currentIndex(), 0);
    EXPECT_TRUE(figure.setCurrentFrame(1));
    EXPECT_FALSE(figure.setCurrentFrame(2));
    EXPECT_FALSE(figure.setCurrentFrame(-1));
    EXPECT_EQ(figure.currentIndex(), 1);
}

TEST_F(FigureTest, WipingFrames) {
    Figure figure(1);
    figure.selectFrame({0, 0.5, 1, 0.5});
    figure.selectFrame({0, 0, 1, 0.5});
    figure.frame(0).addItem(std::make_unique<SinglePoint>(0, 0, ""));
    EXPECT_TRUE(figure.makeSubplots(0, 0x123456));
    EXPECT_EQ(figure.currentIndex(), 0);
    EXPECT_EQ(figure.frame(0).itemCount(), 1);
    EXPECT_EQ(figure.frame(0).background, 0x123456u);
    EXPECT_EQ(figure.frame(1).background, 0xFFFFFFu);
    EXPECT_FALSE(figure.makeSubplots(2, 0));
    EXPECT_TRUE(figure.makeSubplots(-1, 0x00FF00));
    EXPECT_EQ(figure.frameCount(), 1);
    EXPECT_EQ(figure.frame(0).box(), wholeBox);
    EXPECT_EQ(figure.frame(0).background, 0x00FF00u);
    figure.frame(0).addItem(std::make_unique<SinglePoint>(0, 0, ""));
    EXPECT_TRUE(figure.makeSubplots(-2, 0));
    EXPECT_EQ(figure.frame(0).itemCount(), 1);
    EXPECT_EQ(figure.frame(0).background, 0x00FF00u);
}

TEST_F(FigureTest, TheFrameUnderTheMouse) {
    Figure figure(1);
    EXPECT_EQ(figure.frameUnderMouse({-5, 9999}), 0);
    figure.selectFrame({0, 0.5, 1, 0.5});
    figure.selectFrame({0, 0, 1, 0.5});
    EXPECT_EQ(figure.frameUnderMouse({100, 100}), 0);
    EXPECT_EQ(figure.frameUnderMouse({100, 300}), 1);
    EXPECT_EQ(figure.frameUnderMouse({100, 406}), 0);
}

// ---- Windows ------------------------------------------------------------------------

TEST_F(FigureTest, Painting) {
    Figure figure(1);
    figure.drawAll();
    auto made = std::make_unique<RecordingView>();
    RecordingView& view = *made;
    figure.setView(std::move(made));
    EXPECT_EQ(view.erased, 1);
    EXPECT_EQ(view.drawn.take(), "frame 0; box 57,8 541,345; end frame");
    figure.paused = true;
    figure.drawAll();
    EXPECT_EQ(view.erased, 1);
    figure.paused = false;
    figure.pumpPaint();
    EXPECT_EQ(view.served, 1);
    EXPECT_FALSE(figure.paused);
    view.surfaceFails = true;
    figure.drawAll();
}

TEST_F(FigureTest, AnotherSizeOfTheWindowMovesThePlot) {
    Figure figure(1);
    auto made = std::make_unique<RecordingView>();
    RecordingView& view = *made;
    figure.setView(std::move(made));
    view.area = {0, 0, 1000, 1000};
    figure.resized();
    EXPECT_EQ(figure.frame(0).pixel(0, 0), (Pixel{100, 850}));
    std::string out;
    figure.writeSvg(out);
    EXPECT_NE(out.find("<svg width=\"1000\" height=\"1000\""), std::string::npos);
}

TEST_F(FigureTest, PlacesOnTheScreen) {
    RecordingDesktop desktop;
    list.setDesktop(&desktop);
    Figure& figure = list.openFigure(1);
    figure.position(0.5, 0.1, 0.4, 0.8);
    EXPECT_EQ(desktop.windows[0]->place, (PixelRect{500, 80, 900, 720}));
    EXPECT_EQ(figure.placeOnScreen(), (std::vector<double>{500, 900, 80, 720}));
    figure.position(100, 50, 300, 200);
    EXPECT_EQ(desktop.windows[0]->place, (PixelRect{100, 550, 400, 750}));
    figure.position(std::nan(""), 1e300, 1e300, -1e300);
}

TEST_F(FigureTest, ControlsGoWithTheirFrame) {
    Figure figure(1);
    auto made = std::make_unique<RecordingView>();
    RecordingView& view = *made;
    figure.setView(std::move(made));
    auto button = std::make_unique<PlotableButton>(ControlKind::PushButton, "go");
    const int id = button->controlId = figure.nextControlId();
    figure.controls[id] = figure.frame(0).addItem(std::move(button));
    EXPECT_EQ(figure.controls.at(1), 1);
    figure.frame(0).wipeFrame(1);
    EXPECT_TRUE(figure.controls.empty());
    EXPECT_EQ(view.controls.back(), "removed 1");
    for (int k = 0; k < 32766; ++k) figure.nextControlId();
    EXPECT_EQ(failure([&] { figure.nextControlId(); }),
              "button creation failed; likely cause is a graphics mix-up of some kind");
}

// ---- Files -------------------------------------------------------------------------

/// Whether each element of a text that ends is one that was begun, and there is
/// one root.
bool isWellFormed(const std::string& text) {
    std::vector<std::string> open;
    for (auto at = text.find('<'); at != std::string::npos; at = text.find('<', at + 1)) {
        const auto end = text.find('>', at);
        if (end == std::string::npos || text.substr(at + 1, end - at - 1).find('<') != std::string::npos)
            return false;
        const std::string tag = text.substr(at + 1, end - at - 1);
        if (tag[0] == '?' || tag.back() == '/') continue;
        const std::string name = tag.substr(tag[0] == '/', tag.find_first_of(" \n", 1) - (tag[0] == '/'));
        if (tag[0] != '/') {
            open.push_back(name);
        } else {
            if (open.empty() || open.back() != name) return false;
            open.pop_back();
        }
    }
    return open.empty() && text.ends_with("</svg>\n");
}

TEST_F(FigureTest, AnEmptyFigureInAFile) {
    std::string out;
    Figure(1).writeSvg(out);
    EXPECT_EQ(out,
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n"
              "<svg width=\"570\" height=\"406\"\n"
              "xmlns=\"http://www.w3.org/2000/svg\" stroke=\"black\"  stroke-width=\"1\" "
              "stroke-linecap=\"round\" stroke-linejoin=\"round\" fill=\"none\"\n"
              ">\n"
              "<clipPath id = \"myClip0\"> <rect x = \"57\" y = \"8\" width = \"484\" height = \"337\"/> "
              "</clipPath>\n"
              "<rect x = \"57\" y = \"8\" width = \"484\"  height = \"337\"/>\n"
              "</svg>\n");
}

TEST_F(FigureTest, FramesAreWrittenOneAfterTheOther) {
    Figure figure(1);
    figure.selectFrame({0, 0.5, 1, 0.5});
    figure.currentFrame().addItem(std::make_unique<Box>(0, 0, 1, 1, "r"));
    figure.selectFrame({0, 0, 1, 0.5});
    figure.currentFrame().addItem(
        std::make_unique<Curve>(std::vector<double>{0, 1, 0}, std::vector<double>{0, 1, 1}, ""));
    std::string out;
    figure.writeSvg(out);
    EXPECT_LT(out.find("myClip0"), out.find("clipPath id = \"myClip1"));
    EXPECT_NE(out.find("clip-path=\"url(#myClip1)\""), std::string::npos);
    EXPECT_TRUE(isWellFormed(out)) << out;
}

TEST_F(FigureTest, AnythingMakesAWellFormedFile) {
    std::mt19937_64 random(11);
    const std::vector<double> special = {0,
                                         1,
                                         -1,
                                         std::nan(""),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity(),
                                         1e-300,
                                         1e300,
                                         -1e300,
                                         5e-324,
                                         std::numeric_limits<double>::max(),
                                         -1e-10};
    const auto number = [&] { return special[random() % special.size()]; };
    const auto numbers = [&] {
        std::vector<double> all(random() % 5);
        for (double& x : all) x = number();
        return all;
    };
    const auto bytes = [&] {
        constexpr std::string_view marks = "{}_^\\;:$*r#oxs+<>&\"\xE9\x01";
        std::string text(random() % 10, ' ');
        for (char& c : text) c = random() % 4 ? marks[random() % marks.size()] : static_cast<char>(random());
        return text;
    };
    for (int k = 0; k < 3000; ++k) {
        Figure figure(1);
        Frame& frame = figure.frame(0);
        frame.xScale.linear = random() % 2;
        frame.yScale.linear = random() % 2;
        frame.equal = random() % 4 == 0;
        if (random() % 2)
            frame.setLimits(number(), number(), number(), number());
        else
            frame.setExactLimits({number(), number(), number(), number()});
        frame.addItem(
            std::make_unique<AxisTicks>(static_cast<int>(random() % 128), static_cast<int>(random() % 128)));
        frame.addItem(std::make_unique<Curve>(numbers(), numbers(), bytes()));
        frame.addItem(std::make_unique<SinglePoint>(number(), number(), bytes()));
        frame.addItem(std::make_unique<ErrorBars>(numbers(), numbers(), numbers()));
        frame.addItem(std::make_unique<BarChart>(numbers(), numbers(), numbers(), bytes()));
        frame.addItem(std::make_unique<MyCircle>(number(), number(), number(), bytes()));
        frame.addItem(std::make_unique<Box>(number(), number(), number(), number(), bytes()));
        frame.addItem(
            std::make_unique<TextLabel>(number(), number(), bytes(), bytes(), bytes(), random() % 2));
        frame.setLabel(bytes(), bytes(), "xyt"[random() % 3]);
        std::string out;
        figure.writeSvg(out);
        ASSERT_TRUE(isWellFormed(out)) << out;
    }
}

class PrintTest : public FigureTest {
protected:
    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override { std::filesystem::remove_all(folder); }
    const std::string folder = testing::TempDir() + "vorpen_plot_print";
};

TEST_F(PrintTest, AFigureIsWrittenToAFile) {
    Figure figure(1);
    printFigure(figure, folder + "/fig.svg", "fig.svg");
    std::ifstream in(folder + "/fig.svg", std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    std::string expected;
    figure.writeSvg(expected);
    EXPECT_EQ(content.str(), expected);
}

TEST_F(PrintTest, AFileThatCannotBeOpened) {
    Figure figure(1);
    EXPECT_EQ(failure([&] { printFigure(figure, folder + "/none/fig.svg", "none/fig"); }),
              "in print: cannot open none/fig");
}

TEST_F(PrintTest, AFileThatCannotBeWritten) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "needs /dev/full";
    Figure figure(1);
    EXPECT_EQ(failure([&] { printFigure(figure, "/dev/full", "full"); }),
              "in print: writing to figure file failed");
}

}  // namespace
}  // namespace vorpen
