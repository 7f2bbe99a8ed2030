// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/incomplete_gamma.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/errors.h"
#include "numerics/simpson.h"

namespace vorpen {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// ---- Simpson's rule -------------------------------------------------------

TEST(Simpson, IsExactForParabolas) {
    EXPECT_DOUBLE_EQ(simpson(std::vector<double>{0, 1, 4, 9, 16}, 1), 64.0 / 3);
    EXPECT_DOUBLE_EQ(simpson(std::vector<double>{1, 2, 3}, 1), 4);
    EXPECT_DOUBLE_EQ(simpson(std::vector<double>{1, 2, 3}, 0.5), 2);
}

TEST(Simpson, TheLastIntervalOfAnEvenCountIsATrapezium) {
    EXPECT_DOUBLE_EQ(simpson(std::vector<double>{0, 1, 4, 9}, 1), 8.0 / 3 + 6.5);
    EXPECT_DOUBLE_EQ(simpson(std::vector<double>{3, 5}, 2), 8);
}

TEST(Simpson, FewerThanTwoPointsGiveNothing) {
    EXPECT_EQ(simpson(std::vector<double>{}, 1), 0);
    EXPECT_EQ(simpson(std::vector<double>{7}, 1), 0);
}

// ---- the incomplete gamma function ----------------------------------------

std::string failureOf(double a, double x) {
    try {
        gammaQ(a, x);
    } catch (const PlainFailure& failure) {
        return failure.message;
    }
    return "";
}

// M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964,
// table 26.7: probability Q(chi2 | nu), which is gammaQ(nu/2, chi2/2).
TEST(GammaQ, AgreesWithTheTableOfTheChiSquareProbability) {
    struct Row {
        int nu;
        double chi2;
        double q;
    };
    for (const auto& [nu, chi2, q] : {Row{1, 1.0, 0.31731}, Row{2, 1.0, 0.60653}, Row{5, 1.0, 0.96257},
                                      Row{10, 10.0, 0.44049}, Row{4, 2.0, 0.73576}, Row{10, 20.0, 0.02925}})
        EXPECT_NEAR(gammaQ(nu / 2.0, chi2 / 2), q, 5.1e-6) << nu << " " << chi2;
}

// NIST Digital Library of Mathematical Functions, 8.4.6 and 7.11.2:
// Q(1/2, x^2) = erfc x; 8.4.10: Q(n+1, x) = exp(-x) sum of x^k/k!, k to n.
TEST(GammaQ, AgreesWithTheErrorFunctionAtOneHalf) {
    for (const double x : {0.01, 0.3, 0.7, 1.0, 1.3, 2.0, 4.0})
        EXPECT_NEAR(gammaQ(0.5, x * x), std::erfc(x), 1e-15 + 4e-15 * std::erfc(x)) << x;
}

TEST(GammaQ, AgreesWithTheFiniteSumAtIntegers) {
    for (const int a : {1, 2, 5, 20, 100})
        for (const double x : {0.1, 1.0, 5.0, 20.0, 90.0, 105.0, 150.0}) {
            double term = std::exp(-x);
            double sum = term;
            for (int k = 1; k < a; ++k) sum += term *= x / k;
            EXPECT_NEAR(gammaQ(a, x), sum, 1e-12 * sum + 1e-14) << a << " " << x;
        }
}

TEST(GammaQ, IsContinuousWhereTheMethodsMeet) {
    for (const double a : {0.5, 3.0, 30.0, 100.5})
        EXPECT_NEAR(gammaQ(a, std::nextafter(a + 1, 0)), gammaQ(a, a + 1), 1e-12) << a;
    EXPECT_NEAR(gammaQ(std::nextafter(101, 0), 95), gammaQ(101, 95), 2e-6);
}

TEST(GammaQ, LargeParametersAreIntegrated) {
    for (const double a : {101.0, 150.0, 1000.0})
        for (const double offset : {-3.0, -1.0, 0.0, 1.0, 3.0}) {
            const double x = a + offset * std::sqrt(a);
            double term = std::exp(-x + (a - 1) * std::log(x) - std::lgamma(a));
            double sum = 0;
            for (double k = a - 1; k >= 0 && term > 1e-20; term *= k / x, --k) sum += term;
            EXPECT_NEAR(gammaQ(a, x), sum, 2e-6) << a << " " << x;
        }
    EXPECT_EQ(gammaQ(1e15, 1), 1);
    EXPECT_NEAR(gammaQ(150, 1e-3), 1, 1e-9);
    EXPECT_NEAR(gammaQ(150, 1e6), 0, 1e-100);
}

TEST(GammaQ, TheTailsOfTheQuadratureAddUpToOne) {
    for (const double x : {150.0, 190.0, 200.0, 230.0})
        EXPECT_NEAR(gammaByQuadrature(200, x, false) + gammaByQuadrature(200, x, true), 1, 2e-6);
    EXPECT_EQ(gammaByQuadrature(200, 0, true), 0);
}

TEST(GammaQ, LimitsOfTheArgument) {
    EXPECT_EQ(gammaQ(2.5, 0), 1);
    EXPECT_EQ(gammaQ(500, 0), 1);
    EXPECT_EQ(gammaQ(2.5, inf), 0);
    EXPECT_EQ(gammaQ(500, inf), 0);
    EXPECT_EQ(gammaQ(2.5, 1.7e308), 0);
    EXPECT_EQ(gammaQ(5e-324, 0.5), 0);
    EXPECT_TRUE(std::isnan(gammaQ(nan, 1)));
    EXPECT_TRUE(std::isnan(gammaQ(1, nan)));
}

TEST(GammaQ, RefusesWhatIsNotDefined) {
    EXPECT_EQ(failureOf(0, 1), "a must be positive for incomplete Gamma function");
    EXPECT_EQ(failureOf(-2, 1), "a must be positive for incomplete Gamma function");
    EXPECT_EQ(failureOf(1, -1), "x must be >=0 for incomplete Gamma function");
    EXPECT_EQ(failureOf(-1, -1), "a must be positive for incomplete Gamma function");
}

}  // namespace
}  // namespace vorpen
