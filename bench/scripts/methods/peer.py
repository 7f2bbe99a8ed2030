# SPDX-License-Identifier: GPL-3.0-or-later
import math
import warnings
import numpy as np
from scipy import integrate
warnings.filterwarnings('ignore')


def f(x):
    return math.sin(x) / x if x else 1.0


def vdp(t, y):
    return [y[1], 10 * (1 - y[0] * y[0]) * y[1] - y[0]]


for k in range(3000):
    integrate.quad(f, 0, 50, epsabs=1e-9, epsrel=1e-7, limit=200)
x = np.linspace(0, 100, 1001)
for k in range(30):
    integrate.odeint(vdp, [2.0, 0.0], x, atol=1e-6, rtol=1e-6, tfirst=True)
