// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/lu.h"

#include <gsl/gsl_cblas.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/blas_loader.h"
#include "base/errors.h"
#include "base/interrupt.h"
#include "base/multiversion.h"
#include "base/output.h"

namespace vorpen {
namespace {

/// What stands in for a pivot of 0.
constexpr double smallestPivot = 1e-40;

/// Columns that are factorised one after the other. So few columns of a
/// thousand rows stay in the cache, and products of narrower ones cost more
/// than they save.
constexpr std::size_t panelWidth = 16;

/// From this order on the BLAS is used; below, the loops are faster than
/// loading it, and the factors are those of the plain method to the bit.
constexpr std::size_t blasOrder = 128;

/// Columns of the inverse of a triangle that are made together.
constexpr std::size_t triangleWidth = 64;

/// From so many right sides on the BLAS is worth its loading.
constexpr std::size_t blasColumns = 64;

/// The multiplications after which a large factorisation or solution looks
/// whether it is to go on: less than a tenth of a second on two cores. Fewer
/// columns at a time cost the BLAS speed.
constexpr std::size_t productsAtOnce = 4'000'000'000;
constexpr std::size_t leastColumnsAtOnce = 128;

/// Calls work(first, count) on some columns after the other, each of which
/// takes so many multiplications.
template <class Work>
void inColumns(std::size_t columns, std::size_t productsOfOne, Work work) {
    const std::size_t fitting =
        std::max(productsAtOnce / std::max<std::size_t>(productsOfOne, 1), leastColumnsAtOnce);
    for (std::size_t first = 0; first < columns; first += fitting) {
        checkInterrupt();
        work(first, std::min(fitting, columns - first));
    }
}

/// A factorisation in progress, in the place of the matrix.
struct Factorisation {
    std::size_t n;
    std::span<double> a;
    std::vector<double> scale;
    std::vector<std::int32_t> permutation;
    int parity = 1;

    double* column(std::size_t j) { return a.data() + j * n; }
};

/// The largest modulus in each row; NaNs do not count.
VORPEN_MULTIVERSION
void largestOfRows(const double* a, std::size_t n, double* largest) {
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) {
            const double modulus = std::fabs(a[i + j * n]);
            largest[i] = modulus > largest[i] ? modulus : largest[i];
        }
}

/// 1 over the largest modulus of each row.
std::vector<double> rowScales(std::span<const double> a, std::size_t n) {
    std::vector<double> scale(n, 0.0);
    largestOfRows(a.data(), n, scale.data());
    for (std::size_t i = 0; i < n; ++i) {
        // A row of NaN has no largest element either, but is not zero.
        bool isZero = scale[i] == 0;
        for (std::size_t j = 0; isZero && j < n; ++j) isZero = a[i + j * n] == 0;
        Require(!isZero, "LUform: matrix has a row of zeros");
        scale[i] = 1 / scale[i];
    }
    return scale;
}

std::size_t findPivot(const double* column, const std::vector<double>& scale, std::size_t k) {
    std::size_t pivot = k;
    double best = scale[k] * std::fabs(column[k]);
    for (std::size_t i = k + 1; i < scale.size(); ++i) {
        const double candidate = scale[i] * std::fabs(column[i]);
        if (candidate > best) {
            best = candidate;
            pivot = i;
        }
    }
    return pivot;
}

/// y -= factor * x from `first` to n.
void subtractMultiple(double* y, const double* x, double factor, std::size_t first, std::size_t n) {
    for (std::size_t i = first; i < n; ++i) y[i] -= factor * x[i];
}

/// Factorises the columns from `first` to `last`, exchanging rows within them.
VORPEN_MULTIVERSION
void factorisePanel(Factorisation& f, std::size_t first, std::size_t last) {
    for (std::size_t k = first; k < last; ++k) {
        double* const pivotColumn = f.column(k);
        const std::size_t p = findPivot(pivotColumn, f.scale, k);
        f.permutation[k] = static_cast<std::int32_t>(p);
        if (p != k) {
            for (std::size_t j = first; j < last; ++j) std::swap(f.column(j)[p], f.column(j)[k]);
            f.parity = -f.parity;
            f.scale[p] = f.scale[k];
        }
        if (pivotColumn[k] == 0.0) {
            pivotColumn[k] = smallestPivot;
            output().print("matrix is singular or close to singular", true, PrintMode::markup);
        }
        const double pivot = pivotColumn[k];
        for (std::size_t i = k + 1; i < f.n; ++i) pivotColumn[i] /= pivot;
        for (std::size_t j = k + 1; j < last; ++j)
            subtractMultiple(f.column(j), pivotColumn, f.column(j)[k], k + 1, f.n);
    }
}

/// Applies the exchanges of steps first to last to the columns of b.
void exchangeRows(double* b, std::size_t rows, std::size_t columns,
                  const std::vector<std::int32_t>& permutation, std::size_t first, std::size_t last) {
    for (std::size_t j = 0; j < columns; ++j) {
        double* const column = b + j * rows;
        for (std::size_t k = first; k < last; ++k)
            std::swap(column[k], column[static_cast<std::size_t>(permutation[k])]);
    }
}

/// Brings the columns from `middle` to `last` up to date with the factorised
/// ones from `first` to `middle`.
void updateColumns(Factorisation& f, std::size_t first, std::size_t middle, std::size_t last) {
    const int n = static_cast<int>(f.n);
    const int done = static_cast<int>(middle - first);
    const int below = static_cast<int>(f.n - middle);
    const double* const triangle = f.column(first) + first;
    inColumns(last - middle, (middle - first) * (f.n - first), [&](std::size_t from, std::size_t count) {
        double* const column = f.column(middle + from);
        double* const top = column + first;
        const int columns = static_cast<int>(count);
        exchangeRows(column, f.n, count, f.permutation, first, middle);
        cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, done, columns, 1.0, triangle, n,
                    top, n);
        cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, below, columns, done, -1.0, f.column(first) + middle,
                    n, top, n, 1.0, column + middle, n);
    });
}

/// Factorises the columns from `first` to `last` by halves, so that most of the
/// work is in products of large matrices (S. Toledo, "Locality of reference in
/// LU decomposition with partial pivoting", SIAM Journal on Matrix Analysis and
/// Applications 18, 1997).
void factoriseColumns(Factorisation& f, std::size_t first, std::size_t last) {
    if (last - first <= panelWidth) {
        checkInterrupt();
        return factorisePanel(f, first, last);
    }
    const std::size_t panels = (last - first + panelWidth - 1) / panelWidth;
    const std::size_t middle = first + panels / 2 * panelWidth;
    factoriseColumns(f, first, middle);
    updateColumns(f, first, middle, last);
    factoriseColumns(f, middle, last);
    exchangeRows(f.column(first), f.n, middle - first, f.permutation, middle, last);
}

}  // namespace

int LuForm::factorise(std::span<const double> matrix, std::size_t rows) {
    Require(rows * rows == matrix.size(), "matrix must be square");
    std::vector<double> scale = rowScales(matrix, rows);
    permutation_.clear();
    lu_.setSizeShapeMark(static_cast<std::int64_t>(matrix.size()), static_cast<int>(rows), FORM_NUMERIC);
    std::ranges::copy(matrix, lu_.data());
    Factorisation f{rows, lu_.items(), std::move(scale), std::vector<std::int32_t>(rows)};
    if (rows < blasOrder) {
        factorisePanel(f, 0, rows);
    } else {
        requireBlas();
        factoriseColumns(f, 0, rows);
    }
    permutation_ = std::move(f.permutation);
    return parity_ = f.parity;
}

double LuForm::determinant() const {
    const std::size_t n = order();
    double product = parity_;
    for (std::size_t i = 0; i < n; ++i) product *= lu_[i + i * n];
    return product;
}

void LuForm::backSubstitute(double* x) const {
    const std::size_t n = order();
    exchangeRows(x, n, 1, permutation_, 0, n);
    // Up to the first element that is not 0 there is nothing to subtract.
    std::size_t j = 0;
    while (j < n && x[j] == 0) ++j;
    for (; j < n; ++j) subtractMultiple(x, lu_.data() + j * n, x[j], j + 1, n);
    for (j = n; j-- > 0;) {
        const double* const column = lu_.data() + j * n;
        x[j] /= column[j];
        subtractMultiple(x, column, x[j], 0, j);
    }
}

void LuForm::solve(std::span<double> b) const {
    const std::size_t n = order();
    if (n == 0) return;
    const std::size_t columns = b.size() / n;
    if (n < blasOrder || columns < blasColumns) {
        for (std::size_t j = 0; j < columns; ++j) {
            checkInterrupt();
            backSubstitute(b.data() + j * n);
        }
        return;
    }
    requireBlas();
    const int rows = static_cast<int>(n);
    inColumns(columns, n * n, [&](std::size_t first, std::size_t some) {
        double* const x = b.data() + first * n;
        const int count = static_cast<int>(some);
        exchangeRows(x, n, some, permutation_, 0, n);
        cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, rows, count, 1.0, lu_.data(), rows,
                    x, rows);
        cblas_dtrsm(CblasColMajor, CblasLeft, CblasUpper, CblasNoTrans, CblasNonUnit, rows, count, 1.0, lu_.data(),
                    rows, x, rows);
    });
}

void LuForm::inverse(std::span<double> matrix) const {
    const std::size_t n = order();
    std::ranges::fill(matrix, 0.0);
    for (std::size_t i = 0; i < n; ++i) matrix[i + i * n] = 1;
    if (n < blasOrder)
        solve(matrix);
    else
        invertByBlas(matrix.data());
}

/// The identity becomes the inverse of L, a lower triangle too, of which only
/// the part from the diagonal down is worked on; then U is solved for. The row
/// exchanges of the matrix are column exchanges of the inverse, the last first.
void LuForm::invertByBlas(double* x) const {
    requireBlas();
    const std::size_t n = order();
    const int rows = static_cast<int>(n);
    for (std::size_t j = 0; j < n; j += triangleWidth) {
        checkInterrupt();
        const std::size_t corner = j + j * n;
        const int width = static_cast<int>(std::min(triangleWidth, n - j));
        cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, static_cast<int>(n - j),
                    width, 1.0, lu_.data() + corner, rows, x + corner, rows);
    }
    inColumns(n, n * n / 2, [&](std::size_t first, std::size_t count) {
        cblas_dtrsm(CblasColMajor, CblasLeft, CblasUpper, CblasNoTrans, CblasNonUnit, rows, static_cast<int>(count), 1.0,
                    lu_.data(), rows, x + first * n, rows);
    });
    for (std::size_t k = n; k-- > 0;) {
        const auto p = static_cast<std::size_t>(permutation_[k]);
        if (p != k) std::swap_ranges(x + k * n, x + (k + 1) * n, x + p * n);
    }
}

LuForm& storedLuForm() {
    static LuForm form;
    return form;
}

}  // namespace vorpen
