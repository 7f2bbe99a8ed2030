// SPDX-License-Identifier: GPL-3.0-or-later

// Windows of figures: where they are, what they show, and how they go.

#include <QtWidgets/QMenuBar>

#include "window/figure_support.h"

namespace vorpen {
namespace {

using FigureWindowTest = test::FigureSession;

constexpr QRgb red = qRgb(170, 0, 0);

int countPixels(const QImage& image, QRgb colour) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) count += image.pixel(x, y) == colour;
    return count;
}

TEST_F(FigureWindowTest, OpensWithItsNumberPlaceAndSize) {
    EXPECT_EQ(type("figure(3)"), "3");
    EXPECT_EQ(window(3).windowTitle(), "Figure 3");
    EXPECT_TRUE(window(3).isVisible());
    EXPECT_EQ(window(3).pos(), QPoint(400, 10));
    EXPECT_EQ(figure(3).client(), defaultClient);
    EXPECT_EQ(picture(3).size(), QSize(570, 406));
    EXPECT_TRUE(window(3).testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(FigureWindowTest, ShowsTheCurveWhereItsPointsAre) {
    type("plot([0,1,2,3],[0,1,4,9],\"r2\");");
    const QImage shown = picture();
    const Frame& frame = figure().frame(0);
    for (const auto& [x, y] : {std::pair{0.5, 0.5}, {1.0, 1.0}, {1.5, 2.5}, {2.0, 4.0}}) {
        const Pixel at = frame.pixel(x, y);
        EXPECT_EQ(shown.pixel(at.x, at.y), red) << x;
    }
    EXPECT_EQ(shown.pixel(2, 2), qRgb(255, 255, 255));
    EXPECT_GT(countPixels(shown, red), 500);
}

TEST_F(FigureWindowTest, IsDrawnAnewWhenItsSizeChanges) {
    type("plot([0,1],[0,1],\"r\");");
    window().resize(900, 300);
    settle();
    EXPECT_EQ(figure().client(), (PixelRect{0, 0, 900, 300}));
    const QImage shown = picture();
    EXPECT_EQ(shown.size(), QSize(900, 300));
    const Pixel middle = figure().frame(0).pixel(0.5, 0.5);
    EXPECT_EQ(shown.pixel(middle.x, middle.y), red);
    for (const QSize size : {QSize(1, 1), QSize(1, 300), QSize(300, 1), QSize(570, 406)}) {
        window().resize(size);
        settle();
    }
    const Pixel again = figure().frame(0).pixel(0.5, 0.5);
    EXPECT_EQ(picture().pixel(again.x, again.y), red);
}

TEST_F(FigureWindowTest, IsFilledWhenItsSizeChangesWhileAScriptPolls) {
    type("plot([0,1],[0,1],\"r\");");
    host.user.push_back([this] { window().resize(800, 500); });
    type("getmouse;");
    EXPECT_GT(countPixels(picture(), red), 300);
    EXPECT_FALSE(figure().paused);
}

TEST_F(FigureWindowTest, HasThePlaceThatAScriptGives) {
    type("figure;");
    const int width = desktop.screenWidth(), height = desktop.screenHeight();
    type("figpos(0.25,0.75,0.5,1);");
    const QRect place = window().frameGeometry();
    EXPECT_EQ(place.width(), width / 2);
    EXPECT_EQ(place.height(), height / 2);
    EXPECT_EQ(place.left(), width / 4);
    EXPECT_EQ(place.top(), 0);
    EXPECT_EQ(type("figpos(1)"), std::to_string(width / 4) + " " + std::to_string(width / 4 + width / 2) + " " +
                                     std::to_string(height - height / 2) + " " + std::to_string(height));
    EXPECT_EQ(type("figpos"), "1 " + std::to_string(width) + " 1 " + std::to_string(height));
    for (const char* wild : {"figpos(-1e9,1e9,-1e9,1e9);", "figpos(0,1e-9,0,1e-9);"}) type(wild);
    settle();
    EXPECT_GE(window().width(), 1);
}

TEST_F(FigureWindowTest, KnowsThePlaceOfTheConsole) {
    QWidget console;
    console.setGeometry(20, 30, 400, 200);
    desktop.setConsole(&console);
    const int height = desktop.screenHeight();
    EXPECT_EQ(type("figpos(0)"),
              "20 420 " + std::to_string(height - 230) + " " + std::to_string(height - 30));
}

TEST_F(FigureWindowTest, ClosedByTheUserLeavesTheList) {
    type("figure(1);");
    type("figure(2);");
    const QPointer<FigureWindow> gone = &window(2);
    window(2).close();
    EXPECT_EQ(figureList().find(2), nullptr);
    EXPECT_EQ(figureList().currentFigure(), nullptr);
    settle();
    EXPECT_TRUE(gone.isNull());
    window(1).close();
    EXPECT_EQ(type("replot(1)"), "in replot: there is no figure");
}

TEST_F(FigureWindowTest, ClosedByAScriptDisappears) {
    type("figure(1);");
    const QPointer<FigureWindow> gone = &window(1);
    EXPECT_EQ(type("close(1)"), "1");
    EXPECT_TRUE(gone.isNull() || !gone->isVisible());
    settle();
    EXPECT_TRUE(gone.isNull());
    type("figure(1); figure(2); close(0);");
    settle();
    EXPECT_TRUE(figureList().figures().empty());
}

TEST_F(FigureWindowTest, GoesWithItsOwnerAndTheFigureStays) {
    auto console = std::make_unique<QWidget>();
    desktop.setConsole(console.get());
    type("plot([0,1],[0,1]);");
    EXPECT_EQ(window().parentWidget(), console.get());
    console.reset();
    EXPECT_EQ(type("replot();"), "");
    EXPECT_EQ(figure().client(), defaultClient);
    type("figpos(1,2,1,2); menu(list(\"a\"),list(list(\"b->1\"))); createButton(\"x\",\"b\",[1,1]); close(1);");
}

TEST_F(FigureWindowTest, FocusMakesTheFigureCurrent) {
    type("figure(1);");
    type("figure(2);");
    QEvent activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(&window(1), &activate);
    EXPECT_EQ(figureList().currentFigure(), &figure(1));
    press({100, 100}, 2);
    release({100, 100}, 2);
    EXPECT_EQ(figureList().currentFigure(), &figure(2));
}

TEST_F(FigureWindowTest, WithoutADesktopNoneIsOpened) {
    figureList().setDesktop(nullptr);
    type("plot([0,1],[0,1]);");
    EXPECT_EQ(figure().view(), nullptr);
    figureList().setDesktop(&desktop);
}

TEST_F(FigureWindowTest, AFigureWithoutItsDesktopStaysWhole) {
    {
        QtFigureDesktop other;
        type("figure(1);");
    }
    EXPECT_EQ(figureList().find(1), nullptr);
    EXPECT_EQ(figureList().desktop(), nullptr);
    figureList().setDesktop(&desktop);
}

TEST_F(FigureWindowTest, AllFramesAreShown) {
    type("subplot(2,2,1); plot([0,1],[0,1],\"r\");");
    type("subplot(2,2,4); plot([0,1],[0,1],\"r\");");
    const QImage shown = picture();
    for (const int k : {0, 1}) {
        const Pixel middle = figure().frame(k).pixel(0.5, 0.5);
        EXPECT_EQ(shown.pixel(middle.x, middle.y), red) << k;
    }
    type("wipe;");
    EXPECT_EQ(countPixels(picture(), red), 0);
}

TEST_F(FigureWindowTest, WhatMovesDisappearsWithoutATrace) {
    type("fix; plot([0,1,2],[0,5,1]); plot([0,1,2],[1,0,2],\"b2\");");
    type("k=plot([0,1,2],[2,1,0],\"r2\"); replot(k,[0,0,2]);");
    const QImage before = picture();
    EXPECT_GT(countPixels(before, red), 300);
    type("replot(k,[2,2,2]);");
    EXPECT_NE(picture(), before);
    type("replot(k,[0,0,2]);");
    EXPECT_EQ(picture(), before);
}

// ---- Menus and controls ----------------------------------------------------------------

TEST_F(FigureWindowTest, MenusTypeTheirCommands) {
    type("figure;");
    type("menu(list(\"File\",\"Edit\"),list(list(\"open->x=1\",\"save->y=2\"),list(\"undo->z=3\")));");
    auto* const bar = window().findChild<QMenuBar*>();
    ASSERT_NE(bar, nullptr);
    ASSERT_EQ(bar->actions().size(), 2);
    EXPECT_EQ(bar->actions()[0]->text(), "File");
    EXPECT_EQ(figure().client(), defaultClient);
    EXPECT_EQ(canvas().y(), bar->height());
    EXPECT_GT(bar->height(), 5);
    bar->actions()[0]->menu()->actions()[1]->trigger();
    bar->actions()[1]->menu()->actions()[0]->trigger();
    EXPECT_EQ(typed, (std::vector<std::string>{"y=2", "z=3"}));
    type("menu(list(\"One\"),list(list(\"a->1\")));");
    settle();
    EXPECT_EQ(window().findChildren<QMenuBar*>().size(), 1);
    EXPECT_EQ(figure().client(), defaultClient);
}

TEST_F(FigureWindowTest, AMenuMayMakeNewMenus) {
    type("figure; menu(list(\"One\"),list(list(\"a->b\")));");
    calc.events().setTypist([this](std::string_view) { type("menu(list(\"Two\"),list(list(\"c->d\")));"); });
    window().findChild<QMenuBar*>()->actions()[0]->menu()->actions()[0]->trigger();
    settle();
    EXPECT_EQ(window().findChild<QMenuBar*>()->actions()[0]->text(), "Two");
    calc.events().setTypist([this](std::string_view) { type("close(1);"); });
    window().findChild<QMenuBar*>()->actions()[0]->menu()->actions()[0]->trigger();
    settle();
    EXPECT_TRUE(figureList().figures().empty());
}

}  // namespace
}  // namespace vorpen
