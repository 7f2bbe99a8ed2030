// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/simple_functors.h"

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/errors.h"

namespace vorpen {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

using Numbers = std::vector<double>;

template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const RuntimeError& error) {
        return error.message;
    }
    return "";
}

// ---- polynomials ----------------------------------------------------------

TEST(PolyEval, EvaluatesByAscendingPowers) {
    const Numbers c = {1, 0, -2, 1};
    Poly_eval poly(c);
    EXPECT_EQ(poly(0), 1);
    EXPECT_EQ(poly(3), 1 - 18 + 27);
    EXPECT_EQ(poly(-1), 1 - 2 - 1);
    const Numbers constant = {7};
    EXPECT_EQ(Poly_eval(constant)(inf), 7);
    const Numbers sum = {0.1, 0.2, 0.3};
    EXPECT_EQ(Poly_eval(sum)(0.7), (0.3 * 0.7 + 0.2) * 0.7 + 0.1);
}

TEST(PolyEval, NeedsACoefficient) {
    EXPECT_EQ(failureOf([] { Poly_eval poly({}); }), "polynomial has empty coefficient array");
}

// ---- distributions --------------------------------------------------------

TEST(PoissonDistribution, GivesProbabilities) {
    const Numbers mean = {3};
    PoissonDistributionFunction poisson(mean);
    EXPECT_NEAR(poisson(0), std::exp(-3.0), 1e-15);
    EXPECT_NEAR(poisson(2), 4.5 * std::exp(-3.0), 1e-15);
    EXPECT_NEAR(poisson(2.5), std::exp(2.5 * std::log(3.0) - 3 - std::lgamma(3.5)), 1e-15);
}

TEST(PoissonDistribution, HasMeanOneWithoutParameter) {
    PoissonDistributionFunction poisson({});
    EXPECT_NEAR(poisson(3), std::exp(-1.0) / 6, 1e-15);
}

TEST(BinomialDistribution, GivesProbabilities) {
    const Numbers np = {4, 0.25};
    BinomialDistributionFunction binomial(np);
    const double expected[] = {81.0 / 256, 108.0 / 256, 54.0 / 256, 12.0 / 256, 1.0 / 256};
    for (int k = 0; k <= 4; ++k) EXPECT_NEAR(binomial(k), expected[k], 1e-14);
    EXPECT_EQ(binomial(5), 0);
    EXPECT_EQ(binomial(inf), 0);
}

TEST(BinomialDistribution, TruncatesTheCount) {
    const Numbers np = {4.9, 0.25};
    const Numbers same = {4, 0.25};
    EXPECT_EQ(BinomialDistributionFunction(np)(2), BinomialDistributionFunction(same)(2));
    EXPECT_EQ(BinomialDistributionFunction(np)(4.5), 0);
}

TEST(BinomialDistribution, RefusesWrongArguments) {
    EXPECT_EQ(failureOf([] {
                  const Numbers one = {4};
                  BinomialDistributionFunction binomial(one);
              }),
              "[n,p] should be two scalar numbers");
    const Numbers np = {4, 0.25};
    BinomialDistributionFunction binomial(np);
    EXPECT_EQ(failureOf([&] { binomial(-1); }), "negative k in binomial distribution");
}

// ---- peaks ----------------------------------------------------------------

TEST(Gaussian, FillsMissingParametersWithDefaults) {
    const Numbers two = {2};
    EXPECT_EQ(GaussianFunction(two)(0), 2);
    EXPECT_EQ(GaussianFunction({})(0), 1);
    EXPECT_DOUBLE_EQ(GaussianFunction({})(1), std::exp(-0.5));
}

TEST(Gaussian, UsesFourParametersAndIgnoresMore) {
    const Numbers p = {2, 0.5, 1, 10, 99};
    EXPECT_DOUBLE_EQ(GaussianFunction(p)(2), 2 * std::exp(-2.0) + 10);
    EXPECT_EQ(GaussianFunction(p)(1), 12);
}

TEST(Lorentzian, HasItsHalfMaximumAtHalfTheWidth) {
    const Numbers p = {3, 2, 5, 1, 99};
    LorentzianFunction lor(p);
    EXPECT_EQ(lor(5), 4);
    EXPECT_DOUBLE_EQ(lor(6), 2.5);
    EXPECT_DOUBLE_EQ(lor(4), 2.5);
    EXPECT_EQ(LorentzianFunction({})(0), 1);
}

// ---- binomial coefficients ------------------------------------------------

double choose(double n, double k) {
    const Numbers parameter = {n};
    return BinomialCoefficients(parameter)(k);
}

TEST(BinomialCoefficients, SmallOnesComeFromPascalsTriangle) {
    EXPECT_EQ(choose(4, 2), 6);
    EXPECT_EQ(choose(9, 4), 126);
    EXPECT_EQ(choose(9, 5), 126);
    EXPECT_EQ(choose(9, 1), 9);
    EXPECT_EQ(choose(9, 8), 9);
    EXPECT_EQ(choose(2, 1), 2);
    EXPECT_EQ(choose(4, 0), 1);
    EXPECT_EQ(choose(4, 4), 1);
}

TEST(BinomialCoefficients, MiddleOnesAreRoundedProducts) {
    EXPECT_EQ(choose(10, 3), 120);
    EXPECT_EQ(choose(50, 25), 126410606437752);
    EXPECT_EQ(choose(52, 5), 2598960);
    EXPECT_EQ(choose(1000, 2), 499500);
    EXPECT_EQ(choose(1e9, 2), 499999999500000000.0);
}

TEST(BinomialCoefficients, LargeOnesUseTheGammaFunction) {
    const double c = choose(300, 100);
    EXPECT_NEAR(c / 4.158251463258565e81, 1, 1e-11);
    EXPECT_EQ(c, std::round(c));
}

TEST(BinomialCoefficients, AreOneOutsideTheTriangle) {
    EXPECT_EQ(choose(5, 7), 1);
    EXPECT_EQ(choose(5, -1), 1);
    EXPECT_EQ(choose(50, 70), 1);
    EXPECT_EQ(choose(50, -3), 1);
    EXPECT_EQ(choose(1, 0), 1);
    EXPECT_EQ(choose(0, 5), 1);
    EXPECT_EQ(choose(-4, 2), 1);
}

TEST(BinomialCoefficients, TruncateBothNumbers) {
    EXPECT_EQ(choose(4.9, 2.9), 6);
    EXPECT_EQ(choose(nan, 2), 1);
    EXPECT_EQ(choose(5, nan), 1);
}

TEST(BinomialCoefficients, EndForAnyNumbers) {
    for (const double n : {1e300, inf, -inf, 1e10})
        for (const double k : {1e300, inf, -inf, 5e9, 1e2}) choose(n, k);
}

TEST(BinomialCoefficients, NeedOneNumber) {
    const auto build = [] {
        const Numbers two = {1, 2};
        BinomialCoefficients coefficients(two);
    };
    EXPECT_EQ(failureOf(build), "in bnc: need n to be scalar");
}

// ---- Bessel functions -----------------------------------------------------

// M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964,
// table 9.1 and 9.2.
TEST(BesselFunction, AgreesWithPublishedValues) {
    const Numbers order2 = {2};
    EXPECT_NEAR(BesselFunction(order2)(1), 0.1149034849, 1e-10);
    EXPECT_NEAR(BesselFunction(order2)(5), 0.0465651163, 1e-10);
    const Numbers order3 = {3};
    EXPECT_NEAR(BesselFunction(order3)(2), 0.12894, 5e-6);
    const Numbers truncated = {2.9};
    EXPECT_EQ(BesselFunction(truncated)(1), BesselFunction(order2)(1));
}

TEST(BesselFunction, ANegativeOrderTurnsTheSignOfOddOnes) {
    const Numbers minus3 = {-3};
    const Numbers plus3 = {3};
    EXPECT_EQ(BesselFunction(minus3)(2), -BesselFunction(plus3)(2));
}

TEST(BesselFunction, AnyOrderAndArgumentGetAnAnswer) {
    for (const double n : {0.0, 60.0, -60.0, 1e4, 1e9, -1e300, 1e300, inf, nan}) {
        const Numbers order = {n};
        BesselFunction bessel(order);
        for (const double x : {0.0, 1.0, -30.0}) EXPECT_LE(std::fabs(bessel(x)), 1) << n << " " << x;
        for (const double x : {1e6, 1e300, inf, nan}) bessel(x);
    }
}

TEST(BesselFunction, NeedsOneNumber) {
    for (const Numbers& parameters : {Numbers{}, Numbers{1, 2}}) {
        try {
            BesselFunction bessel(parameters);
            FAIL();
        } catch (const OperatorFailure& failure) {
            EXPECT_EQ(failure.code, ']');
        }
    }
}

// ---- interpolation --------------------------------------------------------

TEST(Interpolation, LinearFollowsTheChords) {
    const Numbers table = {1, 2, 3, 10, 20, 40};
    CubicInterpolation f(table, 3, false);
    EXPECT_EQ(f(1.5), 15);
    EXPECT_EQ(f(2.5), 30);
    EXPECT_EQ(f(1), 10);
    EXPECT_EQ(f(2), 20);
    EXPECT_EQ(f(3), 40);
}

TEST(Interpolation, BeyondTheTableTheEndSegmentsGoOn) {
    const Numbers table = {1, 2, 3, 10, 20, 40};
    CubicInterpolation f(table, 3, false);
    EXPECT_EQ(f(0), 0);
    EXPECT_EQ(f(4), 60);
    EXPECT_EQ(f(-inf), -inf);
    EXPECT_EQ(f(inf), inf);
}

TEST(Interpolation, CubicHasTheSlopesOfTheChords) {
    const Numbers table = {1, 2, 3, 1, 4, 9};
    CubicInterpolation f(table, 3, true);
    EXPECT_DOUBLE_EQ(f(1.5), 2.375);
    EXPECT_DOUBLE_EQ(f(2.5), 6.375);
    EXPECT_EQ(f(2), 4);
    // An inner segment of a parabola is met exactly.
    const Numbers squares = {1, 2, 3, 4, 1, 4, 9, 16};
    EXPECT_DOUBLE_EQ(CubicInterpolation(squares, 4, true)(2.5), 6.25);
}

TEST(Interpolation, TheOrderOfThePointsDoesNotMatter) {
    Numbers table;
    for (int i = 0; i < 50; ++i) table.push_back(i * i * 0.1);
    for (int i = 0; i < 50; ++i) table.push_back(std::sin(i));
    CubicInterpolation sweep(table, 50, true);
    std::mt19937 bits(1);
    std::uniform_real_distribution<double> anywhere(-20, 270);
    for (int i = 0; i < 2000; ++i) {
        const double x = i % 2 ? anywhere(bits) : i * 0.12;
        EXPECT_EQ(sweep(x), CubicInterpolation(table, 50, true)(x)) << x;
    }
}

TEST(Interpolation, EqualAbscissaeLetInfinityAndNanFlow) {
    const Numbers table = {1, 1, 2, 3, 5, 6};
    CubicInterpolation f(table, 3, false);
    EXPECT_FALSE(std::isfinite(f(1)));
    EXPECT_EQ(f(1.5), 5.5);
    const Numbers flat = {1, 1, 3, 3};
    EXPECT_FALSE(std::isfinite(CubicInterpolation(flat, 2, true)(1)));
}

TEST(Interpolation, NanGivesNan) {
    const Numbers table = {1, 2, 3, 10, 20, 40};
    EXPECT_TRUE(std::isnan(CubicInterpolation(table, 3, false)(nan)));
    EXPECT_TRUE(std::isnan(CubicInterpolation(table, 3, true)(nan)));
}

// Under the address sanitizer this also shows that nothing is read past an end.
TEST(Interpolation, StaysInsideATableThatDoesNotAscend) {
    std::mt19937 bits(2);
    const Numbers choice = {0, 1, 1, 2, -1, nan, inf, -inf};
    const auto draw = [&] { return choice[bits() % choice.size()]; };
    for (int i = 0; i < 20000; ++i) {
        const std::size_t rows = 2 + bits() % 5;
        Numbers table(2 * rows);
        for (double& v : table) v = draw();
        CubicInterpolation f(table, rows, i % 2 == 0);
        for (int k = 0; k < 6; ++k) f(draw());
    }
}

TEST(Interpolation, NeedsTwoRowsAndTwoColumns) {
    const std::string message = "in interp: too few data points for interpolation";
    const Numbers row = {1, 2};
    EXPECT_EQ(failureOf([&] { CubicInterpolation(row, 1, true); }), message);
    EXPECT_EQ(failureOf([&] { CubicInterpolation(row, 2, false); }), message);
    EXPECT_EQ(failureOf([&] { CubicInterpolation({}, 0, false); }), message);
    const Numbers wide = {1, 2, 10, 20, 5, 5};
    EXPECT_EQ(CubicInterpolation(wide, 2, true)(1.5), 15);
}

// ---- search in an ordered list --------------------------------------------

TEST(OrderedListFind, GivesThePositionFromOne) {
    const Numbers v = {1, 2, 3};
    OrderedListFind find(v);
    EXPECT_EQ(find(2), 2);
    EXPECT_EQ(find(9), 4);
    EXPECT_EQ(find(0), 1);
    EXPECT_EQ(find(1.5), 2);
    EXPECT_EQ(find(nan), 1);
    EXPECT_EQ(OrderedListFind({})(5), 1);
}

TEST(OrderedListFind, GivesTheFirstOfEqualElements) {
    const Numbers v = {1, 2, 2, 2, 3};
    EXPECT_EQ(OrderedListFind(v)(2), 2);
}

}  // namespace
}  // namespace vorpen
