// SPDX-License-Identifier: GPL-3.0-or-later
// The same method with compiled functions.
#include <cmath>

namespace {

template <class F>
double root(F f, double xl, double xh) {
    constexpr double tolerance = 1e-10;
    double fl = f(xl), fh = f(xh), estimate = -1e89;
    for (int round = 0; round < 60; ++round) {
        const double xm = 0.5 * (xl + xh), fm = f(xm), s = std::sqrt(fm * fm - fl * fh);
        if (s == 0) break;
        const double next = xm + (xm - xl) * ((fl < fh ? -1 : 1) * fm / s);
        if (std::fabs(next - estimate) <= tolerance) break;
        estimate = next;
        const double fn = f(estimate);
        if (fm * fn < 0) {
            xl = xm, fl = fm, xh = estimate, fh = fn;
        } else if (fl * fn < 0) {
            xh = estimate, fh = fn;
        } else {
            xl = estimate, fl = fn;
        }
        if (std::fabs(xh - xl) <= tolerance) break;
    }
    return estimate;
}

[[gnu::noinline]] double square(double x) { return x * x - 2; }

}  // namespace

int main() {
    double sum = 0;
    for (int k = 0; k < 100000; ++k) {
        volatile double first = 1;
        sum += root([](double x) { return std::cos(x); }, first, 2) + root(square, first, 2);
    }
    return sum < 0;
}
