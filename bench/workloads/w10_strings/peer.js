// SPDX-License-Identifier: GPL-3.0-or-later
const words = [], v = [];
for (let k = 0; k < 100000; ++k) {
  words.push('word' + k*7919 % 10007);
  v.push(k*0.618033988749895 % 1*1000);
}
let text = words.join(' '), w = words;
const work = {
  split: () => { w = text.split(' '); },
  join: () => { text = w.join(' '); return text.charCodeAt(text.length - 1); },
  str: () => { let n = 0; for (const x of v) n += x.toPrecision(9).length; return n; },
};
for (const key in work)
  for (let r = 0; r < 7; ++r) {
    const start = performance.now();
    work[key]();
    console.log('@' + key + ' ' + (performance.now() - start)/1e3);
  }
