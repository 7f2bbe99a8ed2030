// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/fit_figure_drawing.h"

#include <gtest/gtest.h>

#include <cmath>

#include "plot/figure_list.h"

namespace vorpen {
namespace {

FitFigure someFit() {
    FitFigure fit;
    fit.x = {0, 1, 2, 3};
    fit.y = {1, 2.1, 2.9, 4};
    fit.errors = {0.5};
    fit.curveX = {-0.3, 3.3};
    fit.curveY = {0.7, 4.3};
    fit.residuals = {0, 0.1, -0.1, 0};
    fit.title = "Data and fitted line";
    fit.labels = {"a = 1", "b = 1"};
    return fit;
}

template <class T>
int countOf(const Frame& frame) {
    int count = 0;
    for (int k = 0; k < frame.itemCount(); ++k) count += frame.findItem<T>(k) != nullptr;
    return count;
}

class FitDrawing : public ::testing::Test {
protected:
    FitDrawing() { figureList().reset(); }
    ~FitDrawing() override { figureList().reset(); }
    static const Figure& drawn(const FitFigure& fit) {
        drawFitFigure(fit);
        return *figureList().currentFigure();
    }
};

TEST_F(FitDrawing, ALineHasOneFrame) {
    const Figure& figure = drawn(someFit());
    ASSERT_EQ(figure.frameCount(), 1);
    const Frame& frame = figure.frame(0);
    EXPECT_EQ(countOf<Curve>(frame), 3);
    EXPECT_EQ(countOf<ErrorBars>(frame), 1);
    EXPECT_EQ(frame.firstItem<MainLabels>().first->title.text, "Data and fitted line");
    const TextLabel* remark = frame.firstItem<TextLabel>().first;
    ASSERT_NE(remark, nullptr);
    EXPECT_EQ(remark->text, "a = 1,   b = 1");
    EXPECT_EQ(remark->x, 10);
    EXPECT_EQ(remark->y, 102);
    EXPECT_TRUE(remark->relative);
    EXPECT_EQ(remark->style.width, 22);
    // The limits hold the line and the error bars.
    EXPECT_LE(frame.limits().xmin, -0.3);
    EXPECT_GE(frame.limits().xmax, 3.3);
    EXPECT_GE(frame.limits().ymax, 4.5);
    EXPECT_FALSE(frame.fixed);
}

TEST_F(FitDrawing, ResidualsStandInAFrameBelow) {
    FitFigure fit = someFit();
    fit.residualTitle = "Residuals.   q unavailable";
    const Figure& figure = drawn(fit);
    ASSERT_EQ(figure.frameCount(), 2);
    EXPECT_EQ(figure.frame(0).box(), (FractionRect{0, 0.37, 1, 0.59}));
    EXPECT_EQ(figure.frame(1).box(), (FractionRect{0, 0.035, 1, 0.325}));
    EXPECT_EQ(figure.frame(0).limits().xmin, figure.frame(1).limits().xmin);
    const Curve* residuals = figure.frame(1).firstItem<Curve>().first;
    EXPECT_EQ(residuals->marker, (MarkerStyle{'+', 2}));
    EXPECT_FALSE(residuals->style.drawLine);
    EXPECT_EQ(figure.frame(1).firstItem<MainLabels>().first->title.text, "Residuals.   q unavailable");
    EXPECT_EQ(figure.placeOnScreen()[0], 640);
}

TEST_F(FitDrawing, ATitleOfSeveralRunsIsATitle) {
    FitFigure fit = someFit();
    fit.residualTitle = "Residuals.  ({$c}^{2} , {$n })=(3.1, 2)   =>   q = 0.2";
    const Frame& below = drawn(fit).frame(1);
    EXPECT_EQ(below.firstItem<MainLabels>().first->title.text, fit.residualTitle);
    EXPECT_EQ(below.firstItem<TextLabel>().first, nullptr);
}

TEST_F(FitDrawing, ASecondFitTakesThePlaceOfTheFirst) {
    FitFigure fit = someFit();
    fit.residualTitle = "Residuals.";
    drawn(fit);
    EXPECT_EQ(drawn(fit).frameCount(), 2);
    EXPECT_EQ(drawn(someFit()).frameCount(), 1);
    EXPECT_EQ(figureList().figures().size(), 1u);
}

TEST_F(FitDrawing, AnyFrameOfTheUserGivesWay) {
    Figure& figure = figureList().openFigure();
    figure.selectFrame({0, 0.5, 1, 0.5});
    figure.currentFrame().fixed = true;
    const Frame& frame = drawn(someFit()).frame(0);
    EXPECT_EQ(frame.box(), wholeBox);
    EXPECT_EQ(countOf<Curve>(frame), 3);
}

TEST_F(FitDrawing, ManyPointsGoWithoutErrorBars) {
    FitFigure fit = someFit();
    fit.tickLimit = 3;
    EXPECT_EQ(countOf<ErrorBars>(drawn(fit).frame(0)), 0);
    fit.tickLimit = 4;
    EXPECT_EQ(countOf<ErrorBars>(drawn(fit).frame(0)), 1);
    fit.errors.clear();
    EXPECT_EQ(countOf<ErrorBars>(drawn(fit).frame(0)), 0);
}

TEST_F(FitDrawing, WhatIsNotFiniteIsDrawnAllTheSame) {
    FitFigure fit = someFit();
    fit.curveY = {NAN, INFINITY};
    fit.errors = {NAN, 1, INFINITY, 0};
    fit.residualTitle = "Residuals.";
    std::string text;
    drawFitFigure(fit);
    figureList().currentFigure()->writeSvg(text);
    EXPECT_TRUE(text.ends_with("</svg>\n"));
}

}  // namespace
}  // namespace vorpen
