// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/lu.h"

#include <gsl/gsl_cblas.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/errors.h"
#include "base/multiversion.h"
#include "base/output.h"
#include "base/blas_loader.h"

namespace vorpen {
namespace {

/// What stands in for a pivot of 0.
constexpr double smallestPivot = 1e-40;

/// Columns that are factorised together before the rest of the matrix is
/// updated. Half a megabyte at a thousand rows, so a panel stays in the cache.
constexpr std::size_t panelWidth = 64;

/// From this order on the BLAS is used; below, the loops are faster than
/// loading it, and the results are those of the plain method to the bit.
constexpr std::size_t blasOrder = 2 * panelWidth;

/// A factorisation in progress.
struct Factorisation {
    std::size_t n;
    std::vector<double> a;
    std::vector<double> scale;
    std::vector<std::int32_t> permutation;
    int parity = 1;

    double* column(std::size_t j) { return a.data() + j * n; }
};

/// 1 over the largest modulus of each row.
std::vector<double> rowScales(const std::vector<double>& a, std::size_t n) {
    std::vector<double> largest(n, 0.0);
    std::vector<char> zero(n, 1);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) {
            const double modulus = std::fabs(a[i + j * n]);
            largest[i] = modulus > largest[i] ? modulus : largest[i];
            // A row of NaN has no largest element either, but is not zero.
            zero[i] &= modulus == 0;
        }
    if (std::find(zero.begin(), zero.end(), 1) != zero.end())
        raiseRuntimeError("LUform: matrix has a row of zeros");
    for (double& v : largest) v = 1 / v;
    return largest;
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

/// Brings the columns right of a panel up to date with it.
void updateTrailing(Factorisation& f, std::size_t first, std::size_t last) {
    const int n = static_cast<int>(f.n);
    const int panel = static_cast<int>(last - first);
    const int below = static_cast<int>(f.n - last);
    const double* const triangle = f.column(first) + first;
    double* const top = f.column(last) + first;
    cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, panel, below, 1.0, triangle, n,
                top, n);
    cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, below, below, panel, -1.0, f.column(first) + last,
                n, top, n, 1.0, f.column(last) + last, n);
}

void factoriseByPanels(Factorisation& f) {
    requireBlas();
    for (std::size_t first = 0; first < f.n; first += panelWidth) {
        const std::size_t last = std::min(first + panelWidth, f.n);
        factorisePanel(f, first, last);
        exchangeRows(f.column(0), f.n, first, f.permutation, first, last);
        if (last == f.n) break;
        exchangeRows(f.column(last), f.n, f.n - last, f.permutation, first, last);
        updateTrailing(f, first, last);
    }
}

}  // namespace

int LuForm::factorise(std::span<const double> matrix, std::size_t rows) {
    Require(rows * rows == matrix.size(), "matrix must be square");
    Factorisation f{rows, {matrix.begin(), matrix.end()}, {}, {}};
    f.scale = rowScales(f.a, rows);
    f.permutation.resize(rows);
    if (rows < blasOrder)
        factorisePanel(f, 0, rows);
    else
        factoriseByPanels(f);
    lu_ = std::move(f.a);
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
    if (n < blasOrder || columns < panelWidth) {
        for (std::size_t j = 0; j < columns; ++j) backSubstitute(b.data() + j * n);
        return;
    }
    requireBlas();
    exchangeRows(b.data(), n, columns, permutation_, 0, n);
    const int rows = static_cast<int>(n);
    const int count = static_cast<int>(columns);
    cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, rows, count, 1.0, lu_.data(),
                rows, b.data(), rows);
    cblas_dtrsm(CblasColMajor, CblasLeft, CblasUpper, CblasNoTrans, CblasNonUnit, rows, count, 1.0,
                lu_.data(), rows, b.data(), rows);
}

void LuForm::inverse(std::span<double> matrix) const {
    const std::size_t n = order();
    std::ranges::fill(matrix, 0.0);
    for (std::size_t i = 0; i < n; ++i) matrix[i + i * n] = 1;
    solve(matrix);
}

LuForm& storedLuForm() {
    static LuForm form;
    return form;
}

}  // namespace vorpen
