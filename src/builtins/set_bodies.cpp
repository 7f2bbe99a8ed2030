// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/set_bodies.h"

#include <algorithm>
#include <vector>

#include "base/interrupt.h"
#include "builtins/arguments.h"
#include "builtins/ordering.h"
#include "numerics/random.h"

namespace vorpen::builtin {
namespace {

std::int64_t at(const Value& m, std::int64_t row, std::int64_t column) { return column * m.nrow() + row; }

/// Copies a row of one matrix over a row of another with as many columns.
void copyRow(const DoubleValue& from, std::int64_t row, DoubleValue& to, std::int64_t toRow) {
    for (int c = 0; c < to.ncol(); ++c) to.data()[at(to, toRow, c)] = from.data()[at(from, row, c)];
}

/// The rows of a matrix in a given order.
template <class Order>
void gatherRows(const DoubleValue& m, const Order& order, DoubleValue& out) {
    DoubleValue result;
    result.setSizeShapeMark(m.size(), m.nrow(), m.mark());
    for (int c = 0; c < m.ncol(); ++c) {
        const double* from = m.data() + at(m, 0, c);
        double* to = result.data() + at(m, 0, c);
        for (const auto row : order) *to++ = from[row];
    }
    out.adopt(std::move(result));
}

/// One row as an array of its own.
void takeRow(const DoubleValue& m, int row, DoubleValue& out) {
    DoubleValue result;
    shapeResult(result, 1, m.ncol());
    copyRow(m, row, result, 0);
    result.setMark(partMark(m));
    out.adopt(std::move(result));
}

void removeRow(DoubleValue& m, int row) {
    double* to = m.data();
    for (int c = 0; c < m.ncol(); ++c)
        for (int r = 0; r < m.nrow(); ++r)
            if (r != row) *to++ = m.data()[at(m, r, c)];
    const int columns = m.ncol(), rows = m.nrow() - 1;
    m.resize(std::int64_t{rows} * columns);
    m.setNrow(rows);
}

/// Takes the first or the last row off a stack.
void takeOff(DoubleValue& stack, bool first, DoubleValue& out) {
    Require(!stack.isEmpty(), "popped an empty value");
    DoubleValue row;
    const int place = first ? 0 : stack.nrow() - 1;
    takeRow(stack, place, row);
    if (stack.nrow() == 1) {
        stack.clear();
    } else if (stack.nrow() == stack.size()) {
        if (first) std::copy(stack.data() + 1, stack.data() + stack.size(), stack.data());
        stack.resize(stack.size() - 1);
    } else {
        removeRow(stack, place);
    }
    out.adopt(std::move(row));
}

/// The rows of a matrix one after the other, so that a row is compared without
/// jumps.
std::vector<double> rowMajor(const DoubleValue& m) {
    std::vector<double> rows(m.size());
    std::size_t to = 0;
    for (int r = 0; r < m.nrow(); ++r)
        for (int c = 0; c < m.ncol(); ++c) rows[to++] = m.data()[at(m, r, c)];
    return rows;
}

/// A number below `range`, each equally likely: draws of 15 bits, put together
/// for long ranges, are rejected above the last full multiple of the range.
std::int64_t randomBelow(std::int64_t range) {
    constexpr int drawBits = 15;
    std::int64_t span = 1;
    int draws = 0;
    for (; span < range; ++draws) span <<= drawBits;
    const std::int64_t limit = span / range * range;
    for (;;) {
        std::int64_t number = 0;
        for (int k = 0; k < draws; ++k) number = number << drawBits | randomSource().rand();
        if (number < limit) return number % range;
    }
}

/// Exchanges each element with a random one before it or itself. Source: D. E.
/// Knuth, The Art of Computer Programming, volume 2 (1997), section 3.4.2.
template <class T>
void permuteAtRandom(T* items, std::int64_t n) {
    inRounds(n, [items](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = std::max<std::int64_t>(begin, 1); i < end; ++i) {
            const std::int64_t j = randomBelow(i + 1);
            if (i != j) std::swap(items[i], items[j]);
        }
    });
}

const DoubleValue& secondArgument(const DoubleValue* second) {
    Require(second != nullptr, "missing second argument");
    return *second;
}

/// Which elements of a merge are kept.
struct Selection {
    bool onlyInFirst, onlyInSecond, common, eachOnce;
};

std::vector<double> merge(const DoubleValue& a, const DoubleValue& b, Selection selection) {
    std::vector<double> kept;
    const auto keep = [&](double x) {
        if (!selection.eachOnce || kept.empty() || kept.back() != x) kept.push_back(x);
    };
    constexpr unsigned stepsAtOnce = 1 << 18;
    unsigned steps = 0;
    int i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        if (++steps % stepsAtOnce == 0) checkInterrupt();
        if (i < a.size() && j < b.size() && a[i] == b[j]) {
            if (selection.common) keep(a[i]);
            ++i, ++j;
        } else if (j == b.size() || (i < a.size() && comesBefore(a[i], b[j]))) {
            if (selection.onlyInFirst) keep(a[i]);
            ++i;
        } else {
            if (selection.onlyInSecond) keep(b[j]);
            ++j;
        }
    }
    return kept;
}

void setOperation(const Value& first, const DoubleValue* second, Value& result, Selection selection) {
    DoubleValue& out = doubleResult(result, {});
    DoubleValue scratch;
    const DoubleValue& a = asDoubles(first, scratch);
    const DoubleValue& b = secondArgument(second);
    const std::vector<double> kept = merge(a, b, selection);
    const int form = partMark(a) == partMark(b) ? partMark(a) : int{FORM_NUMERIC};
    const bool column = isColumn(a.isEmpty() ? static_cast<const Value&>(b) : a);
    if (kept.empty())
        makeEmpty(out);
    else
        shapeVector(out, static_cast<std::int64_t>(kept.size()), column);
    out.setMark(form);
    std::ranges::copy(kept, out.data());
}

void sortRowsByColumn(const DoubleValue& m, double column, DoubleValue& out) {
    const std::int64_t number = countOf(column);
    Require(number >= 1 && number <= m.ncol(), "invalid column number (out of range)", "sort");
    const std::span<const double> keys(m.data() + at(m, 0, number - 1), m.nrow());
    gatherRows(m, sortingOrder(keys), out);
}

bool isSorted(const DoubleValue& v) { return std::ranges::is_sorted(v.items(), comesBefore); }

}  // namespace

void sort(const Value& v, const DoubleValue* column, Value& result) {
    Require(!column || column->isScalar(), "invalid column number (not a scalar)", "sort");
    if (result.valueType() == INTEGER_VAL && v.valueType() == INTEGER_VAL && !column) {
        result.copyFrom(v);
        sortAscending(asInt(result).items());
        return;
    }
    DoubleValue& out = doubleResult(result, "sort");
    if (column) {
        DoubleValue scratch;
        sortRowsByColumn(asDoubles(v, scratch), (*column)[0], out);
    } else {
        out.copyFrom(v);
        sortAscending(out.items());
    }
}

void sortInPlace(DoubleValue& v, IntValue& out) {
    sortAscending(v.items());
    out.setSizeShapeMark(v.size(), v.nrow(), v.mark());
    std::ranges::transform(v.items(), out.data(), truncateToInt);
}

void sortIndices(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    const std::vector<std::uint32_t> order = sortingOrder(x.items());
    out.setSizeShapeMark(x.size(), x.nrow(), FORM_NUMERIC);
    std::ranges::transform(order, out.data(), [](std::uint32_t i) { return static_cast<int>(i + 1); });
}

void sortedRowOrder(const Value& matrix, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& m = asDoubles(matrix, scratch);
    const std::vector<double> rows = rowMajor(m);
    const std::int64_t columns = m.ncol();
    std::vector<int> order(m.nrow());
    for (int r = 0; r < m.nrow(); ++r) order[r] = r + 1;
    std::ranges::stable_sort(order, [&](int a, int b) {
        const double* left = rows.data() + (a - 1) * columns;
        const double* right = rows.data() + (b - 1) * columns;
        return std::lexicographical_compare(left, left + columns, right, right + columns, comesBefore);
    });
    shapeVector(out, m.nrow(), m.nrow() != 1);
    std::ranges::copy(order, out.data());
}

void unique(const Value& v, DoubleValue& out) {
    const int form = partMark(v);
    const bool column = isColumn(v);
    out.copyFrom(v);
    sortAscending(out.items());
    const auto kept = std::unique(out.data(), out.data() + out.size()) - out.data();
    out.setNrow(1);
    out.resize(kept);
    if (kept > 0) out.setNrow(column ? static_cast<int>(kept) : 1);
    out.setMark(form);
}

void shuffle(const Value& v, DoubleValue& out) {
    Require(v.isVector() || v.form() != FORM_TEXT, "incorrect value type for shuffle");
    if (v.isVector()) {
        out.copyFrom(v);
        permuteAtRandom(out.data(), out.size());
        return;
    }
    DoubleValue scratch;
    const DoubleValue& m = asDoubles(v, scratch);
    std::vector<int> order(m.nrow());
    for (int r = 0; r < m.nrow(); ++r) order[r] = r;
    permuteAtRandom(order.data(), m.nrow());
    gatherRows(m, order, out);
}

void isSubset(const Value& first, const DoubleValue* second, Value& out) {
    DoubleValue scratch;
    const DoubleValue& a = asDoubles(first, scratch);
    const DoubleValue& b = secondArgument(second);
    Require(isSorted(a) && isSorted(b), "non-sorted argument", "issubset");
    constexpr Selection onlyInFirst{true, false, false, false};
    out.assignDouble(merge(a, b, onlyInFirst).empty());
}

void intersection(const Value& a, const DoubleValue* b, Value& out) {
    setOperation(a, b, out, {false, false, true, false});
}

void unionOf(const Value& a, const DoubleValue* b, Value& out) { setOperation(a, b, out, {true, true, true, true}); }

void difference(const Value& a, const DoubleValue* b, Value& out) {
    setOperation(a, b, out, {true, false, false, false});
}

void symmetricDifference(const Value& a, const DoubleValue* b, Value& out) {
    setOperation(a, b, out, {true, true, false, false});
}

void before(const Value& first, const DoubleValue* second, Value& out) {
    if (!second) return makeEmpty(out);
    DoubleValue scratch;
    const DoubleValue& a = asDoubles(first, scratch);
    out.assignDouble(std::ranges::lexicographical_compare(a.items(), second->items(), comesBefore));
}

void nextPermutation(DoubleValue& v, IntValue& out) {
    std::ranges::next_permutation(v.items(), comesBefore);
    makeEmpty(out);
}

void previousPermutation(DoubleValue& v, IntValue& out) {
    std::ranges::prev_permutation(v.items(), comesBefore);
    makeEmpty(out);
}

void swapRows(const Value& matrix, const DoubleValue* rows, Value& result) {
    DoubleValue& out = doubleResult(result, "swaprows");
    Require(rows && rows->size() == 2, "requires 2 rows of numbers", "swaprows");
    const std::int64_t a = countOf((*rows)[0]), b = countOf((*rows)[1]);
    const auto exists = [&](std::int64_t row) { return row >= 1 && row <= matrix.nrow(); };
    Require(exists(a) && exists(b), "invalid row numbers", "swaprows");
    out.copyFrom(matrix);
    for (int c = 0; c < out.ncol(); ++c) std::swap(out.data()[at(out, a - 1, c)], out.data()[at(out, b - 1, c)]);
}

void push(DoubleValue& stack, const DoubleValue* row, DoubleValue& out) {
    // The row may be the stack itself.
    const DoubleValue added(secondArgument(row));
    stack.appendRows(added);
    out.copyFrom(stack);
}

void top(const Value& v, DoubleValue& out) {
    DoubleValue scratch;
    const DoubleValue& stack = asDoubles(v, scratch);
    if (stack.isEmpty()) return makeEmpty(out);
    takeRow(stack, stack.nrow() - 1, out);
}

void pop(DoubleValue& stack, DoubleValue& out) { takeOff(stack, false, out); }

void popFirst(DoubleValue& queue, DoubleValue& out) { takeOff(queue, true, out); }

}  // namespace vorpen::builtin
