// SPDX-License-Identifier: GPL-3.0-or-later

// Figures on screens that have more dots than pixels. The tests of windows hold
// at any resolution; they are run at several (QT_SCALE_FACTOR), and on two
// screens that differ.

#include <QtGui/QScreen>
#include <QtWidgets/QMenuBar>
#include <array>
#include <cmath>
#include <utility>

#include "window/figure_support.h"

namespace vorpen {
namespace {

constexpr QRgb white = qRgb(255, 255, 255), red = qRgb(170, 0, 0);

PlotStyle style(std::string_view text) {
    PlotStyle result;
    result.width = 1;
    result.parseStyle(text);
    return result;
}

/// A picture of 200 by 100 pixels with a frame in it and a data area in that.
class Drawing {
public:
    explicit Drawing(double resolution) {
        surface.resize(200, 100, resolution);
        surface.resumeFrame({0, {10, 10, 190, 90}, {20, 20, 180, 80}, {19, 19, 181, 82}, 0xFFFFFF});
    }

    PainterSurface surface;

    [[nodiscard]] QRgb at(int x, int y) const { return surface.image().pixel(x, y); }
    [[nodiscard]] int dot(double pixel) const { return static_cast<int>(pixel * surface.resolution()); }
    void line(Pixel from, Pixel to, const char* pen) {
        surface.beginStroke(style(pen));
        surface.polyline(std::array{dots(from), dots(to)});
        surface.endGroup(GroupEnd::Line);
    }
    [[nodiscard]] Pixel dots(Pixel p) const { return {dot(p.x), dot(p.y)}; }
    [[nodiscard]] PixelRect dots(const PixelRect& r) const {
        return {dot(r.left), dot(r.top), dot(r.right), dot(r.bottom)};
    }
    void write(const TextGroup& group, std::string_view text) {
        surface.beginText(group);
        surface.text({100, 50}, text, Font{Face::Times, 20}, 0);
        surface.endText();
    }
    /// The dots that are not white.
    [[nodiscard]] QRect drawn() const {
        QRect box;
        for (int y = 0; y < surface.image().height(); ++y)
            for (int x = 0; x < surface.image().width(); ++x)
                if (at(x, y) != white) box |= QRect(x, y, 1, 1);
        return box;
    }
};

/// What has edges along the axes alone.
void drawUpright(Drawing& drawing) {
    PainterSurface& surface = drawing.surface;
    surface.beginFrame({1, {100, 0, 190, 50}, {110, 10, 180, 40}, {110, 10, 180, 40}, 0x00FFEE});
    surface.resumeFrame({0, {10, 10, 190, 90}, {20, 20, 180, 80}, {19, 19, 181, 82}, 0xFFFFFF});
    surface.box(drawing.dots(PixelRect{20, 20, 180, 80}), false);
    surface.setClipping(true);
    drawing.line({-50, 30}, {500, 30}, "r1");
    drawing.line({-50, 40}, {500, 40}, "g2");
    drawing.line({-50, 50}, {500, 50}, "b5");
    drawing.line({60, -50}, {60, 500}, "m6");
    drawing.line({90, -50}, {90, 500}, "c3^");
    surface.setClipping(false);
    PlotStyle filled = style("k1");
    filled.fillColour = 0xC8FFFF;
    surface.beginStrokeAndFill(filled);
    surface.bar(drawing.dots(PixelRect{30, 60, 41, 80}));
    surface.bar(drawing.dots(PixelRect{40, 70, 51, 80}));
    surface.box(drawing.dots(PixelRect{120, 60, 160, 75}), true);
    surface.endGroup(GroupEnd::Line);
    drawing.line({150, 85}, {170, 85}, "k=");
    const Bitmap picture{3, 2, {0xFF, 0xFF00, 0xFF0000, 0xFF, 0xFFFF, 0x1234}};
    surface.bitmap(drawing.dots(Pixel{100, 60}), picture, true);
    surface.bitmap(drawing.dots(Pixel{9, 89}), picture, false);
}

TEST(FigureResolution, WhatStandsOnPixelsCoversTheirDots) {
    Drawing coarse(1);
    drawUpright(coarse);
    for (const int resolution : {2, 3}) {
        Drawing fine(resolution);
        drawUpright(fine);
        ASSERT_EQ(fine.surface.image().size(), coarse.surface.image().size() * resolution);
        for (int y = 0; y < fine.surface.image().height(); ++y)
            for (int x = 0; x < fine.surface.image().width(); ++x)
                ASSERT_EQ(fine.at(x, y), coarse.at(x / resolution, y / resolution))
                    << "at " << resolution << ", dot " << x << ' ' << y;
    }
}

TEST(FigureResolution, AtAFractionNothingIsLeftOutBetweenFramesAndAtTheEdges) {
    for (const double resolution : {1.25, 1.5, 1.75, 2.5}) {
        PainterSurface surface;
        surface.resize(199, 101, resolution);
        EXPECT_EQ(surface.image().size(), QSize(static_cast<int>(std::ceil(199 * resolution)),
                                                static_cast<int>(std::ceil(101 * resolution))));
        EXPECT_EQ(surface.size(), QSize(199, 101));
        for (const PixelRect& frame :
             {PixelRect{0, 0, 67, 51}, {67, 0, 199, 51}, {0, 51, 67, 101}, {67, 51, 199, 101}})
            surface.beginFrame({0, frame, frame, frame, 0});
        for (int y = 0; y < surface.image().height(); ++y)
            for (int x = 0; x < surface.image().width(); ++x)
                ASSERT_EQ(surface.image().pixel(x, y), qRgb(0, 0, 0)) << resolution << ": " << x << ' ' << y;
    }
}

TEST(FigureResolution, ALineIsAsFineAsTheDots) {
    // How often the upper edge of the line goes down.
    const auto steps = [](double resolution) {
        Drawing drawing(resolution);
        drawing.line({30, 50}, {150, 70}, "r1");
        const QRect box = drawing.drawn();
        int count = 0, last = box.top();
        for (int x = box.left(); x <= box.right(); ++x) {
            int top = box.top();
            while (drawing.at(x, top) != red) ++top;
            count += std::exchange(last, top) != top;
        }
        return count;
    };
    EXPECT_NEAR(steps(1), 20, 1);
    EXPECT_NEAR(steps(1.5), 30, 1);
    EXPECT_NEAR(steps(2), 40, 1);
}

TEST(FigureResolution, APenIsAsWideAsItsPixels) {
    for (const double resolution : {1.0, 1.5, 2.0, 3.0})
        for (const int width : {1, 2, 3, 8}) {
            Drawing drawing(resolution);
            drawing.line({-50, 50}, {500, 50}, ("r" + std::to_string(width)).c_str());
            EXPECT_EQ(drawing.drawn().height(), std::lround(width * resolution))
                << width << " at " << resolution;
            EXPECT_EQ(drawing.drawn().top(), drawing.dot(50) - static_cast<int>(width / 2 * resolution));
        }
}

TEST(FigureResolution, WhatInvertsDisappearsWhenItIsDrawnAgain) {
    for (const double resolution : {1.25, 1.5, 2.0}) {
        Drawing drawing(resolution);
        PainterSurface& surface = drawing.surface;
        drawing.write({TextAnchor::Middle, TextBaseline::Middle, 0, false}, "abcdefgh");
        drawing.line({20, 20}, {180, 80}, "g3");
        for (const char* pen : {"r1^", "b2^", "k=^", "y:2^"})
            for (const int angle : {0, 90}) {
                const QImage before = surface.image().copy();
                const auto draw = [&] {
                    PlotStyle inverting = style(pen);
                    inverting.fillColour = 0xC8FFFF;
                    surface.beginStrokeAndFill(inverting);
                    surface.polyline(std::array<Pixel, 4>{{{31, 33}, {151, 73}, {155, 30}, {30, 77}}});
                    surface.circle({97, 53}, 31);
                    surface.bar({31, 33, 77, 61});
                    surface.box({61, 43, 121, 79}, true);
                    surface.endGroup(GroupEnd::Line);
                    drawing.write({TextAnchor::Middle, TextBaseline::Middle, angle, true}, "Hxg");
                };
                draw();
                EXPECT_NE(surface.image(), before);
                draw();
                EXPECT_EQ(surface.image(), before) << pen << " at " << resolution;
            }
    }
}

TEST(FigureResolution, TextIsLaidOutInPixelsAndDrawnInDots) {
    for (const double resolution : {1.5, 2.0, 3.0})
        for (const int angle : {0, 90})
            for (const TextAnchor anchor : {TextAnchor::Start, TextAnchor::Middle, TextAnchor::End}) {
                Drawing fine(resolution), plain(1);
                const TextGroup group{anchor, TextBaseline::Middle, angle};
                plain.write(group, "Hxg");
                fine.write(group, "Hxg");
                const QRect box = plain.drawn(), fineBox = fine.drawn();
                EXPECT_NEAR(fineBox.left() / resolution, box.left(), 1.1);
                EXPECT_NEAR(fineBox.right() / resolution, box.right(), 1.1);
                EXPECT_NEAR(fineBox.top() / resolution, box.top(), 1.1);
                EXPECT_NEAR(fineBox.bottom() / resolution, box.bottom(), 1.1);
                const Font font{Face::Times, 20};
                EXPECT_EQ(fine.surface.textWidth("Hxg", font), plain.surface.textWidth("Hxg", font));
                EXPECT_EQ(fine.surface.metrics(font).lineHeight, plain.surface.metrics(font).lineHeight);
                fine.surface.beginText({});
                EXPECT_EQ(fine.surface.rightEdge(), 200);
                fine.surface.endText();
            }
    // The letters are no enlarged ones: some dots differ within a pixel.
    Drawing fine(2);
    fine.write({}, "Hxg");
    int differing = 0;
    for (int y = 0; y < 200; y += 2)
        for (int x = 0; x < 400; x += 2) differing += fine.at(x, y) != fine.at(x + 1, y + 1);
    EXPECT_GT(differing, 40);
}

TEST(FigureResolution, TellsThePixelsThatHaveChanged) {
    for (const double resolution : {1.25, 1.5, 2.0}) {
        Drawing drawing(resolution);
        EXPECT_EQ(drawing.surface.takeChanged(), QRect(0, 0, 200, 100));
        drawing.line({31, 51}, {41, 55}, "r1");
        const QRect changed = drawing.surface.takeChanged();
        EXPECT_TRUE(QRect(QPoint(31, 51), QPoint(41, 55)).contains(changed.adjusted(1, 1, -1, -1)));
        EXPECT_TRUE(changed.contains(QRect(QPoint(31, 51), QPoint(41, 55))));
        EXPECT_TRUE(drawing.surface.dotsOf(changed).contains(drawing.drawn()));
        EXPECT_TRUE(drawing.surface.takeChanged().isEmpty());
    }
}

TEST(FigureResolution, PicturesAreAsLargeAsTheirPixels) {
    Drawing drawing(1.5);
    Bitmap picture{20, 10, {}};
    for (Colour k = 0; k < 200; ++k) picture.pixels.push_back(k << 8);
    drawing.surface.bitmap({45, 45}, picture, false);
    EXPECT_EQ(drawing.drawn(), QRect(45, 45, 30, 15));
    EXPECT_EQ(drawing.at(45, 45), qRgb(0, 0, 0));
    EXPECT_EQ(drawing.at(74, 59), qRgb(0, 199, 0));
    // Wherever it is, as with one dot to a pixel.
    constexpr int far = std::numeric_limits<int>::max(), low = std::numeric_limits<int>::min();
    for (const Pixel at : {Pixel{far, far}, {low, low}, {low, 50}, {50, far}, {0, 0}})
        drawing.surface.bitmap(at, picture, true);
}

TEST(FigureResolution, WildPlacesAndSizesAreHarmless) {
    constexpr int far = 32767;
    for (const double resolution : {1.5, 4.0}) {
        Drawing drawing(resolution);
        PainterSurface& surface = drawing.surface;
        for (const char* pen : {"r1", "r=", "b32767", "k^", "k9^"}) {
            surface.beginStrokeAndFill(style(pen));
            surface.polyline(std::array<Pixel, 3>{{{-4 * far, -4 * far}, {4 * far, 5}, {5, 4 * far}}});
            surface.polygon(std::array<Pixel, 3>{{{-4 * far, -4 * far}, {4 * far, 5}, {5, 4 * far}}});
            surface.bar({-far, -far, far, far});
            surface.circle({far, -far}, 4 * far);
            surface.endGroup(GroupEnd::Line);
        }
        drawing.write({TextAnchor::Middle, TextBaseline::Top, 90, true}, "far");
    }
}

// ---- Windows --------------------------------------------------------------------------------

class FigureWindowResolution : public test::FigureSession {
protected:
    static double resolution() { return canvas().devicePixelRatioF(); }
    static const PainterSurface& drawn() {
        return dynamic_cast<const PainterSurface&>(figure().view()->surface());
    }
    /// Whether a pixel has a dot of this colour.
    static bool shows(const QImage& image, Pixel at, QRgb colour) {
        const QRect dots = drawn().dotsOf(QRect(at.x, at.y, 1, 1));
        for (int y = dots.top(); y <= dots.bottom(); ++y)
            for (int x = dots.left(); x <= dots.right(); ++x)
                if (image.pixel(x, y) == colour) return true;
        return false;
    }
    std::string printed() {
        type("print(\"figure\");");
        return fileText("figure.svg");
    }
    std::string fileText(const std::string& name) {
        QFile file(QString::fromStdString(folder.path() + "/" + name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        return file.readAll().toStdString();
    }
};

TEST_F(FigureWindowResolution, ShowsEachDotOfItsPicture) {
    type("plot([0,1,2,3],[0,1,4,9],\"r2\");");
    EXPECT_EQ(figure().client(), defaultClient);
    EXPECT_EQ(drawn().resolution(), resolution());
    const QImage shown = picture();
    EXPECT_EQ(shown.width(), static_cast<int>(std::ceil(570 * resolution())));
    for (int y = 0; y < shown.height(); ++y)
        for (int x = 0; x < shown.width(); ++x)
            ASSERT_EQ(shown.pixel(x, y), drawn().image().pixel(x, y)) << x << ' ' << y;
    const Frame& frame = figure().frame(0);
    for (const auto& [x, y] : {std::pair{0.5, 0.5}, {1.0, 1.0}, {1.5, 2.5}, {2.0, 4.0}})
        EXPECT_TRUE(shows(shown, frame.pixel(x, y), red)) << x;
}

TEST_F(FigureWindowResolution, BeginsWithAWholeDotUnderMenus) {
    type("plot([0,1],[0,1],\"r2\"); menu(list(\"File\"),list(list(\"a->1\")));");
    settle();
    EXPECT_EQ(figure().client(), defaultClient);
    EXPECT_GE(canvas().y(), window().findChild<QMenuBar*>()->sizeHint().height());
    EXPECT_EQ(std::fmod(canvas().y() * resolution(), 1), 0);
    const QImage whole = window().grab().toImage(), client = drawn().image();
    const int above = static_cast<int>(canvas().y() * resolution());
    for (int y = 0; y < client.height(); y += 7)
        for (int x = 0; x < client.width() - 1; ++x)
            ASSERT_EQ(whole.pixel(x, above + y), client.pixel(x, y)) << x << ' ' << y;
}

TEST_F(FigureWindowResolution, TheMouseIsInPixels) {
    type("fix; plot([0,10],[0,10]); axis(0,10,0,10);");
    const Pixel at = figure().frame(0).pixel(4, 7);
    move({at.x, at.y});
    EXPECT_EQ(type("round(getmouse)"), "4 7");
    press({at.x, at.y});
    EXPECT_EQ(type("round(getmouse(\"XY\"))"), "4 7");
}

TEST_F(FigureWindowResolution, WhatMovesDisappearsWithoutATrace) {
    type("plot([0,1,2],[0,5,1]); fix; plot([0,1,2],[1,0,2],\"b2\");");
    type("k=plot([0,1,2],[2,1,0],\"r2\"); replot(k,[0,0,2]);");
    const QImage before = picture();
    type("replot(k,[2,2,2.3]);");
    EXPECT_NE(picture(), before);
    // a file has one dot to a pixel, and leaves the window as it is
    type("print(\"x\"); replot(k,[0,0.1,1.7]); print(\"x\"); replot(k,[0,0,2]);");
    EXPECT_EQ(picture(), before);
    type("item=plot([1,1],\"ro^\"); dragable(item);");
    const QImage with = picture();
    const Pixel from = figure().frame(0).pixel(1, 1), to = figure().frame(0).pixel(1.6, 3.1);
    press({from.x, from.y});
    drag({to.x, to.y});
    EXPECT_NE(picture(), with);
    drag({from.x, from.y});
    release({from.x, from.y});
    figure().frame(0).placeItem(figure().frame(0).itemCount() - 1, 1, 1);
    EXPECT_EQ(picture(), with);
}

TEST_F(FigureWindowResolution, TheCursorOfAFunctionLeavesNoTrace) {
    type("fplot(x^3-4x;x,[-3,3]);");
    const QImage before = picture();
    for (int k = 0; k < 100; ++k) move({60 + 3 * k, 200 - k});
    EXPECT_NE(picture(), before);
    Frame& frame = figure().frame(0);
    for (const int k :
         {frame.tracker.vertical, frame.tracker.horizontal, frame.tracker.marker, frame.tracker.label})
        if (frame.item(k).visible) frame.drawItem(k);
    EXPECT_EQ(picture(), before);
}

TEST_F(FigureWindowResolution, AFileIsTheSameWithAWindowAndWithoutOne) {
    const std::string commands =
        "x=linspace(0,3,50); plot(x,sin(3 x),\"ro\"); fix; barchart(1:3,[0.2,0.4,0.6],\"k#y\"); "
        "circle([1,0,0.3],\"g3\");"
        "text(2,0.5,\"label\"); errbar([1,2],[0.1,0.2],[0.05,0.1]); title(\"title\");";
    type(commands);
    const std::string withWindow = printed();
    type("close(0);");
    settle();
    figureList().setDesktop(nullptr);
    type(commands);
    EXPECT_EQ(figure().view(), nullptr);
    EXPECT_EQ(printed(), withWindow);
    EXPECT_GT(withWindow.size(), 2000u);
    figureList().setDesktop(&desktop);
}

TEST_F(FigureWindowResolution, PlacesAndControlsAreInPixels) {
    type("figure; figpos(0.25,0.75,0.5,1);");
    EXPECT_EQ(window().frameGeometry().left(), desktop.screenWidth() / 4);
    EXPECT_EQ(window().frameGeometry().width(), desktop.screenWidth() / 2);
    type("plot([0,10],[0,10]); createButton(\"go\",\"b\",[2,8,2,1]);");
    const Pixel at = figure().frame(0).pixel(2, 8);
    EXPECT_EQ(canvas().findChild<QPushButton*>()->pos(), QPoint(at.x, at.y));
}

TEST_F(FigureWindowResolution, OnAnotherScreenItIsDrawnAnew) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.size() < 2) GTEST_SKIP() << "there is one screen";
    type("plot([0,1],[0,1],\"r2\"); fix; k=plot([0,1],[1,0],\"b2\"); replot(k,[0.5,0.2]);");
    settle();
    const QSize size = window().size();
    for (const int k : {1, 0, 1}) {
        const QScreen& screen = *screens[k];
        window().move(screen.geometry().topLeft() + QPoint(50, 50));
        settle();
        EXPECT_EQ(resolution(), screen.devicePixelRatio());
        EXPECT_EQ(drawn().resolution(), screen.devicePixelRatio());
        EXPECT_EQ(window().size(), size);
        const QImage shown = picture();
        EXPECT_EQ(shown.width(), static_cast<int>(570 * screen.devicePixelRatio()));
        EXPECT_TRUE(shows(shown, figure().frame(0).pixel(0.25, 0.25), red));
        type("replot(k,[0.9,0.1]); replot(k,[0.5,0.2]);");
        EXPECT_EQ(picture(), shown);
    }
}

}  // namespace
}  // namespace vorpen
