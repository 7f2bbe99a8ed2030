// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Fonts as plain data: what a run of text in some style is drawn with, and how
// wide it is on average paper. A window has fonts of its own and measures with
// them; where there is none, the widths of the standard faces stand in for it.

#include <cstdint>
#include <string_view>

namespace vorpen {

enum class Face { Times, Courier, Symbol };

/// The name under which a system knows a face.
[[nodiscard]] std::string_view faceName(Face face);

struct Font {
    Face face = Face::Times;
    int height = 16;  ///< in pixels
    int weight = 400;
    bool italic = false;
    bool underline = false;
    int angle = 0;  ///< of the base line, in tenths of a degree, counted anticlockwise

    bool operator==(const Font&) const = default;
};

/// The font of a run with this style code, in a text of this face, size
/// (pixels) and angle (tenths of a degree).
[[nodiscard]] Font selectFont(Face face, int size, char code, int angle);

/// Width of a text in thousandths of the font size, from the advance widths of
/// the faces, without kerning. Source: Adobe Systems, Adobe Font Metrics of the
/// core 14 fonts (1997): Times-Roman and Courier in the Windows-1252 encoding,
/// Symbol in its own.
[[nodiscard]] std::int64_t faceWidth(Face face, std::string_view text);

}  // namespace vorpen
