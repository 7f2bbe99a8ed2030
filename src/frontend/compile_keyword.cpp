// SPDX-License-Identifier: GPL-3.0-or-later
// Statements that begin with a reserved word, apart from those that control
// others.

#include <algorithm>

#include "base/errors.h"
#include "base/output.h"
#include "builtins/keywords.h"
#include "eval/elements.h"
#include "eval/user_func.h"
#include "frontend/function_declaration.h"
#include "frontend/parser.h"
#include "frontend/statement_compiler.h"
#include "frontend/symbol_table.h"

namespace vorpen {
namespace {

void printLine(std::string_view text) { output().print(text, true, PrintMode::markup); }

/// Words that are whole statements by themselves.
bool mayStandAlone(KeywordCode code) {
    return code == KEY_ELSE || code == KEY_END || code == KEY_RETURN || code == KEY_BREAK ||
           code == KEY_CONTINUE;
}

/// The value of a declaration: a constant scalar.
double constantOf(EvaluatablePtr expression) {
    if (expression->elementKind() != ElementKind::constant || expression->type() > DOUBLE_VAL)
        failToCompile("invalid const expression");
    const Value& value = static_cast<NumberElement&>(*expression).value();
    if (value.size() != 1) throw OperatorFailure{']'};
    return value.doubleValue();
}

}  // namespace

// ---- clear

void StatementCompiler::refuseClearingOfUsed(const std::string& name) {
    const auto refuseIfRead = [&](const Value* v, std::string_view what) {
        if (v && isReadHere(v)) failToCompile("variable in use, can't be cleared here: " + std::string(what));
    };
    if (name == "reset" || name == "everything") {
        for (const auto& [global, value] : symbols_.globals()) refuseIfRead(value.get(), global);
        for (const auto& [function, entry] : symbols_.functions().functions())
            refuseIfRead(entry->token(), function);
        return;
    }
    const Symbol symbol = symbols_.classify(name);
    refuseIfRead(symbol.found, name);
    if (symbol.userFunction) refuseIfRead(symbol.userFunction->token(), name);
}

void StatementCompiler::clearOne(const std::string& name, bool constMode, bool warn) {
    if (!constMode) refuseClearingOfUsed(name);
    switch (symbols_.clearName(name, constMode)) {
        case ClearResult::done: break;
        case ClearResult::noSuchSymbol: printLine("clear " + name + ": no such symbol"); break;
        case ClearResult::builtinFunction: failToCompile("attempt to clear built-in function " + name);
        case ClearResult::constantCleared:
            if (warn)
                printLine(
                    name +
                    " warning: clearing a global constant may lead to instability if it is used in a user "
                    "function which has already been compiled");
            break;
        case ClearResult::failed: failToCompile("failed to clear " + name);
    }
}

void StatementCompiler::compileClear() {
    if (depth_ != 0) failToCompile("the 'clear' keyword can only be invoked at zero depth");
    const TokenList tokens = takeTokens();
    bool constMode = false, warn = false;
    for (std::size_t i = 1; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        if (token.is(TOK_BRACKET)) {
            const std::string mode = token.items.empty() ? std::string() : token.items.front().text;
            constMode = mode == "const" || mode == "const_";
            warn = mode == "const";
            if (!constMode) return printLine("bracket not recognised after clear keyword");
        } else if (!token.text.empty()) {
            clearOne(token.text, constMode, warn);
        }
    }
}

// ---- declarations

void StatementCompiler::compileDeclaration() {
    TokenList tokens = takeTokens();
    const KeywordCode code = keywordCode(tokens.front().text);
    const auto declare = [&](const std::string& name, double value) {
        const char* message = code == KEY_CONST    ? symbols_.defineConstant(name, value)
                              : code == KEY_GLOBAL ? symbols_.declareGlobal(name)
                                                   : symbols_.declarePersistent(name, value);
        if (message) failToCompile(message);
    };
    if (tokens.size() >= 3 && tokens[1].is(TOK_NAME) && tokens[2].is(TOK_ASSIGN, '=')) {
        if (code == KEY_GLOBAL) failToCompile("invalid global declaration");
        removeDisplay(tokens);
        const std::string name = tokens[1].text;
        tokens.erase(tokens.begin(), tokens.begin() + 3);
        return declare(name, constantOf(Parser(symbols_).parseOperand(tokens)));
    }
    const std::vector<ListedName> names = nameList(std::span<const Token>(tokens).subspan(1), false);
    if (code == KEY_CONST) failToCompile("invalid const expression");
    for (const ListedName& listed : names) declare(listed.name, 0);
}

// ---- leaving functions, loops and bodies

StatementPtr StatementCompiler::compileReturn() {
    const int keywordLine = line();
    TokenList tokens = takeTokens();
    UserFunc* function = symbols_.currentFunction();
    if (!function) failToCompile("stray 'return' keyword");
    removeDisplay(tokens);
    tokens.erase(tokens.begin());
    if (tokens.empty()) {
        function->noteBareReturn();
        return std::make_unique<ReturnStm>(keywordLine, nullptr, nullptr);
    }

    Value& target = function->returnTarget();
    makeLeadingSignUnary(tokens);
    if (tokens.size() > 1 && tokens.front().is(TOK_OP)) failToCompile("binary operator with no lhs");
    EvaluatablePtr expression = Parser(symbols_).parseOperand(tokens);
    if (target.valueType() != DOUBLE_VAL) failToCompile("wrong return type. double was expected");
    return std::make_unique<ReturnStm>(keywordLine, std::move(expression), &target);
}

StatementPtr StatementCompiler::compileLoopExit() {
    const int keywordLine = line();
    const TokenList tokens = takeTokens();
    const bool isBreak = keywordCode(tokens.front().text) == KEY_BREAK;
    if (tokens.size() > 1)
        failToCompile(isBreak ? "extraneous characters or missing ; after break statement"
                              : "extraneous characters or missing ; after continue");
    if (isBreak) return std::make_unique<BreakStm>(keywordLine, loopDepth_ > 0);
    return std::make_unique<ContinueStm>(keywordLine, loopDepth_ > 0);
}

void StatementCompiler::compileEnd() {
    if (depth_ != 1 || symbols_.scopeLevel() == 0) failToCompile("stray 'end' keyword");
    TokenList tokens = takeTokens();
    removeDisplay(tokens);
    if (tokens.size() > 1) failToCompile("continuation after 'end' is not allowed");
    ended_ = true;
}

// ---- the rule

StatementPtr StatementCompiler::compileKeyword(After& after) {
    const TokenList& present = statements_[current_];
    const KeywordCode code = keywordCode(present.front().text);
    if (!mayStandAlone(code) && (present.size() < 2 || present[1].is(TOK_DISPLAY)))
        failToCompile("incomplete statement");
    switch (code) {
        case KEY_WHILE: return compileWhile();
        case KEY_IF:
        case KEY_UNLESS: return compileIf();
        case KEY_FOR: return compileFor();
        case KEY_RETURN: return compileReturn();
        case KEY_BREAK:
        case KEY_CONTINUE: return compileLoopExit();
        case KEY_ELSE: failToCompile("stray 'else' keyword");
        case KEY_USE: failToCompile("'use' keyword must be at the beginning of a line");
        case KEY_END: compileEnd(); return nullptr;
        case KEY_CLEAR: compileClear(); break;
        case KEY_FUNCTION: compileDefinition(*this, DefinitionMode::function); break;
        case KEY_FUNCDEC: compileDefinition(*this, DefinitionMode::declaration); break;
        case KEY_CONST:
        case KEY_GLOBAL:
        case KEY_PERSISTENT: compileDeclaration(); break;
        case KEY_NONE: break;
    }
    after = After::goOn;
    return nullptr;
}

}  // namespace vorpen
