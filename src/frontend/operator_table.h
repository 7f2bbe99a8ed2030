// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From the character of an operator token to the code by which evaluation
// knows it. The level of a code is its precedence: a lower level binds
// tighter.

namespace vorpen {

inline constexpr int levelOfComparison = 5;
inline constexpr int levelOfComma = 8;
inline constexpr int levelOfSemicolon = 9;
inline constexpr int levelOfQuery = 10;

/// The code of an operator or separator in an expression; 0 stands for the end
/// of the list. A character without a code of its own acts as a power.
[[nodiscard]] int operatorCode(char op);

[[nodiscard]] constexpr int levelOfCode(int code) { return code >> 3; }
[[nodiscard]] inline int operatorLevel(char op) { return levelOfCode(operatorCode(op)); }

/// `<` to `~=`, and `===`.
[[nodiscard]] inline bool isComparison(char op) { return operatorLevel(op) == levelOfComparison; }

/// `%` and `//`, which are gone before codes are needed.
[[nodiscard]] constexpr bool isFraction(char op) { return op == '%' || op == 'V'; }

}  // namespace vorpen
