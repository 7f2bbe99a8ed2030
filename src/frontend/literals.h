// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Numbers and strings as they stand in a line.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "frontend/token.h"

namespace vorpen {

struct ScannedLiteral {
    Token token;
    std::size_t end;
};

/// The number at a position, which may begin with "-". A TOK_INT when it has
/// neither point nor exponent and fits 32 bits.
/// @throws SyntaxError "error in number"
[[nodiscard]] ScannedLiteral readNumber(std::string_view text, std::size_t begin);

/// The string whose opening quote is at a position. A doubled quote inside
/// stands for one.
/// @throws SyntaxError "unterminated string at"
[[nodiscard]] ScannedLiteral readString(std::string_view text, std::size_t begin);

/// A string with values in it, such as 'r={r} cm', as the bracket that joins
/// its parts: ['r=' trim(str(r)) ' cm']. Nothing when the first braces hold
/// something else than a name; later ones of that kind stay as they are.
[[nodiscard]] std::optional<Token> interpolated(const Token& string);

}  // namespace vorpen
