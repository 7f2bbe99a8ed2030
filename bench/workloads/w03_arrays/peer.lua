-- SPDX-License-Identifier: GPL-3.0-or-later
local n, m = 2000000, 200
for _ = 1, 3 do
  local start, x = os.clock(), {}
  for i = 1, n do x[i] = 1 end
  local i = 2
  while i*i <= n do
    if x[i] == 1 then for j = i*i, n, i do x[j] = 0 end end
    i = i + 1
  end
  local p = -1
  for k = 1, n do p = p + x[k] end
  print('@sieve ' .. os.clock() - start)
end
for _ = 1, 3 do
  local start, a, b, d = os.clock(), {}, {}, {}
  for i = 1, m do
    a[i], b[i], d[i] = {}, {}, {}
    for j = 1, m do a[i][j], b[i][j] = i + j, i - j end
  end
  for i = 1, m do
    for j = 1, m do
      local s = 0.0
      for k = 1, m do s = s + a[i][k]*b[k][j] end
      d[i][j] = s
    end
  end
  print('@matmul ' .. os.clock() - start)
end
