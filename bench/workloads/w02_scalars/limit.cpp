// SPDX-License-Identifier: GPL-3.0-or-later
#include "../timed.h"

int main() {
    const long n = 10000000;    // check: 1000
    const long starts = 30000;  // check: 100
    double s = 0;
    timed("sum", 3, [&] {
        s = 0;
        for (long i = 1; i <= n; ++i) s += static_cast<double>(i) * static_cast<double>(i) * 0.5 + 1;
    });
    result("sum", s);
    long most = 0;
    timed("collatz", 3, [&] {
        most = 0;
        for (long k = 1; k <= starts; ++k) {
            long length = 0;
            for (long m = k; m != 1; ++length) m = m % 2 == 0 ? m / 2 : 3 * m + 1;
            most = std::max(most, length);
        }
    });
    result("collatz", static_cast<double>(most));
}
