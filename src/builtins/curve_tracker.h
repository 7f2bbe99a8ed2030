// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The cursor that follows the curve of a plotted function: two hairlines that
// cross on the curve at the mouse's x, and a mark that snaps to a zero or an
// extremum near by, with its x written beside it. All of it is drawn
// inverting, so that the frame is not drawn anew while the mouse moves.

#include <span>

#include "plot/frame.h"

namespace vorpen {

/// Lets a frame's cursor follow this curve. Nothing is shown before the mouse
/// moves. There must be as many y as x, and x in order, rising or falling.
void trackCurve(Frame& frame, std::span<const double> x, std::span<const double> y);

/// The mouse is at this pixel. Nothing happens without a curve to follow.
void moveTracker(Frame& frame, Pixel mouse);

}  // namespace vorpen
