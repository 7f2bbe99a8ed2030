// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/number_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace vorpen {
namespace {

/// What the C library takes when no precision is given.
constexpr int defaultPrecision = 6;

/// No double has more significant decimal digits than 767, so more are never
/// written; the limit bounds the size of the text.
constexpr int maxPrecision = 767;

/// Up to this precision the text fits `shortTextSize` characters: sign, point,
/// the four zeros of 0.0001, digits and exponent.
constexpr int shortPrecision = 40;
constexpr std::size_t shortTextSize = 64;

/// A part of a complex number below this multiple of the other is not shown.
constexpr double negligiblePart = 1.1102230246251565e-15;

int effectivePrecision(int precision) {
    if (precision < 0) return defaultPrecision;
    return std::clamp(precision, 1, maxPrecision);
}

/// Removes the plus sign and one leading zero of the exponent, in place;
/// answers the new end.
char* tidyExponent(char* first, char* last) {
    // The exponent is "e", a sign and two or three digits at the very end.
    const auto length = last - first;
    if (length < 5) return last;
    char* const e = length > 5 && last[-5] == 'e' ? last - 5 : last - 4;
    if (*e != 'e') return last;
    char* target = e + 1;
    const char* source = e + 1;
    if (*source == '-') ++target;
    ++source;
    if (*source == '0') ++source;
    return std::copy(source, static_cast<const char*>(last), target);
}

/// Writes a finite number; the buffer must be long enough.
char* writeFinite(char* first, char* last, double x, int precision) {
    return tidyExponent(first, std::to_chars(first, last, x, std::chars_format::general, precision).ptr);
}

/// Powers of ten up to the last that is below 2^53.
constexpr std::array<double, 16> powersOfTen = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// Whether x is an integer, not -0, whose digits are all significant, so that
/// it may be written as an integer.
bool isShortInteger(double x, int precision) {
    const double limit = powersOfTen[static_cast<std::size_t>(std::min(precision, 15))];
    return std::fabs(x) < limit && static_cast<double>(static_cast<std::int64_t>(x)) == x &&
           (x != 0 || !std::signbit(x));
}

}  // namespace

void appendDoubleText(std::string& text, double x, int precision) {
    precision = effectivePrecision(precision);
    if (std::isnan(x)) {
        text += "nan";
    } else if (std::isinf(x)) {
        text += x > 0 ? "inf" : "-inf";
    } else if (precision <= shortPrecision) {
        std::array<char, shortTextSize> buffer;
        char* const first = buffer.data();
        char* const last = first + buffer.size();
        char* const end = isShortInteger(x, precision)
                              ? std::to_chars(first, last, static_cast<std::int64_t>(x)).ptr
                              : writeFinite(first, last, x, precision);
        text.append(first, end);
    } else {
        const std::size_t start = text.size();
        text.resize(start + static_cast<std::size_t>(precision) + shortTextSize);
        const char* const end = writeFinite(text.data() + start, text.data() + text.size(), x, precision);
        text.resize(static_cast<std::size_t>(end - text.data()));
    }
}

std::string doubleText(double x, int precision) {
    std::string text;
    appendDoubleText(text, x, precision);
    return text;
}

std::string complexText(std::complex<double> z, int precision) {
    const double re = z.real();
    const double im = z.imag();
    if (std::fabs(im) < negligiblePart * std::fabs(re)) return doubleText(re, precision);
    if (std::fabs(re) < negligiblePart * std::fabs(im)) return doubleText(im, precision) + "i";
    std::string text = doubleText(re, precision);
    if (im == 0) return text;
    if (im > 0) text += '+';
    if (im != 1) appendDoubleText(text, im, precision);
    text += 'i';
    return text;
}

}  // namespace vorpen
