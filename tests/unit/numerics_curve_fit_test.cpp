// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/curve_fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

#include "base/errors.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

/// A model that remembers with which parameters it was evaluated.
class RecordedModel {
public:
    RecordedModel(Numbers x, std::function<double(std::span<const double>, double)> f)
        : x_(std::move(x)), f_(std::move(f)), values_(x_.size()) {}

    std::span<const double> operator()(std::span<const double> p) {
        calls.emplace_back(p.begin(), p.end());
        for (std::size_t i = 0; i < x_.size(); ++i) values_[i] = f_(p, x_[i]);
        return values_;
    }

    std::vector<Numbers> calls;

private:
    Numbers x_;
    std::function<double(std::span<const double>, double)> f_;
    Numbers values_;
};

double line(std::span<const double> p, double x) { return p[0] + p[1] * x; }
double growth(std::span<const double> p, double x) { return p[0] * std::exp(p[1] * x); }

const std::vector<char> both = {1, 1};

TEST(CurveFit, EvaluatesTheModelThenEachDerivativeThenTheNextStep) {
    RecordedModel model({0, 1, 2, 3}, line);
    const Numbers y = {1, 3, 5, 7};
    const CurveFit fit = fitCurve(model, {y}, Numbers{10, 20}, both);
    EXPECT_TRUE(fit.converged);
    ASSERT_GE(model.calls.size(), 7u);
    EXPECT_EQ(model.calls[0], (Numbers{10, 20}));
    EXPECT_EQ(model.calls[1], (Numbers{10 + 1e-8, 20}));
    EXPECT_EQ(model.calls[2], (Numbers{10, 20 + 1e-8}));
    // Each step evaluates three times, and the end once.
    EXPECT_EQ(model.calls.size() % 3, 1u);
    const Numbers& step = model.calls[3];
    EXPECT_EQ(model.calls[4], (Numbers{step[0] + 1e-8, step[1]}));
    EXPECT_EQ(model.calls[5], (Numbers{step[0], step[1] + 1e-8}));
    EXPECT_EQ(model.calls.back(), fit.parameters);
    // lambda is 0.001 in the first step: the normal matrix [4 6; 6 14] with its
    // diagonal raised, and the right side X'r.
    const double a = 4 * 1.001, b = 6, c = 14 * 1.001;
    const double r0 = -36 - 108, r1 = -54 - 252;
    EXPECT_NEAR(step[0] - 10, (c * r0 - b * r1) / (a * c - b * b), 1e-4);
    EXPECT_NEAR(step[1] - 20, (a * r1 - b * r0) / (a * c - b * b), 1e-4);
}

TEST(CurveFit, KeptParametersAreNeitherMovedNorDifferentiated) {
    RecordedModel model({0, 1, 2, 3}, line);
    const Numbers y = {1, 3, 5, 8};
    const std::vector<char> free = {0, 1};
    const CurveFit fit = fitCurve(model, {y}, Numbers{0.3, 0}, free);
    for (const Numbers& call : model.calls) EXPECT_EQ(call[0], 0.3);
    EXPECT_EQ(model.calls.size() % 2, 1u);
    EXPECT_EQ(fit.errors.size(), 1u);
    EXPECT_EQ(fit.degreesOfFreedom, 3);
    EXPECT_NEAR(fit.parameters[1], (2.7 + 2 * 4.7 + 3 * 7.7) / 14, 1e-6);
}

TEST(CurveFit, WithoutFreeParametersEndsAfterFourRounds) {
    RecordedModel model({0, 1}, line);
    const Numbers y = {1, 3};
    const CurveFit fit = fitCurve(model, {y}, Numbers{1, 1}, std::vector<char>{0, 0});
    EXPECT_TRUE(fit.converged);
    EXPECT_EQ(fit.chi2, 1);
    EXPECT_EQ(model.calls.size(), 6u);  // the start, four rounds, the end
    EXPECT_TRUE(fit.covariance.empty());
}

TEST(CurveFit, CovariancesAreTheInverseOfTheNormalMatrix) {
    RecordedModel model({0, 1, 2, 3}, line);
    const Numbers y = {1, 3, 4, 8}, sigma(4, 0.5);
    const CurveFit fit = fitCurve(model, {y, sigma}, Numbers{0, 0}, both);
    // 0.25 times the inverse of [4 6; 6 14].
    const Numbers expected = {0.25 * 14 / 20, -0.25 * 6 / 20, -0.25 * 6 / 20, 0.25 * 4 / 20};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(fit.covariance[i], expected[i], 1e-6);
    EXPECT_NEAR(fit.errors[0], std::sqrt(expected[0]), 1e-6);
    EXPECT_NEAR(fit.errors[1], std::sqrt(expected[3]), 1e-6);
    EXPECT_NEAR(fit.chi2, 7.2, 1e-9);
    EXPECT_EQ(fit.degreesOfFreedom, 2);
    EXPECT_NEAR(fit.q, std::exp(-3.6), 1e-9);
    EXPECT_NEAR(fit.values[3], 0.7 + 6.6, 1e-6);
}

TEST(CurveFit, ARefusedStepGoesBackAndTriesAShorterOne) {
    // From here the first step is far too long.
    RecordedModel model({0, 1, 2, 3}, growth);
    const Numbers y = {1, std::exp(1), std::exp(2), std::exp(3)};
    const CurveFit fit = fitCurve(model, {y}, Numbers{1, 3}, both);
    EXPECT_TRUE(fit.converged);
    EXPECT_NEAR(fit.parameters[0], 1, 1e-6);
    EXPECT_NEAR(fit.parameters[1], 1, 1e-6);
    EXPECT_LT(fit.chi2, 1e-9);
}

TEST(CurveFit, AChiSquareThatIsNoNumberIsRefused) {
    // A step to where the model is undefined.
    RecordedModel model({1, 2, 3, 4},
                        [](std::span<const double> p, double x) { return std::sqrt(p[0] - 1) * x; });
    const Numbers y = {0.1, 0.2, 0.3, 0.4};
    const CurveFit fit = fitCurve(model, {y}, Numbers{5}, std::vector<char>{1});
    bool undefined = false;
    for (const Numbers& call : model.calls) undefined = undefined || call[0] < 1;
    EXPECT_TRUE(undefined);
    EXPECT_TRUE(fit.converged);
    EXPECT_NEAR(fit.parameters[0], 1.01, 1e-5);
}

TEST(CurveFit, GivesUpAfterAThousandRounds) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    RecordedModel model({0, 1, 2}, [&](std::span<const double>, double) { return nan; });
    const Numbers y = {1, 2, 3};
    const CurveFit fit = fitCurve(model, {y}, Numbers{4, 5}, both);
    EXPECT_FALSE(fit.converged);
    EXPECT_EQ(fit.parameters, (Numbers{4, 5}));
    EXPECT_EQ(model.calls.size(), 3u * 1001 + 1);
    EXPECT_TRUE(std::isnan(fit.q));
}

TEST(CurveFit, WithoutDegreesOfFreedomQIsOne) {
    RecordedModel model({0, 1}, line);
    const Numbers y = {1, 3};
    const CurveFit fit = fitCurve(model, {y}, Numbers{0, 0}, both);
    EXPECT_EQ(fit.degreesOfFreedom, 0);
    EXPECT_EQ(fit.q, 1);
}

TEST(CurveFit, RefusesErrorsOfAnotherCount) {
    RecordedModel model({0, 1, 2}, line);
    const Numbers y = {1, 3, 5}, sigma = {1, 1};
    try {
        (void)fitCurve(model, {y, sigma}, Numbers{0, 0}, both);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "sig array has the wrong length");
    }
    EXPECT_TRUE(model.calls.empty());
}

TEST(CurveFit, AModelWithoutAParameterFailsWithoutFurtherEvaluations) {
    RecordedModel model({0, 1, 2}, [](std::span<const double> p, double x) { return p[0] * x; });
    const Numbers y = {1, 3, 5};
    EXPECT_THROW((void)fitCurve(model, {y}, Numbers{1, 1}, both), RuntimeError);
    EXPECT_EQ(model.calls.size(), 3u);
}

TEST(CurveFit, AFailureOfTheModelPassesThrough) {
    int evaluations = 0;
    const Numbers y = {1, 2}, values = {0, 0};
    const auto model = [&](std::span<const double>) -> std::span<const double> {
        if (++evaluations == 3) throw std::runtime_error("at the third");
        return values;
    };
    EXPECT_THROW((void)fitCurve(model, {y}, Numbers{0, 0}, both), std::runtime_error);
    EXPECT_EQ(evaluations, 3);
}

TEST(CurveFit, ManyPointsAreSummedInFull) {
    // An odd count, so that the lanes of the sums do not come out even.
    for (const int n : {1, 15, 16, 17, 1003}) {
        Numbers x, y;
        for (int i = 0; i < n; ++i) {
            x.push_back(i * 0.01);
            y.push_back(2 + (i % 2 ? 1 : -1));
        }
        RecordedModel model(x, [](std::span<const double> p, double) { return p[0]; });
        const CurveFit fit = fitCurve(model, {y}, Numbers{0}, std::vector<char>{1});
        double mean = 0;
        for (const double item : y) mean += item / n;
        EXPECT_NEAR(fit.parameters[0], mean, 1e-6) << n;
        EXPECT_NEAR(fit.covariance[0], 1.0 / n, 1e-6) << n;
    }
}

}  // namespace
}  // namespace vorpen
