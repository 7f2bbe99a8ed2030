// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/terminal_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "base/encoding.h"
#include "console/markup.h"

namespace vorpen {
namespace {

constexpr std::string_view plainStyle = "\x1b[0m";

/// The relative luminance that has the same contrast against black and white,
/// (Y + 0.05)^2 = 0.05 * 1.05 (W3C, Web Content Accessibility Guidelines 2.1, 2018).
constexpr double middleLuminance = 0.179;

/// Colours darker than this in every component are black to the eye.
constexpr unsigned nearlyBlack = 32;

using Rgb = std::array<double, 3>;

double luminance(const Rgb& linear) { return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]; }

/// Brings linear components to the middle luminance: darkens in proportion, or
/// lightens in proportion as far as that goes and then mixes with white.
void balance(Rgb& linear) {
    const double brightest = *std::max_element(linear.begin(), linear.end());
    const double scale = std::min(middleLuminance / luminance(linear), 1 / brightest);
    for (double& component : linear) component *= scale;
    const double reached = luminance(linear);
    const double white = std::max(0.0, (middleLuminance - reached) / (1 - reached));
    for (double& component : linear) component += (1 - component) * white;
}

/// The nearest level of the palette's colour cube (0, 95, 135, ..., 255).
int cubeLevel(double linear) {
    const double level = 255 * std::pow(linear, 1 / 2.2);
    return level < 48 ? 0 : level < 115 ? 1 : std::min(5, static_cast<int>((level - 35) / 40));
}

/// The components of a colour that is not black, at the lightness that suits
/// any background.
Rgb balanced(Colour colour) {
    Rgb linear;
    for (int k = 0; k < 3; ++k) linear[k] = std::pow((colour >> 8 * k & 0xFF) / 255.0, 2.2);
    balance(linear);
    return linear;
}

/// The entry in the palette of 256 colours.
int paletteEntry(const Rgb& linear) {
    return 16 + 36 * cubeLevel(linear[0]) + 6 * cubeLevel(linear[1]) + cubeLevel(linear[2]);
}

/// One of the eight hues of ECMA-48: the components that are at least half as
/// strong as the strongest.
int nearestHue(Colour colour) {
    unsigned strongest = 1;
    for (int k = 0; k < 3; ++k) strongest = std::max(strongest, colour >> 8 * k & 0xFF);
    int hue = 0;
    for (int k = 0; k < 3; ++k)
        if (2 * (colour >> 8 * k & 0xFF) >= strongest) hue |= 1 << k;
    // White text would vanish on white; grey is seen on both.
    return hue == 7 ? 90 : 30 + hue;
}

std::string fullColour(const Rgb& linear) {
    std::string codes = "38;2";
    for (const double component : linear)
        codes += ";" + std::to_string(static_cast<int>(std::lround(255 * std::pow(component, 1 / 2.2))));
    return codes;
}

bool looksBlack(Colour colour) {
    return (colour & 0xFF) < nearlyBlack && (colour >> 8 & 0xFF) < nearlyBlack &&
           (colour >> 16 & 0xFF) < nearlyBlack;
}

/// The codes of a colour between escape and "m".
std::string colourCodes(Colour colour, ColourDepth depth) {
    if (looksBlack(colour)) return {};
    switch (depth) {
        case ColourDepth::none: return {};
        case ColourDepth::sixteen: return std::to_string(nearestHue(colour));
        case ColourDepth::palette: return "38;5;" + std::to_string(paletteEntry(balanced(colour)));
        case ColourDepth::full: return fullColour(balanced(colour));
    }
    return {};
}

std::string sequence(const std::string& codes) { return codes.empty() ? codes : "\x1b[" + codes + "m"; }

/// The escape sequence of a run's style, empty for plain text.
std::string styleSequence(const TextRun& run, ColourDepth depth) {
    std::string codes;
    switch (run.code) {
        case '*': codes = "1"; break;
        case '/': codes = "3"; break;
        case '=': codes = "4"; break;
        default: break;
    }
    const std::string colour = colourCodes(run.colour, depth);
    if (!codes.empty() && !colour.empty()) codes += ';';
    return sequence(codes + colour);
}

/// Control codes as their pictures; the second-row controls, two bytes in
/// UTF-8, as the sign for a character that cannot be shown.
std::string withoutControls(std::string_view utf8, bool all = false) {
    std::string shown;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        if (byte == 0x7F) {
            appendUtf8(shown, 0x2421);
        } else if (byte < 0x20 && (all || (byte != '\t' && byte != '\n'))) {
            appendUtf8(shown, 0x2400 + byte);
        } else if (byte == 0xC2 && static_cast<unsigned char>(utf8[at + 1]) < 0xA0) {
            appendUtf8(shown, 0xFFFD);
            ++at;
        } else {
            shown += utf8[at];
        }
    }
    return shown;
}

bool isHigh(char c) { return static_cast<unsigned char>(c) >= 0x80; }

/// Moves the ends of runs so that none cuts through a run of high bytes, which
/// may be one UTF-8 character; symbols are single bytes and stay.
void keepCharactersWhole(std::string_view text, std::vector<TextRun>& runs) {
    for (std::size_t k = 0; k + 1 < runs.size(); ++k) {
        if (k > 0) runs[k].end = std::max(runs[k].end, runs[k - 1].end);
        if (runs[k].code == '$' || runs[k + 1].code == '$' || runs[k].end == 0) continue;
        while (runs[k].end < runs[k + 1].end && isHigh(text[runs[k].end - 1]) && isHigh(text[runs[k].end])) {
            ++runs[k].end;
        }
    }
}

}  // namespace

std::string colourSequence(Colour colour, ColourDepth depth) { return sequence(colourCodes(colour, depth)); }

std::string styledText(std::string_view style, std::string_view text) {
    if (text.empty()) return {};
    std::string utf8;
    for (const char c : text) appendUtf8(utf8, windows1252ToUnicode(static_cast<unsigned char>(c)));
    std::string shown(style);
    shown += withoutControls(utf8, true);
    if (!style.empty()) shown += plainStyle;
    return shown;
}

std::string terminalText(std::string_view line, ColourDepth depth) {
    const bool colours = depth != ColourDepth::none;
    std::vector<TextRun> runs;
    const std::string text = decode(line, 0, runs);
    keepCharactersWhole(text, runs);
    // Nothing of the text is left out, so what lies behind the last run follows it in the plain style.
    runs.push_back({static_cast<std::uint32_t>(text.size()), 0, '.', 0});
    std::string shown;
    std::string style;
    std::size_t start = 0;
    for (const TextRun& run : runs) {
        if (run.end <= start) continue;
        if (colours) {
            const std::string wanted = styleSequence(run, depth);
            if (wanted != style) {
                if (!style.empty()) shown += plainStyle;
                shown += wanted;
                style = wanted;
            }
        }
        const std::string_view piece = std::string_view(text).substr(start, run.end - start);
        const std::string utf8 = run.code == '$' ? symbolToUtf8(piece) : toUtf8(piece);
        shown += colours ? withoutControls(utf8) : utf8;
        start = run.end;
    }
    if (!style.empty()) shown += plainStyle;
    return shown;
}

}  // namespace vorpen
