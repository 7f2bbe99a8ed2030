// SPDX-License-Identifier: GPL-3.0-or-later
// The numerical methods beside the bare call of the library that does the work:
// what our way to it costs.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <gsl/gsl_eigen.h>
#include <gsl/gsl_fft_complex.h>
#include <gsl/gsl_integration.h>
#include <gsl/gsl_odeiv2.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "base/blas_loader.h"
#include "numerics/fourier.h"
#include "numerics/initial_value.h"
#include "numerics/lu.h"
#include "numerics/quadrature.h"
#include "numerics/symmetric_eigen.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

Numbers randomNumbers(std::size_t n) {
    std::mt19937_64 bits(1);
    std::uniform_real_distribution<double> uniform;
    Numbers v(n);
    for (double& x : v) x = uniform(bits);
    return v;
}

Numbers symmetricMatrix(std::size_t n) {
    Numbers m = randomNumbers(n * n);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < j; ++i) m[i + j * n] = m[j + i * n];
    return m;
}

// ---- triangular factors

using Getrf = void (*)(const int*, const int*, double*, const int*, int*, int*);
using Getri = void (*)(const int*, double*, const int*, const int*, double*, const int*, int*);

template <class Routine>
Routine lapack(const char* name) {
    return reinterpret_cast<Routine>(dlsym(dlopen("libopenblas.so.0", RTLD_NOW | RTLD_LOCAL), name));
}

void factoriseOurs(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const Numbers matrix = randomNumbers(n * n);
    LuForm lu;
    for (auto _ : state) benchmark::DoNotOptimize(lu.factorise(matrix, n));
}

void factoriseLapack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Numbers matrix = randomNumbers(static_cast<std::size_t>(n) * n);
    const auto getrf = lapack<Getrf>("dgetrf_");
    std::vector<int> pivots(n);
    Numbers work(matrix.size());
    int info = 0;
    for (auto _ : state) {
        work = matrix;
        getrf(&n, &n, work.data(), &n, pivots.data(), &info);
    }
}

void inverseOurs(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const Numbers matrix = randomNumbers(n * n);
    Numbers result(n * n);
    LuForm lu;
    for (auto _ : state) {
        lu.factorise(matrix, n);
        lu.inverse(result);
    }
}

void inverseLapack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0)), room = 64 * n;
    const Numbers matrix = randomNumbers(static_cast<std::size_t>(n) * n);
    const auto getrf = lapack<Getrf>("dgetrf_");
    const auto getri = lapack<Getri>("dgetri_");
    std::vector<int> pivots(n);
    Numbers result(matrix.size()), work(room);
    int info = 0;
    for (auto _ : state) {
        result = matrix;
        getrf(&n, &n, result.data(), &n, pivots.data(), &info);
        getri(&n, result.data(), &n, pivots.data(), work.data(), &room, &info);
    }
}

// ---- eigenvalues

void eigenvaluesOurs(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const Numbers matrix = symmetricMatrix(n);
    for (auto _ : state) {
        Numbers work = matrix;
        benchmark::DoNotOptimize(symmetricEigenvalues(work, n));
    }
}

void eigenvaluesGsl(benchmark::State& state) {
    const auto n = static_cast<std::size_t>(state.range(0));
    const Numbers matrix = symmetricMatrix(n);
    requireBlas();
    const OneBlasThread guard;
    gsl_eigen_symm_workspace* const workspace = gsl_eigen_symm_alloc(n);
    Numbers values(n);
    gsl_vector_view eval = gsl_vector_view_array(values.data(), n);
    for (auto _ : state) {
        Numbers work = matrix;
        gsl_matrix_view a = gsl_matrix_view_array(work.data(), n, n);
        gsl_eigen_symm(&a.matrix, &eval.vector, workspace);
    }
    gsl_eigen_symm_free(workspace);
}

// ---- transforms

void transformOurs(benchmark::State& state) {
    std::vector<std::complex<double>> z(static_cast<std::size_t>(state.range(0)), 1.0);
    for (auto _ : state) {
        z.assign(z.size(), 1.0);
        fourierTransform(z, FourierDirection::forward);
    }
}

void transformGsl(benchmark::State& state) {
    Numbers z(2 * static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        z.assign(z.size(), 1.0);
        gsl_fft_complex_radix2_forward(z.data(), 1, z.size() / 2);
    }
}

// ---- integrals and differential equations

double wave(double x) { return std::sin(x) / x; }

void integralOurs(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(integrate(wave, 0, 50, 1e-9));
}

void integralGsl(benchmark::State& state) {
    const gsl_function f = {[](double x, void*) { return wave(x); }, nullptr};
    double result = 0, error = 0;
    std::size_t evaluations = 0;
    for (auto _ : state) {
        auto* const workspace = gsl_integration_cquad_workspace_alloc(500);
        gsl_integration_cquad(&f, 0, 50, 1e-9, 1e-7, workspace, &result, &error, &evaluations);
        gsl_integration_cquad_workspace_free(workspace);
    }
}

void vanDerPol(const double* y, double* d) {
    d[0] = y[1];
    d[1] = 10 * (1 - y[0] * y[0]) * y[1] - y[0];
}

Numbers outputPoints() {
    Numbers x(1001);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = 0.1 * static_cast<double>(i);
    return x;
}

void equationsOurs(benchmark::State& state) {
    const Numbers x = outputPoints();
    const auto f = [](std::span<const double> y, std::span<double> d) { vanDerPol(y.data(), d.data()); };
    const auto jacobian = [](std::span<const double>, std::span<double>, std::span<double>) {};
    Numbers states(2 * x.size());
    states[0] = 2;
    for (auto _ : state) solveInitialValueProblem({f, jacobian}, x, states);
}

void equationsGsl(benchmark::State& state) {
    const Numbers x = outputPoints();
    const auto f = [](double, const double* y, double* d, void*) {
        vanDerPol(y, d);
        return 0;
    };
    const gsl_odeiv2_system system = {f, nullptr, 2, nullptr};
    for (auto _ : state) {
        auto* const driver = gsl_odeiv2_driver_alloc_y_new(&system, gsl_odeiv2_step_rk8pd, 1e-6, 1e-6, 0);
        double t = 0, y[2] = {2, 0};
        for (const double next : x) gsl_odeiv2_driver_apply(driver, &t, next, y);
        gsl_odeiv2_driver_free(driver);
    }
}

BENCHMARK(factoriseOurs)->Arg(100)->Arg(1000)->UseRealTime();
BENCHMARK(factoriseLapack)->Arg(100)->Arg(1000)->UseRealTime();
BENCHMARK(inverseOurs)->Arg(500)->UseRealTime();
BENCHMARK(inverseLapack)->Arg(500)->UseRealTime();
BENCHMARK(eigenvaluesOurs)->Arg(400);
BENCHMARK(eigenvaluesGsl)->Arg(400);
BENCHMARK(transformOurs)->Arg(1 << 20);
BENCHMARK(transformGsl)->Arg(1 << 20);
BENCHMARK(integralOurs);
BENCHMARK(integralGsl);
BENCHMARK(equationsOurs);
BENCHMARK(equationsGsl);

}  // namespace
}  // namespace vorpen
