# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

import numpy as np
import scipy.fft

x = np.arange(1048576)*0.618033988749895
x -= np.floor(x)
z = x.astype(complex)
for label, action in [('fft@numpy', lambda: np.fft.fft(z)), ('fft@scipy', lambda: scipy.fft.fft(z))]:
    for _ in range(7):
        start = perf_counter()
        action()
        print('@%s %.9f' % (label, perf_counter() - start))
