// SPDX-License-Identifier: GPL-3.0-or-later
// Long work of one function looks whether it is to go on.

#include <algorithm>
#include <numeric>
#include <vector>

#include "base/errors.h"
#include "base/interrupt.h"
#include "builtins/array_bodies.h"
#include "builtins/ordering.h"
#include "builtins/random_bodies.h"
#include "builtins/set_bodies.h"
#include "display/string_form.h"
#include "numerics/lu.h"

namespace vorpen {
namespace {

class Interrupt : public testing::Test {
protected:
    ~Interrupt() override { forgetInterrupt(); }

    /// Work that ends with the interrupt and not before.
    template <class Work>
    static void expectInterrupted(Work work) {
        requestInterrupt();
        EXPECT_THROW(work(), RuntimeError);
        forgetInterrupt();
    }
    static std::vector<double> falling(std::size_t n) {
        std::vector<double> items(n);
        std::iota(items.rbegin(), items.rend(), 0.0);
        return items;
    }
};

TEST_F(Interrupt, aSortLeavesTheItemsAsTheyWere) {
    std::vector<double> items = falling(5000);
    const std::vector<double> before = items;
    expectInterrupted([&] { sortAscending(items); });
    EXPECT_EQ(items, before);
    std::vector<int> integers(before.begin(), before.end());
    const std::vector<int> integersBefore = integers;
    expectInterrupted([&] { sortAscending(integers); });
    EXPECT_EQ(integers, integersBefore);
    expectInterrupted([&] { (void)sortingOrder(items); });
}

TEST_F(Interrupt, afterAFactorisationThereAreNoFactors) {
    constexpr std::size_t n = 200;
    std::vector<double> matrix(n * n, 1.0);
    for (std::size_t i = 0; i < n; ++i) matrix[i + i * n] = 5;
    LuForm form;
    form.factorise(matrix, n);
    EXPECT_EQ(form.order(), n);
    std::vector<double> b(n * 2, 1.0), inverse(n * n);
    expectInterrupted([&] { form.solve(b); });
    expectInterrupted([&] { form.inverse(inverse); });
    expectInterrupted([&] { form.factorise(matrix, n); });
    EXPECT_EQ(form.order(), 0u);
    form.factorise(matrix, n);
    EXPECT_EQ(form.order(), n);
}

TEST_F(Interrupt, arraysThatAreMadeOrShown) {
    DoubleValue sizes, out;
    sizes.assignDouble(5000);
    expectInterrupted([&] { builtin::uniformArray(sizes, out); });
    builtin::uniformArray(sizes, out);
    DoubleValue sums;
    expectInterrupted([&] { builtin::runningSum(out, sums); });
    expectInterrupted([&] { (void)stringForm(out, 9, 0, 0, 0); });
}

TEST(Ordering, integersOfEverySizeAndSign) {
    for (const std::size_t n : {10u, 5000u}) {
        std::vector<int> items(n);
        unsigned state = 1;
        for (int& item : items) item = static_cast<int>(state = state * 1664525u + 1013904223u);
        items[1] = INT32_MIN, items[2] = INT32_MAX, items[3] = 0, items[4] = -1, items[5] = items[6];
        std::vector<int> expected = items;
        std::ranges::sort(expected);
        sortAscending(items);
        EXPECT_EQ(items, expected);
    }
}

}  // namespace
}  // namespace vorpen
