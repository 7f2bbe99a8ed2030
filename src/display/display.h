// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From a value to lines of the console: the choice of format, the limits on
// what is shown, the colours. A row is written as marked-up text that begins
// with the colour letter of its kind and form and leaves the mark open.

#include <string_view>

#include "values/value.h"

namespace vorpen {

/// Shows a value on the current console. With startOnNewLine the first row
/// begins a new line; further rows always do. `wide` raises the limit of rows
/// or items from 25 to 156: when it is reached, the first ones (6 fewer) and
/// the last row are shown with a note. `showExact` puts the closed form beside
/// a scalar double.
void Display(const Value& value, bool startOnNewLine, bool wide, bool showExact);

/// Shows a value behind its name and "="; without a name like an expression.
void displayNamed(const Value& value, std::string_view name);

/// Writes one row in the colour of a letter.
void writeRow(std::string_view text, char colourLetter, bool newLine);

}  // namespace vorpen
