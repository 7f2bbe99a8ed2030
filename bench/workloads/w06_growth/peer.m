% SPDX-License-Identifier: GPL-3.0-or-later
1;
for r = 1:2
  t = tic; x = 1;
  for i = 2:100000
    x(end + 1) = i;
  end
  printf("@grow %.9f\n", toc(t));
end
