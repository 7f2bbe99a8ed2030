// SPDX-License-Identifier: GPL-3.0-or-later

// The program of the tests that need widgets.

#include <QtWidgets/QApplication>

#include "tests_of_source.h"

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    return vorpen::tests::runTests(argc, argv);
}
