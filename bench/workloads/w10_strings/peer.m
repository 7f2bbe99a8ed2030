% SPDX-License-Identifier: GPL-3.0-or-later
1;
k = 0:99999;
text = strtrim(sprintf("word%d ", mod(k*7919, 10007)));
v = k*0.618033988749895; v = (v - floor(v))*1000;
for r = 1:3
  t = tic; w = strsplit(text, " "); printf("@split %.9f\n", toc(t));
  t = tic; text = strjoin(w, " "); printf("@join %.9f\n", toc(t));
  t = tic; n = 0;
  for j = 1:10000
    n += length(sprintf("%.9g", v(j)));
  end
  printf("@str %.9f\n", 10*toc(t));  % a tenth of the numbers
end
