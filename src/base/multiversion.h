// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The program is built for every 64-bit x86 processor. A function marked
// VORPEN_MULTIVERSION is compiled once more for wide vectors, and the loader
// picks the version that the processor has. Contraction of products and sums
// is off everywhere, so all versions give the same bits.

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(VORPEN_NO_MULTIVERSION)
#define VORPEN_MULTIVERSION __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define VORPEN_MULTIVERSION
#endif
