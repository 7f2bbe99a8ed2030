# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter


def sieve(n):
    x = [1]*(n + 1)
    i = 2
    while i*i <= n:
        if x[i] == 1:
            for j in range(i*i, n + 1, i):
                x[j] = 0
        i += 1
    return sum(x) - 2


def product(m):
    a = [[i + j for j in range(1, m + 1)] for i in range(1, m + 1)]
    b = [[i - j for j in range(1, m + 1)] for i in range(1, m + 1)]
    d = [[0.0]*m for _ in range(m)]
    for i in range(m):
        row = a[i]
        for j in range(m):
            s = 0.0
            for k in range(m):
                s += row[k]*b[k][j]
            d[i][j] = s
    return d


for key, work, size in [('sieve', sieve, 2000000), ('matmul', product, 200)]:
    for _ in range(3):
        start = perf_counter()
        work(size)
        print('@%s %.9f' % (key, perf_counter() - start))
