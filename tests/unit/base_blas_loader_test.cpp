// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/blas_loader.h"

#include <cmath>
#include <vector>

#include <gsl/gsl_blas.h>
#include <gtest/gtest.h>

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

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

}  // namespace
}  // namespace vorpen
