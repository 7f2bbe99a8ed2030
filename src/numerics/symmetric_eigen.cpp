// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/symmetric_eigen.h"

#include <gsl/gsl_eigen.h>
#include <gsl/gsl_matrix.h>
#include <gsl/gsl_vector.h>

#include <cmath>
#include <cstdlib>
#include <utility>

#include "base/blas_loader.h"
#include "base/errors.h"
#include "numerics/gsl_errors.h"
#include "numerics/gsl_pointer.h"

namespace vorpen {
namespace {

/// GSL stores by row and reads the lower triangle, so the storage is transposed
/// for it.
gsl_matrix_view transposedForGsl(std::span<double> matrix, std::size_t n) {
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < j; ++i) std::swap(matrix[i + j * n], matrix[j + i * n]);
    return gsl_matrix_view_array(matrix.data(), n, n);
}

/// The distance of two rows of eigenvectors in numbers, an odd number of cache
/// lines. GSL turns pairs of columns again and again; at other distances the
/// lines of a column fall on few places of the cache and drive each other out
/// (a tenth of the time at 400 rows).
std::size_t spacedRow(std::size_t n) {
    constexpr std::size_t line = 8;
    const std::size_t lines = (n + line - 1) / line;
    return lines < line ? n : (lines | 1) * line;
}

/// From this power of 2 on the products of elements leave the range of doubles,
/// and GSL's steps may go on for ever.
constexpr int largestExponent = 500;

/// Multiplies the lower triangle and the diagonal by a power of 2 when they are
/// very large or very small; the answer is the power that the eigenvalues have
/// lost. No other element counts.
int bringIntoRange(std::span<double> matrix, std::size_t n, std::string_view context) {
    double largest = 0;
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i) {
            Require(std::isfinite(matrix[i + j * n]), "matrix has elements that are not finite", context);
            largest = std::fmax(largest, std::fabs(matrix[i + j * n]));
        }
    int exponent = 0;
    std::frexp(largest, &exponent);
    if (std::abs(exponent) <= largestExponent) return 0;
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i) matrix[i + j * n] = std::ldexp(matrix[i + j * n], -exponent);
    return exponent;
}

void multiplyBack(std::span<double> values, int exponent) {
    if (exponent == 0) return;
    for (double& value : values) value = std::ldexp(value, exponent);
}

void prepareGsl() {
    installGslErrorHandler();
    requireBlas();
}

}  // namespace

std::vector<double> symmetricEigenvalues(std::span<double> matrix, std::size_t rows) {
    Require(rows * rows == matrix.size(), "non-square matrix", "eigval");
    std::vector<double> values(rows);
    const int exponent = bringIntoRange(matrix, rows, "eigval");
    if (rows == 0) return values;
    prepareGsl();
    const OneBlasThread guard;
    gsl_matrix_view a = transposedForGsl(matrix, rows);
    gsl_vector_view eval = gsl_vector_view_array(values.data(), rows);
    const auto workspace = ownedByGuard<gsl_eigen_symm_free>(gsl_eigen_symm_alloc(rows));
    gsl_eigen_symm(&a.matrix, &eval.vector, workspace.get());
    multiplyBack(values, exponent);
    return values;
}

EigenSystem symmetricEigenSystem(std::span<double> matrix, std::size_t rows) {
    Require(rows * rows == matrix.size(), "non-square matrix", "eigen-system");
    EigenSystem system{std::vector<double>(rows), std::vector<double>(rows * rows)};
    const int exponent = bringIntoRange(matrix, rows, "eigen-system");
    if (rows == 0) return system;
    prepareGsl();
    const OneBlasThread guard;
    gsl_matrix_view a = transposedForGsl(matrix, rows);
    gsl_vector_view eval = gsl_vector_view_array(system.values.data(), rows);
    const std::size_t distance = spacedRow(rows);
    std::vector<double> vectorsByRow(rows * distance);
    gsl_matrix_view evec = gsl_matrix_view_array_with_tda(vectorsByRow.data(), rows, rows, distance);
    const auto workspace = ownedByGuard<gsl_eigen_symmv_free>(gsl_eigen_symmv_alloc(rows));
    gsl_eigen_symmv(&a.matrix, &eval.vector, &evec.matrix, workspace.get());
    gsl_eigen_symmv_sort(&eval.vector, &evec.matrix, GSL_EIGEN_SORT_ABS_ASC);
    multiplyBack(system.values, exponent);
    for (std::size_t k = 0; k < rows; ++k)
        for (std::size_t i = 0; i < rows; ++i)
            system.vectors[i + k * rows] = gsl_matrix_get(&evec.matrix, i, k);
    return system;
}

}  // namespace vorpen
