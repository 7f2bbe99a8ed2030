// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/statement_compiler.h"

#include <algorithm>
#include <iterator>

#include "base/errors.h"
#include "builtins/engine_context.h"
#include "builtins/keywords.h"
#include "eval/evaluation_statements.h"
#include "frontend/compiler_depth.h"
#include "frontend/function_declaration.h"
#include "frontend/parser.h"
#include "frontend/symbol_table.h"

namespace vorpen {
namespace {

/// Name, index, assignment: the assignment stands in the third place, or in
/// the fourth when the index has a sign of its own.
bool isIndexedAssignment(const TokenList& tokens) {
    if (tokens.size() <= 3) return false;
    const Token& second = tokens[1];
    if (second.is(TOK_BRACKET, ']')) return tokens[2].is(TOK_ASSIGN);
    if (second.is(TOK_BACKSLASH)) return tokens[2].is(TOK_ASSIGN) || tokens[3].is(TOK_ASSIGN);
    return second.is(TOK_OP, '.') && tokens[3].is(TOK_ASSIGN);
}

}  // namespace

void failToCompile(std::string message) { throw SyntaxError{std::move(message)}; }

DisplayMark removeDisplay(TokenList& tokens) {
    if (tokens.empty() || !tokens.back().is(TOK_DISPLAY)) return {};
    const DisplayMark mark{true, tokens.back().code};
    tokens.pop_back();
    return mark;
}

void makeLeadingSignUnary(TokenList& tokens) {
    if (tokens.size() < 2) return;
    Token& first = tokens.front();
    if (first.is(TOK_OP, '-') || first.is(TOK_OP, '~')) first.kind = TOK_UNARY;
}

// ---- statements in hand

void StatementCompiler::setStatements(std::vector<TokenList> statements, bool closed) {
    statements_ = std::move(statements);
    current_ = 0;
    closed_ = closed;
}

std::vector<TokenList> StatementCompiler::takeRemaining() {
    std::vector<TokenList> rest(
        std::make_move_iterator(statements_.begin() +
                                static_cast<std::ptrdiff_t>(std::min(current_, statements_.size()))),
        std::make_move_iterator(statements_.end()));
    statements_.clear();
    current_ = 0;
    return rest;
}

void StatementCompiler::reset() {
    statements_.clear();
    current_ = 0;
    block_.clear();
    ended_ = false;
}

bool StatementCompiler::nextLine(bool mayThrowAtEnd) {
    if (closed_) {
        if (mayThrowAtEnd) throw OperatorFailure{'e'};
        return false;
    }
    std::string text;
    if (!input_.getLine(text, mayThrowAtEnd, false)) return false;
    ScannedLine scanned = scanLine(text, input_);
    statements_ = splitStatements(std::move(scanned), input_.isInteractive());
    current_ = 0;
    return true;
}

bool StatementCompiler::ensureStatement(bool mayThrowAtEnd) {
    while (true) {
        for (; current_ < statements_.size(); ++current_) {
            TokenList& tokens = statements_[current_];
            // A mark for display with nothing to show counts as nothing.
            if (tokens.empty() || (tokens.size() == 1 && tokens.front().is(TOK_DISPLAY))) continue;
            if (tokens.size() > 1 && tokens.back().is(TOK_BLOCK_END)) {
                TokenList end{std::move(tokens.back())};
                tokens.pop_back();
                statements_.insert(statements_.begin() + static_cast<std::ptrdiff_t>(current_) + 1,
                                   std::move(end));
            }
            return true;
        }
        if (!nextLine(mayThrowAtEnd)) return false;
    }
}

TokenList StatementCompiler::takeTokens() {
    TokenList tokens = std::move(statements_[current_]);
    ++current_;
    return tokens;
}

bool StatementCompiler::isReadHere(const Value* v) const {
    return std::ranges::any_of(block_, [&](const StatementPtr& statement) { return statement->uses(v); });
}

// ---- forms

StatementPtr StatementCompiler::withBreakPoint(StatementPtr statement, Value* value) {
    if (!engineContext().debugEnabled) return statement;
    const int line = statement->line();
    return std::make_unique<BreakPointStm>(line, std::move(statement), value, symbols_.currentFunction());
}

StatementPtr StatementCompiler::compileExpressionStatement() {
    TokenList tokens = takeTokens();
    const DisplayMark display = removeDisplay(tokens);
    EvaluatablePtr expression = Parser(symbols_).parseOperand(tokens);
    if (display.shows()) return std::make_unique<EvalAndDisplayStm>(line(), std::move(expression));
    auto statement = std::make_unique<EvalStm>(line(), std::move(expression));
    return display.code == '!' ? withBreakPoint(std::move(statement), nullptr) : std::move(statement);
}

void StatementCompiler::answerQuery() {
    const TokenList tokens = takeTokens();
    // What stands behind a query on its line is dropped.
    statements_.clear();
    current_ = 0;
    if (queryHook_) queryHook_(tokens);
}

StatementPtr StatementCompiler::compileBlock() {
    const int firstLine = line();
    TokenList tokens = takeTokens();
    const Deeper deeper(*this);
    const bool closed = tokens.front().is(TOK_BRACKET, '}');
    // The body of a function shows nothing by itself.
    const bool interactive = input_.isInteractive() && symbols_.scopeLevel() == 0;

    StatementCompiler nested(symbols_, input_, depth_);
    nested.queryHook_ = queryHook_;
    nested.loopDepth_ = loopDepth_;
    nested.openBlock_ = !closed;
    nested.setStatements(splitStatements(std::move(tokens.front().items), interactive), closed);
    StatementPtr body = nested.compileAll();
    if (!closed) {
        std::vector<TokenList> rest = nested.takeRemaining();
        std::ranges::move(takeRemaining(), std::back_inserter(rest));
        setStatements(std::move(rest), closed_);
    }
    return body ? std::move(body) : std::make_unique<BlockStm>(firstLine, Block());
}

StatementPtr StatementCompiler::compileBracketed() {
    const TokenList& tokens = statements_[current_];
    const Token& bracket = tokens.front();
    if (tokens.size() >= 2 && tokens[1].is(TOK_ASSIGN)) {
        if (bracket.code != ']' || tokens[1].code != '=') failToCompile("invalid multiple assignment syntax");
        return compileMultipleAssignment();
    }
    return bracket.code == '{' || bracket.code == '}' ? compileBlock() : compileExpressionStatement();
}

StatementPtr StatementCompiler::compileNamed(After& after) {
    const TokenList& tokens = statements_[current_];
    if (isKeyword(tokens.front().text)) return compileKeyword(after);
    const std::size_t n = tokens.size();
    if (n >= 2 && tokens[1].is(TOK_ASSIGN)) return compileAssignment(false);
    const bool bracketed = n >= 3 && tokens[1].is(TOK_BRACKET, ')') && tokens[2].is(TOK_DEFINE);
    if (bracketed || (n >= 2 && tokens[1].is(TOK_DEFINE))) {
        const bool vectorised = tokens[bracketed ? 2 : 1].code == 'v';
        if (vectorised && !bracketed) failToCompile("can't vectorize a function with no arguments");
        compileDefinition(*this, vectorised ? DefinitionMode::vectorisedQuick : DefinitionMode::quick);
        after = After::goOn;
        return nullptr;
    }
    return isIndexedAssignment(tokens) ? compileAssignment(true) : compileExpressionStatement();
}

StatementPtr StatementCompiler::compilePresent(After& after) {
    const Token& first = statements_[current_].front();
    switch (first.kind) {
        case TOK_NAME: return compileNamed(after);
        case TOK_BRACKET: return compileBracketed();
        case TOK_BLOCK_END:
            if (!openBlock_) failToCompile("unexpected closing bracket");
            stepPast();
            ended_ = true;
            return nullptr;
        case TOK_UNARY:
            if (first.code != '?' && first.code != 'Q') break;
            answerQuery();
            return nullptr;
        default: break;
    }
    return compileExpressionStatement();
}

StatementPtr StatementCompiler::compileStatement(bool mayThrowAtEnd) {
    while (ensureStatement(mayThrowAtEnd)) {
        After after = After::stop;
        StatementPtr statement = compilePresent(after);
        if (statement || after == After::stop) return statement;
    }
    ended_ = true;
    return nullptr;
}

StatementPtr StatementCompiler::compileBody() {
    const Deeper deeper(*this);
    StatementPtr body = compileStatement(true);
    if (!body) failToCompile("incomplete statement");
    return body;
}

StatementPtr StatementCompiler::compileAll() {
    ended_ = false;
    try {
        while (!ended_)
            if (StatementPtr statement = compileStatement(false)) block_.push_back(std::move(statement));
    } catch (...) {
        reset();
        throw;
    }
    Block compiled = std::move(block_);
    block_.clear();
    if (compiled.empty()) return nullptr;
    if (compiled.size() == 1) return std::move(compiled.front());
    const int firstLine = compiled.front()->line();
    return std::make_unique<BlockStm>(firstLine, std::move(compiled));
}

}  // namespace vorpen
