// SPDX-License-Identifier: GPL-3.0-or-later

// vorpen: the calculator in a window.

#include <QtWidgets/QApplication>

#include "base/freed_memory.h"

int main(int count, char** words) {
    vorpen::keepFreedMemory();
    QApplication application(count, words);
    return 0;
}
