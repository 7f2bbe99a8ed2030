// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The reserved words of the language. Each has a statement code, by which the
// scanner tells the statement compiler what begins here.

#include <string>
#include <string_view>

namespace vorpen {

/// The statement codes; no word uses 8 or 12.
enum KeywordCode : int {
    KEY_NONE = 0,
    KEY_WHILE = 1,
    KEY_IF = 2,
    KEY_UNLESS = 3,
    KEY_FOR = 4,
    KEY_ELSE = 5,
    KEY_CLEAR = 6,
    KEY_RETURN = 7,
    KEY_FUNCTION = 9,
    KEY_END = 10,
    KEY_FUNCDEC = 11,
    KEY_CONST = 13,
    KEY_GLOBAL = 14,
    KEY_PERSISTENT = 15,
    KEY_USE = 16,
    KEY_BREAK = 17,
    KEY_CONTINUE = 18,
};

/// The code of a reserved word, KEY_NONE for any other name.
[[nodiscard]] KeywordCode keywordCode(std::string_view name);

[[nodiscard]] inline bool isKeyword(std::string_view name) { return keywordCode(name) != KEY_NONE; }

/// The reserved words by name, each followed by one blank.
[[nodiscard]] std::string listKeywords();

}  // namespace vorpen
