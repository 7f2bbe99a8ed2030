// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a running script lets the events of figures through.

namespace vorpen {

/// Serves the events that wait, with painting of the current figure held back.
void serveFigureEvents();

/// Serves events until the left button of the mouse has been pressed once
/// more, or the figure of a number (0 for the console) is closed; false where
/// no event can come.
[[nodiscard]] bool waitForPress(int figure);

}  // namespace vorpen
