// SPDX-License-Identifier: GPL-3.0-or-later
console.log(1 + 2*3);
