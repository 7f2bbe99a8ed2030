// SPDX-License-Identifier: GPL-3.0-or-later

// Functions of one number, model functions, random numbers, clocks: called as
// the registry has them.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "builtins/clock_bodies.h"
#include "builtins/exact_bodies.h"
#include "builtins/model_bodies.h"
#include "builtins/random_bodies.h"
#include "builtins/registry.h"
#include "builtins_support.h"

namespace vorpen {
namespace {

using namespace testing;

constexpr double inf = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

double real(std::string_view name, double x) { return std::get<RealBody>(findBuiltin(name)->body)(x); }
int integer(std::string_view name, int x) { return std::get<IntBody>(findBuiltin(name)->body)(x); }

std::complex<double> complex(std::string_view name, std::complex<double> z) {
    const auto variant = complexVariantOf(std::get<RealBody>(findBuiltin(name)->body)).value();
    if (const auto* body = std::get_if<ComplexBody>(&variant.body)) return (*body)(z);
    return std::get<ComplexToRealBody>(variant.body)(z);
}

TEST(ScalarFunctions, OfTheStandardLibraryGiveItsBits) {
    const std::pair<const char*, double (*)(double)> functions[] = {
        {"sqrt", std::sqrt},   {"exp", std::exp},     {"sin", std::sin},     {"cos", std::cos},
        {"tan", std::tan},     {"asin", std::asin},   {"acos", std::acos},   {"atan", std::atan},
        {"log", std::log},     {"ln", std::log},      {"log10", std::log10}, {"sinh", std::sinh},
        {"cosh", std::cosh},   {"tanh", std::tanh},   {"asinh", std::asinh}, {"acosh", std::acosh},
        {"atanh", std::atanh}, {"abs", std::fabs},    {"erf", std::erf},     {"erfc", std::erfc},
        {"gamma", std::tgamma}, {"G", std::tgamma},   {"lgamma", std::lgamma}, {"floor", std::floor},
        {"ceil", std::ceil},   {"ceiling", std::ceil}, {"round", std::round},
    };
    for (const auto& [name, function] : functions)
        for (const double x : {0.3, -0.3, 0.0, 1.0, 2.5, -2.5, 700.0, 1e-300, 1e300, inf, -inf, nan}) {
            const double expected = function(x), got = real(name, x);
            EXPECT_TRUE(got == expected || (std::isnan(got) && std::isnan(expected))) << name << " of " << x;
        }
}

TEST(ScalarFunctions, OfTheLanguage) {
    EXPECT_EQ(real("log2", 1), 2.220446049250313e-16);
    EXPECT_GT(real("log2", 8), 2.9999999);
    EXPECT_EQ(real("sign", 3), 1);
    EXPECT_EQ(real("sign", 0), 0);
    EXPECT_EQ(real("sign", -2), -1);
    EXPECT_EQ(real("sign", nan), -1);
    EXPECT_EQ(real("fstep", 0), 0.5);
    EXPECT_EQ(real("fstep", 2), 1);
    EXPECT_EQ(real("fstep", -2), 0);
    EXPECT_EQ(real("tophat", 0), 0.5);
    EXPECT_EQ(real("tophat", 1), 0.5);
    EXPECT_EQ(real("tophat", 0.5), 1);
    EXPECT_EQ(real("tophat", 1.5), 0);
    EXPECT_EQ(real("sinc", 0), 1);
    EXPECT_EQ(real("sinc", 2), std::sin(2.0) / 2);
    EXPECT_EQ(real("conj", -3), -3);
    EXPECT_EQ(real("real", -3), -3);
    EXPECT_EQ(real("imag", 5), 0);
    EXPECT_EQ(real("arg", -1), std::numbers::pi);
    EXPECT_EQ(real("arg", 2), 0);
    EXPECT_EQ(real("isnan", nan), 1);
    EXPECT_EQ(real("isnan", inf), 0);
    // M. Abramowitz and I. A. Stegun, Handbook of Mathematical Functions
    // (1964), tables 9.1, 10.11, 23.3 and 26.1.
    EXPECT_NEAR(real("besselj0", 1), 0.765197686557967, 1e-14);
    EXPECT_NEAR(real("besselj1", 1), 0.440050585744934, 1e-14);
    EXPECT_NEAR(real("airy", 0), 0.355028053887817, 1e-14);
    EXPECT_NEAR(real("zeta", 2), 1.644934066848226, 1e-14);
    EXPECT_NEAR(real("erfinv", 0.975), 1.959963984540054, 1e-13);
}

TEST(ScalarFunctions, OnIntegers) {
    EXPECT_EQ(integer("bitweight", 7), 3);
    EXPECT_EQ(integer("bitweight", 0), 0);
    EXPECT_EQ(integer("bitweight", -1), 32);
    EXPECT_EQ(integer("bitweight", INT32_MIN), 1);
    EXPECT_EQ(integer("lower", 'Q'), 'q');
    EXPECT_EQ(integer("lower", 'q'), 'q');
    EXPECT_EQ(integer("lower", '['), '[');
    EXPECT_EQ(integer("lower", -60), -60);
    EXPECT_EQ(integer("lower", INT32_MAX), INT32_MAX);
}

TEST(ScalarFunctions, OnComplexNumbers) {
    // Read at run time, or the compiler would compute what is expected.
    volatile double re = 0.5, im = -1.25;
    const std::complex<double> z(re, im);
    EXPECT_EQ(complex("sqrt", z), std::sqrt(z));
    EXPECT_EQ(complex("exp", z), std::exp(z));
    EXPECT_EQ(complex("log", z), std::log(z));
    EXPECT_EQ(complex("ln", z), std::log(z));
    EXPECT_EQ(complex("sin", z), std::sin(z));
    EXPECT_EQ(complex("cos", z), std::cos(z));
    EXPECT_EQ(complex("tan", z), std::tan(z));
    EXPECT_EQ(complex("sinh", z), std::sinh(z));
    EXPECT_EQ(complex("cosh", z), std::cosh(z));
    EXPECT_EQ(complex("tanh", z), std::tanh(z));
    EXPECT_EQ(complex("real", z), 0.5);
    EXPECT_EQ(complex("conj", z), 0.5);
    EXPECT_EQ(complex("imag", z), -1.25);
    EXPECT_EQ(complex("abs", {3, 4}), 5.0);
    EXPECT_EQ(complex("arg", {0, 2}), std::numbers::pi / 2);
}

// ---- model functions

TEST(ModelFunctions, Polynomial) {
    EXPECT_EQ(called(builtin::polynomial, row({1, 2, 3}), row({2})), "17");
    EXPECT_EQ(called(builtin::polynomial, row({1, 0, 1}), matrix(2, {0, 2, 1, 3})), "1 2; 5 10");
    EXPECT_EQ(failed(builtin::polynomial, empty(), row({2})), "polynomial has empty coefficient array");
    EXPECT_EQ(called(builtin::polynomial, row({1}), empty()), "[]");
}

TEST(ModelFunctions, Distributions) {
    EXPECT_EQ(called(builtin::poisson, row({2}), row({0, 1, 2})), "0.135335283 0.270670566 0.270670566");
    EXPECT_EQ(called(builtin::poisson, empty(), row({0})), "0.367879441");
    EXPECT_EQ(called(builtin::binomial, row({10, 0.5}), row({0, 5, 11})), "0.0009765625 0.24609375 0");
    EXPECT_EQ(failed(builtin::binomial, row({10}), row({1})), "[n,p] should be two scalar numbers");
    EXPECT_EQ(failed(builtin::binomial, row({10, 0.5, 1}), row({1})), "[n,p] should be two scalar numbers");
    EXPECT_EQ(failed(builtin::binomial, row({10, 0.5}), row({-1})), "negative k in binomial distribution");
    EXPECT_EQ(called(builtin::gaussian, row({2}), row({0})), "2");
    EXPECT_EQ(called(builtin::gaussian, row({3, 2, 1, 0.5}), row({1, 3})), "3.5 2.31959198");
    EXPECT_EQ(called(builtin::gaussian, row({3, 2, 1, 0.5, 99}), row({1})), "3.5");
    EXPECT_EQ(called(builtin::gaussian, empty(), row({0})), "1");
    EXPECT_EQ(called(builtin::lorentzian, row({2, 2, 0, 1}), row({0, 1})), "3 2");
}

TEST(ModelFunctions, BinomialCoefficients) {
    EXPECT_EQ(called(builtin::binomialCoefficient, row({4}), row({0, 1, 2, 3, 4})), "1 4 6 4 1");
    EXPECT_EQ(called(builtin::binomialCoefficient, row({50}), row({25})), "1.26410606e14");
    EXPECT_EQ(called(builtin::binomialCoefficient, row({5}), row({7})), "1");
    EXPECT_EQ(called(builtin::binomialCoefficient, row({1}), row({1})), "1");
    EXPECT_EQ(failed(builtin::binomialCoefficient, row({1, 2}), row({1})), "in bnc: need n to be scalar");
}

TEST(ModelFunctions, BesselOfOrder) {
    EXPECT_EQ(called(builtin::besselOfOrder, row({2}), row({1, 2.5})), "0.114903485 0.446059058");
    EXPECT_EQ(failed(builtin::besselOfOrder, row({1, 2}), row({1})), "operator ]");
    EXPECT_EQ(failed(builtin::besselOfOrder, empty(), row({1})), "operator ]");
}

TEST(ModelFunctions, Interpolation) {
    const DoubleValue table = matrix(3, {1, 2, 3, 10, 20, 40});
    EXPECT_EQ(called(builtin::linearInterpolation, table, row({1.5, 2.5, 0, 4})), "15 30 0 60");
    EXPECT_EQ(called(builtin::cubicInterpolation, matrix(3, {1, 2, 3, 1, 4, 9}), row({1.5, 2.5})), "2.375 6.375");
    EXPECT_EQ(called(builtin::linearInterpolation, table, row({nan})), "nan");
    EXPECT_EQ(failed(builtin::cubicInterpolation, row({1, 2}), row({1})),
              "in interp: too few data points for interpolation");
    EXPECT_EQ(failed(builtin::cubicInterpolation, column({1, 2}), row({1})),
              "in interp: too few data points for interpolation");
    EXPECT_EQ(failed(builtin::cubicInterpolation, empty(), row({1})),
              "in interp: too few data points for interpolation");
    EXPECT_EQ(called(builtin::cubicInterpolation, empty(), empty()), "[]");
}

TEST(ModelFunctions, PositionInASortedVector) {
    EXPECT_EQ(called(builtin::positionInSorted, row({1, 2, 3}), row({2, 9, 0})), "2 4 1");
    EXPECT_EQ(called(builtin::positionInSorted, row({10, 20, 30}), row({5, 10, 15})), "1 1 2");
    EXPECT_EQ(called(builtin::positionInSorted, empty(), row({5})), "1");
}

// ---- random numbers

std::string shapeOf(VectorToDoubleBody body, const DoubleValue& v) {
    DoubleValue out;
    body(v, out);
    return std::to_string(out.nrow()) + " by " + std::to_string(out.ncol());
}

TEST(RandomArrays, TakeTheirShapeFromTheArgument) {
    EXPECT_EQ(called(builtin::uniformArray, empty()), "[]");
    EXPECT_EQ(called(builtin::uniformArray, row({0})), "[]");
    EXPECT_EQ(shapeOf(builtin::uniformArray, row({5})), "1 by 5");
    EXPECT_EQ(shapeOf(builtin::uniformArray, row({2, 3})), "2 by 3");
    for (const VectorToDoubleBody body : {builtin::exponentialArray, builtin::normalArray}) {
        EXPECT_EQ(shapeOf(body, empty()), "0 by 0");
        EXPECT_EQ(shapeOf(body, row({2})), "1 by 1");
        EXPECT_EQ(shapeOf(body, row({2, 5})), "1 by 5");
        EXPECT_EQ(shapeOf(body, row({2, 2, 3})), "2 by 3");
    }
    IntValue out;
    builtin::integerArray(row({6, 2, 4}), out);
    EXPECT_EQ(out.nrow(), 2);
    EXPECT_EQ(out.size(), 8);
}

TEST(RandomArrays, Fail) {
    EXPECT_EQ(failed(builtin::uniformArray, row({-1})), "negative n");
    EXPECT_EQ(failed(builtin::uniformArray, row({2, -1})), "negative n");
    EXPECT_EQ(failed(builtin::uniformArray, row({1, 2, 3})), "in math function: too many arguments");
    EXPECT_EQ(failed(builtin::normalArray, row({1, 2, 3, 4})), "in math function: too many arguments");
    EXPECT_EQ(failed(builtin::exponentialArray, row({1, -2})), "negative n");
    EXPECT_EQ(failed(builtin::integerArray, row({0})), "in irand: n <= 0");
    EXPECT_EQ(failed(builtin::integerArray, row({0.5})), "in irand: n <= 0");
    EXPECT_EQ(failed(builtin::integerArray, row({nan})), "in irand: n <= 0");
    EXPECT_EQ(failed(builtin::uniformArray, row({1e300})), "out of memory");
    EXPECT_EQ(failed(builtin::uniformArray, row({1e6, 1e6})), "out of memory");
    EXPECT_EQ(called(builtin::uniformArray, row({nan})), "[]");
}

TEST(RandomArrays, HaveTheirDistribution) {
    constexpr int n = 20000;
    const auto statistics = [](VectorToDoubleBody body, const DoubleValue& v) {
        DoubleValue out;
        body(v, out);
        double sum = 0, squares = 0;
        for (const double x : out.items()) sum += x, squares += x * x;
        return std::pair(sum / n, squares / n - sum / n * sum / n);
    };
    builtin::setSeed(753);
    const auto [uniformMean, uniformVariance] = statistics(builtin::uniformArray, row({n}));
    EXPECT_NEAR(uniformMean, 0.5, 0.01);
    EXPECT_NEAR(uniformVariance, 1 / 12.0, 0.005);
    const auto [normalMean, normalVariance] = statistics(builtin::normalArray, row({3, n}));
    EXPECT_NEAR(normalMean, 0, 0.1);
    EXPECT_NEAR(normalVariance, 9, 0.4);
    IntValue dice;
    builtin::integerArray(row({6, n}), dice);
    std::vector<int> counts(6);
    for (const int x : dice.items()) ++counts.at(x);
    for (const int count : counts) EXPECT_NEAR(count, n / 6, 200);
}

TEST(RandomArrays, ASeedRepeatsASequence) {
    DoubleValue first, second;
    EXPECT_EQ(builtin::setSeed(5), 5);
    builtin::uniformArray(row({3}), first);
    builtin::setSeed(5);
    second = row({builtin::uniformNumber(), builtin::uniformNumber(), builtin::uniformNumber()});
    EXPECT_EQ(described(first), described(second));
}

// ---- clocks and constants without argument

TEST(Clocks, MeasureFromTic) {
    TestEngine engine;
    EXPECT_EQ(builtin::startClock(), 0);
    EXPECT_EQ(builtin::waitMilliseconds(250), 250);
    EXPECT_NEAR(builtin::elapsedSeconds(), 0.25, 0.1);
    EXPECT_NEAR(builtin::elapsedMilliseconds(), 250, 100);
    // A pause does not move what toc counts from.
    EXPECT_GE(builtin::elapsedSeconds(), 0.25);
    EXPECT_EQ(builtin::waitMilliseconds(-5), -5);
    EXPECT_EQ(builtin::waitMilliseconds(0), 0);
}

TEST(Clocks, NeedAHost) { EXPECT_EQ(failure([] { builtin::startClock(); }).substr(0, 4), "?bug"); }

TEST(NoArgument, Numbers) {
    EXPECT_EQ(builtin::on(), 1);
    EXPECT_EQ(builtin::off(), 0);
    EXPECT_EQ(builtin::pi(), 3.141592653589793);
    EXPECT_EQ(failure([] { builtin::endOutsideIndex(); }), "??endIndex called");
}

// ---- exact forms

TEST(ExactForms, RationalApproximation) {
    EXPECT_EQ(called(builtin::rationalApproximation, row({0.75})), "3; 4");
    EXPECT_EQ(called(builtin::rationalApproximation, row({0.5, 0.25, 0.125})), "1 1 1; 2 4 8");
    EXPECT_EQ(called(builtin::rationalApproximation, row({3.25, 1})), "3 4");
    EXPECT_EQ(called(builtin::rationalApproximation, row({3.25, 2})), "13 2; 4 1");
    EXPECT_EQ(called(builtin::rationalApproximation, empty()), "[]");
    EXPECT_EQ(called(builtin::rationalApproximation, row({0})), "0; 1");
}

TEST(ExactForms, ClosedForm) {
    EXPECT_EQ(called(builtin::closedForm, row({5})), "' i'");
    EXPECT_EQ(called(builtin::closedForm, row({1e6})), "' i'");
    EXPECT_EQ(called(builtin::closedForm, row({0.75})), "'(3/4)'");
    EXPECT_EQ(called(builtin::closedForm, row({-0.75})), "'-(3/4)'");
    EXPECT_EQ(called(builtin::closedForm, row({std::sqrt(2.0)})), "'sqrt 2'");
    EXPECT_EQ(called(builtin::closedForm, row({std::numbers::pi})), "'(pi)'");
    EXPECT_EQ(called(builtin::closedForm, row({std::exp(1.5)})), "'exp[(3/2)]'");
    EXPECT_EQ(called(builtin::closedForm, row({0})), "' 0'");
    EXPECT_EQ(called(builtin::closedForm, row({0.334, 0.01})), "'(1/3)'");
    EXPECT_EQ(called(builtin::closedForm, empty()), "[]");
}

}  // namespace
}  // namespace vorpen
