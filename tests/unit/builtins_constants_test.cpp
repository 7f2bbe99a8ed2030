// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/constants.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

#include "builtins/keywords.h"
#include "builtins_support.h"

namespace vorpen {
namespace {

using builtin::numericLimits;
using testing::empty;
using testing::failure;
using testing::row;
using testing::text;

struct NamedBits {
    std::string_view name;
    std::uint64_t bits;
};

constexpr NamedBits expectedBits[] = {
    {"pi", 0x400921fb54442d18},      {"rt2", 0x3ff6a09e667f3bcd},   {"rt3", 0x3ffbb67ae8584caa},
    {"ee", 0x4005bf0a8b145769},      {"ln2", 0x3fe62e42fefa39ef},   {"deg", 0x3f91df46a2529d39},
    {"cc", 0x41b1de784a000000},      {"mu0", 0x3eb515370fcb41e4},   {"eps0", 0x3da37876f1206634},
    {"GG", 0x3dd2589f2e0b7559},      {"year", 0x417e187e00000000},  {"AU", 0x42416a5d2d360000},
    {"hbar", 0x38e185a7054e4c91},    {"kB", 0x3b30b0e7267f9477},    {"eV", 0x3c07a4da290c1653},
    {"Mp", 0x3a609099b1eaa2c5},      {"Me", 0x39b279dcc8b6b7ed},    {"au", 0x3a6071f778ed6aaf},
    {"NA", 0x44dfe185ca57c517},      {"T0", 0x4071126666666666},    {"alpha", 0x3f7de3d42a1ed29d},
    {"muB", 0x3b266c55687f22f1},     {"sigSB", 0x3e6e714d2298d740}, {"lPlanck", 0x38b57ba3e4e425ae},
    {"aBohr", 0x3dcd1781d4f95a3a},   {"Mpc", 0x449a22ff2615d60f},   {"inf", 0x7ff0000000000000},
    {"nan", 0x7ff8000000000000},
};

TEST(Constants, HaveTheirBitsInOrderOfEntry) {
    ASSERT_EQ(std::size(physicsConstantRows), std::size(expectedBits));
    for (std::size_t i = 0; i < std::size(expectedBits); ++i) {
        EXPECT_EQ(physicsConstantRows[i].name, expectedBits[i].name);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(physicsConstantRows[i].value), expectedBits[i].bits)
            << expectedBits[i].name;
    }
}

TEST(Constants, ShortNamesRepeatTheLongOnes) {
    ASSERT_EQ(std::size(shortConstantRows), 3u);
    EXPECT_EQ(shortConstantRows[0].name, "c");
    EXPECT_EQ(shortConstantRows[0].value, 299792458.0);
    EXPECT_EQ(shortConstantRows[1].name, "G");
    EXPECT_EQ(std::bit_cast<std::uint64_t>(shortConstantRows[1].value), 0x3dd2589f2e0b7559u);
    EXPECT_EQ(shortConstantRows[2].name, "g");
    EXPECT_EQ(shortConstantRows[2].value, 9.80665);
}

TEST(NumericLimits, ByKeyAndByCode) {
    constexpr std::pair<const char*, int> keys[] = {{"min", 1},  {"max", 2},  {"dmin", 3}, {"dmax", 4},
                                                    {"eps", 5},  {"mine", 6}, {"maxe", 7}, {"mini", 8},
                                                    {"maxi", 9}, {"int", 9},  {"bits", 10}};
    constexpr double results[] = {0,
                                  2.2250738585072014e-308,
                                  1.7976931348623157e+308,
                                  2.2250738585072014e-308,
                                  1.7976931348623157e+308,
                                  2.220446049250313e-16,
                                  -307,
                                  308,
                                  -2147483648.0,
                                  2147483647.0,
                                  31.999999999664098};
    for (const auto& [key, code] : keys) {
        EXPECT_EQ(numericLimits(text(key)), results[code]) << key;
        EXPECT_EQ(numericLimits(DoubleValue(code)), results[code]) << key;
    }
}

TEST(NumericLimits, OtherArguments) {
    EXPECT_EQ(numericLimits(empty()), 0);
    EXPECT_EQ(numericLimits(DoubleValue(0)), 0);
    EXPECT_EQ(numericLimits(DoubleValue(11)), 0);
    EXPECT_EQ(numericLimits(DoubleValue(std::numeric_limits<double>::quiet_NaN())), 0);
    EXPECT_EQ(numericLimits(DoubleValue(1e300)), 0);
    EXPECT_EQ(numericLimits(row({5.9, 1})), 2.220446049250313e-16);
    EXPECT_EQ(numericLimits(testing::listOf({})), 0);
    EXPECT_EQ(failure([] { (void)numericLimits(text("foo")); }),
              "in numeric_limits: unrecognised string parameter");
    EXPECT_EQ(failure([] { (void)numericLimits(text("MIN")); }),
              "in numeric_limits: unrecognised string parameter");
}

TEST(Keywords, HaveTheirCodes) {
    constexpr std::pair<const char*, int> codes[] = {
        {"while", 1},   {"if", 2},     {"unless", 3},  {"for", 4},     {"else", 5},        {"clear", 6},
        {"return", 7},  {"function", 9}, {"end", 10},  {"funcdec", 11}, {"const", 13},     {"global", 14},
        {"persistent", 15}, {"use", 16}, {"break", 17}, {"continue", 18}};
    for (const auto& [name, code] : codes) {
        EXPECT_EQ(keywordCode(name), code) << name;
        EXPECT_TRUE(isKeyword(name));
    }
    for (const char* name : {"", "w", "While", "whil", "whilee", "true", "pi"}) EXPECT_FALSE(isKeyword(name)) << name;
}

TEST(Keywords, AreListedByName) {
    EXPECT_EQ(listKeywords(),
              "break clear const continue else end for funcdec function global if persistent return unless use "
              "while ");
}

}  // namespace
}  // namespace vorpen
