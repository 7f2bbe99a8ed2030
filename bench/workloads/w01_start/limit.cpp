// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdio>

int main() { std::puts("7"); }
