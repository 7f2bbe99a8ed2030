// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/differentiate.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace vorpen {
namespace {

/// The derivative of a function of one number, with the default step.
std::vector<double> derivativeOf(double (*f)(double), const std::vector<double>& x) {
    std::array<double, stencilSize> values;
    const auto onStencil = [&](std::span<const double, stencilSize> points) {
        for (std::size_t i = 0; i < stencilSize; ++i) values[i] = f(points[i]);
        return std::span<const double, stencilSize>(values);
    };
    std::vector<double> derivative(x.size());
    differentiate(onStencil, x, derivativeStep(x), derivative);
    return derivative;
}

TEST(DerivativeStep, IsASmallPartOfTheRange) {
    const auto stepOf = [](std::vector<double> x) { return derivativeStep(x); };
    EXPECT_DOUBLE_EQ(stepOf({1, 4, 2}), 3e-05);
    EXPECT_DOUBLE_EQ(stepOf({-2, -7}), 5e-05);
    EXPECT_EQ(stepOf({3, 3}), 1e-05);
    EXPECT_EQ(stepOf({3}), 1e-05);
    EXPECT_EQ(stepOf({}), 0);
}

TEST(Differentiate, FindsKnownDerivatives) {
    const std::vector<double> x = {0.5, 1, 1.7, 2};
    const auto sine = derivativeOf([](double t) { return std::sin(t); }, x);
    const auto exponential = derivativeOf([](double t) { return std::exp(t); }, x);
    for (std::size_t i = 0; i < x.size(); ++i) {
        EXPECT_NEAR(sine[i], std::cos(x[i]), 1e-10);
        EXPECT_NEAR(exponential[i], std::exp(x[i]), 1e-9);
    }
    EXPECT_TRUE(derivativeOf([](double t) { return t; }, {}).empty());
}

TEST(Differentiate, IsExactForQuarticsUpToRounding) {
    // A wide step leaves no rounding to speak of; the fifth power has an error.
    const auto at = [](double (*f)(double)) {
        const std::array<double, 1> x = {1};
        std::array<double, 1> derivative;
        std::array<double, stencilSize> values;
        differentiate(
            [&](std::span<const double, stencilSize> points) {
                for (std::size_t i = 0; i < stencilSize; ++i) values[i] = f(points[i]);
                return std::span<const double, stencilSize>(values);
            },
            x, 0.25, derivative);
        return derivative[0];
    };
    EXPECT_EQ(at([](double t) { return t * t * t * t; }), 4);
    // The error is -4 h^4 times the fifth derivative over 5!.
    EXPECT_EQ(at([](double t) { return t * t * t * t * t; }), 5 - 4 * std::pow(0.25, 4));
}

TEST(Differentiate, CallsTheFunctionOnceForEachPoint) {
    int calls = 0;
    std::array<double, stencilSize> seen{};
    const std::vector<double> x = {10, 20};
    std::vector<double> derivative(2);
    differentiate(
        [&](std::span<const double, stencilSize> points) {
            ++calls;
            std::copy(points.begin(), points.end(), seen.begin());
            return points;
        },
        x, 0.5, derivative);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(seen, (std::array<double, stencilSize>{19, 19.5, 20, 20.5, 21}));
    EXPECT_EQ(derivative, (std::vector<double>{1, 1}));
}

}  // namespace
}  // namespace vorpen
