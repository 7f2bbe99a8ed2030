// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/assembly.h"

#include <gtest/gtest.h>

#include "eval/comparison.h"
#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/indexing.h"
#include "frontend/function_assembly.h"
#include "frontend/operator_table.h"
#include "parse_session.h"

namespace vorpen {
namespace {

class Assemble : public testing::Test, protected ParseSession {
protected:
    Assemble() {
        declare("x", {2});
        declare("v", {5, 6, 7});
        asComplex(*symbols.declareVariable("z", COMPLEX_VAL)) = ComplexValue({1, 2});
        declareList("L").appendItem(DOUBLE_VAL).assignDouble(3);
        define("f", {"a"}, "a+1");
        // A variable of integers is made by no statement; the language's own
        // values can be integers all the same.
        auto integers = std::make_unique<IntValue>(7);
        symbols.adoptGlobal("n", std::move(integers));
    }

    template <class Element>
    bool gives(const std::string& text) {
        auto element = parse(text);
        return dynamic_cast<Element*>(element.get()) != nullptr;
    }
    bool folds(const std::string& text) { return parse(text)->elementKind() == ElementKind::constant; }
    int type(const std::string& text) { return parse(text)->type(); }

    struct Row {
        const char* text;
        const char* expected;
    };
    void expectFailures(std::initializer_list<Row> rows) {
        for (const Row& row : rows) EXPECT_EQ(failure(row.text), row.expected) << row.text;
    }
    void expectValues(std::initializer_list<Row> rows) {
        for (const Row& row : rows)
            EXPECT_EQ(failure(row.text) == "none" ? value(row.text) : failure(row.text), row.expected)
                << row.text;
    }
};

TEST(OperatorTable, CodesAndLevels) {
    struct {
        char op;
        int code;
    } rows[] = {{'^', 0},  {'R', 3},  {'*', 8},  {'/', 9},  {'.', 10},  {'@', 11}, {'v', 12},
                {'_', 13}, {'+', 16}, {'-', 17}, {'u', 18}, {'p', 19},  {'m', 20}, {'a', 24},
                {'r', 32}, {'X', 33}, {'<', 40}, {'L', 41}, {'E', 42},  {'I', 43}, {'N', 44},
                {'G', 45}, {'>', 46}, {'A', 48}, {'&', 49}, {'O', 56},  {'|', 57}, {'x', 58},
                {',', 64}, {';', 72}, {'?', 80}, {'W', 81}, {'\0', 88}, {'o', 0},  {'Q', 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(operatorCode(row.op), row.code) << row.op;
        EXPECT_EQ(operatorLevel(row.op), row.code / 8) << row.op;
    }
    EXPECT_TRUE(isComparison('I'));
    EXPECT_FALSE(isComparison('&'));
}

TEST_F(Assemble, SimpleOperatorsOnOneType) {
    EXPECT_TRUE(gives<SimpleExpression>("n+1"));
    EXPECT_EQ(type("n+1"), INTEGER_VAL);
    EXPECT_TRUE(gives<SimpleExpression>("x*x-2.0"));
    EXPECT_EQ(type("x*x-2.0"), DOUBLE_VAL);
    EXPECT_TRUE(gives<SimpleExpression>("x+L[1]/2.0"));
    EXPECT_TRUE(gives<SimpleExpression>("L[1]+L[1]"));
    EXPECT_EQ(type("L[1]+L[1]"), DOUBLE_VAL);
}

TEST_F(Assemble, SimpleOperatorsOnMixedTypes) {
    EXPECT_TRUE(gives<SimpleMixedTypeExpression>("x+1"));
    EXPECT_EQ(type("x+1"), DOUBLE_VAL);
    EXPECT_TRUE(gives<SimpleMixedTypeExpression>("n/2"));
    EXPECT_EQ(type("n/2"), DOUBLE_VAL);
    EXPECT_TRUE(gives<SimpleMixedTypeExpression>("L[1]+1"));
}

TEST_F(Assemble, ComplexOperandsMakeAllComplex) {
    EXPECT_TRUE(gives<SimpleExpression>("z+1"));
    EXPECT_EQ(type("z+1"), COMPLEX_VAL);
    EXPECT_TRUE(gives<SimpleExpression>("n/z*x"));
    EXPECT_TRUE(gives<SimpleExpression>("L[1]+z"));
    EXPECT_EQ(value("L[1]+z"), "4+2i");
    EXPECT_TRUE(gives<GeneralComplexExpression>("z^2"));
    EXPECT_EQ(type("z, 1"), COMPLEX_VAL);
}

TEST_F(Assemble, OtherOperatorsNeedTheGeneralEvaluators) {
    EXPECT_TRUE(gives<GeneralIntegerExpression>("n mod 2"));
    EXPECT_EQ(type("n mod 2"), INTEGER_VAL);
    EXPECT_TRUE(gives<GeneralIntegerExpression>("n, 2; 3, 4"));
    EXPECT_TRUE(gives<GeneralIntegerExpression>("n ^^ 2"));
    EXPECT_TRUE(gives<GeneralIntegerExpression>("n >> 2"));
    EXPECT_TRUE(gives<GeneralMixedTypeExpression>("n ^ 2"));
    EXPECT_EQ(type("n ^ 2"), DOUBLE_VAL);
    EXPECT_TRUE(gives<GeneralMixedTypeExpression>("x mod 2"));
    EXPECT_TRUE(gives<GeneralMixedTypeExpression>("x && 1"));
    EXPECT_TRUE(gives<GeneralMixedTypeExpression>("x ? 1 :: 2"));
}

TEST_F(Assemble, OneOperandIsItsOwnElement) {
    EXPECT_TRUE(gives<ValueElement>("x"));
    EXPECT_TRUE(gives<ValueElement>("((x))"));
    EXPECT_TRUE(gives<StringLiteralElement>("'abc'"));
    EXPECT_TRUE(gives<NumberElement>("[]"));
    EXPECT_TRUE(gives<SequenceElement>("1:3"));
}

TEST_F(Assemble, ConstantsFold) {
    for (const char* text :
         {"2*pi", "2^3", "1+2*3", "sin(1)+2", "sqrt(16)", "1/2", "[1,2;3,4]", "1i*1i", "(1+2)*3", "7 mod 2",
          "1 ? 2 :: 3", "1 & 0", "1 % 2", "1,2,3", "-(2+3)", "sqrt 4 sqrt 9"})
        EXPECT_TRUE(folds(text)) << text;
    for (const char* text :
         {"1<2", "3!", "'a','b'", "1:3", "sin(x)", "x", "rnd", "max(1,2)", "(1<2)+1", "sin(cos(x))"})
        EXPECT_FALSE(folds(text)) << text;
    EXPECT_EQ(type("2^3"), DOUBLE_VAL);
    EXPECT_EQ(type("7 mod 2"), INTEGER_VAL);
    EXPECT_EQ(type("1/2"), DOUBLE_VAL);
    EXPECT_EQ(type("1i*1i"), COMPLEX_VAL);
    EXPECT_EQ(type("2 >> 3"), INTEGER_VAL);
}

TEST_F(Assemble, AFailingConstantFailsWhileItCompiles) {
    TokenList sizes = scan("[1,2]+[1,2,3]"), overflow = scan("1073741824*3"), quotient = scan("7 _/ 0");
    EXPECT_THROW((void)parser.parseExpression(sizes), OperatorFailure);
    EXPECT_THROW((void)parser.parseExpression(overflow), RuntimeError);
    EXPECT_THROW((void)parser.parseExpression(quotient), RuntimeError);
    EXPECT_NO_THROW((void)parse("13!"));
}

TEST_F(Assemble, SeparatorsGroupTheirElements) {
    expectValues({{"1, 2; 3, 4", "1 2; 3 4"},
                  {"x+1, 2*x; x, x^2", "3 4; 2 4"},
                  {"x, x, x", "2 2 2"},
                  {"x; x+1", "2; 3"},
                  {"2 < 3, 4", "1 4"},
                  {"x ? x+1, 2 :: 3", "3 2"},
                  {"'ab', 'cd'", "abcd"}});
    expectFailures({{"1,2;3", "o ;"}, {"[1;2],3", "o ,"}});
}

TEST_F(Assemble, PrecedenceOfTheLevels) {
    expectValues({{"2+3*4^2", "50"},
                  {"2^3^2", "64"},
                  {"2*7 mod 4", "2"},
                  {"7 mod 4 * 2", "7"},
                  {"6 bitand 3 bitor 8", "10"},
                  {"1 | 1 & 0", "1"},
                  {"1 + 1 > 1 & 1", "1"},
                  {"10-4-3", "3"},
                  {"100/10/2", "5"},
                  {"2*7 _/ 4", "3"},
                  {"0 && 1+1 || 1", "0"},
                  {"0 && 1 || 1", "1"},
                  {"0 && 1+1 || 1<2", "1"}});
}

TEST_F(Assemble, ComparisonsAreOneElement) {
    EXPECT_TRUE(gives<ComparatorElement>("x < 3"));
    EXPECT_TRUE(gives<ComparatorElement>("1 < x <= 3"));
    EXPECT_TRUE(gives<ComparatorElement>("n == x+1"));
    EXPECT_TRUE(gives<ComparatorElement>("L[1] < 2"));
    EXPECT_TRUE(gives<FullyCompareElement>("x === 2"));
    EXPECT_EQ(type("x < 3"), INTEGER_VAL);
    expectValues({{"1+1 == 2", "1"},
                  {"1 < x <= 2", "1"},
                  {"1 < 3 < 2", "0"},
                  {"v > 5", "0 1 1"},
                  {"1 % 2 < 1", "1"},
                  {"1 < 4 % 2 < 3", "1"},
                  {"1 % 2 & 1 < 2", "1"},
                  {"x<3 & x>1", "1"},
                  {"x<3, x>3", "1 0"},
                  {"1 === 1.0", "1"},
                  {"3 ~= 4", "1"},
                  {"3 >= 4", "0"}});
    expectFailures({{"1 < 2 < 3 < 4", "s illegal form of comparison (more than 3 parts)"},
                    {"1 === 1 === 1", "s illegal combination of === with a further comparison"},
                    {"1 < 2 === 1", "s illegal combination of === with a further comparison"},
                    {"1 < 0 < 13!", "none"}});
}

TEST_F(Assemble, FractionsReachAsFarAsTheyCan) {
    expectValues({{"2 6 % 3 4", "1"},
                  {"1+2 % 3", "1"},
                  {"1+2 // 4", "1.5"},
                  {"1+6 // 1+2", "3"},
                  {"2 12 // 3 x", "4"},
                  {"24 % 4 % 2", "3"},
                  {"12 // 2 % 3", "2"},
                  {"2+4 % 2 % 3", "1"},
                  {"8 // 4 // 2", "4"},
                  {"12 % 8 // 4", "6"},
                  {"12 % 1 + 8 // 4", "4"},
                  {"(1+1 % 2)*3", "3"}});
    EXPECT_TRUE(gives<SimpleMixedTypeExpression>("n % 2"));
}

TEST_F(Assemble, UnaryOperatorsKeepToTheirTypes) {
    EXPECT_TRUE(gives<UnaryOpElement>("-x"));
    EXPECT_TRUE(gives<UnaryOpElement>("v'"));
    EXPECT_TRUE(gives<UnaryOpElement>("n!"));
    EXPECT_EQ(type("n!"), INTEGER_VAL);
    EXPECT_EQ(type("-z"), COMPLEX_VAL);
    expectFailures({{"-L", "s illegal unary operator for a list"},
                    {"~L", "s illegal unary operator for a list"},
                    {"L!", "s illegal unary operator for a list"},
                    {"L'", "none"},
                    {"~z", "s illegal unary operator for a complex value"},
                    {"z!", "s illegal unary operator for a complex value"},
                    {"z\"", "none"}});
}

TEST_F(Assemble, SequencesHaveThreePartsAtMost) {
    EXPECT_EQ(type("1:n"), INTEGER_VAL);
    EXPECT_EQ(type("1:x"), DOUBLE_VAL);
    EXPECT_EQ(type("1:2:7.0"), DOUBLE_VAL);
    EXPECT_EQ(type("1:L[1]"), DOUBLE_VAL);
    EXPECT_EQ(value("(1:2):5"), "1 3 5");
    expectFailures({{"1:2:3:4", "s a:b:c:d ??"}, {"(1:2:3):4", "s a:b:c:d ??"}});
}

TEST_F(Assemble, IndexElementsByTheirForm) {
    EXPECT_TRUE(gives<ConstIndexElement>("v[2]"));
    EXPECT_TRUE(gives<ConstIndexElement>("v[1+1]"));
    EXPECT_TRUE(gives<ConstIndexElement>("z[1]"));
    EXPECT_EQ(parse("v[2]")->elementKind(), ElementKind::namedValue);
    EXPECT_TRUE(gives<IndexedElementSingle>("v[x]"));
    EXPECT_TRUE(gives<IndexedElementSingle>("v.2"));
    EXPECT_TRUE(gives<IndexedElementSingle>("v[[1,2]]"));
    EXPECT_TRUE(gives<IndexedElementSingle>("v[2.0]"));
    EXPECT_TRUE(gives<IndexedElementDouble>("v[1,2]"));
    EXPECT_TRUE(gives<IndexedElementDouble>("v[1:2,1]"));
    EXPECT_TRUE(gives<IndexedWithSequenceElement>("v[1:2]"));
    EXPECT_TRUE(gives<IndexedWithSequenceElement>("v[1:x:end]"));
    EXPECT_TRUE(gives<IndexedWithSequenceElement>("v\\[1:1]"));
    EXPECT_TRUE(gives<UnaryOpElement>("v[:]"));
    EXPECT_TRUE(gives<ListItemElement>("L[1]"));
    EXPECT_TRUE(gives<ListItemElement>("L.1"));
    EXPECT_TRUE(gives<IndexedElementSingle>("L[1][]"));
    EXPECT_EQ(type("z[1]"), COMPLEX_VAL);
    expectFailures({{"v[0]", "s index must be positive"},
                    {"v[x-2]", "r index out of bounds"},
                    {"v.0", "r index out of bounds"},
                    {"v[4]", "r index exceeds array size"},
                    {"v[1:0:3]", "r sequence with zero step"}});
}

TEST_F(Assemble, FunctionsOfOneNumber) {
    EXPECT_TRUE(gives<SimpleFuncElement>("sqrt(x)"));
    EXPECT_TRUE(gives<SimpleFuncElement>("sqrt(n)"));
    EXPECT_TRUE(gives<SimpleFuncIntElement>("bitweight(n)"));
    EXPECT_TRUE(gives<SimpleFuncIntElement>("bitweight(x)"));
    EXPECT_TRUE(gives<SimpleFuncComplexElement>("sqrt(z)"));
    EXPECT_TRUE(gives<SimpleFuncCtoDElement>("abs(z)"));
    EXPECT_TRUE(gives<SimpleFuncCtoDElement>("conj(z)"));
    EXPECT_EQ(type("sqrt(z)"), COMPLEX_VAL);
    EXPECT_EQ(type("abs(z)"), DOUBLE_VAL);
    EXPECT_EQ(value("bitweight(7.9)"), "3");
    EXPECT_EQ(value("sqrt(L[1]+1)"), "2");
    expectFailures({{"floor(z)", "s this function does not accept a complex argument"},
                    {"bitweight(z)", "s this function does not accept a complex argument"},
                    {"sqrt(L)", "s function may not be applied to a list"},
                    {"sqrt(L[1])", "none"}});
    static_cast<ListValue&>(*symbols.classify("L").found).appendItem(COMPLEX_VAL).assignDouble(1);
    EXPECT_EQ(failure("sqrt(L[2])"), "r invalid argument type");
    EXPECT_EQ(failure("size(L[2])"), "r invalid argument type");
    EXPECT_EQ(failure("L[2]+1"), "r list item has incompatible data type");
}

TEST_F(Assemble, FunctionsOfOneArray) {
    EXPECT_TRUE(gives<ColumnWiseFuncD_Element>("max(v)"));
    EXPECT_TRUE(gives<ColumnWiseFuncI_Element>("all(v)"));
    EXPECT_TRUE(gives<Value2ScalarI_Element>("size(v)"));
    EXPECT_TRUE(gives<Value2ScalarI_Element>("size(L)"));
    EXPECT_TRUE(gives<Value2ScalarI_Element>("size(z)"));
    EXPECT_TRUE(gives<Value2ScalarD_Element>("trace(v)"));
    EXPECT_TRUE(gives<DVal_DValFuncElement>("cumsum(v)"));
    EXPECT_TRUE(gives<DVal_IValFuncElement>("findall(v)"));
    EXPECT_TRUE(gives<ChangingFuncElement<DoubleValue>>("pop(v)"));
    EXPECT_TRUE(gives<ChangingFuncElement<IntValue>>("sortit(v)"));
    auto all = parse("all(v)");
    Workspace truth(INTEGER_VAL);
    EXPECT_EQ(all->pValue(truth.get())->mark(), FORM_BOOL);
    expectFailures({{"mean(L)", "s function may not be applied to a list"},
                    {"cumsum(L)", "s function may not be applied to a list"},
                    {"cumsum(z)", "s this function does not accept a complex argument"},
                    {"findall(z)", "s this function does not accept a complex argument"},
                    {"mean(z)", "s this function does not accept a complex argument"},
                    {"trace(z)", "s this function does not accept a complex argument"}});
}

TEST_F(Assemble, FunctionsOfSeveralArguments) {
    EXPECT_TRUE(gives<TicLikeFuncElement>("rnd"));
    EXPECT_TRUE(gives<AnsFuncElement>("ans"));
    EXPECT_TRUE(gives<AnsFuncElement>("ans(0)"));
    EXPECT_TRUE(gives<TwoArgFuncElement>("str(v)"));
    EXPECT_TRUE(gives<TwoArgFuncElement>("reshape(v,1)"));
    EXPECT_TRUE(gives<ChangingTwoArgElement>("push(v,1)"));
    EXPECT_TRUE(gives<SimpleFunctorElement>("poly(v,x)"));
    EXPECT_TRUE(gives<GeneralFuncElement>("list(1,z,L)"));
    EXPECT_TRUE(gives<GeneralFuncElement>("list()"));
    EXPECT_TRUE(gives<GeneralFuncElement>("list"));
    EXPECT_TRUE(gives<UserCallElement>("f(1)"));
    EXPECT_EQ(type("list()"), LIST_VAL);
    EXPECT_EQ(type("complex(1,2)"), COMPLEX_VAL);
    EXPECT_EQ(type("fft(v)"), COMPLEX_VAL);
    EXPECT_EQ(value("f(L[1])"), "4");
    EXPECT_EQ(value("poly(v,L[1])"), "86");
    expectFailures({{"str(L)", "s illegal argument type"},
                    {"str(z)", "s illegal argument type"},
                    {"poly(v,z)", "s illegal argument type"},
                    {"complex(z,1)", "s illegal argument type"},
                    {"ans(L)", "s illegal argument type"}});
}

TEST_F(Assemble, AnEmptyArrayStandsForNoArgument) {
    for (const char* text :
         {"figure", "figure()", "figure+1", "figure, 1", "wipe", "figpos()", "getmouse", "getclick()"})
        EXPECT_NO_THROW((void)parse(text)) << text;
    EXPECT_NO_THROW((void)parse("axis()"));
    EXPECT_NO_THROW((void)parseAlone("figure"));
    EXPECT_TRUE(dynamic_cast<Value2ScalarI_Element*>(parseAlone("figure").get()));
    EXPECT_EQ(failure("1+axis"), "s function requires a parameter");
}

TEST_F(Assemble, ARowOperandMayBeOfAnyLength) {
    std::string text = "[1";
    for (int i = 2; i <= 20000; ++i) text += "," + std::to_string(i);
    auto row = parse(text + "]");
    ASSERT_EQ(row->elementKind(), ElementKind::constant);
    const Value& v = static_cast<NumberElement&>(*row).value();
    EXPECT_EQ(v.size(), 20000);
    EXPECT_EQ(v.nrow(), 1);
}

TEST_F(Assemble, AnEmptyListIsNoExpression) {
    Assembly list;
    EXPECT_TRUE(list.isEmpty());
    EXPECT_THROW((void)list.finish(), SyntaxError);
}

}  // namespace
}  // namespace vorpen
