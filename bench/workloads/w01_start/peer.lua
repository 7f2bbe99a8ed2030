-- SPDX-License-Identifier: GPL-3.0-or-later
print(1 + 2*3)
