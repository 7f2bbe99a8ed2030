// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A line that begins with "?" is a question about a name or a sign. It is
// answered while the line is read: from the symbols, from the registry of
// built-in functions, and from the help program, which has the texts. "??"
// asks for the longer text, and shows the value of a variable too.

#include <span>
#include <string>
#include <string_view>

#include "base/host.h"
#include "console/console_text.h"
#include "frontend/symbol_table.h"
#include "frontend/token.h"

namespace vorpen {

/// What a name is found to be; decides whether the help program is asked.
enum class DescribedAs {
    unknown = 0,
    keyword = 1,
    builtin = 2,
    variable = 3,
    constant = 4,
    userFunction = 5
};

/// Says in a few lines what a name stands for at this place. Names are looked
/// up in the order in which an expression does it.
[[nodiscard]] std::string describe(SymbolTable& symbols, std::string_view name, DescribedAs& kind);

/// Answers the question of a line on the console; the first token is the mark.
void query(std::span<const Token> tokens, SymbolTable& symbols, Host& host, ConsoleText& console);

}  // namespace vorpen
