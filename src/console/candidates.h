// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Completes what is being typed. Who knows what may stand in a line is asked;
// what all candidates share is typed, and when that is nothing they are shown.

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "console/command_line.h"

namespace vorpen {

/// What may stand in place of the text from `start` to the caret, sorted.
struct Completion {
    std::size_t start = 0;
    std::vector<std::string> candidates;
};

using Completer = std::function<Completion(std::string_view line, std::size_t caret)>;

/// Types what the candidates at the caret share; answers those to choose from
/// when they share no more than stands there.
std::vector<std::string> complete(CommandLine& line, const Completer& completer);

/// Words in columns of equal width, filled row by row; of very many the first.
[[nodiscard]] std::vector<std::string> candidateRows(const std::vector<std::string>& words, int columns);

}  // namespace vorpen
