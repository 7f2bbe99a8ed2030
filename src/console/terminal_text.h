// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A line of the console as a terminal or a pipe gets it: decoded, in UTF-8,
// with signs of the Symbol encoding as Unicode. On a terminal the styles
// become escape sequences. Nobody tells a program whether a terminal is dark
// or light, so each colour keeps its hue and is brought to the one lightness
// that stands out against both black and white; black becomes the terminal's
// own text colour. The palette of 256 colours is used, the largest one that
// every terminal has.

#include <string>
#include <string_view>

namespace vorpen {

/// The decoded line as UTF-8. With colours it carries escape sequences for
/// colour, bold, italic and underline, ends in the plain style, and control
/// codes of the text other than tab and line feed are shown as pictures, since
/// text from a file must not steer the terminal.
[[nodiscard]] std::string terminalText(std::string_view line, bool colours);

}  // namespace vorpen
