// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How operators are written. The rest of the front end knows an operator as
// one character; the tables here say which signs and words stand for it.

#include <cstddef>
#include <optional>
#include <string_view>

#include "frontend/token.h"

namespace vorpen {

struct ScannedOperator {
    TokenKind kind;
    char code;
    std::size_t length;
};

/// The operator sign that a text begins with: the longest entry of the tables.
/// @throws SyntaxError "unrecognised operator"
[[nodiscard]] ScannedOperator readOperatorSign(std::string_view text);

/// A word that is an operator or begins a command (`cd`, `dir`, then of kind
/// TOK_COMMAND), when the text begins with one that ends there.
[[nodiscard]] std::optional<ScannedOperator> readReservedWord(std::string_view text);

}  // namespace vorpen
