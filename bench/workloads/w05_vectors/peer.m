% SPDX-License-Identifier: GPL-3.0-or-later
1;
n = 10000000;
x = (0:n-1)*0.618033988749895; x -= floor(x);
a = x + 0.5; b = (0:n-1)*0.414213562373095; b = b - floor(b) + 0.5;
p = b + 1; d = a + 2; q = 3 - b;
for r = 1:3
  t = tic; y = a + b.*p - d./q; printf("@fma %.9f\n", toc(t));
  t = tic; y = sin(x).^2 + cos(x).^2; printf("@sincos %.9f\n", toc(t));
  t = tic; y = sqrt(x).*exp(-x); printf("@sqrtexp %.9f\n", toc(t));
  t = tic; y = x(x > 0.5 & x < 0.75); printf("@mask %.9f\n", toc(t));
  t = tic; s = sum(x); printf("@sum %.9f\n", toc(t));
  t = tic; s = mean(x); printf("@mean %.9f\n", toc(t));
  t = tic; s = max(x); printf("@max %.9f\n", toc(t));
  t = tic; y = cumsum(x); printf("@cumsum %.9f\n", toc(t));
end
a = a(1:100); b = b(1:100); p = p(1:100); d = d(1:100); q = q(1:100);
for r = 1:3
  t = tic;
  for i = 1:100000
    y = a + b.*p - d./q;
  end
  printf("@small %.9f\n", toc(t));
end
