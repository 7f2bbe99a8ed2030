// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/serial_form.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "base/little_endian.h"
#include "builtins_support.h"

namespace vorpen {
namespace {

using namespace testing;

template <class... Numbers>
std::string bytes(Numbers... numbers) {
    std::ostringstream out;
    (writeLittleEndian(out, numbers), ...);
    return out.str();
}

/// size, rows, mark, kind
std::string head(std::int32_t size, std::int32_t nrow, std::int32_t mark, std::int32_t type) {
    return bytes(size, nrow, mark, type);
}

std::string written(const Value& value) {
    std::ostringstream out;
    writeValue(out, value);
    return out.str();
}

/// What a reader makes of bytes: the value with its kind, "none" for a size
/// below 0, "damage" otherwise.
std::string read(const std::string& stored) {
    std::istringstream in(stored);
    const auto value = readValue(in);
    if (!value) return "damage";
    if (!*value) return "none";
    return std::string(1, "idcl"[(*value)->valueType()]) + " " + described(**value);
}

ComplexValue complexRow(const std::vector<std::complex<double>>& items) {
    ComplexValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), 1, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

/// A list around a list and so on, with a number in the innermost.
ListValue nested(int levels) {
    ListValue list;
    list.assignDouble(7);
    list.setMark(FORM_TEXT);
    for (int i = 1; i < levels; ++i) {
        ListValue outer;
        outer.setSizeShapeMark(1, 1, FORM_TEXT);
        outer[0].set(std::make_unique<ListValue>(std::move(list)));
        list = std::move(outer);
    }
    return list;
}

TEST(SerialForm, BytesOfAScalar) {
    EXPECT_EQ(written(DoubleValue(1.5)),
              std::string("\1\0\0\0\1\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\xF8\x3F", 24));
}

TEST(SerialForm, BytesOfArrays) {
    EXPECT_EQ(written(matrix(2, {1, 3, 2, 4})), head(4, 2, 0, 1) + bytes(1.0, 3.0, 2.0, 4.0));
    EXPECT_EQ(written(integers({5, -6})), head(2, 1, 0, 0) + bytes(5, -6));
    EXPECT_EQ(written(complexRow({{1, 2}, {3, -4}})), head(2, 1, 0, 2) + bytes(1.0, 2.0, 3.0, -4.0));
    EXPECT_EQ(written(text("hi")), head(2, 1, 2, 1) + bytes(104.0, 105.0));
    EXPECT_EQ(written(matrix(1, {1, 2, 3, 4}, FORM_3D | (2 << 4))), head(4, 1, 40, 1) + bytes(1.0, 2.0, 3.0, 4.0));
    EXPECT_EQ(written(empty()), head(0, 0, 0, 1));
}

TEST(SerialForm, BytesOfLists) {
    IntValue word;
    word.assignString("a");
    const DoubleValue number(2);
    const ListValue inner = listOf({&number});
    EXPECT_EQ(written(listOf({&word, &inner})), head(2, 1, 6, 3) + head(1, 1, 2, 0) + bytes(97) + head(1, 1, 6, 3) +
                                                    head(1, 1, 0, 1) + bytes(2.0));
    ListValue missing;
    missing.setSizeShapeMark(1, 1, FORM_TEXT);
    EXPECT_EQ(written(missing), head(1, 1, 6, 3) + head(0, 0, 0, 1));
}

TEST(SerialForm, EveryBitOfANumberComesBack) {
    const double quiet = std::numeric_limits<double>::quiet_NaN();
    std::istringstream in(written(row({-0.0, quiet, 5e-324, std::numeric_limits<double>::infinity()})));
    const auto value = readValue(in);
    ASSERT_TRUE(value && *value);
    const DoubleValue& back = asDouble(**value);
    EXPECT_TRUE(std::signbit(back[0]));
    EXPECT_TRUE(std::isnan(back[1]));
    EXPECT_EQ(back[2], 5e-324);
}

TEST(SerialForm, WhatIsWrittenComesBack) {
    const DoubleValue m = matrix(2, {1, 3, 2, 4}), s = text("some text"), b = row({1, 0}, FORM_BOOL);
    const DoubleValue planes = matrix(1, {1, 2, 3, 4}, FORM_3D | (2 << 4));
    const ComplexValue z = complexRow({{1, 2}});
    const IntValue i = integers({1, 2});
    for (const Value* v : std::vector<const Value*>{&m, &s, &b, &planes, &z, &i}) {
        EXPECT_EQ(read(written(*v)).substr(2), described(*v));
        EXPECT_EQ(written(*v).size(), 16u + v->itemSize() * v->size());
    }
    const ListValue list = listOf({&m, &s, &z, &i});
    const ListValue outer = listOf({&list, &b, &list});
    EXPECT_EQ(read(written(outer)), "l " + described(outer));
}

TEST(SerialForm, EachCutOfTheBytesIsDamage) {
    const DoubleValue m = matrix(2, {1, 3, 2, 4}), s = text("ab");
    const ComplexValue z = complexRow({{1, 2}});
    const ListValue inner = listOf({&m, &z});
    const std::string whole = written(listOf({&s, &inner, &m}));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_EQ(read(whole.substr(0, length)), "damage") << length;
    EXPECT_NE(read(whole), "damage");
}

TEST(SerialForm, EachByteMayBeWrong) {
    const DoubleValue m = matrix(2, {1, 3, 2, 4}), s = text("ab");
    const ListValue inner = listOf({&m});
    const std::string whole = written(listOf({&s, &inner}));
    RecordedOutput console;
    for (std::size_t place = 0; place < whole.size(); ++place)
        for (const char wrong : {'\0', '\1', '\7', '\x7F', '\x80', '\xFF'}) {
            std::string damaged = whole;
            damaged[place] = wrong;
            std::istringstream in(damaged);
            const auto value = readValue(in);
            if (!value || !*value) continue;
            // Whatever was read is a sound value.
            EXPECT_GE((*value)->size(), 0);
            EXPECT_TRUE((*value)->isEmpty() || (*value)->size() % (*value)->nrow() == 0);
            (void)described(**value);
            EXPECT_FALSE(written(**value).empty());
        }
}

TEST(SerialForm, SizesThatNoFileHas) {
    EXPECT_EQ(read(head(std::numeric_limits<std::int32_t>::max(), 1, 0, 1) + bytes(1.0)), "damage");
    EXPECT_EQ(read(head(std::numeric_limits<std::int32_t>::max(), 1, 6, 3) + bytes(1.0)), "damage");
    // Of a size below 0 nothing further is read.
    std::istringstream in(bytes(-1) + written(DoubleValue(3)));
    const auto nothing = readValue(in);
    ASSERT_TRUE(nothing.has_value());
    EXPECT_EQ(*nothing, nullptr);
    EXPECT_EQ((*readValue(in))->doubleValue(), 3);
    EXPECT_EQ(read(bytes(std::numeric_limits<std::int32_t>::min())), "none");
    // Inside a list it stands for an empty number.
    EXPECT_EQ(read(head(2, 1, 6, 3) + bytes(-1) + written(DoubleValue(3))), "l {[], 3}");
}

TEST(SerialForm, WhatExceedsTheLimitIsPassedOver) {
    DoubleValue large;
    large.setSizeShapeMark(mostStoredElements + 2, mostStoredElements + 2, 0);
    std::fill_n(large.data(), large.size(), 1.0);
    std::istringstream in(written(large) + written(DoubleValue(3)));
    const auto value = readValue(in);
    ASSERT_TRUE(value && *value);
    EXPECT_EQ((*value)->size(), mostStoredElements);
    EXPECT_EQ((*value)->nrow(), 1);  // the rows of the file do not divide that
    EXPECT_EQ((*readValue(in))->doubleValue(), 3);
}

TEST(SerialForm, RowsThatDoNotFitBecomeOne) {
    for (const std::int32_t nrow : {0, -1, 3, 5, std::numeric_limits<std::int32_t>::max()})
        EXPECT_EQ(read(head(4, nrow, 0, 1) + bytes(1.0, 2.0, 3.0, 4.0)), "d 1 2 3 4") << nrow;
    EXPECT_EQ(read(head(4, 2, 0, 1) + bytes(1.0, 2.0, 3.0, 4.0)), "d 1 3; 2 4");
    EXPECT_EQ(read(head(0, -7, 0, 1)), "d []");
}

TEST(SerialForm, FormsThatDoNotFitAreDropped) {
    const auto markOf = [](std::int32_t mark, std::int32_t type) {
        const std::string data = type == 3 ? std::string() : type == 2 ? bytes(1.0, 2.0, 3.0, 4.0) : bytes(1.0, 2.0);
        std::istringstream in(head(type == 3 ? 0 : 2, 1, mark, type) + data);
        return (**readValue(in)).mark();
    };
    for (const int form : {0, 1, 2, 3, 4}) EXPECT_EQ(markOf(form, 1), form);
    for (const int form : {5, 6, 7, 9, 10, 11, 15}) EXPECT_EQ(markOf(form, 1), 0) << form;
    for (const int form : {0, 1, 2, 8, 15}) EXPECT_EQ(markOf(form, 3), 6) << form;
    // Only a 3-D array has something above its form.
    EXPECT_EQ(markOf(2 | (3 << 4), 1), 2);
    EXPECT_EQ(markOf(8 | (2 << 4), 1), 8 | (2 << 4));
    for (const int planes : {0, 3, -1, 1000}) EXPECT_EQ(markOf(8 | (planes * 16), 1), 0) << planes;
}

TEST(SerialForm, AnUnknownKindIsReadAsDoubles) {
    RecordedOutput console;
    EXPECT_EQ(read(head(1, 1, 0, 9) + bytes(2.5)), "d 2.5");
    EXPECT_EQ(console.lines, std::vector<std::string>{"variable of unknown type declared; double assumed"});
}

TEST(SerialForm, ListsCanBeNestedAThousandTimes) {
    EXPECT_TRUE(canBeStored(DoubleValue(1)));
    EXPECT_TRUE(canBeStored(nested(1000)));
    EXPECT_FALSE(canBeStored(nested(1001)));
    EXPECT_NE(read(written(nested(1000))), "damage");
    EXPECT_EQ(read(written(nested(1001))), "damage");
    std::string deep;
    for (int i = 0; i < 100000; ++i) deep += head(1, 1, 6, 3);
    EXPECT_EQ(read(deep + written(DoubleValue(1))), "damage");
}

TEST(SerialForm, KindOfTheNextValue) {
    const auto kind = [](const std::string& stored) {
        std::istringstream in(stored);
        return readValueType(in);
    };
    EXPECT_EQ(kind(head(1, 1, 0, 2)), COMPLEX_VAL);
    EXPECT_EQ(kind(head(5, 1, 6, 3)), LIST_VAL);
    EXPECT_EQ(kind(head(5, 1, 6, 12)), DOUBLE_VAL);
    EXPECT_EQ(kind(bytes(-1)), DOUBLE_VAL);
    EXPECT_EQ(kind(head(5, 1, 6, 3).substr(0, 15)), std::nullopt);
    EXPECT_EQ(kind(""), std::nullopt);
}

TEST(NestedLists, AreCopiedComparedAndFreedAtAnyDepth) {
    constexpr int levels = 1000000;
    ListValue deep = nested(levels);
    const ListValue copy = deep;
    deep = ListValue();
    int found = 1;
    const Value* v = &copy;
    for (; static_cast<const ListValue*>(v)->items()[0].holdsList(); ++found)
        v = static_cast<const ListValue*>(v)->items()[0].get();
    EXPECT_EQ(found, levels);
    EXPECT_FALSE(canBeStored(copy));
    std::unique_ptr<Value> item = newValueCopy(copy);
    ListItem held(std::move(item)), other(held);
    held = other;
    held = ListItem();
}

TEST(NestedLists, ACopyIsACopyAtEveryLevel) {
    ListValue list = nested(3);
    const ListValue copy = list;
    auto& inner = static_cast<ListValue&>(*static_cast<ListValue&>(*list[0].get())[0].get());
    asDouble(*inner[0].get())[0] = 8;
    EXPECT_EQ(described(list), "{{{8}}}");
    EXPECT_EQ(described(copy), "{{{7}}}");
}

}  // namespace
}  // namespace vorpen
