// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Menus of a window whose keyboard belongs to one widget. The window library's
// menu bar gives the keyboard back to whoever had it before, and remembers
// nobody when a menu is opened by its letter while the bar itself has the
// keyboard; it would then keep it, with no menu open, and swallow all that is
// typed.

#include <QtWidgets/QMenuBar>

namespace vorpen {

class MenuBar final : public QMenuBar {
public:
    /// `home` has the keyboard whenever no menu is in use; it lives as long.
    MenuBar(QWidget* parent, QWidget& home) : QMenuBar(parent), home_(home) { setNativeMenuBar(false); }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void giveBack() { home_.setFocus(Qt::MenuBarFocusReason); }

    QWidget& home_;
};

}  // namespace vorpen
