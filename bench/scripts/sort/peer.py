# SPDX-License-Identifier: GPL-3.0-or-later
import numpy
x = numpy.random.rand(1000000)
y = numpy.floor(1e5 * x)
for k in range(10):
    z = numpy.sort(x)
    z = numpy.unique(y)
    z = numpy.argsort(x, kind='stable')
