// SPDX-License-Identifier: GPL-3.0-or-later

// What happens around the methods of GSL: failures of the function, runs that
// would not end, and calls within calls. The results are in the transcripts
// and in numerics_accuracy_test.cpp.

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/output.h"
#include "numerics/initial_value.h"
#include "numerics/quadrature.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;
using Lines = std::vector<std::string>;

class RecordedOutput final : public Output {
public:
    RecordedOutput() { setOutput(this); }
    ~RecordedOutput() override { setOutput(nullptr); }
    void print(std::string_view text, bool, PrintMode) override { lines.emplace_back(text); }
    Lines lines;
};

constexpr double infinity = HUGE_VAL;
constexpr auto noJacobian = [](std::span<const double>, std::span<double>, std::span<double>) {
    FAIL() << "the method has no use for it";
};

TEST(Integrate, AFailureEndsTheCallsAndPassesThrough) {
    RecordedOutput recorded;
    for (const auto& [a, b] : {std::pair(0.0, 1.0), std::pair(0.0, infinity), std::pair(-infinity, 0.0),
                               std::pair(-infinity, infinity)})
        for (const int failing : {1, 20, 100}) {
            int calls = 0;
            const auto f = [&](double x) {
                if (++calls == failing) throw std::runtime_error("in the function");
                return 1 / (std::fabs(x - 0.3) + 1e-12);
            };
            EXPECT_THROW((void)integrate(f, a, b, 1e-9), std::runtime_error) << a << b;
            EXPECT_EQ(calls, failing);
        }
    EXPECT_EQ(recorded.lines, Lines{});
}

TEST(Integrate, WarningsComeBackAfterAFailure) {
    RecordedOutput recorded;
    const auto failing = [](double) -> double { throw std::runtime_error("in the function"); };
    EXPECT_THROW((void)integrate(failing, 0, infinity, 1e-9), std::runtime_error);
    EXPECT_TRUE(std::isnan(integrate([](double x) { return x; }, 0, 1, -1)));
    EXPECT_EQ(recorded.lines,
              (Lines{"math error: specified tolerance is invalid or theoretically unattainable"}));
}

TEST(Integrate, WorksInsideItsOwnFunction) {
    const auto inner = [](double x) { return integrate([x](double y) { return x * y; }, 0, 2, 1e-9); };
    EXPECT_NEAR(integrate(inner, 0, 3, 1e-9), 9, 1e-9);
    EXPECT_NEAR(integrate([&](double x) { return inner(std::exp(-x)); }, 0, infinity, 1e-9), 2, 1e-7);
}

TEST(Integrate, AFailureOfAnInnerIntegralLeavesBoth) {
    RecordedOutput recorded;
    const auto inner = [](double x) {
        return integrate([](double) -> double { throw std::runtime_error("deep"); }, 0, x, 1e-9);
    };
    EXPECT_THROW((void)integrate(inner, -infinity, 1, 1e-9), std::runtime_error);
    EXPECT_EQ(recorded.lines, Lines{});
}

TEST(Integrate, EndsWhateverTheFunctionAnswers) {
    RecordedOutput recorded;
    unsigned state = 1;
    const auto noise = [&](double) {
        state = state * 1664525u + 1013904223u;
        const double values[] = {NAN,   infinity, -infinity, 0,
                                 1e308, -1e308,   1e-308,    static_cast<double>(state)};
        return values[state >> 29];
    };
    for (const auto& [a, b] : {std::pair(0.0, 1.0), std::pair(-1e308, 1e308), std::pair(0.0, infinity),
                               std::pair(-infinity, infinity), std::pair(0.0, std::nan("")),
                               std::pair(1.0, std::nextafter(1.0, 2.0))})
        (void)integrate(noise, a, b, 1e-9);
    SUCCEED();
}

TEST(IntegrateSmooth, HalvesAnIntervalTwelveTimesAtMost) {
    int calls = 0;
    Numbers y(gaussPoints, 1.0);
    const auto rough = [&](std::span<const double, gaussPoints> x) {
        ++calls;
        for (std::size_t i = 0; i < gaussPoints; ++i) y[i] = 1 / x[i];
        return std::span<const double, gaussPoints>(y);
    };
    EXPECT_FALSE(integrateSmooth(rough, 0, 1, 1e-9).converged);
    EXPECT_LT(calls, 1000);
    calls = 0;
    const auto constant = [&](std::span<const double, gaussPoints>) {
        ++calls;
        return std::span<const double, gaussPoints>(y);
    };
    std::ranges::fill(y, 1.0);
    const SmoothIntegral integral = integrateSmooth(constant, 0, 2, 1e-9);
    EXPECT_TRUE(integral.converged);
    EXPECT_NEAR(integral.value, 2, 1e-15);
    EXPECT_EQ(calls, 3);
}

TEST(IntegrateSmooth, TakesTheAbscissaeInPairsAboutTheMiddle) {
    Numbers first;
    Numbers y(gaussPoints, 0.0);
    const auto f = [&](std::span<const double, gaussPoints> x) {
        if (first.empty()) first.assign(x.begin(), x.end());
        return std::span<const double, gaussPoints>(y);
    };
    (void)integrateSmooth(f, -1, 1, 1e-9);
    EXPECT_EQ(first,
              (Numbers{-0.1488743389816312, 0.1488743389816312, -0.4333953941292472, 0.4333953941292472,
                       -0.6794095682990244, 0.6794095682990244, -0.8650633666889845, 0.8650633666889845,
                       -0.9739065285171717, 0.9739065285171717}));
}

TEST(InitialValues, AFailureEndsTheRunAndPassesThrough) {
    RecordedOutput recorded;
    for (const int failing : {1, 2, 50}) {
        int calls = 0;
        const auto f = [&](std::span<const double> y, std::span<double> d) {
            if (++calls == failing) throw std::runtime_error("in the function");
            d[0] = -y[0];
        };
        Numbers states = {1, 0, 0};
        EXPECT_THROW(solveInitialValueProblem({f, noJacobian}, Numbers{0, 1, 2}, states), std::runtime_error);
        EXPECT_EQ(calls, failing);
    }
    EXPECT_EQ(recorded.lines, Lines{});
}

TEST(InitialValues, OnePointMakesNoStep) {
    const auto f = [](std::span<const double>, std::span<double>) { FAIL() << "called"; };
    Numbers states = {3, 4};
    solveInitialValueProblem({f, noJacobian}, Numbers{7}, states);
    EXPECT_EQ(states, (Numbers{3, 4}));
}

TEST(InitialValues, ARunWithoutAnEndInSightIsGivenUp) {
    RecordedOutput recorded;
    // The solution chatters about 1/2, which takes ever the smallest steps.
    const auto chatter = [](std::span<const double> y, std::span<double> d) {
        d[0] = y[0] < 0.5 ? 1e7 : -1e7;
    };
    Numbers states = {0, 7};
    solveInitialValueProblem({chatter, noJacobian}, Numbers{0, 1e6}, states);
    EXPECT_EQ(states, (Numbers{0, 7}));
    EXPECT_EQ(recorded.lines, Lines{"ODE failed"});
}

TEST(InitialValues, StepsThatAreLostInRoundingAreGivenUp) {
    RecordedOutput recorded;
    const auto turning = [](std::span<const double> y, std::span<double> d) {
        d[0] = y[1];
        d[1] = -y[0];
    };
    Numbers states = {1, 0, 0, 0};
    solveInitialValueProblem({turning, noJacobian}, Numbers{1e17, 1e17 + 1000}, states);
    EXPECT_EQ(states, (Numbers{1, 0, 0, 0}));
    EXPECT_EQ(recorded.lines, Lines{"ODE failed"});
}

TEST(InitialValues, ARunInsideTheFunctionOfAnother) {
    const auto decayTo = [](double t) {
        const auto decay = [](std::span<const double> y, std::span<double> d) { d[0] = -y[0]; };
        Numbers states = {1, 0};
        solveInitialValueProblem({decay, noJacobian}, Numbers{0, t}, states);
        return states[1];
    };
    const auto f = [&](std::span<const double>, std::span<double> d) { d[0] = decayTo(1); };
    Numbers states = {0, 0};
    solveInitialValueProblem({f, noJacobian}, Numbers{0, 1}, states);
    EXPECT_NEAR(states[1], std::exp(-1), 1e-6);
}

}  // namespace
}  // namespace vorpen
