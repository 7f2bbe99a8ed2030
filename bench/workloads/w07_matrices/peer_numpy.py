# SPDX-License-Identifier: GPL-3.0-or-later
from time import perf_counter

import numpy as np

v = np.arange(4000000)*0.618033988749895
v -= np.floor(v)
w = np.arange(4000000)*0.414213562373095
w -= np.floor(w)
A2, B2 = v.reshape(2000, 2000), w.reshape(2000, 2000)
A, B = v[:1000000].reshape(1000, 1000), w[:1000000].reshape(1000, 1000)
C = A/10 + np.eye(1000)
S = w[:160000].reshape(400, 400)
S = S + S.T
H = C[:500, :500].copy()
work = [('mul2000', lambda: A2 @ B2), ('mul1000', lambda: A @ B), ('solve', lambda: np.linalg.solve(C, B[:, :1])),
        ('det', lambda: np.linalg.det(C)), ('inv', lambda: np.linalg.inv(H)),
        ('eigval', lambda: np.linalg.eigvalsh(S)), ('eigvec', lambda: np.linalg.eigh(S))]
for key, action in work:
    for _ in range(5):
        start = perf_counter()
        action()
        print('@%s %.9f' % (key, perf_counter() - start))
