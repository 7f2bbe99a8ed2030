% SPDX-License-Identifier: GPL-3.0-or-later
1;
A2 = rand(2000); B2 = rand(2000); A = rand(1000); B = rand(1000); b = rand(1000, 1);
C = A/10 + eye(1000); H = C(1:500, 1:500); S = rand(400); S = S + S';
for r = 1:5
  t = tic; M = A2*B2; printf("@mul2000 %.9f\n", toc(t));
  t = tic; M = A*B; printf("@mul1000 %.9f\n", toc(t));
  t = tic; M = C\b; printf("@solve %.9f\n", toc(t));
  t = tic; M = det(C); printf("@det %.9f\n", toc(t));
  t = tic; M = inv(H); printf("@inv %.9f\n", toc(t));
  t = tic; M = eig(S); printf("@eigval %.9f\n", toc(t));
  t = tic; [V, D] = eig(S); printf("@eigvec %.9f\n", toc(t));
end
