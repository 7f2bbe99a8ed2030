# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
x <- (0:1048575)*0.618033988749895; x <- x - floor(x)
for (r in 1:5) { start <- now(); fft(x); cat(sprintf("@fft %.9f\n", now() - start)) }
