# SPDX-License-Identifier: GPL-3.0-or-later
import numpy
x = numpy.random.rand(10000000)
y = numpy.empty_like(x)
s = 0
for k in range(20):
    s += x.sum() + x.mean() + x.max()
    numpy.cumsum(x, out=y)
