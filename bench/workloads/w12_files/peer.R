# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
timed <- function(key, f) for (r in 1:3) { start <- now(); f(); cat(sprintf("@%s %.9f\n", key, now() - start)) }
x <- (0:5999999)*0.618033988749895
timed("load", function() matrix(scan("table.txt", quiet = TRUE), ncol = 10, byrow = TRUE))
timed("write", function() { f <- file("r.bin", "wb"); writeBin(x, f); close(f) })
timed("read", function() { f <- file("r.bin", "rb"); readBin(f, "double", 6000000); close(f) })
