# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
timed <- function(key, f) for (r in 1:5) { start <- now(); f(); cat(sprintf("@%s %.9f\n", key, now() - start)) }
k <- 0:99999
w <- paste0("word", (k*7919) %% 10007)
text <- paste(w, collapse = " ")
v <- k*0.618033988749895; v <- (v - floor(v))*1000
timed("split", function() strsplit(text, " ", fixed = TRUE))
timed("join", function() paste(w, collapse = " "))
timed("str", function() sum(nchar(sprintf("%.9g", v))))
