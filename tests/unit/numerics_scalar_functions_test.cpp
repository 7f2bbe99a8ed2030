// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/scalar_functions.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/output.h"
#include "numerics/gsl_errors.h"

namespace vorpen {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(ScalarFunctions, Log2CarriesItsSmallSummand) {
    EXPECT_EQ(log2Raised(1), 2.220446049250313e-16);
    EXPECT_EQ(log2Raised(8), std::log(8.0) * 1.4426950408889634 + 2.220446049250313e-16);
    EXPECT_EQ(log2Raised(8), 3);
    EXPECT_EQ(log2Raised(0), -inf);
    EXPECT_TRUE(std::isnan(log2Raised(-1)));
}

TEST(ScalarFunctions, Steps) {
    EXPECT_EQ(sign(3), 1);
    EXPECT_EQ(sign(0), 0);
    EXPECT_EQ(sign(-0.0), 0);
    EXPECT_EQ(sign(-3), -1);
    EXPECT_EQ(sign(nan), -1);
    EXPECT_EQ(fstep(3), 1);
    EXPECT_EQ(fstep(0), 0.5);
    EXPECT_EQ(fstep(-3), 0);
    EXPECT_EQ(fstep(nan), 0);
    EXPECT_EQ(tophat(0.5), 1);
    EXPECT_EQ(tophat(0), 0.5);
    EXPECT_EQ(tophat(1), 0.5);
    EXPECT_EQ(tophat(-0.1), 0);
    EXPECT_EQ(tophat(1.1), 0);
    EXPECT_EQ(tophat(nan), 0);
}

TEST(ScalarFunctions, SincPhaseAndNanFlag) {
    EXPECT_EQ(sinc(0), 1);
    EXPECT_EQ(sinc(2), std::sin(2.0) / 2);
    EXPECT_EQ(phase(-1), std::numbers::pi);
    EXPECT_EQ(phase(2), 0);
    EXPECT_EQ(phase(0), 0);
    EXPECT_EQ(nanFlag(nan), 1);
    EXPECT_EQ(nanFlag(inf), 0);
    EXPECT_EQ(nanFlag(0), 0);
}

TEST(ScalarFunctions, Integers) {
    EXPECT_EQ(bitWeight(0), 0);
    EXPECT_EQ(bitWeight(7), 3);
    EXPECT_EQ(bitWeight(-1), 32);
    EXPECT_EQ(bitWeight(std::numeric_limits<std::int32_t>::min()), 1);
    EXPECT_EQ(lowerCase('A'), 'a');
    EXPECT_EQ(lowerCase('Z'), 'z');
    for (const int code : {int('a'), int('0'), int('['), -60, 0, 1000000, -1000000})
        EXPECT_EQ(lowerCase(code), code);
}

// M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions, 1964,
// tables 9.1, 10.11, 23.3 and 26.5.
TEST(SpecialFunctions, AgreeWithPublishedValues) {
    EXPECT_NEAR(besselJ0(1), 0.765197686557967, 1e-14);
    EXPECT_NEAR(besselJ0(2.5), -0.048383776468198, 1e-14);
    EXPECT_NEAR(besselJ1(1), 0.440050585744934, 1e-14);
    EXPECT_NEAR(besselJ1(2.5), 0.497094102464274, 1e-14);
    EXPECT_NEAR(airy(0), 0.355028053887817, 1e-14);
    EXPECT_NEAR(airy(1), 0.135292416312881, 1e-14);
    EXPECT_NEAR(zeta(2), std::numbers::pi * std::numbers::pi / 6, 1e-14);
    EXPECT_NEAR(zeta(3), 1.20205690315959428540, 1e-14);
    EXPECT_NEAR(zeta(-1), -1.0 / 12, 1e-15);
    EXPECT_NEAR(erfinv(0.975), 1.95996398454005, 1e-13);
    EXPECT_EQ(erfinv(0.5), 0);
    EXPECT_EQ(erfinv(1), inf);
    EXPECT_EQ(erfinv(0), -inf);
}

TEST(SpecialFunctions, AiryFollowsItsPrecision) {
    const double exact = airy(1.25);
    for (const double mode : {1.0, 2.9, 1e300}) {
        airyPrecision() = mode;
        EXPECT_NEAR(airy(1.25), exact, 1e-5);
    }
    for (const double mode : {0.9, -7.0, nan, 1e-9}) {
        airyPrecision() = mode;
        EXPECT_EQ(airy(1.25), exact);
    }
}

// ---- errors of GSL --------------------------------------------------------

class RecordedOutput final : public Output {
public:
    RecordedOutput() { setOutput(this); }
    ~RecordedOutput() override { setOutput(nullptr); }
    void print(std::string_view text, bool ownLine, PrintMode mode) override {
        EXPECT_TRUE(ownLine);
        EXPECT_EQ(mode, PrintMode::markup);
        lines.emplace_back(text);
    }
    std::vector<std::string> lines;
};

TEST(GslErrors, ADomainErrorIsAWarning) {
    RecordedOutput recorded;
    EXPECT_TRUE(std::isnan(zeta(1)));
    ASSERT_FALSE(recorded.lines.empty());
    EXPECT_EQ(recorded.lines[0], "math error: input domain error");
}

TEST(GslErrors, AnUnderflowIsAWarning) {
    RecordedOutput recorded;
    EXPECT_EQ(airy(1000), 0);
    ASSERT_FALSE(recorded.lines.empty());
    EXPECT_EQ(recorded.lines[0], "math error: underflow");
}

TEST(GslErrors, WarningsCanBeSilenced) {
    RecordedOutput recorded;
    {
        const NoGslWarnings outer;
        {
            const NoGslWarnings inner;
            zeta(1);
        }
        zeta(1);
    }
    EXPECT_TRUE(recorded.lines.empty());
    zeta(1);
    EXPECT_FALSE(recorded.lines.empty());
}

TEST(GslErrors, AWarningThatCannotBeShownIsDropped) {
    class Failing final : public Output {
        void print(std::string_view, bool, PrintMode) override { throw 1; }
    } failing;
    setOutput(&failing);
    EXPECT_TRUE(std::isnan(zeta(1)));
    setOutput(nullptr);
}

TEST(GslErrors, NanPassesWithoutWarning) {
    RecordedOutput recorded;
    EXPECT_TRUE(std::isnan(zeta(nan)));
    EXPECT_TRUE(recorded.lines.empty());
}

}  // namespace
}  // namespace vorpen
