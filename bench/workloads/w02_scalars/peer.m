% SPDX-License-Identifier: GPL-3.0-or-later
1;
t = tic; s = 0;
for i = 1:10000000
  s += i*i*0.5 + 1;
end
printf("@sum %.9f\n", toc(t));
t = tic; most = 0;
for k = 1:30000
  m = k; len = 0;
  while m ~= 1
    if mod(m, 2) == 0, m = m/2; else m = 3*m + 1; end
    len += 1;
  end
  if len > most, most = len; end
end
printf("@collatz %.9f\n", toc(t));
