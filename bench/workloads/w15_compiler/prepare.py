# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes a long script, assignments of which no two are alike, in three languages."""
lines = 10000  # check: 100


def assignments(ending, prefix, power, end):
    names = ['value_%d' % i for i in range(50)]
    for i, name in enumerate(names):
        yield '%s = %g%s' % (name, 0.01*i, end)
    for i in range(lines - len(names)):
        a, b, c, d = (names[(i*k + k) % len(names)] for k in (1, 7, 11, 13))
        yield '%s = %ssin(%s + %g*%s)/(1 + %s%s2) - %scos(%g)*(%s - %d)%s' % (
            a, prefix, b, 0.5 + 0.001*i, c, d, power, prefix, 0.25 + i, c, i % 17, end)


for name, prefix, power, end, first in [('script.vrp', '', '^', ';', ''), ('peer.lua', 'math.', '^', '', ''),
                                        ('peer.py', 'math.', '**', '', 'import math\n')]:
    with open(name, 'w') as f:
        f.write(first + '\n'.join(assignments(name, prefix, power, end)) + '\n')
