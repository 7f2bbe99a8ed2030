// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/scanner.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "base/errors.h"
#include "frontend/literals.h"
#include "frontend/operators.h"

namespace vorpen {
namespace {

constexpr std::size_t none = std::string_view::npos;

/// Whatever walks over nested tokens recurses as deep as they nest. No one
/// writes this many, and any stack holds them.
constexpr std::size_t nestingLimit = 500;

/// Room for the tokens of most lines at once.
constexpr std::size_t usualTokenCount = 32;

/// A line is given a comment sign at its end, so that its end looks like the
/// beginning of a comment.
constexpr std::string_view endMark = " #";

/// Operators that may stand before an operand behind another operator.
constexpr std::string_view signCodes = "-~id";

/// Operators that may begin an expression.
constexpr std::string_view leadingCodes = "-~?^Qidg";

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isQuote(char c) { return c == '\'' || c == '"'; }

char closingBracket(char opening) { return opening == '(' ? ')' : opening == '[' ? ']' : '}'; }

/// The tokens of a line or of a bracket while they are collected.
struct Frame {
    char terminator;
    TokenList& tokens;
    bool assignmentSeen = false;
    bool barClosed = false;
    bool isAbs = false;
};

bool isQuery(const TokenList& tokens) {
    return !tokens.empty() && (tokens[0].is(TOK_UNARY, '?') || tokens[0].is(TOK_UNARY, 'Q'));
}

/// True for the "=" behind the mark of a complex output in the head of a
/// function: `function y* = f(x)`.
bool marksOutput(const TokenList& tokens, const Token& token) {
    const Token& first = tokens.front();
    return token.is(TOK_ASSIGN, '=') && tokens.back().is(TOK_OP, '*') && first.is(TOK_NAME) &&
           (first.text == "function" || first.text == "funcdec");
}

bool isGrow(const Token& token) { return token.code == 'g' && (token.is(TOK_ASSIGN) || token.is(TOK_UNARY)); }

/// True when the tokens ask for more: they end in an operator, an assignment
/// or a comma.
bool isUnfinished(const TokenList& tokens) {
    const std::size_t n = tokens.size();
    if (n == 0 || isQuery(tokens)) return false;
    const Token& last = tokens[n - 1];
    if (last.is(TOK_ASSIGN) || last.is(TOK_SEP, ',')) return true;
    if (!last.is(TOK_OP)) return false;
    // `global z*` and `f(z*)` declare a complex variable.
    if (last.code == '*' && n > 1 && tokens[n - 2].is(TOK_NAME, '*')) return false;
    return n < 3 || !(isGrow(tokens[0]) || isGrow(tokens[1]));
}

/// True when the next token begins an expression by itself.
bool isAtStart(const Frame& frame) {
    if (frame.tokens.empty()) return true;
    const Token& last = frame.tokens.back();
    return last.is(TOK_ASSIGN) || last.is(TOK_BLOCK_END) || last.is(TOK_ROW) || last.is(TOK_BRACKET, '}');
}

/// True when the next token has to be an operand, with a sign at most.
bool wantsOperand(const Token& last) {
    return last.is(TOK_OP) || last.is(TOK_SPACE) || last.is(TOK_DISPLAY) ||
           (last.is(TOK_SEP) && last.code != 'J');
}

/// True for a token behind which a blank inside [...] ends an element.
bool endsElement(const Token& last) {
    switch (last.kind) {
        case TOK_NAME:
        case TOK_INT:
        case TOK_NUM:
        case TOK_BRACKET:
        case TOK_STRING: return true;
        case TOK_UNARY: return isQuote(last.code) || last.code == '!';
        case TOK_BACKSLASH: return !last.text.empty();
        default: return false;
    }
}

/// `m[i,:]` and `m[:,j]` are a row and a column: the colon goes and the bracket
/// becomes a backslash form.
void turnColonIntoBackslash(Token& bracket) {
    TokenList& items = bracket.items;
    if (items.size() < 3) return;
    const bool isRow = items.back().is(TOK_SEP, ':');
    if (!isRow && !items.front().is(TOK_SEP, ':')) return;
    const Token& comma = isRow ? items[items.size() - 2] : items[1];
    if (!comma.is(TOK_SEP, ',')) throw SyntaxError{"incorrect use of ':'"};
    const auto colon = isRow ? items.end() - 2 : items.begin();
    items.erase(colon, colon + 2);
    Token form(TOK_BACKSLASH, isRow ? 1 : 2);
    form.items = std::move(items);
    bracket = std::move(form);
}

class Scanner {
public:
    Scanner(std::string_view line, LexInput& input) : input_(input) { setLine(line); }

    ScannedLine scan() {
        ScannedLine result;
        result.tokens.reserve(std::min<std::size_t>(end_ / 2 + 1, usualTokenCount));
        Frame frame{'#', result.tokens};
        static_cast<void>(scanItems(frame));
        result.suchThatIndex = suchThatIndex_;
        return result;
    }

private:
    struct OpenBracket {
        char opening;
        std::shared_ptr<const std::string> line;
        std::size_t begin, end;
        int lineNumber;
    };

    [[nodiscard]] char peek(std::size_t ahead = 0) const {
        return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '#';
    }
    [[nodiscard]] std::string_view rest() const { return text_.substr(pos_); }
    /// The line without the mark at its end.
    [[nodiscard]] std::string_view content() const { return text_.substr(0, end_); }

    void setLine(std::string_view line);
    void readOn();
    [[nodiscard]] bool skipBlanks();
    [[nodiscard]] std::size_t sourceEnd(char closing);

    [[nodiscard]] bool scanItems(Frame& frame);
    void scanToken(Frame& frame, TokenKind kind, bool afterBlank);
    void push(Frame& frame, Token token);
    [[nodiscard]] bool startsElement(const Frame& frame, TokenKind kind) const;
    void scanStray(Frame& frame);
    void scanName(Frame& frame);
    void scanCommand(Frame& frame);
    void scanNumber(Frame& frame, bool afterBlank);
    void scanString(Frame& frame);
    void scanBackslash(Frame& frame);
    void scanSeparator(Frame& frame);
    void scanOperator(Frame& frame, bool afterBlank);
    [[nodiscard]] bool scanNegativeNumber(Frame& frame);
    void placeOperator(Frame& frame, Token token, bool afterBlank);
    void scanSuchThat(Frame& frame);
    void scanEllipsis();
    void scanBracket(Frame& frame);
    void fillBracket(Frame& inner, Token& bracket);
    void pushBracket(Frame& frame, Token bracket, bool isAbs);

    LexInput& input_;
    std::shared_ptr<const std::string> line_;
    std::string_view text_;
    std::size_t pos_ = 0;
    std::size_t end_ = 0;
    bool newLine_ = false;
    std::array<std::optional<std::size_t>, 3> lastClosing_;
    std::vector<OpenBracket> open_;
    int suchThatIndex_ = -1;
};

void Scanner::setLine(std::string_view line) {
    auto copy = std::make_shared<std::string>();
    copy->reserve(line.size() + endMark.size());
    copy->append(line).append(endMark);
    line_ = std::move(copy);
    text_ = *line_;
    end_ = line.size();
    pos_ = 0;
    lastClosing_ = {};
}

/// Goes on with the next line of the input as if it were the same line.
void Scanner::readOn() {
    std::string next;
    if (!input_.getLine(next, false, true)) {
        if (open_.empty()) throw SyntaxError{"dangling operator or more input needed"};
        const OpenBracket& bracket = open_.back();
        const std::string message = "no closing bracket for line " + std::to_string(bracket.lineNumber) + ":";
        const std::string_view source = std::string_view(*bracket.line).substr(bracket.begin);
        throw SyntaxError{syntaxErrorText(message, source.substr(0, bracket.end - bracket.begin))};
    }
    setLine(next);
    newLine_ = true;
}

/// True when there was a blank, or the end of a line that goes on.
bool Scanner::skipBlanks() {
    const std::size_t begin = pos_;
    while (pos_ < text_.size() && isBlank(text_[pos_])) ++pos_;
    return std::exchange(newLine_, false) || pos_ > begin;
}

/// Where the source of a bracket that begins here ends, for a message: behind
/// the last closing bracket of its kind, or with the line.
std::size_t Scanner::sourceEnd(char closing) {
    std::optional<std::size_t>& last = lastClosing_[closing == ')' ? 0 : closing == ']' ? 1 : 2];
    if (!last) last = content().rfind(closing);
    return *last != none && *last > pos_ ? *last + 1 : end_;
}

/// Collects tokens up to the terminator. False when the line ends before it
/// with nothing left unfinished.
bool Scanner::scanItems(Frame& frame) {
    if (peek() == '!') throw SyntaxError{"operator '!' cannot appear at the start"};
    for (;;) {
        const bool afterBlank = skipBlanks();
        const char c = peek();
        if (c == '#') {
            if (!isUnfinished(frame.tokens)) return false;
            readOn();
        } else if (c == frame.terminator) {
            return true;
        } else if (frame.isAbs && c == '|' && peek(1) == frame.terminator) {
            frame.barClosed = true;
            ++pos_;
        } else {
            const TokenKind kind = classify(rest());
            if (afterBlank && startsElement(frame, kind)) frame.tokens.emplace_back(TOK_SPACE, ' ');
            scanToken(frame, kind, afterBlank);
        }
    }
}

void Scanner::scanToken(Frame& frame, TokenKind kind, bool afterBlank) {
    switch (kind) {
        case TOK_NAME: return scanName(frame);
        case TOK_COMMAND: return scanCommand(frame);
        case TOK_NUM: return scanNumber(frame, afterBlank);
        case TOK_STRING: return scanString(frame);
        case TOK_SEP: return scanSeparator(frame);
        case TOK_OP: return scanOperator(frame, afterBlank);
        case TOK_BRACKET: return scanBracket(frame);
        case TOK_BACKSLASH: return scanBackslash(frame);
        default: return scanStray(frame);
    }
}

void Scanner::push(Frame& frame, Token token) {
    if (token.is(TOK_ASSIGN)) {
        if (frame.assignmentSeen) throw SyntaxError{"2nd assignment"};
        frame.assignmentSeen = true;
    }
    frame.tokens.push_back(std::move(token));
}

/// Inside [...] a blank separates elements, unless an operator binds what
/// stands around it. A sign that is set close to what follows begins an
/// element.
bool Scanner::startsElement(const Frame& frame, TokenKind kind) const {
    if (frame.terminator != ']' || frame.tokens.empty() || !endsElement(frame.tokens.back())) return false;
    if (kind == TOK_OP) return peek() == '-' && !isBlank(peek(1));
    return kind != TOK_SEP && kind != TOK_NONE;
}

void Scanner::scanStray(Frame& frame) {
    const char c = peek();
    if (c == ')' || c == ']') throw SyntaxError{"unexpected closing bracket"};
    if (c != '}') throw SyntaxError{"unrecognised character"};
    ++pos_;
    if (open_.empty()) input_.noteBlockClosed();
    frame.assignmentSeen = false;
    frame.tokens.emplace_back(TOK_BLOCK_END, '}');
}

void Scanner::scanName(Frame& frame) {
    const std::size_t begin = pos_;
    while (isNameCharacter(peek())) ++pos_;
    frame.tokens.emplace_back(TOK_NAME, peek(), std::string(text_.substr(begin, pos_ - begin)));
    if (isQuote(peek())) frame.tokens.emplace_back(TOK_UNARY, text_[pos_++]);
}

/// `cd my dir` takes the rest of the statement as one string.
void Scanner::scanCommand(Frame& frame) {
    const std::size_t wordEnd = pos_ + readReservedWord(rest())->length;
    const std::size_t next = text_.find_first_not_of(" \t", wordEnd);
    if (next == none || std::string_view("'\"(;#").find(text_[next]) != none) return scanName(frame);
    if (!isBlank(text_[wordEnd])) throw SyntaxError{"missing space, bracket or string"};
    const std::size_t end = std::min(text_.find_first_of(";#", next), text_.size());
    const std::size_t last = text_.find_last_not_of(" \t", end - 1);
    frame.tokens.emplace_back(TOK_NAME, text_[wordEnd], std::string(text_.substr(pos_, wordEnd - pos_)));
    frame.tokens.emplace_back(TOK_STRING, '"', std::string(text_.substr(next, last + 1 - next)));
    pos_ = end;
}

void Scanner::scanNumber(Frame& frame, bool afterBlank) {
    if (peek() == '[') {
        pos_ += 2;
        frame.tokens.emplace_back(TOK_EMPTY, 0);
        return;
    }
    // Set close to a name a point is no part of a number: x.1 is an element.
    if (peek() == '.' && !afterBlank && pos_ > 0 && isNameCharacter(text_[pos_ - 1]))
        return scanOperator(frame, afterBlank);
    ScannedLiteral number = readNumber(content(), pos_);
    pos_ = number.end;
    frame.tokens.push_back(std::move(number.token));
}

void Scanner::scanString(Frame& frame) {
    const std::size_t begin = pos_;
    const bool mayHoldValues = peek() == '^';
    ScannedLiteral string = readString(content(), pos_ + (mayHoldValues ? 1 : 0));
    pos_ = string.end;
    if (mayHoldValues) {
        if (std::optional<Token> bracket = interpolated(string.token)) {
            bracket->setSource(line_, begin, pos_);
            frame.tokens.push_back(std::move(*bracket));
            return;
        }
    }
    frame.tokens.push_back(std::move(string.token));
}

void Scanner::scanBackslash(Frame& frame) {
    const std::size_t begin = pos_;
    while (peek() == '\\') ++pos_;
    // More than three have no meaning; the count is kept apart from those.
    const auto count = static_cast<char>(std::min<std::size_t>(pos_ - begin, 100));
    const std::size_t nameBegin = pos_;
    if (isLetter(peek()))
        while (isNameCharacter(peek())) ++pos_;
    frame.tokens.emplace_back(TOK_BACKSLASH, count, std::string(text_.substr(nameBegin, pos_ - nameBegin)));
    if (pos_ > nameBegin && isQuote(peek())) frame.tokens.emplace_back(TOK_UNARY, text_[pos_++]);
}

void Scanner::scanSeparator(Frame& frame) {
    if (frame.tokens.empty() ? frame.terminator != ']' : frame.tokens.back().is(TOK_ASSIGN))
        throw SyntaxError{"expression starts wrong"};
    frame.assignmentSeen = false;
    const char first = peek(), second = peek(1);
    Token token(TOK_SEP, first);
    std::size_t length = 2;
    if (first == ';' && (second == ';' || second == '!' || second == '?')) {
        token = Token(TOK_DISPLAY, second);
    } else if (first != ':' && second == '=') {
        token = Token(TOK_ASSIGN, first == ';' ? 'S' : 'C');
    } else if (first == ',' && second == ',') {
        throw SyntaxError{"double comma"};
    } else if (first == ':' && (second == '=' || (second == ':' && peek(2) == '='))) {
        length = second == '=' ? 2 : 3;
        token = Token(TOK_DEFINE, second == '=' ? ':' : 'v');
        token.setSource(line_, pos_ + length, std::max(end_, pos_ + length));
    } else if (first == ':' && second == ':') {
        token.code = 'W';
    } else {
        length = 1;
    }
    pos_ += length;
    push(frame, std::move(token));
}

void Scanner::scanOperator(Frame& frame, bool afterBlank) {
    Token token;
    if (isLetter(peek())) {
        const ScannedOperator word = *readReservedWord(rest());
        token = Token(word.kind, word.code, std::string(rest().substr(0, word.length)));
        pos_ += word.length;
    } else {
        if (isAtStart(frame) && scanNegativeNumber(frame)) return;
        const ScannedOperator sign = readOperatorSign(rest());
        pos_ += sign.length;
        if (sign.code == 'J') return scanSuchThat(frame);
        if (sign.code == 'e' && !isQuery(frame.tokens)) return scanEllipsis();
        if (sign.kind == TOK_NAME) {
            frame.tokens.emplace_back(TOK_NAME, sign.code, "..");
            return;
        }
        token = Token(sign.kind, sign.code);
    }
    placeOperator(frame, std::move(token), afterBlank);
}

/// A "-" at the start of an expression belongs to the number behind it, but a
/// power binds tighter than the sign.
bool Scanner::scanNegativeNumber(Frame& frame) {
    if (peek() != '-' || !(isDigit(peek(1)) || (peek(1) == '.' && isDigit(peek(2))))) return false;
    ScannedLiteral number = readNumber(content(), pos_);
    const std::size_t next = text_.find_first_not_of(" \t", number.end);
    if (next != none && text_[next] == '^') return false;
    pos_ = number.end;
    frame.tokens.push_back(std::move(number.token));
    return true;
}

/// Decides from what stands before it whether an operator is one between two
/// operands.
void Scanner::placeOperator(Frame& frame, Token token, bool afterBlank) {
    const bool atStart = isAtStart(frame);
    const Token* last = frame.tokens.empty() ? nullptr : &frame.tokens.back();
    const bool isSign = signCodes.find(token.code) != none;
    if (atStart) {
        const bool isBinary = token.code == '*' && last && last->is(TOK_ASSIGN, 'g');
        if (!isBinary && leadingCodes.find(token.code) == none)
            throw SyntaxError{"expression began with operator"};
        if (!isBinary) token.kind = TOK_UNARY;
    } else if (wantsOperand(*last)) {
        const bool marksParameter = token.code == '^' && frame.terminator == ')' && isLetter(peek()) &&
                                    (last->is(TOK_SEP, ',') || last->is(TOK_SEP, ';'));
        if (marksOutput(frame.tokens, token)) return push(frame, std::move(token));
        if (!isSign && !marksParameter) throw SyntaxError{"two adjacent operators"};
        token.kind = TOK_UNARY;
    } else if (token.code == '!') {
        if (afterBlank) throw SyntaxError{"unattached '!' operator"};
        token.kind = TOK_UNARY;
    } else if (isSign && last->is(TOK_SEP, 'J')) {
        token.kind = TOK_UNARY;
    }
    const bool changesName = token.is(TOK_UNARY, 'i') || token.is(TOK_UNARY, 'd');
    if (changesName && !isLetter(peek()) && !isQuery(frame.tokens))
        throw SyntaxError{"++ or -- must be attached to a name"};
    push(frame, std::move(token));
}

void Scanner::scanSuchThat(Frame& frame) {
    if (!open_.empty()) throw SyntaxError{"such that (/.) operator illegal here"};
    if (frame.tokens.empty())
        throw SyntaxError{"'such-that' clause is not allowed at the beginning of a line"};
    if (suchThatIndex_ >= 0) throw SyntaxError{"two /. clauses in one line"};
    suchThatIndex_ = static_cast<int>(frame.tokens.size());
    frame.assignmentSeen = false;
    frame.tokens.emplace_back(TOK_SEP, 'J');
}

void Scanner::scanEllipsis() {
    while (isBlank(peek())) ++pos_;
    if (peek() != '#') throw SyntaxError{"stray ellipsis"};
    readOn();
}

void Scanner::scanBracket(Frame& frame) {
    if (open_.size() >= nestingLimit) throw SyntaxError{"brackets nested too deeply"};
    const char opening = peek(), closing = closingBracket(opening);
    Token bracket(TOK_BRACKET, closing);
    const std::size_t end = sourceEnd(closing);
    bracket.setSource(line_, pos_, end);
    Frame inner{closing, bracket.items};
    if (peek(1) == closing) {
        pos_ += 2;
    } else {
        open_.push_back({opening, line_, pos_, end, input_.lineNumber()});
        ++pos_;
        inner.isAbs = opening != '{' && peek() == '|';
        if (inner.isAbs) ++pos_;
        fillBracket(inner, bracket);
        open_.pop_back();
    }
    pushBracket(frame, std::move(bracket), inner.isAbs);
}

/// Scans the inside of a bracket up to its end, over as many lines as it
/// takes. A block may stay open.
void Scanner::fillBracket(Frame& inner, Token& bracket) {
    while (!scanItems(inner)) {
        if (inner.terminator == '}') {
            bracket.code = '{';
            const bool isBlock = std::all_of(open_.begin(), open_.end(),
                                             [](const OpenBracket& outer) { return outer.opening == '{'; });
            if (isBlock) input_.noteBlockOpened();
            return;
        }
        const bool endsRow =
            inner.terminator == ']' && !bracket.items.empty() && !bracket.items.back().is(TOK_SEP);
        readOn();
        if (endsRow) bracket.items.emplace_back(TOK_ROW, ';');
    }
    ++pos_;
    if (isUnfinished(bracket.items)) throw SyntaxError{"bracket finished incorrectly"};
    if (inner.isAbs && !inner.barClosed) throw SyntaxError{"abs bracket form (| not closed"};
    if (inner.terminator == ']') {
        if (!bracket.items.empty() &&
            (bracket.items.back().is(TOK_SEP, ';') || bracket.items.back().is(TOK_ROW)))
            bracket.items.pop_back();
        turnColonIntoBackslash(bracket);
    }
    if (bracket.items.empty() && inner.terminator != '}') throw SyntaxError{"empty bracket"};
}

void Scanner::pushBracket(Frame& frame, Token bracket, bool isAbs) {
    const bool isBlock = bracket.code == '{' || bracket.code == '}';
    Token* last = frame.tokens.empty() ? nullptr : &frame.tokens.back();
    const bool afterName = last && (last->is(TOK_NAME) || (last->is(TOK_BACKSLASH) && !last->text.empty()));
    if (bracket.items.empty() && !isBlock && !afterName) throw SyntaxError{"empty bracket?"};
    if (isAbs) frame.tokens.emplace_back(TOK_NAME, '(', "abs");
    if (isBlock) frame.assignmentSeen = false;
    if (bracket.is(TOK_BACKSLASH)) {
        if (!last || !last->is(TOK_NAME)) throw SyntaxError{"stray colon in the bracket"};
        last->code = '\\';
    }
    if (!isBlock && bracket.is(TOK_BRACKET) && peek() == '.' && peek(1) != '.') {
        bracket.kind = TOK_DOTTED;
        ++pos_;
    }
    frame.tokens.push_back(std::move(bracket));
    if (!isBlock && isQuote(peek())) frame.tokens.emplace_back(TOK_UNARY, text_[pos_++]);
}

}  // namespace

TokenKind classify(std::string_view text) {
    constexpr std::string_view separators = ",;:";
    constexpr std::string_view operators = "+-/*_@=<>^&|~%?!.";
    if (text.empty()) return TOK_NONE;
    const char first = text[0], second = text.size() > 1 ? text[1] : '\0';
    if (isLetter(first)) {
        const std::optional<ScannedOperator> reserved = readReservedWord(text);
        return reserved ? reserved->kind : TOK_NAME;
    }
    if (isDigit(first)) return TOK_NUM;
    if (separators.find(first) != none) return TOK_SEP;
    if (first == '.' && isDigit(second)) return TOK_NUM;
    if (isQuote(first) || (first == '^' && isQuote(second))) return TOK_STRING;
    if (operators.find(first) != none) return TOK_OP;
    if (first == '[' && second == ']') return TOK_NUM;
    if (first == '(' || first == '{' || first == '[') return TOK_BRACKET;
    return first == '\\' ? TOK_BACKSLASH : TOK_NONE;
}

ScannedLine scanLine(std::string_view line, LexInput& input) { return Scanner(line, input).scan(); }

std::vector<TokenList> splitStatements(TokenList tokens, bool interactive) {
    std::vector<TokenList> statements;
    const bool defines =
        std::any_of(tokens.begin(), tokens.end(), [](const Token& t) { return t.is(TOK_DEFINE); });
    const bool ended = !tokens.empty() && (tokens.back().is(TOK_SEP, ';') || tokens.back().is(TOK_DISPLAY));
    TokenList statement;
    const auto finish = [&] {
        if (statement.size() > 1 || (statement.size() == 1 && !statement[0].is(TOK_DISPLAY)))
            statements.push_back(std::move(statement));
        statement.clear();
    };
    for (Token& token : tokens) {
        if (token.is(TOK_SEP, ';')) {
            finish();
            continue;
        }
        if (token.is(TOK_BLOCK_END)) finish();
        const bool ends = token.is(TOK_DISPLAY) || token.is(TOK_BLOCK_END) || token.is(TOK_BRACKET, '}');
        statement.push_back(std::move(token));
        if (ends) finish();
    }
    if (interactive && !ended && !defines && !statement.empty()) statement.emplace_back(TOK_DISPLAY, ';');
    finish();
    return statements;
}

std::vector<TokenList> splitStatements(ScannedLine line, bool interactive) {
    if (line.suchThatIndex < 0) return splitStatements(std::move(line.tokens), interactive);
    if (line.suchThatIndex == 0)
        throw SyntaxError{"'such-that' clause is not allowed at the beginning of a line"};
    const auto mark = line.tokens.begin() + line.suchThatIndex;
    TokenList conditions(std::make_move_iterator(mark + 1), std::make_move_iterator(line.tokens.end()));
    std::vector<TokenList> statements = splitStatements(std::move(conditions), false);
    TokenList last = std::move(line.tokens);
    last.resize(static_cast<std::size_t>(line.suchThatIndex));
    const bool isShown = last.back().is(TOK_DISPLAY);
    if (last.back().is(TOK_SEP, ';')) last.pop_back();
    if (interactive && !isShown) last.emplace_back(TOK_DISPLAY, '\0');
    statements.push_back(std::move(last));
    return statements;
}

}  // namespace vorpen
