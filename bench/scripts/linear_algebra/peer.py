# SPDX-License-Identifier: GPL-3.0-or-later
import numpy as np
g = np.random.default_rng(1)
A, b, B, S = g.random((1000, 1000)), g.random(1000), g.random((500, 500)), g.random((400, 400))
S = S + S.T
for k in range(20):
    x = np.linalg.solve(A, b)
    x = np.linalg.det(A)
    M = np.linalg.inv(B)
    x = np.linalg.eigvalsh(S)
