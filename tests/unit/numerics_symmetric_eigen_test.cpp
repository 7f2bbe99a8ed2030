// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/symmetric_eigen.h"

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "base/blas_loader.h"
#include "base/errors.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

std::string failureOf(Numbers matrix, std::size_t rows) {
    try {
        (void)symmetricEigenvalues(matrix, rows);
    } catch (const RuntimeError& error) {
        return error.message;
    }
    return "";
}

TEST(SymmetricEigen, ValuesOfADiagonalMatrix) {
    Numbers m = {3, 0, 0, 0, -7, 0, 0, 0, 2};
    auto values = symmetricEigenvalues(m, 3);
    std::sort(values.begin(), values.end());
    EXPECT_EQ(values, (Numbers{-7, 2, 3}));
}

// The second difference matrix has the eigenvalues 2 - 2 cos(k pi/(n+1)) (R. T.
// Gregory and D. L. Karney, A Collection of Matrices for Testing Computational
// Algorithms, 1969, 7.4).
TEST(SymmetricEigen, SystemOfTheSecondDifference) {
    constexpr std::size_t n = 12;
    Numbers m(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        m[i + i * n] = 2;
        if (i + 1 < n) m[i + 1 + i * n] = m[i + (i + 1) * n] = -1;
    }
    const Numbers original = m;
    const EigenSystem system = symmetricEigenSystem(m, n);
    for (std::size_t k = 0; k < n; ++k) {
        const double value = system.values[k];
        EXPECT_NEAR(value, 2 - 2 * std::cos(static_cast<double>(k + 1) * std::acos(-1.0) / (n + 1)), 1e-13);
        double length = 0;
        for (std::size_t i = 0; i < n; ++i) {
            double product = 0;
            for (std::size_t j = 0; j < n; ++j) product += original[i + j * n] * system.vectors[j + k * n];
            EXPECT_NEAR(product, value * system.vectors[i + k * n], 1e-13);
            length += system.vectors[i + k * n] * system.vectors[i + k * n];
        }
        EXPECT_NEAR(length, 1, 1e-13);
    }
}

TEST(SymmetricEigen, TheSystemIsSortedByModulus) {
    Numbers m = {4, 1, 0, 1, -5, 2, 0, 2, 3};
    const auto values = symmetricEigenSystem(m, 3).values;
    EXPECT_NEAR(values[0], 3.39769416, 1e-8);
    EXPECT_NEAR(values[1], 4.17346756, 1e-8);
    EXPECT_NEAR(values[2], -5.57116172, 1e-8);
}

TEST(SymmetricEigen, OnlyTheLowerTriangleCounts) {
    Numbers symmetric = {1, 2, 3, 2, 5, 6, 3, 6, 9};
    Numbers lower = {1, 2, 3, 77, 5, 6, 88, 99, 9};
    EXPECT_EQ(symmetricEigenvalues(symmetric, 3), symmetricEigenvalues(lower, 3));
    symmetric = {1, 2, 3, 2, 5, 6, 3, 6, 9};
    lower = {1, 2, 3, 77, 5, 6, 88, 99, 9};
    EXPECT_EQ(symmetricEigenSystem(symmetric, 3).vectors, symmetricEigenSystem(lower, 3).vectors);
}

TEST(SymmetricEigen, SmallestSizes) {
    Numbers one = {-4};
    EXPECT_EQ(symmetricEigenvalues(one, 1), Numbers{-4});
    one = {-4};
    EXPECT_EQ(symmetricEigenSystem(one, 1).vectors, Numbers{1});
    EXPECT_TRUE(symmetricEigenvalues({}, 0).empty());
    EXPECT_TRUE(symmetricEigenSystem({}, 0).vectors.empty());
}

TEST(SymmetricEigen, TheMatrixMustBeSquare) {
    Numbers m(6, 1.0);
    try {
        symmetricEigenvalues(m, 2);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "in eigval: non-square matrix");
    }
    try {
        symmetricEigenSystem(m, 3);
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "in eigen-system: non-square matrix");
    }
}

TEST(SymmetricEigen, TheOrderIsThatOfTheMethod) {
    Numbers matrix = {4, 1, 0, 1, -5, 2, 0, 2, 3};
    const Numbers values = symmetricEigenvalues(matrix, 3);
    const Numbers expected = {-5.57116172, 4.17346756, 3.39769416};
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(values[i], expected[i], 1e-8);
}

TEST(SymmetricEigen, TheUpperTriangleDoesNotCount) {
    Numbers matrix = {2, 1, NAN, 3};
    const Numbers values = symmetricEigenvalues(matrix, 2);
    EXPECT_NEAR(values[0] * values[1], 5, 1e-12);
    EXPECT_NEAR(values[0] + values[1], 5, 1e-12);
}

TEST(SymmetricEigen, RefusesWhatItMayNeverEndOn) {
    EXPECT_EQ(failureOf({1, NAN, 2, 1}, 2), "in eigval: matrix has elements that are not finite");
    EXPECT_EQ(failureOf({1, 0, 0, HUGE_VAL}, 2), "in eigval: matrix has elements that are not finite");
    Numbers matrix = {1, -HUGE_VAL, 2, 1};
    EXPECT_THROW((void)symmetricEigenSystem(matrix, 2), RuntimeError);
}

TEST(SymmetricEigen, EndsForFiniteMatricesOfAnySize) {
    std::mt19937 bits(3);
    const double highest[] = {308.2, 150, -100, -300};
    for (int round = 0; round < 4000; ++round) {
        const double most = highest[round % 4];
        std::uniform_real_distribution<double> exponent(-323, most);
        const std::size_t n = 1 + bits() % 7;
        Numbers matrix(n * n);
        for (double& x : matrix)
            x = (bits() % 2 ? 1 : -1) * std::pow(10.0, bits() % 3 ? exponent(bits) : most);
        Numbers copy = matrix;
        EXPECT_EQ(symmetricEigenvalues(copy, n).size(), n);
        EXPECT_EQ(symmetricEigenSystem(matrix, n).vectors.size(), n * n);
    }
}

TEST(SymmetricEigen, VeryLargeAndVerySmallMatricesKeepTheirDigits) {
    for (const int power : {-1000, -600, 600, 1000}) {
        Numbers matrix = {4, 1, 0, 1, -5, 2, 0, 2, 3}, scaled = matrix;
        for (double& x : scaled) x = std::ldexp(x, power);
        Numbers expected = symmetricEigenvalues(matrix, 3);
        for (double& x : expected) x = std::ldexp(x, power);
        EXPECT_EQ(symmetricEigenvalues(scaled, 3), expected) << power;
    }
}

TEST(SymmetricEigen, TheThreadsOfTheBlasAreAsBefore) {
    const int before = blasThreads();
    Numbers matrix = {2, 1, 1, 2};
    (void)symmetricEigenSystem(matrix, 2);
    EXPECT_EQ(blasThreads(), before);
}

}  // namespace
}  // namespace vorpen
