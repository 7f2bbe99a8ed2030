// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What scripts can ask about the mouse and the keyboard of the figures: one
// record for the program, which the events of figures fill. Places are in data
// units of the frame that was under the mouse.

#include <cstdint>

#include "plot/drawing_surface.h"
#include "values/mathmatrix.h"

namespace vorpen {

struct MouseState {
    double mouseX = 0, mouseY = 0;
    bool leftDown = false, rightDown = false;
    bool pressed = false;  ///< a button of the mouse or a control, since it was last asked for
    double pressX = 0, pressY = 0;  ///< of the last left press
    bool doubleClicked = false;     ///< until the button is released
    std::int32_t draggedItem = 0;   ///< its id, 0 for none
    DoubleValue userValue{0.0};     ///< what `setmouse` stored
    DoubleValue eventResult{0.0};   ///< of the last event function
    int frameIndex = 0;             ///< under the mouse
    int key = 0;                    ///< held down, 0 for none

    Pixel pixel, pressPixel;
    unsigned leftPresses = 0;  ///< so far, for who waits for one

    /// A dragable item is picked when the square of its distance in pixels is
    /// below this.
    int pickRadiusSquared = 200;
};

[[nodiscard]] MouseState& mouseState();

/// Serves the events that wait, with painting of the current figure held back.
void serveFigureEvents();

}  // namespace vorpen
