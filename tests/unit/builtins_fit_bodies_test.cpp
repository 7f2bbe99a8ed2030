// SPDX-License-Identifier: GPL-3.0-or-later

// What fits hand over to be drawn, and what holds while the function of a fit
// runs. The results themselves are in the transcripts.

#include "builtins/fit_bodies.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "builtins/engine_context.h"
#include "builtins/fit_figure.h"
#include "builtins_support.h"
#include "engine/calc.h"

namespace vorpen {
namespace {

using namespace testing;
using Lines = std::vector<std::string>;
using Numbers = std::vector<double>;

/// An engine that keeps what its scripts print and what they ask to be drawn.
class Session {
public:
    Session() : host_(std::filesystem::temp_directory_path().string()), calc_(host_, true) {
        calc_.console().setLineListener([this](const std::string& line) { printed_.push_back(line); });
        engineContext().drawFit = [this](const FitFigure& figure) { figures.push_back(figure); };
    }

    Lines run(const std::string& script) {
        printed_.clear();
        calc_.beginInput(script, 's');
        calc_.run();
        calc_.console().endLine();
        return printed_;
    }

    UserFunc& function(const std::string& name) { return *calc_.functions().find(name); }
    DoubleValue& variable(const std::string& name) { return asDouble(*calc_.symbols().classify(name).found); }
    double number(const std::string& name) { return variable(name)[0]; }

    std::vector<FitFigure> figures;

private:
    TestHost host_;
    Calc calc_;
    Lines printed_;
};

TEST(FitFigures, OfALine) {
    Session session;
    EXPECT_EQ(session.run("r=slf([0,10,20],[1,2,4],0.5,[1,7]);"), Lines{});
    ASSERT_EQ(session.figures.size(), 1u);
    const FitFigure& figure = session.figures[0];
    EXPECT_EQ(figure.x, (Numbers{0, 10, 20}));
    EXPECT_EQ(figure.y, (Numbers{1, 2, 4}));
    EXPECT_EQ(figure.errors, Numbers{0.5});
    EXPECT_EQ(figure.curveX, (Numbers{-2, 22}));
    ASSERT_EQ(figure.curveY.size(), 2u);
    const double a = 5.0 / 6, b = 0.15;
    EXPECT_NEAR(figure.curveY[0], a - 2 * b, 1e-12);
    EXPECT_NEAR(figure.curveY[1], a + 22 * b, 1e-12);
    ASSERT_EQ(figure.residuals.size(), 3u);
    EXPECT_NEAR(figure.residuals[2], 4 - a - 20 * b, 1e-12);
    EXPECT_EQ(figure.title, "Data and fitted line y = a + b x");
    EXPECT_EQ(figure.labels, (Lines{"a = 0.8 +/- 0.5", "b = 0.15 +/- 0.04"}));
    EXPECT_EQ(figure.residualTitle, "");
    EXPECT_EQ(figure.tickLimit, 7);
    session.run("r=slf([0,10,20],[1,2,4],[1,1,2],1);");
    ASSERT_EQ(session.figures.size(), 2u);
    EXPECT_EQ(session.figures[1].errors, (Numbers{1, 1, 2}));
    EXPECT_FALSE(session.figures[1].tickLimit);
    session.run("r=slf([0,10,20],[1,2,4],1,[0,7]);");
    EXPECT_EQ(session.figures.size(), 2u);
}

TEST(FitFigures, OfACurve) {
    Session session;
    session.run("f(p,x) := p[1]+p[2]*x");
    EXPECT_EQ(session.run("p=lsfit(f,[0,1],[0,1],[3,1,2],[7,3,4],[1,1,1],1);"), Lines{});
    ASSERT_EQ(session.figures.size(), 1u);
    const FitFigure& figure = session.figures[0];
    EXPECT_EQ(figure.x, (Numbers{3, 1, 2}));
    EXPECT_EQ(figure.errors, (Numbers{1, 1, 1}));
    ASSERT_EQ(figure.curveX.size(), 501u);
    ASSERT_EQ(figure.curveY.size(), 501u);
    // From the least abscissa to the greatest.
    EXPECT_EQ(figure.curveX.front(), 1);
    EXPECT_EQ(figure.curveX[250], 2);
    EXPECT_EQ(figure.curveX.back(), 3);
    const double slope = session.variable("p")[1];
    EXPECT_NEAR(slope, 32.0 / 14, 1e-6);
    EXPECT_EQ(figure.curveY[250], 2 * slope);
    EXPECT_NEAR(figure.residuals[0], 7 - 3 * slope, 1e-12);
    EXPECT_EQ(figure.title, "Data and fitted curve");
    EXPECT_EQ(figure.residualTitle, "Residuals.  ({$c}^{2} , {$n })=(0.857, 2)   =>   q = 0.65");
    EXPECT_EQ(figure.labels, (Lines{"p1 = 0", "p2 = 2.3 +/- 0.3"}));
    EXPECT_FALSE(figure.tickLimit);
}

TEST(FitFigures, OfACurveSayWhenQIsSmallOrUnavailable) {
    Session session;
    session.run("f(p,x) := p[1]+p[2]*x");
    session.run("p=lsfit(f,[0,1],1:4,[7,3,4,9],[],1);");
    session.run("p=lsfit(f,[0,1],1:4,[7,3,4,9],[0.1,0.1,0.1,0.1],1);");
    session.run("p=lsfit(f,[0,1],1:4,[7,3,4,9],[0.1,0.1,0.1,0.1],0);");
    ASSERT_EQ(session.figures.size(), 2u);
    EXPECT_EQ(session.figures[0].title, "Data and fitted curve");
    EXPECT_EQ(session.figures[0].residualTitle, "Residuals.   q unavailable");
    EXPECT_TRUE(session.figures[0].errors.empty());
    EXPECT_EQ(session.figures[1].title, "Data and fitted curve (small q)");
}

TEST(Fits, AFunctionForSingleNumbersDrawsItsCurvePointByPoint) {
    Session session;
    session.run("f(p,x) := { return p[1]*x[1]; }");
    EXPECT_EQ(session.run("p=lsfit(f,1,1:4,[2,4,6,8],[],1);"), Lines{});
    ASSERT_EQ(session.figures.size(), 1u);
    EXPECT_NEAR(session.figures[0].curveY.back(), 8, 1e-6);
}

TEST(Fits, AFailureOfTheFunctionLeavesTheVariables) {
    Session session;
    session.run("f(p,x) := { if p[1]~=1 { error('too far'); } return p[1]*x; }");
    session.run("p=42; e=43;");
    EXPECT_EQ(session.run("[p,e]=lsfit(f,[1],1:3,1:3);"), (Lines{"in f;", "{r too far}"}));
    EXPECT_EQ(session.number("p"), 42);
    EXPECT_EQ(session.number("e"), 43);
    EXPECT_EQ(session.function("f").depth(), 0);
}

TEST(Fits, AFitMayRunInsideItsOwnFunction) {
    Session session;
    // Each level fits the slope that the level below has found, and doubles it.
    session.run(
        "again(p,x) := { if p[2]>0 { q=lsfit(again,[1,p[2]-1],[1,0],1:3,2:2:6); return p[1]*q[1]*x; } return "
        "p[1]*x; }");
    EXPECT_EQ(session.run("p=lsfit(again,[1,2],[1,0],1:3,2:2:6);"), Lines{});
    EXPECT_EQ(session.function("again").depth(), 0);
    EXPECT_NEAR(session.number("p"), 2, 1e-6);
}

TEST(Fits, TheFunctionMayChangeTheVariablesThatHoldTheArguments) {
    Session session;
    session.run("x=1:3; y=2:2:6; p0=[1]; s=[1,1,1];");
    session.run("function y=f(q,t); global x,p0,s; x=[]; p0=[]; s=[]; y=q[1]*t; end");
    EXPECT_EQ(session.run("r=lsfit(f,p0,x,y,s);"), Lines{});
    EXPECT_NEAR(session.number("r"), 2, 1e-6);
    EXPECT_TRUE(session.variable("x").isEmpty());
}

TEST(Fits, AnswerRealNumbersOnly) {
    DoubleValue x = row({1, 2, 3}), y = row({1, 2, 4});
    EXPECT_EQ(failedGeneral<ComplexValue>(builtin::straightLineFit, {&x, &y}), "in slf: invalid return type");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::curveFit, {&x, &y}), "in lsfit: invalid return type");
}

TEST(Filters, MayWriteOverTheirArgument) {
    EXPECT_EQ(called(builtin::smoothingFilter, row({4, 0})), "0.2 0.2 0.2 0.2 0.2");
    EXPECT_EQ(called(builtin::smoothed, row({3, 6, 9}), row({3, 0})), "5 6 7");
    EXPECT_EQ(called(builtin::smoothed, IntValue(5), nullptr), "5");
}

}  // namespace
}  // namespace vorpen
