// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/line_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(LineFit, WithOneErrorAndWithThatErrorForEachPointIsTheSame) {
    const Numbers x = {0, 1, 2, 3}, y = {1, 3, 4, 8};
    const LineFit one = fitLine(x, y, Numbers{0.5});
    const LineFit each = fitLine(x, y, Numbers(4, 0.5));
    // Sums: n = 4, x 6, y 16, xx 14, xy 35; b = (35 - 6*16/4)/(14 - 36/4).
    EXPECT_DOUBLE_EQ(one.b, 2.2);
    EXPECT_DOUBLE_EQ(one.a, 0.7);
    EXPECT_DOUBLE_EQ(one.sigmaB, 0.5 / std::sqrt(5));
    EXPECT_DOUBLE_EQ(one.sigmaA, 0.5 * std::sqrt(14.0 / 20));
    EXPECT_NEAR(one.chi2, 7.2, 1e-12);
    EXPECT_NEAR(one.q, std::exp(-3.6), 1e-12);  // Q(1, x) = exp(-x)
    for (const auto member :
         {&LineFit::a, &LineFit::b, &LineFit::sigmaA, &LineFit::sigmaB, &LineFit::chi2, &LineFit::q})
        EXPECT_NEAR(one.*member, each.*member, 1e-12);
    ASSERT_EQ(one.residuals.size(), 4u);
    EXPECT_NEAR(one.residuals[3], 8 - 0.7 - 6.6, 1e-12);
    EXPECT_EQ(one.errors, Numbers{0.5});
    EXPECT_EQ(each.errors, Numbers(4, 0.5));
}

TEST(LineFit, WeightsPointsByTheirErrors) {
    const LineFit fit = fitLine(Numbers{0, 1, 2, 3}, Numbers{1, 3, 4, 8}, Numbers{1, 0.5, 0.5, 1});
    EXPECT_DOUBLE_EQ(fit.b, 12.5 / 6.5);
    EXPECT_DOUBLE_EQ(fit.a, (37 - 15 * 12.5 / 6.5) / 10);
    EXPECT_DOUBLE_EQ(fit.sigmaB, std::sqrt(1 / 6.5));
    EXPECT_DOUBLE_EQ(fit.sigmaA, std::sqrt((1 + 225 / 65.0) / 10));
}

TEST(LineFit, TwoPointsHaveNothingToBeJudgedBy) {
    EXPECT_EQ(fitLine(Numbers{0, 1}, Numbers{1, 3}, Numbers{0.5}).q, 1);
    EXPECT_EQ(fitLine(Numbers{0, 1}, Numbers{1, 3}, Numbers{0.5, 0.5}).q, 1);
    EXPECT_EQ(fitLine(Numbers{0, 1}, Numbers{1, 3}).q, 1);
    EXPECT_THROW((void)fitLine(Numbers{1}, Numbers{1}), RuntimeError);
    EXPECT_THROW((void)fitLine(Numbers{}, Numbers{}, Numbers{1}), RuntimeError);
}

TEST(LineFit, FarFromTheOriginLosesNoDigits) {
    Numbers x, y;
    for (int i = 0; i < 10; ++i) {
        x.push_back(1e9 + i);
        y.push_back(3 * i + (i % 2 ? 0.5 : -0.5));
    }
    Numbers near;
    for (int i = 0; i < 10; ++i) near.push_back(i);
    const LineFit far = fitLine(x, y, Numbers{1}), here = fitLine(near, y, Numbers{1});
    EXPECT_NEAR(far.b, here.b, 1e-12);
    EXPECT_NEAR(far.chi2, here.chi2, 1e-4);
}

/// Points about a bent line with noise of one size.
void bentLine(int n, Numbers& x, Numbers& y) {
    for (int i = 0; i < n; ++i) {
        x.push_back(i);
        y.push_back(std::fabs(i - 9.5) + (i % 2 ? 1 : -1));
    }
}

double variance(std::span<const double> x, std::span<const double> y) {
    const double one = 1;
    return fitLine(x, y, {&one, 1}).chi2 / (static_cast<double>(x.size()) - 2);
}

TEST(Noise, IsEstimatedInBlocksOfTenTheLastWithTheRest) {
    for (const int n : {2, 3, 9, 10, 19, 20, 29, 30, 37}) {
        Numbers x, y;
        bentLine(n, x, y);
        const std::span<const double> xs(x), ys(y);
        const int blocks = std::max(n / 10, 1);
        double sum = 0;
        for (int k = 0; k + 1 < blocks; ++k) sum += variance(xs.subspan(k * 10, 10), ys.subspan(k * 10, 10));
        sum += variance(xs.subspan((blocks - 1) * 10), ys.subspan((blocks - 1) * 10));
        const double expected = std::sqrt(sum / blocks);
        if (n == 2)
            EXPECT_TRUE(std::isnan(estimateNoise(x, y)));
        else
            EXPECT_DOUBLE_EQ(estimateNoise(x, y), expected) << n;
    }
}

TEST(LineFit, AnEstimatedErrorGivesAProbabilityFromThirtyPointsOn) {
    Numbers x, y;
    bentLine(29, x, y);
    const LineFit few = fitLine(x, y);
    EXPECT_EQ(few.q, 1);
    EXPECT_DOUBLE_EQ(few.errors[0], estimateNoise(x, y));
    x.push_back(29);
    y.push_back(0);
    EXPECT_NEAR(fitLine(x, y).q, 0.00577, 1e-5);
}

TEST(LineFit, WithoutNoiseHasNoErrors) {
    for (const Numbers& y : {Numbers{1, 3, 5, 7}, Numbers{1, nan, 5, 7}}) {
        const LineFit fit = fitLine(Numbers{0, 1, 2, 3}, y);
        EXPECT_EQ(fit.sigmaA, 0);
        EXPECT_EQ(fit.sigmaB, 0);
        EXPECT_EQ(fit.chi2, 0);
        EXPECT_EQ(fit.q, 1);
        EXPECT_EQ(fit.dubiousPoints, 0);
    }
}

TEST(LineFit, CountsDubiousPoints) {
    // Good points in pairs, so that one point hardly moves the line.
    const auto dubious = [](std::size_t n, double deviation) {
        Numbers x(n), y(n);
        for (std::size_t i = 0; i < n; ++i) {
            x[i] = static_cast<double>(i);
            y[i] = x[i];
        }
        y[n / 2] += deviation;
        return fitLine(x, y, Numbers{1}).dubiousPoints;
    };
    EXPECT_EQ(dubious(999, 3.9), 0);
    EXPECT_EQ(dubious(999, 5), 1);
    EXPECT_EQ(dubious(1000, 5), 0);
    EXPECT_EQ(dubious(1000, 6.1), 1);
    EXPECT_EQ(dubious(1000, -6.1), 1);
}

TEST(FitRemark, FollowsItsTable) {
    EXPECT_EQ(fitRemark(0, 9e-7, 10, 50), "q is extremely low: treat results with caution");
    EXPECT_EQ(fitRemark(0, 1e-6, 10, 50), "q is rather low. Has dy error been set too low?");
    EXPECT_EQ(fitRemark(0, 9e-4, 10, 50), "q is rather low. Has dy error been set too low?");
    EXPECT_EQ(fitRemark(1, 9e-4, 10, 50), "1 dubious point. low q and many outliers");
    EXPECT_EQ(fitRemark(1, 9e-4, 11, 50), "1 dubious point. q is rather low. Query outliers?");
    EXPECT_EQ(fitRemark(2, 9e-4, 20, 50), "2 dubious points. low q and many outliers");
    EXPECT_EQ(fitRemark(2, 1e-7, 20, 50), "2 dubious points. q is extremely low: treat results with caution");
    EXPECT_EQ(fitRemark(1, 0.001, 10, 50), "1 dubious point. Unlikely result, maybe owing to outliers");
    EXPECT_EQ(fitRemark(0, 0.001, 10, 50), "Unlikely result ... just acceptable");
    EXPECT_EQ(fitRemark(0, 0.0099, 10, 50), "Unlikely result ... just acceptable");
    EXPECT_EQ(fitRemark(0, 0.01, 10, 3.99), "small chi^2 : data may be better than you think");
    EXPECT_EQ(fitRemark(0, 0.01, 11, 4), "");  // 9/2 in whole numbers
    EXPECT_EQ(fitRemark(0, 1, 11, 3.99), "small chi^2 : data may be better than you think");
    EXPECT_EQ(fitRemark(0, 1, 2, 0), "");
    EXPECT_EQ(fitRemark(0, 0.5, 10, 8), "");
    EXPECT_EQ(fitRemark(1, 0.5, 10, 8), "1 dubious point");
    EXPECT_EQ(fitRemark(3, 0.5, 10, 8), "3 dubious points. ");
    EXPECT_EQ(fitRemark(0, nan, 10, nan), "");
}

TEST(RoundedToError, KeepsOneDigitOfTheError) {
    const auto rounded = [](double value, double error) {
        const ValueWithError result = roundedToError(value, error);
        return std::pair(result.value, result.error);
    };
    using Pair = std::pair<double, double>;
    EXPECT_EQ(rounded(1.2345, 0.0321), Pair(1.23, 0.03));
    EXPECT_EQ(rounded(1.2345, 0.96), Pair(1.2, 1));
    EXPECT_EQ(rounded(1.2345, 1), Pair(1, 1));
    EXPECT_EQ(rounded(1.2345, 0.35), Pair(1.2, 0.4));
    EXPECT_EQ(rounded(12345, 321), Pair(12300, 300));
    EXPECT_EQ(rounded(12350, 100), Pair(12400, 100));
    EXPECT_EQ(rounded(-1.2345, 0.01), Pair(-1.23, 0.01));
    EXPECT_EQ(rounded(0.0007, 1e-3), Pair(0.001, 0.001));
    EXPECT_EQ(rounded(0.00123, std::nextafter(1e-3, 0.0)), Pair(0.0012, 1e-3));
    EXPECT_EQ(rounded(3e20, 1e-5), Pair(3e20, 1e-5));
    EXPECT_EQ(rounded(1.23456e-200, 1.5e-203), Pair(1.235e-200, 2e-203));
    EXPECT_FALSE(std::signbit(rounded(-0.1, 9).first));
    for (const double error : {0.0, infinite, nan, 1e-310}) {
        EXPECT_EQ(rounded(1.2345, error).first, 1.2345);
        EXPECT_TRUE(rounded(1, error).second == error || std::isnan(error));
    }
    EXPECT_TRUE(std::isnan(rounded(nan, 0.1).first));
    EXPECT_EQ(rounded(infinite, 0.1).first, infinite);
}

}  // namespace
}  // namespace vorpen
