// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A line of the console as a terminal or a pipe gets it: decoded, in UTF-8,
// with signs of the Symbol encoding as Unicode. On a terminal the styles
// become escape sequences. Nobody tells a program whether a terminal is dark
// or light, so each colour keeps its hue and is brought to the one lightness
// that stands out against both black and white; black becomes the terminal's
// own text colour. A terminal of 16 colours gets the one of the nearest hue.

#include <string>
#include <string_view>

#include "console/markup.h"

namespace vorpen {

/// How many colours a terminal has; with none it gets no escape sequences.
enum class ColourDepth { none, sixteen, palette, full };

/// The escape sequence for a text colour; empty for black and without colours.
[[nodiscard]] std::string colourSequence(Colour colour, ColourDepth depth);

/// The decoded line as UTF-8. With colours it carries escape sequences for
/// colour, bold, italic and underline, ends in the plain style, and control
/// codes of the text other than tab and line feed are shown as pictures, since
/// text from a file must not steer the terminal.
[[nodiscard]] std::string terminalText(std::string_view line, ColourDepth colours);

/// The same for a terminal of 256 colours, or for none.
[[nodiscard]] inline std::string terminalText(std::string_view line, bool colours) {
    return terminalText(line, colours ? ColourDepth::palette : ColourDepth::none);
}

/// Plain text, one byte a character, between an escape sequence for its style
/// and that for the plain style; both are left out for an empty style. Control
/// codes are shown as pictures.
[[nodiscard]] std::string styledText(std::string_view style, std::string_view text);

}  // namespace vorpen
