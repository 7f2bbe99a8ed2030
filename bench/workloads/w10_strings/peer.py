# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

text = ' '.join('word%d' % (k*7919 % 10007) for k in range(100000))
words = text.split()
v = [k*0.618033988749895 % 1*1000 for k in range(100000)]
work = [('split', lambda: text.split()), ('join', lambda: ' '.join(words)),
        ('str', lambda: sum(len('%.9g' % x) for x in v))]
for key, action in work:
    for _ in range(7):
        start = perf_counter()
        action()
        print('@%s %.9f' % (key, perf_counter() - start))
