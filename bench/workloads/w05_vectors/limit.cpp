// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -ffp-contract=off -mprefer-vector-width=512
#include "operands.h"

int main() {
    const std::size_t n = 10000000;  // check: 1000
    const int times = 100000;        // check: 10
    const Operands o(n);
    const Numbers& x = o.x;
    Numbers y(n);
    timed("fma", 5, [&] {
        for (std::size_t k = 0; k < n; ++k) y[k] = o.a[k] + o.b[k] * o.p[k] - o.d[k] / o.q[k];
    });
    result("fma", sum(y));
    double kept = 0;
    timed("mask", 5, [&] {
        std::size_t count = 0;
        for (std::size_t k = 0; k < n; ++k) {
            y[count] = x[k];
            count += x[k] > 0.5 && x[k] < 0.75;
        }
        kept = static_cast<double>(count);
    });
    double selected = 0;
    for (std::size_t k = 0; k < static_cast<std::size_t>(kept); ++k) selected += y[k];
    result("mask", selected);
    double s = 0;
    timed("sum", 5, [&] { use(s = sum(x)); });
    result("sum", s);
    timed("mean", 5, [&] { use(s = sum(x) / static_cast<double>(n)); });
    result("mean", s);
    timed("max", 5, [&] {
        double lanes[64];
        for (double& lane : lanes) lane = x[0];
        const double* at = x.data();
        for (const double* const last = at + n / 64 * 64; at != last; at += 64)
            for (std::size_t i = 0; i < 64; ++i) lanes[i] = at[i] > lanes[i] ? at[i] : lanes[i];
        for (; at != x.data() + n; ++at) lanes[0] = *at > lanes[0] ? *at : lanes[0];
        s = *std::max_element(lanes, lanes + 64);
    });
    result("max", s);
    timed("cumsum", 5, [&] {
        double total = 0;
        for (std::size_t k = 0; k < n; ++k) y[k] = total += x[k];
    });
    result("cumsum", y[n - 1]);
    timed("small", 5, [&] {
        for (int i = 0; i < times; ++i) {
            for (std::size_t k = 0; k < 100; ++k) y[k] = o.a[k] + o.b[k] * o.p[k] - o.d[k] / o.q[k];
            use(y);
        }
    });
    y.resize(100);
    result("small", sum(y));
}
