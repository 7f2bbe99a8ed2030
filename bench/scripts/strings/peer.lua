-- SPDX-License-Identifier: GPL-3.0-or-later
local w = {'word0'}
for k = 1, 99999 do w[#w + 1] = 'word' .. (k * 7919 % 10007) end
local text = table.concat(w, ' ')
local n = 0
for k = 1, 10 do
    w = {}
    for word in text:gmatch('%S+') do w[#w + 1] = word end
    text = table.concat(w, ' ')
    for j = 1, 100000 do n = n + #string.format('%.9g', 0.618033988749895 * j) end
end
