// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What may stand at the caret of a line that is being typed: names that the
// engine knows, and inside the quotes of a command for files the paths that
// there are.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

class Calc;

/// What may stand in place of the text from `start` to the caret, sorted.
struct Completion {
    std::size_t start = 0;
    std::vector<std::string> candidates;
};

/// Reads the line up to the caret. Never fails; a directory that cannot be
/// read has no paths.
[[nodiscard]] Completion completionAt(Calc& calc, std::string_view line, std::size_t caret);

}  // namespace vorpen
