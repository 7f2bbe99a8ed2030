# SPDX-License-Identifier: GPL-3.0-or-later
now <- function() as.numeric(Sys.time())
x <- seq(0, 100, length.out = 100000); y <- sin(x)*exp(-x/50)
for (r in 1:3) {
  start <- now()
  svg("r.svg", 5.7, 4.06); plot(x, y, type = "l"); invisible(dev.off())
  cat(sprintf("@svg %.9f\n", now() - start))
}
