-- SPDX-License-Identifier: GPL-3.0-or-later
local function fib(n) if n < 2 then return n end return fib(n - 1) + fib(n - 2) end
local function f(x) return x*x + 1 end
for _ = 1, 5 do
  local start = os.clock()
  fib(24.0)
  print('@fib ' .. os.clock() - start)
  start = os.clock()
  local s = 0.0
  for i = 1, 1000000 do s = s + f(i) end
  print('@quick ' .. os.clock() - start)
end
