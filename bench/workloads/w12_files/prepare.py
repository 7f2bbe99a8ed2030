# SPDX-License-Identifier: GPL-3.0-or-later
"""Writes the table that is read: numbers of nine digits, ten a line."""
rows = 100000  # check: 100
with open('table.txt', 'w') as f:
    for r in range(rows):
        f.write(' '.join('%.9g' % (((10*r + c)*0.618033988749895 % 1)*1000) for c in range(10)) + '\n')
