# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
sieve <- function(n) {
  x <- rep(1, n); i <- 2
  while (i*i <= n) {
    if (x[i] == 1) { j <- i*i; while (j <= n) { x[j] <- 0; j <- j + i } }
    i <- i + 1
  }
  sum(x) - 1
}
product <- function(m) {
  a <- outer(1:m, 1:m, "+"); b <- outer(1:m, 1:m, "-"); d <- matrix(0, m, m)
  for (i in 1:m) for (j in 1:m) { s <- 0; for (k in 1:m) s <- s + a[i, k]*b[k, j]; d[i, j] <- s }
  d
}
for (r in 1:3) { start <- now(); sieve(2000000); cat(sprintf("@sieve %.9f\n", now() - start)) }
for (r in 1:3) { start <- now(); product(200); cat(sprintf("@matmul %.9f\n", now() - start)) }
