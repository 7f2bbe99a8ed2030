# SPDX-License-Identifier: GPL-3.0-or-later
import sys
from time import perf_counter

import numpy as np

try:
    import matplotlib
except ImportError:
    sys.exit('matplotlib is not installed')
matplotlib.use('svg')
import matplotlib.pyplot as plt

x = np.linspace(0, 100, 100000)
y = np.sin(x)*np.exp(-x/50)
for _ in range(3):
    start = perf_counter()
    plt.plot(x, y)
    plt.savefig('matplotlib.svg')
    plt.close()
    print('@svg@matplotlib %.9f' % (perf_counter() - start))
