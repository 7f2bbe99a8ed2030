-- SPDX-License-Identifier: GPL-3.0-or-later
for _ = 1, 5 do
  local start, x = os.clock(), {1.0}
  for i = 2, 100000 do x[#x + 1] = i end
  print('@grow ' .. os.clock() - start)
end
