// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a key of the keyboard is for a script: a key that brings a character is
// told by that alone, so that one press is one event; the others by numbers
// from 1 to 255 (37 to 40 the arrows, 112 the first function key).

#include <string>

class QKeyEvent;

namespace vorpen {

struct FigureKey {
    int code = 0;            ///< of a key without a character, 0 for none
    std::string characters;  ///< one byte each
};

[[nodiscard]] FigureKey figureKey(const QKeyEvent& event);

}  // namespace vorpen
