// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the limit programs share: they print a line "@KEY SECONDS" for each
// measurement and a line "=KEY VALUE" for what was computed, as all programs of
// the workloads do.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <vector>

using Numbers = std::vector<double>;

template <class Work>
void timed(const char* key, int repetitions, Work work) {
    for (int r = 0; r < repetitions; ++r) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        std::printf("@%s %.9f\n", key, spent.count());
    }
}

inline void result(const char* key, double value) { std::printf("=%s %.17g\n", key, value); }

/// n numbers between 0 and 1 without order, the fractions of multiples of an
/// irrational number, from `first` on.
inline Numbers fractions(std::size_t n, double first = 0, double factor = 0.618033988749895) {
    Numbers x(n);
    for (std::size_t k = 0; k < n; ++k) {
        const double multiple = (static_cast<double>(k) + first) * factor;
        x[k] = multiple - std::floor(multiple);
    }
    return x;
}

inline double sum(const Numbers& x) {
    double total = 0;
    for (const double number : x) total += number;
    return total;
}

/// Keeps the compiler from leaving out what nobody reads.
template <class T>
void use(const T& value) {
    asm volatile("" : : "g"(&value) : "memory");
}
