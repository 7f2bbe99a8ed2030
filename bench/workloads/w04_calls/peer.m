% SPDX-License-Identifier: GPL-3.0-or-later
1;
function y = fib(n)
  if n < 2, y = n; else y = fib(n - 1) + fib(n - 2); end
end
f = @(x) x*x + 1;
t = tic; fib(24); printf("@fib %.9f\n", toc(t));
t = tic; s = 0;
for i = 1:100000
  s += f(i);
end
printf("@quick %.9f\n", 10*toc(t));  % a tenth of the calls
