// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/scalar_bodies.h"

#include <math.h>

namespace vorpen::builtin {

using Complex = std::complex<double>;

double realPart(double x) { return x; }

double imaginaryPart(double) { return 0; }

double logGamma(double x) {
    int sign = 0;
    return ::lgamma_r(x, &sign);
}

Complex complexSqrt(Complex z) { return std::sqrt(z); }
Complex complexExp(Complex z) { return std::exp(z); }
Complex complexLog(Complex z) { return std::log(z); }
Complex complexSin(Complex z) { return std::sin(z); }
Complex complexCos(Complex z) { return std::cos(z); }
Complex complexTan(Complex z) { return std::tan(z); }
Complex complexSinh(Complex z) { return std::sinh(z); }
Complex complexCosh(Complex z) { return std::cosh(z); }
Complex complexTanh(Complex z) { return std::tanh(z); }
Complex complexConjugate(Complex z) { return std::conj(z); }

double complexRealPart(Complex z) { return z.real(); }
double complexImaginaryPart(Complex z) { return z.imag(); }
double complexModulus(Complex z) { return std::abs(z); }
double complexPhase(Complex z) { return std::arg(z); }

}  // namespace vorpen::builtin
