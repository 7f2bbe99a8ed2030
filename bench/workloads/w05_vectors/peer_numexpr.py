# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

import numexpr as ne
import numpy as np

n = 10000000
x = np.arange(n)*0.618033988749895
x -= np.floor(x)
a, b = x + 0.5, np.arange(n)*0.414213562373095
b += 0.5 - np.floor(b)
p, d, q = b + 1, a + 2, 3 - b
work = [('fma', lambda: ne.evaluate('a + b*p - d/q')),
        ('sincos', lambda: ne.evaluate('sin(x)**2 + cos(x)**2')),
        ('sqrtexp', lambda: ne.evaluate('sqrt(x)*exp(-x)')),
        ('mask', lambda: x[ne.evaluate('(x > 0.5) & (x < 0.75)')])]
for key, action in work:
    for _ in range(5):
        start = perf_counter()
        action()
        print('@%s %.9f' % (key, perf_counter() - start))
