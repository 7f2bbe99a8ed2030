// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From a run of tokens to one evaluatable element. There is no grammar of
// precedence levels: one pass over the tokens makes a flat list of operands
// and operators, which the assembly regroups afterwards. What is particular
// to the language is therefore all in the treatment of neighbours: two
// operands in a row multiply, a name may be a function that takes the rest of
// the expression, a sign captures what follows it up to the next operator of
// low precedence.
//
// A bracket is one token with tokens inside it, parsed by a recursive call.
// All that nests is counted, so that no text can exhaust the stack. Tokens are
// consumed: the parser may move their contents out.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "eval/evaluatable.h"
#include "frontend/symbol_table.h"
#include "frontend/token.h"

namespace vorpen {

/// The deepest nesting of an expression. Evaluation recurses as deep as the
/// text, and once more for each call of a user function in progress; all of
/// that must fit the machine's stack.
inline constexpr int maxExpressionDepth = 200;

/// What stood behind the name of a variable as its index.
struct ParsedIndex {
    /// Tokens used; 0 when there is no index or the form is a call, `x.func`.
    std::size_t consumed = 0;
    std::vector<EvaluatablePtr> indices;
    /// An IndexCode.
    int mode = INDEX_ELEMENT;
    /// The static type of what is selected.
    int type = DOUBLE_VAL;
};

class Parser {
public:
    explicit Parser(SymbolTable& symbols) : symbols_(symbols) {}

    /// A whole expression. Fails with a SyntaxError; a constant expression is
    /// computed at once, so what it raises passes too.
    [[nodiscard]] EvaluatablePtr parseExpression(std::span<Token> tokens);

    /// The operand of one token. The name of a function stands for a reference
    /// to it unless it takes no arguments at all.
    [[nodiscard]] EvaluatablePtr parsePrimary(Token& token);

    /// What stands alone: a right side, a condition. One token is a primary,
    /// but a function that can do without arguments is called.
    [[nodiscard]] EvaluatablePtr parseOperand(std::span<Token> tokens);

    /// The index of a variable, from the tokens behind its name. `code` is the
    /// character directly behind the name. The indices are ready for use:
    /// doubles are truncated, in sequences too.
    [[nodiscard]] ParsedIndex parseIndex(Value& target, char code, std::span<Token> behindName);

private:
    class Nesting;
    class IndexScope;
    class Scan;

    /// What the contents of a bracket are for.
    enum class Use { index, values, anything };

    /// What `end` stands for: a dimension of a variable.
    struct IndexContext {
        Value* target;
        int dimension;
    };

    /// Counts an element around another one that no bracket shows.
    void addNesting();
    [[nodiscard]] Symbol classifyKnown(const Token& name);
    [[nodiscard]] EvaluatablePtr parseName(const Token& name);
    [[nodiscard]] Symbol functionNamed(const Token& token);
    [[nodiscard]] EvaluatablePtr makeEndIndex() const;
    [[nodiscard]] EvaluatablePtr callWithoutArguments(const Symbol& function);
    [[nodiscard]] EvaluatablePtr makeReference(const Symbol& function, const std::string& name);
    [[nodiscard]] EvaluatablePtr makeCall(const Symbol& function, const std::string& name,
                                          std::vector<EvaluatablePtr> arguments, std::size_t references);
    [[nodiscard]] EvaluatablePtr parseAnonymousFunction(std::span<Token> body, const Token& parameter);
    [[nodiscard]] EvaluatablePtr parseArgument(std::span<Token> piece, Use use);
    std::size_t parseArguments(std::span<Token> tokens, Use use, std::vector<EvaluatablePtr>& out);
    void parseIndexList(Token& bracket, int mode, std::vector<EvaluatablePtr>& out);

    SymbolTable& symbols_;
    std::vector<IndexContext> indexContexts_;
    int depth_ = 0;         ///< expressions being parsed inside each other
    int addedNesting_ = 0;  ///< in the outermost of them
};

}  // namespace vorpen
