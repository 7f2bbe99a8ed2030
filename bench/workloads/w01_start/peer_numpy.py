# SPDX-License-Identifier: GPL-3.0-or-later
import numpy
print(numpy.int64(1) + 2*3)
