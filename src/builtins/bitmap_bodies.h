// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Commands for pictures in figures. Places in a picture are counted in pixels
// from 0, from its top left corner, to the right and down.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (name), (name, option): a picture file as an item at (0, 0); with an option
/// the frame becomes one unit a pixel. Answers (id, width, height).
void loadBitmap(const Value& name, const DoubleValue* option, Value& out);

/// (id, [x, y, w, h]): a part of a picture as a new item at the same place;
/// behind it [x, y] for another place, or 1 to leave out the colour of the
/// part's top left pixel. Answers the id.
void snipImage(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (id, [x, y]): the colour of a pixel, 65536 red + 256 green + blue.
void pixelColour(const Value& id, const DoubleValue* place, Value& out);

}  // namespace vorpen::builtin
