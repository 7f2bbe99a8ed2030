// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/scanner.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "frontend/token.h"

namespace vorpen {
namespace {

/// Lines from a list; the first is line 0, as a typed one.
class LineList final : public LexInput {
public:
    explicit LineList(std::vector<std::string> lines = {}) : lines_(std::move(lines)) {}
    bool getLine(std::string& line, bool throwAtEnd, bool) override {
        if (next_ < lines_.size()) {
            line = lines_[next_++];
            return true;
        }
        if (throwAtEnd) throw OperatorFailure{'e'};
        return false;
    }
    [[nodiscard]] bool isInteractive() const override { return true; }
    [[nodiscard]] int lineNumber() const override { return static_cast<int>(next_); }
    void sourceName(std::string& out) const override { out.clear(); }
    [[nodiscard]] int commentStartLine() const override { return -1; }
    void noteBlockOpened() override { ++opened; }
    void noteBlockClosed() override { ++closed; }

    int opened = 0, closed = 0;

private:
    std::vector<std::string> lines_;
    std::size_t next_ = 0;
};

std::string show(const TokenList& tokens);

/// One token as a word: names and integers as they are, other numbers with
/// "#", strings in quotes, "b+" a binary and "u-" a unary operator.
std::string show(const Token& token) {
    const std::string code(1, token.code);
    switch (token.kind) {
        case TOK_NAME: return token.text;
        case TOK_INT: return token.text;
        case TOK_NUM: return token.text + (token.code == 'i' ? "i" : "#");
        case TOK_STRING: return "'" + token.text + "'";
        case TOK_OP: return "b" + code;
        case TOK_UNARY: return "u" + code;
        case TOK_ASSIGN: return "a" + code;
        case TOK_SEP: return "s" + code;
        case TOK_BRACKET: return "(" + show(token.items) + token.code;
        case TOK_DOTTED: return "(" + show(token.items) + token.code + ".";
        case TOK_EMPTY: return "[]";
        case TOK_DEFINE: return "def" + code + "<" + std::string(token.source()) + ">";
        case TOK_DISPLAY: return "show" + (token.code ? code : std::string("0"));
        case TOK_BACKSLASH:
            return "\\" + std::to_string(token.code) + token.text +
                   (token.items.empty() ? "" : "(" + show(token.items) + ")");
        case TOK_SPACE: return "_";
        case TOK_BLOCK_END: return "}";
        case TOK_ROW: return "row";
        default: return "?";
    }
}

std::string show(const TokenList& tokens) {
    std::string text;
    for (const Token& token : tokens) text += (text.empty() ? "" : " ") + show(token);
    return text;
}

std::string scan(const std::string& line, std::vector<std::string> further = {}) {
    LineList input(std::move(further));
    return show(scanLine(line, input).tokens);
}

std::string failure(const std::string& line, std::vector<std::string> further = {}) {
    try {
        return "no failure: " + scan(line, std::move(further));
    } catch (const SyntaxError& error) {
        return error.message;
    }
}

std::string split(const std::string& line, bool interactive = true) {
    LineList input;
    std::string text;
    for (const TokenList& statement : splitStatements(scanLine(line, input), interactive))
        text += (text.empty() ? "" : " | ") + show(statement);
    return text;
}

TEST(Classify, FirstCharacterStartsAToken) {
    const std::pair<const char*, TokenKind> rows[] = {
        {",", TOK_SEP},       {";", TOK_SEP},         {":=", TOK_SEP},          {"+", TOK_OP},
        {"?", TOK_OP},        {".x", TOK_OP},         {".5", TOK_NUM},          {"^x", TOK_OP},
        {"^'a'", TOK_STRING}, {"^\"a\"", TOK_STRING}, {"7", TOK_NUM},           {"x", TOK_NAME},
        {"model", TOK_NAME},  {"mod", TOK_OP},        {"mod(", TOK_OP},         {"mod_", TOK_NAME},
        {"And 1", TOK_OP},    {"cd x", TOK_COMMAND},  {"dir", TOK_COMMAND},     {"cdr", TOK_NAME},
        {"(", TOK_BRACKET},   {"{", TOK_BRACKET},     {"[1", TOK_BRACKET},      {"[]", TOK_NUM},
        {"'a", TOK_STRING},   {"\"a", TOK_STRING},    {"\\sin", TOK_BACKSLASH}, {"#", TOK_NONE},
        {"$", TOK_NONE},      {"}", TOK_NONE},        {"\xE9", TOK_NONE},       {"", TOK_NONE},
        {"_", TOK_OP},        {"vec", TOK_OP},        {"bitor", TOK_OP},        {"xor 2", TOK_OP},
        {"order", TOK_NAME},
    };
    for (const auto& [text, kind] : rows) EXPECT_EQ(classify(text), kind) << text;
}

TEST(Scanner, SimpleExpressions) {
    EXPECT_EQ(scan("1+2*3"), "1 b+ 2 b* 3");
    EXPECT_EQ(scan("r=3; pi r^2"), "r a= 3 s; pi r b^ 2");
    EXPECT_EQ(scan("  x \t y  "), "x y");
    EXPECT_EQ(scan(""), "");
    EXPECT_EQ(scan("# remark"), "");
    EXPECT_EQ(scan("1 # remark"), "1");
    EXPECT_EQ(scan("\"a#b\""), "'a#b'");
}

TEST(Scanner, NameRecordsTheCharacterBehindIt) {
    LineList input;
    const TokenList tokens = scanLine("f(x[1].y) a\\b c", input).tokens;
    EXPECT_EQ(tokens[0].code, '(');
    EXPECT_EQ(tokens[1].items[0].code, '[');
    EXPECT_EQ(tokens[2].code, '\\');
    EXPECT_EQ(tokens.back().code, ' ');
}

TEST(Scanner, NumbersOfEachForm) {
    EXPECT_EQ(scan("12"), "12");
    EXPECT_EQ(scan("2.5"), "2.5#");
    EXPECT_EQ(scan(".5"), ".5#");
    EXPECT_EQ(scan("5."), "5.#");
    EXPECT_EQ(scan("1e3 25e-2 1e+2"), "1e3# 25e-2# 1e+2#");
    EXPECT_EQ(scan("2eV"), "2 eV");
    EXPECT_EQ(scan("2e"), "2 e");
    EXPECT_EQ(scan("2ee"), "2 ee");
    EXPECT_EQ(scan("1i 0j"), "1i 0i");
    EXPECT_EQ(scan("2i"), "2 i");
    EXPECT_EQ(scan("1ix"), "1 ix");
    EXPECT_EQ(scan("21i"), "21 i");
    EXPECT_EQ(scan("x=[]"), "x a= []");
    EXPECT_EQ(scan("1...", {"+2"}), "1 b+ 2");
}

TEST(Scanner, MalformedNumbersFail) {
    for (const char* line : {"1.2.3", "1..2", "2e+", "2e-x", "1e+", "1e5.2", "1.5e5.2"})
        EXPECT_EQ(failure(line), "error in number") << line;
}

TEST(Scanner, IntegerThatDoesNotFitIsANumber) {
    EXPECT_EQ(scan("2147483647"), "2147483647");
    EXPECT_EQ(scan("2147483648"), "2147483648#");
    EXPECT_EQ(scan("-2147483648"), "-2147483648");
    EXPECT_EQ(scan("-2147483649"), "-2147483649#");
    EXPECT_EQ(scan("1-2147483648"), "1 b- 2147483648#");
    EXPECT_EQ(scan("00000000000012"), "00000000000012");
    EXPECT_EQ(scan(std::string(400, '9')), std::string(400, '9') + "#");
}

TEST(Scanner, PointAfterANameIsAnOperator) {
    EXPECT_EQ(scan("2 .5"), "2 .5#");
    EXPECT_EQ(scan("x.5"), "x b. 5");
    EXPECT_EQ(scan("x_.5"), "x_ b. 5");
    EXPECT_EQ(scan("x .5"), "x .5#");
    EXPECT_EQ(scan("x.y"), "x b. y");
    EXPECT_EQ(scan("a . b"), "a b. b");
    EXPECT_EQ(scan(".."), "..");
}

TEST(Scanner, SignThatStartsAnExpressionBelongsToTheNumber) {
    EXPECT_EQ(scan("-7.0 _/ 2"), "-7.0# b_ 2");
    EXPECT_EQ(scan("(-3)"), "(-3)");
    EXPECT_EQ(scan("a=-3"), "a a= -3");
    EXPECT_EQ(scan("-.5"), "-.5#");
    EXPECT_EQ(scan("-1i"), "-1i");
    EXPECT_EQ(scan("- 3"), "u- 3");
    EXPECT_EQ(scan("1; -7"), "1 s; u- 7");
    EXPECT_EQ(scan("1, -2"), "1 s, u- 2");
    EXPECT_EQ(scan("2 * -3"), "2 b* u- 3");
    EXPECT_EQ(scan("1 - -2"), "1 b- u- 2");
    EXPECT_EQ(scan("[1, -2]"), "(1 s, u- 2]");
    EXPECT_EQ(scan("x=1;; -2"), "x a= 1 show; u- 2");
}

TEST(Scanner, SignBeforeAPowerStaysApart) {
    EXPECT_EQ(scan("-2^2"), "u- 2 b^ 2");
    EXPECT_EQ(scan("(-2 ^^2)"), "(u- 2 bR 2)");
    EXPECT_EQ(scan("a=-3 ^2"), "a a= u- 3 b^ 2");
}

TEST(Scanner, OperatorsOfEveryKind) {
    EXPECT_EQ(scan("a^^b==c===d&&e||f//g>>h\?\?i"), "a bR b bE c bI d bA e bO f bV g bo h bQ i");
    EXPECT_EQ(scan("a<b<=c>=d~=e>f"), "a b< b bL c bG d bN e b> f");
    EXPECT_EQ(scan("a@ b@+c@-d@^e@&f@|g@!h"), "a b@ b bp c bm d bv e ba f br g bX h");
    EXPECT_EQ(scan("a@b"), "a b@ b");
    EXPECT_EQ(scan("a _/ b % c & d | e"), "a b_ b b% c b& d b| e");
    EXPECT_EQ(scan("a mod b vec c and d or e bitand f bitor g xor h And i Or j"),
              "a bu b bv c b& d b| e ba f br g bx h bA i bO j");
    EXPECT_EQ(scan("model order"), "model order");
    EXPECT_EQ(scan("x ? 1 :: 2"), "x b? 1 sW 2");
    EXPECT_EQ(scan("1:2:7"), "1 s: 2 s: 7");
}

TEST(Scanner, AssignmentsOfEveryKind) {
    EXPECT_EQ(scan("x*=2"), "x aT 2");
    EXPECT_EQ(scan("x+=2"), "x aP 2");
    EXPECT_EQ(scan("x-=2"), "x aM 2");
    EXPECT_EQ(scan("x/=2"), "x aD 2");
    EXPECT_EQ(scan("x,=2"), "x aC 2");
    EXPECT_EQ(scan("x;=2"), "x aS 2");
    EXPECT_EQ(scan("x << a b"), "x ag a b");
    EXPECT_EQ(scan("x <<*a"), "x ag b* a");
    EXPECT_EQ(scan("<< a"), "ug a");
    EXPECT_EQ(scan("a=1; b=2, c=3"), "a a= 1 s; b a= 2 s, c a= 3");
    EXPECT_EQ(scan("a=(b=1)"), "a a= (b a= 1)");
}

TEST(Scanner, SecondAssignmentFails) {
    EXPECT_EQ(failure("a = b = 1"), "2nd assignment");
    EXPECT_EQ(failure("if x: y=1 else y=2"), "2nd assignment");
    EXPECT_EQ(scan("if x: y=1; else y=2"), "if x s: y a= 1 s; else y a= 2");
}

TEST(Scanner, TwoSignsWithoutAnEntryAreTwoOperators) {
    EXPECT_EQ(scan("2*-3"), "2 b* u- 3");
    EXPECT_EQ(scan("2^-1"), "2 b^ u- 1");
    EXPECT_EQ(scan("-~1"), "u- u~ 1");
    EXPECT_EQ(scan("~~1"), "u~ u~ 1");
    EXPECT_EQ(scan("3!!"), "3 u! u!");
    EXPECT_EQ(scan("x!=3"), "x u! a= 3");
}

TEST(Scanner, UnknownOperatorsFail) {
    for (const char* line : {"2**3", "2%%3", "a@@b", "a@(b)", "a@2", "1 __ 2", "1 @=2"})
        EXPECT_EQ(failure(line), "unrecognised operator") << line;
}

TEST(Scanner, LeadingOperators) {
    EXPECT_EQ(scan("~x"), "u~ x");
    EXPECT_EQ(scan("?sin"), "u? sin");
    EXPECT_EQ(scan("\?\?sin"), "uQ sin");
    EXPECT_EQ(scan("^2"), "u^ 2");
    EXPECT_EQ(scan("++x"), "ui x");
    EXPECT_EQ(scan("a=--x"), "a a= ud x");
    for (const char* line : {"*2", "+2", "a=/2", "(+1)", "mod 3", "a= =b", "( !1)", "a=!b"})
        EXPECT_EQ(failure(line), "expression began with operator") << line;
    EXPECT_EQ(failure("!1"), "operator '!' cannot appear at the start");
    EXPECT_EQ(failure("(!1)"), "operator '!' cannot appear at the start");
}

TEST(Scanner, AdjacentOperators) {
    for (const char* line :
         {"1 + * 2", "1, * 2", "a< =b", "a=1; ?b", "1; +2", "1; ^x", "a==>3", "[1, *2]", "1 + !"})
        EXPECT_EQ(failure(line), "two adjacent operators") << line;
    EXPECT_EQ(scan("1; ~a; --b; ++c"), "1 s; u~ a s; ud b s; ui c");
}

TEST(Scanner, IncrementNeedsAName) {
    for (const char* line : {"++1", "x++", "1; --(x)", "5--3"})
        EXPECT_EQ(failure(line), "++ or -- must be attached to a name") << line;
    EXPECT_EQ(scan("3 ++x"), "3 ui x");
}

TEST(Scanner, FactorialSignIsPostfix) {
    EXPECT_EQ(scan("5!"), "5 u!");
    EXPECT_EQ(scan("(3)!+1"), "(3) u! b+ 1");
    EXPECT_EQ(failure("5 !"), "unattached '!' operator");
}

TEST(Scanner, QuotesBehindNamesAndBracketsTranspose) {
    EXPECT_EQ(scan("x'"), "x u'");
    EXPECT_EQ(scan("x\""), "x u\"");
    EXPECT_EQ(scan("[1 2]'"), "(1 _ 2] u'");
    EXPECT_EQ(scan("(a)'*b"), "(a) u' b* b");
    EXPECT_EQ(scan("\\f'"), "\\1f u'");
    EXPECT_EQ(failure("x''"), "unterminated string at {g '");
    EXPECT_EQ(failure("\"abc\"'"), "unterminated string at {g '");
}

TEST(Scanner, Strings) {
    EXPECT_EQ(scan("'abc'"), "'abc'");
    EXPECT_EQ(scan("\"it's\""), "'it's'");
    EXPECT_EQ(scan("'it''s'"), "'it's'");
    EXPECT_EQ(scan("''"), "''");
    EXPECT_EQ(scan("''''"), "'''");
    EXPECT_EQ(scan("'a' 'b'"), "'a' 'b'");
    EXPECT_EQ(scan("'\xE9\xFF'"), "'\xE9\xFF'");
    EXPECT_EQ(failure("'abc"), "unterminated string at {g 'abc");
    EXPECT_EQ(failure("x='a''"), "unterminated string at {g 'a''");
    EXPECT_EQ(failure("'"), "unterminated string at {g '");
    LineList input;
    EXPECT_EQ(scanLine("\"a\"", input).tokens[0].code, '"');
}

TEST(Scanner, StringWithValues) {
    EXPECT_EQ(scan("^'r={r} cm'"), "('r=' _ trim (str (r)) _ ' cm']");
    EXPECT_EQ(scan("^\"{a1}{b_}\""), "('' _ trim (str (a1)) _ '' _ trim (str (b_)) _ '']");
    EXPECT_EQ(scan("^'plain'"), "'plain'");
    EXPECT_EQ(scan("^'{a b} {x}'"), "'{a b} {x}'");
    EXPECT_EQ(scan("^'{}'"), "'{}'");
    EXPECT_EQ(scan("^'{1}'"), "'{1}'");
    EXPECT_EQ(scan("^'a{'"), "'a{'");
    EXPECT_EQ(scan("^'}{x'"), "'}{x'");
    EXPECT_EQ(scan("^'{x} {y z}'"), "('' _ trim (str (x)) _ ' {y z}']");
    EXPECT_EQ(scan("^'it''s {x}'"), "('it's ' _ trim (str (x)) _ '']");
    EXPECT_EQ(scan("[1 ^'{x}']"), "(1 _ ('' _ trim (str (x)) _ '']]");
    EXPECT_EQ(failure("^'{x}"), "unterminated string at {g '{x}");
}

TEST(Scanner, Separators) {
    EXPECT_EQ(scan("1;;2;?3;!4"), "1 show; 2 show? 3 show! 4");
    EXPECT_EQ(scan("f(x) := x^2 # sq"), "f (x) def:< x^2 # sq> x b^ 2");
    EXPECT_EQ(scan("f(x)::=x"), "f (x) defv<x> x");
    EXPECT_EQ(scan("f :="), "f def:<>");
    EXPECT_EQ(failure(",1"), "expression starts wrong");
    EXPECT_EQ(failure(";1"), "expression starts wrong");
    EXPECT_EQ(failure("(,1)"), "expression starts wrong");
    EXPECT_EQ(failure("a=,1"), "expression starts wrong");
    EXPECT_EQ(failure("a=;"), "expression starts wrong");
    EXPECT_EQ(failure("1,,2"), "double comma");
    EXPECT_EQ(scan("[,1]"), "(s, 1]");
}

TEST(Scanner, BlanksSeparateElements) {
    EXPECT_EQ(scan("[1 2 3]"), "(1 _ 2 _ 3]");
    EXPECT_EQ(scan("[1 -2]"), "(1 _ u- 2]");
    EXPECT_EQ(scan("[1 - 2]"), "(1 b- 2]");
    EXPECT_EQ(scan("[1-2]"), "(1 b- 2]");
    EXPECT_EQ(scan("[a' b']"), "(a u' _ b u']");
    EXPECT_EQ(scan("[3! 2]"), "(3 u! _ 2]");
    EXPECT_EQ(scan("[3! - 2]"), "(3 u! b- 2]");
    EXPECT_EQ(scan("[x' -1]"), "(x u' _ u- 1]");
    EXPECT_EQ(scan("[2 (3)]"), "(2 _ (3)]");
    EXPECT_EQ(scan("[2(3)]"), "(2 (3)]");
    EXPECT_EQ(scan("[ 4 5 ]"), "(4 _ 5]");
    EXPECT_EQ(scan("['a' 'b']"), "('a' _ 'b']");
    EXPECT_EQ(scan("[1 .5]"), "(1 _ .5#]");
    EXPECT_EQ(scan("[a mod b]"), "(a bu b]");
    EXPECT_EQ(scan("[a ~b]"), "(a u~ b]");
    EXPECT_EQ(scan("[m\\k 2]"), "(m \\1k _ 2]");
    EXPECT_EQ(scan("[f(1 2) 3]"), "(f (1 2) _ 3]");
    EXPECT_EQ(scan("(1 2)"), "(1 2)");
}

TEST(Scanner, BracketsNest) {
    EXPECT_EQ(scan("((1+2)*(3))"), "((1 b+ 2) b* (3))");
    EXPECT_EQ(scan("f()"), "f ()");
    EXPECT_EQ(scan("\\tic()"), "\\1tic ()");
    EXPECT_EQ(scan("{x=1}"), "(x a= 1}");
    EXPECT_EQ(scan("{}"), "(}");
    EXPECT_EQ(scan("[1,2;]"), "(1 s, 2]");
    EXPECT_EQ(scan("(1;)"), "(1 s;)");
}

TEST(Scanner, MalformedBrackets) {
    EXPECT_EQ(failure("()"), "empty bracket?");
    EXPECT_EQ(failure("2()"), "empty bracket?");
    EXPECT_EQ(failure("( )"), "empty bracket");
    EXPECT_EQ(failure("f( )"), "empty bracket");
    EXPECT_EQ(failure("[ ]"), "empty bracket");
    EXPECT_EQ(failure("1)"), "unexpected closing bracket");
    EXPECT_EQ(failure("[1)"), "unexpected closing bracket");
    EXPECT_EQ(failure("{1]"), "unexpected closing bracket");
    EXPECT_EQ(failure("(1+)"), "bracket finished incorrectly");
    EXPECT_EQ(failure("[1,2,]"), "bracket finished incorrectly");
    EXPECT_EQ(failure("(a=)"), "bracket finished incorrectly");
    EXPECT_EQ(scan("f(z*)"), "f (z b*)");
    EXPECT_EQ(failure("f(z *)"), "bracket finished incorrectly");
}

TEST(Scanner, BracketLeftOpenShowsItsSource) {
    EXPECT_EQ(failure("(1+2"), "no closing bracket for line 0: {g (1+2");
    EXPECT_EQ(failure("(1+"), "no closing bracket for line 0: {g (1+");
    EXPECT_EQ(failure("2*(3+[1 2"), "no closing bracket for line 0: {g [1 2");
    EXPECT_EQ(failure("((1)+(2"), "no closing bracket for line 0: {g (2");
    EXPECT_EQ(failure("((1)+2"), "no closing bracket for line 0: {g ((1)");
    EXPECT_EQ(failure("x = 1 +", {"[2,", "3"}), "no closing bracket for line 1: {g [2,");
}

TEST(Scanner, NestingHasALimit) {
    const std::string deep(100000, '(');
    EXPECT_EQ(failure(deep), "brackets nested too deeply");
    EXPECT_EQ(failure(std::string(100000, '[') + "1"), "brackets nested too deeply");
    EXPECT_EQ(failure(std::string(100000, '{')), "brackets nested too deeply");
    const std::string open(500, '('), close(500, ')');
    EXPECT_EQ(scan(open + "1" + close), open + "1" + close);
    EXPECT_EQ(failure("(" + open + "1" + close + ")"), "brackets nested too deeply");
}

TEST(Scanner, AbsBars) {
    EXPECT_EQ(scan("(|3-5|)"), "abs (3 b- 5)");
    EXPECT_EQ(scan("(|-5|)+1"), "abs (-5) b+ 1");
    EXPECT_EQ(scan("(|(|x|)-1|)"), "abs (abs (x) b- 1)");
    EXPECT_EQ(scan("[|x|]"), "abs (x]");
    EXPECT_EQ(scan("(a|b)"), "(a b| b)");
    EXPECT_EQ(failure("(|x)"), "abs bracket form (| not closed");
    EXPECT_EQ(failure("(||)"), "empty bracket");
    LineList input;
    EXPECT_EQ(scanLine("(|x|)", input).tokens[0].code, '(');
}

TEST(Scanner, RowsAndColumns) {
    EXPECT_EQ(scan("m[2,:]"), "m \\1(2)");
    EXPECT_EQ(scan("m[1:2,:]"), "m \\1(1 s: 2)");
    EXPECT_EQ(scan("m[:,j+1]"), "m \\2(j b+ 1)");
    EXPECT_EQ(scan("m[:]"), "m (s:]");
    EXPECT_EQ(scan("m[:,j]'"), "m \\2(j) u'");
    EXPECT_EQ(failure("m[1 2:]"), "incorrect use of ':'");
    EXPECT_EQ(failure("m[:2,3]"), "incorrect use of ':'");
    EXPECT_EQ(failure("[1,:]"), "stray colon in the bracket");
    EXPECT_EQ(failure("2[1,:]"), "stray colon in the bracket");
    LineList input;
    EXPECT_EQ(scanLine("m[2,:]", input).tokens[0].code, '\\');
}

TEST(Scanner, BackslashesAndDots) {
    EXPECT_EQ(scan("\\sin(0)"), "\\1sin (0)");
    EXPECT_EQ(scan("m\\2"), "m \\1 2");
    EXPECT_EQ(scan("m\\\\k"), "m \\2k");
    EXPECT_EQ(scan("m\\\\\\[k]"), "m \\3 (k]");
    EXPECT_EQ(scan("(4+5).sqrt"), "(4 b+ 5). sqrt");
    EXPECT_EQ(scan("[4,5].[3;4]"), "(4 s, 5]. (3 s; 4]");
    EXPECT_EQ(scan("[1,2] . [3;4]"), "(1 s, 2] b. (3 s; 4]");
    EXPECT_EQ(scan("(1)...", {"+2"}), "(1) b+ 2");
    EXPECT_EQ(scan(std::string(1000, '\\') + "k"), "\\100k");
}

TEST(Scanner, CommandWords) {
    EXPECT_EQ(scan("cd"), "cd");
    EXPECT_EQ(scan("cd my dir  ; x=1"), "cd 'my dir' s; x a= 1");
    EXPECT_EQ(scan("cd .. # up"), "cd '..'");
    EXPECT_EQ(scan("cd a \"b\" c"), "cd 'a \"b\" c'");
    EXPECT_EQ(scan("cd \"my dir\""), "cd 'my dir'");
    EXPECT_EQ(scan("cd 'a'"), "cd 'a'");
    EXPECT_EQ(scan("cd('sub')"), "cd ('sub')");
    EXPECT_EQ(scan("cd;"), "cd s;");
    EXPECT_EQ(scan("cd # here"), "cd");
    EXPECT_EQ(scan("dir *.txt"), "dir '*.txt'");
    EXPECT_EQ(scan("?cd"), "u? cd");
    EXPECT_EQ(scan("d=dir(\"*\")"), "d a= dir ('*')");
    EXPECT_EQ(failure("cd.."), "missing space, bracket or string");
    EXPECT_EQ(failure("[cd]"), "missing space, bracket or string");
    EXPECT_EQ(failure("dir=3"), "missing space, bracket or string");
}

TEST(Scanner, StrayCharactersFail) {
    for (const std::string& line : {std::string("1 $ 2"), std::string("\xE9"), std::string("x\0y", 3),
                                    std::string("\0", 1), std::string("`"), std::string("a\x80")})
        EXPECT_EQ(failure(line), "unrecognised character") << line;
}

TEST(Scanner, UnfinishedLineGoesOn) {
    EXPECT_EQ(scan("1+", {"2"}), "1 b+ 2");
    EXPECT_EQ(scan("a=", {"-2"}), "a a= -2");
    EXPECT_EQ(scan("1,", {"2,", "3"}), "1 s, 2 s, 3");
    EXPECT_EQ(scan("1+ # remark", {"2"}), "1 b+ 2");
    EXPECT_EQ(scan("x = 1 ...   # more", {"+ 2"}), "x a= 1 b+ 2");
    EXPECT_EQ(scan("[1 2 ...", {"3 4]"}), "(1 _ 2 _ 3 _ 4]");
    EXPECT_EQ(scan("1;", {"2"}), "1 s;");
    EXPECT_EQ(scan("x << a +", {"2"}), "x ag a b+");
    EXPECT_EQ(scan("global z*", {"2"}), "global z b*");
    EXPECT_EQ(scan("y = z *", {"2"}), "y a= z b* 2");
    for (const char* line : {"1+", "a=", "1,", "1 ...", "..."})
        EXPECT_EQ(failure(line), "dangling operator or more input needed") << line;
    EXPECT_EQ(failure("1 ... 2"), "stray ellipsis");
}

TEST(Scanner, QueryIsNeverUnfinished) {
    EXPECT_EQ(scan("?,"), "u? s,");
    EXPECT_EQ(scan("?+"), "u? b+");
    EXPECT_EQ(scan("?++"), "u? ui");
    EXPECT_EQ(scan("?="), "u? a=");
    EXPECT_EQ(scan("?..."), "u? be");
    EXPECT_EQ(scan("?[]"), "u? []");
    EXPECT_EQ(scan("\?\?+"), "uQ b+");
    EXPECT_EQ(scan("?:="), "u? def:<>");
    EXPECT_EQ(scan("?!"), "u? u!");
}

TEST(Scanner, BracketGoesOnOverLines) {
    EXPECT_EQ(scan("[1, 2", {"3, 4]"}), "(1 s, 2 row 3 s, 4]");
    EXPECT_EQ(scan("[1, 2;", {"3, 4;", "]"}), "(1 s, 2 s; 3 s, 4]");
    EXPECT_EQ(scan("[1,", {"2]"}), "(1 s, 2]");
    EXPECT_EQ(scan("[", {"1 2", "]"}), "(1 _ 2]");
    EXPECT_EQ(scan("[1 # one", {"-2]"}), "(1 row -2]");
    EXPECT_EQ(scan("(1", {"-2)"}), "(1 b- 2)");
    EXPECT_EQ(scan("f(1,", {"2)*3"}), "f (1 s, 2) b* 3");
}

TEST(Scanner, BlockMayStayOpen) {
    LineList input;
    EXPECT_EQ(show(scanLine("for i=1:3 {x=1;", input).tokens), "for i a= 1 s: 3 (x a= 1 s;{");
    EXPECT_EQ(input.opened, 1);
    EXPECT_EQ(show(scanLine("{{x", input).tokens), "((x{{");
    EXPECT_EQ(input.opened, 3);
    EXPECT_EQ(show(scanLine("}}-5+y", input).tokens), "} } -5 b+ y");
    EXPECT_EQ(input.closed, 2);
    EXPECT_EQ(show(scanLine("{x=1}", input).tokens), "(x a= 1}");
    EXPECT_EQ(input.opened, 3);
    EXPECT_EQ(failure("f({x"), "no closing bracket for line 0: {g ({x");
}

TEST(Scanner, SuchThat) {
    LineList input;
    const ScannedLine line = scanLine("y /. y=3", input);
    EXPECT_EQ(line.suchThatIndex, 1);
    EXPECT_EQ(show(line.tokens), "y sJ y a= 3");
    EXPECT_EQ(scanLine("x=1", input).suchThatIndex, -1);
    EXPECT_EQ(scan("1/.5"), "1 b/ .5#");
    EXPECT_EQ(scan("x=y /.y=3"), "x a= y sJ y a= 3");
    EXPECT_EQ(failure("(y /. y=3)"), "such that (/.) operator illegal here");
    EXPECT_EQ(failure("y /. y=3 /. z=4"), "two /. clauses in one line");
    EXPECT_EQ(failure("/. y=3"), "'such-that' clause is not allowed at the beginning of a line");
    EXPECT_EQ(failure("/. y= +"), "'such-that' clause is not allowed at the beginning of a line");
}

TEST(Scanner, ParameterByReference) {
    EXPECT_EQ(scan("f(a, ^b; ^c) := a"), "f (a s, u^ b s; u^ c) def:< a> a");
    EXPECT_EQ(scan("f(^a)"), "f (u^ a)");
    EXPECT_EQ(failure("[a, ^b]"), "two adjacent operators");
    EXPECT_EQ(failure("f(a, ^2)"), "two adjacent operators");
}

TEST(Scanner, TheMarkOfAComplexOutputMayStandApartFromTheSign) {
    LineList input;
    const TokenList tokens = scanLine("function y* = f(x)", input).tokens;
    ASSERT_GE(tokens.size(), 4u);
    EXPECT_TRUE(tokens[2].is(TOK_OP, '*'));
    EXPECT_TRUE(tokens[3].is(TOK_ASSIGN, '='));
    EXPECT_EQ(failure("y* = 2"), "two adjacent operators");
}

TEST(Scanner, LongLinesTakeTimeByTheirLength) {
    // With a copy of the rest of the line in each token these would not end.
    const std::size_t count = 50000;
    std::string brackets, definitions, values = "^'", operands;
    for (std::size_t i = 0; i < count; ++i) {
        brackets += "(1)";
        definitions += "a:=";
        values += "{a}";
        operands += "a+";
    }
    LineList input;
    EXPECT_EQ(scanLine(brackets, input).tokens.size(), count);
    EXPECT_EQ(scanLine(definitions + "1", input).tokens.size(), 2 * count + 1);
    EXPECT_EQ(scanLine(values + "'", input).tokens[0].items.size(), 5 * count + 1);
    EXPECT_EQ(scanLine(operands + "1", input).tokens.size(), 2 * count + 1);
    EXPECT_EQ(scanLine(std::string(1000000, '7'), input).tokens.size(), 1u);
    EXPECT_EQ(scanLine("'" + std::string(1000000, '{') + "'", input).tokens.size(), 1u);
}

TEST(Token, SourceIsCutBehindTheLastClosingBracket) {
    LineList input;
    const TokenList tokens = scanLine("f(a)+g(b) # c", input).tokens;
    EXPECT_EQ(tokens[1].source(), "(a)+g(b)");
    EXPECT_EQ(tokens[4].source(), "(b)");
    EXPECT_EQ(tokens[0].source(), "");
}

TEST(Token, TextOfAFailure) {
    EXPECT_EQ(syntaxErrorText("misused", Token(TOK_NAME, 0, "x")), "misused {g x");
    EXPECT_EQ(syntaxErrorText("invalid item", Token(TOK_SEP, ',')), "syntax error, {g invalid item");
    LineList input;
    EXPECT_EQ(syntaxErrorText("odd", scanLine("(1) 2", input).tokens[0]), "odd {g (1)");
    EXPECT_THROW(failAtToken("odd", Token(TOK_OP, '+')), SyntaxError);
}

TEST(Token, OperatorSpelling) {
    const std::pair<const char*, const char*> rows[] = {
        {"?+", "+"},     {"?==", "=="}, {"?mod", "mod"}, {"?and", "and"}, {"?&", "&"},
        {"?,", ","},     {"?::", "::"}, {"?;=", ";="},   {"?+=", "+="},   {"?@^", "@^"},
        {"?vec", "vec"}, {"?_/", "_/"}, {"?++", "++"},   {"?<<", "<<"},   {"?!", "!"},
        {"?@ ", "@"},    {"?:=", ":="}, {"?x", ""},      {"?'a'", ""},    {"?...", "..."},
    };
    for (const auto& [line, spelling] : rows) {
        LineList input;
        EXPECT_EQ(operatorSpelling(scanLine(line, input).tokens[1]), spelling) << line;
    }
}

TEST(SplitStatements, CutsAtSemicolons) {
    EXPECT_EQ(split("a=1; b=2, c"), "a a= 1 | b a= 2 s, c show;");
    EXPECT_EQ(split("a=1; b=2;"), "a a= 1 | b a= 2");
    EXPECT_EQ(split("x=1;; y=2"), "x a= 1 show; | y a= 2 show;");
    EXPECT_EQ(split("x=1;; y=2;;"), "x a= 1 show; | y a= 2 show;");
    EXPECT_EQ(split("a; ; b;;;"), "a | b show;");
    EXPECT_EQ(split("a=1; b=2", false), "a a= 1 | b a= 2");
    EXPECT_EQ(split(""), "");
    EXPECT_EQ(split("3;?"), "3 show?");
}

TEST(SplitStatements, DefinitionIsNotShown) {
    EXPECT_EQ(split("f(x) := x"), "f (x) def:< x> x");
    EXPECT_EQ(split("h :="), "h def:<>");
    EXPECT_EQ(split("f(x) := x; 3"), "f (x) def:< x; 3> x | 3");
}

TEST(SplitStatements, BlocksEndStatements) {
    EXPECT_EQ(split("{a} b"), "(a} | b show;");
    EXPECT_EQ(split("if x: {a} else {b} c"), "if x s: (a} | else (b} | c show;");
    EXPECT_EQ(split("for i=1:2 { i }"), "for i a= 1 s: 2 (i}");
    EXPECT_EQ(split("x=1 } y"), "x a= 1 | } | y show;");
    EXPECT_EQ(split("} else y;"), "} | else y");
    EXPECT_EQ(split("{a};;"), "(a}");
    LineList input;
    const TokenList tokens = scanLine("for i=1:2 { x=i; i }", input).tokens;
    const auto body = splitStatements(tokens.back().items, true);
    ASSERT_EQ(body.size(), 2u);
    EXPECT_EQ(show(body[1]), "i show;");
}

TEST(SplitStatements, SuchThatRunsFirst) {
    EXPECT_EQ(split("y /. y=3"), "y a= 3 | y show0");
    EXPECT_EQ(split("y;; /. y=4; z=1"), "y a= 4 | z a= 1 | y show;");
    EXPECT_EQ(split("y; /. y=4"), "y a= 4 | y show0");
    EXPECT_EQ(split("y /. y=3", false), "y a= 3 | y");
    EXPECT_EQ(split("y; /. y=3", false), "y a= 3 | y");
    ScannedLine line;
    line.tokens.emplace_back(TOK_SEP, 'J');
    line.suchThatIndex = 0;
    EXPECT_THROW(static_cast<void>(splitStatements(std::move(line), true)), SyntaxError);
}

}  // namespace
}  // namespace vorpen
