// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/array_bodies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "builtins/reduction_bodies.h"
#include "builtins_support.h"

namespace vorpen {
namespace {

using namespace testing;

constexpr double inf = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();
constexpr int planes3 = 3 * 16 + FORM_3D;

// ---- construction

TEST(ArrayConstruction, EvenlySpacedPoints) {
    EXPECT_EQ(called(builtin::evenlySpaced, row({0, 1, 3})), "0 0.5 1");
    EXPECT_EQ(called(builtin::evenlySpaced, row({2, 4, 3})), "2 3 4");
    EXPECT_EQ(called(builtin::evenlySpaced, row({7, 9, 1})), "7");
    EXPECT_EQ(called(builtin::evenlySpaced, row({7, 9, 0.9})), "[]");
    EXPECT_EQ(called(builtin::evenlySpaced, row({7, 9, -3})), "[]");
    EXPECT_EQ(called(builtin::evenlySpaced, row({7, 9, nan})), "[]");
    DoubleValue out;
    builtin::evenlySpaced(row({0, 1}), out);
    EXPECT_EQ(out.size(), 100);
    // The last element is what the running sum gives.
    double sum = 0;
    for (int i = 0; i < 99; ++i) sum += 1.0 / 99;
    EXPECT_EQ(out[99], sum);
    for (const auto& wrong : {row({5}), row({1, 2, 3, 4}), empty()})
        EXPECT_EQ(failed(builtin::evenlySpaced, wrong), "in seq: need 2 or 3 scalar arguments");
    EXPECT_EQ(failed(builtin::evenlySpaced, row({0, 1, 1e12})), "out of memory");
}

TEST(ArrayConstruction, ZerosAndOnes) {
    EXPECT_EQ(called(builtin::zeros, row({2})), "0 0; 0 0");
    EXPECT_EQ(called(builtin::ones, row({2, 3})), "1 1 1; 1 1 1");
    EXPECT_EQ(called(builtin::zeros, empty()), "[]");
    EXPECT_EQ(called(builtin::zeros, row({0})), "[]");
    EXPECT_EQ(called(builtin::zeros, row({nan})), "[]");
    EXPECT_EQ(called(builtin::zeros, row({2.9, 1})), "0; 0");
    EXPECT_EQ(called(builtin::ones, row({1, 2, 3})), "set: 3 planes: 1 1 1 1 1 1");
    DoubleValue cube;
    builtin::zeros(row({2, 3, 4}), cube);
    EXPECT_EQ(cube.size(), 24);
    EXPECT_EQ(cube.nrow(), 2);
    EXPECT_EQ(cube.mark(), 72);
}

TEST(ArrayConstruction, ZerosFail) {
    EXPECT_EQ(failed(builtin::zeros, row({-1})), "in zeros/ones: size must be non-negative");
    EXPECT_EQ(failed(builtin::ones, row({1, -1})), "in zeros/ones: size must be non-negative");
    EXPECT_EQ(failed(builtin::zeros, row({1, 2, 3, 4})), "too many indices");
    EXPECT_EQ(failed(builtin::zeros, row({1e5, 1e5})), "out of memory");
    EXPECT_EQ(failed(builtin::zeros, row({inf})), "out of memory");
    EXPECT_EQ(failed(builtin::zeros, row({1, 1, 1e9})), "out of memory");
    EXPECT_EQ(failed(builtin::zeros, row({1e9, 1e9, 1e8})), "out of memory");
}

TEST(ArrayConstruction, Identity) {
    EXPECT_EQ(called(builtin::identity, row({2})), "1 0; 0 1");
    EXPECT_EQ(called(builtin::identity, row({0})), "[]");
    EXPECT_EQ(failed(builtin::identity, row({1, 2})), "in eye: argument must be a scalar");
    EXPECT_EQ(failed(builtin::identity, empty()), "in eye: argument must be a scalar");
    EXPECT_EQ(failed(builtin::identity, row({-2})), "in eye: size must be non-negative");
    EXPECT_EQ(failed(builtin::identity, row({1e9})), "out of memory");
}

TEST(ArrayConstruction, Reshape) {
    const DoubleValue six = row({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(called(builtin::reshape, six, row({2, 3})), "1 3 5; 2 4 6");
    EXPECT_EQ(called(builtin::reshape, matrix(2, {1, 2, 3, 4})), "1 2 3 4");
    EXPECT_EQ(called(builtin::reshape, row({1, 2, 3, 4}), row({2})), "1 3; 2 4");
    EXPECT_EQ(called(builtin::reshape, text("abcd"), row({1, 4})), "'abcd'");
    EXPECT_EQ(called(builtin::reshape, matrix(1, {1, 2, 3}, planes3), row({3, 1})), "1; 2; 3");
    EXPECT_EQ(called(builtin::reshape, empty(), row({0, 5})), "[]");
    EXPECT_EQ(failed(builtin::reshape, six, row({4, 2})), "in reshape: invalid: does not preserve the size");
    EXPECT_EQ(failed(builtin::reshape, six, row({-2, -3})), "in reshape: invalid: does not preserve the size");
    EXPECT_EQ(failed(builtin::reshape, six, row({1e30, 1e30})), "in reshape: invalid: does not preserve the size");
    EXPECT_EQ(failed(builtin::reshape, six, row({6, nan})), "in reshape: invalid: does not preserve the size");
    EXPECT_EQ(failed(builtin::reshape, six, empty()), "in reshape: empty shape");
    EXPECT_EQ(failed(builtin::reshape, six, row({1, 2, 3})), "in reshape: too many dimensions");
}

TEST(ArrayConstruction, Diagonal) {
    EXPECT_EQ(called(builtin::diagonal, row({1, 2})), "1 0; 0 2");
    EXPECT_EQ(called(builtin::diagonal, row({5, 6}), row({1})), "0 5 0; 0 0 6; 0 0 0");
    EXPECT_EQ(called(builtin::diagonal, row({5, 6}), row({-1})), "0 0 0; 5 0 0; 0 6 0");
    EXPECT_EQ(called(builtin::diagonal, matrix(2, {1, 3, 2, 4})), "1; 4");
    EXPECT_EQ(called(builtin::diagonal, matrix(2, {1, 3, 2, 4}), row({1})), "2");
    EXPECT_EQ(called(builtin::diagonal, matrix(2, {1, 3, 2, 4}), row({-1})), "3");
    EXPECT_EQ(called(builtin::diagonal, matrix(2, {1, 3, 2, 4}), row({9})), "[]");
    EXPECT_EQ(called(builtin::diagonal, matrix(2, {1, 3, 2, 4}), row({-1e300})), "[]");
    EXPECT_EQ(called(builtin::diagonal, empty()), "[]");
    EXPECT_EQ(called(builtin::diagonal, row({7})), "7");
    EXPECT_EQ(failed(builtin::diagonal, row({1, 2}), row({1, 2})), "in diag: 2nd argument must be scalar");
    EXPECT_EQ(failed(builtin::diagonal, matrix(2, {1, 2, 3, 4, 5, 6})), "in diag: non-square matrix");
    EXPECT_EQ(failed(builtin::diagonal, row({1, 2}), row({1e300})), "out of memory");
}

TEST(ArrayConstruction, ComplexFromParts) {
    IntValue re = integers({1, 2});
    DoubleValue im = row({3, -4}), one(1.0), none;
    EXPECT_EQ(called<ComplexValue>(builtin::complexFromParts, {&re, &im}), "complex: 1+3i 2-4i");
    EXPECT_EQ(called<ComplexValue>(builtin::complexFromParts, {&none, &none}), "complex: []");
    EXPECT_EQ(failedGeneral<ComplexValue>(builtin::complexFromParts, {&one, &im}),
              "in complex: real and imaginary parts of different size");
}

// ---- reductions

TEST(Reductions, SumsAndMeans) {
    EXPECT_EQ(builtin::sumOfElements(row({1, 2, 3})), 6);
    EXPECT_EQ(builtin::sumOfElements(integers({INT32_MAX, INT32_MAX})), 4294967294.0);
    EXPECT_EQ(builtin::sumOfElements(empty()), 0);
    EXPECT_EQ(builtin::sumOfSquares(row({1, 2, 3})), 14);
    EXPECT_EQ(builtin::sumOfSquares(row({50000, 50000})), 5e9);
    // Integers are squared in 32 bits.
    EXPECT_EQ(builtin::sumOfSquares(integers({50000})), -1794967296);
    EXPECT_EQ(builtin::mean(row({1, 2})), 1.5);
    EXPECT_TRUE(std::isnan(builtin::mean(empty())));
    EXPECT_EQ(builtin::variance(row({1, 3})), 1);
    EXPECT_EQ(builtin::variance(row({1, 2, 3, 4})), 1.25);
    EXPECT_EQ(builtin::standardDeviation(row({1, 3})), 1);
    EXPECT_EQ(builtin::product(row({2, 3, 4})), 24);
    EXPECT_EQ(builtin::product(empty()), 1);
}

TEST(Reductions, TheSumAddsInStorageOrder) {
    std::mt19937 engine(1);
    std::vector<double> items(1001);
    double inOrder = 0;
    for (double& x : items) inOrder += x = std::ldexp(static_cast<double>(engine()), static_cast<int>(engine() % 60));
    EXPECT_EQ(builtin::sumOfElements(row(items)), inOrder);
}

TEST(Reductions, SumOfSquaresOfAnyLength) {
    for (int n = 0; n < 70; ++n) {
        std::vector<double> items(n);
        double expected = 0;
        for (int i = 0; i < n; ++i) expected += (items[i] = i + 1) * items[i];
        EXPECT_EQ(builtin::sumOfSquares(row(items)), expected) << n;
    }
}

TEST(Reductions, Extremes) {
    EXPECT_EQ(builtin::minimum(row({3, 1, 2})), 1);
    EXPECT_EQ(builtin::maximum(row({3, 9, 4})), 9);
    EXPECT_EQ(builtin::maximum(integers({3, 9, 4})), 9);
    EXPECT_EQ(builtin::range(row({3, 9, 5})), 6);
    EXPECT_EQ(builtin::minimum(empty()), 0);
    EXPECT_EQ(builtin::maximum(empty()), 0);
    EXPECT_EQ(builtin::range(empty()), 0);
    EXPECT_EQ(builtin::minimumIndex(row({3, 1, 1})), 2);
    EXPECT_EQ(builtin::maximumIndex(row({2, 2})), 1);
    EXPECT_EQ(builtin::minimumIndex(empty()), 0);
    EXPECT_EQ(builtin::maximumIndex(empty()), 0);
    EXPECT_EQ(builtin::maximumIndex(integers({1, 3, 3})), 2);
    ComplexValue z;
    z.setSizeShapeMark(2, 1, 0);
    z[0] = {3, 4}, z[1] = {0, 6};
    EXPECT_EQ(builtin::maximumIndex(z), 2);
    EXPECT_EQ(builtin::minimumIndex(z), 1);
}

TEST(Reductions, ANanCountsAsExtremeOnlyInFront) {
    EXPECT_EQ(builtin::maximum(row({1, nan, 3})), 3);
    EXPECT_EQ(builtin::minimum(row({1, nan, 3})), 1);
    EXPECT_TRUE(std::isnan(builtin::maximum(row({nan, 1}))));
    EXPECT_EQ(builtin::maximumIndex(row({nan, 1})), 1);
    EXPECT_EQ(builtin::maximumIndex(row({1, nan, 3})), 3);
}

TEST(Reductions, TheFirstOfEqualExtremesKeepsItsSign) {
    EXPECT_TRUE(std::signbit(builtin::maximum(row({-0.0, 0.0}))));
    EXPECT_FALSE(std::signbit(builtin::maximum(row({0.0, -0.0}))));
    EXPECT_TRUE(std::signbit(builtin::minimum(row({-0.0, 0.0, 5}))));
}

TEST(Reductions, ExtremesOfAnyLengthAgreeWithALoop) {
    std::mt19937 engine(2);
    for (int n = 1; n < 100; ++n) {
        std::vector<double> items(n);
        for (double& x : items) x = static_cast<double>(engine() % 50) - 25;
        const DoubleValue v = row(items);
        EXPECT_EQ(builtin::maximumIndex(v), std::max_element(items.begin(), items.end()) - items.begin() + 1);
        EXPECT_EQ(builtin::minimumIndex(v), std::min_element(items.begin(), items.end()) - items.begin() + 1);
        EXPECT_EQ(builtin::maximum(v), *std::max_element(items.begin(), items.end()));
    }
}

TEST(Reductions, Norm) {
    EXPECT_EQ(builtin::norm(row({3, 4})), 5);
    EXPECT_EQ(builtin::norm(row({1, 2, 2})), 3);
    EXPECT_NEAR(builtin::norm(row({3e200, 4e200})), 5e200, 1e186);
    EXPECT_EQ(builtin::norm(empty()), 0);
}

TEST(Reductions, LogicAndPositions) {
    EXPECT_EQ(builtin::allNonZero(row({1, 2, nan})), 1);
    EXPECT_EQ(builtin::allNonZero(row({1, 0})), 0);
    EXPECT_EQ(builtin::allNonZero(empty()), 1);
    EXPECT_EQ(builtin::anyNonZero(row({0, 3})), 1);
    EXPECT_EQ(builtin::anyNonZero(empty()), 0);
    EXPECT_EQ(builtin::firstNonZero(row({0, 0})), 0);
    EXPECT_EQ(builtin::firstNonZero(row({0, 5, 6})), 2);
    EXPECT_EQ(builtin::lastNonZero(row({0, 5, 6})), 3);
}

TEST(Reductions, IntegralOfSamples) {
    EXPECT_EQ(builtin::integralOfSamples(empty()), 0);
    EXPECT_EQ(builtin::integralOfSamples(row({5})), 0);
    EXPECT_EQ(builtin::integralOfSamples(row({5, 7})), 6);
    EXPECT_EQ(builtin::integralOfSamples(row({0, 1, 4})), 8 / 3.0);
}

TEST(Reductions, LastElement) {
    EXPECT_EQ(builtin::lastElement(row({1, 2, 5})), 5);
    EXPECT_EQ(builtin::lastElement(integers({4})), 4);
    EXPECT_EQ(failure([] { (void)builtin::lastElement(empty()); }), "operator ]");
    EXPECT_EQ(failure([] { (void)builtin::lastElement(listOf({})); }),
              "?VORPEN BUG: jfunc::lastElement called for a list");
}

TEST(Reductions, Trace) {
    EXPECT_EQ(builtin::trace(matrix(2, {1, 3, 2, 4})), 5);
    EXPECT_EQ(builtin::trace(row({7})), 7);
    EXPECT_EQ(builtin::trace(empty()), 0);
    EXPECT_EQ(failure([] { (void)builtin::trace(row({1, 2, 3})); }), "in trace: non-square matrix");
    EXPECT_EQ(failure([] { (void)builtin::trace(listOf({})); }), "invalid argument type");
}

TEST(Queries, OfAWholeValue) {
    const DoubleValue m = matrix(3, {1, 3, 5, 2, 4, 6});
    EXPECT_EQ(builtin::size(m), 6);
    EXPECT_EQ(builtin::rowCount(m), 3);
    EXPECT_EQ(builtin::columnCount(m), 2);
    DoubleValue cube;
    builtin::zeros(row({2, 3, 4}), cube);
    EXPECT_EQ(builtin::columnCount(cube), 3);
    EXPECT_EQ(builtin::formOf(cube), 8);
    EXPECT_EQ(builtin::markOf(cube), 72);
    EXPECT_EQ(builtin::isEmpty(empty()), 1);
    EXPECT_EQ(builtin::isEmpty(m), 0);
    EXPECT_EQ(builtin::isScalar(row({5})), 1);
    EXPECT_EQ(builtin::isScalar(m), 0);
    EXPECT_EQ(builtin::isVector(column({1, 2})), 1);
    EXPECT_EQ(builtin::isVector(m), 0);
    EXPECT_EQ(builtin::isVector(empty()), 1);
    EXPECT_EQ(builtin::isBoolean(row({1, 0}, FORM_BOOL)), 1);
    EXPECT_EQ(builtin::isBoolean(row({1})), 0);
    EXPECT_EQ(builtin::isString(text("a")), 1);
    EXPECT_EQ(builtin::isString(row({65})), 0);
    const DoubleValue one(1.0);
    EXPECT_EQ(builtin::size(listOf({&one, &m})), 2);
    EXPECT_EQ(builtin::size(ComplexValue({1, 2})), 1);
}

TEST(Queries, IsDefinedIsNotImplemented) {
    RecordedOutput said;
    EXPECT_EQ(builtin::isDefined(row({1})), 0);
    EXPECT_EQ(said.lines, std::vector<std::string>{"function isdefined is not yet implemented: sorry"});
}

// ---- arrays from arrays

TEST(ArrayTransforms, FindAll) {
    EXPECT_EQ(called(builtin::findAll, row({0, 5, 0, 6})), "2 4");
    EXPECT_EQ(called(builtin::findAll, column({0, 5, nan})), "2; 3");
    EXPECT_EQ(called(builtin::findAll, matrix(2, {1, 0, 0, 1})), "1; 4");
    EXPECT_EQ(called(builtin::findAll, row({0, 0})), "[]");
    EXPECT_EQ(called(builtin::findAll, empty()), "[]");
}

TEST(ArrayTransforms, Shape) {
    EXPECT_EQ(called(builtin::shape, matrix(3, {1, 3, 5, 2, 4, 6})), "3 2");
    EXPECT_EQ(called(builtin::shape, empty()), "0 0");
    EXPECT_EQ(called(builtin::shape, matrix(1, {1, 2, 3}, planes3)), "1 1");
}

TEST(ArrayTransforms, RunningSumAndReverseKeepShapeAndForm) {
    EXPECT_EQ(called(builtin::runningSum, row({1, 2, 3})), "1 3 6");
    EXPECT_EQ(called(builtin::runningSum, matrix(2, {1, 3, 2, 4})), "1 6; 4 10");
    EXPECT_EQ(called(builtin::runningSum, empty()), "[]");
    EXPECT_EQ(called(builtin::reverse, row({1, 2, 3})), "3 2 1");
    EXPECT_EQ(called(builtin::reverse, column({1, 2})), "2; 1");
    EXPECT_EQ(called(builtin::reverse, text("abc")), "'cba'");
    EXPECT_EQ(called(builtin::reverse, empty()), "[]");
}

TEST(ArrayTransforms, ColumnAndRowSums) {
    const DoubleValue m = matrix(2, {1, 3, 2, 4});
    EXPECT_EQ(called(builtin::columnSums, m), "4 6");
    EXPECT_EQ(called(builtin::rowSums, m), "3; 7");
    EXPECT_EQ(called(builtin::columnSums, empty()), "[]");
    EXPECT_EQ(called(builtin::rowSums, empty()), "[]");
    EXPECT_EQ(called(builtin::rowSums, text("a")), "97");
}

TEST(ArrayTransforms, Differences) {
    EXPECT_EQ(called(builtin::differences, row({1, 4, 9, 16})), "3 5 7");
    EXPECT_EQ(called(builtin::differences, column({1, 4, 9})), "3; 5");
    EXPECT_EQ(called(builtin::differences, row({1})), "[]");
    EXPECT_EQ(called(builtin::differences, empty()), "[]");
    EXPECT_EQ(failed(builtin::differences, matrix(2, {1, 2, 3, 4})), "in diff: argument must be a vector");
    EXPECT_EQ(called(builtin::secondDifferences, row({1, 4, 9, 16})), "2 2");
    EXPECT_EQ(called(builtin::secondDifferences, row({1, 4})), "[]");
    EXPECT_EQ(failed(builtin::secondDifferences, matrix(2, {1, 2, 3, 4})), "in diff2: argument must be a vector");
}

TEST(ArrayTransforms, SampledDerivative) {
    EXPECT_EQ(called(builtin::sampledDerivative, row({5})), "0");
    EXPECT_EQ(called(builtin::sampledDerivative, row({1, 4})), "3 3");
    EXPECT_EQ(called(builtin::sampledDerivative, row({1, 4, 9})), "2 4 6");
    EXPECT_EQ(called(builtin::sampledDerivative, column({1, 4, 9, 16})), "2; 4; 6; 8");
    EXPECT_EQ(called(builtin::sampledDerivative, row({0, 1, 16, 81, 256, 625, 1296})),
              "-6 8 32 108 256 520 822");
    EXPECT_EQ(called(builtin::sampledDerivative, empty()), "[]");
    EXPECT_EQ(failed(builtin::sampledDerivative, matrix(2, {1, 2, 3, 4})), "in vdiffer: argument must be a vector");
}

TEST(ArrayTransforms, SumByItsForms) {
    DoubleValue v = row({1, 2, 3}), m = matrix(2, {1, 3, 2, 4}), one(1.0), two(2.0), three(3.0), none;
    EXPECT_EQ(called<DoubleValue>(builtin::sum, {&v}), "6");
    EXPECT_EQ(called<DoubleValue>(builtin::sum, {&m}), "4 6");
    EXPECT_EQ(called<DoubleValue>(builtin::sum, {&none}), "0");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::sum, {&v, &v}),
              "in sum: second argument must be a scalar here (to sum two vectors use +)");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::sum, {&v, &one}), "sum along rows not yet implemented");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::sum, {&one, &one}), "sum along rows not yet implemented");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::sum, {&v, &two}), "for column sums please use colsum");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::sum, {&v, &three}), "dimension > 2 not yet implemented");
    EXPECT_EQ(failedGeneral<DoubleValue>(builtin::sum, {&v, &one, &one}), "1st argument must be a function");
}

TEST(Graphs, Components) {
    const DoubleValue m = matrix(3, {0, 1, 0, 1, 0, 0, 0, 0, 0});
    EXPECT_EQ(builtin::componentCount(m), 2);
    EXPECT_EQ(called(builtin::components, m), "1 1 2");
    // One direction is enough to connect two vertices.
    const DoubleValue chain = matrix(4, {0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(builtin::componentCount(chain), 2);
    EXPECT_EQ(called(builtin::components, chain), "1 1 1 2");
    const DoubleValue crossed = matrix(4, {0, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0});
    EXPECT_EQ(called(builtin::components, crossed), "1 2 2 1");
    EXPECT_EQ(builtin::componentCount(empty()), 0);
    EXPECT_EQ(called(builtin::components, empty()), "[]");
    for (const auto& wrong : {row({1, 0}), row({2}), row({nan}), matrix(2, {0, 0.5, 0, 0})}) {
        EXPECT_EQ(failure([&] { (void)builtin::componentCount(wrong); }), "invalid adjacency matrix");
        EXPECT_EQ(failed(builtin::components, wrong), "invalid adjacency matrix");
    }
}

}  // namespace
}  // namespace vorpen
