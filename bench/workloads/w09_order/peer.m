% SPDX-License-Identifier: GPL-3.0-or-later
1;
x = (0:999999)*0.618033988749895; x -= floor(x); y = floor(x*1e5);
for r = 1:5
  t = tic; z = sort(x); printf("@sort %.9f\n", toc(t));
  t = tic; z = unique(y); printf("@unique %.9f\n", toc(t));
  t = tic; [s, z] = sort(x); printf("@sortind %.9f\n", toc(t));
end
