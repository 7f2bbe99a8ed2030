// SPDX-License-Identifier: GPL-3.0-or-later

// vorpen: the calculator in a window.

#include <QtWidgets/QApplication>

int main(int count, char** words) {
    QApplication application(count, words);
    return 0;
}
