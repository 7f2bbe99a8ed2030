// SPDX-License-Identifier: GPL-3.0-or-later

// Assignments by what a transcript cannot reach: where the elements lie, marks,
// code that changes the target while it is assigned to, and the last answer.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "base/errors.h"
#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/indexed_assignment.h"
#include "eval/run_state.h"

namespace vorpen {
namespace {

using Doubles = std::vector<double>;

DoubleValue row(std::initializer_list<double> items, int nrow = 1) {
    DoubleValue v;
    v.setSizeShapeMark(static_cast<int>(items.size()), nrow, 0);
    std::ranges::copy(items, v.data());
    return v;
}

Doubles elements(const Value& v) {
    const auto items = asDouble(v).items();
    return {items.begin(), items.end()};
}

/// An element that runs a piece of the test and answers a copy of an array.
class Ask final : public Evaluatable {
public:
    explicit Ask(std::function<DoubleValue()> answer) : answer_(std::move(answer)) {}
    Value* pValue(Value* workspace) override {
        workspace->copyFrom(answer_());
        return workspace;
    }
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }

private:
    std::function<DoubleValue()> answer_;
};

EvaluatablePtr ask(std::function<DoubleValue()> answer) { return std::make_unique<Ask>(std::move(answer)); }
EvaluatablePtr variable(Value& v) { return std::make_unique<ValueElement>(&v); }
EvaluatablePtr index(Value& v) { return std::make_unique<DoubleToIntElement>(variable(v)); }

bool liesInside(const DoubleValue& v) {
    const auto* begin = reinterpret_cast<const char*>(&v);
    const auto* element = reinterpret_cast<const char*>(v.data());
    return element >= begin && element < begin + sizeof(v);
}

template <class Action>
std::string messageOf(Action&& action) {
    try {
        action();
        return "none";
    } catch (const RuntimeError& error) {
        return error.message;
    } catch (const OperatorFailure& failure) {
        return std::string("operator ") + failure.code;
    }
}

// ---- whole variables

TEST(FastAssign, PutsANumberWithItsMarkIntoTheVariable) {
    DoubleValue x, y(3);
    y.setMark(FORM_BOOL);
    FastAssignStm(0, &x, variable(y)).exe();
    EXPECT_EQ(x[0], 3);
    EXPECT_EQ(x.nrow(), 1);
    EXPECT_EQ(x.mark(), FORM_BOOL);
    EXPECT_TRUE(liesInside(x));
}

TEST(FastAssign, ComputesStraightIntoTheVariable) {
    DoubleValue x = row({0, 0, 0, 0});
    const double* block = x.data();
    Value* given = nullptr;
    class Look final : public Evaluatable {
    public:
        explicit Look(Value*& seen) : seen_(seen) {}
        Value* pValue(Value* workspace) override {
            seen_ = workspace;
            asDouble(*workspace)[0] = 9;
            return workspace;
        }
        [[nodiscard]] int type() const override { return DOUBLE_VAL; }
        [[nodiscard]] bool uses(const Value*) const override { return false; }

    private:
        Value*& seen_;
    };
    FastAssignStm(0, &x, std::make_unique<Look>(given)).exe();
    EXPECT_EQ(given, &x);
    EXPECT_EQ(x.data(), block);
    EXPECT_EQ(x[0], 9);
}

TEST(Assign, KeepsTheTargetWhenTheRightSideFails) {
    DoubleValue x = row({1, 2, 3}), two = row({1, 2});
    ExpressionItems items;
    items.push_back({variable(x), OP_PLUS});
    items.push_back({variable(two), OP_END});
    AssignStm statement(0, &x, std::make_unique<SimpleExpression>(std::move(items), DOUBLE_VAL));
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "operator +");
    EXPECT_EQ(elements(x), Doubles({1, 2, 3}));
}

TEST(Assign, WidensIntegersWithShapeAndMark) {
    DoubleValue x;
    auto codes = std::make_unique<IntValue>();
    codes->assignString("ab");
    AssignStm(0, &x, std::make_unique<NumberElement>(std::move(codes))).exe();
    EXPECT_EQ(elements(x), Doubles({'a', 'b'}));
    EXPECT_EQ(x.mark(), FORM_STRING);
    AssignStm(0, &x, makeNumber(7)).exe();
    EXPECT_EQ(elements(x), Doubles({7}));
    EXPECT_EQ(x.mark(), FORM_NUMERIC);
}

TEST(OperatorAssign, KeepsTheMarkOfTheTarget) {
    DoubleValue s = row({97, 98}), one(1);
    s.setMark(FORM_STRING);
    AssignPlusDStm(0, &s, variable(one)).exe();
    EXPECT_EQ(elements(s), Doubles({98, 99}));
    EXPECT_EQ(s.mark(), FORM_STRING);
    AssignMinusDStm(0, &s, variable(s)).exe();
    EXPECT_EQ(elements(s), Doubles({0, 0}));
}

TEST(OperatorAssign, ScalarsByEveryOperator) {
    DoubleValue x(12), y(5);
    AssignPlusDStm(0, &x, variable(y)).exe();
    EXPECT_EQ(x[0], 17);
    AssignTimesDStm(0, &x, variable(y)).exe();
    EXPECT_EQ(x[0], 85);
    AssignMinusDStm(0, &x, variable(y)).exe();
    EXPECT_EQ(x[0], 80);
    AssignDivideDStm(0, &x, variable(y)).exe();
    EXPECT_EQ(x[0], 16);
    OpAssignIntStm(0, &x, makeNumber(0), OP_DIVIDE).exe();
    EXPECT_TRUE(std::isinf(x[0]));
}

TEST(OperatorAssign, AnIntegerArrayOnTheRightKeepsItsOddDifference) {
    DoubleValue x(2.5);
    auto integers = std::make_unique<IntValue>();
    integers->setSizeShapeMark(3, 1, 0);
    for (int i = 0; i < 3; ++i) (*integers)[i] = i + 1;
    OpAssignIntStm(0, &x, std::make_unique<NumberElement>(std::move(integers)), OP_MINUS).exe();
    EXPECT_EQ(elements(x), Doubles({-1.5, -0.5, 0.5}));
}

TEST(Grow, JoinsAVariableToItself) {
    DoubleValue x = row({1, 2});
    GrowAssignDStm(0, &x, variable(x), 'C').exe();
    EXPECT_EQ(elements(x), Doubles({1, 2, 1, 2}));
    GrowAssignDStm(0, &x, variable(x), 'S').exe();
    EXPECT_EQ(x.nrow(), 2);
    EXPECT_EQ(elements(x), Doubles({1, 1, 2, 2, 1, 1, 2, 2}));
}

TEST(Grow, AThreeDimensionalArrayWhosePlanesBreakBecomesAMatrix) {
    DoubleValue z = row({1, 2, 3, 4}, 2), column = row({5, 6}, 2);
    z.setMark(FORM_3D | 2 << 4);
    GrowAssignDStm(0, &z, variable(column), 'C').exe();
    EXPECT_EQ(z.mark(), FORM_NUMERIC);
    EXPECT_EQ(z.ncol(), 3);
}

TEST(ListAssign, AnItemOfTheListItselfSurvives) {
    ListValue list;
    list.setSizeShapeMark(2, 1, FORM_TEXT);
    list[0].set(std::make_unique<DoubleValue>(1));
    auto inner = std::make_unique<ListValue>();
    inner->assignDouble(7);
    list[1].set(std::move(inner));
    ListAssignStm(0, &list, std::make_unique<ListItemElement>(makeNumber(2), &list, UNKNOWN_VAL)).exe();
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0].get()->doubleValue(), 7);
    ListAssignStm(0, &list, std::make_unique<ListItemElement>(makeNumber(1), &list, UNKNOWN_VAL)).exe();
    EXPECT_EQ(list[0].get()->doubleValue(), 7);
}

TEST(ListAssign, RefusesUnknownTypesThatAreNoItems) {
    class Unknown final : public Evaluatable {
    public:
        Value* pValue(Value* workspace) override { return workspace; }
        [[nodiscard]] int type() const override { return UNKNOWN_VAL; }
        [[nodiscard]] bool uses(const Value*) const override { return false; }
    };
    ListValue list;
    ComplexValue w;
    DoubleValue x;
    EXPECT_EQ(messageOf([&] { ListAssignStm(0, &list, std::make_unique<Unknown>()).exe(); }),
              "ListAssignStm::exe not yet handling this case");
    EXPECT_EQ(messageOf([&] { GrowListStm(0, &list, std::make_unique<Unknown>(), 'C').exe(); }),
              "in list: cannot append a value of unknown type");
    EXPECT_EQ(messageOf([&] { ComplexAssignStm(0, &w, std::make_unique<Unknown>()).exe(); }),
              "rhs of unknown type could not be handled");
    EXPECT_EQ(messageOf([&] { CheckedAssignStm(0, &x, std::make_unique<Unknown>()).exe(); }),
              "incompatible types in assignment or return");
}

TEST(CheckedAssign, RefusesWhatDoesNotWiden) {
    DoubleValue x;
    IntValue n;
    ComplexValue w(std::complex<double>(1, 1)), target;
    EXPECT_EQ(messageOf([&] { CheckedAssignStm(0, &x, variable(w)).exe(); }),
              "incompatible types in assignment or return");
    EXPECT_EQ(messageOf([&] { CheckedAssignStm(0, &target, variable(w)).exe(); }),
              "this type of checked assignment not yet implemented");
    CheckedAssignStm(0, &x, makeNumber(4)).exe();
    EXPECT_EQ(x[0], 4);
}

TEST(ComplexAssign, WidensAndRefusesLists) {
    ComplexValue w;
    ListValue list;
    ComplexAssignStm(0, &w, makeNumber(2)).exe();
    EXPECT_EQ(w[0], std::complex<double>(2, 0));
    EXPECT_EQ(messageOf([&] { ComplexAssignStm(0, &w, variable(list)).exe(); }),
              "invalid type assigning to complex");
}

// ---- parts of variables

TEST(StoreElement, CostsNoMoreThanTheElement) {
    DoubleValue x = row({1, 2, 3}), k(2), v(9);
    const double* block = x.data();
    SingleIndexedAssignStm(0, &x, index(k), INDEX_ELEMENT, variable(v), '=').exe();
    EXPECT_EQ(elements(x), Doubles({1, 9, 3}));
    EXPECT_EQ(x.data(), block);
}

TEST(StoreElement, ATargetThatTheRightSideShrinksIsMeasuredAgain) {
    DoubleValue x = row({1, 2, 3}), k(3);
    SingleIndexedAssignStm statement(0, &x, index(k), INDEX_ELEMENT, ask([&] {
                                         x.clear();
                                         return DoubleValue(5);
                                     }),
                                     '=');
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "in lhs: index out of bounds");
}

TEST(StoreLines, ATargetThatTheRightSideShrinksIsMeasuredAgain) {
    DoubleValue m = row({1, 2, 3, 4}, 2), k(2);
    SingleIndexedAssignStm statement(0, &m, index(k), INDEX_ROW, ask([&] {
                                         m.setSizeShapeMark(1, 1, 0);
                                         return DoubleValue(5);
                                     }),
                                     '=');
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "in lhs: index out of bounds");
}

TEST(StoreAtSequence, ATargetThatTheRightSideShrinksIsMeasuredAgain) {
    DoubleValue x = row({1, 2, 3});
    SingleIndexed_SeqAssignStm statement(
        0, &x, std::make_unique<SequenceElement>(makeNumber(1), makeNumber(3), nullptr, INTEGER_VAL),
        INDEX_ELEMENT, ask([&] {
            x.clear();
            return DoubleValue(5);
        }));
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "in assignment: lhs index out of bounds");
}

TEST(StoreBlock, ATargetThatAnIndexShrinksIsMeasuredAgain) {
    DoubleValue m = row({1, 2, 3, 4}, 2), v(9);
    IndexedAssignStm statement(0, &m, makeNumber(2), std::make_unique<DoubleToIntElement>(ask([&] {
                                   m.setSizeShapeMark(1, 1, 0);
                                   return DoubleValue(1);
                               })),
                               variable(v), '=');
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "in lhs: lhs index out of bounds");
}

TEST(StoreBlock, ARightSideThatAnIndexShrinksIsMeasuredAgain) {
    DoubleValue m = row({1, 2, 3, 4}, 2), v = row({5, 6}), k = row({1, 2});
    IndexedAssignStm statement(0, &m, makeNumber(1), std::make_unique<DoubleToIntElement>(ask([&] {
                                   v.clear();
                                   return k;
                               })),
                               variable(v), '=');
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "in lhs: non-matching sizes");
}

TEST(StoreElement, GrowsWithZeros) {
    DoubleValue x = row({1, 2}), k(3), two = row({5, 6});
    SingleIndexedAssignStm statement(0, &x, index(k), INDEX_ELEMENT, variable(two), '=');
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "in assignment: non-matching sizes");
    EXPECT_EQ(elements(x), Doubles({1, 2, 0}));
    DoubleValue three(4), v(7);
    SingleIndexedAssignStm(0, &x, index(three), INDEX_ELEMENT, variable(v), 'P').exe();
    EXPECT_EQ(elements(x), Doubles({1, 2, 0, 7}));
}

TEST(StorePlanes, OperatorsActOnEveryElement) {
    DoubleValue z = row({1, 2, 3, 4, 5, 6, 7, 8}, 2), k(2), v = row({10, 20, 30, 40}, 2);
    z.setMark(FORM_3D | 2 << 4);
    SingleIndexedAssignStm(0, &z, index(k), INDEX_AUTO, variable(v), 'P').exe();
    EXPECT_EQ(elements(z), Doubles({1, 2, 3, 4, 15, 26, 37, 48}));
}

TEST(Erase, PlanesKeepTheFormUntilNoneIsLeft) {
    DoubleValue z = row({1, 2, 3, 4, 5, 6}, 1), k(2);
    z.setMark(FORM_3D | 3 << 4);
    ErasureStm(0, &z, index(k), INDEX_AUTO).exe();
    EXPECT_EQ(elements(z), Doubles({1, 2, 5, 6}));
    EXPECT_EQ(z.planes(), 2);
    auto both = std::make_unique<IntValue>();
    both->setSizeShapeMark(3, 1, 0);
    (*both)[0] = 2, (*both)[1] = 1, (*both)[2] = 2;
    ErasureStm(0, &z, std::make_unique<NumberElement>(std::move(both)), INDEX_AUTO).exe();
    EXPECT_TRUE(z.isEmpty());
    EXPECT_EQ(z.mark(), FORM_NUMERIC);
}

TEST(Erase, ListsAndComplexArrays) {
    ListValue list;
    list.setSizeShapeMark(2, 1, FORM_TEXT);
    list[0].set(std::make_unique<DoubleValue>(1));
    list[1].set(std::make_unique<DoubleValue>(2));
    DoubleValue k(1);
    ErasureStm(0, &list, index(k), INDEX_ELEMENT).exe();
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0].get()->doubleValue(), 2);
    ComplexValue w(std::complex<double>(1, 1));
    ErasureStm(0, &w, nullptr, INDEX_ELEMENT).exe();
    EXPECT_TRUE(w.isEmpty());
}

TEST(IndexedAny, IsForListsOnly) {
    ComplexValue w(std::complex<double>(1, 1));
    std::vector<EvaluatablePtr> indices;
    indices.push_back(makeNumber(1));
    IndexedAnyAssignStm statement(0, &w, std::move(indices), makeNumber(2));
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "?vorpen bug: IndexedAnyAssignStm called on non-list");
}

// ---- several targets

TEST(MultiAssign, TargetsThatTheCallReadsKeepTheirValuesWhenItFails) {
    DoubleValue a = row({1, 2}), b(3);
    std::vector<EvaluatablePtr> arguments;
    arguments.push_back(variable(a));
    GeneralBody body = [](std::span<FuncArgument> given, ExtraOutputs further, Value& out) {
        out.assignDouble(99);
        further->front()->assignDouble(98);
        if (given[0].value->size() == 2) raiseRuntimeError("no");
    };
    auto call = std::make_unique<GeneralFuncElement>(std::move(arguments), DOUBLE_VAL, body);
    MultiAssignStm statement(0, {&a, &b}, std::move(call));
    EXPECT_EQ(messageOf([&] { statement.exe(); }), "no");
    EXPECT_EQ(elements(a), Doubles({1, 2}));
    a = DoubleValue(1);
    statement.exe();
    EXPECT_EQ(a[0], 99);
    EXPECT_EQ(b[0], 98);
    EXPECT_TRUE(statement.uses(&b));
}

// ---- the last answer

TEST(LastAnswer, StartsAsAnEmptyDouble) {
    runState().reset();
    EXPECT_EQ(runState().ans().valueType(), DOUBLE_VAL);
    EXPECT_TRUE(runState().ans().isEmpty());
}

TEST(LastAnswer, AnotherKindFreesTheFormer) {
    runState().reset();
    DoubleValue x = row({1, 2, 3});
    runState().setAns(x);
    const Value* former = &runState().ans();
    runState().setAns(ComplexValue(std::complex<double>(0, 1)));
    EXPECT_TRUE(former->isEmpty());
    EXPECT_EQ(runState().ans().valueType(), COMPLEX_VAL);
    runState().reset();
}

TEST(LastAnswer, ItselfChangesNothing) {
    runState().reset();
    runState().setAns(row({1, 2, 3}));
    runState().setAns(runState().ans());
    EXPECT_EQ(elements(runState().ans()), Doubles({1, 2, 3}));
    runState().moveToAns(runState().ans());
    EXPECT_EQ(elements(runState().ans()), Doubles({1, 2, 3}));
    runState().reset();
}

TEST(LastAnswer, TakesOverAWorkspace) {
    runState().reset();
    DoubleValue workspace = row({1, 2, 3});
    const double* block = workspace.data();
    runState().moveToAns(workspace);
    EXPECT_EQ(asDouble(runState().ans()).data(), block);
    EXPECT_EQ(runState().ans().nrow(), 1);
    EXPECT_TRUE(workspace.isEmpty());
    runState().reset();
}

}  // namespace
}  // namespace vorpen
