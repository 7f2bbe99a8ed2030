// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Eigenvalues and eigenvectors of real symmetric matrices, by GSL's
// tridiagonal reduction and implicit QR steps (G. H. Golub and C. F. Van Loan,
// Matrix Computations, 1996, 8.3). Matrices are stored by column. Of a matrix
// that is not symmetric only the lower triangle and the diagonal count. GSL
// works in the storage that it is given, so the matrix is lost: what it holds
// afterwards is what the method leaves there. Elements beyond 1e150 or below
// 1e-150 are multiplied by a power of 2 first, which costs no digit.

#include <cstddef>
#include <span>
#include <vector>

namespace vorpen {

/// The n eigenvalues of an n by n matrix with n = `rows`, in the order in which
/// the method finds them. Raises a RuntimeError in the context "eigval": "non-
/// square matrix", or "matrix has elements that are not finite" when a NaN or
/// an infinity is among those that count.
std::vector<double> symmetricEigenvalues(std::span<double> matrix, std::size_t rows);

struct EigenSystem {
    std::vector<double> values;   ///< n, ascending by modulus
    std::vector<double> vectors;  ///< n by n, eigenvector k of length 1 in column k
};

/// As symmetricEigenvalues, with the vectors; the context is "eigen-system".
EigenSystem symmetricEigenSystem(std::span<double> matrix, std::size_t rows);

}  // namespace vorpen
