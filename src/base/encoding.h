// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Text inside the program is one byte a character, in Windows-1252, so that a
// string is an array of small codes and an index counts characters. The world
// outside speaks UTF-8, and the hosts translate at the border with the
// functions of this header. Bytes that the program did not make itself, such
// as lines of a data file, may already be UTF-8; on the way out they are
// recognised and pass unchanged.
//
// A second small encoding is that of the font Symbol, in which Greek letters
// and mathematical signs are written; it is mapped to Unicode here.

#include <string>
#include <string_view>

namespace vorpen {

/// Appends a code point as UTF-8; one that is none is written as U+FFFD.
void appendUtf8(std::string& out, char32_t codePoint);

/// True when the bytes are UTF-8 as a whole: no overlong form, no surrogate,
/// nothing above U+10FFFF. Empty text is valid.
[[nodiscard]] bool isValidUtf8(std::string_view bytes);

/// UTF-8 to Windows-1252. A character without a byte becomes `?`, a byte that
/// belongs to no UTF-8 sequence is kept, and a byte order mark in front is
/// dropped.
[[nodiscard]] std::string fromUtf8(std::string_view utf8);

/// Text for the world outside: a run of bytes above 127 that is valid UTF-8
/// stands as it is, other bytes above 127 are translated from Windows-1252.
[[nodiscard]] std::string toUtf8(std::string_view text);

/// The character behind a Windows-1252 byte. The five bytes without one (0x81,
/// 0x8D, 0x8F, 0x90, 0x9D) stand for the control codes of the same number, so
/// that every byte survives a round trip.
[[nodiscard]] char32_t windows1252ToUnicode(unsigned char byte);

/// The sign behind a code of the Symbol encoding, U+FFFD where there is none.
/// Control codes below the blank stand for themselves.
/// Source: Adobe Systems, PostScript Language Reference, 3rd edition (1999),
/// appendix E.5, the Symbol encoding vector; bracket pieces and extenders have
/// the code points that Unicode has since given them.
[[nodiscard]] char32_t symbolToUnicode(unsigned char code);

/// Codes of the Symbol encoding as UTF-8.
[[nodiscard]] std::string symbolToUtf8(std::string_view codes);

}  // namespace vorpen
