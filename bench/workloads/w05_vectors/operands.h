// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "../timed.h"

struct Operands {
    explicit Operands(std::size_t n)
        : x(fractions(n)), a(x), b(fractions(n, 0, 0.414213562373095)), p(b), d(a), q(b) {
        for (std::size_t k = 0; k < n; ++k) {
            a[k] = x[k] + 0.5;
            b[k] += 0.5;
            p[k] = b[k] + 1;
            d[k] = a[k] + 2;
            q[k] = 3 - b[k];
        }
    }
    Numbers x, a, b, p, d, q;
};
