% SPDX-License-Identifier: GPL-3.0-or-later
1;
x = (0:5999999)*0.618033988749895;
for r = 1:2
  t = tic; A = dlmread("table.txt", " "); printf("@load %.9f\n", toc(t));
  t = tic; f = fopen("octave.bin", "w"); fwrite(f, x, "double"); fclose(f); printf("@write %.9f\n", toc(t));
  t = tic; f = fopen("octave.bin"); A = fread(f, Inf, "double"); fclose(f); printf("@read %.9f\n", toc(t));
end
