// SPDX-License-Identifier: GPL-3.0-or-later

// Results with a closed form or a published value, and how many digits of them
// are right. Each row has the least number that is taken for good. With
// VORPEN_ACCURACY set the rows are printed as the tables of docs/accuracy.md.

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numerics/fourier.h"
#include "numerics/initial_value.h"
#include "numerics/lu.h"
#include "numerics/quadrature.h"
#include "numerics/symmetric_eigen.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;
using std::numbers::pi;

constexpr double infinity = HUGE_VAL;

/// Correct digits of an array in relation to its largest element.
double digits(const Numbers& computed, const Numbers& exact) {
    double error = 0, size = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        error = std::max(error, std::fabs(computed[i] - exact[i]));
        size = std::max(size, std::fabs(exact[i]));
    }
    return error == 0 ? 16 : std::min(16.0, -std::log10(error / size));
}

void heading(const char* title) {
    if (!std::getenv("VORPEN_ACCURACY")) return;
    std::printf("\n### %s\n\n| problem | reference value | correct digits |\n|---|---|---|\n", title);
}

void row(const char* problem, const char* source, const Numbers& computed, const Numbers& exact,
         double atLeast) {
    const double found = digits(computed, exact);
    EXPECT_GE(found, atLeast) << problem;
    if (std::getenv("VORPEN_ACCURACY")) std::printf("| %s | %s | %.1f |\n", problem, source, found);
}

// ---- integrals

struct IntegralProblem {
    const char* problem;
    double (*f)(double);
    double a, b, exact;
    const char* source;
    double atLeast;
};

TEST(Accuracy, OfInteg) {
    heading("`integ`, tolerance 1e-9");
    const IntegralProblem problems[] = {
        {"sin x, 0 to pi", [](double x) { return std::sin(x); }, 0, pi, 2, "2", 14},
        {"4/(1+x^2), 0 to 1", [](double x) { return 4 / (1 + x * x); }, 0, 1, pi, "pi", 14},
        {"x^(1/2), 0 to 1", [](double x) { return std::sqrt(x); }, 0, 1, 2.0 / 3, "2/3", 9},
        {"x^(-1/2), 0 to 1", [](double x) { return 1 / std::sqrt(x); }, 0, 1, 2, "2", 7},
        {"ln x, 0 to 1", [](double x) { return std::log(x); }, 0, 1, -1, "-1", 8},
        {"abs(x-1/3), -1 to 1", [](double x) { return std::fabs(x - 1.0 / 3); }, -1, 1, 10.0 / 9, "10/9", 7},
        {"sin(x)/x, 0 to 50", [](double x) { return std::sin(x) / x; }, 0, 50, 1.5516170724859358947,
         "Si(50), by its power series in 60 digits", 11},
        {"exp(-x), 0 to inf", [](double x) { return std::exp(-x); }, 0, infinity, 1, "1", 9},
        {"exp(-x^2), 0 to inf", [](double x) { return std::exp(-x * x); }, 0, infinity, std::sqrt(pi) / 2,
         "sqrt(pi)/2", 9},
        {"exp(x), -inf to 0", [](double x) { return std::exp(x); }, -infinity, 0, 1, "1", 9},
        {"1/(1+x^2), -inf to inf", [](double x) { return 1 / (1 + x * x); }, -infinity, infinity, pi, "pi",
         9},
        {"x^3/(exp(x)-1), 0 to inf", [](double x) { return x > 700 ? 0 : x * x * x / std::expm1(x); }, 0,
         infinity, pi * pi * pi * pi / 15, "pi^4/15 (Abramowitz and Stegun 1964, 27.1.3)", 9},
    };
    for (const IntegralProblem& p : problems)
        row(p.problem, p.source, {integrate(p.f, p.a, p.b, 1e-9)}, {p.exact}, p.atLeast);
}

TEST(Accuracy, OfQinteg) {
    heading("`qinteg`, tolerance 1e-9");
    const IntegralProblem problems[] = {
        {"sin x, 0 to pi", [](double x) { return std::sin(x); }, 0, pi, 2, "2", 14},
        {"4/(1+x^2), 0 to 1", [](double x) { return 4 / (1 + x * x); }, 0, 1, pi, "pi", 14},
        {"x^(1/2), 0 to 1", [](double x) { return std::sqrt(x); }, 0, 1, 2.0 / 3, "2/3", 8},
        {"ln x, 0 to 1", [](double x) { return std::log(x); }, 0, 1, -1, "-1", 4},
        {"sin(x)/x, 0 to 50", [](double x) { return std::sin(x) / x; }, 0, 50, 1.5516170724859358947,
         "Si(50)", 12},
    };
    for (const IntegralProblem& p : problems) {
        std::vector<double> y(gaussPoints);
        const auto f = [&](std::span<const double, gaussPoints> x) {
            std::transform(x.begin(), x.end(), y.begin(), p.f);
            return std::span<const double, gaussPoints>(y);
        };
        row(p.problem, p.source, {integrateSmooth(f, p.a, p.b, 1e-9).value}, {p.exact}, p.atLeast);
    }
}

// ---- differential equations

constexpr auto noJacobian = [](std::span<const double>, std::span<double>, std::span<double>) {};

/// The last state of a run over the points.
template <class Derivatives>
Numbers lastState(Derivatives derivatives, const Numbers& x, const Numbers& start) {
    Numbers states(start.size() * x.size());
    std::ranges::copy(start, states.begin());
    solveInitialValueProblem({derivatives, noJacobian}, x, states);
    return {states.end() - static_cast<std::ptrdiff_t>(start.size()), states.end()};
}

double lotkaVolterraInvariant(const Numbers& y) { return y[0] - std::log(y[0]) + y[1] - std::log(y[1]); }

TEST(Accuracy, OfOde) {
    heading("`ode`");
    const auto decay = [](std::span<const double> y, std::span<double> d) { d[0] = -y[0]; };
    row("y' = -y, y(0) = 1, y(1)", "1/e", lastState(decay, {0, 1}, {1}), {std::exp(-1)}, 8);
    const auto logistic = [](std::span<const double> y, std::span<double> d) { d[0] = y[0] * (1 - y[0]); };
    row("y' = y(1-y), y(0) = 1/10, y(10)", "1/(1+9/e^10)", lastState(logistic, {0, 10}, {0.1}),
        {1 / (1 + 9 * std::exp(-10))}, 6);
    const auto harmonic = [](std::span<const double> y, std::span<double> d) {
        d[0] = y[1];
        d[1] = -y[0];
    };
    row("harmonic oscillator after 1 period", "the start", lastState(harmonic, {0, 2 * pi}, {1, 0}), {1, 0},
        6);
    row("harmonic oscillator after 10 periods", "the start", lastState(harmonic, {0, 20 * pi}, {1, 0}),
        {1, 0}, 5);
    // Of the limit cycle: P. Amore, J. P. Boyd, F. M. Fernandez, "High order
    // analysis of the limit cycle of the van der Pol oscillator", Journal of
    // Mathematical Physics 59, 2018.
    const auto vanDerPol = [](std::span<const double> y, std::span<double> d) {
        d[0] = y[1];
        d[1] = (1 - y[0] * y[0]) * y[1] - y[0];
    };
    const double amplitude = 2.00861986087484313650940188;
    const double period = 6.6632868593231301896996820305;
    row("van der Pol, mu = 1, after 1 period", "amplitude and period by Amore, Boyd and Fernandez 2018",
        lastState(vanDerPol, {0, period}, {amplitude, 0}), {amplitude, 0}, 6);
    // V. Volterra, "Fluctuations in the abundance of a species considered
    // mathematically", Nature 118, 1926.
    const auto lotkaVolterra = [](std::span<const double> y, std::span<double> d) {
        d[0] = y[0] * (1 - y[1]);
        d[1] = y[1] * (y[0] - 1);
    };
    const Numbers start = {2, 1};
    const Numbers end = lastState(lotkaVolterra, {0, 5, 10, 15, 20}, start);
    row("Lotka-Volterra, x - ln x + y - ln y from t = 0 to 20", "constant (Volterra 1926)",
        {lotkaVolterraInvariant(end)}, {lotkaVolterraInvariant(start)}, 6);
}

// ---- linear algebra

Numbers hilbert(std::size_t n) {
    Numbers h(n * n);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) h[i + j * n] = 1.0 / static_cast<double>(i + j + 1);
    return h;
}

double binomial(std::size_t n, std::size_t k) {
    double result = 1;
    for (std::size_t i = 1; i <= k; ++i)
        result = result * static_cast<double>(n - k + i) / static_cast<double>(i);
    return result;
}

Numbers inverseOfHilbert(std::size_t n) {
    Numbers inverse(n * n);
    for (std::size_t i = 1; i <= n; ++i)
        for (std::size_t j = 1; j <= n; ++j) {
            const double b = binomial(i + j - 2, i - 1);
            inverse[i - 1 + (j - 1) * n] = ((i + j) % 2 ? -1.0 : 1.0) * static_cast<double>(i + j - 1) *
                                           binomial(n + i - 1, n - j) * binomial(n + j - 1, n - i) * b * b;
        }
    return inverse;
}

/// 2 on the diagonal and -1 beside it.
Numbers secondDifference(std::size_t n) {
    Numbers a(n * n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        a[i + i * n] = 2;
        if (i + 1 < n) a[i + 1 + i * n] = a[i + (i + 1) * n] = -1;
    }
    return a;
}

TEST(Accuracy, OfDeterminantsAndInverses) {
    heading("`det`, `inv`, `solve`");
    // M.-D. Choi, "Tricks or treats with the Hilbert matrix", American
    // Mathematical Monthly 90, 1983.
    const char* const source = "Choi 1983";
    LuForm lu;
    // Each order costs the condition of the matrix, about 1.5 digits.
    const struct {
        const char* problem;
        std::size_t n;
        double inverseOfDeterminant, determinantDigits;
        const char* inverseProblem;
        double inverseDigits;
    } problems[] = {
        {"det, Hilbert matrix of order 3", 3, 2160, 14, "inv, Hilbert matrix of order 3", 13},
        {"det, Hilbert matrix of order 5", 5, 266716800000.0, 11, "inv, Hilbert matrix of order 5", 11},
        {"det, Hilbert matrix of order 8", 8, 365356847125734485878112256000000.0, 7,
         "inv, Hilbert matrix of order 8", 6},
    };
    for (const auto& p : problems) {
        lu.factorise(hilbert(p.n), p.n);
        row(p.problem, source, {lu.determinant() * p.inverseOfDeterminant}, {1}, p.determinantDigits);
        Numbers inverse(p.n * p.n);
        lu.inverse(inverse);
        row(p.inverseProblem, source, inverse, inverseOfHilbert(p.n), p.inverseDigits);
    }
    for (const auto& [problem, n, atLeast] :
         {std::tuple("solve, second differences of x(n+1-x)/2, n = 100", 100u, 12.0),
          std::tuple("solve, second differences of x(n+1-x)/2, n = 1000", 1000u, 9.0)}) {
        lu.factorise(secondDifference(n), n);
        Numbers b(n, 1.0), exact(n);
        for (unsigned i = 1; i <= n; ++i) exact[i - 1] = 0.5 * i * (n + 1 - i);
        lu.solve(b);
        row(problem, "the polynomial", b, exact, atLeast);
    }
}

TEST(Accuracy, OfEigenvalues) {
    heading("`eigval`, `eigvec`, `eigvv`");
    // R. T. Gregory and D. L. Karney, A Collection of Matrices for Testing
    // Computational Algorithms, 1969.
    const char* const source = "2-2cos(k pi/(n+1)) (Gregory and Karney 1969)";
    for (const auto& [problem, vectorProblem, n] :
         {std::tuple("eigenvalues, second differences, n = 10", "eigenvectors, n = 10", 10u),
          std::tuple("eigenvalues, second differences, n = 100", "eigenvectors, n = 100", 100u)}) {
        Numbers matrix = secondDifference(n), exact(n), exactVectors(n * n);
        Numbers values = symmetricEigenvalues(matrix, n);
        std::ranges::sort(values);
        matrix = secondDifference(n);
        EigenSystem system = symmetricEigenSystem(matrix, n);
        for (unsigned k = 1; k <= n; ++k) {
            exact[k - 1] = 2 - 2 * std::cos(k * pi / (n + 1));
            double* const vector = system.vectors.data() + (k - 1) * n;
            const double sign = vector[0] < 0 ? -1 : 1;
            for (unsigned i = 1; i <= n; ++i) {
                vector[i - 1] *= sign;
                exactVectors[i - 1 + (k - 1) * n] = std::sqrt(2.0 / (n + 1)) * std::sin(i * k * pi / (n + 1));
            }
        }
        row(problem, source, values, exact, 14);
        row(problem, "the same, of `eigvv`", system.values, exact, 14);
        row(vectorProblem, "sqrt(2/(n+1)) sin(i k pi/(n+1))", system.vectors, exactVectors, 11);
    }
}

// ---- transforms

using ComplexNumbers = std::vector<std::complex<double>>;

Numbers parts(const ComplexNumbers& z) {
    Numbers result;
    for (const auto& x : z) result.insert(result.end(), {x.real(), x.imag()});
    return result;
}

/// exp(2 pi i f j/n) by reduced arguments.
ComplexNumbers tone(std::size_t n, std::size_t f) {
    ComplexNumbers z(n);
    for (std::size_t j = 0; j < n; ++j) {
        const double angle = 2 * pi * static_cast<double>(f * j % n) / static_cast<double>(n);
        z[j] = {std::cos(angle), std::sin(angle)};
    }
    return z;
}

ComplexNumbers line(std::size_t n, std::size_t f) {
    ComplexNumbers z(n);
    z[f] = static_cast<double>(n);
    return z;
}

TEST(Accuracy, OfTransforms) {
    heading("`fft`, `ifft`");
    const auto forward = FourierDirection::forward;
    const auto backward = FourierDirection::backward;
    for (const auto& [problem, n, f] :
         {std::tuple("fft of a pure tone, n = 16, frequency 3", 16u, 3u),
          std::tuple("fft of a pure tone, n = 1024, frequency 100", 1024u, 100u),
          std::tuple("fft of a pure tone, n = 2^20, frequency 12345", 1u << 20, 12345u)}) {
        ComplexNumbers z = tone(n, f);
        fourierTransform(z, forward);
        row(problem, "n at the frequency, 0 elsewhere", parts(z), parts(line(n, f)), n > 2000 ? 9 : 13);
        z = line(n, f);
        fourierTransform(z, backward);
        ComplexNumbers exact = tone(n, f);
        for (auto& x : exact) x *= static_cast<double>(n);
        row("ifft back to the tone", "n times the tone", parts(z), parts(exact), n > 2000 ? 9 : 13);
    }
}

}  // namespace
}  // namespace vorpen
