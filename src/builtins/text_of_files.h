// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Values as the text that is written to files: the rows of their string form
// with nine digits, all of them, in whole lines.

#include <string>
#include <vector>

#include "values/value.h"

namespace vorpen {

/// The lines of a value, those of its items for a list. An empty value or item
/// is an empty line.
/// @throws RuntimeError for a list inside a list.
[[nodiscard]] std::vector<std::string> linesInFile(const Value& value);

/// The same lines with a line feed between them.
[[nodiscard]] std::string textOfRows(const Value& value);

}  // namespace vorpen
