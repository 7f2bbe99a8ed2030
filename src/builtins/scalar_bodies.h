// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that map one number to one number and are neither in the standard
// mathematical library nor among the numerical functions: the parts of real
// and complex numbers, and the complex forms of the elementary functions.

#include <complex>

namespace vorpen::builtin {

/// The real part, and the conjugate, of a real number.
double realPart(double x);
/// The imaginary part of a real number: 0.
double imaginaryPart(double x);
/// ln |gamma(x)|, without the library's global sign.
double logGamma(double x);

std::complex<double> complexSqrt(std::complex<double> z);
std::complex<double> complexExp(std::complex<double> z);
std::complex<double> complexLog(std::complex<double> z);
std::complex<double> complexSin(std::complex<double> z);
std::complex<double> complexCos(std::complex<double> z);
std::complex<double> complexTan(std::complex<double> z);
std::complex<double> complexSinh(std::complex<double> z);
std::complex<double> complexCosh(std::complex<double> z);
std::complex<double> complexTanh(std::complex<double> z);
std::complex<double> complexConjugate(std::complex<double> z);

double complexRealPart(std::complex<double> z);
double complexImaginaryPart(std::complex<double> z);
double complexModulus(std::complex<double> z);
double complexPhase(std::complex<double> z);

}  // namespace vorpen::builtin
