// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/exact_form.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/number_text.h"

namespace vorpen {
namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr std::int32_t lowestInt = std::numeric_limits<std::int32_t>::min();
constexpr double pi = std::numbers::pi;
constexpr double tol = defaultFormTolerance;

std::string form(double x) { return closedFormText(x, tol); }

// ---- the tables -----------------------------------------------------------

TEST(FractionTable, StartsAndEndsAsTheSearchTriesThem) {
    const std::vector<std::pair<int, int>> start = {
        {0, 1}, {1, 1}, {2, 1}, {1, 2}, {3, 1}, {3, 2}, {2, 3}, {1, 3}, {4, 1}, {4, 3}, {3, 4}, {1, 4},
        {5, 1}, {5, 2}, {5, 3}, {5, 4}, {4, 5}, {3, 5}, {2, 5}, {1, 5}, {6, 1}, {6, 5}, {5, 6}, {1, 6}};
    for (std::size_t k = 0; k < start.size(); ++k) {
        EXPECT_EQ(fractionTable[k].numerator, start[k].first) << k;
        EXPECT_EQ(fractionTable[k].denominator, start[k].second) << k;
    }
    EXPECT_EQ(fractionTable[114].numerator, 2);
    EXPECT_EQ(fractionTable[114].denominator, 13);
    EXPECT_EQ(fractionTable[115].numerator, 1);
    EXPECT_EQ(fractionTable[115].denominator, 13);
}

TEST(FractionTable, HoldsEachFractionOnceInLowestTerms) {
    std::vector<double> values;
    for (const auto& [a, b] : fractionTable) {
        EXPECT_EQ(std::gcd(a, b), 1);
        values.push_back(static_cast<double>(a) / b);
    }
    std::sort(values.begin(), values.end());
    EXPECT_EQ(std::adjacent_find(values.begin(), values.end()), values.end());
}

TEST(FactorTable, IsOnePiAndItsInverse) {
    EXPECT_EQ(factorTable[0], 1.0);
    EXPECT_EQ(factorTable[1], pi);
    EXPECT_EQ(factorTable[2], 1 / pi);
}

// ---- continued fractions --------------------------------------------------

std::vector<std::int32_t> quotients(double x) {
    const PartialQuotients q = partialQuotients(x);
    return {q.values.begin(), q.values.begin() + q.count};
}

TEST(ContinuedFraction, ExpandsUntilTheRemainderVanishes) {
    EXPECT_EQ(quotients(3.25), (std::vector<std::int32_t>{3, 4}));
    EXPECT_EQ(quotients(5), (std::vector<std::int32_t>{5}));
    EXPECT_EQ(quotients(0), (std::vector<std::int32_t>{0}));
    EXPECT_EQ(quotients(-0.75), (std::vector<std::int32_t>{-1, 4}));
    EXPECT_EQ(quotients(415.0 / 93), (std::vector<std::int32_t>{4, 2, 6, 7}));
}

TEST(ContinuedFraction, IsCutAtTwentyQuotients) {
    const auto golden = quotients((1 + std::sqrt(5.0)) / 2);
    EXPECT_EQ(golden, std::vector<std::int32_t>(20, 1));
}

TEST(ContinuedFraction, BeginsWithTheKnownQuotientsOfPi) {
    const auto q = quotients(pi);
    ASSERT_GE(q.size(), 5u);
    EXPECT_EQ(std::vector<std::int32_t>(q.begin(), q.begin() + 5),
              (std::vector<std::int32_t>{3, 7, 15, 1, 292}));
}

TEST(ContinuedFraction, QuotientsThatDoNotFitAreTheLowestInteger) {
    EXPECT_EQ(quotients(1e10)[0], lowestInt);
    EXPECT_EQ(quotients(inf), (std::vector<std::int32_t>{lowestInt, 0}));
    EXPECT_EQ(quotients(nan), std::vector<std::int32_t>(20, lowestInt));
}

TEST(ContinuedFraction, AnswersTheIndexOfTheBestConvergent) {
    std::array<std::int32_t, 20> p{};
    std::array<std::int32_t, 20> q{};
    EXPECT_EQ(continuedFraction(0.75, 20, p, q), 3);
    EXPECT_EQ(p[0], 0);
    EXPECT_EQ(q[0], 1);
    EXPECT_EQ(p[1], 1);
    EXPECT_EQ(q[1], 1);
    EXPECT_EQ(p[2], 3);
    EXPECT_EQ(q[2], 4);
}

TEST(ContinuedFraction, StoresNoMoreConvergentsThanAskedFor) {
    std::array<std::int32_t, 2> p = {-7, -7};
    std::array<std::int32_t, 2> q = {-7, -7};
    EXPECT_EQ(continuedFraction(0.75, 1, p, q), 3);
    EXPECT_EQ(p[0], 0);
    EXPECT_EQ(p[1], -7);
    EXPECT_EQ(q[1], -7);
}

TEST(ContinuedFraction, TheBestConvergentAloneIsStoredForNone) {
    const Fraction f = bestConvergent(0.75);
    EXPECT_EQ(f.numerator, 3);
    EXPECT_EQ(f.denominator, 4);
    EXPECT_EQ(bestConvergent(0).numerator, 0);
    EXPECT_EQ(bestConvergent(0).denominator, 1);
    EXPECT_EQ(bestConvergent(-0.125).numerator, -1);
    EXPECT_EQ(bestConvergent(-0.125).denominator, 8);
}

TEST(ContinuedFraction, AnswersSomethingForEveryNumber) {
    EXPECT_EQ(bestConvergent(nan).numerator, lowestInt);
    EXPECT_EQ(bestConvergent(inf).numerator, lowestInt);
    // The lowest integer stands for the first quotient, and 1/0 is nearer.
    EXPECT_EQ(bestConvergent(1e300).numerator, 1);
    EXPECT_EQ(bestConvergent(1e300).denominator, 0);
    EXPECT_EQ(bestConvergent(5e-324).numerator, 0);
}

// ---- texts ----------------------------------------------------------------

TEST(FractionText, LeavesOutADenominatorOfOne) {
    EXPECT_EQ(fractionText(3, 2), "(3/2)");
    EXPECT_EQ(fractionText(-3, 2), "(-3/2)");
    EXPECT_EQ(fractionText(3, 1), "3");
    EXPECT_EQ(fractionText(0, 5), "0");
}

TEST(ClosedForm, AnIntegerHasNone) {
    EXPECT_EQ(form(5), " i");
    EXPECT_EQ(form(-5), " i");
    EXPECT_EQ(form(1e6), " i");
    EXPECT_EQ(form(1e300), " i");
    EXPECT_EQ(form(5 + 4e-12), " i");
}

TEST(ClosedForm, OutsideTheRangeNothingIsSearched) {
    EXPECT_EQ(form(0), " 0");
    EXPECT_EQ(form(0.00099), " 0.00099");
    EXPECT_EQ(form(1000.5), " 1000.5");
    EXPECT_EQ(form(inf), " inf");
    EXPECT_EQ(form(-inf), " -inf");
    EXPECT_EQ(form(nan), " nan");
    EXPECT_EQ(form(1e-3), "(1/1000)");
}

TEST(ClosedForm, FractionsAndSquareRoots) {
    EXPECT_EQ(form(0.75), "(3/4)");
    EXPECT_EQ(form(-0.75), "-(3/4)");
    EXPECT_EQ(form(std::sqrt(2.0)), "sqrt 2");
    EXPECT_EQ(form(-std::sqrt(2.0)), "-sqrt 2");
    EXPECT_EQ(form(std::sqrt(2.0 / 3)), "sqrt(2/3)");
    EXPECT_EQ(form(1 + std::sqrt(2.0)), "1+sqrt 2");
    EXPECT_EQ(form(2 - std::sqrt(3.0)), "2-sqrt 3");
    EXPECT_EQ(form(0.5 + std::sqrt(5.0) / 2), "(1/2)+sqrt(5/4)");
    EXPECT_EQ(form(std::sqrt(3.0) - 2), "-2+sqrt 3");
}

TEST(ClosedForm, ProductsOfPowers) {
    EXPECT_EQ(form(pi), "(pi)");
    EXPECT_EQ(form(1 / pi), "(/pi)");
    EXPECT_EQ(form(9 * pi), "(9pi)");
    EXPECT_EQ(form(pi / 180), "((1/180)pi)");
    EXPECT_EQ(form(pi / 2), "((1/2)pi)");
    EXPECT_EQ(form(-pi * pi), "-pi^2");
    EXPECT_EQ(form(std::sqrt(2 * pi)), "(2pi)^(1/2)");
    EXPECT_EQ(form(273.15), "(5463/20)");
    EXPECT_EQ(form(55.0 / 6), "(55/6)");
    EXPECT_EQ(form(std::cbrt(5.0)), "5^(1/3) ");
}

TEST(ClosedForm, ExponentialsAndLogarithms) {
    EXPECT_EQ(form(std::exp(1.5)), "exp[(3/2)]");
    EXPECT_EQ(form(std::numbers::e), "exp[1]");
    EXPECT_EQ(form(std::numbers::ln2), "ln[2]");
}

TEST(ClosedForm, NextToAnInteger) {
    EXPECT_EQ(form(2.9999999999999996), "3");
    // Shown with nine digits this is 32, and a form beside it would say no more.
    EXPECT_EQ(form(32 - 3e-10), " 32");
}

TEST(ClosedForm, ACoarseToleranceTakesTheFirstFractionInReach) {
    EXPECT_EQ(closedFormText(1.0 / 3, 0.01), "(1/3)");
    EXPECT_EQ(closedFormText(0.334, 0.01), "(1/3)");
    // Zero is the first form, and a lone zero is not written.
    EXPECT_EQ(closedFormText(0.5, 1e300), "");
}

TEST(ClosedForm, WithoutAFormTheNumberHasAsManyDigitsAsTheTolerance) {
    EXPECT_EQ(form(0.57721566490153286), " 0.5772156649");
    EXPECT_EQ(form(std::sin(1.0)), " 0.84147098481");
    EXPECT_EQ(closedFormText(0.57721566490153286, 1e-14), " 0.57721566490153");
    EXPECT_EQ(closedFormText(1234.5678, 1e-2), " 1.2e3");
}

TEST(ClosedForm, AToleranceThatIsNotPositiveFindsNothing) {
    EXPECT_EQ(closedFormText(0.75, 0), " 0.75");
    EXPECT_EQ(closedFormText(0.75, -1), " 0.75");
    EXPECT_EQ(closedFormText(0.75, nan), " 0.75");
    EXPECT_EQ(closedFormText(1234.5, inf), " 1234.5");
    EXPECT_EQ(closedFormText(1234.5, 1e10), " 1234.5");
}

// ---- the search against its plain form ------------------------------------
//
// The product search as it is defined, candidate after candidate and without a
// filter. It takes thirty times as long.

struct PlainCandidate {
    int m, c, p, q, e, d;
    std::int64_t cost;
};

double value(int row) {
    const auto [a, b] = fractionTable[static_cast<std::size_t>(row)];
    return static_cast<double>(a) / b;
}

double inverse(int row) {
    const auto [a, b] = fractionTable[static_cast<std::size_t>(row)];
    return static_cast<double>(b) / a;
}

std::int64_t truncatedTenfold(double x) {
    return std::isfinite(x) ? static_cast<std::int64_t>(x * 10) : lowestInt;
}

bool isPower(int p, int q, int exponent) {
    for (int k = 1; k < 116; ++k) {
        const auto [a, b] = fractionTable[static_cast<std::size_t>(k)];
        if (p == std::pow(a, exponent) && q == std::pow(b, exponent)) return true;
    }
    return false;
}

std::optional<PlainCandidate> plainJudge(double w, int m, int c, int d, int e, double tolerance) {
    std::array<std::int32_t, 20> P;
    std::array<std::int32_t, 20> Q;
    const double y = std::pow(w, inverse(e));
    const int n = continuedFraction(y, 20, P, Q);
    std::int64_t p = P[static_cast<std::size_t>(n - 1)];
    std::int64_t q = std::abs(std::int64_t{Q[static_cast<std::size_t>(n - 1)]});
    if (p > 1000 && q > 1000) {
        int i = 0;
        while (i < n && !(std::fabs(Q[static_cast<std::size_t>(i)] * y - P[static_cast<std::size_t>(i)]) <
                          P[static_cast<std::size_t>(i)] * tolerance))
            ++i;
        if (i == n) return std::nullopt;
        p = P[static_cast<std::size_t>(i)];
        q = Q[static_cast<std::size_t>(i)];
    }
    if (p <= 0 || q <= 0 || (m == 0 && c == 0 && e == 1 && q == 1)) return std::nullopt;
    const double deviation =
        std::fabs(static_cast<double>(q) * y - static_cast<double>(p)) / static_cast<double>(p);
    const double score = std::log10(p) + std::log10(q) + std::log10(e) + std::log10(d);
    if (!(deviation < tolerance && score < 7.0 && score < -std::log10(deviation) - 2.0)) return std::nullopt;
    const int b = fractionTable[static_cast<std::size_t>(e)].denominator;
    if (e > 1 && isPower(static_cast<int>(p), static_cast<int>(q), b)) return std::nullopt;
    return PlainCandidate{m,
                          c,
                          static_cast<int>(p),
                          static_cast<int>(q),
                          e,
                          d,
                          truncatedTenfold(std::log10(deviation)) + 2 * truncatedTenfold(score)};
}

std::optional<PlainCandidate> plainSearch(double ax, double tolerance) {
    std::vector<PlainCandidate> found;
    for (int m = 0; m < 3; ++m) {
        const double u = m == 0 ? ax : m == 1 ? std::log(ax) : std::exp(ax);
        for (int c = 0; c < 3; ++c)
            for (int d = 1; d < (c == 0 ? 2 : 116); ++d) {
                const double w = u / std::pow(factorTable[static_cast<std::size_t>(c)], value(d));
                for (int e = 1; e < 116 && found.size() < 3; ++e)
                    if (const auto candidate = plainJudge(w, m, c, d, e, tolerance))
                        found.push_back(*candidate);
            }
    }
    if (found.empty()) return std::nullopt;
    return *std::min_element(found.begin(), found.end(),
                             [](const auto& a, const auto& b) { return a.cost < b.cost; });
}

std::string rowText(int row) {
    const auto [a, b] = fractionTable[static_cast<std::size_t>(row)];
    return fractionText(a, b);
}

std::string plainText(double x, double tolerance) {
    const auto found = plainSearch(std::fabs(x), tolerance);
    if (!found) return " ";
    const std::string number = found->c != 0 && found->p == found->q ? "" : fractionText(found->p, found->q);
    std::string text;
    text.append(x < 0 ? "-" : "").append(std::array{"", "exp[", "ln["}[static_cast<std::size_t>(found->m)]);
    if (found->e == found->d) {
        text.append(found->c ? "(" : "").append(number);
        text.append(std::array{"", "pi)", "/pi)"}[static_cast<std::size_t>(found->c)]);
    } else {
        text.append(number);
        if (found->e > 1) text.append("^").append(rowText(found->e)).append(" ");
        text.append(std::array{"", "pi", "(1/pi)"}[static_cast<std::size_t>(found->c)]);
    }
    if (found->d > 1) text.append("^").append(rowText(found->d));
    return text.append(found->m ? "]" : "");
}

/// For numbers that are no sum of a fraction and a square root.
void expectPlainResult(double x, double tolerance) {
    const std::string text = closedFormText(x, tolerance);
    const std::string plain = plainText(x, tolerance);
    if (text[0] == ' ')
        EXPECT_EQ(plain, " ") << x << " " << tolerance;
    else
        EXPECT_EQ(text, plain) << x << " " << tolerance;
}

TEST(ClosedForm, TheFilterChangesNothingForNumbersWithoutForm) {
    for (const double x : {0.57721566490153286, 1.2020569031595942, 97.123456789, -777.7777123, 0.00123123,
                           9.80665, 0.999999, 36.000001})
        expectPlainResult(x, tol);
}

TEST(ClosedForm, TheFilterChangesNothingAtTheLimitsOfAcceptance) {
    std::mt19937_64 bits(753);
    const auto uniform = [&](double a, double b) {
        return std::uniform_real_distribution<double>(a, b)(bits);
    };
    const auto integer = [&](int a, int b) { return std::uniform_int_distribution<int>(a, b)(bits); };
    int compared = 0;
    while (compared < 30) {
        const int e = integer(1, integer(0, 1) ? 115 : 8);
        const int c = integer(0, 2);
        const int d = c == 0 ? 1 : integer(1, integer(0, 1) ? 115 : 8);
        const int m = integer(0, 2);
        // Numerators above the reach of sums, up to the limit of the score.
        const double product = std::pow(10.0, uniform(1.5, std::log10(1e7 / (e * d)) + 0.1));
        const double p = std::floor(std::pow(product, uniform(0.5, 1))) + 14;
        const double q = std::floor(product / p) + 1;
        const double limit = std::min(tol, 0.01 / (p * q * e * d));
        const double deviation = limit * (integer(0, 1) ? uniform(-1.2, 1.2) : 1 + uniform(-1e-4, 1e-4));
        const double u = std::pow(p / q * (1 + deviation), value(e)) *
                         std::pow(factorTable[static_cast<std::size_t>(c)], value(d));
        const double x = m == 0 ? u : m == 1 ? std::exp(u) : std::log(u);
        if (!(std::fabs(x) >= 0.001 && std::fabs(x) <= 1000)) continue;
        expectPlainResult(x, tol);
        ++compared;
    }
}

}  // namespace
}  // namespace vorpen
