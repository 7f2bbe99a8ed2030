// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/parser.h"

#include <algorithm>
#include <charconv>
#include <complex>
#include <limits>
#include <memory>
#include <utility>

#include "base/errors.h"
#include "builtins/keywords.h"
#include "eval/elements.h"
#include "eval/function_reference.h"
#include "eval/indexing.h"
#include "eval/user_func.h"
#include "frontend/function_assembly.h"

namespace vorpen {
namespace {

/// True if the first digit that counts stands left of the point when the
/// exponent is taken into account: a number that does not fit a double is then
/// too large for it, not too small.
bool isLarge(std::string_view digits) {
    const std::size_t e = digits.find_first_of("eE");
    const std::string_view mantissa = digits.substr(0, e);
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    const std::size_t first = mantissa.find_first_of("123456789");
    if (first == std::string_view::npos) return false;
    if (e != std::string_view::npos && digits.size() - e > 10) return digits[e + 1] != '-';
    int exponent = 0;
    if (e != std::string_view::npos) {
        const std::size_t sign = digits[e + 1] == '+' ? 1 : 0;
        std::from_chars(digits.data() + e + 1 + sign, digits.data() + digits.size(), exponent);
    }
    return static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first) + exponent > 0;
}

/// The nearest double, whatever the locale; beyond the range infinity or zero.
double readDouble(std::string_view text) {
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc::result_out_of_range) return number;
    const bool negative = text.starts_with('-');
    const double magnitude = isLarge(text.substr(negative)) ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -magnitude : magnitude;
}

int readInteger(std::string_view text) {
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

EvaluatablePtr makeNumberOf(const Token& token) {
    if (token.is(TOK_INT)) return makeNumber(readInteger(token.text));
    const double number = readDouble(token.text);
    return token.code == 'i' ? makeNumber(std::complex<double>(0.0, number)) : makeNumber(number);
}

Symbol builtinSymbol(const BuiltinInfo* builtin) {
    Symbol symbol;
    symbol.symbolClass = SymbolClass::function;
    symbol.builtin = builtin;
    return symbol;
}

bool isReference(const EvaluatablePtr& element) {
    return element->elementKind() == ElementKind::functionReference;
}

/// True for the functions that are called with the empty array when nothing
/// follows their name.
bool takesEmptyArray(const BuiltinInfo* builtin) {
    return builtin && takesOneItem(*builtin) && builtin->has(EMPTY_ARGUMENT);
}

bool canStandAlone(const Symbol& function) {
    return takesEmptyArray(function.builtin) || SymbolTable::argumentLimits(function).min == 0;
}

std::string_view typeName(int type) {
    return type == COMPLEX_VAL ? "complex" : type == LIST_VAL ? "list" : "function";
}

void truncatePart(EvaluatablePtr& part) {
    if (part && part->type() == DOUBLE_VAL && part->elementKind() != ElementKind::endIndex)
        part = std::make_unique<DoubleToIntElement>(std::move(part));
}

/// Makes an index deliver integers where its type is known.
void prepareIndex(EvaluatablePtr& index) {
    if (index->elementKind() == ElementKind::sequence) {
        auto& sequence = static_cast<SequenceElement&>(*index);
        for (EvaluatablePtr* part : {&sequence.startOwner(), &sequence.stepOwner(), &sequence.stopOwner()})
            truncatePart(*part);
        sequence.setType(INTEGER_VAL);
        return;
    }
    const int type = index->type();
    if (type == COMPLEX_VAL || type == LIST_VAL || isReference(index))
        throw SyntaxError{"invalid type of index: " + std::string(typeName(isReference(index) ? -1 : type))};
    truncatePart(index);
}

/// The bracket of m[i,:] or m[:,j].
bool isLineOfMatrix(const Token& token) { return token.is(TOK_BACKSLASH) && !token.items.empty(); }

bool separatesArguments(const Token& token) {
    return token.is(TOK_SPACE) || token.is(TOK_ROW) || token.is(TOK_SEP, ',') || token.is(TOK_SEP, ';');
}

bool separatesRows(const Token& token) { return token.is(TOK_ROW) || token.is(TOK_SEP, ';'); }

}  // namespace

/// Names what an index list belongs to, as long as it is parsed.
class Parser::IndexScope {
public:
    IndexScope(Parser& parser, Value& target, int mode) : contexts_(parser.indexContexts_) {
        contexts_.push_back({&target, mode});
    }
    ~IndexScope() { contexts_.pop_back(); }
    IndexScope(const IndexScope&) = delete;
    IndexScope& operator=(const IndexScope&) = delete;

private:
    std::vector<IndexContext>& contexts_;
};

// ---- names

Symbol Parser::classifyKnown(const Token& name) {
    const Symbol symbol = symbols_.classify(name.text);
    if (!symbol.isUnknown()) return symbol;
    const std::string message = isKeyword(name.text) ? "misplaced keyword" : "unrecognised name";
    throw SyntaxError{message + " {g '" + name.text + "'"};
}

/// The function that a token alone names: with a backslash the built-in,
/// whatever hides it. Not a function for any other token.
Symbol Parser::functionNamed(const Token& token) {
    if (token.is(TOK_NAME)) return classifyKnown(token);
    if (!token.is(TOK_BACKSLASH) || !token.items.empty()) return {};
    if (token.text.empty()) throw SyntaxError{"stray backslash"};
    const BuiltinInfo* builtin = findBuiltin(token.text);
    if (!builtin) throw SyntaxError{"after backslash: no such built-in function"};
    return builtinSymbol(builtin);
}

EvaluatablePtr Parser::makeEndIndex() const {
    if (indexContexts_.empty()) throw SyntaxError{"stray 'end' keyword"};
    return std::make_unique<EndIndexElement>(indexContexts_.back().target, indexContexts_.back().dimension);
}

EvaluatablePtr Parser::callWithoutArguments(const Symbol& function) {
    if (function.userFunction) return makeCallElement(*function.userFunction, {});
    const BuiltinInfo& builtin = *function.builtin;
    if (builtin.has(END_OF_INDEX)) return makeEndIndex();
    if (takesOneItem(builtin)) return makeArrayFunction(builtin, makeEmptySet());
    return makeGeneralFunction(builtin, {});
}

EvaluatablePtr Parser::makeReference(const Symbol& function, const std::string& name) {
    if (function.userFunction) return std::make_unique<FuncRefElement>(*function.userFunction);
    const BuiltinInfo& builtin = *function.builtin;
    const int inputs = takesOneItem(builtin) ? 1 : std::max(builtin.minArgs, 1);
    auto anonymous = std::make_unique<AnonymousFunction>(inputs);
    std::vector<EvaluatablePtr> arguments;
    for (int i = 0; i < inputs; ++i)
        arguments.push_back(std::make_unique<ValueElement>(anonymous->parameter(i)));
    anonymous->setBody(takesOneItem(builtin) ? makeArrayFunction(builtin, std::move(arguments[0]))
                                             : makeGeneralFunction(builtin, std::move(arguments)));
    return std::make_unique<FuncRefElement>(name, std::move(anonymous));
}

EvaluatablePtr Parser::parseName(const Token& name) {
    const Symbol symbol = functionNamed(name);
    if (symbol.isConstant()) return makeNumber(symbol.foundConstant);
    if (symbol.isVariable()) return std::make_unique<ValueElement>(symbol.found);
    const BuiltinInfo* builtin = symbol.builtin;
    if (builtin && (builtin->kind == TICLIKE || builtin->kind == ANSFUNC || takesEmptyArray(builtin)))
        return callWithoutArguments(symbol);
    return makeReference(symbol, name.text);
}

// ---- one token

EvaluatablePtr Parser::parsePrimary(Token& token) {
    switch (token.kind) {
        case TOK_INT:
        case TOK_NUM: return makeNumberOf(token);
        case TOK_STRING: return std::make_unique<StringLiteralElement>(std::move(token.text));
        case TOK_EMPTY: return makeEmptySet();
        case TOK_BRACKET:
            if (token.code == '{') throw SyntaxError{"incorrectly formed statement or expression"};
            return parseExpression(token.items);
        case TOK_NAME: return parseName(token);
        case TOK_BACKSLASH:
            if (token.items.empty()) return parseName(token);
            break;
        case TOK_SEP:
            if (token.code == ':') return std::make_unique<OpenSequenceElement>();
            throw SyntaxError{"incorrectly placed comma or similar"};
        default: break;
    }
    throw SyntaxError{"incorrect use of operator or similar"};
}

EvaluatablePtr Parser::parseOperand(std::span<Token> tokens) {
    if (tokens.size() != 1) return parseExpression(tokens);
    Token& token = tokens[0];
    if (const Symbol function = functionNamed(token); function.isFunction() && canStandAlone(function))
        return callWithoutArguments(function);
    return parsePrimary(token);
}

// ---- arguments

/// An expression of one variable of its own; the name hides whatever else it
/// stands for.
EvaluatablePtr Parser::parseAnonymousFunction(std::span<Token> body, const Token& parameter) {
    if (symbols_.isConstant(parameter.text))
        throw SyntaxError{"don't use a constant as the parameter name here"};
    struct Binding {
        SymbolTable& symbols;
        const std::string& name;
        ~Binding() { symbols.unbind(name); }
    };
    auto function = std::make_unique<AnonymousFunction>(1);
    symbols_.bind(parameter.text, function->parameter(0));
    const Binding binding{symbols_, parameter.text};
    function->setBody(parseOperand(body));
    return std::make_unique<FuncRefElement>(std::string(), std::move(function));
}

EvaluatablePtr Parser::parseArgument(std::span<Token> piece, Use use) {
    if (piece.empty()) throw SyntaxError{"stray comma or empty argument"};
    if (piece.size() > 1) return parseExpression(piece);
    return use == Use::values ? parseOperand(piece) : parsePrimary(piece[0]);
}

/// Cuts the contents of a bracket, or what follows a function without one, at
/// its separators. In an index each piece is one more dimension. Answers the
/// number of references to functions among the arguments.
std::size_t Parser::parseArguments(std::span<Token> tokens, Use use, std::vector<EvaluatablePtr>& out) {
    if (tokens.empty()) return 0;
    std::size_t references = 0;
    const bool counted = use == Use::index && std::ranges::any_of(tokens, separatesArguments);
    for (std::size_t begin = 0;;) {
        std::size_t end = std::ranges::find_if(tokens.subspan(begin), separatesArguments) - tokens.begin();
        const std::span<Token> piece = tokens.subspan(begin, end - begin);
        if (counted) ++indexContexts_.back().dimension;
        if (end < tokens.size() && separatesRows(tokens[end])) {
            if (begin != 0) throw SyntaxError{"'(expr; ...)' syntax can only be used for the first argument"};
            if (end + 1 >= tokens.size() || !tokens[end + 1].is(TOK_NAME))
                throw SyntaxError{"missing x in '(func(x); x, ...)' form"};
            if (end + 2 >= tokens.size() || !separatesArguments(tokens[end + 2]) ||
                separatesRows(tokens[end + 2]))
                throw SyntaxError{"missing comma in '(func(x); x, ...)' form"};
            if (piece.empty()) throw SyntaxError{"stray comma or empty argument"};
            out.push_back(parseAnonymousFunction(piece, tokens[end + 1]));
            end += 2;
        } else {
            out.push_back(parseArgument(piece, use));
        }
        if (isReference(out.back())) ++references;
        if (end >= tokens.size()) return references;
        begin = end + 1;
    }
}

/// The call of a function that is no array function.
EvaluatablePtr Parser::makeCall(const Symbol& function, const std::string& name,
                                std::vector<EvaluatablePtr> arguments, std::size_t references) {
    if (references > 0) {
        if (!std::all_of(arguments.begin(), arguments.begin() + references, isReference))
            throw SyntaxError{"function reference(s) must be the first argument(s)"};
        const bool takesReferences = function.builtin && function.builtin->kind == GENERAL;
        if (references == arguments.size() || !takesReferences)
            throw SyntaxError{"invalid syntax for a function reference"};
    }
    const ArgumentLimits limits = SymbolTable::argumentLimits(function);
    const int count = static_cast<int>(arguments.size());
    if (count < limits.min) throw SyntaxError{name + "(...) has too few arguments"};
    if (limits.max >= 0 && count > limits.max) throw SyntaxError{name + "(...) has too many arguments"};
    if (function.userFunction) return makeCallElement(*function.userFunction, std::move(arguments));
    return makeGeneralFunction(*function.builtin, std::move(arguments));
}

// ---- indices

/// What stands in the brackets of an index. Behind a dot or backslashes it is
/// one index along that dimension, and [1,2] there is a list of positions.
void Parser::parseIndexList(Token& bracket, int mode, std::vector<EvaluatablePtr>& out) {
    const bool oneIndex = mode != INDEX_ELEMENT && bracket.is(TOK_BRACKET);
    if (oneIndex && std::ranges::any_of(bracket.items, separatesArguments))
        out.push_back(parsePrimary(bracket));
    else
        parseArguments(bracket.items, Use::index, out);
    if (out.empty()) throw SyntaxError{"empty index list"};
    if (out.size() > 2 || (out.size() > 1 && mode != INDEX_ELEMENT)) throw SyntaxError{"too many indices"};
}

ParsedIndex Parser::parseIndex(Value& target, char code, std::span<Token> tokens) {
    ParsedIndex result;
    const bool dotted = code == '.' && !tokens.empty() && tokens[0].is(TOK_OP, '.');
    const bool backslash = code == '\\' && !tokens.empty() && tokens[0].is(TOK_BACKSLASH);
    std::size_t place = 0;
    Token named;
    if (dotted || backslash) {
        result.mode = dotted ? int{INDEX_AUTO} : tokens[0].code;
        if (result.mode > INDEX_PLANE) throw SyntaxError{"incorrect use of backslash"};
        named = Token(TOK_NAME, ' ', backslash ? tokens[0].text : std::string());
        if (named.text.empty() && tokens[0].items.empty()) ++place;
        if (place == tokens.size()) throw SyntaxError{"expression ends with a dot or backslash"};
    } else if (tokens.empty() || !tokens[0].is(TOK_BRACKET, ']')) {
        return result;
    }

    Token& index = named.text.empty() ? tokens[place] : named;
    if (index.is(TOK_NAME)) {
        const Symbol symbol = classifyKnown(index);
        if (symbol.isFunction() && backslash)
            throw SyntaxError{"'var\\func' is not allowed (insert a space or use a bracket)."};
        if (symbol.isFunction() && !(symbol.builtin && symbol.builtin->has(END_OF_INDEX))) return result;
    } else if (!index.is(TOK_INT) && !index.is(TOK_BRACKET) && !isLineOfMatrix(index)) {
        throw SyntaxError{dotted ? "the dot must be followed by an integer or a name or a bracket"
                                 : "incorrect use of backslash"};
    }

    const IndexScope scope(*this, target, result.mode);
    if (index.is(TOK_BRACKET) || !index.items.empty())
        parseIndexList(index, result.mode, result.indices);
    else
        result.indices.push_back(parsePrimary(index));
    for (EvaluatablePtr& element : result.indices) prepareIndex(element);

    result.consumed = place + 1;
    result.type = target.valueType();
    if (result.type != LIST_VAL) return result;
    const bool asList = result.mode == INDEX_ELEMENT && result.consumed < tokens.size() &&
                        tokens[result.consumed].is(TOK_EMPTY);
    if (asList)
        ++result.consumed;
    else
        result.type = UNKNOWN_VAL;
    return result;
}

}  // namespace vorpen
