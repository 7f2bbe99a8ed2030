// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/scalar_functions.h"

#include <gsl/gsl_cdf.h>
#include <gsl/gsl_mode.h>
#include <gsl/gsl_sf_airy.h>
#include <gsl/gsl_sf_bessel.h>
#include <gsl/gsl_sf_zeta.h>

#include <bit>
#include <cmath>

#include "numerics/gsl_errors.h"

namespace vorpen {
namespace {

constexpr double startAiryPrecision = 1e-09;

gsl_mode_t airyMode() {
    const double mode = airyPrecision();
    if (mode >= GSL_PREC_APPROX) return GSL_PREC_APPROX;
    return mode >= GSL_PREC_SINGLE ? GSL_PREC_SINGLE : GSL_PREC_DOUBLE;
}

}  // namespace

double log2Raised(double x) { return std::log(x) * 1.4426950408889634 + 2.220446049250313e-16; }

double sign(double x) {
    if (x > 0) return 1.0;
    return x == 0 ? 0.0 : -1.0;
}

double fstep(double x) {
    if (x > 0) return 1.0;
    return x == 0 ? 0.5 : 0.0;
}

double tophat(double x) {
    if (x > 0 && x < 1) return 1.0;
    return x == 0 || x == 1 ? 0.5 : 0.0;
}

double sinc(double x) { return x == 0 ? 1.0 : std::sin(x) / x; }

double phase(double x) { return std::atan2(0.0, x); }

double nanFlag(double x) { return x != x ? 1.0 : 0.0; }

double besselJ0(double x) {
    installGslErrorHandler();
    return gsl_sf_bessel_J0(x);
}

double besselJ1(double x) {
    installGslErrorHandler();
    return gsl_sf_bessel_J1(x);
}

double& airyPrecision() {
    static double precision = startAiryPrecision;
    return precision;
}

double airy(double x) {
    installGslErrorHandler();
    return gsl_sf_airy_Ai(x, airyMode());
}

double erfinv(double probability) {
    installGslErrorHandler();
    return gsl_cdf_gaussian_Pinv(probability, 1.0);
}

double zeta(double x) {
    // GSL answers an overflow.
    if (std::isnan(x)) return x;
    installGslErrorHandler();
    return gsl_sf_zeta(x);
}

std::int32_t bitWeight(std::int32_t n) { return std::popcount(static_cast<std::uint32_t>(n)); }

std::int32_t lowerCase(std::int32_t code) { return code >= 'A' && code <= 'Z' ? code - 'A' + 'a' : code; }

}  // namespace vorpen
