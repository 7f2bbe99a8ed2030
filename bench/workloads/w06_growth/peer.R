# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
grow <- function(n) { x <- 1; for (i in 2:n) x[i] <- i; x }
for (r in 1:5) { start <- now(); grow(100000); cat(sprintf("@grow %.9f\n", now() - start)) }
