// SPDX-License-Identifier: GPL-3.0-or-later
#include "../timed.h"

[[gnu::noinline]] double fib(double n) { return n < 2 ? n : fib(n - 1) + fib(n - 2); }
[[gnu::noinline]] double f(double x) { return x * x + 1; }

int main() {
    const int number = 24;     // check: 10
    const int calls = 1000000;  // check: 1000
    double y = 0, s = 0;
    timed("fib", 5, [&] { y = fib(number); });
    result("fib", y);
    timed("quick", 5, [&] {
        s = 0;
        for (int i = 1; i <= calls; ++i) s += f(i);
    });
    result("quick", s);
}
