// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/encoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace vorpen {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr char32_t byteOrderMark = 0xFEFF;

// clang-format off
/// The bytes 0x80 to 0x9F of Windows-1252; all others are their own code points.
constexpr std::array<char16_t, 32> windows1252Signs = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

/// The codes 0x20 to 0x7F of the Symbol encoding.
constexpr std::array<char16_t, 96> symbolLetters = {
    u' ', u'!', u'∀', u'#', u'∃', u'%', u'&', u'∋', u'(', u')', u'∗', u'+', u',', u'−', u'.', u'/',
    u'0', u'1', u'2', u'3', u'4', u'5', u'6', u'7', u'8', u'9', u':', u';', u'<', u'=', u'>', u'?',
    u'≅', u'Α', u'Β', u'Χ', u'Δ', u'Ε', u'Φ', u'Γ', u'Η', u'Ι', u'ϑ', u'Κ', u'Λ', u'Μ', u'Ν', u'Ο',
    u'Π', u'Θ', u'Ρ', u'Σ', u'Τ', u'Υ', u'ς', u'Ω', u'Ξ', u'Ψ', u'Ζ', u'[', u'∴', u']', u'⊥', u'_',
    u'‾', u'α', u'β', u'χ', u'δ', u'ε', u'φ', u'γ', u'η', u'ι', u'ϕ', u'κ', u'λ', u'μ', u'ν', u'ο',
    u'π', u'θ', u'ρ', u'σ', u'τ', u'υ', u'ϖ', u'ω', u'ξ', u'ψ', u'ζ', u'{', u'|', u'}', u'∼', 0xFFFD,
};

/// The codes 0xA0 to 0xFF of the Symbol encoding.
constexpr std::array<char16_t, 96> symbolSigns = {
    u'€', u'ϒ', u'′', u'≤', u'⁄', u'∞', u'ƒ', u'♣', u'♦', u'♥', u'♠', u'↔', u'←', u'↑', u'→', u'↓',
    u'°', u'±', u'″', u'≥', u'×', u'∝', u'∂', u'•', u'÷', u'≠', u'≡', u'≈', u'…', u'⏐', u'⎯', u'↵',
    u'ℵ', u'ℑ', u'ℜ', u'℘', u'⊗', u'⊕', u'∅', u'∩', u'∪', u'⊃', u'⊇', u'⊄', u'⊂', u'⊆', u'∈', u'∉',
    u'∠', u'∇', u'®', u'©', u'™', u'∏', u'√', u'⋅', u'¬', u'∧', u'∨', u'⇔', u'⇐', u'⇑', u'⇒', u'⇓',
    u'◊', u'⟨', u'®', u'©', u'™', u'∑', u'⎛', u'⎜', u'⎝', u'⎡', u'⎢', u'⎣', u'⎧', u'⎨', u'⎩', u'⎪',
    0xFFFD, u'⟩', u'∫', u'⌠', u'⎮', u'⌡', u'⎞', u'⎟', u'⎠', u'⎤', u'⎥', u'⎦', u'⎫', u'⎬', u'⎭', 0xFFFD,
};
// clang-format on

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

struct Utf8Character {
    char32_t codePoint = 0;
    std::size_t length = 0;  ///< 0 when no valid sequence begins here
};

/// The character that begins at a place that must exist.
Utf8Character readUtf8(std::string_view bytes, std::size_t at) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() - at < length) return {};
    char32_t codePoint = lead & (0x7F >> length);
    for (std::size_t k = 1; k < length; ++k) {
        const auto next = static_cast<unsigned char>(bytes[at + k]);
        if ((next & 0xC0) != 0x80) return {};
        codePoint = codePoint << 6 | (next & 0x3F);
    }
    const bool overlong = (length == 3 && codePoint < 0x800) || (length == 4 && codePoint < 0x10000);
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (overlong || surrogate || codePoint > 0x10FFFF) return {};
    return {codePoint, length};
}

char windows1252Byte(char32_t codePoint) {
    if (codePoint < 0x80 || (codePoint >= 0xA0 && codePoint <= 0xFF)) return static_cast<char>(codePoint);
    const auto sign = std::find(windows1252Signs.begin(), windows1252Signs.end(), codePoint);
    return sign == windows1252Signs.end() ? '?' : static_cast<char>(0x80 + (sign - windows1252Signs.begin()));
}

}  // namespace

void appendUtf8(std::string& out, char32_t codePoint) {
    if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        codePoint = replacementCharacter;
    const auto tail = [codePoint](int shift) {
        return static_cast<char>(0x80 | (codePoint >> shift & 0x3F));
    };
    if (codePoint < 0x80) {
        out += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        out += {static_cast<char>(0xC0 | codePoint >> 6), tail(0)};
    } else if (codePoint < 0x10000) {
        out += {static_cast<char>(0xE0 | codePoint >> 12), tail(6), tail(0)};
    } else {
        out += {static_cast<char>(0xF0 | codePoint >> 18), tail(12), tail(6), tail(0)};
    }
}

bool isValidUtf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = readUtf8(bytes, at).length;
        if (length == 0) return false;
        at += length;
    }
    return true;
}

std::string fromUtf8(std::string_view utf8) {
    std::string text;
    text.reserve(utf8.size());
    for (std::size_t at = 0; at < utf8.size();) {
        const Utf8Character character = readUtf8(utf8, at);
        if (character.length == 0) {
            text += utf8[at++];
            continue;
        }
        if (at > 0 || character.codePoint != byteOrderMark) text += windows1252Byte(character.codePoint);
        at += character.length;
    }
    return text;
}

std::string toUtf8(std::string_view text) {
    std::string utf8;
    utf8.reserve(text.size());
    for (auto at = text.begin(); at != text.end();) {
        const auto high = std::find_if_not(at, text.end(), isAscii);
        utf8.append(at, high);
        at = std::find_if(high, text.end(), isAscii);
        const std::string_view run(high, at);
        if (isValidUtf8(run)) {
            utf8 += run;
        } else {
            for (const char byte : run)
                appendUtf8(utf8, windows1252ToUnicode(static_cast<unsigned char>(byte)));
        }
    }
    return utf8;
}

char32_t windows1252ToUnicode(unsigned char byte) {
    return byte >= 0x80 && byte <= 0x9F ? windows1252Signs[byte - 0x80] : byte;
}

char32_t symbolToUnicode(unsigned char code) {
    if (code < 0x20) return code;
    if (code < 0x80) return symbolLetters[code - 0x20];
    return code < 0xA0 ? replacementCharacter : char32_t{symbolSigns[code - 0xA0]};
}

std::string symbolToUtf8(std::string_view codes) {
    std::string utf8;
    for (const char code : codes) appendUtf8(utf8, symbolToUnicode(static_cast<unsigned char>(code)));
    return utf8;
}

}  // namespace vorpen
