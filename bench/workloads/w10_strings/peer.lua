-- SPDX-License-Identifier: GPL-3.0-or-later
local words, v = {}, {}
for k = 0, 99999 do
  words[k + 1] = string.format('word%d', k*7919 % 10007)
  v[k + 1] = (k*0.618033988749895 % 1)*1000
end
local text = table.concat(words, ' ')
for _ = 1, 7 do
  local start, w = os.clock(), {}
  for word in text:gmatch('%S+') do w[#w + 1] = word end
  print('@split ' .. os.clock() - start)
  start = os.clock()
  text = table.concat(w, ' ')
  print('@join ' .. os.clock() - start)
  local length = 0
  start = os.clock()
  for j = 1, #v do length = length + #string.format('%.9g', v[j]) end
  print('@str ' .. os.clock() - start)
end
