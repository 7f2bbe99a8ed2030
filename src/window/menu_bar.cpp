// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/menu_bar.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QKeyEvent>

namespace vorpen {

void MenuBar::keyPressEvent(QKeyEvent* event) {
    if (!activeAction()) {
        giveBack();
        QCoreApplication::sendEvent(&home_, event);
        return;
    }
    QMenuBar::keyPressEvent(event);
    if (!activeAction() && hasFocus()) giveBack();
}

}  // namespace vorpen
