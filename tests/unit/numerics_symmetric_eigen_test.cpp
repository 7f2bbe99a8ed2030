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
    EXPECT_EQ(failureOf({1, 2, 3}, 2), "in eigval: non-square matrix");
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
        for (double& x : matrix) x = (bits() % 2 ? 1 : -1) * std::pow(10.0, bits() % 3 ? exponent(bits) : most);
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
