// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

int main() {
    std::minstd_rand source;
    std::vector<double> x(10000000), y(x.size());
    for (double& v : x) v = source() / 2147483648.0;
    double s = 0;
    for (int k = 0; k < 20; ++k) {
        s += std::accumulate(x.begin(), x.end(), 0.0);
        s += std::accumulate(x.begin(), x.end(), 0.0) / static_cast<double>(x.size());
        s += *std::max_element(x.begin(), x.end());
        std::partial_sum(x.begin(), x.end(), y.begin());
    }
    return s + y.back() < 0;
}
