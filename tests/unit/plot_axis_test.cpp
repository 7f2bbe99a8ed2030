// SPDX-License-Identifier: GPL-3.0-or-later

// Limits, ticks and the numbers beside them.

#include "plot/axis_scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace vorpen {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double largest = std::numeric_limits<double>::max();
constexpr double denormal = std::numeric_limits<double>::denorm_min();

AxisScale axis(bool linear) {
    AxisScale scale;
    scale.linear = linear;
    return scale;
}

AxisLimits limitsX(double min, double max, bool linear = true) {
    return niceLimits(axis(linear), 3, min, max);
}
AxisLimits limitsY(double min, double max, bool linear = true) {
    return niceLimits(axis(linear), 2, min, max);
}

void expectNear(AxisLimits limits, double min, double max) {
    EXPECT_NEAR(limits.min, min, 1e-12 * std::max(1.0, std::fabs(min)));
    EXPECT_NEAR(limits.max, max, 1e-12 * std::max(1.0, std::fabs(max)));
}

AxisScale ticks(double min, double max, bool linear = true) {
    AxisScale scale = axis(linear);
    chooseTicks(scale, min, max);
    return scale;
}

// ---- decompose ---------------------------------------------------------------

TEST(Decompose, DigitsAndPower) {
    EXPECT_EQ(decompose(3, 1234.5), (Sci{1230, 1.23, 3, 1000}));
    EXPECT_EQ(decompose(1, -0.0254), (Sci{-0.03, -3, -2, 0.01}));
    EXPECT_EQ(decompose(2, 9.96), (Sci{10, 1, 1, 10}));
    EXPECT_EQ(decompose(1, 1e300), (Sci{1e300, 1, 300, 1e300}));
    EXPECT_EQ(decompose(3, 0), Sci());
}

TEST(Decompose, HalvesGoAwayFromZero) {
    EXPECT_EQ(decompose(1, 2.5).rounded, 3);
    EXPECT_EQ(decompose(1, -2.5).rounded, -3);
    EXPECT_EQ(decompose(2, 1.25).rounded, 1.3);
}

TEST(Decompose, TheLeadingDigitIsExact) {
    for (int exponent = -300; exponent <= 300; ++exponent)
        for (int digit = 1; digit <= 9; ++digit) {
            const Sci parts = decompose(1, std::stod(std::to_string(digit) + "e" + std::to_string(exponent)));
            EXPECT_EQ(parts.mantissa, digit) << exponent;
            EXPECT_EQ(parts.exponent, exponent) << digit;
        }
}

TEST(Decompose, ExtremesAndWhatIsNoNumber) {
    for (const double x : {denormal, 4e-310, largest, -largest}) {
        const Sci parts = decompose(3, x);
        EXPECT_TRUE(std::isfinite(parts.mantissa)) << x;
        EXPECT_GE(std::fabs(parts.mantissa), 1) << x;
        EXPECT_LT(std::fabs(parts.mantissa), 10) << x;
    }
    for (const double x : {std::nan(""), infinity, -infinity}) EXPECT_EQ(decompose(3, x), Sci());
}

// ---- Limits --------------------------------------------------------------------

TEST(LinearLimits, TheMarginOfYLeavesZeroAlone) {
    expectNear(limitsY(0, 10), 0, 11);
    expectNear(limitsY(-10, 0), -11, 0);
    expectNear(limitsX(0, 10), 0, 10);
}

TEST(LinearLimits, FarFromZeroTheyStay) {
    expectNear(limitsY(1000, 1010), 999, 1011);
    expectNear(limitsX(1000, 1010), 1000, 1010);
}

TEST(LinearLimits, ReachToANearZero) {
    expectNear(limitsY(1, 10), 0, 11);
    expectNear(limitsX(1, 10), 0, 10);
    expectNear(limitsX(-10, -1), -10, 0);
    expectNear(limitsX(4, 10), 4, 10);
}

TEST(LinearLimits, RoundOutwardWhereItCostsLittle) {
    expectNear(limitsX(10.04, 20.04), 10, 20.04);
    expectNear(limitsX(-3.999, 8.996), -4, 9);
    expectNear(limitsY(-10, 10), -12, 12);
}

TEST(LinearLimits, EqualOnesAreSetApart) {
    expectNear(limitsY(5, 5), 4.97, 5.03);
    expectNear(limitsY(-5, -5), -5.03, -4.97);
    expectNear(limitsX(0, 0), -0.0005, 0.0005);
    const AxisLimits large = limitsY(1e300, 1e300);
    EXPECT_LT(large.min, large.max);
}

TEST(LogLimits, GoToDecades) {
    EXPECT_EQ(limitsX(1, 1000, false), (AxisLimits{1, 1000}));
    EXPECT_EQ(limitsY(1, 100, false), (AxisLimits{0.1, 1000}));
    EXPECT_EQ(limitsX(3, 700, false), (AxisLimits{1, 1000}));
    EXPECT_EQ(limitsX(8.5, 700, false).min, 1);
}

TEST(LogLimits, LessThanAFactorOfFive) {
    expectNear(limitsX(2, 4, false), 2 / 1.3, 5.2);
    expectNear(limitsX(1, 3, false), 1 / 1.3, 4);
}

TEST(LogLimits, WhatIsNotAboveZero) {
    EXPECT_EQ(limitsX(-5, 0, false), (AxisLimits{0.1, 1}));
    expectNear(limitsX(0, 100, false), 1e-8, 110);
    expectNear(limitsY(-3, 100, false), 1e-8, 110);
}

// ---- Ticks -------------------------------------------------------------------------

TEST(LinearTicks, StepByTheLeadingDigit) {
    const auto expectStep = [](double range, double step, int minors) {
        const AxisScale scale = ticks(0, range);
        EXPECT_DOUBLE_EQ(scale.step, step) << range;
        EXPECT_EQ(scale.minors, minors) << range;
        EXPECT_DOUBLE_EQ(scale.minorStep, step / minors) << range;
        EXPECT_EQ(scale.minorStart, scale.minorStep) << range;
    };
    expectStep(1, 0.2, 4);
    expectStep(1.4, 0.2, 4);
    expectStep(2, 0.5, 5);
    expectStep(30, 5, 5);
    expectStep(400, 100, 5);
    expectStep(0.07, 0.01, 5);
    expectStep(8, 2, 4);
    expectStep(9, 2, 4);
    expectStep(9.9, 2, 4);  // rounds to 10, so the digit is 1
}

TEST(LinearTicks, FirstAndCount) {
    const AxisScale ten = ticks(0, 10);
    EXPECT_EQ(ten.first, 0);
    EXPECT_EQ(ten.count, 6);
    const AxisScale about = ticks(-12, 11);
    EXPECT_DOUBLE_EQ(about.first, -10);
    EXPECT_DOUBLE_EQ(about.step, 5);
    EXPECT_EQ(about.count, 5);
    const AxisScale far = ticks(999, 1011);
    EXPECT_DOUBLE_EQ(far.first, 1000);
    EXPECT_DOUBLE_EQ(far.step, 2);
    EXPECT_EQ(far.count, 6);
    const AxisScale small = ticks(4.97, 5.03);
    EXPECT_NEAR(small.first, 4.97, 1e-12);
    EXPECT_DOUBLE_EQ(small.step, 0.01);
}

TEST(LogTicks, LinesAtTwoToNine) {
    const AxisScale scale = ticks(0.1, 1000, false);
    EXPECT_EQ(scale.minors, AxisScale::logPattern);
    EXPECT_EQ(scale.first, 0.1);
    EXPECT_EQ(scale.step, 10);
    EXPECT_EQ(scale.count, 5);
    EXPECT_EQ(scale.minorStart, 2);
    EXPECT_EQ(scale.minorStep, 1);
    EXPECT_FALSE(scale.additive());
}

TEST(LogTicks, TwentyDecadesHaveSevenTicks) {
    const AxisScale scale = ticks(1e-10, 1e10, false);
    EXPECT_EQ(scale.count, 7);
    EXPECT_EQ(scale.step, 1e4);
    EXPECT_EQ(scale.minors, 4);
    EXPECT_EQ(scale.minorStep, 10);
}

TEST(LogTicks, LessThanADecadeIsAdded) {
    const AxisScale scale = ticks(1, 6, false);
    EXPECT_TRUE(scale.additive());
    EXPECT_EQ(scale.first, 1);
    EXPECT_EQ(scale.step, 1);
    EXPECT_EQ(scale.count, 6);
}

TEST(LogTicks, LimitsThatAreNotAboveZero) {
    EXPECT_EQ(ticks(-1, -1, false).count, 7);
    EXPECT_EQ(ticks(0, 100, false).count, 7);
    EXPECT_NEAR(ticks(0, 100, false).first, 1e-18, 1e-30);
}

TEST(Ticks, NeverTooManyWhateverTheLimits) {
    std::vector<double> ends = {0,         1,       -1,        1e-300,   -1e-300,      1e300,
                                -1e300,    largest, -largest,  denormal, std::nan(""), infinity,
                                -infinity, 1e-5,    1 + 1e-15, 1e15 + 1};
    std::mt19937_64 random(3);
    for (int k = 0; k < 200; ++k) {
        double x;
        const std::uint64_t bits = random();
        std::memcpy(&x, &bits, sizeof x);
        ends.push_back(x);
    }
    for (const double a : ends)
        for (const double b : ends)
            for (const bool linear : {true, false}) {
                const AxisLimits limits = niceLimits(axis(linear), 2, a, b);
                EXPECT_TRUE(std::isfinite(limits.min) && std::isfinite(limits.max)) << a << " " << b;
                for (const AxisScale& scale : {ticks(a, b, linear), ticks(limits.min, limits.max, linear)}) {
                    EXPECT_GE(scale.count, 0) << a << " " << b;
                    EXPECT_LE(scale.count, 20) << a << " " << b;
                    EXPECT_LE(scale.minors, 200) << a << " " << b;
                }
            }
}

TEST(Series, AddsOrMultiplies) {
    EXPECT_EQ(series(3, true, 2, 1), (std::vector<double>{1, 3, 5}));
    EXPECT_EQ(series(3, false, 10, 2), (std::vector<double>{2, 20, 200}));
    EXPECT_TRUE(series(0, true, 1, 1).empty());
    EXPECT_TRUE(series(-4, true, 1, 1).empty());
}

TEST(TickText, HasNoPlusAndNoZeroInItsExponent) {
    EXPECT_EQ(formatTick(4, 1e6), "1e6");
    EXPECT_EQ(formatTick(4, 1.5e-5), "1.5e-5");
    EXPECT_EQ(formatTick(4, 1e100), "1e100");
    EXPECT_EQ(formatTick(4, 0.30000000000000004), "0.3");
    EXPECT_EQ(formatTick(4, 12345), "1.234e4");
    EXPECT_EQ(formatTick(4, -2000), "-2000");
    EXPECT_EQ(formatTick(4, std::nan("")), "nan");
}

}  // namespace
}  // namespace vorpen
