// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/function_declaration.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

#include "base/errors.h"
#include "base/output.h"
#include "builtins/keywords.h"
#include "files/path_rules.h"
#include "frontend/statement_compiler.h"
#include "frontend/symbol_table.h"

namespace vorpen {

namespace {

constexpr const char* invalidHead = "invalid function declaration";

[[noreturn]] void fail(std::string message) { throw SyntaxError{std::move(message)}; }

void printLine(std::string_view text) { output().print(text, true, PrintMode::markup); }

bool isKindMark(const Token& token, char mark) {
    return mark == '*' ? token.is(TOK_OP, '*') || token.is(TOK_UNARY, '*') : token.is(TOK_EMPTY);
}

bool isMark(const Token& token, char sign) { return token.is(TOK_OP, sign) || token.is(TOK_UNARY, sign); }

// ---- heads

/// The reader of a parameter list.
class ParameterList {
public:
    ParameterList(std::span<const Token> tokens, FunctionDesc& desc) : tokens_(tokens), desc_(desc) {}

    void read() {
        if (tokens_.empty()) return;
        const auto separators = std::ranges::count_if(
            tokens_, [](const Token& token) { return token.is(TOK_SEP, ',') || token.is(TOK_SEP, ';'); });
        if (separators >= maxParameters) fail("exceeded maximum permitted number of arguments");
        while (true) {
            readParameter();
            if (atEnd()) break;
            if (!tokens_[next_].is(TOK_SEP, ',') && !tokens_[next_].is(TOK_SEP, ';'))
                fail("missing comma or semicolon");
            ++next_;
        }
    }

private:
    [[nodiscard]] bool atEnd() const { return next_ >= tokens_.size(); }

    void readParameter() {
        if (!atEnd() && isMark(tokens_[next_], '^')) {
            desc_.byReference |= 1u << desc_.parameterCount();
            if (++next_ >= tokens_.size()) fail("unattached '^' in argument list");
        }
        if (atEnd() || !tokens_[next_].is(TOK_NAME) || isKeyword(tokens_[next_].text))
            fail("invalid item in argument list");
        const Token& name = tokens_[next_++];
        if (std::ranges::find(desc_.paramNames, name.text) != desc_.paramNames.end())
            fail("repeated name in argument list");
        desc_.paramNames.push_back(name.text);
        desc_.paramKinds.push_back(readKind(name.code));
        readDefault();
    }

    int readKind(char code) {
        if (code == '*') {
            if (atEnd() || !isKindMark(tokens_[next_], '*')) fail("incorrect use of '*' in parameter list");
            ++next_;
            return COMPLEX_VAL;
        }
        if (code == '[') {
            if (atEnd() || !isKindMark(tokens_[next_], '['))
                fail("incorrect use of '['. Use [] to indicate a list");
            ++next_;
            return LIST_VAL;
        }
        return DOUBLE_VAL;
    }

    void readDefault() {
        if (atEnd() || !tokens_[next_].is(TOK_SEP, ':')) {
            if (!desc_.defaults.empty()) fail("missing default value");
            return;
        }
        ++next_;
        const bool negative = !atEnd() && isMark(tokens_[next_], '-');
        if (negative) ++next_;
        const bool isNumber = !atEnd() && (tokens_[next_].is(TOK_INT) ||
                                           (tokens_[next_].is(TOK_NUM) && tokens_[next_].code != 'i'));
        if (!isNumber) fail("default value must be a number");
        const double value = std::strtod(tokens_[next_++].text.c_str(), nullptr);
        desc_.defaults.push_back(negative ? -value : value);
    }

    std::span<const Token> tokens_;
    FunctionDesc& desc_;
    std::size_t next_ = 0;
};

void setOutputs(FunctionDesc& desc, const std::vector<ListedName>& outputs) {
    if (outputs.empty()) fail(invalidHead);
    desc.outputNames.clear();
    desc.outputKinds.clear();
    for (const auto& output : outputs) {
        if (isKeyword(output.name)) fail(invalidHead);
        desc.outputNames.push_back(output.name);
        desc.outputKinds.push_back(output.type);
    }
}

/// The outputs of `y = `, `y* = `, `y*= ` and `[a, b] = `; answers the position
/// behind them, which is the start when there are none.
std::size_t readOutputs(std::span<const Token> tokens, std::size_t next, FunctionDesc& desc) {
    const auto at = [&](std::size_t i) { return i < tokens.size() ? tokens[i] : Token(); };
    const Token& first = tokens[next];
    if (first.is(TOK_BRACKET, ']')) {
        setOutputs(desc, nameList(first.items, true));
        if (!at(next + 1).is(TOK_ASSIGN, '=')) fail(invalidHead);
        return next + 2;
    }
    if (!first.is(TOK_NAME)) return next;
    const bool marked = isKindMark(at(next + 1), '*') || isKindMark(at(next + 1), '[');
    const std::size_t assign = next + (marked ? 2 : 1);
    if (!at(assign).is(TOK_ASSIGN)) return next;
    const bool joined = !marked && at(assign).code == 'T';
    if (!joined && at(assign).code != '=') fail(invalidHead);
    const bool isList = marked && at(next + 1).is(TOK_EMPTY);
    const int type = isList ? LIST_VAL : marked || joined ? COMPLEX_VAL : DOUBLE_VAL;
    setOutputs(desc, {{first.text, type}});
    return assign + 1;
}

/// Only such a function can be called by evaluating its expression in place.
bool allowsQuickCall(const FunctionDesc& desc) {
    const auto isDouble = [](int kind) { return kind == DOUBLE_VAL; };
    return desc.parameterCount() <= 2 && desc.outputNames.size() == 1 && isDouble(desc.outputKinds.front()) &&
           std::ranges::all_of(desc.paramKinds, isDouble) && desc.defaults.empty() && desc.byReference == 0;
}

// ---- bodies

/// The scope of a function while its body is compiled.
class FunctionScope {
public:
    FunctionScope(SymbolTable& symbols, UserFunc& function) : symbols_(symbols) {
        symbols.openScope(function);
    }
    ~FunctionScope() { symbols_.closeScope(); }
    FunctionScope(const FunctionScope&) = delete;
    FunctionScope& operator=(const FunctionScope&) = delete;

private:
    SymbolTable& symbols_;
};

/// All statements up to `end`, from the rest of the line and further lines.
StatementPtr compileLongBody(StatementCompiler& compiler, StatementCompiler& nested) {
    compiler.stepPast();
    nested.setStatements(compiler.takeRemaining());
    StatementPtr body = nested.compileAll();
    compiler.setStatements(nested.takeRemaining());
    return body;
}

/// What stands behind ":=": a block, or an expression to be returned.
StatementPtr compileShortBody(StatementCompiler& compiler, StatementCompiler& nested, std::size_t headEnd) {
    TokenList tokens = std::move(compiler.tokens());
    compiler.stepPast();
    if (headEnd >= tokens.size() || !tokens[headEnd].is(TOK_DEFINE)) fail(invalidHead);
    tokens.erase(tokens.begin(), tokens.begin() + static_cast<std::ptrdiff_t>(headEnd) + 1);
    if (tokens.empty()) fail("function def requires a right hand side");

    const Token& first = tokens.front();
    const bool isBlock = first.is(TOK_BRACKET, '}');
    if (first.is(TOK_BRACKET, '{') || first.is(TOK_BRACKET, '#')) fail("incomplete function body");
    if (!isBlock) tokens.insert(tokens.begin(), Token(TOK_NAME, ' ', "return"));
    std::vector<TokenList> statements;
    statements.push_back(std::move(tokens));
    nested.setStatements(std::move(statements), true);
    return nested.compileStatement(true);
}

void noteEventFunction(UserFunctionTable& table, const std::string& name) {
    if (name == "onMove") table.onMoveEnabled = true;
    if (name == "onDrag") table.onDragEnabled = true;
    if (name == "onDragable") table.onDragableEnabled = true;
}

/// Compiles a body and gives it to its function. The compiler's present
/// statement is the one with the head, which ends at headEnd.
void compileBody(StatementCompiler& compiler, UserFunc& function, DefinitionMode mode, std::size_t headEnd) {
    SymbolTable& symbols = compiler.symbols();
    const std::string name = function.name();
    try {
        const FunctionScope scope(symbols, function);
        StatementCompiler nested(symbols, compiler.input(), compiler.depth() + 1);
        StatementPtr body = mode == DefinitionMode::function ? compileLongBody(compiler, nested)
                                                             : compileShortBody(compiler, nested, headEnd);
        if (!body) fail("empty function");
        function.finishFunction(std::move(body));
        noteEventFunction(symbols.functions(), name);
    } catch (...) {
        printLine("in function " + name);
        symbols.functions().remove(name);
        throw;
    }
}

FunctionSource sourceOf(const LexInput& input, std::string_view typedBody) {
    FunctionSource source;
    source.typed = input.isInteractive();
    if (source.typed)
        source.text = typedBody;
    else
        input.sourceName(source.text);
    source.line = input.lineNumber();
    source.commentStartLine = input.commentStartLine();
    return source;
}

void removeFunctionsOf(UserFunctionTable& table, const std::string& file) {
    std::vector<std::string> names;
    for (const auto& [name, function] : table.functions())
        if (!function->source().typed && function->source().text == file) names.push_back(name);
    for (const auto& name : names) table.remove(name);
}

void compilePendingFunction(StatementCompiler& compiler, UserFunc& function) {
    const std::string file = function.source().text;
    std::optional<InputSource> source;
    try {
        source = InputSource::openFile(file);
        if (!source) fail("could not open the file of function " + function.name());
        source->seekLine(function.source().line);
        StatementCompiler reader(compiler.symbols(), *source, compiler.depth());
        if (!reader.nextLine(false)) fail(invalidHead);
        FunctionDesc desc;
        const std::size_t headEnd = parseHead(reader.tokens(), DefinitionMode::function, desc);
        if (desc.name != function.name() || !sameSignature(desc, function.desc())) fail(invalidHead);
        compileBody(reader, function, DefinitionMode::function, headEnd);
    } catch (...) {
        printLine("in file " + std::string(fileNameOf(file)));
        if (source) compiler.input().noteFailure(source->lineNumber(), source->currentLine());
        removeFunctionsOf(compiler.symbols().functions(), file);
        throw;
    }
}

}  // namespace

std::vector<ListedName> nameList(std::span<const Token> tokens, bool allowKinds) {
    std::vector<ListedName> names;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        if (token.is(TOK_NAME)) {
            names.push_back({token.text, DOUBLE_VAL});
            continue;
        }
        if (token.is(TOK_SEP) || token.is(TOK_SPACE) || token.is(TOK_DISPLAY)) continue;
        const bool behindName = i > 0 && tokens[i - 1].is(TOK_NAME);
        if (!allowKinds || !behindName) fail("invalid list of names");
        if (isKindMark(token, '*'))
            names.back().type = COMPLEX_VAL;
        else if (isKindMark(token, '['))
            names.back().type = LIST_VAL;
        else
            fail("invalid list of names");
    }
    return names;
}

std::size_t parseHead(std::span<const Token> tokens, DefinitionMode mode, FunctionDesc& desc) {
    const bool byKeyword = mode == DefinitionMode::function || mode == DefinitionMode::declaration;
    std::size_t next = byKeyword ? 1 : 0;
    if (byKeyword) {
        if (std::ranges::any_of(tokens, [](const Token& token) { return token.is(TOK_DEFINE); }))
            fail("do not use ':=' with the keyword 'function'");
        if (next < tokens.size()) next = readOutputs(tokens, next, desc);
    }
    if (next >= tokens.size() || !tokens[next].is(TOK_NAME) || isKeyword(tokens[next].text))
        fail(invalidHead);
    desc.name = tokens[next++].text;
    if (next < tokens.size() && tokens[next].is(TOK_BRACKET, ')'))
        ParameterList(tokens[next++].items, desc).read();
    const auto rest = tokens.subspan(next);
    if (byKeyword && std::ranges::any_of(rest, [](const Token& token) { return !token.is(TOK_DISPLAY); }))
        fail(invalidHead);
    if (allowsQuickCall(desc)) desc.flags |= FUNCTION_QUICK_ELIGIBLE;
    if (mode == DefinitionMode::vectorisedQuick) {
        if (desc.paramNames.empty()) fail("can't vectorize a function with no arguments");
        desc.flags |= FUNCTION_VECTORISED;
    }
    if (mode == DefinitionMode::declaration) desc.flags |= FUNCTION_DECLARED_ONLY;
    return next;
}

UserFunc& defineFunction(SymbolTable& symbols, FunctionDesc desc, FunctionSource source) {
    const std::string name = desc.name;
    if (symbols.clashesWithFunctionName(name))
        fail("name clash with existing symbol. (Clear the symbol or use another name)");
    // That form is for what only the resource files call.
    if (name.ends_with('_') && !desc.has(FUNCTION_RESOURCE)) fail("user function names may not end with underline");

    const bool declaredOnly = desc.has(FUNCTION_DECLARED_ONLY);
    UserFunc* function = symbols.functions().find(name);
    if (!function) {
        function = &symbols.functions().declare(std::move(desc));
    } else {
        const bool differs = !sameSignature(function->desc(), desc);
        if (declaredOnly && differs) fail("does not match existing declaration");
        if (declaredOnly) return *function;
        if (function->depth() > 0) fail("function in use, can't be redefined here: " + name);
        if (differs) printLine("does not match existing declaration");
        function->resetFunction(std::move(desc));
    }
    function->setSource(std::move(source));
    return *function;
}

void compileDefinition(StatementCompiler& compiler, DefinitionMode mode) {
    if (compiler.depth() >= 1) fail("nested function definition");
    const TokenList& tokens = compiler.tokens();
    FunctionDesc desc;
    const std::size_t headEnd = parseHead(tokens, mode, desc);
    const std::string body(headEnd < tokens.size() ? tokens[headEnd].source() : std::string_view());
    UserFunc& function =
        defineFunction(compiler.symbols(), std::move(desc), sourceOf(compiler.input(), body));
    if (mode == DefinitionMode::declaration)
        compiler.stepPast();
    else
        compileBody(compiler, function, mode, headEnd);
}

void compilePendingFunctions(StatementCompiler& compiler) {
    const UserFunctionTable& table = compiler.symbols().functions();
    while (true) {
        std::vector<std::string> pending;
        for (const auto& [name, function] : table.functions())
            if (function->isPending()) pending.push_back(name);
        if (pending.empty()) return;
        for (const auto& name : pending)
            if (UserFunc* function = table.find(name); function && function->isPending())
                compilePendingFunction(compiler, *function);
    }
}

}  // namespace vorpen
