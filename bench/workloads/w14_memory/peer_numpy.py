# SPDX-License-Identifier: GPL-3.0-or-later
import numpy as np

x = np.random.rand(10000000)
y = x*2 + 1 - x/3
