-- SPDX-License-Identifier: GPL-3.0-or-later
local ffi = require('ffi')
local n = 10000000
local function array(factor, add)
  local v = ffi.new('double[?]', n)
  for k = 0, n - 1 do local m = k*factor; v[k] = m - math.floor(m) + add end
  return v
end
local x, a, b = array(0.618033988749895, 0), array(0.618033988749895, 0.5), array(0.414213562373095, 0.5)
local p, d, q, y = array(0.414213562373095, 1.5), array(0.618033988749895, 2.5), ffi.new('double[?]', n), ffi.new('double[?]', n)
for k = 0, n - 1 do q[k] = 3 - b[k] end
local function timed(key, work)
  for _ = 1, 4 do
    local start = os.clock()
    work()
    print('@' .. key .. ' ' .. os.clock() - start)
  end
end
timed('fma', function() for k = 0, n - 1 do y[k] = a[k] + b[k]*p[k] - d[k]/q[k] end end)
timed('mask', function()
  local count = 0
  for k = 0, n - 1 do if x[k] > 0.5 and x[k] < 0.75 then y[count] = x[k]; count = count + 1 end end
end)
timed('sum', function() local s = 0; for k = 0, n - 1 do s = s + x[k] end return s end)
timed('max', function() local m = x[0]; for k = 0, n - 1 do m = math.max(m, x[k]) end return m end)
timed('cumsum', function() local s = 0; for k = 0, n - 1 do s = s + x[k]; y[k] = s end end)
timed('small', function()
  for _ = 1, 100000 do for k = 0, 99 do y[k] = a[k] + b[k]*p[k] - d[k]/q[k] end end
end)
