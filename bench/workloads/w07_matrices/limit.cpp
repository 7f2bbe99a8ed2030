// SPDX-License-Identifier: GPL-3.0-or-later
// flags: -lopenblas
// The best library for matrices, called as it stands.
#include "../timed.h"

extern "C" {
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*);
void dgesv_(const int*, const int*, double*, const int*, int*, double*, const int*, int*);
void dgetrf_(const int*, const int*, double*, const int*, int*, int*);
void dgetri_(const int*, double*, const int*, const int*, double*, const int*, int*);
void dsyevd_(const char*, const char*, const int*, double*, const int*, double*, double*, const int*, int*, const int*,
             int*);
}

Numbers first(const Numbers& v, int n) { return Numbers(v.begin(), v.begin() + std::ptrdiff_t{n} * n); }

Numbers product(const Numbers& a, const Numbers& b, int n) {
    const double one = 1, zero = 0;
    Numbers c(a.size());
    dgemm_("N", "N", &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c.data(), &n);
    return c;
}

/// The largest eigenvalue.
double eigen(Numbers m, int n, const char* vectors) {
    Numbers values(static_cast<std::size_t>(n)), work(1 + 6 * values.size() + 2 * m.size());
    std::vector<int> integers(3 + 5 * values.size());
    const int room = static_cast<int>(work.size()), integerRoom = static_cast<int>(integers.size());
    int info = 0;
    dsyevd_(vectors, "L", &n, m.data(), &n, values.data(), work.data(), &room, integers.data(), &integerRoom, &info);
    return values.back();
}

int main() {
    const int large = 2000;   // check: 40
    const int middle = 1000;  // check: 30
    const int small = 500;    // check: 20
    const int order = 400;    // check: 12
    const Numbers v = fractions(std::size_t(large) * large), w = fractions(v.size(), 0, 0.414213562373095);
    Numbers c;
    timed("mul2000", 3, [&] { c = product(v, w, large); });
    result("mul2000", c[2 + large]);
    Numbers a = first(v, middle), b = first(w, middle);
    timed("mul1000", 5, [&] { c = product(a, b, middle); });
    result("mul1000", c[2 + middle]);
    for (int i = 0; i < middle; ++i) a[i + i * middle] += 10;
    std::vector<int> pivots(middle);
    int info = 0;
    Numbers x;
    timed("solve", 5, [&] {
        const int one = 1;
        Numbers lu = a;
        x.assign(b.begin(), b.begin() + middle);
        dgesv_(&middle, &one, lu.data(), &middle, pivots.data(), x.data(), &middle, &info);
    });
    result("solve", x[1]);
    for (double& element : a) element /= 10;
    double product = 1;
    timed("det", 5, [&] {
        Numbers lu = a;
        dgetrf_(&middle, &middle, lu.data(), &middle, pivots.data(), &info);
        product = 1;
        for (int i = 0; i < middle; ++i) product *= lu[i + i * middle] * (pivots[i] == i + 1 ? 1 : -1);
    });
    result("det", product);
    Numbers part;
    for (int j = 0; j < small; ++j) part.insert(part.end(), &a[j * middle], &a[j * middle] + small);
    Numbers inverse;
    timed("inv", 5, [&] {
        const int room = 64 * small;
        Numbers work(room);
        inverse = part;
        dgetrf_(&small, &small, inverse.data(), &small, pivots.data(), &info);
        dgetri_(&small, inverse.data(), &small, pivots.data(), work.data(), &room, &info);
    });
    result("inv", inverse[2 + small]);
    Numbers symmetric(std::size_t(order) * order);
    for (int j = 0; j < order; ++j)
        for (int i = 0; i < order; ++i) symmetric[i + j * order] = w[i + j * order] + w[j + i * order];
    double largest = 0;
    timed("eigval", 5, [&] { largest = eigen(symmetric, order, "N"); });
    result("eigval", largest);
    timed("eigvec", 5, [&] { eigen(symmetric, order, "V"); });
}
