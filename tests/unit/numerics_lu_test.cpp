// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/lu.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/errors.h"
#include "base/output.h"

namespace vorpen {
namespace {

using Numbers = std::vector<double>;

class RecordedOutput final : public Output {
public:
    RecordedOutput() { setOutput(this); }
    ~RecordedOutput() override { setOutput(nullptr); }
    void print(std::string_view text, bool, PrintMode) override { lines.emplace_back(text); }
    std::vector<std::string> lines;
};

std::string failureOf(LuForm& form, const Numbers& matrix, std::size_t rows) {
    try {
        form.factorise(matrix, rows);
    } catch (const RuntimeError& error) {
        return error.message;
    }
    return "";
}

Numbers hilbert(std::size_t n) {
    Numbers h(n * n);
    for (std::size_t j = 0; j < n; ++j)
        for (std::size_t i = 0; i < n; ++i) h[i + j * n] = 1.0 / static_cast<double>(i + j + 1);
    return h;
}

Numbers randomMatrix(std::size_t n, unsigned seed) {
    std::mt19937 bits(seed);
    std::uniform_real_distribution<double> element(-1, 1);
    Numbers m(n * n);
    for (double& v : m) v = element(bits);
    return m;
}

Numbers inverseOf(const LuForm& form) {
    Numbers inverse(form.order() * form.order(), 7.0);
    form.inverse(inverse);
    return inverse;
}

TEST(LuForm, KeepsTheFactorsAndTheExchanges) {
    LuForm form;
    EXPECT_EQ(form.factorise(Numbers{2, 1, 1, 3}, 2), 1);
    EXPECT_EQ(Numbers(form.factors().begin(), form.factors().end()), (Numbers{2, 0.5, 1, 2.5}));
    EXPECT_EQ(form.permutation()[0], 0);
    EXPECT_EQ(form.permutation()[1], 1);
    EXPECT_EQ(form.factorise(Numbers{0, 1, 1, 0}, 2), -1);
    EXPECT_EQ(form.permutation()[0], 1);
    EXPECT_EQ(form.parity(), -1);
    EXPECT_EQ(form.order(), 2u);
}

TEST(LuForm, ThePivotIsTheLargestInRelationToItsRow) {
    LuForm form;
    // 10 is small in its row of 1000, so the 1 below is taken.
    EXPECT_EQ(form.factorise(Numbers{10, 1, 1000, 2}, 2), -1);
    EXPECT_EQ(form.permutation()[0], 1);
    // Equal in relation to their rows: the first stands.
    EXPECT_EQ(form.factorise(Numbers{1, 2, 2, 8}, 2), 1);
    EXPECT_EQ(form.factorise(Numbers{1, 4, 2, 8}, 2), 1);
}

TEST(LuForm, AnExchangedRowTakesItsScaleWithIt) {
    // Step 1 exchanges rows 1 and 3; row 3 is then the old row 1 with its
    // scale of 1/1000, so that step 2 leaves row 2 in place.
    LuForm form;
    form.factorise(Numbers{1, 1, 1, 1000, 2, 0, 0, 0, 1}, 3);
    EXPECT_EQ(form.permutation()[0], 2);
    EXPECT_EQ(form.permutation()[1], 1);
}

TEST(LuForm, Determinants) {
    LuForm form;
    form.factorise(Numbers{2, 0, 0, 4}, 2);
    EXPECT_EQ(form.determinant(), 8);
    form.factorise(Numbers{2, 4, 1, 8}, 2);
    EXPECT_EQ(form.determinant(), 12);
    form.factorise(Numbers{1, 0, 0, 0, 1, 0, 0, 0, 1}, 3);
    EXPECT_EQ(form.determinant(), 1);
    form.factorise(Numbers{0, 1, 1, 0}, 2);
    EXPECT_EQ(form.determinant(), -1);
}

// Determinants and inverses of Hilbert matrices: M.-D. Choi, Tricks or Treats
// with the Hilbert Matrix, American Mathematical Monthly 90, 1983.
TEST(LuForm, DeterminantsOfHilbertMatrices) {
    LuForm form;
    const double inverseDeterminants[] = {1, 12, 2160, 6048000, 266716800000.0};
    for (std::size_t n = 1; n <= 5; ++n) {
        form.factorise(hilbert(n), n);
        EXPECT_NEAR(form.determinant() * inverseDeterminants[n - 1], 1, 1e-10) << n;
    }
}

TEST(LuForm, InversesOfHilbertMatrices) {
    LuForm form;
    form.factorise(hilbert(3), 3);
    const Numbers expected = {9, -36, 30, -36, 192, -180, 30, -180, 180};
    const Numbers inverse = inverseOf(form);
    for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(inverse[i], expected[i], 1e-11);
    form.factorise(hilbert(6), 6);
    EXPECT_NEAR(inverseOf(form)[0], 36, 1e-7);
    EXPECT_NEAR(inverseOf(form)[3 + 3 * 6], 3628800, 0.1);
}

TEST(LuForm, SolvesForEachColumn) {
    LuForm form;
    form.factorise(Numbers{1, 3, 2, 4}, 2);
    Numbers b = {5, 6, 1, 0};
    form.solve(b);
    const Numbers expected = {-4, 4.5, -2, 1.5};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(b[i], expected[i], 1e-14);
}

TEST(LuForm, SolvesWithExchangedRows) {
    LuForm form;
    form.factorise(Numbers{0, 1, 3, 2, 0, 1, 1, 1, 0}, 3);
    Numbers b = {7, 4, 5};
    form.solve(b);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(b[i], static_cast<double>(i + 1), 1e-14);
    Numbers zero = {0, 0, 0};
    form.solve(zero);
    EXPECT_EQ(zero, (Numbers{0, 0, 0}));
}

TEST(LuForm, ASingularMatrixGivesAWarningAndATinyPivot) {
    RecordedOutput recorded;
    LuForm form;
    form.factorise(Numbers{1, 2, 2, 4}, 2);
    EXPECT_EQ(recorded.lines, (std::vector<std::string>{"matrix is singular or close to singular"}));
    EXPECT_EQ(form.determinant(), 1e-40);
    Numbers b = {1, 1};
    form.solve(b);
    EXPECT_GT(std::fabs(b[0]), 1e30);
}

TEST(LuForm, EachPivotOfZeroGivesItsWarning) {
    RecordedOutput recorded;
    LuForm form;
    form.factorise(Numbers(9, 1.0), 3);
    EXPECT_EQ(recorded.lines.size(), 2u);
}

TEST(LuForm, RefusesWhatHasNoFactorsAndKeepsTheFormerOnes) {
    LuForm form;
    form.factorise(Numbers{2, 0, 0, 4}, 2);
    EXPECT_EQ(failureOf(form, Numbers(6, 1.0), 2), "matrix must be square");
    EXPECT_EQ(failureOf(form, Numbers{1, 0, 2, 0}, 2), "LUform: matrix has a row of zeros");
    EXPECT_EQ(form.determinant(), 8);
}

TEST(LuForm, NotANumberFlowsThrough) {
    LuForm form;
    form.factorise(Numbers{std::nan(""), std::nan(""), 1, 2}, 2);
    EXPECT_TRUE(std::isnan(form.determinant()));
    form.factorise(Numbers(16, std::nan("")), 4);
    EXPECT_TRUE(std::isnan(inverseOf(form)[5]));
    form.factorise(Numbers(16, HUGE_VAL), 4);
}

TEST(LuForm, IsEmptyBeforeTheFirstMatrix) {
    LuForm form;
    EXPECT_EQ(form.order(), 0u);
    EXPECT_TRUE(inverseOf(form).empty());
    Numbers b = {1, 2};
    form.solve(b);
    EXPECT_EQ(b, (Numbers{1, 2}));
    EXPECT_EQ(form.factorise({}, 0), 1);
    EXPECT_EQ(form.determinant(), 1);
}

TEST(LuForm, TheStoredOneIsReplacedWhole) {
    storedLuForm().factorise(Numbers{2, 0, 0, 4}, 2);
    storedLuForm().factorise(Numbers{3}, 1);
    EXPECT_EQ(storedLuForm().order(), 1u);
    EXPECT_EQ(storedLuForm().determinant(), 3);
    storedLuForm() = LuForm();
    EXPECT_EQ(storedLuForm().order(), 0u);
}

/// The factors by the plain method, step after step.
Numbers plainFactors(Numbers a, std::size_t n) {
    Numbers scale(n, 0.0);
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) scale[i] = std::max(scale[i], std::fabs(a[i + j * n]));
        scale[i] = 1 / scale[i];
    }
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t p = k;
        for (std::size_t i = k; i < n; ++i)
            if (scale[i] * std::fabs(a[i + k * n]) > scale[p] * std::fabs(a[p + k * n])) p = i;
        if (p != k)
            for (std::size_t j = 0; j < n; ++j) std::swap(a[p + j * n], a[k + j * n]);
        if (p != k) scale[p] = scale[k];
        for (std::size_t i = k + 1; i < n; ++i) {
            a[i + k * n] = a[i + k * n] / a[k + k * n];
            for (std::size_t j = k + 1; j < n; ++j) a[i + j * n] -= a[i + k * n] * a[k + j * n];
        }
    }
    return a;
}

TEST(LuForm, SmallMatricesHaveTheBitsOfThePlainMethod) {
    LuForm form;
    for (const std::size_t n : {1, 2, 5, 31, 64, 100, 127}) {
        const Numbers matrix = randomMatrix(n, static_cast<unsigned>(n));
        form.factorise(matrix, n);
        EXPECT_EQ(Numbers(form.factors().begin(), form.factors().end()), plainFactors(matrix, n)) << n;
    }
}

TEST(LuForm, LargeMatricesHaveTheFactorsOfThePlainMethodUpToRounding) {
    LuForm form;
    for (const std::size_t n : {128, 129, 192, 200}) {
        const Numbers matrix = randomMatrix(n, static_cast<unsigned>(n));
        form.factorise(matrix, n);
        const Numbers plain = plainFactors(matrix, n);
        double largest = 0;
        for (std::size_t i = 0; i < n * n; ++i)
            largest = std::max(largest, std::fabs(form.factors()[i] - plain[i]));
        EXPECT_LT(largest, 1e-10) << n;
    }
}

TEST(LuForm, LargeSystemsAreSolved) {
    constexpr std::size_t n = 200;
    const Numbers matrix = randomMatrix(n, 7);
    LuForm form;
    form.factorise(matrix, n);
    const Numbers inverse = inverseOf(form);
    for (std::size_t i = 0; i < n; i += 17)
        for (std::size_t j = 0; j < n; j += 13) {
            double sum = 0;
            for (std::size_t k = 0; k < n; ++k) sum += matrix[i + k * n] * inverse[k + j * n];
            EXPECT_NEAR(sum, i == j ? 1 : 0, 1e-11);
        }
    Numbers b(n, 1.0);
    form.solve(b);
    double residual = 0;
    for (std::size_t i = 0; i < n; ++i) {
        double sum = -1;
        for (std::size_t k = 0; k < n; ++k) sum += matrix[i + k * n] * b[k];
        residual = std::max(residual, std::fabs(sum));
    }
    EXPECT_LT(residual, 1e-11);
}

}  // namespace
}  // namespace vorpen
