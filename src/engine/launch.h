// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Setting up an engine together with the console that shows it. Whatever goes
// wrong is told in a message box; what was set up so far is gone again.

#include <functional>
#include <memory>

#include "engine/calc.h"

namespace vorpen {

/// Opens the console of an engine that is otherwise complete; false when there
/// can be none.
using OpenConsole = std::function<bool(Calc& calc)>;

/// The engine that the program begins with; null when it cannot begin.
[[nodiscard]] std::unique_ptr<Calc> launchPrimary(Host& host, const OpenConsole& openConsole);

/// A further engine, independent of the running one; null when there is no
/// room for it.
[[nodiscard]] std::unique_ptr<Calc> launchSecondary(Host& host, const Calc& running,
                                                    const OpenConsole& openConsole);

}  // namespace vorpen
