// SPDX-License-Identifier: GPL-3.0-or-later
// Arithmetic of numeric arrays, one rule a test.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>
#include <vector>

#include "base/errors.h"
#include "values/kernels.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

template <class V, class T = double>
V array(std::vector<T> items, int nrow) {
    V v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), nrow, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

const auto doubles = array<DoubleValue>;
const auto integers = array<IntValue, int>;

std::vector<double> listOf(const Value& v) {
    DoubleValue d;
    d.assign(v);
    return {d.data(), d.data() + d.size()};
}

using List = std::vector<double>;

char failureOf(auto&& work) {
    try {
        work();
    } catch (const OperatorFailure& failure) {
        return failure.code;
    }
    return 0;
}

template <class V>
V result(int code, V left, const V& right) {
    left.operate(code, right);
    return left;
}

TEST(ElementWise, ScalarMeetsEveryElementOnEitherSide) {
    EXPECT_EQ(listOf(result(OP_PLUS, doubles({1, 2, 3}, 1), DoubleValue(1.0))), (List{2, 3, 4}));
    EXPECT_EQ(listOf(result(OP_MINUS, DoubleValue(10.0), doubles({1, 2, 3, 4}, 2))), (List{9, 8, 7, 6}));
    EXPECT_EQ(listOf(result(OP_PLUS, DoubleValue(), DoubleValue(1.0))), List{});
    EXPECT_EQ(listOf(result(OP_PLUS, DoubleValue(1.0), DoubleValue())), List{});
}

TEST(ElementWise, SizesAndRowsMustAgree) {
    for (const int code : {OP_PLUS, OP_MINUS, OP_TIMES, OP_DIVIDE, OP_POWER, OP_REMAINDER, OP_QUOTIENT}) {
        EXPECT_EQ(failureOf([&] { result(code, doubles({1, 2}, 1), doubles({1, 2}, 2)); }), operatorLetter(code));
        EXPECT_EQ(failureOf([&] { result(code, integers({1, 2}, 1), integers({1, 2, 3}, 1)); }),
                  operatorLetter(code));
    }
}

TEST(ElementWise, LeftKeepsItsMark) {
    DoubleValue left(1.0);
    left.setMark(FORM_BOOL);
    left.operate(OP_PLUS, doubles({1, 2}, 1));
    EXPECT_EQ(left.mark(), FORM_BOOL);
    EXPECT_EQ(left.size(), 2);
}

TEST(ElementWise, AValueMeetsItself) {
    DoubleValue x = doubles({1, 2, 3}, 1);
    x.operate(OP_TIMES, x);
    EXPECT_EQ(listOf(x), (List{1, 4, 9}));
}

TEST(ElementWise, SquaresHaveTheBitsOfThePowerFunction) {
    std::mt19937_64 bits(7);
    const double limits[] = {0.0, -0.0, 1e-42, 1e42, 1e-140, 1e140, 1e-170, 1e170, 5e-324, 1.7e308, INFINITY, -INFINITY, NAN};
    std::vector<double> items(std::begin(limits), std::end(limits));
    for (int i = 0; i < 100000; ++i) {
        items.push_back(std::bit_cast<double>(bits()));                      // any number
        items.push_back(std::ldexp(static_cast<double>(bits() >> 11), -50));  // 0 to 8
        items.push_back(std::ldexp(static_cast<double>(bits() >> 11), static_cast<int>(bits() % 280) - 190));
        // The square is next to a power of two.
        items.push_back(std::sqrt(1 + std::ldexp(static_cast<double>(static_cast<std::int64_t>(bits()) >> 44), -50)));
    }
    DoubleValue x = doubles(items, 1);
    x.operate(OP_POWER, DoubleValue(2.0));
    volatile double two = 2;  // or the compiler makes a product of the power
    for (std::size_t i = 0; i < items.size(); ++i) {
        const double expected = std::pow(items[i], two), found = x[static_cast<int>(i)];
        if (std::isnan(expected) && std::isnan(found)) continue;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(found), std::bit_cast<std::uint64_t>(expected)) << items[i];
    }
}

TEST(ElementWise, SineAndCosineTogetherHaveTheBitsOfEachAlone) {
    std::mt19937_64 bits(11);
    std::vector<double> items = {0.0, -0.0, 5e-324, 1e-8, -1e-8, 1.5e-8, 0.126, 0.855469, 2.426265, 1.5707963267948966,
                                 105414350.0, 1.7e308, INFINITY, -INFINITY, NAN};
    for (int i = 0; i < 50000; ++i) {
        items.push_back(std::bit_cast<double>(bits()));                               // any number
        items.push_back(std::ldexp(static_cast<double>(bits() >> 11), -50) - 4);       // -4 to 4
        items.push_back(std::ldexp(static_cast<double>(bits() >> 11), -44) - 256);     // -256 to 256
        items.push_back(std::ldexp(static_cast<double>(bits() >> 11), -26));           // 0 to 1.3e8
    }
    std::vector<double> sines(items.size()), cosines(items.size());
    sineAndCosine(sines.data(), cosines.data(), items.data(), static_cast<std::int64_t>(items.size()));
    const auto expectSame = [](double found, double expected, double x) {
        if (std::isnan(expected) && std::isnan(found)) return;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(found), std::bit_cast<std::uint64_t>(expected)) << x;
    };
    for (std::size_t i = 0; i < items.size(); ++i) {
        expectSame(sines[i], std::sin(items[i]), items[i]);
        expectSame(cosines[i], std::cos(items[i]), items[i]);
    }
}

TEST(ElementWise, FunctionsOnVectorsHaveTheBitsOfTheLibrary) {
    std::mt19937_64 bits(12);
    std::vector<double> items = {0.0,  -0.0, 5e-324, -5e-324, 0.5, -0.5, 1.0, -1.0, 2.5, -2.5, 4503599627370495.5,
                                 -4503599627370495.5, 4503599627370496.0, 1.7e308, -1.7e308, INFINITY, -INFINITY, NAN, -NAN};
    for (int i = 0; i < 50000; ++i) {
        items.push_back(std::bit_cast<double>(bits()));                          // any number
        items.push_back(std::ldexp(static_cast<double>(bits() >> 11), -50) - 4);  // -4 to 4
    }
    std::vector<double> found(items.size());
    for (double (*function)(double) : {::sqrt, ::fabs, ::floor, ::ceil, ::exp}) {
        double (*volatile called)(double) = function;  // or the compiler takes the operation
        applyFunction(function, found.data(), items.data(), static_cast<std::int64_t>(items.size()));
        for (std::size_t i = 0; i < items.size(); ++i) {
            const double expected = called(items[i]);
            ASSERT_EQ(std::signbit(found[i]), std::signbit(expected)) << items[i];
            if (std::isnan(expected) && std::isnan(found[i])) continue;
            ASSERT_EQ(std::bit_cast<std::uint64_t>(found[i]), std::bit_cast<std::uint64_t>(expected)) << items[i];
        }
    }
}

TEST(Integers, WrapAround) {
    EXPECT_EQ(result(OP_PLUS, IntValue(INT32_MAX), IntValue(1))[0], INT32_MIN);
    EXPECT_EQ(result(OP_TIMES, IntValue(65536), IntValue(65536))[0], 0);
    EXPECT_EQ(result(OP_MINUS, integers({INT32_MIN, 0}, 1), integers({1, 1}, 1))[0], INT32_MAX);
}

TEST(Integers, QuotientTruncatesAndRemainderHasTheSignOfTheDividend) {
    EXPECT_EQ(result(OP_QUOTIENT, IntValue(-7), IntValue(2))[0], -3);
    EXPECT_EQ(result(OP_REMAINDER, IntValue(-7), IntValue(3))[0], -1);
    EXPECT_EQ(result(OP_QUOTIENT, IntValue(INT32_MIN), IntValue(-1))[0], INT32_MIN);
    EXPECT_EQ(result(OP_REMAINDER, IntValue(INT32_MIN), IntValue(-1))[0], 0);
    EXPECT_EQ(result(OP_POWER, IntValue(2), IntValue(-1))[0], 0);
}

TEST(Integers, DivisionByZeroIsAMessage) {
    for (const int code : {OP_QUOTIENT, OP_REMAINDER, OP_DIVIDE}) {
        try {
            result(code, integers({4, 6}, 1), integers({2, 0}, 1));
            ADD_FAILURE();
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.message, "integer division by zero");
        }
    }
}

TEST(Doubles, QuotientFloorsAndRemainderIsThatOfTheLibrary) {
    EXPECT_EQ(result(OP_QUOTIENT, DoubleValue(-7.0), DoubleValue(2.0))[0], -4);
    EXPECT_EQ(result(OP_REMAINDER, DoubleValue(-7.0), DoubleValue(3.0))[0], -1);
    EXPECT_TRUE(std::isnan(result(OP_REMAINDER, DoubleValue(7.0), DoubleValue(0.0))[0]));
}

TEST(Complex, QuotientAndRemainderLookAtTheRealPart) {
    using Z = std::complex<double>;
    EXPECT_EQ(result(OP_REMAINDER, ComplexValue(Z(5, 1)), ComplexValue(Z(2, 0)))[0], Z(1, 1));
    EXPECT_EQ(result(OP_QUOTIENT, ComplexValue(Z(5, 1)), ComplexValue(Z(2, 0)))[0], Z(2, 0));
    EXPECT_EQ(result(OP_TIMES, ComplexValue(Z(0, 1)), ComplexValue(Z(0, 1)))[0], Z(-1, 0));
}

TEST(MixedRoutine, TakesTheShapeOfTheIntegersAndDoesNotExchangeTheDifference) {
    const auto mixed = [](int code, double left, const IntValue& right) {
        DoubleValue v(left);
        v.operateInt(code, right);
        return listOf(v);
    };
    const IntValue row = integers({1, 2, 3}, 1);
    EXPECT_EQ(mixed(OP_MINUS, 2.5, row), (List{-1.5, -0.5, 0.5}));
    EXPECT_EQ(mixed(OP_DIVIDE, 2.5, integers({1, 2}, 1)), (List{2.5, 1.25}));
    EXPECT_EQ(mixed(OP_POWER, 2, row), (List{2, 4, 8}));
    EXPECT_EQ(mixed(OP_MINUS, 2.5, IntValue(1)), (List{1.5}));
    IntValue truth = integers({1, 0}, 1);
    truth.setMark(FORM_BOOL);
    DoubleValue v(2.0);
    v.operateInt(OP_TIMES, truth);
    EXPECT_EQ(v.mark(), FORM_BOOL);
    EXPECT_EQ(failureOf([&] { doubles({1, 2}, 2).operateInt(OP_PLUS, row); }), '+');
}

TEST(MatrixProduct, NeedsFittingShapes) {
    DoubleValue m = doubles({1, 3, 2, 4}, 2);
    m.setMark(FORM_BOOL);
    m.matrixProduct(doubles({5, 6}, 2));
    EXPECT_EQ(listOf(m), (List{17, 39}));
    EXPECT_EQ(m.nrow(), 2);
    EXPECT_EQ(m.mark(), 0);
    EXPECT_EQ(failureOf([] { doubles({1, 2}, 1).matrixProduct(doubles({3, 4}, 1)); }), '.');
    EXPECT_EQ(failureOf([] { doubles({1, 2}, 1).matrixProduct(DoubleValue(2.0)); }), '.');
    IntValue scaled = integers({1, 2}, 1);
    scaled.matrixProduct(IntValue(3));
    EXPECT_EQ(listOf(scaled), (List{3, 6}));
    IntValue three(3);
    three.matrixProduct(integers({1, 2}, 1));
    EXPECT_EQ(listOf(three), (List{3, 6}));
}

TEST(MatrixProduct, LargeOnesAgreeWithThePlainLoop) {
    const int n = 60;
    DoubleValue a, b;
    a.setShape(n, n);
    b.setShape(n, n);
    for (int i = 0; i < n * n; ++i) {
        a[i] = i % 7 - 3;
        b[i] = i % 5 - 2;
    }
    DoubleValue product = a;
    product.matrixProduct(b);
    for (int r = 0; r < n; ++r)
        for (int c = 0; c < n; ++c) {
            double sum = 0;
            for (int k = 0; k < n; ++k) sum += a[k * n + r] * b[c * n + k];
            ASSERT_EQ(product[c * n + r], sum);
        }
}

TEST(TensorProduct, IsBuiltFromScaledBlocks) {
    IntValue m = integers({1, 3, 2, 4}, 2);
    m.tensorProduct(integers({1, 0}, 1));
    EXPECT_EQ(listOf(m), (List{1, 3, 0, 0, 2, 4, 0, 0}));
    EXPECT_EQ(m.nrow(), 2);
    IntValue empty;
    empty.tensorProduct(IntValue(1));
    EXPECT_TRUE(empty.isEmpty());
}

TEST(TensorProduct, BlocksWithoutElementsJoinToOneOfThem) {
    DoubleValue column(1.0), rowsOnly;
    column.fill(2, 2, 1.0);
    rowsOnly.setSizeShapeMark(0, 3, FORM_STRING);
    column.tensorProduct(rowsOnly);
    EXPECT_TRUE(column.isEmpty());
    EXPECT_EQ(column.nrow(), 3);
    EXPECT_TRUE(column.isString());
}

TEST(CrossProduct, OfTriplesKeepsTheLeftOrientation) {
    IntValue a = integers({1, 2, 3}, 1);
    a.crossProduct(integers({4, 5, 6}, 3));
    EXPECT_EQ(listOf(a), (List{-3, 6, -3}));
    EXPECT_EQ(a.nrow(), 1);
    EXPECT_EQ(failureOf([] { integers({1, 2}, 1).crossProduct(integers({3, 4}, 1)); }), '^');
}

TEST(CrossProduct, OfSetsOfTriples) {
    // Two triples in columns against one.
    DoubleValue a = doubles({1, 0, 0, 0, 1, 0}, 3);
    a.crossProduct(doubles({0, 0, 1}, 3));
    EXPECT_EQ(listOf(a), (List{0, -1, 0, 1, 0, 0}));
    EXPECT_EQ(a.nrow(), 3);
    // The same triples in rows come back in rows.
    DoubleValue rows = doubles({1, 0, 0, 1, 0, 0}, 2);
    rows.crossProduct(doubles({0, 0, 1}, 1));
    EXPECT_EQ(rows.nrow(), 2);
    EXPECT_EQ(listOf(rows), (List{0, 1, -1, 0, 0, 0}));
    EXPECT_EQ(failureOf([] { doubles({1, 0, 0, 0, 1, 0}, 3).crossProduct(doubles(List(9), 3)); }), '^');
}

TEST(AddLines, AddsARowOrAColumn) {
    const auto sum = [](const DoubleValue& b, int sign) {
        DoubleValue a = doubles({1, 3, 2, 4}, 2);
        a.addLines(b, sign);
        return listOf(a);
    };
    EXPECT_EQ(sum(doubles({10, 20}, 1), 1), (List{11, 13, 22, 24}));
    EXPECT_EQ(sum(doubles({10, 20}, 2), 1), (List{11, 23, 12, 24}));
    EXPECT_EQ(sum(doubles({1, 3, 2, 4}, 2), -1), (List{0, 0, 0, 0}));
    EXPECT_EQ(failureOf([&] { sum(doubles({1, 2, 3}, 1), 1); }), '@');
    EXPECT_EQ(failureOf([&] { sum(DoubleValue(), 1); }), '@');
    EXPECT_EQ(failureOf([&] { sum(DoubleValue(1.0), 1); }), '@');
    DoubleValue row = doubles({1, 2}, 1);
    row.addLines(doubles({10, 20, 30}, 1), 1);
    EXPECT_EQ(listOf(row), (List{11, 12}));
}

TEST(MathIndexedAssign, OperatesOnParts) {
    DoubleValue m = doubles({1, 3, 2, 4}, 2);
    const int first[] = {1}, second[] = {2}, both[] = {1, 2};
    m.mathIndexedAssign(INDEX_ROW, first, DoubleValue(10.0), 'P');
    EXPECT_EQ(listOf(m), (List{11, 3, 12, 4}));
    m.mathIndexedAssign(INDEX_COLUMN, second, doubles({1, 2}, 2), 'M');
    EXPECT_EQ(listOf(m), (List{11, 3, 11, 2}));
    m.mathIndexedAssign(INDEX_ELEMENT, both, doubles({2, 3}, 1), 'T');
    EXPECT_EQ(listOf(m), (List{22, 9, 11, 2}));
    m.mathIndexedAssign(both, first, doubles({2, 3}, 2), 'D');
    EXPECT_EQ(listOf(m), (List{11, 3, 11, 2}));
    m.mathIndexedAssign(INDEX_ELEMENT, both, DoubleValue(1.0), '?');
    EXPECT_EQ(m[0], 11);
    EXPECT_EQ(failureOf([&] { m.mathIndexedAssign(both, first, DoubleValue(1.0), '?'); }), '?');
    EXPECT_THROW(m.mathIndexedAssign(INDEX_PLANE, first, DoubleValue(1.0), 'P'), PlainFailure);
}

}  // namespace
}  // namespace vorpen
