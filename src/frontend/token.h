// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the scanner makes of a line. Tokens are nested: a bracket owns the
// tokens inside it, so that whoever reads tokens never looks for the matching
// end. Operators are single characters everywhere behind the scanner, whatever
// they look like in the source; a name also records the character that
// directly follows it, since `f(`, `x[`, `x.` and `x\` decide what is meant.
//
// Some tokens stand for a stretch of source (a bracket in a message, the body
// of a quick function). They share the line that they were read from instead
// of holding a copy, so that a line of a thousand brackets stays as cheap as
// its length.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

[[nodiscard]] constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
[[nodiscard]] constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
/// Of a name behind its first character, which is a letter.
[[nodiscard]] constexpr bool isNameCharacter(char c) { return isLetter(c) || isDigit(c) || c == '_'; }

enum TokenKind : int {
    TOK_NONE = 0,        ///< of a character that starts no token
    TOK_NAME = 1,        ///< identifier or keyword; code is the character directly behind it
    TOK_INT = 2,         ///< integer literal that fits 32 bits; text has the digits and a sign
    TOK_NUM = 3,         ///< any other number; code 'i' for an imaginary literal
    TOK_STRING = 4,      ///< text has the contents, code is the opening quote
    TOK_OP = 5,          ///< binary operator
    TOK_UNARY = 6,       ///< prefix or postfix operator; a quote is a transpose
    TOK_ASSIGN = 7,      ///< code is '=', one of "TPMDCS", or 'g' for <<
    TOK_SEP = 8,         ///< code is one of ",;:", 'W' for ::, 'J' for the such-that mark
    TOK_BRACKET = 9,     ///< code is the closing bracket, or '{' for a block left open
    TOK_DOTTED = 10,     ///< a bracket directly followed by ".", which is consumed
    TOK_EMPTY = 11,      ///< the literal []
    TOK_DEFINE = 12,     ///< := (code ':') or ::= (code 'v'); source() is the rest of the line
    TOK_DISPLAY = 13,    ///< code is one of ";!?", or 0 for a statement that shows nothing
    TOK_BACKSLASH = 14,  ///< code is the number of backslashes; see below
    TOK_SPACE = 15,      ///< implied comma between elements of [...]
    TOK_BLOCK_END = 16,  ///< a "}" that closes a block opened on an earlier line
    TOK_COMMAND = 17,    ///< of the words `cd` and `dir`, never in a finished line
    TOK_ROW = 18,        ///< implied ";" at a line break inside [...]
};

/// One scanned token. A TOK_BACKSLASH is either a run of backslashes, with the
/// name behind them in `text` (empty when there is none), or a bracket that was
/// written [i,:] or [:,j]: then `items` has the index that is left and `code`
/// is 1 for a row and 2 for a column.
struct Token {
    Token() = default;
    Token(TokenKind kind, char code, std::string text = {}) : text(std::move(text)), kind(kind), code(code) {}

    /// Spelling of a name, digits of a number, contents of a string. Empty for
    /// operators (word operators excepted), separators and brackets.
    std::string text;
    TokenKind kind = TOK_NONE;
    char code = 0;
    std::vector<Token> items;

    [[nodiscard]] bool is(TokenKind k) const { return kind == k; }
    [[nodiscard]] bool is(TokenKind k, char c) const { return kind == k && code == c; }

    /// For a bracket the source from the bracket to the last closing bracket
    /// of its kind on that line; for a TOK_DEFINE the rest of the line. Empty
    /// for other tokens. The mark at the end of a line is never part of it.
    [[nodiscard]] std::string_view source() const {
        return line_ ? std::string_view(*line_).substr(begin_, end_ - begin_) : std::string_view();
    }
    void setSource(std::shared_ptr<const std::string> line, std::size_t begin, std::size_t end) {
        line_ = std::move(line);
        begin_ = begin;
        end_ = end;
    }

private:
    std::shared_ptr<const std::string> line_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

/// The text of a failure at a token: the message and the token's text in
/// green, or for a token without text "syntax error, " and the message in
/// green.
[[nodiscard]] std::string syntaxErrorText(std::string_view message, const Token& token);

/// The text of a failure with a stretch of source in green behind it.
[[nodiscard]] std::string syntaxErrorText(std::string_view message, std::string_view source);

/// Raises a SyntaxError in that form.
[[noreturn]] void failAtToken(std::string_view message, const Token& token);

/// How an operator, assignment or separator is written in the source; empty
/// for other tokens. Where a sign and a word mean the same it is the one that
/// was typed.
[[nodiscard]] std::string_view operatorSpelling(const Token& token);

}  // namespace vorpen
