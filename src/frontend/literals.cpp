// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/literals.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

#include "base/errors.h"

namespace vorpen {
namespace {

constexpr std::size_t none = std::string_view::npos;

char at(std::string_view text, std::size_t i) { return i < text.size() ? text[i] : '\0'; }

/// Behind the exponent that begins at `i`, or `i` when there is none: an "e"
/// with neither digit nor sign behind it begins a name.
std::size_t skipExponent(std::string_view text, std::size_t i) {
    if (at(text, i) != 'e') return i;
    const char next = at(text, i + 1);
    const bool isSigned = next == '+' || next == '-';
    if (!isSigned && !isDigit(next)) return i;
    std::size_t end = i + (isSigned ? 2 : 1);
    if (!isDigit(at(text, end))) throw SyntaxError{"error in number"};
    while (isDigit(at(text, end))) ++end;
    if (at(text, end) == '.' && isDigit(at(text, end + 1))) throw SyntaxError{"error in number"};
    return end;
}

std::optional<ScannedLiteral> readImaginaryUnit(std::string_view text, std::size_t begin) {
    const std::size_t digit = begin + (at(text, begin) == '-' ? 1 : 0);
    const char value = at(text, digit);
    const char unit = at(text, digit + 1);
    if ((value != '0' && value != '1') || (unit != 'i' && unit != 'j')) return std::nullopt;
    if (isNameCharacter(at(text, digit + 2))) return std::nullopt;
    return ScannedLiteral{Token(TOK_NUM, 'i', std::string(text.substr(begin, digit + 1 - begin))), digit + 2};
}

bool fits32Bits(std::string_view digits) {
    std::int32_t value = 0;
    return std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc();
}

/// The name between the first "{" of a text and the first "}" behind it, as
/// its place in the text.
std::optional<std::pair<std::size_t, std::size_t>> findBracedName(std::string_view text) {
    const std::size_t open = text.find('{');
    const std::size_t close = open == none ? none : text.find('}', open);
    if (close == none || !isLetter(text[open + 1])) return std::nullopt;
    const std::string_view name = text.substr(open + 1, close - open - 1);
    if (!std::all_of(name.begin(), name.end(), isNameCharacter)) return std::nullopt;
    return std::pair(open, close);
}

/// The tokens of trim(str(name)).
void appendValueText(std::vector<Token>& items, std::string_view name) {
    Token inner(TOK_BRACKET, ')');
    inner.items.emplace_back(TOK_NAME, ')', std::string(name));
    Token outer(TOK_BRACKET, ')');
    outer.items.emplace_back(TOK_NAME, '(', "str");
    outer.items.push_back(std::move(inner));
    items.emplace_back(TOK_NAME, '(', "trim");
    items.push_back(std::move(outer));
}

}  // namespace

ScannedLiteral readNumber(std::string_view text, std::size_t begin) {
    if (auto imaginary = readImaginaryUnit(text, begin)) return std::move(*imaginary);
    std::size_t end = begin + (at(text, begin) == '-' ? 1 : 0);
    bool hasDigit = false, hasPoint = false;
    for (;; ++end) {
        const char c = at(text, end);
        if (isDigit(c)) {
            hasDigit = true;
        } else if (c == '.' && !text.substr(end).starts_with("...")) {
            if (hasPoint) throw SyntaxError{"error in number"};
            hasPoint = true;
        } else {
            break;
        }
    }
    if (!hasDigit) throw SyntaxError{"error in number"};
    const std::size_t digitsEnd = end;
    end = skipExponent(text, end);
    const std::string_view digits = text.substr(begin, end - begin);
    const bool isInteger = !hasPoint && end == digitsEnd && fits32Bits(digits);
    return {Token(isInteger ? TOK_INT : TOK_NUM, 0, std::string(digits)), end};
}

ScannedLiteral readString(std::string_view text, std::size_t begin) {
    const char quote = text[begin];
    Token token(TOK_STRING, quote);
    for (std::size_t from = begin + 1;;) {
        const std::size_t next = text.find(quote, from);
        if (next == none) throw SyntaxError{syntaxErrorText("unterminated string at", text.substr(begin))};
        token.text.append(text.substr(from, next - from));
        if (at(text, next + 1) != quote) return {std::move(token), next + 1};
        token.text += quote;
        from = next + 2;
    }
}

std::optional<Token> interpolated(const Token& string) {
    std::string_view rest = string.text;
    auto braced = findBracedName(rest);
    if (!braced) return std::nullopt;
    Token bracket(TOK_BRACKET, ']');
    const auto appendPart = [&](std::string_view part) {
        bracket.items.emplace_back(TOK_STRING, string.code, std::string(part));
    };
    while (braced) {
        const auto [open, close] = *braced;
        appendPart(rest.substr(0, open));
        bracket.items.emplace_back(TOK_SPACE, ' ');
        appendValueText(bracket.items, rest.substr(open + 1, close - open - 1));
        bracket.items.emplace_back(TOK_SPACE, ' ');
        rest = rest.substr(close + 1);
        braced = findBracedName(rest);
    }
    appendPart(rest);
    return bracket;
}

}  // namespace vorpen
