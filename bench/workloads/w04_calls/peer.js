// SPDX-License-Identifier: GPL-3.0-or-later
function fib(n) { return n < 2 ? n : fib(n - 1) + fib(n - 2); }
function f(x) { return x*x + 1; }
function total(calls) {
  let s = 0;
  for (let i = 1; i <= calls; ++i) s += f(i);
  return s;
}
for (const [key, work, size] of [['fib', fib, 24], ['quick', total, 1000000]])
  for (let r = 0; r < 8; ++r) {
    const start = performance.now();
    work(size);
    console.log('@' + key + ' ' + (performance.now() - start)/1e3);
  }
