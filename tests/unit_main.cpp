// SPDX-License-Identifier: GPL-3.0-or-later

// The program of all unit tests.

#include "tests_of_source.h"

int main(int argc, char** argv) { return vorpen::tests::runTests(argc, argv); }
