// SPDX-License-Identifier: GPL-3.0-or-later
#include "../timed.h"

int main() {
    const std::size_t n = 10000000;  // check: 1000
    Numbers x(n), y(n);
    for (std::size_t k = 0; k < n; ++k) x[k] = static_cast<double>(k) / 7;
    for (std::size_t k = 0; k < n; ++k) y[k] = x[k] * 2 + 1 - x[k] / 3;
    use(y);
}
