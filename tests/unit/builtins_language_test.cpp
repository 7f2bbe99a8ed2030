// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/language_bodies.h"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>

#include "builtins_support.h"
#include "console/console_text.h"
#include "eval/run_state.h"

namespace vorpen {
namespace {

using namespace testing;

TEST(Lists, HoldCopies) {
    DoubleValue number(9.0), word = text("ab");
    ComplexValue z({3, 4});
    ListValue inner = listOf({&number});
    EXPECT_EQ(called<ListValue>(builtin::makeList, {}), "{}");
    EXPECT_EQ(called<ListValue>(builtin::makeList, {&number, &word, &z, &inner}), "{9, 'ab', 3+4i, {9}}");
    ListValue out;
    std::vector<FuncArgument> arguments(1);
    arguments[0].value = &number;
    builtin::makeList(arguments, nullptr, out);
    number.assignDouble(10);
    EXPECT_EQ(described(out), "{9}");
    EXPECT_EQ(out.nrow(), 1);
    EXPECT_EQ(failedGeneral<ListValue>(builtin::makeList, {nullptr}), "invalid argument");
}

TEST(Disp, ShowsEachArgumentOnLinesOfItsOwn) {
    ConsoleText console;
    setConsole(&console);
    DoubleValue half(0.5), word = text("ab"), m = matrix(2, {1, 3, 2, 4});
    EXPECT_EQ(called<IntValue>(builtin::display, {&half, &word, &m}), "[]");
    std::string shown;
    for (std::int64_t n = 0; n <= console.currentLine(); ++n) shown += console.getLine(n) + "|";
    setConsole(nullptr);
    EXPECT_NE(shown.find("0.5       = (1/2)|"), std::string::npos) << shown;
    EXPECT_NE(shown.find("ab|"), std::string::npos) << shown;
    EXPECT_NE(shown.find("1 2 |"), std::string::npos) << shown;
    EXPECT_NE(shown.find("3 4 |"), std::string::npos) << shown;
}

TEST(Assert, PassesWhenNoElementIsZero) {
    DoubleValue yes = row({1, 2}), no = row({1, 0}), none, message = text("out of range"), one = text("B"), five(5.0);
    EXPECT_EQ(called<IntValue>(builtin::assertTrue, {&yes, &message}), "[]");
    EXPECT_EQ(called<IntValue>(builtin::assertTrue, {&none}), "[]");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::assertTrue, {&no}), "assertion failed");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::assertTrue, {&no, &message}), "out of range");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::assertTrue, {&no, &one}), "B");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::assertTrue, {&no, &five}), "assertion failed");
}

TEST(Error, FailsWithItsText) {
    EXPECT_EQ(failed(builtin::fail, text("bad input")), "bad input");
    EXPECT_EQ(failed(builtin::fail, text("x")), "x");
    EXPECT_EQ(failed(builtin::fail, text("bad input"), text("solver")), "in solver: bad input");
    EXPECT_EQ(failed(builtin::fail, text("bad input"), text("")), "bad input");
    EXPECT_EQ(failed(builtin::fail, row({5})), "in error: argument must be a string");
    EXPECT_EQ(failed(builtin::fail, text("bad"), row({5})), "in error: argument must be a string");
}

TEST(MultipleAssignment, TakesAllValuesBeforeAnyIsStored) {
    DoubleValue a(1.0), b = row({2, 3}), c;
    const std::vector<Value*> more = {&b, &c};
    std::vector<FuncArgument> arguments(3);
    arguments[0].value = &b;
    arguments[1].value = &a;
    arguments[2].value = &a;
    builtin::assignEach(arguments, &more, a);
    EXPECT_EQ(described(a), "2 3");
    EXPECT_EQ(described(b), "1");
    EXPECT_EQ(described(c), "1");
}

TEST(MultipleAssignment, CountsItsTargets) {
    DoubleValue a, b(7.0), five(5.0);
    IntValue six(6);
    const std::vector<Value*> more = {&b};
    std::vector<FuncArgument> arguments(1);
    arguments[0].value = &five;
    EXPECT_EQ(failure([&] { builtin::assignEach(arguments, &more, a); }), "too many output arguments");
    EXPECT_EQ(described(b), "7");
    std::vector<FuncArgument> surplus(2);
    surplus[0].value = &six;
    surplus[1].value = &five;
    builtin::assignEach(surplus, nullptr, a);
    EXPECT_EQ(described(a), "6");
}

TEST(PolynomialText, ByAscendingPowers) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<DoubleValue, const char*> polynomials[] = {
        {row({1, 0, -2, 1}), "'1-2x^2+x^3'"},
        {row({0, 0}), "'0'"},
        {empty(), "'0'"},
        {row({2.5, 3}), "'2.5+3x'"},
        {row({0, 1}), "'x'"},
        {row({0, -1, 1}), "'-x+x^2'"},
        {row({-1}), "'-1'"},
        {row({0, 1 / 3.0}), "'0.333333333x'"},
        {row({1, nan}), "'1+nanx'"},
        {row({1, -1e-20}), "'1-1e-20x'"},
    };
    for (const auto& [coefficients, expected] : polynomials)
        EXPECT_EQ(called(builtin::polynomialText, coefficients), expected);
}

TEST(Directories, ChangeAndList) {
    const auto folder = std::filesystem::temp_directory_path() / "vorpen-builtins-directories";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder / "inner");
    std::ofstream(folder / "b.txt") << "b";
    std::ofstream(folder / "a.txt") << "a";
    TestEngine engine(folder.string());

    DoubleValue inner = text("inner"), pattern = text("*.txt"), missing = text("nowhere"), number(5.0), none;
    EXPECT_EQ(called<IntValue>(builtin::changeDirectory, {}), "'{-" + folder.string() + "'");
    EXPECT_EQ(called<IntValue>(builtin::changeDirectory, {&none}), "'{-" + folder.string() + "'");
    EXPECT_EQ(called<ListValue>(builtin::listDirectory, {&pattern}), "column {'a.txt', 'b.txt'}");
    EXPECT_EQ(called<ListValue>(builtin::listDirectory, {}), "column {'a.txt', 'b.txt', 'inner <DIR>  '}");
    EXPECT_EQ(called<IntValue>(builtin::changeDirectory, {&inner}), "'" + (folder / "inner").string() + "'");
    EXPECT_EQ(engine.paths.current(), (folder / "inner").string());
    EXPECT_EQ(called<ListValue>(builtin::listDirectory, {}), "{}");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::changeDirectory, {&missing}),
              "in cd: can't find directory " + (folder / "inner" / "nowhere").string());
    EXPECT_EQ(failedGeneral<IntValue>(builtin::changeDirectory, {&number}), "argument must be a string");
    std::filesystem::remove_all(folder);
}

// ---- values that the body owns

TEST(OwnedValues, TrueAndFalse) {
    EXPECT_EQ(described(*builtin::trueValue(0)), "bool: 1");
    EXPECT_EQ(described(*builtin::falseValue(0)), "bool: 0");
    EXPECT_EQ(builtin::trueValue(0)->valueType(), INTEGER_VAL);
}

TEST(OwnedValues, TheLastAnswer) {
    runState().reset();
    EXPECT_EQ(described(*builtin::lastAnswer(0)), "[]");
    runState().setAns(text("hi"));
    EXPECT_EQ(described(*builtin::lastAnswer(0)), "'hi'");
    EXPECT_EQ(builtin::lastAnswer(5), &runState().ans());
    runState().reset();
}

TEST(OwnedValues, ProgramPath) {
    TestEngine engine("/home/someone");
    EXPECT_EQ(described(*builtin::programPath(0)), "'/home/someone'");
    EXPECT_EQ(described(*builtin::programPath(1)), "'/home/someone'");
    EXPECT_EQ(builtin::programPath(0)->valueType(), INTEGER_VAL);
}

class StoppedClock final : public Host {
    void messageBox(std::string_view, std::string_view) override {}
    std::string programDirectory() override { return "/program"; }
    std::string startDirectory() override { return "/start"; }
    std::tm localTime() override {
        std::tm time{};
        time.tm_year = 80, time.tm_mon = 0, time.tm_mday = 2, time.tm_wday = 3;
        time.tm_hour = 13, time.tm_min = 5, time.tm_sec = 59;
        return time;
    }
};

TEST(OwnedValues, DateTimeAndDirectories) {
    StoppedClock host;
    engineContext() = {};
    engineContext().host = &host;
    EXPECT_EQ(described(*builtin::dateText(0)), "'Wed Jan  2 1980'");
    EXPECT_EQ(builtin::dateText(0)->size(), 15);
    EXPECT_EQ(described(*builtin::timeOfDay(0)), "13 5 59");
    EXPECT_EQ(described(*builtin::programPath(0)), "'/start'");
    EXPECT_EQ(described(*builtin::programPath(2)), "'/program'");
    engineContext() = {};
}

}  // namespace
}  // namespace vorpen
