# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

import numpy as np

x = np.arange(1000000)*0.618033988749895
x -= np.floor(x)
y = np.floor(x*1e5)
for key, action in [('sort', lambda: np.sort(x)), ('unique', lambda: np.unique(y)), ('sortind', lambda: np.argsort(x))]:
    for _ in range(7):
        start = perf_counter()
        action()
        print('@%s %.9f' % (key, perf_counter() - start))
