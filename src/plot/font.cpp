// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/font.h"

#include <array>

namespace vorpen {
namespace {

using WidthTable = std::array<short, 224>;  ///< of the codes from 32 on

// clang-format off
/// Times-Roman in the order of Windows-1252; 0 where it has no character.
constexpr WidthTable timesWidths = {
    250, 333, 408, 500, 500, 833, 778, 180, 333, 333, 500, 564, 250, 333, 250, 278,
    500, 500, 500, 500, 500, 500, 500, 500, 500, 500, 278, 278, 564, 564, 564, 444,
    921, 722, 667, 667, 722, 611, 556, 722, 722, 333, 389, 722, 611, 889, 722, 722,
    556, 722, 667, 556, 611, 722, 722, 944, 722, 722, 611, 333, 278, 333, 469, 500,
    333, 444, 500, 444, 500, 444, 333, 500, 500, 278, 278, 500, 278, 778, 500, 500,
    500, 500, 333, 389, 278, 500, 500, 722, 500, 500, 444, 480, 200, 480, 541, 0,
    500, 0, 333, 500, 444, 1000, 500, 500, 333, 1000, 556, 333, 889, 0, 611, 0,
    0, 333, 333, 444, 444, 350, 500, 1000, 333, 980, 389, 333, 722, 0, 444, 722,
    250, 333, 500, 500, 500, 500, 200, 500, 333, 760, 276, 500, 564, 333, 760, 333,
    400, 564, 300, 300, 333, 500, 453, 250, 333, 300, 310, 500, 750, 750, 750, 444,
    722, 722, 722, 722, 722, 722, 889, 667, 611, 611, 611, 611, 333, 333, 333, 333,
    722, 722, 722, 722, 722, 722, 722, 564, 722, 722, 722, 722, 722, 722, 556, 500,
    444, 444, 444, 444, 444, 444, 667, 444, 444, 444, 444, 444, 278, 278, 278, 278,
    500, 500, 500, 500, 500, 500, 500, 564, 500, 500, 500, 500, 500, 500, 500, 500,
};

/// Symbol in the order of its own encoding; 0 where it has no character.
constexpr WidthTable symbolWidths = {
    250, 333, 713, 500, 549, 833, 778, 439, 333, 333, 500, 549, 250, 549, 250, 278,
    500, 500, 500, 500, 500, 500, 500, 500, 500, 500, 278, 278, 549, 549, 549, 444,
    549, 722, 667, 722, 612, 611, 763, 603, 722, 333, 631, 722, 686, 889, 722, 722,
    768, 741, 556, 592, 611, 690, 439, 768, 645, 795, 611, 333, 863, 333, 658, 500,
    500, 631, 549, 549, 494, 439, 521, 411, 603, 329, 603, 549, 549, 576, 521, 549,
    549, 521, 549, 603, 439, 576, 713, 686, 493, 686, 494, 480, 200, 480, 549, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    750, 620, 247, 549, 167, 713, 500, 753, 753, 753, 753, 1042, 987, 603, 987, 603,
    400, 549, 411, 549, 549, 713, 494, 460, 549, 549, 549, 549, 1000, 603, 1000, 658,
    823, 686, 795, 987, 768, 768, 823, 768, 768, 713, 713, 713, 713, 713, 713, 713,
    768, 713, 790, 790, 890, 823, 549, 250, 713, 603, 603, 1042, 987, 603, 987, 603,
    494, 329, 790, 790, 786, 713, 384, 384, 384, 384, 384, 384, 494, 494, 494, 494,
    0, 329, 274, 686, 686, 686, 384, 384, 384, 384, 384, 384, 494, 494, 494, 0,
};
// clang-format on

/// All characters of Courier.
constexpr int courierWidth = 600;

int widthOf(Face face, char c) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 32) return 0;
    switch (face) {
        case Face::Times: return timesWidths[code - 32u];
        case Face::Symbol: return symbolWidths[code - 32u];
        case Face::Courier: break;
    }
    return courierWidth;
}

/// Indices are drawn in three quarters of the size of their text.
constexpr int indexPercent = 75;

}  // namespace

std::string_view faceName(Face face) {
    switch (face) {
        case Face::Courier: return "Courier New";
        case Face::Symbol: return "Symbol";
        case Face::Times: break;
    }
    return "Times New Roman";
}

Font selectFont(Face face, int size, char code, int angle) {
    Font font;
    font.face = code == '$' ? Face::Symbol : face;
    const bool isIndex = code == '^' || code == '_';
    font.height = isIndex ? static_cast<int>(std::int64_t{size} * indexPercent / 100) : size;
    font.weight = code == '*' ? 700 : 400;
    font.italic = code == '/';
    font.underline = code == '=';
    font.angle = angle;
    return font;
}

std::int64_t faceWidth(Face face, std::string_view text) {
    std::int64_t width = 0;
    for (const char c : text) width += widthOf(face, c);
    return width;
}

}  // namespace vorpen
