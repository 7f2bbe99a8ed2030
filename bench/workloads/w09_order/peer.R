# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
timed <- function(key, f) for (r in 1:5) { start <- now(); f(); cat(sprintf("@%s %.9f\n", key, now() - start)) }
x <- (0:999999)*0.618033988749895; x <- x - floor(x); y <- floor(x*1e5)
timed("sort", function() sort(x))
timed("unique", function() sort(unique(y)))
timed("sortind", function() order(x))
