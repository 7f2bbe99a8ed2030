// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/minimise.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <vector>

#include "base/errors.h"

namespace vorpen {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// A function that remembers where it was evaluated.
struct Recorded {
    std::function<double(double)> f;
    std::vector<double> points = {};
    double operator()(double x) {
        points.push_back(x);
        return f(x);
    }
    [[nodiscard]] int evaluations() const { return static_cast<int>(points.size()); }
};

std::string failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return error.message;
    }
    return "no failure";
}

double square(double x) { return (x - 2) * (x - 2); }

TEST(BracketMinimum, WalksDownhillByTheGoldenSection) {
    // f(4) is below f(5), so the ends are exchanged.
    Recorded f{square};
    const Bracket found = bracketMinimum(f, 4, 5);
    EXPECT_DOUBLE_EQ(found.a, 2.381966);
    EXPECT_DOUBLE_EQ(found.b, 2);
    EXPECT_DOUBLE_EQ(found.c, 2 + 1.618034 * (2 - 2.381966));
    EXPECT_EQ(f.evaluations(), 5);
}

TEST(BracketMinimum, FirstThreePointsMayDo) {
    Recorded f{square};
    const Bracket found = bracketMinimum(f, 1, 2);
    EXPECT_EQ(f.points, (std::vector<double>{1, 2, 2 + 1.618034}));
    EXPECT_EQ(found.a, 1);
    EXPECT_EQ(found.b, 2);
    EXPECT_EQ(found.c, 2 + 1.618034);
}

/// Answers given values one after the other, and remembers the points.
struct Scripted {
    std::vector<double> values;
    std::vector<double> points = {};
    double operator()(double x) {
        points.push_back(x);
        return values.at(points.size() - 1);
    }
};

// From 0 and 1 the walk comes to this point first.
constexpr double third = 1 + 1.618034;

TEST(BracketMinimum, TakesAParabolaInsideTheLastStep) {
    Recorded f{square};
    const Bracket found = bracketMinimum(f, 0, 1);
    EXPECT_EQ(found.a, 1);
    EXPECT_NEAR(found.b, 2, 1e-12);
    EXPECT_EQ(found.c, third);
    EXPECT_EQ(f.evaluations(), 4);
}

TEST(BracketMinimum, AHigherPointInsideTheLastStepIsAnEnd) {
    Scripted f{{10, 2, 1.9, 5}};
    const Bracket found = bracketMinimum(f, 0, 1);
    EXPECT_EQ(found.a, 0);
    EXPECT_EQ(found.b, 1);
    EXPECT_EQ(found.c, f.points[3]);
    EXPECT_GT(found.c, 1);
    EXPECT_LT(found.c, third);
}

TEST(BracketMinimum, AUselessPointInsideTheLastStepIsFollowedByAGoldenStep) {
    Scripted f{{10, 2, 1.9, 1.95, 7}};
    const Bracket found = bracketMinimum(f, 0, 1);
    EXPECT_EQ(f.points.size(), 5);
    EXPECT_EQ(found.a, 1);
    EXPECT_EQ(found.b, third);
    EXPECT_DOUBLE_EQ(found.c, third + 1.618034 * 1.618034);
}

TEST(BracketMinimum, AParabolaBeyondTheLastPointIsFollowed) {
    // The first point beyond is lower than the last, so one more is asked for.
    Scripted lower{{10, 6, 1.9, 1, 7}};
    const Bracket found = bracketMinimum(lower, 0, 1);
    EXPECT_EQ(lower.points.size(), 5);
    EXPECT_EQ(found.a, third);
    EXPECT_EQ(found.b, lower.points[3]);
    EXPECT_DOUBLE_EQ(found.c, found.b + 1.618034 * (found.b - third));
    EXPECT_GT(found.b, third);
    // The first point beyond is higher: it is the end.
    Scripted higher{{10, 6, 1.9, 3}};
    const Bracket end = bracketMinimum(higher, 0, 1);
    EXPECT_EQ(end.a, 1);
    EXPECT_EQ(end.b, third);
    EXPECT_EQ(end.c, found.b);
}

TEST(BracketMinimum, AParabolaLeadsAtMostAHundredStepsFarther) {
    // Nearly a straight line: its parabola has its extreme far away.
    Scripted f{{3, 2, 2 - 1.6179, 9}};
    const Bracket found = bracketMinimum(f, 0, 1);
    EXPECT_EQ(found.b, third);
    EXPECT_DOUBLE_EQ(found.c, 1 + 100 * 1.618034);
}

TEST(BracketMinimum, AParabolaThatOpensDownIsNotFollowed) {
    Scripted f{{3, 2, -5, 9}};
    const Bracket found = bracketMinimum(f, 0, 1);
    EXPECT_EQ(found.b, third);
    EXPECT_DOUBLE_EQ(found.c, third + 1.618034 * 1.618034);
}

TEST(BracketMinimum, EqualPointsAreABracketOfNoLength) {
    Recorded f{square};
    const Bracket found = bracketMinimum(f, 1, 1);
    EXPECT_EQ(found.a, 1);
    EXPECT_EQ(found.b, 1);
    EXPECT_EQ(found.c, 1);
    EXPECT_EQ(f.evaluations(), 3);
}

TEST(BracketMinimum, TheMiddleIsNotHigherThanTheEnds) {
    const std::function<double(double)> functions[] = {
        [](double x) { return std::cos(x); },
        [](double x) { return std::tgamma(x + 1.5); },
        [](double x) { return -1 / (1 + (x - 1000) * (x - 1000)); },
        [](double x) { return std::fabs(x + 77) + std::sin(x); },
        [](double x) { return std::exp(x) - 5 * x; },
    };
    for (const auto& f : functions)
        for (const double start : {-0.3, 0.0, 0.1, 0.4}) {
            const Bracket found = bracketMinimum(f, start, start + 0.01);
            EXPECT_LE(f(found.b), f(found.a));
            EXPECT_LE(f(found.b), f(found.c));
            EXPECT_GE((found.b - found.a) * (found.c - found.b), 0);
        }
}

TEST(BracketMinimum, EndsWithoutAMinimum) {
    Recorded line{[](double x) { return x; }};
    EXPECT_EQ(bracketMinimum(line, 1, 1.01).c, -infinity);
    EXPECT_LT(line.evaluations(), 3000);
    Recorded nothing{[](double) { return nan; }};
    (void)bracketMinimum(nothing, 1, 2);
    EXPECT_EQ(nothing.evaluations(), 3);
    // It falls each time it is asked, wherever.
    double value = 0;
    EXPECT_EQ(failureOf([&] { (void)bracketMinimum([&](double) { return value -= 1; }, 0, 1); }),
              "couldn't find a minimum");
}

struct MinimumCase {
    const char* name;
    double (*f)(double);
    double start, x, value;
    int ofBracket, ofSearch;  ///< evaluations that the rounds ask for
};

// The counts are those of a program in another language with the same rounds.
// clang-format off
const MinimumCase minimumCases[] = {
    {"cos", [](double x) { return std::cos(x); }, 3, 3.1415926535897931, -1, 5, 7},
    // The gamma function between its poles; digits: OEIS A030169, A030171.
    {"gamma", [](double x) { return std::tgamma(x); }, 1, 1.4616321449683623, 0.88560319441088871, 5, 10},
    {"quartic", [](double x) { return x * x * x * x - 8 * x; }, 1, 1.2599210498948732, -7.5595262993692388, 5, 10},
    {"exp x - 5 x", [](double x) { return std::exp(x) - 5 * x; }, 0, 1.6094379124341003, -3.0471895621705018, 5, 11},
    {"far away", [](double x) { return -1 / (1 + (x - 1000) * (x - 1000)); }, 0, 1000, -1, 25, 20},
};
// clang-format on

TEST(BrentMinimum, FindsKnownMinimaInAFixedNumberOfRounds) {
    for (const MinimumCase& known : minimumCases) {
        Recorded f{known.f};
        const Bracket bracket = bracketMinimum(f, known.start, known.start + 0.01);
        EXPECT_EQ(f.evaluations(), known.ofBracket) << known.name;
        const Minimum found = brentMinimum(f, bracket, 1e-8);
        EXPECT_EQ(f.evaluations(), known.ofBracket + known.ofSearch) << known.name;
        EXPECT_NEAR(found.x, known.x, 3e-8 * known.x) << known.name;
        EXPECT_NEAR(found.value, known.value, 1e-12) << known.name;
    }
}

TEST(BrentMinimum, OfAFunctionWithPolesAtSquares) {
    // R. P. Brent, Algorithms for Minimization without Derivatives, 1973,
    // chapter 5: the sum over i = 1..20 of ((2i - 5)/(x - i^2))^2 has a minimum
    // between any two squares. Digits from the table there.
    const double published[][2] = {{3.0229153, 3.6766990169},  {6.6837536, 1.1118500100},
                                   {11.2387017, 1.2182217637}, {19.6760001, 2.1621103109},
                                   {29.8282273, 3.0322905193}, {41.9061162, 3.7583856477},
                                   {55.9535958, 4.3554103836}};
    const auto f = [](double x) {
        double sum = 0;
        for (int i = 1; i <= 20; ++i) sum += std::pow((2 * i - 5) / (x - i * i), 2);
        return sum;
    };
    for (int i = 1; i <= 7; ++i) {
        const double left = i * i + 1e-9, right = (i + 1) * (i + 1) - 1e-9;
        const Minimum found = brentMinimum(f, {left, (left + right) / 2, right}, 1e-8);
        EXPECT_NEAR(found.x, published[i - 1][0], 5e-7) << i;
        EXPECT_NEAR(found.value, published[i - 1][1], 1e-10) << i;
    }
}

TEST(BrentMinimum, TakesTheBracketFromEitherSide) {
    const Minimum rising = brentMinimum(square, {0, 1, 5}, 1e-8);
    const Minimum falling = brentMinimum(square, {5, 1, 0}, 1e-8);
    EXPECT_EQ(rising.x, falling.x);
    EXPECT_NEAR(rising.x, 2, 1e-8);
}

TEST(BrentMinimum, EndsAtOnceWhereNothingIsLeftToSearch) {
    Recorded f{square};
    const Minimum found = brentMinimum(f, {1, 1, 1}, 1e-8);
    EXPECT_EQ(found.x, 1);
    EXPECT_EQ(found.value, 1);
    EXPECT_EQ(f.evaluations(), 1);
}

TEST(BrentMinimum, FindsAMinimumAtZeroInSpiteOfTheRelativeTolerance) {
    const Minimum found = brentMinimum([](double x) { return std::fabs(x); }, {-1, 0.5, 1}, 1e-8);
    EXPECT_LT(std::fabs(found.x), 1e-8);
}

TEST(BrentMinimum, GivesUpAfterAHundredRounds) {
    const std::string message = "max number of iterations exceeded in function minimisation";
    Recorded nothing{[](double) { return nan; }};
    EXPECT_EQ(failureOf([&] { (void)brentMinimum(nothing, {nan, nan, nan}, 1e-8); }), message);
    EXPECT_EQ(nothing.evaluations(), 101);
    EXPECT_EQ(failureOf([] { (void)brentMinimum(square, {0, 1, infinity}, 1e-8); }), message);
}

TEST(BrentMinimum, AFailureOfTheFunctionPassesThrough) {
    const auto f = [](double x) {
        if (x > 1.5) throw std::runtime_error("beyond");
        return square(x);
    };
    EXPECT_THROW((void)brentMinimum(f, {0, 1, 5}, 1e-8), std::runtime_error);
}

}  // namespace
}  // namespace vorpen
