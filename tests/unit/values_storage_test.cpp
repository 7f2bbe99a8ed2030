// SPDX-License-Identifier: GPL-3.0-or-later
// Storage rules of values: sizes, conversions, slices, erasure, joins.
#include <gtest/gtest.h>
#include <malloc.h>

#include <new>
#include <vector>

#include "base/errors.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

DoubleValue doubles(std::vector<double> items, int nrow) {
    DoubleValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), nrow, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

IntValue integers(std::vector<int> items, int nrow) {
    IntValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), nrow, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

std::vector<double> itemsOf(const DoubleValue& v) { return {v.data(), v.data() + v.size()}; }

char failureOf(auto&& work) {
    try {
        work();
    } catch (const OperatorFailure& failure) {
        return failure.code;
    }
    return 0;
}

std::string messageOf(auto&& work) {
    try {
        work();
    } catch (const RuntimeError& error) {
        return error.message;
    } catch (const PlainFailure& failure) {
        return failure.message;
    }
    return {};
}

TEST(NewValue, IsEmptyAndUnshaped) {
    for (int type = INTEGER_VAL; type <= LIST_VAL; ++type) {
        const auto v = newValue(type);
        EXPECT_EQ(v->valueType(), type);
        EXPECT_EQ(v->size(), 0);
        EXPECT_EQ(v->nrow(), 0);
        EXPECT_EQ(v->mark(), 0);
        EXPECT_EQ(v->rawData(), nullptr);
    }
    EXPECT_EQ(newHolder(UNKNOWN_VAL)->valueType(), DOUBLE_VAL);
}

TEST(Assign, TruncatesTowardZeroIntoIntegers) {
    IntValue v;
    v.assignDouble(2.9);
    EXPECT_EQ(v[0], 2);
    v.assignDouble(-2.9);
    EXPECT_EQ(v[0], -2);
    EXPECT_EQ(truncateToInt(1e12), INT32_MIN);
    EXPECT_EQ(truncateToInt(NAN), INT32_MIN);
    EXPECT_EQ(truncateToInt(-2147483648.5), INT32_MIN);
    EXPECT_EQ(truncateToInt(2147483647.9), INT32_MAX);
}

TEST(Assign, StringsAreSignedBytesInAnyNumericKindButComplex) {
    DoubleValue v;
    v.assignString("a\xE4");
    EXPECT_EQ(v.form(), FORM_STRING);
    EXPECT_EQ(v.nrow(), 1);
    EXPECT_EQ(itemsOf(v), (std::vector<double>{97, -28}));
    EXPECT_EQ(v.text(), "a\xE4");
    ComplexValue z;
    EXPECT_EQ(messageOf([&] { z.assignString("a"); }),
              "you can't assign a character string to a complex value");
    ListValue list;
    list.assignString("ab");
    EXPECT_EQ(list.mark(), FORM_TEXT);
    EXPECT_EQ(list.size(), 1);
    EXPECT_EQ(list[0].get()->mark(), FORM_STRING);
    EXPECT_EQ(list[0].get()->size(), 2);
}

TEST(Assign, WidensAndNeverNarrows) {
    const IntValue i = integers({1, 2, 3, 4}, 2);
    DoubleValue d;
    d.assign(i);
    EXPECT_EQ(itemsOf(d), (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(d.nrow(), 2);
    ComplexValue z;
    z.assign(i);
    EXPECT_EQ(z[3], std::complex<double>(4, 0));
    IntValue narrow;
    EXPECT_EQ(failureOf([&] { narrow.assign(d); }), '=');
    EXPECT_EQ(failureOf([&] { d.assign(z); }), '=');
    ListValue list;
    EXPECT_EQ(failureOf([&] { list.assign(d); }), '=');
    EXPECT_EQ(failureOf([&] { d.assign(list); }), '=');
}

TEST(Assign, KeepsRowsAndMark) {
    DoubleValue source = doubles({1, 0, 1, 1}, 2);
    source.setMark(FORM_BOOL);
    DoubleValue copy;
    copy.assign(source);
    EXPECT_EQ(copy.nrow(), 2);
    EXPECT_EQ(copy.mark(), FORM_BOOL);
    copy.assign(copy);
    EXPECT_EQ(copy.size(), 4);
}

TEST(Queries, LookAtElements) {
    const DoubleValue empty;
    EXPECT_FALSE(empty.anyNonZero());
    EXPECT_TRUE(empty.allNonZero());
    EXPECT_EQ(empty.indexOfMin(), 0);
    EXPECT_EQ(doubles({0, 0, 3}, 1).firstNonZero(), 3);
    EXPECT_EQ(doubles({2, 0, 0}, 1).lastNonZero(), 1);
    EXPECT_EQ(doubles({0, 0}, 1).firstNonZero(), 0);
    EXPECT_EQ(doubles({0, 0}, 1).lastNonZero(), 0);
    EXPECT_EQ(doubles({1, 3, 3}, 1).indexOfMax(), 1);
    EXPECT_EQ(doubles({4, 2, 2}, 1).indexOfMin(), 1);
    EXPECT_EQ(doubles({NAN, 2, 9}, 1).indexOfMax(), 0);
    EXPECT_EQ(doubles({1, NAN, 9}, 1).indexOfMax(), 2);
    EXPECT_TRUE(doubles({NAN}, 1).allNonZero());
}

TEST(Queries, OfComplexValuesUseTheModulusAndTheRealPart) {
    ComplexValue z;
    z.setSizeShapeMark(2, 1, 0);
    z[0] = {0, 5};
    z[1] = {3, 0};
    EXPECT_EQ(z.indexOfMax(), 0);
    EXPECT_EQ(z.indexOfMin(), 1);
    EXPECT_EQ(z.firstNonZero(), 2);
    EXPECT_EQ(z.doubleValue(), 0.0);
    EXPECT_EQ(z.intValue(), 0);
}

TEST(Queries, OfListsLookAtTheSizesOfItems) {
    ListValue list;
    list.appendItem(DOUBLE_VAL);
    EXPECT_FALSE(list.anyNonZero());
    EXPECT_FALSE(list.allNonZero());
    list.appendItem(DOUBLE_VAL).assignDouble(0);
    EXPECT_TRUE(list.anyNonZero());
    EXPECT_EQ(list.firstNonZero(), 2);
    EXPECT_EQ(list.indexOfMax(), 1);
    EXPECT_EQ(list.itemSize(), 4);
}

TEST(Negation, FlipsTheSignOfZeroInDoublesOnly) {
    DoubleValue d(0.0);
    d.negate();
    EXPECT_TRUE(std::signbit(d[0]));
    IntValue i(INT32_MIN);
    i.negate();
    EXPECT_EQ(i[0], INT32_MIN);
}

TEST(Dimension, FollowsTheShape) {
    const DoubleValue m = doubles({1, 2, 3, 4, 5, 6}, 2);
    EXPECT_EQ(m.dimension(INDEX_AUTO), 3);
    EXPECT_EQ(m.dimension(INDEX_ELEMENT), 6);
    EXPECT_EQ(m.dimension(INDEX_ROW), 2);
    EXPECT_EQ(m.dimension(INDEX_COLUMN), 3);
    EXPECT_EQ(m.dimension(INDEX_PLANE), 1);
    EXPECT_EQ(doubles({1, 2, 3}, 3).dimension(INDEX_AUTO), 3);
    EXPECT_EQ(DoubleValue().dimension(INDEX_COLUMN), 0);
    EXPECT_EQ(messageOf([&] { (void)m.ncol3D(); }), "BUG: ncol3D called for non-3D value");
}

TEST(Resize, KeepsTheBlockOfASmallShrink) {
    DoubleValue row = doubles({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, 1);
    const void* block = row.rawData();
    row.resize(9);
    EXPECT_EQ(row.rawData(), block);
    EXPECT_EQ(row.nrow(), 1);
    row.resize(2);
    EXPECT_NE(row.rawData(), block);
    EXPECT_EQ(itemsOf(row), (std::vector<double>{1, 2}));
    DoubleValue column = doubles({1, 2, 3}, 3);
    column.resize(5);
    EXPECT_EQ(column.nrow(), 5);
    EXPECT_EQ(column[2], 3);
    DoubleValue large = doubles(std::vector<double>(1000000), 1);
    block = large.rawData();
    large.resize(900000);
    EXPECT_EQ(large.rawData(), block);
    DoubleValue larger = doubles(std::vector<double>(1000000), 1);
    block = larger.rawData();
    larger.resize(899999);
    EXPECT_NE(larger.rawData(), block);
}

TEST(Size, BeyondWhatMemoryHoldsIsAFailureAndNothingIsLost) {
    DoubleValue v(7.0);
    EXPECT_THROW(v.setSize(std::int64_t{1} << 40), std::bad_alloc);
    EXPECT_THROW(v.setShape(2000000000, 2000000000), std::bad_alloc);
    v.assignDouble(8);
    EXPECT_EQ(v[0], 8);
}

TEST(GetOne, TakesElementRowColumnAndPlane) {
    const DoubleValue m = doubles({1, 2, 3, 4, 5, 6}, 2);
    DoubleValue out;
    m.getOne(3, out, INDEX_ELEMENT);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{3}));
    m.getOne(2, out, INDEX_ROW);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{2, 4, 6}));
    EXPECT_EQ(out.nrow(), 1);
    m.getOne(2, out, INDEX_AUTO);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{3, 4}));
    EXPECT_EQ(out.nrow(), 2);
    DoubleValue planes = doubles({1, 2, 3, 4, 5, 6, 7, 8}, 2);
    planes.setMark(FORM_3D | 2 << 4);
    planes.getOne(2, out, INDEX_AUTO);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{5, 6, 7, 8}));
    EXPECT_EQ(out.mark(), planes.mark());
    EXPECT_EQ(failureOf([&] { planes.getOne(3, out, INDEX_PLANE); }), '(');
    EXPECT_EQ(failureOf([&] { m.getOne(1, out, INDEX_PLANE); }), '(');
}

TEST(GetMany, KeepsARowARowAndMakesTheRestColumns) {
    const int picks[] = {3, 1, 1};
    DoubleValue out;
    doubles({1, 2, 3}, 1).getMany(picks, out, INDEX_ELEMENT);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{3, 1, 1}));
    EXPECT_EQ(out.nrow(), 1);
    doubles({1, 2, 3}, 3).getMany(picks, out, INDEX_ELEMENT);
    EXPECT_EQ(out.nrow(), 3);
    const int ones[] = {1, 1};
    doubles({5}, 1).getMany(ones, out, INDEX_ELEMENT);
    EXPECT_EQ(out.nrow(), 2);
    const DoubleValue m = doubles({1, 2, 3, 4, 5, 6}, 2);
    m.getMany(ones, out, INDEX_ROW);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{1, 1, 3, 3, 5, 5}));
    m.getMany(picks, out, INDEX_COLUMN);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{5, 6, 1, 2, 1, 2}));
    const int rows[] = {2, 1}, cols[] = {3, 2};
    m.getBlock(rows, cols, out);
    EXPECT_EQ(itemsOf(out), (std::vector<double>{6, 5, 4, 3}));
}

TEST(IndexedAssign, RepeatsAScalarAndReadsAnArrayInOrder) {
    DoubleValue m = doubles({1, 2, 3, 4, 5, 6}, 2);
    const int two[] = {2};
    m.IndexedAssign(INDEX_ROW, two, DoubleValue(0.0));
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 0, 3, 0, 5, 0}));
    m.IndexedAssign(INDEX_COLUMN, two, doubles({7, 8}, 2));
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 0, 7, 8, 5, 0}));
    const int twice[] = {1, 1};
    m.IndexedAssign(INDEX_ELEMENT, twice, doubles({2, 3}, 1));
    EXPECT_EQ(m[0], 3);
    EXPECT_EQ(messageOf([&] { m.IndexedAssign(4, two, DoubleValue(1.0)); }),
              "invalid irc in in JMatrix<T>::IndexedAssign");
}

TEST(Erase, SortsAndThinsTheIndices) {
    DoubleValue v = doubles({1, 2, 3, 4}, 1);
    int indices[] = {3, 1, 1};
    v.erase(INDEX_ELEMENT, indices);
    EXPECT_EQ(itemsOf(v), (std::vector<double>{2, 4}));
    int one[] = {1};
    v.erase(INDEX_ELEMENT, one);
    EXPECT_EQ(itemsOf(v), (std::vector<double>{4}));
    v.erase(INDEX_ELEMENT, one);
    EXPECT_EQ(v.size(), 0);
    EXPECT_EQ(v.nrow(), 0);
    DoubleValue column = doubles({1, 2, 3}, 3);
    int middle[] = {2};
    column.erase(INDEX_ELEMENT, middle);
    EXPECT_EQ(column.nrow(), 2);
}

TEST(Erase, TakesRowsAndColumnsOut) {
    DoubleValue m = doubles({1, 2, 3, 4, 5, 6}, 2);
    int two[] = {2};
    m.erase(INDEX_COLUMN, two);
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 2, 5, 6}));
    m.erase(INDEX_ROW, two);
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 5}));
    EXPECT_EQ(m.nrow(), 1);
    int first[] = {1};
    m.erase(INDEX_ROW, first);
    EXPECT_EQ(m.size(), 0);
    EXPECT_EQ(m.nrow(), 0);
    DoubleValue all = doubles({1, 2, 3, 4}, 2);
    int both[] = {1, 2};
    all.erase(INDEX_COLUMN, both);
    EXPECT_EQ(all.size(), 0);
    EXPECT_EQ(all.nrow(), 2);
    all.erase(INDEX_ROW, two);
    EXPECT_EQ(all.size(), 0);
    EXPECT_EQ(all.nrow(), 0);
}

TEST(Transpose, TurnsVectorsInPlaceAndMovesMatrices) {
    DoubleValue v = doubles({1, 2, 3}, 1);
    const void* block = v.rawData();
    v.transpose();
    EXPECT_EQ(v.nrow(), 3);
    EXPECT_EQ(v.rawData(), block);
    DoubleValue m = doubles({1, 2, 3, 4, 5, 6}, 2);
    m.setMark(FORM_BOOL);
    m.transpose();
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 3, 5, 2, 4, 6}));
    EXPECT_EQ(m.nrow(), 3);
    EXPECT_EQ(m.mark(), FORM_BOOL);
    DoubleValue empty;
    empty.transpose();
    EXPECT_EQ(empty.size(), 0);
}

TEST(Join, KeepsTheLeftMarkUnderCommaAndTakesTheRightOneUnderSemicolon) {
    IntValue text;
    text.setMark(FORM_STRING);
    text.appendColumns(IntValue(65));
    EXPECT_EQ(text.mark(), FORM_STRING);
    EXPECT_EQ(text[0], 65);
    IntValue none, letters;
    letters.assignString("ab");
    none.appendRows(letters);
    EXPECT_EQ(none.mark(), FORM_STRING);
    DoubleValue m = doubles({1, 2}, 1);
    m.appendRows(doubles({3, 4}, 1));
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 3, 2, 4}));
    EXPECT_EQ(failureOf([&] { m.appendColumns(DoubleValue(1.0)); }), ',');
    EXPECT_EQ(failureOf([&] { m.appendRows(DoubleValue(1.0)); }), ';');
    m.appendColumns(DoubleValue());
    EXPECT_EQ(m.size(), 4);
}

TEST(Join, OfAValueWithItself) {
    DoubleValue m = doubles({1, 2}, 1);
    m.appendColumns(m);
    EXPECT_EQ(itemsOf(m), (std::vector<double>{1, 2, 1, 2}));
    DoubleValue c = doubles({1, 2}, 2);
    c.appendRows(c);
    EXPECT_EQ(itemsOf(c), (std::vector<double>{1, 2, 1, 2}));
}

TEST(Growth, AppendsOneByOneInLinearTime) {
    DoubleValue v(0.0);
    int moves = 0;
    const void* block = v.rawData();
    for (int i = 1; i < 100000; ++i) {
        v.appendColumns(DoubleValue(i));
        moves += v.rawData() != block;
        block = v.rawData();
    }
    EXPECT_EQ(v.size(), 100000);
    EXPECT_EQ(v[99999], 99999);
    EXPECT_LT(moves, 60);
}

TEST(LargeBlocks, AFreedOneIsUsedForAResultOfAboutItsSize) {
    constexpr std::int64_t size = 1 << 20;
    DoubleValue first, second, small;
    first.setSize(size);
    const double* block = first.data();
    first.clear();
    small.setSize(1000);
    second.setSize(size - 1000);
    EXPECT_EQ(second.data(), block);
    // All of it can be written, and another array of the size has its own.
    DoubleValue third;
    third.setSize(size);
    EXPECT_NE(third.data(), block);
    second.fill(second.size(), 1, 1.0);
    third.fill(third.size(), 1, 2.0);
    EXPECT_EQ(second[0], 1.0);
    EXPECT_EQ(second[second.size() - 1], 1.0);
}

TEST(LargeBlocks, AFreedOneIsNotKeptForAMuchSmallerResult) {
    DoubleValue large, quarter;
    large.setSize(4 << 20);
    large.fill(large.size(), 1, 1.0);
    large.clear();
    quarter.setSize(1 << 20);
    EXPECT_LT(malloc_usable_size(quarter.data()), std::size_t{16} << 20);
    quarter.fill(quarter.size(), 1, 2.0);
    EXPECT_EQ(quarter[quarter.size() - 1], 2.0);
}

TEST(SavedContents, GoBackAndForth) {
    for (const auto& items : {std::vector<double>{5}, std::vector<double>{1, 2, 3}, std::vector<double>{}}) {
        DoubleValue v = doubles(items, 1);
        v.setMark(FORM_BOOL);
        SavedData saved = v.detachData();
        EXPECT_EQ(v.size(), 0);
        EXPECT_EQ(v.mark(), FORM_BOOL);
        v.assignDouble(9);
        v.adoptData(saved);
        EXPECT_EQ(itemsOf(v), items);
        EXPECT_EQ(v.mark(), FORM_BOOL);
        SavedData dropped = v.detachData();
        v.dropData(dropped);
        EXPECT_EQ(v.size(), 0);
    }
    ListValue list;
    list.assignString("kept");
    SavedData saved = list.detachData();
    list.assignDouble(1);
    list.adoptData(saved);
    EXPECT_EQ(list[0].get()->text(), "kept");
    SavedData dropped = list.detachData();
    list.dropData(dropped);
}

TEST(Lists, CopyDeeply) {
    ListValue list;
    list.assignDouble(1);
    ListValue copy;
    copy.assign(list);
    copy[0].get()->assignDouble(2);
    EXPECT_EQ(list[0].get()->doubleValue(), 1);
    list.fill(3, 3, ListItem(std::make_unique<DoubleValue>(4.0)));
    list[0].get()->assignDouble(5);
    EXPECT_EQ(list[1].get()->doubleValue(), 4);
    list.fill(2, 1, list[0]);
    EXPECT_EQ(list[1].get()->doubleValue(), 5);
    EXPECT_EQ(list.nrow(), 1);
    list.appendItem(INTEGER_VAL).assignInt(3);
    EXPECT_EQ(list.nrow(), 3);
    list.appendColumns(list);
    EXPECT_EQ(list.size(), 6);
    EXPECT_EQ(list[5].get()->intValue(), 3);
    EXPECT_NE(list[5].get(), list[2].get());
    list.transpose();
    EXPECT_EQ(list.nrow(), 2);
    EXPECT_EQ(list[1].get()->doubleValue(), 5);
}

TEST(Lists, ItemTextAndRefusals) {
    ListValue list;
    list.appendItem(LIST_VAL).assignDouble(1);
    list.appendItem(DOUBLE_VAL);
    std::string text;
    EXPECT_EQ(messageOf([&] { list.stringItem(text, 0, 9); }), "nested list: stringItem not yet implemented");
    list.stringItem(text, 1, 9);
    EXPECT_EQ(text, "");
    EXPECT_EQ(list.text(), "ListValue::toString not implemented yet");
    int first[] = {1};
    list.erase(INDEX_ELEMENT, first);
    EXPECT_EQ(list.size(), 1);
}

TEST(Text, OfAMatrixIsReadRowAfterRow) {
    IntValue m = integers({'a', 'c', 'b', 'd'}, 2);
    EXPECT_EQ(m.text(), "abcd");
}

}  // namespace
}  // namespace vorpen
