# SPDX-License-Identifier: GPL-3.0-or-later
set print '-'
set terminal svg size 570,406
set samples 100000
do for [r=1:3] {
  start = time(0.0)
  set output 'gnuplot.svg'
  plot [0:100] sin(x)*exp(-x/50) notitle
  unset output
  print sprintf('@svg %.9f', time(0.0) - start)
}
