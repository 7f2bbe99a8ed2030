# SPDX-License-Identifier: GPL-3.0-or-later
x <- runif(10000000)
y <- x*2 + 1 - x/3
