# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
fib <- function(n) if (n < 2) n else fib(n - 1) + fib(n - 2)
f <- function(x) x*x + 1
total <- function(n) { s <- 0; for (i in 1:n) s <- s + f(as.numeric(i)); s }
for (r in 1:3) { start <- now(); fib(24); cat(sprintf("@fib %.9f\n", now() - start)) }
for (r in 1:3) { start <- now(); total(1000000); cat(sprintf("@quick %.9f\n", now() - start)) }
