// SPDX-License-Identifier: GPL-3.0-or-later
// Operator expressions built by hand: the run on numbers and the run on blocks
// must agree with an operator-by-operator evaluation in results, marks and
// failures.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "base/errors.h"
#include "eval/comparison.h"
#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/indexing.h"

namespace vorpen {
namespace {

void add(ExpressionItems& items, EvaluatablePtr operand, int op) {
    items.push_back(ExpressionItem{std::move(operand), op});
}

EvaluatablePtr variable(Value& v) { return std::make_unique<ValueElement>(&v); }

DoubleValue row(std::initializer_list<double> items) {
    DoubleValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), 1, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

IntValue integers(std::initializer_list<int> items) {
    IntValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), 1, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

std::vector<double> itemsOf(const Value& v) {
    DoubleValue d;
    d.assign(v);
    return {d.data(), d.data() + d.size()};
}

using List = std::vector<double>;

char failureOf(Evaluatable& expression) {
    DoubleValue workspace;
    try {
        expression.evaluate(&workspace);
    } catch (const OperatorFailure& failure) {
        return failure.code;
    }
    return 0;
}

std::string messageOf(auto&& work) {
    try {
        work();
    } catch (const RuntimeError& error) {
        return error.message;
    }
    return {};
}

/// Doubles a variable and answers it: stands for code of the user.
class Doubling final : public Evaluatable {
public:
    explicit Doubling(DoubleValue& v) : variable_(v) {}
    Value* pValue(Value*) override {
        variable_.operate(OP_TIMES, DoubleValue(2.0));
        return &variable_;
    }
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool uses(const Value* v) const override { return v == &variable_; }

private:
    DoubleValue& variable_;
};

TEST(SimpleExpression, RunsScalarsWithoutAValue) {
    DoubleValue a(2.0), b(3.0), c(4.0);
    a.setMark(FORM_BOOL);
    ExpressionItems items;
    add(items, variable(a), OP_PLUS);
    add(items, variable(b), OP_TIMES);
    add(items, variable(c), OP_END);
    SimpleExpression expression(std::move(items), DOUBLE_VAL);
    const Outcome outcome = expression.evaluate(nullptr);
    ASSERT_TRUE(outcome.isScalar());
    EXPECT_EQ(outcome.number, 14);
    EXPECT_EQ(outcome.mark(), FORM_BOOL);
}

TEST(SimpleExpression, GoesOverToArraysInTheMiddle) {
    DoubleValue a(2.0), x = row({1, 2, 3}), b(10.0);
    ExpressionItems items;
    add(items, variable(a), OP_TIMES);
    add(items, variable(b), OP_MINUS);
    add(items, variable(x), OP_DIVIDE);
    add(items, variable(a), OP_END);
    SimpleExpression expression(std::move(items), DOUBLE_VAL);
    DoubleValue workspace;
    EXPECT_EQ(itemsOf(*expression.pValue(&workspace)), (List{19.5, 19, 18.5}));
    EXPECT_EQ(workspace.nrow(), 1);
    // The same tree, now on scalars, and again on arrays.
    x.assignDouble(4);
    EXPECT_EQ(expression.evaluate(&workspace).number, 18);
    x = row({2, 4});
    EXPECT_EQ(itemsOf(*expression.pValue(&workspace)), (List{19, 18}));
}

TEST(SimpleExpression, RaisesTheOperatorWhoseTurnItIs) {
    DoubleValue a = row({1, 2}), b = row({1, 2, 3}), s(1.0);
    ExpressionItems product;
    add(product, variable(s), OP_PLUS);
    add(product, variable(a), OP_TIMES);
    add(product, variable(b), OP_END);
    SimpleExpression times(std::move(product), DOUBLE_VAL);
    EXPECT_EQ(failureOf(times), '*');
    ExpressionItems sum;
    add(sum, variable(a), OP_MINUS);
    add(sum, variable(b), OP_TIMES);
    add(sum, variable(b), OP_END);
    SimpleExpression minus(std::move(sum), DOUBLE_VAL);
    EXPECT_EQ(failureOf(minus), '-');
}

TEST(SimpleExpression, EmptyArraysStayEmpty) {
    DoubleValue none, one(1.0), two = row({1, 2});
    for (const bool first : {true, false}) {
        ExpressionItems items;
        add(items, variable(first ? none : one), OP_PLUS);
        add(items, variable(first ? one : none), OP_END);
        SimpleExpression expression(std::move(items), DOUBLE_VAL);
        DoubleValue workspace(5.0);
        EXPECT_EQ(expression.pValue(&workspace)->size(), 0);
    }
    ExpressionItems items;
    add(items, variable(two), OP_PLUS);
    add(items, variable(none), OP_END);
    SimpleExpression expression(std::move(items), DOUBLE_VAL);
    EXPECT_EQ(failureOf(expression), '+');
}

TEST(SimpleExpression, KeepsTheValueReadBeforeALaterOperandChangesIt) {
    DoubleValue x = row({1, 2, 3});
    ExpressionItems items;
    add(items, variable(x), OP_PLUS);
    add(items, std::make_unique<Doubling>(x), OP_END);
    SimpleExpression expression(std::move(items), DOUBLE_VAL);
    DoubleValue workspace;
    EXPECT_EQ(itemsOf(*expression.pValue(&workspace)), (List{3, 6, 9}));
    EXPECT_FALSE(expression.isPure());
}

TEST(SimpleExpression, MixesIntegersAndMarks) {
    DoubleValue half(0.5);
    IntValue truth = integers({1, 0, 1});
    truth.setMark(FORM_BOOL);
    ExpressionItems items;
    add(items, variable(half), OP_TIMES);
    add(items, variable(truth), OP_END);
    SimpleMixedTypeExpression product(std::move(items));
    DoubleValue workspace;
    EXPECT_EQ(itemsOf(*product.pValue(&workspace)), (List{0.5, 0, 0.5}));
    EXPECT_EQ(workspace.mark(), FORM_BOOL) << "a product takes the shape and mark of the integers";
    ExpressionItems sum;
    add(sum, variable(half), OP_MINUS);
    add(sum, variable(truth), OP_END);
    SimpleMixedTypeExpression difference(std::move(sum));
    EXPECT_EQ(itemsOf(*difference.pValue(&workspace)), (List{-0.5, 0.5, -0.5}));
    EXPECT_EQ(workspace.mark(), FORM_NUMERIC);
    IntValue wrong;
    EXPECT_EQ(messageOf([&] { difference.pValue(&wrong); }),
              "in SimpleMixedTypeExpression::pValue: !! Vorpen failure. Invoked with non-DOUBLE_VAL workspace. "
              "Please report this bug.");
}

TEST(BlockProgram, AgreesWithOneOperatorAtATime) {
    std::mt19937_64 generator(1);
    std::uniform_real_distribution<double> uniform(0.5, 2.0);
    // Around the length of a block and beyond the start of worker threads.
    for (const int n : {2, 100, 511, 512, 513, 5000, 250001}) {
        DoubleValue a, b, c;
        for (DoubleValue* v : {&a, &b, &c}) {
            v->setShape(1, n);
            for (double& x : v->items()) x = uniform(generator);
        }
        ExpressionItems inner;
        add(inner, variable(a), OP_POWER);
        add(inner, variable(b), OP_REMAINDER);
        add(inner, makeNumber(2), OP_END);
        ExpressionItems items;
        add(items, std::make_unique<GeneralMixedTypeExpression>(std::move(inner)), OP_TIMES);
        add(items, std::make_unique<SimpleFuncElement>(variable(c), [](double x) { return std::sin(x); }, true),
            OP_MINUS);
        add(items, std::make_unique<UnaryOpElement>(variable(b), '-'), OP_DIVIDE);
        add(items, variable(c), OP_END);
        SimpleExpression expression(std::move(items), DOUBLE_VAL);
        DoubleValue workspace;
        const auto& result = asDouble(*expression.pValue(&workspace));
        ASSERT_EQ(result.size(), n);
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(result[i], std::fmod(std::pow(a[i], b[i]), 2.0) * std::sin(c[i]) - -b[i] / c[i]) << i;
    }
}

TEST(BlockProgram, LongExpressionsUseTheHeap) {
    DoubleValue x = row({1, 2}), s(1.0);
    const auto chain = [&](DoubleValue& v) {
        EvaluatablePtr nested = variable(v);
        for (int i = 0; i < 40; ++i) {
            // v + (v + (v + ...)) needs a stack of forty.
            ExpressionItems items;
            add(items, variable(v), OP_PLUS);
            add(items, std::move(nested), OP_END);
            nested = std::make_unique<SimpleExpression>(std::move(items), DOUBLE_VAL);
        }
        return nested;
    };
    DoubleValue workspace;
    EXPECT_EQ(itemsOf(*chain(x)->pValue(&workspace)), (List{41, 82}));
    EXPECT_EQ(chain(s)->evaluate(&workspace).number, 41);
}

TEST(IntegerExpression, TestsTheMostNegativeElementOfTheResult) {
    const auto sum = [](int a, int b) {
        ExpressionItems items;
        add(items, makeNumber(a), OP_PLUS);
        add(items, makeNumber(b), OP_END);
        SimpleExpression expression(std::move(items), INTEGER_VAL);
        IntValue workspace;
        return asInt(*expression.pValue(&workspace))[0];
    };
    EXPECT_EQ(sum(INT32_MAX, 1), INT32_MIN);
    EXPECT_EQ(sum(-1073741823, 0), -1073741823);
    EXPECT_EQ(messageOf([&] { sum(-1073741823, -1); }), "integer overflow");
    DoubleValue asDoubles;
    IntValue x = integers({1, 2});
    ExpressionItems items;
    add(items, variable(x), OP_TIMES);
    add(items, makeNumber(3), OP_END);
    SimpleExpression expression(std::move(items), INTEGER_VAL);
    EXPECT_EQ(itemsOf(*expression.pValue(&asDoubles)), (List{3, 6}));
}

TEST(GeneralExpression, ClimbsTheLevels) {
    // 1 | 1 & 0 and 2 mod 3 bitor 8 by precedence.
    ExpressionItems items;
    add(items, makeNumber(1), OP_OR);
    add(items, makeNumber(1), OP_AND);
    add(items, makeNumber(0), OP_END);
    GeneralIntegerExpression logic(std::move(items));
    EXPECT_EQ(logic.evaluate(nullptr).number, 1);
    ExpressionItems bits;
    add(bits, makeNumber(7), OP_REMAINDER);
    add(bits, makeNumber(4), OP_BIT_OR);
    add(bits, makeNumber(8), OP_END);
    GeneralIntegerExpression word(std::move(bits));
    EXPECT_EQ(word.evaluate(nullptr).number, 11);
}

TEST(GeneralExpression, ASkippedRightSideIsLeftByOneOperandOnly) {
    // 0 && 1+1 || 1 ends behind the first operand of the skipped side.
    ExpressionItems items;
    add(items, makeNumber(0), OP_AND_THEN);
    add(items, makeNumber(1), OP_PLUS);
    add(items, makeNumber(1), OP_OR_ELSE);
    add(items, makeNumber(1), OP_END);
    GeneralIntegerExpression expression(std::move(items));
    EXPECT_EQ(expression.evaluate(nullptr).number, 0);
}

TEST(GeneralExpression, RefusesConditionsThatAreNoScalars) {
    IntValue two = integers({1, 0});
    ExpressionItems both;
    add(both, variable(two), OP_AND_THEN);
    add(both, makeNumber(1), OP_END);
    GeneralIntegerExpression logic(std::move(both));
    IntValue workspace;
    EXPECT_EQ(messageOf([&] { logic.pValue(&workspace); }), "in logical operator: non-scalar condition");
    ExpressionItems query;
    add(query, variable(two), OP_QUERY);
    add(query, makeNumber(1), OP_QUERY_ELSE);
    add(query, makeNumber(2), OP_END);
    GeneralIntegerExpression choice(std::move(query));
    EXPECT_EQ(messageOf([&] { choice.pValue(&workspace); }), "in query: non-scalar condition");
}

TEST(GeneralExpression, TableOperatorsNameTheirFailure) {
    DoubleValue a = row({1, 1}), b = row({1, 1, 1});
    ExpressionItems items;
    add(items, variable(a), OP_AND);
    add(items, variable(b), OP_END);
    GeneralMixedTypeExpression expression(std::move(items));
    EXPECT_EQ(failureOf(expression), 'i');
}

TEST(Comparison, NeverEvaluatesTheThirdPartInVain) {
    DoubleValue touched(1.0);
    ComparatorElement chain(makeNumber(1), OP_LESS, makeNumber(0), OP_LESS, std::make_unique<Doubling>(touched));
    IntValue workspace;
    EXPECT_EQ(asInt(*chain.pValue(&workspace))[0], 0);
    EXPECT_EQ(touched[0], 1);
    ComparatorElement held(makeNumber(0), OP_LESS, makeNumber(1), OP_LESS, std::make_unique<Doubling>(touched));
    EXPECT_EQ(asInt(*held.pValue(&workspace))[0], 1);
    EXPECT_EQ(workspace.mark(), FORM_BOOL);
    EXPECT_EQ(touched[0], 2);
}

TEST(Comparison, ShapesMustAgree) {
    DoubleValue m = row({1, 2, 3, 4}), v = row({1, 2, 3});
    m.setNrow(2);
    ComparatorElement unequal(variable(m), OP_LESS, variable(v));
    IntValue workspace;
    EXPECT_EQ(messageOf([&] { unequal.pValue(&workspace); }), "incompatible matrix sizes");
    ComparatorElement withScalar(variable(m), OP_GREATER, makeNumber(2));
    EXPECT_EQ(itemsOf(*withScalar.pValue(&workspace)), (List{0, 0, 1, 1}));
    EXPECT_EQ(workspace.nrow(), 2);
    DoubleValue asDoubles;
    EXPECT_EQ(itemsOf(*withScalar.pValue(&asDoubles)), (List{0, 0, 1, 1}));
}

TEST(Elements, FactorialsOfBothKinds) {
    const auto factorial = [](EvaluatablePtr x) {
        UnaryOpElement element(std::move(x), '!');
        Workspace workspace(element.type());
        return element.evaluate(workspace.get()).number;
    };
    EXPECT_EQ(factorial(makeNumber(12)), 479001600);
    EXPECT_EQ(messageOf([&] { factorial(makeNumber(13)); }), "in factorial: integer overflow");
    EXPECT_EQ(messageOf([&] { factorial(makeNumber(-1)); }), "in factorial: n! with integer n < 0 is not allowed");
    EXPECT_EQ(factorial(makeNumber(-1.0)), INFINITY);
    EXPECT_EQ(factorial(makeNumber(2.5)), 6);
    EXPECT_DOUBLE_EQ(factorial(makeNumber(170.0)), 7.257415615307994e306);
    EXPECT_EQ(factorial(makeNumber(171.0)), INFINITY);
}

TEST(Elements, ConversionsKeepRowsAndMark) {
    DoubleValue x = row({2.9, -2.9});
    x.setMark(FORM_STRING);
    DoubleToIntElement truncated(variable(x));
    IntValue whole;
    EXPECT_EQ(itemsOf(*truncated.pValue(&whole)), (List{2, -2}));
    EXPECT_EQ(whole.mark(), FORM_STRING);
    DoubleValue workspace;
    EXPECT_EQ(truncated.pValue(&workspace), &x) << "a double workspace gets the double itself";
    IntValue n = integers({1, 2});
    n.setMark(FORM_BOOL);
    IntToDoubleElement widened(variable(n));
    EXPECT_EQ(itemsOf(*widened.pValue(&workspace)), (List{1, 2}));
    EXPECT_EQ(workspace.mark(), FORM_BOOL);
    ToComplexElement complex(variable(n));
    ComplexValue z;
    EXPECT_EQ(asComplex(*complex.pValue(&z))[1], std::complex<double>(2, 0));
}

TEST(Elements, IncrementChangesEveryElementOfTheVariable) {
    DoubleValue x = row({1, 2});
    IncDecElement up(&x, 'i'), down(&x, 'd');
    EXPECT_EQ(up.pValue(nullptr), &x);
    EXPECT_EQ(itemsOf(x), (List{2, 3}));
    down.pValue(nullptr);
    EXPECT_EQ(itemsOf(x), (List{1, 2}));
    EXPECT_FALSE(up.isPure());
}

TEST(ColumnWise, CallsTheBodyOnceForAVectorAndOncePerColumn) {
    static int calls;
    const auto body = [](const Value& v) {
        ++calls;
        return static_cast<double>(v.size());
    };
    const auto callsFor = [&](DoubleValue v) {
        calls = 0;
        ColumnWiseFuncD_Element element(variable(v), body);
        DoubleValue workspace;
        const Value& result = *element.pValue(&workspace);
        return std::pair(calls, result.size());
    };
    DoubleValue vector = row({1, 2, 3, 4, 5}), matrix = row({1, 2, 3, 4, 5, 6});
    matrix.setNrow(2);
    EXPECT_EQ(callsFor(vector), std::pair(1, 1));
    vector.transpose();
    EXPECT_EQ(callsFor(vector), std::pair(1, 1));
    EXPECT_EQ(callsFor(matrix), std::pair(3, 3));
    EXPECT_EQ(callsFor(DoubleValue()), std::pair(1, 1));
}

TEST(FullComparison, LooksAtFormShapeAndElements) {
    IntValue text, codes = integers({97, 98});
    text.assignString("ab");
    DoubleValue same = row({97, 98});
    const auto identical = [](Value& a, Value& b) {
        FullyCompareElement element(variable(a), variable(b));
        IntValue workspace;
        return asInt(*element.pValue(&workspace))[0];
    };
    EXPECT_EQ(identical(text, text), 1);
    EXPECT_EQ(identical(text, codes), 0);
    EXPECT_EQ(identical(codes, same), 1);
    same.transpose();
    EXPECT_EQ(identical(codes, same), 0);
    DoubleValue nan = row({NAN});
    EXPECT_EQ(identical(nan, nan), 0);
    ListValue list;
    list.assignDouble(1);
    ListValue other = list;
    EXPECT_EQ(identical(list, other), 1);
    other[0].get()->assignDouble(2);
    EXPECT_EQ(identical(list, other), 0);
    EXPECT_EQ(identical(list, codes), 0);
}

}  // namespace
}  // namespace vorpen
