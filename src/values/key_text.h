// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A key is a short text packed into the 64 bits of one number, so that an
// array can hold names. The text is read as a number in the smallest base that
// has a digit for each of its characters, first character lowest; the low two
// bits tell which base it was. The same bits are stored as a double.

#include <string>
#include <string_view>

namespace vorpen {

/// The key of a text. Lower case letters alone give room for 13 characters,
/// letters with digits or a little punctuation for 10, anything else for 9. A
/// longer text prints "key too long" and is packed with wrapped arithmetic.
[[nodiscard]] double zipKey(std::string_view text);

/// The text of a key. Characters of digit 0 at its end are lost in the packing.
[[nodiscard]] std::string unzipKey(double key);

}  // namespace vorpen
