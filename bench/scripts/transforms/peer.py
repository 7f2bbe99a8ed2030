# SPDX-License-Identifier: GPL-3.0-or-later
import numpy as np
x = np.random.default_rng(1).random(1 << 20) + 0j
for k in range(11):
    y = np.fft.fft(x)
