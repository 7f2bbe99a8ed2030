% SPDX-License-Identifier: GPL-3.0-or-later
1;
t = tic;
for k = 1:100
  z = quadgk(@(x) sin(x)./x, 0, 50);
end
printf("@integ %.9f\n", 10*toc(t));  % a tenth of the integrals
t = tic;
for k = 1:100
  z = fzero(@cos, [1, 2]);
end
printf("@fzero %.9f\n", 1000*toc(t));  % a thousandth of the zeros
t = tic; [s, y] = ode45(@(t, y) [y(2); 10*(1 - y(1)^2)*y(2) - y(1)], linspace(0, 100, 1001), [2; 0]);
printf("@ode %.9f\n", toc(t));
