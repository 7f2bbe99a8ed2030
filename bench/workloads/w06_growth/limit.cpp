// SPDX-License-Identifier: GPL-3.0-or-later
#include "../timed.h"

int main() {
    const int n = 100000;  // check: 1000
    Numbers x;
    timed("grow", 5, [&] {
        x = Numbers();
        x.push_back(1);
        for (int i = 2; i <= n; ++i) {
            x.push_back(i);
            use(x);
        }
    });
    result("grow", sum(x));
}
