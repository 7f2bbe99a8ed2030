# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

import numpy as np

x = np.arange(6000000)*0.618033988749895
work = [('load', lambda: np.fromfile('table.txt', sep=' ').reshape(-1, 10)), ('write', lambda: x.tofile('numpy.bin')),
        ('read', lambda: np.fromfile('numpy.bin'))]
for _ in range(5):
    for key, action in work:
        start = perf_counter()
        action()
        print('@%s %.9f' % (key, perf_counter() - start))
