// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/smoothing_filter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/errors.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

Numbers centred(const FilterShape& shape) {
    Numbers places(static_cast<std::size_t>(filterLength(shape)));
    centredFilter(shape, places);
    return places;
}

Numbers wrapped(const FilterShape& shape) {
    Numbers places(static_cast<std::size_t>(filterLength(shape)));
    wrappedFilter(shape, places);
    return places;
}

Numbers convolved(const Numbers& h, const Numbers& v) {
    Numbers out(v.size());
    convolve(h, v, out);
    return out;
}

Numbers smoothed(const FilterShape& shape, Numbers v) {
    smooth(shape, v, v);
    return v;
}

void expectNear(const Numbers& found, const Numbers& expected, double tolerance = 1e-12) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], tolerance) << i;
}

/// A published table: the coefficients from the first to the middle one, times
/// the norm. The other half is the same, with the other sign for odd
/// derivatives.
struct PublishedFilter {
    int points, order, derivative;
    double norm;
    Numbers half;
};

// A. Savitzky and M. J. E. Golay, Analytical Chemistry 36 (1964) 1627, tables I
// to XI, with the corrections of J. Steinier, Y. Termonia and J. Deltour,
// Analytical Chemistry 44 (1972) 1906.
const PublishedFilter publishedFilters[] = {
    // quadratic and cubic, the value
    {5, 2, 0, 35, {-3, 12, 17}},
    {7, 2, 0, 21, {-2, 3, 6, 7}},
    {9, 2, 0, 231, {-21, 14, 39, 54, 59}},
    {11, 2, 0, 429, {-36, 9, 44, 69, 84, 89}},
    {13, 2, 0, 143, {-11, 0, 9, 16, 21, 24, 25}},
    {15, 2, 0, 1105, {-78, -13, 42, 87, 122, 147, 162, 167}},
    {17, 2, 0, 323, {-21, -6, 7, 18, 27, 34, 39, 42, 43}},
    {19, 2, 0, 2261, {-136, -51, 24, 89, 144, 189, 224, 249, 264, 269}},
    {21, 2, 0, 3059, {-171, -76, 9, 84, 149, 204, 249, 284, 309, 324, 329}},
    {23, 2, 0, 805, {-42, -21, -2, 15, 30, 43, 54, 63, 70, 75, 78, 79}},
    {25, 2, 0, 5175, {-253, -138, -33, 62, 147, 222, 287, 342, 387, 422, 447, 462, 467}},
    // quartic and quintic, the value
    {7, 4, 0, 231, {5, -30, 75, 131}},
    {9, 4, 0, 429, {15, -55, 30, 135, 179}},
    {11, 4, 0, 429, {18, -45, -10, 60, 120, 143}},
    {13, 4, 0, 2431, {110, -198, -135, 110, 390, 600, 677}},
    {15, 4, 0, 46189, {2145, -2860, -2937, -165, 3755, 7500, 10125, 11063}},
    // quadratic, the first derivative
    {5, 2, 1, 10, {-2, -1, 0}},
    {7, 2, 1, 28, {-3, -2, -1, 0}},
    {9, 2, 1, 60, {-4, -3, -2, -1, 0}},
    {11, 2, 1, 110, {-5, -4, -3, -2, -1, 0}},
    // cubic and quartic, the first derivative
    {5, 4, 1, 12, {1, -8, 0}},
    {7, 4, 1, 252, {22, -67, -58, 0}},
    {9, 4, 1, 1188, {86, -142, -193, -126, 0}},
    {11, 4, 1, 5148, {300, -294, -532, -503, -296, 0}},
    {13, 4, 1, 24024, {1133, -660, -1578, -1796, -1489, -832, 0}},
    // quadratic and cubic, the second derivative
    {5, 2, 2, 7, {2, -1, -2}},
    {7, 2, 2, 42, {5, 0, -3, -4}},
    {9, 2, 2, 462, {28, 7, -8, -17, -20}},
    {11, 2, 2, 429, {15, 6, -1, -6, -9, -10}},
    {13, 2, 2, 1001, {22, 11, 2, -5, -10, -13, -14}},
    // quartic and quintic, the second derivative
    {5, 4, 2, 12, {-1, 16, -30}},
    {7, 4, 2, 132, {-13, 67, -19, -70}},
    {9, 4, 2, 1716, {-126, 371, 151, -211, -370}},
    // cubic and quartic, the third derivative
    {5, 3, 3, 2, {-1, 2, 0}},
    {7, 3, 3, 6, {-1, 1, 1, 0}},
    {9, 3, 3, 198, {-14, 7, 13, 9, 0}},
};

TEST(SavitzkyGolay, GivesThePublishedTables) {
    for (const PublishedFilter& published : publishedFilters) {
        const int side = published.points / 2;
        // An odd order adds nothing to an even derivative, and the other way round.
        const int extraOrder =
            published.order < 2 * side && published.order % 2 == published.derivative % 2 ? 1 : 0;
        for (const int order : {published.order, published.order + extraOrder}) {
            const Numbers filter = centred({side, side, order, published.derivative});
            const double factorial = std::tgamma(published.derivative + 1);
            for (int k = 0; k <= side; ++k) {
                const double expected =
                    published.half[static_cast<std::size_t>(k)] / published.norm / factorial;
                // The filter lies from the last sample to the first.
                const double sign = published.derivative % 2 ? -1 : 1;
                EXPECT_NEAR(filter[static_cast<std::size_t>(2 * side - k)], expected, 1e-13)
                    << published.points << " points, order " << order << ", derivative "
                    << published.derivative;
                EXPECT_NEAR(filter[static_cast<std::size_t>(k)], sign * expected, 1e-13);
            }
        }
    }
}

TEST(SavitzkyGolay, AnOrderOfAllPointsLeavesTheSample) {
    expectNear(centred({1, 1, 2}), {0, 1, 0});
    expectNear(centred({2, 2, 4}), {0, 0, 1, 0, 0});
    expectNear(centred({0, 0, 0}), {1});
}

TEST(SavitzkyGolay, OneSidedFiltersExtrapolateToTheirEnd) {
    // The line through four samples, at the last of them: from the normal
    // equations with sums 4, 6, 14.
    expectNear(centred({3, 0, 1}), {0, 0, 0, 0.7, 0.4, 0.1, -0.2});
    expectNear(centred({0, 3, 1}), {-0.2, 0.1, 0.4, 0.7, 0, 0, 0});
    expectNear(wrapped({3, 0, 1}), {0.7, 0.4, 0.1, -0.2, 0, 0, 0});
    expectNear(wrapped({0, 3, 1}), {-0.2, 0.1, 0.4, 0.7, 0, 0, 0});
    expectNear(wrapped({2, 1, 0}), {0.25, 0.25, 0.25, 0.25, 0});
}

TEST(SavitzkyGolay, RefusesWhatCannotBe) {
    const FilterShape impossible[] = {{-1, 2, 1, 0}, {2, -1, 1, 0},      {2, 2, 5, 0},
                                      {2, 2, -1, 0}, {2, 2, 2, -1},      {1, 2, 3, 4},
                                      {0, 0, 1, 0},  {200, 200, 400, 0}, {0, 0, std::int64_t{1} << 62, 0}};
    for (const FilterShape& shape : impossible) {
        try {
            (void)filterLength(shape);
            ADD_FAILURE() << shape.left << ' ' << shape.right << ' ' << shape.order;
        } catch (const RuntimeError& error) {
            EXPECT_EQ(error.message, "inconsistent arguments for smoothing filter");
        }
    }
    EXPECT_THROW((void)filterLength({std::int64_t{1} << 62, std::int64_t{1} << 62, 2, 0}), std::bad_alloc);
    EXPECT_EQ(filterLength({2, 7, 2, 0}), 15);
}

TEST(Convolve, IsASumOverShiftedSamples) {
    // The first coefficient meets the sample behind, the last the one before.
    EXPECT_EQ(convolved({1, 0, 0}, {1, 2, 4, 8}), (Numbers{2, 4, 8, 8}));
    EXPECT_EQ(convolved({0, 0, 1}, {1, 2, 4, 8}), (Numbers{1, 1, 2, 4}));
    EXPECT_EQ(convolved({1, 0, -1}, {0, 1, 2, 3}), (Numbers{1, 2, 2, 1}));
    // An even count has its middle to the left.
    EXPECT_EQ(convolved({1, 10}, {1, 2, 3}), (Numbers{11, 12, 23}));
    EXPECT_EQ(convolved({2}, {1, 2, 3}), (Numbers{2, 4, 6}));
    EXPECT_EQ(convolved({1, 1, 1}, {1, 2, 4}), (Numbers{4, 7, 10}));
    EXPECT_EQ(convolved({}, {1, 2}), (Numbers{0, 0}));
}

TEST(Convolve, GivesAnyRangeOfItsResults) {
    const Numbers h = {1, 2, 3, 4, 5, 6}, v = {3, 1, 4, 1, 5, 9, 2, 6, 5};
    const Numbers all = convolved(h, v);
    for (std::size_t first = 0; first <= v.size(); ++first)
        for (std::size_t last = first; last <= v.size(); ++last) {
            Numbers part(last - first);
            convolve(h, v, part, static_cast<std::int64_t>(first));
            EXPECT_TRUE(
                std::equal(part.begin(), part.end(), all.begin() + static_cast<std::ptrdiff_t>(first)));
        }
}

TEST(Convolve, RefusesAFilterLongerThanTheData) {
    try {
        convolved({1, 2, 3}, {1, 2});
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "y1 must have fewer points than y2 in convolve");
    }
}

TEST(Convolve, OfLongDataIsThatOfItsParts) {
    Numbers h, v;
    for (int j = 0; j < 7; ++j) h.push_back(std::sin(j + 1.0));
    for (int i = 0; i < 300001; ++i) v.push_back(std::cos(i * 0.7));
    const Numbers out = convolved(h, v);
    for (const std::size_t i : {0ul, 2ul, 3ul, 511ul, 512ul, 150000ul, 299997ul, 299998ul, 300000ul}) {
        double sum = 0;
        for (std::int64_t j = 0; j < 7; ++j) {
            const auto sample = std::clamp<std::int64_t>(static_cast<std::int64_t>(i) + 3 - j, 0, 300000);
            sum += h[static_cast<std::size_t>(j)] * v[static_cast<std::size_t>(sample)];
        }
        EXPECT_EQ(out[i], sum) << i;
    }
}

TEST(Smooth, MirrorsTheDataAboutTheEndSamples) {
    // 4 2 | 1 2 4 8 16 | 8 4
    expectNear(smoothed({2, 2, 0}, {1, 2, 4, 8, 16}), {13.0 / 5, 17.0 / 5, 31.0 / 5, 38.0 / 5, 40.0 / 5});
    // Used up after two: 4 4 4 2 | 1 2 4 | 2 1 1 1
    expectNear(smoothed({4, 4, 0}, {1, 2, 4}),
               {(4 + 4 + 4 + 2 + 1 + 2 + 4 + 2 + 1) / 9.0, (4 + 4 + 2 + 1 + 2 + 4 + 2 + 1 + 1) / 9.0,
                (4 + 2 + 1 + 2 + 4 + 2 + 1 + 1 + 1) / 9.0});
    expectNear(smoothed({3, 3, 2}, {7}), {7});
}

TEST(Smooth, KeepsPolynomialsOfItsOrder) {
    Numbers cubic;
    for (int i = 0; i < 50; ++i) cubic.push_back(0.01 * i * i * i - i * i + 3);
    for (const FilterShape& shape : {FilterShape{4, 4, 3}, FilterShape{6, 2, 3}, FilterShape{0, 7, 3}}) {
        const Numbers result = smoothed(shape, cubic);
        for (std::size_t i = 8; i < 42; ++i) EXPECT_NEAR(result[i], cubic[i], 1e-9) << i;
    }
}

TEST(Smooth, GivesTheDerivativeOfARampItsSign) {
    Numbers ramp;
    for (int i = 0; i < 20; ++i) ramp.push_back(3.0 * i);
    const Numbers slope = smoothed({3, 3, 2, 1}, ramp);
    for (std::size_t i = 3; i < 17; ++i) EXPECT_NEAR(slope[i], 3, 1e-12);
}

TEST(Smooth, TakesATwentiethWhenNothingIsAsked) {
    EXPECT_EQ(standardFilter(39).left, 1);
    EXPECT_EQ(standardFilter(40).left, 2);
    EXPECT_EQ(standardFilter(40).right, 2);
    EXPECT_EQ(standardFilter(0).left, 1);
    EXPECT_EQ(standardFilter(400).order, 2);
}

}  // namespace
}  // namespace vorpen
