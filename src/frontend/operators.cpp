// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/operators.h"

#include "base/errors.h"

namespace vorpen {
namespace {

struct Row {
    std::string_view spelling;
    char code;
    TokenKind kind;
};

// clang-format off
/// Signs of several characters; a longer one stands before its beginning.
constexpr Row signs[] = {
    {"===", 'I', TOK_OP},     {"...", 'e', TOK_OP},
    {"++",  'i', TOK_UNARY},  {"--",  'd', TOK_UNARY},
    {"^^",  'R', TOK_OP},     {"==",  'E', TOK_OP},
    {"&&",  'A', TOK_OP},     {"||",  'O', TOK_OP},
    {"//",  'V', TOK_OP},     {"<<",  'g', TOK_ASSIGN},
    {">>",  'o', TOK_OP},     {"\?\?",  'Q', TOK_OP},
    {"..",  'f', TOK_NAME},   {"_/",  '_', TOK_OP},
    {"*=",  'T', TOK_ASSIGN}, {"+=",  'P', TOK_ASSIGN},
    {"-=",  'M', TOK_ASSIGN}, {"/=",  'D', TOK_ASSIGN},
    {"<=",  'L', TOK_OP},     {"~=",  'N', TOK_OP},
    {">=",  'G', TOK_OP},
    {"@+",  'p', TOK_OP},     {"@-",  'm', TOK_OP},
    {"@^",  'v', TOK_OP},     {"@&",  'a', TOK_OP},
    {"@|",  'r', TOK_OP},     {"@!",  'X', TOK_OP},
};

/// Signs that the separators begin; the scanner reads them by itself.
constexpr Row separatorSigns[] = {
    {",=", 'C', TOK_ASSIGN},   {";=", 'S', TOK_ASSIGN},
    {"::", 'W', TOK_SEP},      {"/.", 'J', TOK_SEP},
    {":=", ':', TOK_DEFINE},   {"::=", 'v', TOK_DEFINE},
    {";;", ';', TOK_DISPLAY},  {";!", '!', TOK_DISPLAY},
    {";?", '?', TOK_DISPLAY},
};

constexpr Row words[] = {
    {"cd",    0,   TOK_COMMAND}, {"dir",    0,   TOK_COMMAND},
    {"mod",   'u', TOK_OP},      {"vec",    'v', TOK_OP},
    {"and",   '&', TOK_OP},      {"or",     '|', TOK_OP},
    {"bitand", 'a', TOK_OP},     {"bitor",  'r', TOK_OP},
    {"xor",   'x', TOK_OP},
    {"And",   'A', TOK_OP},      {"Or",     'O', TOK_OP},
};
// clang-format on

/// One character that stands for itself, with the two quotes of a transpose.
constexpr std::string_view singleSigns = "+-*/^<>=&|~%?@_.!,;:'\"";

template <std::size_t count>
std::string_view spellingIn(const Row (&rows)[count], const Token& token) {
    // A leading operator has become unary, so the kind tells the families
    // apart and no more.
    const bool isOperator = token.kind == TOK_OP || token.kind == TOK_UNARY || token.kind == TOK_ASSIGN;
    for (const Row& row : rows) {
        const bool rowIsOperator = row.kind == TOK_OP || row.kind == TOK_UNARY || row.kind == TOK_ASSIGN;
        const bool sameFamily = row.kind == token.kind || (isOperator && rowIsOperator);
        if (sameFamily && row.code == token.code) return row.spelling;
    }
    return {};
}

}  // namespace

ScannedOperator readOperatorSign(std::string_view text) {
    const char first = text[0];
    const char second = text.size() > 1 ? text[1] : ' ';
    for (const Row& row : signs) {
        if (row.spelling[0] == first && row.spelling[1] == second && text.starts_with(row.spelling))
            return {row.kind, row.code, row.spelling.size()};
    }
    const bool isBlank = second == ' ' || second == '\t';
    if (first == '/' && second == '.') {
        const char third = text.size() > 2 ? text[2] : ' ';
        if (third == ' ' || third == '\t' || isLetter(third)) return {TOK_SEP, 'J', 2};
    }
    if (first == '@' && !isBlank && !isLetter(second)) throw SyntaxError{"unrecognised operator"};
    if (first == second && first != '!' && first != '~') throw SyntaxError{"unrecognised operator"};
    const TokenKind kind = first == '=' ? TOK_ASSIGN : first == '~' ? TOK_UNARY : TOK_OP;
    return {kind, first, 1};
}

std::optional<ScannedOperator> readReservedWord(std::string_view text) {
    // Nearly every name is none of these.
    constexpr std::string_view firstLetters = "cdmvaobxAO";
    if (text.empty() || firstLetters.find(text[0]) == firstLetters.npos) return std::nullopt;
    for (const Row& row : words) {
        const std::size_t length = row.spelling.size();
        if (row.spelling[0] != text[0] || !text.starts_with(row.spelling)) continue;
        if (text.size() == length || !isNameCharacter(text[length]))
            return ScannedOperator{row.kind, row.code, length};
    }
    return std::nullopt;
}

std::string_view operatorSpelling(const Token& token) {
    if (!token.text.empty())
        return token.is(TOK_OP) || token.is(TOK_UNARY) ? std::string_view(token.text) : "";
    if (const std::string_view spelling = spellingIn(signs, token); !spelling.empty()) return spelling;
    if (const std::string_view spelling = spellingIn(separatorSigns, token); !spelling.empty())
        return spelling;
    const bool standsForItself =
        token.is(TOK_OP) || token.is(TOK_UNARY) || token.is(TOK_ASSIGN) || token.is(TOK_SEP);
    const std::size_t place = standsForItself ? singleSigns.find(token.code) : singleSigns.npos;
    return place == singleSigns.npos ? std::string_view() : singleSigns.substr(place, 1);
}

}  // namespace vorpen
