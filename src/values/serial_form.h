// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A value as bytes, the same in data files and in the session file: size,
// rows, mark and kind as 32-bit numbers, then the elements as they lie in
// memory, or the items of a list, each in this same form. A file has no
// signature and no checksum, so a reader takes nothing for granted: whatever
// bytes come, the answer is a sound value or the statement that there is none.

#include <cstdint>
#include <istream>
#include <memory>
#include <optional>
#include <ostream>

#include "values/value.h"

namespace vorpen {

/// What a reader takes of one array; further elements are passed over.
inline constexpr std::int32_t mostStoredElements = 6003000;

/// Lists inside lists are read and written by recursion, and more levels than
/// this in a file can only come from damage.
inline constexpr int mostStoredLevels = 1000;

/// False for a value whose lists are nested more deeply than can be stored.
[[nodiscard]] bool canBeStored(const Value& value);

/// Writes a value that can be stored. A missing item of a list is written as
/// an empty number.
void writeValue(std::ostream& out, const Value& value);

/// Reads a value; null when the size field is below 0, of which nothing
/// further is read. Rows, form and planes that do not fit the elements are
/// mended. An unknown kind is told on the console and read as doubles.
/// Nothing when the stream ends before the value does, or when its lists are
/// nested too deeply.
/// @throws std::bad_alloc
[[nodiscard]] std::optional<std::unique_ptr<Value>> readValue(std::istream& in);

/// The kind of the value that stands next in the stream, read from its head.
/// Nothing when it has no head.
[[nodiscard]] std::optional<ValueType> readValueType(std::istream& in);

}  // namespace vorpen
