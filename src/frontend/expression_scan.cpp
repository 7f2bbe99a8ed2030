// SPDX-License-Identifier: GPL-3.0-or-later

// One expression, token by token.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

#include "base/errors.h"
#include "eval/elements.h"
#include "frontend/assembly.h"
#include "frontend/function_assembly.h"
#include "frontend/operator_table.h"
#include "frontend/parser.h"

namespace vorpen {
namespace {

constexpr const char* incorrectlyPlaced = "Incorrectly placed operator in bracket or expression";
constexpr const char* missingParameter = "function requires a parameter";
constexpr const char* nestedTooDeeply = "expression nested too deeply";

// A sign covers a run of powers and products; operators from this level on
// stand outside of it.
constexpr int levelBehindSign = 2;

// Each postfix operator is a level of the tree; more in a row than this are
// the work of no one.
constexpr int maxPostfixRun = 10;

bool endsSign(const Token& token) {
    switch (token.kind) {
        case TOK_UNARY:
        case TOK_SEP:
        case TOK_SPACE:
        case TOK_ROW: return true;
        case TOK_OP: return operatorLevel(token.code) >= levelBehindSign;
        default: return false;
    }
}

bool isPower(char op) { return operatorLevel(op) == 0 && !isFraction(op); }

bool isPostfix(char op) { return op == '!' || op == '\'' || op == '"'; }

Token makeBracket(std::vector<Token> items) {
    Token bracket(TOK_BRACKET, ')');
    bracket.items = std::move(items);
    return bracket;
}

/// Puts tokens and a comma before the contents of an argument list.
void prepend(std::vector<Token>& items, std::vector<Token> first) {
    if (!items.empty()) first.emplace_back(TOK_SEP, ',');
    items.insert(items.begin(), std::make_move_iterator(first.begin()), std::make_move_iterator(first.end()));
}

}  // namespace

/// Counts the expressions inside each other.
class Parser::Nesting {
public:
    explicit Nesting(Parser& parser) : parser_(parser) {
        if (parser_.depth_ >= maxExpressionDepth) throw SyntaxError{nestedTooDeeply};
        if (parser_.depth_++ == 0) parser_.addedNesting_ = 0;
    }
    ~Nesting() { --parser_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    Parser& parser_;
};

void Parser::addNesting() {
    if (++addedNesting_ > maxExpressionDepth) throw SyntaxError{nestedTooDeeply};
}

class Parser::Scan {
public:
    Scan(Parser& parser, std::span<Token> tokens) : parser_(parser), tokens_(tokens) {}
    EvaluatablePtr run() {
        while (next_ < tokens_.size()) step();
        return finish();
    }

private:
    void step();
    void takeOperand(Token& token);
    void takeOperator(char op);
    void takeSeparator(char separator);
    void takeUnary(char op);
    void takeLineBreak();
    void takePostfix(char op);
    void skipSignedRun();
    void takeSign(char op);
    void takeIncrement(char op);
    void takeName(Token& name);
    void takeVariable(Value& variable, Token& name);
    void takeFunction(const Symbol& function, Token& name);
    void takeArrayFunction(const BuiltinInfo& builtin);
    void takeDotted(Token& bracket);
    void callMethods(std::vector<Token> receiver, bool ofVariable);
    [[nodiscard]] Token& nextMethod();
    [[nodiscard]] Token* methodBracket(const Token& function, bool ofVariable);
    void swapPower(const Token& name, int minArgs);
    [[nodiscard]] EvaluatablePtr generalCall(const Symbol& function, const Token& name);
    [[nodiscard]] std::vector<EvaluatablePtr> takeWords(int most);
    EvaluatablePtr finish();

    [[nodiscard]] bool more() const { return next_ < tokens_.size(); }
    [[nodiscard]] Token& upcoming() const { return tokens_[next_]; }
    [[nodiscard]] bool bracketFollows() const { return more() && upcoming().is(TOK_BRACKET, ')'); }
    void skipEmptyBracket() {
        if (bracketFollows() && upcoming().items.empty()) ++next_;
    }
    /// Two operands in a row multiply.
    void multiply() {
        if (list_.endsInOperand()) list_.setOperator('*');
    }

    Parser& parser_;
    std::span<Token> tokens_;
    std::size_t next_ = 0;
    Assembly list_;
    int queries_ = 0;
    int queryBranches_ = 0;
    int fractions_ = 0;
    int nearFractions_ = 0;
    int postfixRun_ = 0;
    bool comparisonSeen_ = false;
    bool colonPending_ = false;
};

EvaluatablePtr Parser::parseExpression(std::span<Token> tokens) {
    const Nesting nesting(*this);
    return Scan(*this, tokens).run();
}

// ---- operators

void Parser::Scan::takeOperator(char op) {
    if (!list_.endsInOperand()) throw SyntaxError{incorrectlyPlaced};
    if (isComparison(op)) comparisonSeen_ = true;
    if (isFraction(op)) ++fractions_;
    // A near fraction stands inside the one before it.
    if (op == 'V' && ++nearFractions_ > 1) parser_.addNesting();
    if (op == '?') ++queries_;
    list_.setOperator(op);
}

void Parser::Scan::takeSeparator(char separator) {
    if (!list_.endsInOperand()) throw SyntaxError{incorrectlyPlaced};
    if (separator == ':') colonPending_ = true;
    if (separator == 'W') {
        if (queries_ == 0) throw SyntaxError{"illegal :: without '?' operator"};
        ++queryBranches_;
    }
    list_.setOperator(separator);
}

/// A line break inside [...]: the end of a row, unless a ";" has ended it.
void Parser::Scan::takeLineBreak() {
    if (list_.isEmpty() || list_.lastOperator() != ';') takeSeparator(';');
}

void Parser::Scan::takePostfix(char op) {
    if (!list_.endsInOperand()) throw SyntaxError{incorrectlyPlaced};
    if (++postfixRun_ > maxPostfixRun) throw SyntaxError{nestedTooDeeply};
    list_.appendUnary(op);
}

/// Goes to the end of what a sign covers. A further sign is part of it as an
/// exponent; as a factor it begins a run of its own.
void Parser::Scan::skipSignedRun() {
    const std::size_t begin = next_;
    for (; more(); ++next_) {
        if (!endsSign(upcoming())) continue;
        const bool signedOperand = upcoming().is(TOK_UNARY) && next_ > begin && tokens_[next_ - 1].is(TOK_OP);
        if (!signedOperand) return;
        if (isPower(tokens_[next_ - 1].code)) continue;
        --next_;
        return;
    }
}

/// `-` or `~` before a run of powers and products.
void Parser::Scan::takeSign(char op) {
    if (more() && (upcoming().is(TOK_UNARY) || upcoming().is(TOK_OP)))
        throw SyntaxError{"illegal use of unary operator"};
    const std::size_t begin = next_;
    skipSignedRun();
    EvaluatablePtr operand = parser_.parseExpression(tokens_.subspan(begin, next_ - begin));
    if (operand->elementKind() == ElementKind::constant) return list_.append(applyToConstant(op, *operand));
    list_.append(std::move(operand));
    list_.appendUnary(op);
}

void Parser::Scan::takeIncrement(char op) {
    Symbol symbol;
    if (more() && upcoming().is(TOK_NAME)) symbol = parser_.symbols_.classify(upcoming().text);
    if (!symbol.isVariable()) throw SyntaxError{"item cannot be incremented/decremented"};
    if (symbol.found->valueType() > DOUBLE_VAL)
        throw SyntaxError{"variable has wrong type for increment or decement"};
    ++next_;
    list_.append(std::make_unique<IncDecElement>(symbol.found, op));
}

void Parser::Scan::takeUnary(char op) {
    if (isPostfix(op)) return takePostfix(op);
    if (op == '^') throw SyntaxError{"misplaced '^' operator"};
    if (op == '-' || op == '~') {
        multiply();
        takeSign(op);
    } else if (op == 'i' || op == 'd') {
        multiply();
        takeIncrement(op);
    } else if (op == 'g') {
        multiply();
        Token name(TOK_BACKSLASH, 1, "property");
        takeFunction(parser_.functionNamed(name), name);
    }
}

// ---- operands

void Parser::Scan::takeVariable(Value& variable, Token& name) {
    ParsedIndex index = parser_.parseIndex(variable, name.code, tokens_.subspan(next_));
    if (index.consumed > 0) {
        next_ += index.consumed;
        return list_.appendIndexed(variable, std::move(index.indices), index.mode, index.type);
    }
    if (name.code != '.' || !more() || !upcoming().is(TOK_OP, '.'))
        return list_.append(std::make_unique<ValueElement>(&variable));
    ++next_;
    std::vector<Token> receiver;
    receiver.emplace_back(TOK_NAME, ' ', std::move(name.text));
    callMethods(std::move(receiver), true);
}

/// (expr).func: the contents of the bracket become the arguments.
void Parser::Scan::takeDotted(Token& bracket) {
    std::vector<Token> receiver;
    if (bracket.code == ')') {
        receiver = std::move(bracket.items);
    } else {
        bracket.kind = TOK_BRACKET;
        receiver.push_back(std::move(bracket));
    }
    callMethods(std::move(receiver), false);
}

/// The name behind a dot, which must be that of a function.
Token& Parser::Scan::nextMethod() {
    if (!more() || !upcoming().is(TOK_NAME)) throw SyntaxError{"invalid ().func syntax"};
    Token& name = tokens_[next_++];
    if (!parser_.symbols_.classify(name.text).isFunction())
        throw SyntaxError{name.text + " is not a function"};
    return name;
}

/// The bracket of further arguments behind the name of a method, if there is
/// one. Behind a bracket a function of one argument has none.
Token* Parser::Scan::methodBracket(const Token& function, bool ofVariable) {
    if (!more() || !(bracketFollows() || upcoming().is(TOK_DOTTED, ')'))) return nullptr;
    if (!ofVariable) {
        if (function.code != '(') return nullptr;
        const Symbol symbol = parser_.symbols_.classify(function.text);
        if (SymbolTable::argumentLimits(symbol).max == 1 && !upcoming().items.empty()) return nullptr;
    }
    return &tokens_[next_++];
}

/// x.f(a).g becomes g(f(x, a)); the receiver is what stands before the first
/// dot.
void Parser::Scan::callMethods(std::vector<Token> receiver, bool ofVariable) {
    for (int links = 1;; ++links) {
        if (links > maxExpressionDepth) throw SyntaxError{nestedTooDeeply};
        Token& function = nextMethod();
        Token* bracket = methodBracket(function, ofVariable);
        std::vector<Token> arguments;
        if (bracket) arguments = std::move(bracket->items);
        prepend(arguments, std::move(receiver));

        bool chained = bracket && bracket->is(TOK_DOTTED);
        if (!bracket && function.code == '.' && next_ + 1 < tokens_.size() && upcoming().is(TOK_OP, '.') &&
            tokens_[next_ + 1].is(TOK_NAME) &&
            parser_.symbols_.classify(tokens_[next_ + 1].text).isFunction()) {
            chained = true;
            ++next_;
        }
        receiver.clear();
        receiver.emplace_back(TOK_NAME, '(', std::move(function.text));
        receiver.push_back(makeBracket(std::move(arguments)));
        if (!chained) break;
    }
    list_.append(parser_.parseExpression(receiver));
}

/// f^n(x) stands for f(x)^n.
void Parser::Scan::swapPower(const Token& name, int minArgs) {
    const bool attached = name.code == '^' || name.is(TOK_BACKSLASH);
    if (!attached || minArgs == 0 || !more() || !upcoming().is(TOK_OP, '^')) return;
    if (next_ + 2 >= tokens_.size() || !tokens_[next_ + 2].is(TOK_BRACKET))
        throw SyntaxError{"function with ^ requires an argument in a bracket"};
    const auto power = tokens_.begin() + next_;
    std::rotate(power, power + 2, power + 3);
    if (upcoming().code != ')') {
        std::vector<Token> argument;
        argument.push_back(std::move(upcoming()));
        upcoming() = makeBracket(std::move(argument));
    }
}

/// A function of one array argument takes the next item alone.
void Parser::Scan::takeArrayFunction(const BuiltinInfo& builtin) {
    if (more() && upcoming().is(TOK_SPACE)) ++next_;
    const bool canBeAlone = builtin.has(EMPTY_ARGUMENT);
    if (canBeAlone && (!more() || endsSign(upcoming()) || upcoming().is(TOK_OP)))
        return list_.append(makeArrayFunction(builtin, makeEmptySet()));
    if (!more()) throw SyntaxError{missingParameter};
    Token& argument = tokens_[next_++];
    if (canBeAlone && argument.is(TOK_BRACKET) && argument.items.empty())
        return list_.append(makeArrayFunction(builtin, makeEmptySet()));
    EvaluatablePtr element = parser_.parsePrimary(argument);
    if (element->elementKind() == ElementKind::functionReference)
        throw SyntaxError{"invalid syntax for a function reference"};
    list_.append(makeArrayFunction(builtin, std::move(element)));
}

/// Plain words up to the end of the expression, or the first of them. A word
/// goes on as long as no blank stands behind a name.
std::vector<EvaluatablePtr> Parser::Scan::takeWords(int most) {
    std::vector<EvaluatablePtr> words;
    while (more() && static_cast<int>(words.size()) < most) {
        std::string word;
        for (bool attached = true; attached && more();) {
            const Token& token = tokens_[next_++];
            if (token.is(TOK_SEP) || token.is(TOK_SPACE)) break;
            word += token.text.empty() ? operatorSpelling(token) : std::string_view(token.text);
            if (token.is(TOK_NAME))
                attached = std::string_view(" \t#,;").find(token.code) == std::string_view::npos;
            if (!token.is(TOK_NAME) && !token.is(TOK_OP)) attached = false;
        }
        if (!word.empty()) words.push_back(std::make_unique<StringLiteralElement>(std::move(word)));
    }
    return words;
}

EvaluatablePtr Parser::Scan::generalCall(const Symbol& function, const Token& name) {
    const ArgumentLimits limits = SymbolTable::argumentLimits(function);
    const bool bracket = bracketFollows();
    std::vector<EvaluatablePtr> arguments;
    if (function.builtin && function.builtin->has(WORD_FORM) && more() &&
        (upcoming().is(TOK_NAME) || upcoming().is(TOK_STRING)))
        return parser_.makeCall(function, name.text, takeWords(limits.min == 0 ? 1 : INT32_MAX), 0);
    if (limits.max == 0 || (limits.min == 0 && !bracket)) {
        skipEmptyBracket();
        return parser_.callWithoutArguments(function);
    }
    if (more() && upcoming().is(TOK_SPACE)) ++next_;
    if (!more()) throw SyntaxError{missingParameter};

    std::span<Token> contents = bracket ? std::span<Token>(upcoming().items) : tokens_.subspan(next_);
    next_ = bracket ? next_ + 1 : tokens_.size();
    const bool values = !function.builtin || function.builtin->kind != GENERAL;
    const std::size_t references =
        parser_.parseArguments(contents, values ? Use::values : Use::anything, arguments);
    if (arguments.empty() && function.builtin && function.builtin->has(EMPTY_ARGUMENT))
        arguments.push_back(makeEmptySet());
    return parser_.makeCall(function, name.text, std::move(arguments), references);
}

void Parser::Scan::takeFunction(const Symbol& function, Token& name) {
    if (name.code == '(' && more() && upcoming().is(TOK_DOTTED, ')')) {
        // f(a).g takes the result of f.
        std::vector<Token> receiver;
        receiver.push_back(std::move(name));
        receiver.push_back(makeBracket(std::move(tokens_[next_++].items)));
        return callMethods(std::move(receiver), false);
    }
    swapPower(name, SymbolTable::argumentLimits(function).min);
    if (function.builtin && takesOneItem(*function.builtin)) return takeArrayFunction(*function.builtin);
    list_.append(generalCall(function, name));
}

void Parser::Scan::takeName(Token& name) {
    const Symbol symbol = parser_.classifyKnown(name);
    if (symbol.isConstant()) return list_.append(makeNumber(symbol.foundConstant));
    if (symbol.isVariable()) return takeVariable(*symbol.found, name);
    takeFunction(symbol, name);
}

void Parser::Scan::takeOperand(Token& token) {
    switch (token.kind) {
        case TOK_INT:
        case TOK_NUM:
        case TOK_STRING:
        case TOK_EMPTY:
        case TOK_BRACKET: return list_.append(parser_.parsePrimary(token));
        case TOK_NAME: return takeName(token);
        case TOK_DOTTED: return takeDotted(token);
        case TOK_BACKSLASH:
            if (token.items.empty()) return takeFunction(parser_.functionNamed(token), token);
            break;
        default: break;
    }
    throw SyntaxError{"incorrectly formed statement or expression"};
}

void Parser::Scan::step() {
    Token& token = tokens_[next_++];
    switch (token.kind) {
        case TOK_OP: return takeOperator(token.code);
        case TOK_SEP: return takeSeparator(token.code);
        case TOK_SPACE: return takeSeparator(',');
        case TOK_ROW: return takeLineBreak();
        case TOK_UNARY: takeUnary(token.code); break;
        default:
            multiply();
            takeOperand(token);
            break;
    }
    if (!token.is(TOK_UNARY) || !isPostfix(token.code)) postfixRun_ = 0;
    if (colonPending_ && list_.endsInOperand()) {
        list_.foldSequence();
        colonPending_ = false;
    }
}

EvaluatablePtr Parser::Scan::finish() {
    if (list_.isEmpty()) throw SyntaxError{"empty expression"};
    if (!list_.endsInOperand()) throw SyntaxError{"dangling operator"};
    if (queries_ > 0) {
        if (queries_ > 1 || queryBranches_ > 1) throw SyntaxError{"multiple '?' or '::' operators"};
        if (queryBranches_ == 0) throw SyntaxError{"missing :: after '?' operator"};
    }
    if (comparisonSeen_)
        list_.comparisonStep(fractions_ > 0);
    else if (fractions_ > 0)
        list_.fractionStep();
    return list_.finish();
}

}  // namespace vorpen
