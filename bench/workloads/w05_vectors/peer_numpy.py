# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

import numpy as np

n = 10000000
x = np.arange(n)*0.618033988749895
x -= np.floor(x)
a, b = x + 0.5, np.arange(n)*0.414213562373095
b += 0.5 - np.floor(b)
p, d, q = b + 1, a + 2, 3 - b


def small():
    u, v, w, e, f = a[:100], b[:100], p[:100], d[:100], q[:100]
    for _ in range(100000):
        u + v*w - e/f


work = [('fma', lambda: a + b*p - d/q), ('sincos', lambda: np.sin(x)**2 + np.cos(x)**2),
        ('sqrtexp', lambda: np.sqrt(x)*np.exp(-x)), ('mask', lambda: x[(x > 0.5) & (x < 0.75)]),
        ('sum', x.sum), ('mean', x.mean), ('max', x.max), ('cumsum', x.cumsum), ('small', small)]
for key, action in work:
    for _ in range(5):
        start = perf_counter()
        action()
        print('@%s %.9f' % (key, perf_counter() - start))
