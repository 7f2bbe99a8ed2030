-- SPDX-License-Identifier: GPL-3.0-or-later
local ffi = require('ffi')
local n = 10000000
local x, y = ffi.new('double[?]', n), ffi.new('double[?]', n)
for k = 0, n - 1 do x[k] = math.random() end
for k = 0, n - 1 do y[k] = x[k]*2 + 1 - x[k]/3 end
