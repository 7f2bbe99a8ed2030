// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/query.h"

#include <algorithm>
#include <fstream>
#include <vector>

#include "base/encoding.h"
#include "base/errors.h"
#include "base/number_text.h"
#include "builtins/helper_programs.h"
#include "builtins/keywords.h"
#include "builtins/registry.h"
#include "console/markup.h"
#include "display/display.h"
#include "eval/user_func.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

constexpr std::string_view summary =
    "For info on item x, use '?x'. For example:\n"
    "?plot     gives information on the plot command\n"
    "?name     gives information on a function or variable having the given name\n"
    "\?\?name    gives further information\n"
    "Also:\n"
    "?vars     list the user-defined variables\n"
    "?consts   list the constants\n"
    "?func c   list the functions whose name begins with the supplied letter (here c)\n"
    "?funcs    list user-defined functions\n"
    "\n"
    "Finally, to get a little introductory guidance you can simply type in:\n"
    "\n"
    "{g  help}\n";

constexpr std::string_view noInformation = "I have no information to offer";

/// The digits of a number in an answer.
constexpr int digits = 9;

/// The most lines of a definition that are shown.
constexpr int longestDefinition = 100;

class WordWrap {
public:
    explicit WordWrap(ConsoleText& console) : console_(console), before_(console.wrap()) {
        console_.setWrap(true);
    }
    WordWrap(const WordWrap&) = delete;
    WordWrap& operator=(const WordWrap&) = delete;
    ~WordWrap() { console_.setWrap(before_); }

private:
    ConsoleText& console_;
    bool before_;
};

// ---- lists of names

/// Names side by side in columns of one width, as many as the line has room
/// for.
std::string inColumns(const std::vector<std::string>& names, int lineWidth) {
    std::size_t longest = 0;
    for (const auto& name : names) longest = std::max(longest, name.size());
    const std::size_t column = longest + 2;
    const std::size_t perLine = std::max<std::size_t>(1, static_cast<std::size_t>(lineWidth) / column);
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0 && i % perLine == 0) text += '\n';
        text += names[i];
        const bool endsLine = (i + 1) % perLine == 0 || i + 1 == names.size();
        if (!endsLine) text.append(column - names[i].size(), ' ');
    }
    return text;
}

std::string builtinsFrom(char letter) {
    std::string names;
    for (const BuiltinInfo& row : allBuiltins())
        if (row.name.front() == letter) (names += row.name) += "  ";
    return names;
}

/// Each sign of the Symbol font beside the name that writes it.
std::string symbolTableText() {
    std::string text;
    for (const SymbolName& symbol : symbolNames) {
        const std::string name = "\\" + std::string(symbol.name);
        text += (text.empty() ? "{;" : "\n{;") + name + "}  {:" + name;
    }
    return text;
}

// ---- descriptions

std::string describeBuiltin(const BuiltinInfo& info) {
    std::string text =
        std::string(info.name) + ", built-in function of type " + std::to_string(info.kind) + ".\n";
    text += "Takes " + std::to_string(info.minArgs);
    text +=
        info.maxArgs < 0 ? " or more arguments.\n" : " to " + std::to_string(info.maxArgs) + " arguments.\n";
    return text;
}

std::string sizesOf(const Value& v) {
    std::string text = "(" + std::to_string(v.nrow()) + " x " + std::to_string(v.columns());
    if (v.form() == FORM_3D) text += " x " + std::to_string(v.planes());
    return text;
}

std::string shapeOfNumbers(const Value& v) {
    if (v.form() == FORM_3D) return sizesOf(v) + ") array";
    if (!v.isVector()) return sizesOf(v) + ") matrix";
    return std::string(v.nrow() == 1 ? "row" : "column") + " vector";
}

std::string extremesOf(const Value& v) {
    // Complex numbers have no order.
    if (v.valueType() == COMPLEX_VAL) return {};
    std::string least, most;
    v.stringItem(least, v.indexOfMin(), digits);
    v.stringItem(most, v.indexOfMax(), digits);
    return ", min, max = " + least + ", " + most;
}

std::string shapeOf(const Value& v) {
    if (v.valueType() == LIST_VAL)
        return v.isVector() ? "list with " + std::to_string(v.size()) + " items"
                            : sizesOf(v) + ") array of items";
    if (v.isString()) return v.nrow() > 1 ? "array of strings" : "string";
    return shapeOfNumbers(v) + extremesOf(v);
}

std::string describeVariable(std::string_view name, const Value& v) {
    constexpr std::string_view typeLetters = "idcl";
    std::string text = std::string(name) + " is a variable, type (" + typeLetters[v.valueType()] +
                       "), size = " + std::to_string(v.size());
    return text + (v.isEmpty() ? "\n[]" : "\nit is a " + shapeOf(v));
}

/// A line of source, whose braces are no marks.
std::string sourceLine(const std::string& line) { return holdsMarkup(line) ? "{:" + line : line; }

std::string parametersOf(const FunctionDesc& desc) {
    if (desc.paramNames.empty()) return {};
    std::string text;
    for (int i = 0; i < desc.parameterCount(); ++i) {
        text += i > 0 ? ", " : "(";
        if (desc.byReference >> i & 1u) text += '^';
        text += desc.paramNames[i];
        if (desc.paramKinds[i] == COMPLEX_VAL) text += '*';
        if (desc.paramKinds[i] == LIST_VAL) text += "[]";
        if (i >= desc.minArguments())
            text += ":" + doubleText(desc.defaults[i - desc.minArguments()], digits);
    }
    return text + ')';
}

std::string firstWord(std::string_view line) {
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == line.npos) return {};
    line.remove_prefix(start);
    return std::string(line.substr(0, std::min(line.find_first_of(" \t;("), line.size())));
}

/// The lines of a file from one to another number, from 1.
std::vector<std::string> linesOfFile(const std::string& path, int first, int last) {
    std::ifstream in(toUtf8(path));
    std::vector<std::string> lines;
    std::string line;
    for (int number = 1; number <= last && std::getline(in, line); ++number) {
        if (number < first) continue;
        if (line.ends_with('\r')) line.pop_back();
        lines.push_back(isValidUtf8(line) ? fromUtf8(line) : line);
    }
    return lines;
}

/// A comment of several lines that stands directly above a definition; empty
/// when other statements stand between the two.
std::vector<std::string> commentAbove(const FunctionSource& source) {
    if (source.commentStartLine < 1 || source.commentStartLine >= source.line) return {};
    std::vector<std::string> lines = linesOfFile(source.text, source.commentStartLine, source.line - 1);
    int markers = 0;
    for (const std::string& line : lines) {
        const std::string word = firstWord(line);
        if (word.starts_with("##")) ++markers;
        const bool isRemark = word.empty() || word.starts_with('#');
        if (markers > 1 && !isRemark) return {};
    }
    return lines;
}

/// The comment and the lines of a definition in a file, up to its end.
std::string definitionInFile(const FunctionSource& source) {
    std::vector<std::string> lines = commentAbove(source);
    const auto definition = linesOfFile(source.text, source.line, source.line + longestDefinition);
    // A definition by ":=" has no lines below it.
    const bool hasBody = !definition.empty() && firstWord(definition.front()) == "function";
    for (std::size_t i = 0; i < definition.size(); ++i) {
        lines.push_back(definition[i]);
        if (!hasBody || firstWord(definition[i]) == "end") break;
    }
    std::string text;
    for (const std::string& line : lines) (text += '\n') += sourceLine(line);
    return text;
}

std::string fileName(const std::string& path) {
    const auto separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

/// The definition as it was typed, or the lines of the file it stands in.
std::string describeUserFunction(const UserFunc& function) {
    const FunctionDesc& desc = function.desc();
    const FunctionSource& source = function.source();
    if (!source.typed) return "User functions in " + fileName(source.text) + ":" + definitionInFile(source);
    const std::string head = desc.name + parametersOf(desc);
    const std::size_t body = source.text.find_first_not_of(" \t");
    if (body != std::string::npos)
        return sourceLine(head + (desc.has(FUNCTION_VECTORISED) ? " ::= " : " := ") +
                          source.text.substr(body));
    std::string outputs;
    for (const auto& name : desc.outputNames) outputs += (outputs.empty() ? "" : ", ") + name;
    if (desc.outputNames.size() > 1) outputs = "[" + outputs + "]";
    return sourceLine("function " + (outputs.empty() ? "" : outputs + " = ") + head);
}

// ---- the question

/// A string with braces or backslashes. Without them the other marks are plain
/// text, and the string is shown like any value.
bool showsAsItStands(const Value& v) {
    return v.isNumericKind() && v.isString() && v.text().find_first_of("{}\\") != std::string::npos;
}

void showValue(const Value& v, ConsoleText& console) {
    if (v.isEmpty()) return;
    if (!showsAsItStands(v)) return Display(v, true, false, true);
    const std::string text = v.text();  // row behind row
    const auto width = static_cast<std::size_t>(v.ncol());
    for (std::size_t at = 0; at < text.size(); at += width)
        console.print(text.substr(at, width), true, PrintMode::verbatim);
}

class Question {
public:
    Question(std::span<const Token> tokens, SymbolTable& symbols, Host& host, ConsoleText& console)
        : tokens_(tokens), symbols_(symbols), host_(host), console_(console) {}

    void answer() {
        const std::string text = answerText();
        {
            const WordWrap wrap(console_);
            console_.print(text, true, PrintMode::markup);
        }
        if (shown_) showValue(*shown_, console_);
    }

private:
    [[nodiscard]] bool isDetailed() const { return tokens_[0].code == 'Q'; }
    [[nodiscard]] bool isBare() const {
        return tokens_.size() < 2 || tokens_[1].is(TOK_NONE) || tokens_[1].is(TOK_DISPLAY);
    }

    std::string answerText() {
        if (isBare()) return std::string(summary);
        const Token& subject = tokens_[1];
        switch (subject.kind) {
            case TOK_NAME: return aboutName(subject.text);
            case TOK_OP:
            case TOK_UNARY:
                return "an operator" + callHelp(host_, std::string(operatorSpelling(subject)), isDetailed());
            case TOK_SEP: return "a separator";
            case TOK_EMPTY: return "[] is used to indicate either a list or the empty set";
            case TOK_DEFINE:
                return "f(x) := ... defines a user function. See {_function} for more information.";
            default: return std::string(noInformation);
        }
    }

    std::string aboutName(const std::string& name) {
        if (name == "vars" || name == "consts" || name == "funcs")
            return inColumns(symbols_.listNames(name), console_.wrapWidth());
        if (name == "syms") return symbolTableText();
        if (name == "func" && tokens_.size() > 2 && !tokens_[2].text.empty())
            return builtinsFrom(tokens_[2].text.front());
        DescribedAs kind{};
        const std::string text = describe(symbols_, name, kind);
        if (kind == DescribedAs::variable && isDetailed()) shown_ = symbols_.classify(name).found;
        if (kind == DescribedAs::variable || kind == DescribedAs::constant) return text;
        return text + callHelp(host_, name, isDetailed());
    }

    std::span<const Token> tokens_;
    SymbolTable& symbols_;
    Host& host_;
    ConsoleText& console_;
    const Value* shown_ = nullptr;
};

}  // namespace

std::string describe(SymbolTable& symbols, std::string_view name, DescribedAs& kind) {
    if (isKeyword(name)) {
        kind = DescribedAs::keyword;
        return std::string(name) + " is a keyword. ";
    }
    const Symbol symbol = symbols.classify(name);
    if (symbol.isVariable()) {
        kind = DescribedAs::variable;
        return describeVariable(name, *symbol.found);
    }
    if (symbol.isConstant()) {
        kind = DescribedAs::constant;
        return "a Vorpen constant, value:\n" + doubleText(symbol.foundConstant, digits);
    }
    if (symbol.userFunction) {
        kind = DescribedAs::userFunction;
        return describeUserFunction(*symbol.userFunction);
    }
    if (symbol.builtin) {
        kind = DescribedAs::builtin;
        return describeBuiltin(*symbol.builtin);
    }
    kind = DescribedAs::unknown;
    return "not recognized";
}

void query(std::span<const Token> tokens, SymbolTable& symbols, Host& host, ConsoleText& console) {
    Question(tokens, symbols, host, console).answer();
}

}  // namespace vorpen
