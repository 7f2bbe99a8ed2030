-- SPDX-License-Identifier: GPL-3.0-or-later
local n, starts = 10000000, 30000
for _ = 1, 3 do
  local start, s = os.clock(), 0.0
  for i = 1, n do s = s + i*i*0.5 + 1 end
  print('@sum ' .. os.clock() - start)
  start = os.clock()
  local most = 0
  for k = 1, starts do
    local m, length = k + 0.0, 0
    while m ~= 1 do
      if m % 2 == 0 then m = m/2 else m = 3*m + 1 end
      length = length + 1
    end
    if length > most then most = length end
  end
  print('@collatz ' .. os.clock() - start)
end
