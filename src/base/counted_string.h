// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A text as the binary files of the program store it: a 32-bit length, the
// characters, a NUL.

#include <cstdint>
#include <istream>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace vorpen {

/// A length field above this can only come from damage.
inline constexpr std::int32_t storedLengthLimit = 100001;

/// Reads a text, which ends at its first NUL. Lengths that no text has, below
/// 0 or above the limit, give the empty string and read nothing further.
/// Nothing at the end of the file.
[[nodiscard]] std::optional<std::string> readCountedString(std::istream& in);

void writeCountedString(std::ostream& out, std::string_view text);

}  // namespace vorpen
