// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How an item is drawn. A user writes a style as one short string: a colour
// letter, a line pattern, a marker, a number and `#` with a second letter for
// the filling, as in "r-o3" or "k#y". Nothing in such a string is ever an
// error; what means nothing is passed over.

#include <string_view>

#include "console/markup.h"

namespace vorpen {

enum class PenStyle : int { Solid = 0, Dash = 1, Dot = 2, DashDot = 3 };

struct PlotStyle {
    Colour lineColour = 0;
    PenStyle penStyle = PenStyle::Solid;
    int width = 5;         ///< of the line in pixels; the font size of a text
    bool xorMode = false;  ///< drawn inverting, so that drawing twice erases
    bool drawLine = true;  ///< whether a curve joins its points
    Colour fillColour = 0;

    /// Changes what the text names and leaves the rest. Numbers are limited to
    /// `maxWidth`.
    void parseStyle(std::string_view text);

    bool operator==(const PlotStyle&) const = default;
};

/// No pen and no font is larger than what pixels can count.
inline constexpr int maxWidth = 32767;

/// What a style string says of markers.
struct MarkerStyle {
    char marker = 0;  ///< one of "+x.ost~|!_", 0 for none
    int size = 4;     ///< in pixels from the middle

    bool operator==(const MarkerStyle&) const = default;
};

[[nodiscard]] MarkerStyle markerOf(std::string_view text);

/// Whether a style string asks for a filling.
[[nodiscard]] bool asksForFill(std::string_view text);

}  // namespace vorpen
