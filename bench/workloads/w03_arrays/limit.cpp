// SPDX-License-Identifier: GPL-3.0-or-later
#include "../timed.h"

int main() {
    const std::size_t n = 2000000;  // check: 1000
    const std::size_t m = 200;      // check: 10
    double primes = 0;
    timed("sieve", 3, [&] {
        Numbers x(n + 1, 1.0);
        for (std::size_t i = 2; i * i <= n; ++i)
            if (x[i] == 1)
                for (std::size_t j = i * i; j <= n; j += i) x[j] = 0;
        primes = sum(x) - 2;
    });
    result("sieve", primes);
    Numbers d;
    timed("matmul", 3, [&] {
        Numbers a(m * m), b(m * m);
        d.assign(m * m, 0);
        for (std::size_t i = 0; i < m; ++i)
            for (std::size_t j = 0; j < m; ++j) {
                a[i + j * m] = static_cast<double>(i + j + 2);
                b[i + j * m] = static_cast<double>(i) - static_cast<double>(j);
            }
        for (std::size_t i = 0; i < m; ++i)
            for (std::size_t j = 0; j < m; ++j) {
                double s = 0;
                for (std::size_t k = 0; k < m; ++k) s += a[i + k * m] * b[k + j * m];
                d[i + j * m] = s;
            }
    });
    double row = 0;
    for (std::size_t j = 0; j < m; ++j) row += d[2 + j * m];
    result("matmul", row);
}
