// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/set_bodies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>

#include "builtins/ordering.h"
#include "builtins_support.h"

namespace vorpen {
namespace {

using namespace testing;

constexpr double inf = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

// ---- ordering

std::vector<double> awkwardNumbers(int n, unsigned seed) {
    std::mt19937_64 engine(seed);
    std::vector<double> items(n);
    const double special[] = {inf, -inf, nan, -nan, 0.0, -0.0, 5e-324, -5e-324, 1.0};
    for (double& x : items) {
        switch (engine() % 4) {
            case 0: x = special[engine() % 9]; break;
            case 1: x = static_cast<double>(engine() % 100) - 50; break;
            default: x = std::ldexp(static_cast<double>(engine()) - 9e18, static_cast<int>(engine() % 900) - 500);
        }
    }
    return items;
}

bool sameBits(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

void expectOrderOfStableSort(std::vector<double> items, const std::string& what) {
    std::vector<double> expected = items;
    std::vector<std::uint32_t> order(items.size());
    std::iota(order.begin(), order.end(), 0u);
    std::ranges::stable_sort(order, comesBefore, [&](std::uint32_t i) { return items[i]; });
    std::ranges::stable_sort(expected, comesBefore);
    EXPECT_EQ(sortingOrder(items), order) << what;
    sortAscending(items);
    for (std::size_t i = 0; i < items.size(); ++i)
        ASSERT_TRUE(sameBits(items[i], expected[i])) << what << " at " << i;
}

TEST(Ordering, AgreesWithAStableSortAtAnyLength) {
    for (const int n : {0, 1, 2, 999, 1000, 1001, 5000, 20000})
        expectOrderOfStableSort(awkwardNumbers(n, n), std::to_string(n));
}

/// `groups` clusters of numbers so close to each other that they agree in the
/// upper half of their bits.
std::vector<double> clusters(int n, int groups, double width) {
    std::mt19937_64 engine(n + groups);
    std::vector<double> items(n);
    for (double& x : items)
        x = 1.0 + static_cast<double>(engine() % groups) + width * static_cast<double>(engine() % 1000);
    return items;
}

TEST(Ordering, NumbersThatDifferInTheirLastBitsOnly) {
    // Runs of a few, of some hundred and of thousands are sorted in ways of
    // their own.
    for (const int groups : {1, 3, 50, 1000})
        for (const double width : {1e-15, 1e-13, 1e-10}) {
            expectOrderOfStableSort(clusters(20000, groups, width), std::to_string(groups));
            std::vector<double> negative = clusters(20000, groups, width);
            for (double& x : negative) x = -x;
            expectOrderOfStableSort(negative, "negative " + std::to_string(groups));
        }
}

TEST(Ordering, SortedReversedAndAlternatingNumbers) {
    std::vector<double> items(30000);
    std::iota(items.begin(), items.end(), -15000.0);
    expectOrderOfStableSort(items, "sorted");
    std::ranges::reverse(items);
    expectOrderOfStableSort(items, "reversed");
    for (std::size_t i = 0; i < items.size(); ++i) items[i] = i % 2 == 0 ? 0.0 : -0.0;
    expectOrderOfStableSort(items, "zeros");
    for (std::size_t i = 0; i < items.size(); ++i) items[i] = i % 3 == 0 ? nan : i % 3 == 1 ? inf : -inf;
    expectOrderOfStableSort(items, "no numbers");
}

TEST(Ordering, SkipsNothingWhenAllItemsAreEqual) {
    std::vector<double> items(3000, 7.0);
    sortAscending(items);
    EXPECT_EQ(items, std::vector<double>(3000, 7.0));
    const auto order = sortingOrder(items);
    EXPECT_TRUE(std::ranges::is_sorted(order));
}

// ---- sorting

TEST(Sort, Elements) {
    EXPECT_EQ(called(builtin::sort, row({3, 1, 2})), "1 2 3");
    EXPECT_EQ(called(builtin::sort, column({3, 1, 2})), "1; 2; 3");
    EXPECT_EQ(called(builtin::sort, matrix(2, {4, 3, 2, 1})), "1 3; 2 4");
    EXPECT_EQ(called(builtin::sort, row({nan, 2, -inf, nan, 1})), "-inf 1 2 nan nan");
    EXPECT_EQ(called(builtin::sort, text("hello")), "'ehllo'");
    EXPECT_EQ(called(builtin::sort, empty()), "[]");
    IntValue out;
    builtin::sort(integers({3, -1, 2}), nullptr, out);
    EXPECT_EQ(described(out), "-1 2 3");
    ComplexValue wrong;
    EXPECT_EQ(failure([&] { builtin::sort(row({1}), nullptr, wrong); }), "in sort: invalid return type");
}

TEST(Sort, RowsByAColumn) {
    EXPECT_EQ(called(builtin::sort, matrix(2, {1, 0, 2, 9}), row({1})), "0 9; 1 2");
    EXPECT_EQ(called(builtin::sort, matrix(2, {1, 0, 2, 9}), row({2})), "1 2; 0 9");
    // Equal rows keep their order.
    EXPECT_EQ(called(builtin::sort, matrix(4, {2, 1, 2, 1, 1, 2, 3, 4}), row({1})), "1 2; 1 4; 2 1; 2 3");
    const DoubleValue m = matrix(2, {1, 0, 2, 9});
    for (const double wrong : {5.0, 0.0, -1.0, nan, 1e300})
        EXPECT_EQ(failed(builtin::sort, m, row({wrong})), "in sort: invalid column number (out of range)");
    EXPECT_EQ(failed(builtin::sort, m, row({1, 2})), "in sort: invalid column number (not a scalar)");
    EXPECT_EQ(failed(builtin::sort, m, empty()), "in sort: invalid column number (not a scalar)");
    EXPECT_EQ(failed(builtin::sort, empty(), row({1})), "in sort: invalid column number (out of range)");
}

TEST(Sort, InPlace) {
    DoubleValue v = row({3, 1.5, 2});
    IntValue out;
    builtin::sortInPlace(v, out);
    EXPECT_EQ(described(v), "1.5 2 3");
    EXPECT_EQ(described(out), "1 2 3");
    v = text("cab");
    builtin::sortInPlace(v, out);
    EXPECT_EQ(described(out), "'abc'");
}

TEST(Sort, Indices) {
    EXPECT_EQ(called(builtin::sortIndices, row({3, 1, 2})), "2 3 1");
    EXPECT_EQ(called(builtin::sortIndices, column({3, 1, 3, nan, 1})), "2; 5; 1; 3; 4");
    EXPECT_EQ(called(builtin::sortIndices, row({0.0, -0.0})), "1 2");
    EXPECT_EQ(called(builtin::sortIndices, empty()), "[]");
}

TEST(Sort, RowOrder) {
    EXPECT_EQ(called(builtin::sortedRowOrder, matrix(3, {3, 1, 1, 1, 2, 1})), "3; 2; 1");
    EXPECT_EQ(called(builtin::sortedRowOrder, row({3, 1})), "1");
    EXPECT_EQ(called(builtin::sortedRowOrder, matrix(3, {1, 1, 1, nan, 2, nan})), "2; 1; 3");
    EXPECT_EQ(called(builtin::sortedRowOrder, empty()), "[]");
}

TEST(Sort, Unique) {
    EXPECT_EQ(called(builtin::unique, row({3, 1, 3})), "1 3");
    EXPECT_EQ(called(builtin::unique, column({3, 1, 3})), "1; 3");
    EXPECT_EQ(called(builtin::unique, column({3, 3})), "3");
    EXPECT_EQ(called(builtin::unique, matrix(2, {2, 1, 2, 1})), "1 2");
    EXPECT_EQ(called(builtin::unique, text("hello")), "'ehlo'");
    EXPECT_EQ(called(builtin::unique, empty()), "[]");
    EXPECT_EQ(called(builtin::unique, row({nan, 1, nan})), "1 nan nan");
    DoubleValue out;
    builtin::unique(row({0.0, -0.0}), out);
    EXPECT_EQ(out.size(), 1);
}

TEST(Shuffle, KeepsTheElements) {
    DoubleValue out;
    builtin::shuffle(row({1, 2, 3, 4, 5}), out);
    EXPECT_EQ(called(builtin::sort, out), "1 2 3 4 5");
    builtin::shuffle(matrix(3, {1, 2, 3, 10, 20, 30}), out);
    EXPECT_EQ(called(builtin::sort, out, row({1})), "1 10; 2 20; 3 30");
    builtin::shuffle(empty(), out);
    EXPECT_TRUE(out.isEmpty());
    builtin::shuffle(text("ab"), out);
    EXPECT_TRUE(out.isString());
    EXPECT_EQ(failure([&] { builtin::shuffle(matrix(2, {1, 2, 3, 4}, FORM_TEXT), out); }),
              "incorrect value type for shuffle");
}

TEST(Shuffle, EachOrderIsEquallyLikely) {
    std::vector<int> counts(6);
    for (int k = 0; k < 6000; ++k) {
        DoubleValue out;
        builtin::shuffle(row({0, 1, 2}), out);
        ++counts.at(static_cast<std::size_t>(2 * out[0] + (out[1] > out[2])));
    }
    for (const int count : counts) EXPECT_NEAR(count, 1000, 130);
}

TEST(Shuffle, ReachesFarInALongVector) {
    std::vector<double> items(100000);
    std::iota(items.begin(), items.end(), 0.0);
    DoubleValue out;
    builtin::shuffle(row(items), out);
    int far = 0;
    for (int i = 0; i < out.size(); ++i) far += std::fabs(out[i] - i) > 40000;
    EXPECT_NEAR(far, 36000, 1500);
    std::vector<double> sorted(out.items().begin(), out.items().end());
    std::ranges::sort(sorted);
    EXPECT_EQ(sorted, items);
}

// ---- sets

TEST(Sets, OfSortedVectors) {
    EXPECT_EQ(called(builtin::intersection, row({1, 2, 3}), row({2, 3, 4})), "2 3");
    EXPECT_EQ(called(builtin::unionOf, row({1, 3}), row({2, 3})), "1 2 3");
    EXPECT_EQ(called(builtin::unionOf, row({1, 1, 2}), row({2, 2, 5, 5})), "1 2 5");
    EXPECT_EQ(called(builtin::difference, row({1, 2, 3}), row({2})), "1 3");
    EXPECT_EQ(called(builtin::difference, row({1, 1, 2}), row({1})), "1 2");
    EXPECT_EQ(called(builtin::symmetricDifference, row({1, 2}), row({2, 3})), "1 3");
    EXPECT_EQ(called(builtin::intersection, row({1}), row({2})), "[]");
    EXPECT_EQ(called(builtin::unionOf, empty(), empty()), "[]");
    EXPECT_EQ(called(builtin::unionOf, row({1, nan}), row({2})), "1 2 nan");
    EXPECT_EQ(called(builtin::unionOf, row({2}), row({1, nan})), "1 2 nan");
    EXPECT_EQ(called(builtin::unionOf, text("ac"), text("bc")), "'abc'");
    EXPECT_EQ(called(builtin::unionOf, text("a"), row({1})), "1 97");
}

TEST(Sets, TheFirstArgumentWithElementsGivesTheDirection) {
    EXPECT_EQ(called(builtin::unionOf, column({1, 3}), row({2})), "1; 2; 3");
    EXPECT_EQ(called(builtin::unionOf, empty(), column({1, 2})), "1; 2");
    EXPECT_EQ(called(builtin::intersection, row({1, 2}), column({1, 2})), "1 2");
    EXPECT_EQ(called(builtin::unionOf, row({1}), empty()), "1");
    EXPECT_EQ(called(builtin::unionOf, matrix(2, {1, 2, 3, 4}), column({5, 6})), "1 2 3 4 5 6");
}

TEST(Sets, UnsortedVectorsRunAsTheyAre) {
    EXPECT_EQ(called(builtin::unionOf, row({3, 1}), row({2})), "2 3 1");
    EXPECT_EQ(called(builtin::intersection, row({3, 1}), row({1, 3})), "3");
}

TEST(Sets, Subset) {
    EXPECT_EQ(called(builtin::isSubset, row({1, 3}), row({1, 2, 3})), "1");
    EXPECT_EQ(called(builtin::isSubset, row({1, 4}), row({1, 2, 3})), "0");
    EXPECT_EQ(called(builtin::isSubset, empty(), row({1})), "1");
    EXPECT_EQ(failed(builtin::isSubset, row({2, 1}), row({1, 2})), "in issubset: non-sorted argument");
    EXPECT_EQ(failed(builtin::isSubset, row({1, 2}), row({2, 1})), "in issubset: non-sorted argument");
}

TEST(Sets, NeedASecondArgument) {
    for (const TwoArgBody body : {builtin::isSubset, builtin::intersection, builtin::unionOf, builtin::difference,
                                  builtin::symmetricDifference})
        EXPECT_EQ(failed(body, row({1, 2})), "missing second argument");
}

TEST(Before, ComparesElementByElement) {
    EXPECT_EQ(called(builtin::before, row({1, 2}), row({1, 3})), "1");
    EXPECT_EQ(called(builtin::before, row({1, 2}), row({1, 2})), "0");
    EXPECT_EQ(called(builtin::before, row({1}), row({1, 2})), "1");
    EXPECT_EQ(called(builtin::before, text("abd"), text("abc")), "0");
    EXPECT_EQ(called(builtin::before, empty(), row({1})), "1");
    EXPECT_EQ(called(builtin::before, row({1, 2})), "[]");
}

// ---- permutations

TEST(Permutations, StepTheVariable) {
    IntValue out;
    DoubleValue v = row({1, 2, 3});
    builtin::nextPermutation(v, out);
    EXPECT_EQ(described(v), "1 3 2");
    EXPECT_EQ(described(out), "[]");
    builtin::previousPermutation(v, out);
    EXPECT_EQ(described(v), "1 2 3");
    builtin::previousPermutation(v, out);
    EXPECT_EQ(described(v), "3 2 1");
    builtin::nextPermutation(v, out);
    EXPECT_EQ(described(v), "1 2 3");
    for (DoubleValue odd : {empty(), row({5}), row({nan, 1, nan})})
        for (int k = 0; k < 4; ++k) builtin::nextPermutation(odd, out);
}

// ---- rows

TEST(Rows, Swap) {
    const DoubleValue m = matrix(3, {1, 3, 5, 2, 4, 6});
    EXPECT_EQ(called(builtin::swapRows, m, row({1, 3})), "5 6; 3 4; 1 2");
    EXPECT_EQ(called(builtin::swapRows, m, row({2, 2})), "1 2; 3 4; 5 6");
    EXPECT_EQ(failed(builtin::swapRows, m), "in swaprows: requires 2 rows of numbers");
    EXPECT_EQ(failed(builtin::swapRows, m, row({5})), "in swaprows: requires 2 rows of numbers");
    EXPECT_EQ(failed(builtin::swapRows, m, row({1, 2, 3})), "in swaprows: requires 2 rows of numbers");
    for (const double wrong : {4.0, 0.0, -1.0, nan, 1e300})
        EXPECT_EQ(failed(builtin::swapRows, m, row({1, wrong})), "in swaprows: invalid row numbers");
}

TEST(Stack, PushAndTop) {
    DoubleValue stack = row({1, 2}), out;
    const DoubleValue added = row({3, 4});
    builtin::push(stack, &added, out);
    EXPECT_EQ(described(stack), "1 2; 3 4");
    EXPECT_EQ(described(out), "1 2; 3 4");
    EXPECT_EQ(called(builtin::top, stack), "3 4");
    builtin::push(stack, &stack, out);
    EXPECT_EQ(described(stack), "1 2; 3 4; 1 2; 3 4");
    DoubleValue none;
    builtin::push(none, &added, out);
    EXPECT_EQ(described(none), "3 4");
    EXPECT_EQ(called(builtin::top, empty()), "[]");
    EXPECT_EQ(called(builtin::top, column({1, 2})), "2");
    EXPECT_EQ(called(builtin::top, text("ab")), "'ab'");
}

TEST(Stack, PushFails) {
    DoubleValue stack = row({1, 2}), out;
    const DoubleValue one = row({3});
    EXPECT_EQ(failure([&] { builtin::push(stack, &one, out); }), "operator ;");
    EXPECT_EQ(failure([&] { builtin::push(stack, nullptr, out); }), "missing second argument");
    EXPECT_EQ(described(stack), "1 2");
}

TEST(Stack, PopTakesTheLastRow) {
    DoubleValue out;
    DoubleValue c = column({1, 2, 3});
    builtin::pop(c, out);
    EXPECT_EQ(described(out), "3");
    EXPECT_EQ(described(c), "1; 2");
    DoubleValue m = matrix(3, {1, 3, 5, 2, 4, 6});
    builtin::pop(m, out);
    EXPECT_EQ(described(out), "5 6");
    EXPECT_EQ(described(m), "1 2; 3 4");
    DoubleValue r = row({1, 2, 3});
    builtin::pop(r, out);
    EXPECT_EQ(described(out), "1 2 3");
    EXPECT_EQ(described(r), "[]");
    EXPECT_EQ(failure([&] { builtin::pop(r, out); }), "popped an empty value");
}

TEST(Stack, QueueTakesTheFirstRow) {
    DoubleValue out;
    DoubleValue c = column({1, 2, 3});
    builtin::popFirst(c, out);
    EXPECT_EQ(described(out), "1");
    EXPECT_EQ(described(c), "2; 3");
    builtin::popFirst(c, out);
    builtin::popFirst(c, out);
    EXPECT_EQ(described(out), "3");
    EXPECT_EQ(failure([&] { builtin::popFirst(c, out); }), "popped an empty value");
    DoubleValue m = matrix(3, {1, 3, 5, 2, 4, 6});
    builtin::popFirst(m, out);
    EXPECT_EQ(described(out), "1 2");
    EXPECT_EQ(described(m), "3 4; 5 6");
}

TEST(Stack, TheResultMayBeTheStackItself) {
    DoubleValue c = column({1, 2, 3});
    builtin::pop(c, c);
    EXPECT_EQ(described(c), "3");
}

}  // namespace
}  // namespace vorpen
