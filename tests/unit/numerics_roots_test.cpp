// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/roots.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <stdexcept>

#include "base/errors.h"

namespace vorpen {
namespace {

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

struct RootCase {
    const char* name;
    double (*f)(double);
    double x1, x2, root;
    int evaluations;  ///< those that the rounds of the method ask for
};

// The roots are closed forms or published digits; the counts are those of a
// program in another language with the same rounds.
const RootCase rootCases[] = {
    {"cos", [](double x) { return std::cos(x); }, 1, 2, std::numbers::pi / 2, 11},
    {"ends exchanged", [](double x) { return std::cos(x); }, 2, 1, std::numbers::pi / 2, 11},
    // J. Wallis, A Treatise of Algebra, 1685; digits: OEIS A007493.
    {"Wallis", [](double x) { return x * x * x - 2 * x - 5; }, 2, 3, 2.0945514815423266, 11},
    // The fixed point of cos; digits: OEIS A003957.
    {"cos x = x", [](double x) { return std::cos(x) - x; }, 0, 1, 0.73908513321516064, 11},
    {"exp x = 10", [](double x) { return std::exp(x) - 10; }, 0, 5, std::numbers::ln10, 11},
    // G. E. Alefeld, F. A. Potra and Y. Shi, Algorithm 748: enclosing zeros of
    // continuous functions, ACM Transactions on Mathematical Software 21
    // (1995), test problems 1, 8 and 12.
    {"748, 1", [](double x) { return std::sin(x) - x / 2; }, std::numbers::pi / 2, std::numbers::pi,
     1.8954942670339809, 13},
    {"748, 8", [](double x) { return x * x - std::pow(1 - x, 5); }, 0, 1, 0.34595481584824201, 13},
    {"748, 12", [](double x) { return (20 * x - 1) / (19 * x); }, 0.01, 1, 0.05, 17},
    // A root of high order, where the method is slow.
    {"x^9", [](double x) { return std::pow(x, 9); }, -1, 10, 0, 49},
    {"straight line", [](double x) { return x - 1; }, 0, 3, 1, 5},
};

TEST(Ridders, FindsKnownRootsInAFixedNumberOfRounds) {
    for (const RootCase& known : rootCases) {
        Recorded f{known.f};
        const Root root = ridders(f, known.x1, known.x2, 1e-10);
        EXPECT_TRUE(root.converged) << known.name;
        EXPECT_EQ(f.evaluations(), known.evaluations) << known.name;
        const double allowed = std::string_view(known.name) == "x^9" ? 2e-8 : 1e-9;
        EXPECT_NEAR(root.x, known.root, allowed) << known.name;
    }
}

TEST(Ridders, EvaluatesTheEndsThenMiddlesAndEstimates) {
    Recorded line{[](double x) { return x - 1; }};
    EXPECT_EQ(ridders(line, 0, 3, 1e-10).x, 1);
    // The second estimate repeats the first and is not evaluated.
    EXPECT_EQ(line.points, (std::vector<double>{0, 3, 1.5, 1, 1.5}));
}

TEST(Ridders, EndsEarlyWithALargeTolerance) {
    Recorded cosine{[](double x) { return std::cos(x); }};
    EXPECT_DOUBLE_EQ(ridders(cosine, 1, 2, 0.1).x, 1.5737728760483294);
    EXPECT_EQ(cosine.evaluations(), 4);
    Recorded growth{[](double x) { return std::exp(x) - 10; }};
    EXPECT_DOUBLE_EQ(ridders(growth, 0, 5, 0.1).x, 2.345704099648116);
    EXPECT_EQ(growth.evaluations(), 5);
}

TEST(Ridders, AZeroAtAnEndIsTheRoot) {
    Recorded left{[](double x) { return x * x; }};
    EXPECT_EQ(ridders(left, 0, 1, 1e-10).x, 0);
    EXPECT_EQ(left.evaluations(), 2);
    Recorded right{[](double x) { return x - 1; }};
    EXPECT_EQ(ridders(right, 0, 1, 1e-10).x, 1);
    Recorded both{[](double) { return 0.0; }};
    EXPECT_EQ(ridders(both, 3, 4, 1e-10).x, 3);
}

TEST(Ridders, RefusesEndsOfOneSign) {
    const auto on = [](std::function<double(double)> f, double x1, double x2) {
        return failureOf([&] { (void)ridders(f, x1, x2, 1e-10); });
    };
    const std::string message = "fzero: f(x1) and f(x2) have same sign";
    EXPECT_EQ(on([](double x) { return x * x + 1; }, -1, 1), message);
    EXPECT_EQ(on([](double) { return -1.0; }, -1, 1), message);
    EXPECT_EQ(on([](double) { return nan; }, -1, 1), message);
}

TEST(Ridders, GivesUpAfterSixtyRounds) {
    // No number between the ends: every estimate is none either.
    Recorded f{[](double x) { return x == 1 ? -1 : x == 2 ? 1 : nan; }};
    const Root root = ridders(f, 1, 2, 1e-10);
    EXPECT_FALSE(root.converged);
    EXPECT_TRUE(std::isnan(root.x));
    EXPECT_EQ(f.evaluations(), 2 + 2 * 60);
    // A negative tolerance is never met; the estimate is the last one.
    Recorded line{[](double x) { return x - 1; }};
    const Root last = ridders(line, 0, 3, -1);
    EXPECT_FALSE(last.converged);
    EXPECT_EQ(last.x, 1);
    EXPECT_EQ(line.evaluations(), 2 + 2 * 60);
}

TEST(Ridders, AnswersItsMarkWhenTheProductsUnderflowAtOnce) {
    Recorded f{[](double x) { return (x - 0.5) * 1e-200; }};
    const Root root = ridders(f, 0, 1, 1e-10);
    EXPECT_EQ(root.x, -1.234567e+89);
    EXPECT_EQ(f.evaluations(), 3);
}

TEST(Ridders, AFailureOfTheFunctionPassesThrough) {
    int evaluations = 0;
    const auto f = [&](double x) {
        if (++evaluations == 4) throw std::runtime_error("at the fourth");
        return x;
    };
    EXPECT_THROW((void)ridders(f, -1, 3, 1e-10), std::runtime_error);
    EXPECT_EQ(evaluations, 4);
}

TEST(Ridders, WorksInsideItself) {
    // The inner root is sqrt(y), so the outer one is where sqrt(y) = 3.
    const auto outer = [](double y) {
        return ridders([y](double x) { return x * x - y; }, 0, 10, 1e-12).x - 3;
    };
    EXPECT_NEAR(ridders(outer, 1, 20, 1e-10).x, 9, 1e-9);
}

TEST(ZeroCrossingSearch, StepsToAlternateSides) {
    Recorded f{[](double x) { return x > 8 ? -1 : 1; }};
    EXPECT_EQ(findZeroCrossing(f, 0), 11);
    EXPECT_EQ(f.points, (std::vector<double>{0, 1, -1, 3, -5, 11}));
    Recorded near{[](double x) { return std::cos(x); }};
    EXPECT_EQ(findZeroCrossing(near, 1), 2);
    EXPECT_EQ(near.evaluations(), 2);
}

TEST(ZeroCrossingSearch, GoesOnWithFinerSteps) {
    // Negative in a gap that steps of 1 jump over.
    Recorded f{[](double x) { return x > 0.05 && x < 0.15 ? -1 : 1; }};
    EXPECT_DOUBLE_EQ(findZeroCrossing(f, 0), 0.1);
    EXPECT_EQ(f.evaluations(), 1 + 30 + 1);
}

TEST(ZeroCrossingSearch, GivesUpAfterTenScales) {
    Recorded f{[](double x) { return x * x + 1; }};
    EXPECT_EQ(failureOf([&] { (void)findZeroCrossing(f, 1); }), "couldn't find a zero-crossing");
    EXPECT_EQ(f.evaluations(), 1 + 10 * 30);
    // A zero is no change of sign, and neither is a value that is no number.
    EXPECT_EQ(failureOf([] { (void)findZeroCrossing([](double x) { return x; }, 0); }),
              "couldn't find a zero-crossing");
    EXPECT_EQ(failureOf([] { (void)findZeroCrossing([](double) { return nan; }, 0); }),
              "couldn't find a zero-crossing");
}

TEST(ZeroCrossings, ArePositionsBetweenSamples) {
    const auto of = [](std::vector<double> y) { return zeroCrossings(y); };
    using Positions = std::vector<double>;
    EXPECT_EQ(of({1, -1, 1}), (Positions{1.5, 2.5}));
    EXPECT_EQ(of({-1, 3}), (Positions{1.25}));
    EXPECT_EQ(of({0, 1}), (Positions{1}));
    EXPECT_EQ(of({1, 0}), (Positions{2}));
    EXPECT_EQ(of({1, 0, -1}), (Positions{2, 2}));
    EXPECT_EQ(of({0, 0, 1}), (Positions{1, 2}));
    EXPECT_EQ(of({1, 2, 3}), Positions{});
    EXPECT_EQ(of({1, nan, -1}), Positions{});
    EXPECT_EQ(of({1}), Positions{});
    EXPECT_EQ(of({}), Positions{});
}

TEST(ZeroCrossings, AreAbscissaeWhenTheseAreGiven) {
    const auto of = [](std::vector<double> y, std::vector<double> x) { return zeroCrossings(y, x); };
    using Positions = std::vector<double>;
    EXPECT_EQ(of({1, -1}, {10, 20}), (Positions{15}));
    EXPECT_EQ(of({1, -1, 3}, {0, 1, 5}), (Positions{0.5, 2}));
    EXPECT_EQ(of({0, 0}, {7, 8}), (Positions{7}));
    EXPECT_EQ(of({1, 2}, {7, 8}), Positions{});
}

}  // namespace
}  // namespace vorpen
