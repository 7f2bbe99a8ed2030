# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter


def grow(n):
    x = [1.0]
    for i in range(2, n + 1):
        x.append(i)


for _ in range(5):
    start = perf_counter()
    grow(100000)
    print('@grow %.9f' % (perf_counter() - start))
