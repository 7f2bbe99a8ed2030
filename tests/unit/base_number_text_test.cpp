// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/number_text.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace vorpen {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The same text made by the C library and tidied by the rule for exponents.
std::string textByPrintf(double x, int precision) {
    char buffer[2000];
    std::snprintf(buffer, sizeof buffer, "%.*g", precision, x);
    std::string text = buffer;
    const auto e = text.find('e');
    if (e == std::string::npos) return text;
    auto digits = e + 1;
    if (text[digits] == '+') text.erase(digits, 1);
    if (text[digits] == '-') ++digits;
    if (text[digits] == '0') text.erase(digits, 1);
    return text;
}

TEST(NumberText, UsesTheShorterOfFixedAndScientificNotation) {
    EXPECT_EQ(doubleText(0.5, 9), "0.5");
    EXPECT_EQ(doubleText(1.0 / 3, 9), "0.333333333");
    EXPECT_EQ(doubleText(1e5, 9), "100000");
    EXPECT_EQ(doubleText(299792458, 9), "299792458");
    EXPECT_EQ(doubleText(2147483648.0, 9), "2.14748365e9");
    EXPECT_EQ(doubleText(0.0001, 9), "0.0001");
    EXPECT_EQ(doubleText(123456, 5), "1.2346e5");
    EXPECT_EQ(doubleText(99998.5, 5), "99998");
    EXPECT_EQ(doubleText(99999.5, 5), "1e5");
    EXPECT_EQ(doubleText(99999.6, 5), "1e5");
}

TEST(NumberText, TidiesTheExponent) {
    EXPECT_EQ(doubleText(1e20, 9), "1e20");
    EXPECT_EQ(doubleText(1e5, 3), "1e5");
    EXPECT_EQ(doubleText(1e-5, 9), "1e-5");
    EXPECT_EQ(doubleText(-1.5e-5, 9), "-1.5e-5");
    EXPECT_EQ(doubleText(1e100, 9), "1e100");
    EXPECT_EQ(doubleText(1e-100, 9), "1e-100");
    EXPECT_EQ(doubleText(5e-324, 9), "4.94065646e-324");
    EXPECT_EQ(doubleText(1.0545718e-34, 9), "1.0545718e-34");
}

TEST(NumberText, NamesWhatIsNoNumber) {
    EXPECT_EQ(doubleText(nan, 9), "nan");
    EXPECT_EQ(doubleText(-nan, 9), "nan");
    EXPECT_EQ(doubleText(inf, 9), "inf");
    EXPECT_EQ(doubleText(-inf, 9), "-inf");
}

TEST(NumberText, KeepsTheSignOfZero) {
    EXPECT_EQ(doubleText(0.0, 9), "0");
    EXPECT_EQ(doubleText(-0.0, 9), "-0");
}

TEST(NumberText, AnyPrecisionIsAccepted) {
    EXPECT_EQ(doubleText(1.5, 0), "2");
    EXPECT_EQ(doubleText(1.0 / 3, -1), "0.333333");
    EXPECT_EQ(doubleText(1.0 / 3, std::numeric_limits<int>::min()), "0.333333");
    EXPECT_EQ(doubleText(0.1, 25), "0.1000000000000000055511151");
    EXPECT_EQ(doubleText(0.1, 60), textByPrintf(0.1, 60));
    const double smallest = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(doubleText(smallest, std::numeric_limits<int>::max()), textByPrintf(smallest, 767));
}

TEST(NumberText, AgreesWithTheCLibraryOnAnyBits) {
    std::mt19937_64 bits(753);
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t pattern = bits();
        double x;
        std::memcpy(&x, &pattern, sizeof x);
        if (!std::isfinite(x)) continue;
        const int precision = 1 + i % 25;
        ASSERT_EQ(doubleText(x, precision), textByPrintf(x, precision));
        const double integer = std::trunc(std::ldexp(std::fmod(x, 1.0), i % 70));
        ASSERT_EQ(doubleText(integer, precision), textByPrintf(integer, precision));
        const double decimal = std::trunc(std::fmod(static_cast<double>(pattern), 1e6)) / 1000;
        ASSERT_EQ(doubleText(decimal, precision), textByPrintf(decimal, precision));
    }
}

TEST(NumberText, ComplexNumbersShowBothParts) {
    EXPECT_EQ(complexText({1, 2}, 9), "1+2i");
    EXPECT_EQ(complexText({1, -2.5}, 9), "1-2.5i");
    EXPECT_EQ(complexText({-0.5, 1e20}, 9), "1e20i");
    EXPECT_EQ(complexText({1e10, 1e20}, 9), "1e10+1e20i");
}

TEST(NumberText, AnImaginaryPartOfOneHasNoDigit) {
    EXPECT_EQ(complexText({1, 1}, 9), "1+i");
    EXPECT_EQ(complexText({1, -1}, 9), "1-1i");
    EXPECT_EQ(complexText({0, 1}, 9), "1i");
    EXPECT_EQ(complexText({0, -1}, 9), "-1i");
}

TEST(NumberText, ANegligiblePartOfAComplexNumberIsLeftOut) {
    EXPECT_EQ(complexText({3, 0}, 9), "3");
    EXPECT_EQ(complexText({0, 0}, 9), "0");
    EXPECT_EQ(complexText({1, 1.11e-15}, 9), "1");
    EXPECT_EQ(complexText({1, 1.12e-15}, 9), "1+1.12e-15i");
    EXPECT_EQ(complexText({1.11e-15, 2}, 9), "2i");
    EXPECT_EQ(complexText({1.12e-15, 1}, 9), "1.12e-15+i");
    EXPECT_EQ(complexText({inf, 1}, 9), "inf");
    EXPECT_EQ(complexText({1, -inf}, 9), "-infi");
    EXPECT_EQ(complexText({nan, 2}, 9), "nan+2i");
}

}  // namespace
}  // namespace vorpen
