// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/token.h"

#include "base/errors.h"

namespace vorpen {

std::string syntaxErrorText(std::string_view message, std::string_view source) {
    return std::string(message).append(" {g ").append(source);
}

std::string syntaxErrorText(std::string_view message, const Token& token) {
    const std::string_view text = token.text.empty() ? token.source() : std::string_view(token.text);
    if (text.empty()) return "syntax error, {g " + std::string(message);
    return syntaxErrorText(message, text);
}

void failAtToken(std::string_view message, const Token& token) {
    throw SyntaxError{syntaxErrorText(message, token)};
}

}  // namespace vorpen
