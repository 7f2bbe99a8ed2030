// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What may stand at the caret of a line that is being typed: names that the
// engine knows, and inside the quotes of a command for files the paths that
// there are.

#include <cstddef>
#include <string_view>

#include "console/candidates.h"

namespace vorpen {

class Calc;

/// Reads the line up to the caret. Never fails; a directory that cannot be
/// read has no paths.
[[nodiscard]] Completion completionAt(Calc& calc, std::string_view line, std::size_t caret);

}  // namespace vorpen
