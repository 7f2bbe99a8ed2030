// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -lgsl -lgslcblas
// The routines of the library with functions in C++.
#include <gsl/gsl_integration.h>
#include <gsl/gsl_multifit_nlinear.h>
#include <gsl/gsl_odeiv2.h>

#include "../timed.h"

constexpr double mu = 10;

double wave(double x, void*) { return x == 0 ? 1 : std::sin(x) / x; }

int vanDerPol(double, const double* y, double* d, void*) {
    d[0] = y[1];
    d[1] = mu * (1 - y[0] * y[0]) * y[1] - y[0];
    return GSL_SUCCESS;
}

/// A zero between a and b (C. J. F. Ridders, "A new algorithm for computing a
/// single root of a real continuous function", IEEE Transactions on Circuits
/// and Systems 26, 1979).
template <class F>
double zeroOf(F f, double a, double b) {
    double fa = f(a), fb = f(b), last = a;
    for (int k = 0; k < 60; ++k) {
        const double middle = (a + b) / 2, fm = f(middle);
        const double x = middle + (middle - a) * (fa > fb ? 1 : -1) * fm / std::sqrt(fm * fm - fa * fb);
        const double fx = f(x);
        if (fx == 0 || std::fabs(x - last) < 1e-15) return x;
        last = x;
        if ((fm < 0) != (fx < 0)) {
            a = middle, fa = fm, b = x, fb = fx;
        } else if ((fa < 0) != (fx < 0)) {
            b = x, fb = fx;
        } else {
            a = x, fa = fx;
        }
    }
    return last;
}

struct Points {
    Numbers x, y;
};

double model(const gsl_vector* p, double x) {
    const double u = (x - gsl_vector_get(p, 2)) / gsl_vector_get(p, 1);
    return gsl_vector_get(p, 0) * std::exp(-0.5 * u * u) + gsl_vector_get(p, 3);
}

int residuals(const gsl_vector* p, void* data, gsl_vector* out) {
    const auto& points = *static_cast<const Points*>(data);
    for (std::size_t k = 0; k < points.x.size(); ++k)
        gsl_vector_set(out, k, model(p, points.x[k]) - points.y[k]);
    return GSL_SUCCESS;
}

int main() {
    const int integrals = 1000;  // check: 2
    const int roots = 100000;    // check: 2
    double z = 0, error = 0;
    gsl_function f{wave, nullptr};
    timed("integ", 5, [&] {
        for (int k = 0; k < integrals; ++k) {
            auto* const workspace = gsl_integration_cquad_workspace_alloc(500);
            gsl_integration_cquad(&f, 0, 50, 1e-9, 1e-7, workspace, &z, &error, nullptr);
            gsl_integration_cquad_workspace_free(workspace);
        }
    });
    result("integ", z);
    timed("fzero", 5, [&] {
        for (int k = 0; k < roots; ++k) use(z = zeroOf([](double x) { return std::cos(x); }, 1, 2));
    });
    result("fzero", z);
    double at = 0;
    timed("ode", 7, [&] {
        gsl_odeiv2_system system{vanDerPol, nullptr, 2, nullptr};
        auto* const driver = gsl_odeiv2_driver_alloc_y_new(&system, gsl_odeiv2_step_rk8pd, 1e-6, 1e-6, 0);
        double t = 0, y[2] = {2, 0};
        for (int k = 1; k <= 1000; ++k) {
            gsl_odeiv2_driver_apply(driver, &t, 0.1 * k, y);
            if (k == 99) at = y[0];
        }
        gsl_odeiv2_driver_free(driver);
    });
    result("ode", at);
    Points points{Numbers(1000), fractions(1000)};
    for (std::size_t k = 0; k < 1000; ++k) {
        const double x = points.x[k] = static_cast<double>(k) * 10 / 999, u = (x - 5) / 1.2;
        points.y[k] = 3 * std::exp(-0.5 * u * u) + 0.5 + (points.y[k] - 0.5) * 0.3;
    }
    double height = 0;
    timed("lsfit", 7, [&] {
        gsl_multifit_nlinear_fdf fit{};
        fit.f = residuals;
        fit.n = 1000;
        fit.p = 4;
        fit.params = &points;
        const gsl_multifit_nlinear_parameters parameters = gsl_multifit_nlinear_default_parameters();
        auto* const workspace = gsl_multifit_nlinear_alloc(gsl_multifit_nlinear_trust, &parameters, 1000, 4);
        double start[] = {2, 1, 4.5, 0};
        const gsl_vector_view p = gsl_vector_view_array(start, 4);
        gsl_multifit_nlinear_init(&p.vector, &fit, workspace);
        int info = 0;
        gsl_multifit_nlinear_driver(100, 1e-6, 1e-6, 1e-6, nullptr, nullptr, &info, workspace);
        height = gsl_vector_get(workspace->x, 0);
        gsl_multifit_nlinear_free(workspace);
    });
    result("lsfit", height);
}
