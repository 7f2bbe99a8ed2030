// SPDX-License-Identifier: GPL-3.0-or-later
// Conditions and loops.

#include <algorithm>
#include <iterator>

#include "eval/control_flow.h"
#include "frontend/compiler_depth.h"
#include "frontend/parser.h"
#include "frontend/symbol_table.h"

namespace vorpen {
namespace {

constexpr const char* incompleteFor = "incomplete 'for' statement";

bool isBlockBracket(const Token& token) { return token.is(TOK_BRACKET, '}') || token.is(TOK_BRACKET, '{'); }

bool isSeparator(const Token& token, char code) { return token.is(TOK_SEP, code); }

}  // namespace

// ---- conditions

TokenList StatementCompiler::cutCondition(std::size_t from, bool colonEnds) {
    TokenList& tokens = statements_[current_];
    const auto first = tokens.begin() + static_cast<std::ptrdiff_t>(from);
    const auto end = std::find_if(first, tokens.end(), [&](const Token& token) {
        return isSeparator(token, ';') || (colonEnds && isSeparator(token, ':')) || isBlockBracket(token) ||
               token.is(TOK_DISPLAY);
    });
    TokenList condition(std::make_move_iterator(first), std::make_move_iterator(end));
    // The mark between condition and body goes with the condition.
    const bool cutMark = end != tokens.end() && !isBlockBracket(*end);
    tokens.erase(tokens.begin(), cutMark ? end + 1 : end);
    return condition;
}

EvaluatablePtr StatementCompiler::compileCondition() {
    TokenList condition = cutCondition(1, true);
    makeLeadingSignUnary(condition);
    return Parser(symbols_).parseOperand(condition);
}

bool StatementCompiler::elseFollows() {
    return ensureStatement(false) && tokens().front().is(TOK_NAME) && tokens().front().text == "else";
}

StatementPtr StatementCompiler::compileIf() {
    const int keywordLine = line();
    const bool unless = tokens().front().text == "unless";
    EvaluatablePtr condition = compileCondition();
    StatementPtr body = compileBody();
    if (!elseFollows()) {
        if (unless) return std::make_unique<UnlessStm>(keywordLine, std::move(condition), std::move(body));
        return std::make_unique<IfStm>(keywordLine, std::move(condition), std::move(body));
    }
    if (unless) failToCompile("'else' not allowed after unless");
    TokenList& rest = tokens();
    const bool colon = rest.size() > 1 && isSeparator(rest[1], ':');
    rest.erase(rest.begin(), rest.begin() + (colon ? 2 : 1));
    StatementPtr elseBody = compileBody();
    return std::make_unique<IfElseStm>(keywordLine, std::move(condition), std::move(body),
                                       std::move(elseBody));
}

// ---- loops

StatementPtr StatementCompiler::compileLoopBody() {
    const Deeper loop(*this, true);
    return compileBody();
}

StatementPtr StatementCompiler::compileWhile() {
    const int keywordLine = line();
    EvaluatablePtr condition = compileCondition();
    return std::make_unique<WhileStm>(keywordLine, std::move(condition), compileLoopBody());
}

Value* StatementCompiler::loopVariable(const std::string& name) {
    const Symbol symbol = symbols_.classify(name);
    if (symbol.isConstant()) failToCompile("you can't use a constant as a loop variable");
    if (symbols_.isReserved(symbol)) failToCompile("you can't use a function name as a loop variable");
    Value* variable = symbol.foundHere;
    return variable ? variable : symbols_.declareVariable(name, DOUBLE_VAL);
}

StatementPtr StatementCompiler::compileForIn(int line, std::size_t in, const std::string& index,
                                             const std::string& value) {
    TokenList& tokens = statements_[current_];
    if (in + 1 >= tokens.size() || !tokens[in + 1].is(TOK_NAME))
        failToCompile("after 'in' you must put a name");
    Value* collection = symbols_.classify(tokens[in + 1].text).found;
    if (!collection) failToCompile("incorrect variable name after 'in'");
    const std::size_t behind = in + 2;
    const bool separated = behind < tokens.size() && tokens[behind].is(TOK_SEP);
    tokens.erase(tokens.begin(), tokens.begin() + static_cast<std::ptrdiff_t>(behind + (separated ? 1 : 0)));

    Value* indexVariable = index.empty() ? nullptr : loopVariable(index);
    Value* valueVariable = loopVariable(value);
    return std::make_unique<ForInStm>(line, compileLoopBody(), indexVariable, valueVariable, collection);
}

StatementPtr StatementCompiler::compileFor() {
    const int keywordLine = line();
    const TokenList& head = statements_[current_];
    if (head.size() < 4 || !head[1].is(TOK_NAME)) failToCompile(incompleteFor);
    std::string index, value = head[1].text;
    std::size_t next = 2;
    if (isSeparator(head[2], ',')) {
        if (head.size() < 6) failToCompile(incompleteFor);
        if (!head[3].is(TOK_NAME)) failToCompile("missing name after comma");
        index = std::move(value);
        value = head[3].text;
        next = 4;
    }
    if (head[next].is(TOK_NAME) && head[next].text == "in")
        return compileForIn(keywordLine, next, index, value);
    if (!head[next].is(TOK_ASSIGN, '=')) failToCompile("'for' expression missing = or 'in'");
    if (!index.empty()) failToCompile("in the 'for i,x' form you must use 'in' not '='");

    TokenList rangeTokens = cutCondition(next + 1, false);
    EvaluatablePtr range = Parser(symbols_).parseOperand(rangeTokens);
    Value* variable = loopVariable(value);
    return std::make_unique<ForStm>(keywordLine, std::move(range), compileLoopBody(), variable);
}

}  // namespace vorpen
