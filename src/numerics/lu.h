// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The factorisation of a square matrix into a lower and an upper triangle,
// and what is made from it: solutions, the inverse, the determinant. Rows are
// exchanged by implicit scaling: the pivot is the element that is largest in
// relation to its row of the original matrix. A matrix that has no inverse
// does not fail: a pivot of 0 becomes 1e-40, a warning is shown, and the
// results come out very large.
//
// Matrices are stored by column. All loops run down columns. A large matrix is
// factorised by halves of its columns, with the matrix product of the BLAS in
// between, which does nearly all of the work; the pivots are found by the same
// rule, and the results differ from those of the plain method in the last bits
// alone.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "values/mathmatrix.h"

namespace vorpen {

class LuForm {
public:
    /// Factorises the matrix, n by n with n = `rows`, and keeps the factors.
    /// The answer is the parity of the row exchanges, +1 or -1. Raises a
    /// RuntimeError, and keeps the former factors, when the matrix is not
    /// square or has a row of zeros. After an interrupt there are no factors.
    int factorise(std::span<const double> matrix, std::size_t rows);

    /// The number of rows; 0 before any factorisation.
    std::size_t order() const { return permutation_.size(); }

    /// L below the diagonal, the ones on its own diagonal left out, and U on
    /// and above it.
    std::span<const double> factors() const { return lu_.items(); }

    /// The row, from 0, with which row k was exchanged in step k.
    std::span<const std::int32_t> permutation() const { return permutation_; }

    int parity() const { return parity_; }

    double determinant() const;

    /// Solves for each column of b, order() by any number of columns, in
    /// place.
    void solve(std::span<double> b) const;

    /// The inverse, order() by order(), into a matrix of that size.
    void inverse(std::span<double> matrix) const;

private:
    void backSubstitute(double* x) const;
    void invertByBlas(double* identity) const;

    DoubleValue lu_;
    std::vector<std::int32_t> permutation_;
    int parity_ = 1;
};

/// The factorisation that the language keeps from one call to the next. An
/// empty LuForm assigned to it resets it.
LuForm& storedLuForm();

}  // namespace vorpen
