// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/string_bodies.h"

#include <gtest/gtest.h>

#include <limits>

#include "builtins_support.h"

namespace vorpen {
namespace {

using namespace testing;

const double nan = std::numeric_limits<double>::quiet_NaN();

ListValue words(const std::vector<std::string>& items) {
    ListValue list;
    list.setSizeShapeMark(static_cast<std::int64_t>(items.size()), items.empty() ? 0 : 1, FORM_TEXT);
    for (std::size_t i = 0; i < items.size(); ++i) {
        auto item = std::make_unique<IntValue>();
        item->assignString(items[i]);
        list.data()[i].set(std::move(item));
    }
    return list;
}

// ---- numbers and text

TEST(Text, OfNumbers) {
    EXPECT_EQ(called(builtin::toText, row({42})), "'42 '");
    EXPECT_EQ(called(builtin::toText, row({1 / 3.0})), "'0.333333333 '");
    EXPECT_EQ(called(builtin::toText, row({1 / 3.0}), row({4})), "'0.3333 '");
    EXPECT_EQ(called(builtin::toText, row({nan})), "'nan '");
    EXPECT_EQ(called(builtin::toText, row({1, 2.5})), "'1 2.5 '");
    EXPECT_EQ(called(builtin::toText, row({1}, FORM_BOOL)), "'1 '");
    EXPECT_EQ(called(builtin::toText, text("abc")), "'abc'");
    EXPECT_EQ(called(builtin::toText, empty()), "'[]'");
    EXPECT_EQ(failed(builtin::toText, row({1}), row({1, 2})), "in str: non-scalar precision");
    EXPECT_EQ(failed(builtin::toText, row({1}), empty()), "in str: non-scalar precision");
}

TEST(Text, OfAnIntegerArray) {
    DoubleValue out;
    builtin::toText(integers({5, 6}), nullptr, out);
    EXPECT_EQ(described(out), "'5 6 '");
}

TEST(Text, RowsOfAMatrixAreRowsOfCharacters) {
    DoubleValue out;
    builtin::toText(matrix(2, {1, 30, 2, 4}), nullptr, out);
    EXPECT_EQ(out.nrow(), 2);
    EXPECT_EQ(out.mark(), FORM_STRING);
    EXPECT_EQ(out.text(), " 1 2 30 4 ");
}

TEST(Text, OfARowOfMoreThanAHundredNumbersIsWhole) {
    DoubleValue out;
    builtin::toText(row(std::vector<double>(250, 7)), nullptr, out);
    EXPECT_EQ(out.size(), 500);
}

TEST(HoldsNumber, IsOneDecimalNumberWithBlanksAround) {
    for (const char* yes : {"12", "-2.5e3", "+.5", "5.", " 7 ", "1e5", "1E+05", "1e-300", "007"})
        EXPECT_TRUE(builtin::holdsNumber(yes)) << yes;
    for (const char* no : {"", " ", "abc", "12x", "1 2", ".", "+", "e5", "1e", "1e+", "inf", "nan", "0x10", "--1",
                           "1.2.3", "\t1"})
        EXPECT_FALSE(builtin::holdsNumber(no)) << no;
}

TEST(IsNumber, WantsAString) {
    EXPECT_EQ(builtin::isNumber(text("12")), 1);
    EXPECT_EQ(builtin::isNumber(text("x")), 0);
    EXPECT_EQ(builtin::isNumber(text("")), 0);
    EXPECT_EQ(failure([] { (void)builtin::isNumber(row({5})); }), "isnum called for a non-string");
    EXPECT_EQ(failure([] { (void)builtin::isNumber(listOf({})); }), "isnum called for a non-string");
}

TEST(ToNumber, Decimal) {
    EXPECT_EQ(called(builtin::toNumber, text("12.5")), "12.5");
    EXPECT_EQ(called(builtin::toNumber, text(" +7 ")), "7");
    EXPECT_EQ(called(builtin::toNumber, text("-2.5e3")), "-2500");
    EXPECT_EQ(called(builtin::toNumber, text("1e-310")), "1e-310");
    EXPECT_EQ(failed(builtin::toNumber, text("12x")), "str2num called on non-number string");
    EXPECT_EQ(failed(builtin::toNumber, text("")), "str2num called on non-number string");
    EXPECT_EQ(failed(builtin::toNumber, row({5})), "str2num called on non-number string");
    EXPECT_EQ(failed(builtin::toNumber, text("1e999")), "stod argument out of range");
}

TEST(ToNumber, WithABase) {
    EXPECT_EQ(called(builtin::toNumber, text("101"), row({2})), "5");
    EXPECT_EQ(called(builtin::toNumber, text(" -ff"), row({16})), "-255");
    EXPECT_EQ(called(builtin::toNumber, text("12x"), row({10})), "12");
    EXPECT_EQ(called(builtin::toNumber, text("z"), row({36})), "35");
    EXPECT_EQ(called(builtin::toNumber, text("-2147483648"), row({10})), "-2.14748365e9");
    for (const double base : {1.0, 0.0, 37.0, -2.0, nan, 1e300})
        EXPECT_EQ(failed(builtin::toNumber, text("1"), row({base})), "invalid stoi argument") << base;
    EXPECT_EQ(failed(builtin::toNumber, text("9"), row({8})), "invalid stoi argument");
    EXPECT_EQ(failed(builtin::toNumber, text(""), row({8})), "invalid stoi argument");
    EXPECT_EQ(failed(builtin::toNumber, text("2147483648"), row({10})), "stoi argument out of range");
    EXPECT_EQ(failed(builtin::toNumber, text("99999999999999999999"), row({10})), "stoi argument out of range");
    EXPECT_EQ(failed(builtin::toNumber, text("1"), row({2, 3})), "operator ]");
    EXPECT_EQ(failed(builtin::toNumber, text("1"), empty()), "operator ]");
}

// ---- cutting and joining

TEST(Split, AtWhiteSpace) {
    DoubleValue s = text("  a b\t\tc\n"), blank = text("   "), none = text(""), hole;
    EXPECT_EQ(called<ListValue>(builtin::split, {&s}), "{'a', 'b', 'c'}");
    EXPECT_EQ(called<ListValue>(builtin::split, {&blank}), "{}");
    EXPECT_EQ(called<ListValue>(builtin::split, {&none}), "{}");
    EXPECT_EQ(called<ListValue>(builtin::split, {&hole}), "{}");
}

TEST(Split, AtASeparator) {
    DoubleValue comma = text(","), bar = text("|");
    const auto pieces = [&](std::string_view s, DoubleValue& separator) {
        DoubleValue v = text(s);
        return called<ListValue>(builtin::split, {&v, &separator});
    };
    EXPECT_EQ(pieces(",a,,b", comma), "{'', 'a', '', 'b'}");
    EXPECT_EQ(pieces("a,b", bar), "{'a,b'}");
    EXPECT_EQ(pieces("a|b|", bar), "{'a', 'b'}");
    EXPECT_EQ(pieces("||", bar), "{'', ''}");
    EXPECT_EQ(pieces(" a |b", bar), "{' a ', 'b'}");
    EXPECT_EQ(pieces("", bar), "{}");
}

TEST(Split, NotBetweenDelimiters) {
    DoubleValue comma = text(","), quote = text("'");
    const auto pieces = [&](std::string_view s) {
        DoubleValue v = text(s);
        return called<ListValue>(builtin::split, {&v, &comma, &quote});
    };
    EXPECT_EQ(pieces("a,'b,c',d"), "{'a', ''b,c'', 'd'}");
    EXPECT_EQ(pieces("'a,b"), "{''a,b'}");
    EXPECT_EQ(pieces("x'1,2'y,z"), "{'x'1,2'y', 'z'}");
}

TEST(Split, Fails) {
    DoubleValue s = text("abc"), two = text("xy"), none = text(""), comma = text(","), number(5.0);
    EXPECT_EQ(failedGeneral<ListValue>(builtin::split, {&s, &two}), "only single-character separator allowed");
    EXPECT_EQ(failedGeneral<ListValue>(builtin::split, {&s, &none}), "only single-character separator allowed");
    EXPECT_EQ(failedGeneral<ListValue>(builtin::split, {&s, &comma, &two}),
              "only single-character delimiter allowed");
    EXPECT_EQ(failedGeneral<ListValue>(builtin::split, {&number}), "in split: argument must be a string");
}

TEST(Join, PutsItemsInARow) {
    ListValue abc = words({"a", "bc", ""}), none = words({});
    DoubleValue dash = text("-"), nothing;
    EXPECT_EQ(called<IntValue>(builtin::join, {&abc}), "'abc'");
    EXPECT_EQ(called<IntValue>(builtin::join, {&abc, &dash}), "'a-bc-'");
    EXPECT_EQ(called<IntValue>(builtin::join, {&abc, &nothing}), "'abc'");
    EXPECT_EQ(called<IntValue>(builtin::join, {&none}), "[]");
    ListValue hollow = words({"", ""});
    EXPECT_EQ(called<IntValue>(builtin::join, {&hollow}), "''");
    const DoubleValue numbers = row({1.9, -2.9}), key = row({7.5}, FORM_KEY);
    const IntValue whole = integers({3});
    ListValue mixed = listOf({&numbers, &whole}), keys = listOf({&key});
    EXPECT_EQ(called<IntValue>(builtin::join, {&mixed}), "1 -2 3");
    EXPECT_EQ(called<IntValue>(builtin::join, {&keys}), "7");
}

TEST(Join, Fails) {
    const ListValue inner = words({"a"});
    ListValue nested = listOf({&inner});
    const ComplexValue z({1, 2});
    ListValue complex = listOf({&z});
    DoubleValue s = text("abc");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::join, {&nested}), "join not yet implemented for nested lists");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::join, {&complex}), "invalid argument type");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::join, {&s}), "in join: argument must be a list");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::join, {&nested, &complex}), "invalid argument type");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::join, {nullptr}), "invalid argument");
}

TEST(Pad, FillsOrCuts) {
    DoubleValue ab = text("ab"), v = row({1, 2, 3}), c = column({1, 2}), half = row({1.5, 2.5}), none;
    DoubleValue two(2.0), three(3.0), four(4.0), dash = text("-"), zero(0.0), one(1.0);
    EXPECT_EQ(called<IntValue>(builtin::pad, {&ab, &four}), "'ab  '");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&ab, &four, &dash}), "'ab--'");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&ab, &four, &dash, &zero}), "'--ab'");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&ab, &four, &dash, &one}), "'ab--'");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&v, &two}), "1 2");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&v, &two, &zero, &zero}), "1 2");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&v, &four}), "1 2 3 0");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&v, &zero}), "[]");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&c, &three}), "1; 2; 0");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&half, &three}), "1 2 0");
    EXPECT_EQ(called<IntValue>(builtin::pad, {&none, &two}), "0 0");
}

TEST(Pad, Fails) {
    DoubleValue m = matrix(2, {1, 2, 3, 4}), v = row({1, 2}), five(5.0), pair = row({1, 2}), none, minus(-1.0),
                huge(1e12);
    ListValue list;
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&m, &five}), "in pad: pad does not take matrix input");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&v, &pair}), "operator ]");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&v, &none}), "operator ]");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&v, &five, &pair}), "operator ]");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&v, &five, &five, &none}), "operator ]");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&list, &five}), "invalid argument");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&v, &minus}), "in pad: size must be non-negative");
    EXPECT_EQ(failedGeneral<IntValue>(builtin::pad, {&v, &huge}), "out of memory");
}

TEST(Trim, RemovesBlanksOnly) {
    EXPECT_EQ(called(builtin::trim, text("  ab c ")), "'ab c'");
    EXPECT_EQ(called(builtin::trim, text("\tx ")), "'\tx'");
    EXPECT_EQ(called(builtin::trim, text("   ")), "''");
    EXPECT_EQ(called(builtin::trim, empty()), "''");
    EXPECT_EQ(failed(builtin::trim, row({32, 5})), "in trim: argument must be a string");
    EXPECT_EQ(failed(builtin::trim, matrix(2, {65, 66, 67, 68}, FORM_STRING)),
              "in trim: trim does not take matrix input");
}

TEST(FindText, AllOccurrences) {
    EXPECT_EQ(called(builtin::findText, text("abcabc"), text("bc")), "2 5");
    EXPECT_EQ(called(builtin::findText, text("aaaa"), text("aa")), "1 2 3");
    EXPECT_EQ(called(builtin::findText, text("aabaaabaaac"), text("aabaaac")), "5");
    EXPECT_EQ(called(builtin::findText, text("abc"), text("x")), "[]");
    EXPECT_EQ(called(builtin::findText, text("abc"), text("")), "[]");
    EXPECT_EQ(called(builtin::findText, text(""), text("a")), "[]");
    EXPECT_EQ(called(builtin::findText, row({1, 2, 1, 2}), row({1, 2})), "1 3");
    EXPECT_EQ(failed(builtin::findText, text("abc")), "strfind/findstr requires two arguments");
}

TEST(Evaluate, HandsTheTextToTheEngine) {
    TestEngine engine;
    EXPECT_EQ(failed(builtin::evaluate, text("2+3")), "eval is not available yet");
    engineContext().evaluateText = [](const std::string& s, DoubleValue& out) {
        out.assignDouble(static_cast<double>(s.size()));
    };
    EXPECT_EQ(called(builtin::evaluate, text("2+3")), "3");
    EXPECT_EQ(failed(builtin::evaluate, row({3})), "in eval: requires a string argyment");
    EXPECT_EQ(failed(builtin::evaluate, empty()), "in eval: requires a string argyment");
}

// ---- binary digits

TEST(BinaryDigits, OfOneNumber) {
    EXPECT_EQ(called(builtin::binaryDigits, row({5})), "1 0 1");
    EXPECT_EQ(called(builtin::binaryDigits, row({0})), "0");
    EXPECT_EQ(called(builtin::binaryDigits, row({5.9})), "1 0 1");
    EXPECT_EQ(called(builtin::binaryDigits, row({-0.5})), "0");
    EXPECT_EQ(called(builtin::binaryDigits, row({5}), row({6})), "0 0 0 1 0 1");
    EXPECT_EQ(called(builtin::binaryDigits, row({5}), row({2})), "1 0 1");
    EXPECT_EQ(called(builtin::binaryDigits, row({5}), row({0})), "1 0 1");
    EXPECT_EQ(called(builtin::binaryDigits, row({5}), row({-6})), "1 0 1 0 0 0");
    EXPECT_EQ(called(builtin::binaryDigits, row({0}), row({-2})), "0 0");
    DoubleValue out;
    builtin::binaryDigits(row({4294967296.0}), nullptr, out);
    EXPECT_EQ(out.size(), 33);
}

TEST(BinaryDigits, OfAVector) {
    EXPECT_EQ(called(builtin::binaryDigits, row({1, 5})), "0 0 1; 1 0 1");
    EXPECT_EQ(called(builtin::binaryDigits, column({1, 2}), row({3})), "0 0 1; 0 1 0");
    EXPECT_EQ(called(builtin::binaryDigits, empty()), "[]");
}

TEST(BinaryDigits, Fail) {
    EXPECT_EQ(failed(builtin::binaryDigits, row({-1})), "in tobinary: negative numbers are not handled, sorry");
    EXPECT_EQ(failed(builtin::binaryDigits, row({1, -1})), "in tobinary: negative numbers are not handled, sorry");
    EXPECT_EQ(failed(builtin::binaryDigits, matrix(2, {1, 2, 3, 4})),
              "in binary: requires scalar or vector argument");
    EXPECT_EQ(failed(builtin::binaryDigits, row({1, 5}), row({-6})), "reverse option not available for matrix");
    EXPECT_EQ(failed(builtin::binaryDigits, row({nan})), "in binary: integer overflow");
    EXPECT_EQ(failed(builtin::binaryDigits, row({1e300})), "in binary: integer overflow");
    EXPECT_EQ(failed(builtin::binaryDigits, row({1}), row({1, 2})), "operator ]");
    EXPECT_EQ(failed(builtin::binaryDigits, row({1}), row({1e15})), "out of memory");
    EXPECT_EQ(failed(builtin::binaryDigits, row({1}), row({-1e300})), "out of memory");
}

TEST(FromBinaryDigits, ReadsThemAsNumbers) {
    EXPECT_EQ(called(builtin::fromBinaryDigits, row({1, 0, 1})), "5");
    EXPECT_EQ(called(builtin::fromBinaryDigits, column({1, 1})), "3");
    EXPECT_EQ(called(builtin::fromBinaryDigits, matrix(2, {0, 1, 0, 0, 1, 1})), "1; 5");
    EXPECT_EQ(called(builtin::fromBinaryDigits, empty()), "[]");
    EXPECT_EQ(called(builtin::fromBinaryDigits, row(std::vector<double>(31, 1))), "2147483647");
    EXPECT_EQ(failed(builtin::fromBinaryDigits, row(std::vector<double>(32, 1))), "integer overflow");
    EXPECT_EQ(failed(builtin::fromBinaryDigits, row({1, 2})), "in unbinary: invalid binary digit");
    EXPECT_EQ(failed(builtin::fromBinaryDigits, row({nan})), "in unbinary: invalid binary digit");
}

// ---- keys

std::string thereAndBack(std::string_view s) {
    DoubleValue key;
    builtin::packKey(text(s), key);
    return called(builtin::unpackKey, key);
}

TEST(Keys, GoThereAndBack) {
    for (const char* s : {"abc", "Hello", "x.y-z", "abc123", "a+b", "zzzzzzzzzzzzz"})
        EXPECT_EQ(thereAndBack(s), "'" + std::string(s) + "'");
    EXPECT_EQ(thereAndBack("ba"), "'b'");
    EXPECT_EQ(thereAndBack(""), "''");
    DoubleValue key;
    builtin::packKey(text("abc"), key);
    EXPECT_EQ(key.mark(), FORM_KEY);
    EXPECT_EQ(key.size(), 1);
}

TEST(Keys, SeveralBecomeRows) {
    DoubleValue a, b;
    builtin::packKey(text("abc"), a);
    builtin::packKey(text("Hello"), b);
    IntValue out;
    builtin::unpackKey(row({a[0], b[0]}, FORM_KEY), out);
    EXPECT_EQ(out.nrow(), 2);
    EXPECT_EQ(out.text(), "abc  Hello");
    EXPECT_EQ(called(builtin::unpackKey, empty()), "''");
}

TEST(Keys, WarnAndGoOn) {
    RecordedOutput said;
    DoubleValue key;
    builtin::packKey(row({5}), key);
    EXPECT_EQ(key.size(), 1);
    builtin::packKey(text("abcdefghijklmn"), key);
    EXPECT_EQ(said.lines, (std::vector<std::string>{"zipKey called on non-string", "key too long"}));
}

}  // namespace
}  // namespace vorpen
