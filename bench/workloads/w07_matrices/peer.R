# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
timed <- function(key, f) for (r in 1:5) { start <- now(); f(); cat(sprintf("@%s %.9f\n", key, now() - start)) }
A2 <- matrix(runif(4e6), 2000); B2 <- matrix(runif(4e6), 2000)
A <- matrix(runif(1e6), 1000); B <- matrix(runif(1e6), 1000); b <- runif(1000)
C <- A/10 + diag(1000); H <- C[1:500, 1:500]; S <- matrix(runif(160000), 400); S <- S + t(S)
timed("mul2000", function() A2 %*% B2)
timed("mul1000", function() A %*% B)
timed("solve", function() solve(C, b))
timed("det", function() det(C))
timed("inv", function() solve(H))
timed("eigval", function() eigen(S, TRUE, only.values = TRUE))
timed("eigvec", function() eigen(S, TRUE))
