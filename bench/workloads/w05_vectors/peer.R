# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
timed <- function(key, f) for (r in 1:3) { start <- now(); f(); cat(sprintf("@%s %.9f\n", key, now() - start)) }
n <- 10000000
x <- (0:(n - 1))*0.618033988749895; x <- x - floor(x)
a <- x + 0.5; b <- (0:(n - 1))*0.414213562373095; b <- b - floor(b) + 0.5
p <- b + 1; d <- a + 2; q <- 3 - b
timed("fma", function() a + b*p - d/q)
timed("sincos", function() sin(x)^2 + cos(x)^2)
timed("sqrtexp", function() sqrt(x)*exp(-x))
timed("mask", function() x[x > 0.5 & x < 0.75])
timed("sum", function() sum(x))
timed("mean", function() mean(x))
timed("max", function() max(x))
timed("cumsum", function() cumsum(x))
a <- a[1:100]; b <- b[1:100]; p <- p[1:100]; d <- d[1:100]; q <- q[1:100]
timed("small", function() for (i in 1:100000) a + b*p - d/q)
