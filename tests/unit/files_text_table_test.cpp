// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/text_table.h"

#include <gtest/gtest.h>

#include <clocale>
#include <sstream>
#include <string>
#include <vector>

#include "builtins_support.h"

namespace vorpen {
namespace {

using testing::failure;
using Numbers = std::vector<double>;

Numbers table(const std::string& text, std::int64_t columns) {
    const NumberTable result = readTable(text, 1, "t");
    EXPECT_EQ(result.columns, columns) << text;
    return result.numbers;
}

std::string tableFailure(const std::string& text, std::int64_t wanted = 1) {
    return failure([&] { (void)readTable(text, wanted, "t"); });
}

TEST(TextTable, RowsAndSeparators) {
    EXPECT_EQ(table("1 2 3\n4,5,6\n\t7, 8 ,\t9\r\n", 3), (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(table("1", 1), Numbers{1});
    EXPECT_EQ(table("1\n", 1), Numbers{1});
}

TEST(TextTable, CommentsStandAnywhere) {
    EXPECT_EQ(table("x y\n-x 3\n. s\n+1 2\n\n  1 2\n# 3 4\n \t ,\n\r\n5 6", 2), (Numbers{1, 2, 5, 6}));
    EXPECT_EQ(table("-5 3\n.5 2\n-.5 1\n", 2), (Numbers{-5, 3, .5, 2, -.5, 1}));
}

TEST(TextTable, TheRestOfARowIsDropped) {
    EXPECT_EQ(table("1 2 km 3\n4 5 6 7\n8,9,ten\n", 2), (Numbers{1, 2, 4, 5, 8, 9}));
}

TEST(TextTable, ShortRowsAreToldByTheirNumber) {
    EXPECT_EQ(tableFailure("1 2\n# no data line\n3 4\n5\n6 7\n"), "in load: t has inconsistent format at line 3");
    EXPECT_EQ(tableFailure("1 2\n3 x\n"), "in load: t has inconsistent format at line 2");
    EXPECT_EQ(tableFailure("1 2\n3\n4\n"), "in load: t has inconsistent format at line 2");
    EXPECT_EQ(tableFailure("1 2\n3 "), "in load: t has inconsistent format at line 2");
}

TEST(TextTable, TooFewColumns) {
    const std::string message = "in load: not enough number columns in the file";
    for (const char* text : {"", "\n", "x", "no\nnumbers\n", "1e", "  "}) EXPECT_EQ(tableFailure(text), message) << text;
    EXPECT_EQ(tableFailure("1 2\n", 3), message);
    EXPECT_EQ(tableFailure("1 2\n", 2), "no failure");
}

TEST(TextTable, ManyColumns) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "7 ";
    EXPECT_EQ(table(text + "\n" + text, 1000000).size(), 2000000u);
    EXPECT_EQ(tableFailure(text + "\n7 7"), "in load: t has inconsistent format at line 2");
}

TEST(TextTable, FlatFormStopsAtTheFirstThingThatIsNoNumber) {
    EXPECT_EQ(readNumbers("# head\n1 2 3\n\n4 5\r\n6\n"), (Numbers{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(readNumbers("1 2\nx\n3\n"), (Numbers{1, 2}));
    EXPECT_EQ(readNumbers("1 2 x 3"), (Numbers{1, 2}));
    EXPECT_EQ(readNumbers(""), Numbers{});
    EXPECT_EQ(readNumbers("none"), Numbers{});
}

/// What a stream of the standard library makes of a text that begins with a
/// number, as numbers up to the first failure.
Numbers extracted(const std::string& text) {
    std::istringstream in(text);
    Numbers numbers;
    for (double x; in >> x;) {
        numbers.push_back(x);
        while (in.peek() == ',' || in.peek() == ' ') in.get();
    }
    return numbers;
}

TEST(TextTable, NumbersAreThoseOfStreamExtraction) {
    for (const char* number :
         {"1", "-1", "+1", "01", "1.", ".1", "-.1", "+.1", "1.5", "1e3", "1E3", "1e+3", "1e-3", "1e", "1e+", "1e-",
          "1ex", "1eV", "1em", "1.e3", ".e3", ".", "-", "+", "+-1", "-+1", "--1", "1.2.3", "1-2", "1+2", "1e5.5",
          "1e5e5", "0x10", "0x", "1f", "1d0", "1_0", "1'0", "inf", "nan", "-inf", "infinity", "1e308", "1.8e308",
          "1e999", "-1e999", "1e-320", "1e-400", "-1e-400", "4.9e-324", "2e-324", "1e99999999999", "1e-99999999999",
          "0e99999999999", "0.1", "123456789012345678901234567890", "9007199254740993", "0.30000000000000004",
          "2.2250738585072011e-308", "1.7976931348623157e308", "00000000000000000000000000000000000000001",
          "0.000000000000000000000000000000000000000000000001", "1e22", "1e23", "123456789e-22", "1e", "3e 5"}) {
        for (const char* behind : {"", " 7", ",7", "x"}) {
            const std::string text = "5 " + std::string(number) + behind;
            EXPECT_EQ(readNumbers(text), extracted(text)) << text;
        }
    }
}

TEST(TextTable, EveryNumberIsTheNearestDouble) {
    std::string text;
    Numbers expected;
    std::uint64_t state = 88172645463325252u;
    for (int i = 0; i < 20000; ++i) {
        state ^= state << 13, state ^= state >> 7, state ^= state << 17;
        char number[40];
        const int digits = 1 + static_cast<int>(state % 19);
        const int exponent = static_cast<int>(state >> 32) % 40;
        const double x = static_cast<double>(static_cast<std::int64_t>(state)) / 1e9;
        if (i % 2)
            std::snprintf(number, sizeof number, "%.*g", digits, x);
        else
            std::snprintf(number, sizeof number, "%.*e", digits - 1, x * std::pow(10.0, exponent));
        text.append(number).append(i % 10 == 9 ? "\n" : " ");
        expected.push_back(std::strtod(number, nullptr));
    }
    EXPECT_EQ(readNumbers(text), expected);
}

TEST(TextTable, ZeroBytesAndBinaryRubbish) {
    EXPECT_EQ(table(std::string("1 2\0 3\n4 5\n", 11), 2), (Numbers{1, 2, 4, 5}));
    std::string rubbish;
    for (int i = 0; i < 100000; ++i) rubbish += static_cast<char>(i * 7919 >> 3);
    (void)tableFailure(rubbish);
    (void)readNumbers(rubbish);
}

}  // namespace
}  // namespace vorpen
