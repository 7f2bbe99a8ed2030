# SPDX-License-Identifier: GPL-3.0-or-later
from math import cos, sin
from time import perf_counter

import numpy as np
from scipy.integrate import odeint, quad
from scipy.optimize import brentq, curve_fit


def timed(key, action, repetitions=5):
    for _ in range(repetitions):
        start = perf_counter()
        action()
        print('@%s@scipy %.9f' % (key, perf_counter() - start))


def wave(x):
    return sin(x)/x if x else 1.0


def model(x, a, w, m, base):
    return a*np.exp(-0.5*((x - m)/w)**2) + base


t = np.linspace(0, 100, 1001)
x = np.linspace(0, 10, 1000)
v = np.arange(1000)*0.618033988749895
y = model(x, 3, 1.2, 5, 0.5) + (v - np.floor(v) - 0.5)*0.3
timed('integ', lambda: [quad(wave, 0, 50, limit=200) for _ in range(1000)], 3)
timed('fzero', lambda: [brentq(cos, 1, 2) for _ in range(100000)], 3)
timed('ode', lambda: odeint(lambda y, t: (y[1], 10*(1 - y[0]**2)*y[1] - y[0]), [2, 0], t))
timed('lsfit', lambda: curve_fit(model, x, y, [2, 1, 4.5, 0]))
