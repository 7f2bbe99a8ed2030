// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From a line of text to statements of tokens, in one pass from left to right.
// The scanner does more than cut words. It nests brackets, reads on over
// further lines while a statement is visibly unfinished, decides whether a
// sign stands before one operand or between two, puts separators between the
// elements of [...], and rewrites a few forms of source (abs bars, strings
// with values in them, [i,:]) into plain ones. Nothing behind it looks at
// characters again.
//
// The time is linear in the length of a line. Brackets nest to a limit, so
// that whatever recurses over tokens later has a bounded depth.

#include <string_view>
#include <vector>

#include "frontend/input.h"
#include "frontend/token.h"

namespace vorpen {

using TokenList = std::vector<Token>;

struct ScannedLine {
    TokenList tokens;
    /// The position of the such-that mark among the tokens, or -1.
    int suchThatIndex = -1;
};

/// Scans a line, and further raw lines of the input when it is unfinished.
/// Tells the input of blocks that are left open or closed.
/// @throws SyntaxError
[[nodiscard]] ScannedLine scanLine(std::string_view line, LexInput& input);

/// Cuts a line at each ";" and behind each block. The statements in front of a
/// such-that mark come last. An interactive line shows its last statement: it
/// gets a TOK_DISPLAY token unless ";" or another one ends it or the line
/// defines a quick function. No statement is empty.
/// @throws SyntaxError when the line begins with the such-that mark.
[[nodiscard]] std::vector<TokenList> splitStatements(ScannedLine line, bool interactive);

/// The same for the tokens of a block.
[[nodiscard]] std::vector<TokenList> splitStatements(TokenList tokens, bool interactive);

/// The kind of token that the first character of the text starts; TOK_NONE
/// for a character that starts none.
[[nodiscard]] TokenKind classify(std::string_view text);

}  // namespace vorpen
