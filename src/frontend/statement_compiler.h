// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// From statements of tokens to Statement objects. The first tokens of a
// statement say what it is. The compiler is the only one that pulls lines: when
// it needs a statement and has none left, it asks the input, so that blocks,
// `else` and the bodies of functions come from recursion here and not from the
// scanner. Variables are declared while an assignment compiles, with the type
// of its right side, so that the statements behind it can be resolved at once.
//
// A block is compiled by a compiler of its own, one level deeper. Statements
// that stand behind the end of the block on its last line are handed back.

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "eval/statement.h"
#include "frontend/scanner.h"

namespace vorpen {

class SymbolTable;

/// Levels of blocks and bodies inside each other. Compiling, running and
/// freeing recurse over them, and the stack must hold that beside deep
/// expressions and calls.
inline constexpr int maxBlockDepth = 200;

class StatementCompiler {
public:
    StatementCompiler(SymbolTable& symbols, LexInput& input, int depth = 0)
        : symbols_(symbols), input_(input), depth_(depth) {}
    StatementCompiler(const StatementCompiler&) = delete;
    StatementCompiler& operator=(const StatementCompiler&) = delete;

    /// Answers a line that begins with "?", while it compiles.
    using QueryHook = std::function<void(std::span<const Token>)>;
    void setQueryHook(QueryHook hook) { queryHook_ = std::move(hook); }

    /// Compiles all that the input holds, or up to the end of the block or
    /// function body. Null when there is no statement, a single statement as
    /// it is, else a BlockStm. After a failure the compiler is empty again.
    /// @throws SyntaxError and whatever a folded constant or a file raises
    StatementPtr compileAll();

    /// Compiles one statement; null at the end of the input, block or body.
    /// With mayThrowAtEnd a missing statement is OperatorFailure{'e'}.
    StatementPtr compileStatement(bool mayThrowAtEnd);

    /// As compileStatement for a body, which must be there.
    StatementPtr compileBody();

    /// Reads, scans and cuts a line; false when the input has no more.
    bool nextLine(bool mayThrowAtEnd);

    /// Drops what is left of a failed input.
    void reset();

    // For definitions of functions, which are compiled elsewhere.

    [[nodiscard]] SymbolTable& symbols() { return symbols_; }
    [[nodiscard]] LexInput& input() { return input_; }
    [[nodiscard]] int depth() const { return depth_; }
    /// The statement to be compiled next; there must be one.
    [[nodiscard]] TokenList& tokens() { return statements_[current_]; }
    [[nodiscard]] bool hasStatement() const { return current_ < statements_.size(); }
    void stepPast() { ++current_; }
    /// Statements to compile before any line is read. A closed list is all
    /// there is: no line is read at its end.
    void setStatements(std::vector<TokenList> statements, bool closed = false);
    /// What is left of the line; for the parent when a block has ended.
    [[nodiscard]] std::vector<TokenList> takeRemaining();

private:
    class Deeper;
    struct Assignment;

    /// What compiling a statement that yields none means for what follows.
    enum class After { stop, goOn };

    [[nodiscard]] bool ensureStatement(bool mayThrowAtEnd);
    [[nodiscard]] int line() const { return input_.lineNumber(); }
    /// The present statement, which is thereby used.
    [[nodiscard]] TokenList takeTokens();
    [[nodiscard]] bool isReadHere(const Value* v) const;

    // statement_compiler.cpp: which form a statement has, blocks, expressions
    StatementPtr compilePresent(After& after);
    StatementPtr compileNamed(After& after);
    StatementPtr compileBracketed();
    StatementPtr compileBlock();
    StatementPtr compileExpressionStatement();
    /// The statement with a stop behind it, unless breakpoints are switched
    /// off. The value is what it assigns to, or null.
    StatementPtr withBreakPoint(StatementPtr statement, Value* value);
    void answerQuery();

    // compile_assignment.cpp
    StatementPtr compileAssignment(bool indexed);
    StatementPtr compileMultipleAssignment();
    [[nodiscard]] Value* assignable(const std::string& name);
    void readLeftSide(Assignment& a, TokenList& tokens, bool indexed);
    void readRightSide(Assignment& a, TokenList& tokens);
    void fitVariable(Assignment& a);
    [[nodiscard]] Value* multipleTarget(const std::string& name);

    // compile_keyword.cpp
    StatementPtr compileKeyword(After& after);
    StatementPtr compileReturn();
    StatementPtr compileLoopExit();
    void compileClear();
    void clearOne(const std::string& name, bool constMode, bool warn);
    void refuseClearingOfUsed(const std::string& name);
    void compileDeclaration();
    void compileEnd();

    // compile_control.cpp
    [[nodiscard]] TokenList cutCondition(std::size_t from, bool colonEnds);
    [[nodiscard]] EvaluatablePtr compileCondition();
    StatementPtr compileWhile();
    StatementPtr compileIf();
    StatementPtr compileFor();
    StatementPtr compileForIn(int line, std::size_t in, const std::string& index, const std::string& value);
    [[nodiscard]] Value* loopVariable(const std::string& name);
    [[nodiscard]] StatementPtr compileLoopBody();
    [[nodiscard]] bool elseFollows();

    SymbolTable& symbols_;
    LexInput& input_;
    QueryHook queryHook_;
    std::vector<TokenList> statements_;
    std::size_t current_ = 0;
    Block block_;             ///< what has been compiled at this level
    int depth_;               ///< 0 at the top, one more in a body or block
    int loopDepth_ = 0;       ///< loops around this statement in the same function
    bool closed_ = false;     ///< no further lines belong to this compiler
    bool openBlock_ = false;  ///< a "}" on a later line ends this compiler's block
    bool ended_ = false;      ///< the input, block or body is over
};

/// Shared by the families of statements.

/// A TOK_DISPLAY at the end of a statement, taken off.
struct DisplayMark {
    bool present = false;
    char code = 0;
    /// True if the statement shows its result.
    [[nodiscard]] bool shows() const { return code == ';' || code == '?'; }
};
DisplayMark removeDisplay(TokenList& tokens);

/// A sign that begins an expression behind a keyword stands before one operand.
void makeLeadingSignUnary(TokenList& tokens);

[[noreturn]] void failToCompile(std::string message);

}  // namespace vorpen
