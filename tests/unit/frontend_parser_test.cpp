// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/parser.h"

#include <gtest/gtest.h>

#include "eval/function_reference.h"
#include "eval/indexing.h"
#include "parse_session.h"

namespace vorpen {
namespace {

class Parse : public testing::Test, protected ParseSession {
protected:
    struct Row {
        const char* text;
        const char* expected;
    };
    void expectValues(std::initializer_list<Row> rows) {
        for (const Row& row : rows) {
            const std::string problem = failure(row.text);
            EXPECT_EQ(problem == "none" ? value(row.text) : problem, row.expected) << row.text;
        }
    }
    void expectFailures(std::initializer_list<Row> rows) {
        for (const Row& row : rows) EXPECT_EQ(failure(row.text), row.expected) << row.text;
    }
    static std::string repeated(std::string_view piece, int n) {
        std::string out;
        for (int i = 0; i < n; ++i) out += piece;
        return out;
    }
};

TEST_F(Parse, TwoOperandsInARowMultiply) {
    declare("x", {4});
    declare("y", {2});
    expectValues({{"2 3", "6"},
                  {"2 (3)", "6"},
                  {"(1+1)(2+2)", "8"},
                  {"2x", "8"},
                  {"x y", "8"},
                  {"x(3)", "12"},
                  {"2 3 4", "24"},
                  {"1/2x", "2"},
                  {"2^3(2)", "16"},
                  {"2 .5", "1"},
                  {"2 sqrt 9", "6"},
                  {"2 ~0", "2"},
                  {"3 1i 2", "6i"}});
}

TEST_F(Parse, ANumberKeepsItsKind) {
    EXPECT_EQ(parse("7")->type(), INTEGER_VAL);
    EXPECT_EQ(parse("7.0")->type(), DOUBLE_VAL);
    EXPECT_EQ(parse("3000000000")->type(), DOUBLE_VAL);
    EXPECT_EQ(parse("1i")->type(), COMPLEX_VAL);
    EXPECT_EQ(parse("'text'")->type(), INTEGER_VAL);
    EXPECT_EQ(parse("[]")->type(), INTEGER_VAL);
    EXPECT_EQ(parse("pi")->type(), DOUBLE_VAL);
    expectValues({{"-2147483648", "-2147483648"}, {"3000000001-3000000000", "1"}, {"1e3", "1000"}});
}

TEST_F(Parse, NumbersBeyondTheRangeAreInfiniteOrZero) {
    expectValues({{"1e999", "inf"},
                  {"-1e999", "-inf"},
                  {"1e-999", "0"},
                  {"0e999", "0"},
                  {"1e99999999999", "inf"},
                  {"1e-99999999999", "0"},
                  {"0.0001e310", "1e306"}});
    EXPECT_EQ(value("1" + repeated("0", 400)), "inf");
    EXPECT_EQ(value("." + repeated("0", 400) + "1"), "0");
    EXPECT_EQ(value("1" + repeated("0", 400) + "e-400"), "1");
}

TEST_F(Parse, ASignCoversPowersAndProducts) {
    declare("a", {2});
    declare("b", {3});
    expectValues({{"-2^2", "-4"},
                  {"2^-1", "0.5"},
                  {"2^-1*3", "0.125"},
                  {"-a*b^2", "-18"},
                  {"-a+b", "1"},
                  {"-(2)^2", "-4"},
                  {"~2*0", "1"},
                  {"~1==0", "1"},
                  {"1 + ~0", "2"},
                  {"1, -2", "1 -2"},
                  {"2 * -3", "-6"},
                  {"-a'", "-2"},
                  {"-a*-b", "6"},
                  {"-a/-b*-a*b", "-4"},
                  {"-a^-b", "-0.125"},
                  {"-a*b^-a", "-0.222222222"},
                  {"2*-3*-4+1", "25"},
                  {"-a % -b", "0.666666667"},
                  {"[a, -b; -a b]", "2 -3; -2 3"}});
    expectFailures({{"-~1", "s illegal use of unary operator"},
                    {"~~1", "s illegal use of unary operator"},
                    {"(1,-)", "s empty expression"}});
}

TEST_F(Parse, AConstantTakesItsSignAtOnce) {
    EXPECT_EQ(parse("2*-3")->elementKind(), ElementKind::constant);
    EXPECT_EQ(parse("1*-pi")->elementKind(), ElementKind::constant);
    EXPECT_EQ(parse("1*~[1,0]")->elementKind(), ElementKind::constant);
    EXPECT_EQ(parse("-1i")->elementKind(), ElementKind::constant);
    declare("x", {2});
    EXPECT_EQ(parse("-x")->elementKind(), ElementKind::other);
}

TEST_F(Parse, IncrementsChangeTheVariable) {
    DoubleValue& x = declare("x", {5});
    EXPECT_EQ(value("++x"), "6");
    EXPECT_EQ(value("--x"), "5");
    EXPECT_EQ(value("3 ++x"), "18");
    EXPECT_EQ(value("-2 --x"), "-10");
    EXPECT_EQ(value("++x"), "6");
    EXPECT_EQ(x[0], 6);
    symbols.declareVariable("z", COMPLEX_VAL);
    expectFailures({{"++q", "s item cannot be incremented/decremented"},
                    {"++sin", "s item cannot be incremented/decremented"},
                    {"++pi", "s item cannot be incremented/decremented"},
                    {"++z", "s variable has wrong type for increment or decement"}});
}

TEST_F(Parse, PostfixSignsStandBehindTheirOperand) {
    declare("x", {1, 2, 3});
    expectValues(
        {{"5!", "120"}, {"3!!", "720"}, {"3!+1", "7"}, {"x'", "1; 2; 3"}, {"[x' x']", "1 1; 2 2; 3 3"}});
    EXPECT_EQ(failure("3" + repeated("!", 50)), "s expression nested too deeply");
}

TEST_F(Parse, MisplacedSignsAndSeparators) {
    expectFailures({{"1:", "s dangling operator"},
                    {"(^2)", "s misplaced '^' operator"},
                    {"[,1]", "s Incorrectly placed operator in bracket or expression"},
                    {"(1:,2)", "s Incorrectly placed operator in bracket or expression"},
                    {"2=3", "s incorrectly formed statement or expression"},
                    {"(1; ;2)", "s Incorrectly placed operator in bracket or expression"}});
}

TEST_F(Parse, AnEmptyRangeIsNoExpression) {
    EXPECT_THROW((void)parser.parseExpression({}), SyntaxError);
    EXPECT_THROW((void)parser.parseOperand({}), SyntaxError);
    declare("x", {1});
    expectFailures({{"x()", "s empty expression"}, {"pi()", "s empty expression"}});
}

TEST_F(Parse, UnknownNamesAndKeywords) {
    declare("x", {1});
    expectFailures({{"x y", "s unrecognised name {g 'y'"},
                    {"2i", "s unrecognised name {g 'i'"},
                    {"1+while", "s misplaced keyword {g 'while'"},
                    {"sqrt nosuch", "s unrecognised name {g 'nosuch'"},
                    {"x.nosuch", "s unrecognised name {g 'nosuch'"}});
}

TEST_F(Parse, ARowOfSequenceParts) {
    declare("n", {3});
    expectValues({{"1:3", "1 2 3"},
                  {"1:2:7", "1 3 5 7"},
                  {"5:-2:1", "5 3 1"},
                  {"1:3+1", "2 3 4"},
                  {"1:(3+1)", "1 2 3 4"},
                  {"1:n", "1 2 3"},
                  {"0:0.5:1", "0 0.5 1"},
                  {"-1:1", "-1 0 1"},
                  {"1:2, 7", "1 2 7"},
                  {"(1:3)'", "1; 2; 3"}});
    EXPECT_EQ(parse("1:3")->type(), INTEGER_VAL);
    EXPECT_EQ(parse("1:n")->type(), DOUBLE_VAL);
    EXPECT_EQ(parse("1:2:3.0")->type(), DOUBLE_VAL);
    EXPECT_EQ(parse("1:2:3")->elementKind(), ElementKind::sequence);
    expectFailures({{"1:2:3:4", "s a:b:c:d ??"}});
}

TEST_F(Parse, QueriesHaveTwoBranches) {
    declare("x", {-3});
    expectValues({{"1 ? 2 :: 3", "2"},
                  {"0 ? 2 :: 3", "3"},
                  {"x<0 ? -x :: x", "3"},
                  {"1 ? 'yes' :: 'no'", "yes"},
                  {"0 ? 1 % 2 :: 3 % 4", "0.75"},
                  {"1 ? 1,2 :: 3", "1 2"}});
    expectFailures({{"1 ? 2", "s missing :: after '?' operator"},
                    {"1 :: 2", "s illegal :: without '?' operator"},
                    {"1 ? 2 :: 3 :: 4", "s multiple '?' or '::' operators"},
                    {"1 ? 2 ? 3 :: 4", "s multiple '?' or '::' operators"},
                    {"1 ? 2 ::", "s dangling operator"}});
}

TEST_F(Parse, AFunctionOfOneArrayTakesTheNextItem) {
    declare("x", {0});
    expectValues({{"cos x + 1", "2"},
                  {"sqrt 16 + 9", "13"},
                  {"sqrt 4^2", "4"},
                  {"sqrt 4 sqrt 9", "6"},
                  {"2 max(3,4)", "8"},
                  {"[sqrt 4 sqrt 9]", "2 3"},
                  {"max [1 5 2]", "5"},
                  {"size 'abc'", "3"}});
    expectFailures({{"1+sqrt", "s function requires a parameter"},
                    {"sqrt + 1", "s incorrect use of operator or similar"},
                    {"sqrt, 1", "s incorrectly placed comma or similar"},
                    {"sqrt()", "s empty expression"},
                    {"sqrt sin", "s invalid syntax for a function reference"}});
}

TEST_F(Parse, APowerBehindTheNameOfAFunction) {
    define("twice", {"x"}, "2*x");
    expectValues({{"cos^2(0)", "1"},
                  {"sqrt^3(4)", "8"},
                  {"sqrt^3 (4) + 1", "9"},
                  {"twice^2(3)", "36"},
                  {"\\sqrt^3(4)", "8"},
                  {"1+sqrt^2(4)/2", "3"},
                  {"max^2[1 3]", "9"}});
    expectFailures({{"sin^2 3", "s function with ^ requires an argument in a bracket"},
                    {"(sin^2)", "s function with ^ requires an argument in a bracket"}});
}

TEST_F(Parse, OtherFunctionsTakeTheRest) {
    define("f", {"x"}, "10*x");
    define("less", {"a", "b"}, "a-b");
    expectValues({{"f 2 + 1", "30"},
                  {"f(2) + 1", "21"},
                  {"f (2)+1", "21"},
                  {"less 5, 2+1", "2"},
                  {"1 + f f 2", "201"},
                  {"f [1,2]", "10 20"},
                  {"[f 3]", "30"},
                  {"f(2)f(3)", "600"}});
    expectFailures({{"f", "s function requires a parameter"},
                    {"f + 1", "s Incorrectly placed operator in bracket or expression"},
                    {"less(1)", "s less(...) has too few arguments"},
                    {"less(1,2,3)", "s less(...) has too many arguments"},
                    {"less()", "s less(...) has too few arguments"},
                    {"less(1,,2)", "s double comma"},
                    {"complex(1)", "s complex(...) has too few arguments"},
                    {"str(1,2,3)", "s str(...) has too many arguments"},
                    {"reshape()", "s reshape(...) has too few arguments"}});
}

TEST_F(Parse, FunctionsWithoutArguments) {
    define("h", {}, "5");
    define("f", {"x"}, "10*x");
    expectValues({{"h+1", "6"},
                  {"h()+1", "6"},
                  {"h 2", "10"},
                  {"h(2)", "10"},
                  {"f(h)", "50"},
                  {"on+1", "2"},
                  {"2 on()", "2"}});
    EXPECT_EQ(show(*parseAlone("h")), "5");
    EXPECT_EQ(parseAlone("h")->elementKind(), ElementKind::userFunction);
    EXPECT_EQ(parseAlone("true")->type(), parse("true")->type());
}

TEST_F(Parse, AFunctionNameAloneIsAReference) {
    define("f", {"x"}, "10*x");
    EXPECT_EQ(parseAlone("sin")->elementKind(), ElementKind::functionReference);
    EXPECT_EQ(parseAlone("\\sin")->elementKind(), ElementKind::functionReference);
    auto reference = parseAlone("f");
    ASSERT_EQ(reference->elementKind(), ElementKind::functionReference);
    EXPECT_EQ(static_cast<FuncRefElement&>(*reference).userFunction(), functions.find("f"));
    EXPECT_EQ(static_cast<FuncRefElement&>(*parseAlone("poly")).inputCount(), 2);
    EXPECT_EQ(static_cast<FuncRefElement&>(*parseAlone("sin")).inputCount(), 1);
    EXPECT_EQ(show(*parseAlone("sin")), "");
}

TEST_F(Parse, AReferenceToABuiltInIsCalled) {
    auto reference = parseAlone("sqrt");
    auto& function = static_cast<FuncRefElement&>(*reference);
    DoubleValue workspace;
    const Outcome nine[] = {Outcome::scalar(9)};
    EXPECT_EQ(function.call(nine, &workspace).number, 3);
}

TEST_F(Parse, ReferencesComeFirst) {
    define("f", {"x"}, "10*x");
    expectFailures({{"fzero(sin)", "s invalid syntax for a function reference"},
                    {"fzero(1, sin)", "s function reference(s) must be the first argument(s)"},
                    {"f(sin)", "s invalid syntax for a function reference"},
                    {"str(sin, 2)", "s invalid syntax for a function reference"}});
    EXPECT_EQ(parse("fzero(sin, 1)")->elementKind(), ElementKind::generalFunction);
}

TEST_F(Parse, AnonymousFunctionsHaveAVariableOfTheirOwn) {
    DoubleValue& k = declare("k", {7});
    EXPECT_EQ(parse("sum(k^2; k, 1:3)")->elementKind(), ElementKind::generalFunction);
    EXPECT_EQ(symbols.classify("k").found, &k);
    EXPECT_EQ(parse("sum(j; j, 1:3)")->elementKind(), ElementKind::generalFunction);
    EXPECT_TRUE(symbols.classify("j").isUnknown());
    EXPECT_FALSE(parse("sum(k^2; k, 1:3)")->uses(&k));
    EXPECT_TRUE(parse("sum(k*j; j, 1:3)")->uses(&k));
    expectFailures({{"sum(c^2; c, 1:3)", "s don't use a constant as the parameter name here"},
                    {"sum(nosuch; j, 1:3)", "s unrecognised name {g 'nosuch'"},
                    {"sum(1:3; 2)", "s missing x in '(func(x); x, ...)' form"},
                    {"sum(j; j)", "s missing comma in '(func(x); x, ...)' form"},
                    {"table(1, 2; 3)", "s '(expr; ...)' syntax can only be used for the first argument"},
                    {"sum(k; k, 1; 2)", "s '(expr; ...)' syntax can only be used for the first argument"}});
    EXPECT_TRUE(symbols.classify("j").isUnknown());
}

TEST_F(Parse, ABackslashReachesTheBuiltIn) {
    declare("sin", {3});
    expectValues({{"sin", "3"}, {"\\sin(0)", "0"}, {"\\G(4)", "6"}, {"2 \\sqrt 9", "6"}});
    expectFailures({{"\\nosuch(2)", "s after backslash: no such built-in function"},
                    {"2\\3", "s stray backslash"},
                    {"(\\)", "s stray backslash"}});
}

TEST_F(Parse, AFunctionBehindADot) {
    define("less", {"a", "b"}, "a-b");
    declare("x", {9});
    declare("v", {1, 5, 2});
    expectValues({{"(4+5).sqrt", "3"},
                  {"x.sqrt", "3"},
                  {"x.less(2)", "7"},
                  {"x.less(2)+1", "8"},
                  {"2 x.sqrt", "6"},
                  {"x.sqrt^2", "9"},
                  {"v.max", "5"},
                  {"[1,4].max", "4"},
                  {"(1,4).max", "4"},
                  {"(5,3).less", "2"},
                  {"(5).less(3)", "2"},
                  {"x.less(5).sqrt", "2"},
                  {"x.sqrt.less(1)", "2"},
                  {"less(9,5).sqrt", "2"},
                  {"sqrt(16).sqrt", "2"},
                  {"(16).sqrt.sqrt", "2"},
                  {"1+(16).sqrt.less(1)*2", "7"},
                  {"(4).sqrt (3)", "6"}});
    expectFailures({{"(2).x", "s x is not a function"},
                    {"[1,2].[3;4]", "s invalid ().func syntax"},
                    {"(2).nosuch", "s nosuch is not a function"}});
}

TEST_F(Parse, IndicesInTheirForms) {
    declare("x", {5, 6, 7});
    declare("m", {1, 2, 3, 4, 5, 6}, 2);  // 1 3 5; 2 4 6
    declare("k", {2});
    expectValues({{"x[2]", "6"},
                  {"x[k]", "6"},
                  {"x [k]", "6"},
                  {"x.2", "6"},
                  {"x.k", "6"},
                  {"x.(k+1)", "7"},
                  {"x.[1,3]", "5 7"},
                  {"x[[1,3]]", "5 7"},
                  {"x[1.9]", "5"},
                  {"x[2:3]", "6 7"},
                  {"x[2:end]", "6 7"},
                  {"x[end]", "7"},
                  {"x[end-1]", "6"},
                  {"x.end", "7"},
                  {"x[end:-1:1]", "7 6 5"},
                  {"x[:]", "5 6 7"},
                  {"x[x>5]", "6 7"},
                  {"m[1,2]", "3"},
                  {"m[1 2]", "3"},
                  {"m[end,end]", "6"},
                  {"m[end,end-1]", "4"},
                  {"m[[1,2],[3,1]]", "5 1; 6 2"},
                  {"m[2,:]", "2 4 6"},
                  {"m[:,k]", "3; 4"},
                  {"m[1:2,:]", "1 3 5; 2 4 6"},
                  {"m[:,:]", "1 3 5; 2 4 6"},
                  {"m[:]", "1 2 3 4 5 6"},
                  {"m.k", "3; 4"},
                  {"m.3", "5; 6"},
                  {"m\\k", "2 4 6"},
                  {"m\\1", "1 3 5"},
                  {"m\\[k]", "2 4 6"},
                  {"m\\\\k", "3; 4"},
                  {"m\\\\[2,1]", "3 1; 4 2"},
                  {"m\\[end]", "2 4 6"},
                  {"m\\\\[end]", "5; 6"},
                  {"x[2] x[3]", "42"},
                  {"2x[2]", "12"},
                  {"x[max(1,end-1)]", "6"}});
}

TEST_F(Parse, EndRefersToTheInnermostIndex) {
    declare("x", {3, 2, 1});
    declare("y", {1, 2});
    expectValues({{"x[y[end]]", "2"}, {"x[y[end]-1+end-2]", "2"}});
    expectFailures({{"end", "s stray 'end' keyword"}, {"x[y[nosuch]]", "s unrecognised name {g 'nosuch'"}});
    // A failure inside an index leaves no context behind.
    expectFailures({{"end", "s stray 'end' keyword"}});
}

TEST_F(Parse, IndicesThatMeanNothing) {
    declare("x", {5, 6, 7});
    declareList("L");
    expectFailures({{"x[1,2,3]", "s too many indices"},
                    {"x[1,2,:]", "s too many indices"},
                    {"x[]", "o *"},
                    {"x[0]", "s index must be positive"},
                    {"x[-1]", "s index must be positive"},
                    {"x[4]", "r index exceeds array size"},
                    {"x[1i]", "s invalid type of index: complex"},
                    {"x[L]", "s invalid type of index: list"},
                    {"x[sin]", "s invalid type of index: function"},
                    {"(x\\)", "s expression ends with a dot or backslash"},
                    {"x\\'a'", "s incorrect use of backslash"},
                    {"x\\\\\\\\1", "s incorrect use of backslash"},
                    {"x.'a'", "s the dot must be followed by an integer or a name or a bracket"},
                    {"x\\sin", "s 'var\\func' is not allowed (insert a space or use a bracket)."},
                    {"x[1;2]", "s missing x in '(func(x); x, ...)' form"}});
}

TEST_F(Parse, ItemsOfLists) {
    ListValue& list = declareList("L");
    list.appendItem(DOUBLE_VAL).assignDouble(3);
    list.appendItem(INTEGER_VAL).assignString("abc");
    declare("x", {5, 6, 7});
    EXPECT_EQ(parse("L[1]")->type(), UNKNOWN_VAL);
    EXPECT_EQ(parse("L[1]")->elementKind(), ElementKind::listItem);
    EXPECT_EQ(parse("L[1][]")->type(), LIST_VAL);
    EXPECT_EQ(parse("L[1]+1")->type(), DOUBLE_VAL);
    expectValues({{"L[1]+1", "4"}, {"L.1 + L[end-1]", "6"}, {"size(L[2])", "3"}});
    expectFailures({{"L[1,2]", "s list indexing with more than 1 index is not yet implemented"},
                    {"L[:]", "s this form of indexing of a list is not yet implemented"},
                    {"x[L[1]]", "s something wrong: index was not an INTEGER_VAL"},
                    {"L+1", "s expression contains an illegal operation involving a list"},
                    {"L[3]", "r in list item: index out of bounds"}});
}

TEST_F(Parse, AnIndexOnTheLeftSide) {
    Value& m = declare("m", {1, 2, 3, 4}, 2);
    auto consumed = [&](const std::string& text) {
        TokenList tokens = scan(text);
        return parser.parseIndex(m, tokens[0].code, std::span(tokens).subspan(1)).consumed;
    };
    EXPECT_EQ(consumed("m[1,2]=5"), 1u);
    EXPECT_EQ(consumed("m[1,:]=5"), 1u);
    EXPECT_EQ(consumed("m.1=5"), 2u);
    EXPECT_EQ(consumed("m\\\\1=5"), 2u);
    EXPECT_EQ(consumed("m.sqrt=5"), 0u);
    EXPECT_EQ(consumed("m=5"), 0u);

    TokenList tokens = scan("m[:,2.5]=1");
    ParsedIndex index = parser.parseIndex(m, tokens[0].code, std::span(tokens).subspan(1));
    EXPECT_EQ(index.mode, INDEX_COLUMN);
    EXPECT_EQ(index.type, DOUBLE_VAL);
    ASSERT_EQ(index.indices.size(), 1u);
    EXPECT_EQ(index.indices[0]->elementKind(), ElementKind::doubleToInt);
}

TEST_F(Parse, WordsBecomeStrings) {
    TokenList tokens = scan("property sea-water, density 20");
    try {
        (void)parser.parseExpression(tokens);
    } catch (const SyntaxError& e) {
        FAIL() << e.message;
    }
    expectFailures({{"property water", "s property(...) has too few arguments"},
                    {"property water a b c", "s property(...) has too many arguments"}});
    EXPECT_EQ(parse("(<< water density)")->elementKind(), ElementKind::generalFunction);
}

TEST_F(Parse, AFailureLeavesTheParserUsable) {
    declare("x", {1, 2});
    for (int i = 0; i < 1000; ++i) EXPECT_NE(failure("((x[((nosuch))]))"), "none");
    EXPECT_EQ(value("((((x[end]))))"), "2");
}

TEST_F(Parse, DeepNestingIsRefused) {
    declare("x", {1});
    define("f", {"x"}, "x");
    constexpr const char* tooDeep = "s expression nested too deeply";
    EXPECT_EQ(value(repeated("(", 150) + "1" + repeated(")", 150)), "1");
    EXPECT_EQ(failure(repeated("(1+", 300) + "x" + repeated(")", 300)), tooDeep);
    EXPECT_EQ(failure(repeated("f ", 20000) + "x"), tooDeep);
    EXPECT_EQ(value(repeated("f ", 150) + "x"), "1");
    EXPECT_EQ(failure("x" + repeated(".f", 100000)), tooDeep);
    EXPECT_EQ(value("x" + repeated(".f", 150)), "1");
    EXPECT_EQ(failure("x" + repeated(" // x", 100000)), tooDeep);
    EXPECT_EQ(value("x" + repeated(" % x", 10000)), "1");
    EXPECT_EQ(value("x" + repeated(" x", 10000)), "1");
    EXPECT_EQ(value("x" + repeated("+x", 10000)), "10001");
    EXPECT_EQ(value("x" + repeated("*-x", 10000)), "1");
}

}  // namespace
}  // namespace vorpen
