# SPDX-License-Identifier: GPL-3.0-or-later
w = ['word0'] + ['word%d' % (k * 7919 % 10007) for k in range(1, 100000)]
text = ' '.join(w)
n = 0
for k in range(10):
    w = text.split()
    text = ' '.join(w)
    for j in range(1, 100001):
        n += len('%.9g' % (0.618033988749895 * j))
