// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/random.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace vorpen {
namespace {

// ISO/IEC 9899:1990, 7.10.2.2: the example of rand and srand. The first
// numbers after srand(1).
TEST(RandomSource, IsTheGeneratorOfTheStandardsExample) {
    RandomSource source;
    source.srand(1);
    for (const int expected : {16838, 5758, 10113, 17515, 31051}) EXPECT_EQ(source.rand(), expected);
}

TEST(RandomSource, StartsFromItsFixedSeed) {
    RandomSource fresh;
    RandomSource seeded;
    seeded.srand(753);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(fresh.rand(), seeded.rand());
}

TEST(RandomSource, AnySeedIsAccepted) {
    RandomSource source;
    for (const int seed : {-1, 0, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        source.srand(seed);
        const int first = source.rand();
        source.srand(seed);
        EXPECT_EQ(source.rand(), first);
    }
}

TEST(RandomSource, GivesFifteenBitsWithBothEnds) {
    RandomSource source;
    std::vector<int> seen(32768, 0);
    for (int i = 0; i < 2000000; ++i) {
        const int n = source.rand();
        ASSERT_GE(n, 0);
        ASSERT_LE(n, RandomSource::maxValue);
        seen[static_cast<std::size_t>(n)] = 1;
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 0), 0);
}

TEST(RandomSource, UniformIsTheIntegerOverItsLargestValue) {
    RandomSource a;
    RandomSource b;
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(a.uniform(), b.rand() / 32767.0);
}

TEST(RandomSource, BelowStaysBelow) {
    RandomSource a;
    RandomSource b;
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(a.below(6), b.rand() % 6);
    EXPECT_LE(a.below(1000000), 32767);
    EXPECT_EQ(a.below(1), 0);
}

struct Moments {
    double mean = 0;
    double variance = 0;
};

template <typename Draw>
Moments momentsOf(Draw draw, int n) {
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < n; ++i) {
        const double x = draw();
        sum += x;
        squares += x * x;
    }
    return {sum / n, squares / n - sum / n * (sum / n)};
}

TEST(RandomSource, ExponentialHasTheMeanOfItsRate) {
    RandomSource a;
    RandomSource b;
    EXPECT_EQ(a.exponential(2), -std::log(b.uniform()) / 2);
    double largest = 0;
    const Moments m = momentsOf(
        [&] {
            const double x = a.exponential(4);
            largest = std::max(largest, x);
            return std::isinf(x) ? 0.25 : x;
        },
        200000);
    EXPECT_NEAR(m.mean, 0.25, 0.003);
    EXPECT_NEAR(m.variance, 0.0625, 0.002);
    EXPECT_TRUE(std::isinf(largest));
}

TEST(RandomSource, NormalHasTheGivenDeviation) {
    RandomSource source;
    const Moments m = momentsOf([&] { return source.normal(3); }, 200000);
    EXPECT_NEAR(m.mean, 0, 0.03);
    EXPECT_NEAR(m.variance, 9, 0.1);
}

TEST(RandomSource, NormalHasTheTailsOfTheDistribution) {
    RandomSource source;
    int beyondOne = 0;
    int beyondTwo = 0;
    constexpr int n = 200000;
    for (int i = 0; i < n; ++i) {
        const double x = std::fabs(source.normal(1));
        ASSERT_TRUE(std::isfinite(x));
        beyondOne += x > 1;
        beyondTwo += x > 2;
    }
    EXPECT_NEAR(beyondOne / double(n), 0.31731, 0.004);
    EXPECT_NEAR(beyondTwo / double(n), 0.04550, 0.002);
}

TEST(RandomSource, TheLanguagesSourceCanBeReset) {
    randomSource() = RandomSource();
    const int first = randomSource().rand();
    randomSource().rand();
    randomSource() = RandomSource();
    EXPECT_EQ(randomSource().rand(), first);
    randomSource() = RandomSource();
}

}  // namespace
}  // namespace vorpen
