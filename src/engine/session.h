// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The global variables from one run of the program to the next, in the file
// "vorpen_env.bin" of the program's directory: for each variable its name and
// its value in serial form, and at the end an empty name. Constants and
// functions are not kept.

#include <string>

#include "base/host.h"
#include "frontend/symbol_table.h"

namespace vorpen {

/// Variables of this many elements are not kept.
inline constexpr int largeMatrix = 10000;

/// Writes the session file. When there is a large variable the user is asked
/// first, and a Cancel leaves the former file as it is. A file that cannot be
/// opened is passed over in silence.
void saveSession(const std::string& directory, const SymbolTable& symbols, Host& host);

/// Declares the variables of the session file, each in the place of whatever
/// had its name. A missing file changes nothing, a damaged one is told in a
/// message box, and what was read before the damage counts.
void loadSession(const std::string& directory, SymbolTable& symbols, Host& host);

}  // namespace vorpen
