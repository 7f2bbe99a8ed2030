// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Definitions of user functions: `f(x) := ...`, the same for each element with
// `::=`, `function y = f(x)` with a body up to `end`, and `funcdec`, a head
// without a body. The head is read first and makes the function known, so that
// the body may call it. The body is then compiled one level deeper by a
// compiler of its own, inside the scope of the function. Whatever goes wrong
// there closes the scope, names the function and removes it.
//
// Functions known by a head in a file alone, as those of the resource folder,
// get their bodies when the rest of the input has been compiled.

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "eval/user_func.h"
#include "frontend/token.h"

namespace vorpen {

class StatementCompiler;
class SymbolTable;

enum class DefinitionMode { quick = 1, vectorisedQuick = 2, function = 3, declaration = 4 };

/// The most parameters of a function: one bit each marks those passed by
/// reference.
inline constexpr int maxParameters = 32;

/// A name of a comma list, with the mark behind it.
struct ListedName {
    std::string name;
    int type;  ///< LIST_VAL for "[]", COMPLEX_VAL for "*", else DOUBLE_VAL
};

/// The list rule: names with separators between them, and with allowKinds the
/// marks of kinds. Anything else fails with "invalid list of names".
std::vector<ListedName> nameList(std::span<const Token> tokens, bool allowKinds);

/// Reads a head; answers the position of the first token behind it.
std::size_t parseHead(std::span<const Token> tokens, DefinitionMode mode, FunctionDesc& desc);

/// Makes the entry of a function, or a new head for an existing one. Warns
/// when the signature changes. Fails for names that are taken or end in "_".
UserFunc& defineFunction(SymbolTable& symbols, FunctionDesc desc, FunctionSource source);

/// Compiles the definition that is the compiler's present statement and steps
/// past it. A declaration only makes the function known.
void compileDefinition(StatementCompiler& compiler, DefinitionMode mode);

/// Compiles the bodies that are still missing, each from its file, until no
/// function with a source lacks one.
void compilePendingFunctions(StatementCompiler& compiler);

}  // namespace vorpen
