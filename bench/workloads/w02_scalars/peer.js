// SPDX-License-Identifier: GPL-3.0-or-later
function total(n) {
  let s = 0;
  for (let i = 1; i <= n; ++i) s += i*i*0.5 + 1;
  return s;
}
function longest(starts) {
  let most = 0;
  for (let k = 1; k <= starts; ++k) {
    let m = k, length = 0;
    while (m !== 1) {
      m = m % 2 === 0 ? m/2 : 3*m + 1;
      ++length;
    }
    if (length > most) most = length;
  }
  return most;
}
for (const [key, work, size] of [['sum', total, 10000000], ['collatz', longest, 30000]])
  for (let r = 0; r < 5; ++r) {
    const start = performance.now();
    work(size);
    console.log('@' + key + ' ' + (performance.now() - start)/1e3);
  }
