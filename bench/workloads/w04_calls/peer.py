# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter


def fib(n):
    return n if n < 2 else fib(n - 1) + fib(n - 2)


def f(x):
    return x*x + 1


def total(calls):
    s = 0.0
    for i in range(1, calls + 1):
        s += f(i)
    return s


for key, work, size in [('fib', fib, 24), ('quick', total, 1000000)]:
    for _ in range(5):
        start = perf_counter()
        work(size)
        print('@%s %.9f' % (key, perf_counter() - start))
