// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

int main() {
    std::mt19937_64 source;
    std::uniform_real_distribution<double> uniform;
    std::vector<double> x(1000000), y(x.size());
    for (double& v : x) v = uniform(source);
    for (std::size_t i = 0; i < x.size(); ++i) y[i] = std::floor(1e5 * x[i]);
    for (int k = 0; k < 10; ++k) {
        auto z = x;
        std::sort(z.begin(), z.end());
        z = y;
        std::sort(z.begin(), z.end());
        z.erase(std::unique(z.begin(), z.end()), z.end());
        std::vector<int> order(x.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return x[a] < x[b]; });
    }
}
