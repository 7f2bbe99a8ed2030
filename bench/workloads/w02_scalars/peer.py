# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter


def total(n):
    s = 0.0
    for i in range(1, n + 1):
        s += i*i*0.5 + 1
    return s


def longest(starts):
    most = 0
    for k in range(1, starts + 1):
        m, length = k, 0
        while m != 1:
            m = m//2 if m % 2 == 0 else 3*m + 1
            length += 1
        most = max(most, length)
    return most


for key, work, size in [('sum', total, 10000000), ('collatz', longest, 30000)]:
    for _ in range(3):
        start = perf_counter()
        work(size)
        print('@%s %.9f' % (key, perf_counter() - start))
