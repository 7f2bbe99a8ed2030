// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies of linear algebra and Fourier transforms. The first four share one
// stored factorisation: a matrix given to one of them is factorised and its
// factors are kept, and a string in its place, whatever it says, asks for the
// factors that are there. A singular matrix is no failure but gives a warning
// and very large numbers. Results are plain numbers.

#include "eval/function_types.h"

namespace vorpen::builtin {

// ---- by triangular factors

/// Factorises a square matrix of integers or doubles; answers the parity of
/// its row exchanges, 1 or -1.
int factorise(const Value& m);
/// (m, b): x with m.x = b for each column of b.
void solveLinear(const Value& m, const DoubleValue* b, Value& out);
void inverse(const Value& m, DoubleValue& out);
void determinant(const Value& m, DoubleValue& out);

// ---- symmetric matrices; of any other the lower triangle and the diagonal count

/// The eigenvalues in a column, in the order in which they are found. The
/// matrix is used up.
void eigenvalues(DoubleValue& m, DoubleValue& out);
/// The eigenvectors in columns, ascending by the modulus of their values. The
/// matrix is used up.
void eigenvectors(DoubleValue& m, DoubleValue& out);
/// The eigenvalues in a column, ascending by modulus. A second output gets the
/// eigenvectors.
void eigenSystem(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

// ---- complex results

/// The discrete Fourier transform of a power of 2 of numbers, in a row unless
/// they stand in a column. Neither direction is scaled.
void fourierForward(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
void fourierBackward(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// The diagonal of a square matrix in a row, with its mark.
void complexDiagonal(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

}  // namespace vorpen::builtin
