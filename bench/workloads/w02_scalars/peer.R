# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
total <- function(n) { s <- 0; for (i in 1:n) s <- s + as.numeric(i)*i*0.5 + 1; s }
longest <- function(starts) {
  most <- 0
  for (k in 1:starts) {
    m <- k; len <- 0
    while (m != 1) { if (m %% 2 == 0) m <- m/2 else m <- 3*m + 1; len <- len + 1 }
    if (len > most) most <- len
  }
  most
}
for (r in 1:3) { start <- now(); total(10000000); cat(sprintf("@sum %.9f\n", now() - start)) }
for (r in 1:3) { start <- now(); longest(30000); cat(sprintf("@collatz %.9f\n", now() - start)) }
