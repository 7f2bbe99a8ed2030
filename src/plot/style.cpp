// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/style.h"

#include <algorithm>

namespace vorpen {
namespace {

constexpr std::size_t none = std::string_view::npos;
constexpr std::string_view markers = "+x.ost~|!_";
constexpr std::string_view linePatterns = "-=:;";  ///< in the order of PenStyle

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isMarker(char c) { return markers.find(c) != none; }

/// The number whose digits begin at a place, limited to maxWidth.
int numberAt(std::string_view text, std::size_t at) {
    int number = 0;
    for (; at < text.size() && isDigit(text[at]); ++at)
        number = std::min(number * 10 + (text[at] - '0'), maxWidth);
    return number;
}

/// A letter without a colour, or with black that is not called `k`, changes
/// nothing.
void takeColour(Colour& colour, char letter) {
    const Colour found = colourTable().colourOf(letter);
    if (found != 0 || letter == 'k') colour = found;
}

/// The number at the end of a style, unless it is the size of a marker; -1
/// without one.
int trailingNumber(std::string_view text) {
    const std::size_t last = text.find_last_of("0123456789");
    if (last == none) return -1;
    std::size_t first = last;
    while (first > 0 && isDigit(text[first - 1])) --first;
    return first > 0 && isMarker(text[first - 1]) ? -1 : numberAt(text, first);
}

}  // namespace

void PlotStyle::parseStyle(std::string_view text) {
    if (text.empty()) return;
    if (text.find('^') != none) xorMode = true;
    const std::size_t fill = text.find('#');
    if (fill != none && fill + 1 < text.size()) takeColour(fillColour, text[fill + 1]);
    const std::size_t letter = text.find_first_not_of("#^");
    if (letter != none) takeColour(lineColour, text[letter]);

    const std::size_t pattern = text.find_first_of(linePatterns);
    if (pattern != none) {
        penStyle = static_cast<PenStyle>(linePatterns.find(text[pattern]));
        // Wider pens have no pattern.
        if (penStyle != PenStyle::Solid) width = 1;
        drawLine = true;
    } else {
        penStyle = PenStyle::Solid;
        drawLine = fill == none && text.find_first_of(markers) == none;
    }
    const int number = trailingNumber(text);
    if (number >= 0) width = number;
}

MarkerStyle markerOf(std::string_view text) {
    MarkerStyle style;
    const std::size_t at = text.find_first_of(markers);
    if (at == none) return style;
    style.marker = text[at];
    if (at + 1 < text.size() && isDigit(text[at + 1])) style.size = numberAt(text, at + 1);
    return style;
}

bool asksForFill(std::string_view text) { return text.find('#') != none; }

}  // namespace vorpen
