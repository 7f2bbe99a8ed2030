% SPDX-License-Identifier: GPL-3.0-or-later
1;
x = (0:1048575)*0.618033988749895; x -= floor(x);
for r = 1:7
  t = tic; y = fft(x); printf("@fft %.9f\n", toc(t));
end
