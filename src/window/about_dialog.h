// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QWidget;

namespace vorpen {

/// Shows what the program is, until the user dismisses it.
void runAboutDialog(QWidget* parent);

}  // namespace vorpen
