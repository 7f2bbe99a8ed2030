// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/blas_loader.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <gsl/gsl_blas.h>
#include <gtest/gtest.h>

#include "base/errors.h"
#include "numerics/symmetric_eigen.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

// ---- the loader -----------------------------------------------------------

TEST(BlasLoader, LoadsABlas) {
    EXPECT_TRUE(ensureBlas());
    EXPECT_NO_THROW(requireBlas());
    EXPECT_GE(blasThreads(), 1);
}

TEST(BlasLoader, OneThreadForTheLifeOfTheGuard) {
    const int before = blasThreads();
    {
        const OneBlasThread guard;
        EXPECT_EQ(blasThreads(), 1);
    }
    EXPECT_EQ(blasThreads(), before);
}

TEST(BlasLoader, ACountOfThreadsBelowOneIsIgnored) {
    const int before = blasThreads();
    setBlasThreads(0);
    setBlasThreads(-5);
    EXPECT_EQ(blasThreads(), before);
}

TEST(BlasLoader, MatrixProductsOfGslGiveTheProduct) {
    constexpr std::size_t n = 70;
    Numbers a(n * n), b(n * n), c(n * n);
    for (std::size_t i = 0; i < n * n; ++i) {
        a[i] = std::sin(static_cast<double>(i));
        b[i] = std::cos(static_cast<double>(3 * i));
    }
    const auto va = gsl_matrix_view_array(a.data(), n, n);
    const auto vb = gsl_matrix_view_array(b.data(), n, n);
    auto vc = gsl_matrix_view_array(c.data(), n, n);
    gsl_blas_dgemm(CblasNoTrans, CblasTrans, 2.0, &va.matrix, &vb.matrix, 0.0, &vc.matrix);
    for (std::size_t i = 0; i < n; i += 7)
        for (std::size_t j = 0; j < n; j += 5) {
            double sum = 0;
            for (std::size_t k = 0; k < n; ++k) sum += a[i * n + k] * b[j * n + k];
            EXPECT_NEAR(c[i * n + j], 2 * sum, 1e-12);
        }
}

// One routine for each kind of result and of arguments.
TEST(BlasLoader, RoutinesOfAllLevelsAreHandedOver) {
    Numbers x = {3, -4, 0};
    Numbers y = {1, 1, 1};
    auto vx = gsl_vector_view_array(x.data(), 3);
    auto vy = gsl_vector_view_array(y.data(), 3);
    EXPECT_DOUBLE_EQ(gsl_blas_dnrm2(&vx.vector), 5);
    EXPECT_EQ(gsl_blas_idamax(&vx.vector), 1u);
    double dot = 0;
    gsl_blas_ddot(&vx.vector, &vy.vector, &dot);
    EXPECT_EQ(dot, -1);
    gsl_blas_daxpy(2, &vx.vector, &vy.vector);
    EXPECT_EQ(y, (Numbers{7, -7, 1}));
    gsl_blas_dscal(0.5, &vx.vector);
    EXPECT_EQ(x, (Numbers{1.5, -2, 0}));
    Numbers m = {2, 0, 0, 0, 3, 0, 0, 0, 4};
    const auto vm = gsl_matrix_view_array(m.data(), 3, 3);
    gsl_blas_dgemv(CblasNoTrans, 1, &vm.matrix, &vx.vector, 0, &vy.vector);
    EXPECT_EQ(y, (Numbers{3, -6, 0}));
    gsl_blas_dtrsv(CblasLower, CblasNoTrans, CblasNonUnit, &vm.matrix, &vy.vector);
    EXPECT_EQ(y, (Numbers{1.5, -2, 0}));
    Numbers z = {0, 1, 2, 0};
    auto vz = gsl_vector_complex_view_array(z.data(), 2);
    EXPECT_DOUBLE_EQ(gsl_blas_dznrm2(&vz.vector), std::sqrt(5.0));
    gsl_complex product;
    gsl_blas_zdotc(&vz.vector, &vz.vector, &product);
    EXPECT_EQ(GSL_REAL(product), 5);
    EXPECT_EQ(GSL_IMAG(product), 0);
}

// ---- eigenvalues ----------------------------------------------------------

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

TEST(SymmetricEigen, EndsForMatricesThatAreNotFinite) {
    for (const double bad : {std::nan(""), HUGE_VAL, 1e308}) {
        Numbers m(25, bad);
        symmetricEigenvalues(m, 5);
        m.assign(25, bad);
        symmetricEigenSystem(m, 5);
    }
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

}  // namespace
}  // namespace vorpen
