// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "values/mathmatrix.h"

namespace vorpen {

/// Raises a square matrix (n by n) to a power in place. A whole power is made
/// by repeated squaring, of the inverse when it is negative. Any other power is
/// taken of the eigenvalues of the symmetric matrix. Fails with operator
/// failure `^` for a matrix that is not square or an exponent of other than
/// one element, and with `R` for a broken power of a negative eigenvalue.
void matrixPower(DoubleValue& matrix, const DoubleValue& exponent);

}  // namespace vorpen
