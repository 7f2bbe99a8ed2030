// SPDX-License-Identifier: GPL-3.0-or-later
function sieve(n) {
  const x = new Float64Array(n + 1).fill(1);
  for (let i = 2; i*i <= n; ++i)
    if (x[i] === 1) for (let j = i*i; j <= n; j += i) x[j] = 0;
  let p = -2;
  for (const e of x) p += e;
  return p;
}
function product(m) {
  const a = [], b = [], d = [];
  for (let i = 1; i <= m; ++i) {
    a.push(new Float64Array(m)); b.push(new Float64Array(m)); d.push(new Float64Array(m));
    for (let j = 1; j <= m; ++j) { a[i - 1][j - 1] = i + j; b[i - 1][j - 1] = i - j; }
  }
  for (let i = 0; i < m; ++i)
    for (let j = 0; j < m; ++j) {
      let s = 0;
      for (let k = 0; k < m; ++k) s += a[i][k]*b[k][j];
      d[i][j] = s;
    }
  return d;
}
for (const [key, work, size] of [['sieve', sieve, 2000000], ['matmul', product, 200]])
  for (let r = 0; r < 5; ++r) {
    const start = performance.now();
    work(size);
    console.log('@' + key + ' ' + (performance.now() - start)/1e3);
  }
