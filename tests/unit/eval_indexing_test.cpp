// SPDX-License-Identifier: GPL-3.0-or-later

// Index elements on trees made by hand: what travels as a number, what stays
// within the array whatever the index is, and the protocol of sequences.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "base/errors.h"
#include "eval/elements.h"
#include "eval/indexing.h"

namespace vorpen {
namespace {

DoubleValue row(std::initializer_list<double> items, int nrow = 1) {
    DoubleValue v;
    v.setSizeShapeMark(static_cast<int>(items.size()), nrow, 0);
    std::ranges::copy(items, v.data());
    return v;
}

EvaluatablePtr variable(Value& v) { return std::make_unique<ValueElement>(&v); }
EvaluatablePtr truncated(Value& v) { return std::make_unique<DoubleToIntElement>(variable(v)); }
EvaluatablePtr constant(std::unique_ptr<Value> v) { return std::make_unique<NumberElement>(std::move(v)); }

EvaluatablePtr integers(std::initializer_list<int> items, int mark = 0) {
    auto v = std::make_unique<IntValue>();
    v->setSizeShapeMark(static_cast<int>(items.size()), 1, mark);
    std::ranges::copy(items, v->data());
    return constant(std::move(v));
}

/// An element that runs a piece of the test each time it is evaluated.
class Ask final : public Evaluatable {
public:
    explicit Ask(std::function<double()> answer) : answer_(std::move(answer)) {}
    Value* pValue(Value* workspace) override { return storeScalar(workspace, answer_(), 0); }
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }

private:
    std::function<double()> answer_;
};

EvaluatablePtr ask(std::function<double()> answer) { return std::make_unique<Ask>(std::move(answer)); }

std::vector<double> elements(const Value& v) {
    const auto items = asDouble(v).items();
    return {items.begin(), items.end()};
}

std::string messageOf(Evaluatable& element) {
    try {
        Workspace workspace(element.type());
        element.pValue(workspace.get());
        return "none";
    } catch (const RuntimeError& error) {
        return error.message;
    } catch (const OperatorFailure& failure) {
        return std::string("operator ") + failure.code;
    }
}

using Doubles = std::vector<double>;

// ---- one index

TEST(IndexedElementSingle, AnswersANumberWithTheMarkOfItsTarget) {
    DoubleValue x = row({10, 20, 30}), k(2.9);
    x.setMark(FORM_STRING);
    IndexedElementSingle element(truncated(k), &x, INDEX_ELEMENT);
    DoubleValue workspace;
    const Outcome outcome = element.evaluate(&workspace);
    ASSERT_TRUE(outcome.isScalar());
    EXPECT_EQ(outcome.number, 20);
    EXPECT_EQ(outcome.mark(), FORM_STRING);
    EXPECT_TRUE(workspace.isEmpty());
}

TEST(IndexedElementSingle, NoNumberReachesOutsideTheArray) {
    DoubleValue x = row({10, 20, 30}), k;
    IndexedElementSingle element(truncated(k), &x, INDEX_ELEMENT);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double outside :
         {0.0, -0.0, 0.999, 4.0, -1.0, 1e300, -1e300, 4294967297.0, infinity, -infinity, std::nan("")}) {
        k = DoubleValue(outside);
        EXPECT_EQ(messageOf(element), "index out of bounds") << outside;
    }
    k = DoubleValue(3.999);
    EXPECT_EQ(messageOf(element), "none");
}

TEST(IndexedElementSingle, ATruthValueIsAMask) {
    DoubleValue x = row({10, 20}), k(1), one(5);
    k.setMark(FORM_BOOL);
    IndexedElementSingle ofTwo(truncated(k), &x, INDEX_ELEMENT);
    EXPECT_EQ(messageOf(ofTwo), "boolean mask has wrong size");
    IndexedElementSingle ofOne(truncated(k), &one, INDEX_ELEMENT);
    DoubleValue workspace;
    EXPECT_EQ(elements(*ofOne.pValue(&workspace)), Doubles({5}));
}

TEST(IndexedElementSingle, AMaskSelectsWhateverIsNotZero) {
    DoubleValue x = row({10, 20, 30, 40});
    IndexedElementSingle element(integers({0, 5, 0, -1}, FORM_BOOL), &x, INDEX_ELEMENT);
    DoubleValue workspace;
    EXPECT_EQ(elements(*element.pValue(&workspace)), Doubles({20, 40}));
    EXPECT_EQ(workspace.nrow(), 1);
    IndexedElementSingle none(integers({0, 0, 0, 0}, FORM_BOOL), &x, INDEX_ELEMENT);
    EXPECT_TRUE(none.pValue(&workspace)->isEmpty());
    IndexedElementSingle longer(integers({1, 1, 1, 1, 1}, FORM_BOOL), &x, INDEX_ELEMENT);
    EXPECT_EQ(messageOf(longer), "boolean mask has wrong size");
}

TEST(IndexedElementSingle, AMaskOfAMatrixGivesAColumnAndAMaskOfColumnsColumns) {
    DoubleValue m = row({1, 2, 3, 4}, 2), workspace;
    IndexedElementSingle counted(integers({1, 0, 0, 1}, FORM_BOOL), &m, INDEX_ELEMENT);
    counted.pValue(&workspace);
    EXPECT_EQ(workspace.nrow(), 2);
    EXPECT_EQ(elements(workspace), Doubles({1, 4}));
    IndexedElementSingle columns(integers({0, 1}, FORM_BOOL), &m, INDEX_AUTO);
    EXPECT_EQ(elements(*columns.pValue(&workspace)), Doubles({3, 4}));
}

TEST(IndexedElementSingle, AnEmptyIndexGivesTheForm) {
    DoubleValue x = row({1, 2}), workspace = row({7, 8, 9});
    x.setMark(FORM_STRING);
    IndexedElementSingle element(integers({}), &x, INDEX_ELEMENT);
    const Value& result = *element.pValue(&workspace);
    EXPECT_TRUE(result.isEmpty());
    EXPECT_EQ(result.mark(), FORM_STRING);
}

TEST(IndexedElementSingle, TheCodeChoosesRowsColumnsAndPlanes) {
    DoubleValue m = row({1, 2, 3, 4}, 2), k(2), workspace;
    EXPECT_EQ(elements(*IndexedElementSingle(truncated(k), &m, INDEX_ROW).pValue(&workspace)),
              Doubles({2, 4}));
    EXPECT_EQ(elements(*IndexedElementSingle(truncated(k), &m, INDEX_COLUMN).pValue(&workspace)),
              Doubles({3, 4}));
    EXPECT_EQ(elements(*IndexedElementSingle(truncated(k), &m, INDEX_AUTO).pValue(&workspace)),
              Doubles({3, 4}));
    m.setMark(FORM_3D | 2 << 4);
    EXPECT_EQ(elements(*IndexedElementSingle(truncated(k), &m, INDEX_PLANE).pValue(&workspace)),
              Doubles({3, 4}));
    k = DoubleValue(3);
    IndexedElementSingle beyond(truncated(k), &m, INDEX_AUTO);
    EXPECT_EQ(messageOf(beyond), "operator (");
}

TEST(IndexedElementSingle, AListOfPlanesOfAnEmptyArrayIsRefused) {
    DoubleValue z, workspace;
    z.setNrow(2);
    z.setMark(FORM_3D | 2 << 4);
    IndexedElementSingle element(integers({1, 2}), &z, INDEX_PLANE);
    EXPECT_EQ(messageOf(element), "operator (");
}

TEST(IndexedElementSingle, TheIndexIsReadBeforeTheTargetIsMeasured) {
    DoubleValue x = row({1, 2, 3});
    IndexedElementSingle element(std::make_unique<DoubleToIntElement>(ask([&] {
                                     x.resize(1);
                                     return 3;
                                 })),
                                 &x, INDEX_ELEMENT);
    EXPECT_EQ(messageOf(element), "index out of bounds");
}

TEST(IndexedElementSingle, ComplexAndIntegerTargets) {
    ComplexValue w(std::complex<double>(1, 2)), workspace;
    DoubleValue k(1);
    IndexedElementSingle element(truncated(k), &w, INDEX_ELEMENT);
    EXPECT_EQ(asComplex(*element.pValue(&workspace))[0], std::complex<double>(1, 2));
    IntValue n;
    n.setSizeShapeMark(2, 1, 0);
    n[0] = 4, n[1] = 5;
    IndexedElementSingle ofIntegers(integers({2, 1}), &n, INDEX_ELEMENT);
    DoubleValue asDoubles;
    EXPECT_EQ(elements(*ofIntegers.pValue(&asDoubles)), Doubles({5, 4}));
}

TEST(ConstIndexElement, ChecksAtRunTime) {
    DoubleValue x = row({7, 8}), workspace;
    ConstIndexElement element(&x, 2);
    EXPECT_TRUE(element.evaluate(&workspace).isScalar());
    EXPECT_EQ(element.evaluate(&workspace).number, 8);
    x.resize(1);
    EXPECT_EQ(messageOf(element), "index exceeds array size");
    x.clear();
    EXPECT_EQ(messageOf(element), "index exceeds array size");
}

TEST(EndIndexElement, NeedsAWorkspaceOfNumbers) {
    DoubleValue m = row({1, 2, 3, 4, 5, 6}, 2);
    EndIndexElement columns(&m, INDEX_COLUMN);
    IntValue workspace;
    EXPECT_EQ(columns.pValue(&workspace)->intValue(), 3);
    EXPECT_EQ(columns.evaluate(&workspace).number, 3);
    ComplexValue wrong;
    EXPECT_THROW(columns.pValue(&wrong), RuntimeError);
    EXPECT_TRUE(columns.uses(&m));
}

// ---- two indices

TEST(IndexedElementDouble, AnswersANumber) {
    DoubleValue m = row({1, 2, 3, 4, 5, 6}, 2), r(2), c(3), workspace;
    IndexedElementDouble element(truncated(r), truncated(c), &m);
    ASSERT_TRUE(element.evaluate(&workspace).isScalar());
    EXPECT_EQ(element.evaluate(&workspace).number, 6);
}

TEST(IndexedElementDouble, NoNumberReachesOutsideTheMatrix) {
    DoubleValue m = row({1, 2, 3, 4, 5, 6}, 2), r, c;
    IndexedElementDouble element(truncated(r), truncated(c), &m);
    for (const double outside : {0.0, 3.0, -1.0, 1e300, std::nan("")}) {
        r = DoubleValue(outside);
        c = DoubleValue(1);
        EXPECT_EQ(messageOf(element), "row index out of bounds");
    }
    for (const double outside : {0.0, 4.0, 6.0, 1e300, std::nan("")}) {
        r = DoubleValue(1);
        c = DoubleValue(outside);
        EXPECT_EQ(messageOf(element), "column index out of bounds");
    }
    m.clear();
    r = c = DoubleValue(1);
    EXPECT_EQ(messageOf(element), "row index out of bounds");
}

TEST(IndexedElementDouble, EvaluatesEachIndexOnce) {
    DoubleValue m = row({1, 2, 3, 4}, 2), workspace;
    int rows = 0, columns = 0;
    IndexedElementDouble element(std::make_unique<DoubleToIntElement>(ask([&] { return ++rows; })),
                                 std::make_unique<DoubleToIntElement>(ask([&] { return ++columns; })), &m);
    EXPECT_EQ(element.evaluate(&workspace).number, 1);
    EXPECT_EQ(element.evaluate(&workspace).number, 4);
    EXPECT_EQ(messageOf(element), "row index out of bounds");
    EXPECT_EQ(rows, 3);
    EXPECT_EQ(columns, 3);
}

TEST(IndexedElementDouble, AMatrixThatAnIndexShrinksIsMeasuredAgain) {
    DoubleValue m = row({1, 2, 3, 4}, 2);
    IndexedElementDouble element(integers({2}), std::make_unique<DoubleToIntElement>(ask([&] {
                                     m.setSizeShapeMark(1, 1, 0);
                                     return 2;
                                 })),
                                 &m);
    EXPECT_EQ(messageOf(element), "row index out of bounds");
}

TEST(IndexedElementDouble, FormsOfTheIndices) {
    DoubleValue m = row({1, 2, 3, 4}, 2);
    IndexedElementDouble odd(integers({1}, FORM_COMPLEX), integers({1}), &m);
    EXPECT_EQ(messageOf(odd), "invalid index type");
    IndexedElementDouble mixed(integers({'a'}, FORM_STRING), integers({1}), &m);
    EXPECT_EQ(messageOf(mixed), "keyed indexing with inconsistent types");
    m.setMark(FORM_3D | 1 << 4);
    IndexedElementDouble planes(integers({1}), integers({1}), &m);
    EXPECT_EQ(messageOf(planes), "two indices but it is not a matrix");
}

// ---- items

TEST(ListItemElement, GivesItsItemToAWorkspaceThatHoldsIt) {
    ListValue list;
    list.setSizeShapeMark(3, 1, FORM_TEXT);
    list[0].set(std::make_unique<IntValue>(4));
    list[1].set(std::make_unique<ComplexValue>(std::complex<double>(0, 1)));
    DoubleValue k(1), workspace;
    ListItemElement element(truncated(k), &list, UNKNOWN_VAL);
    EXPECT_EQ(element.evaluate(&workspace).number, 4);
    EXPECT_EQ(element.pValue(&workspace)->doubleValue(), 4);
    k = DoubleValue(2);
    EXPECT_EQ(messageOf(element), "list item has incompatible data type");
    EXPECT_EQ(element.fetchItem().valueType(), COMPLEX_VAL);
    k = DoubleValue(3);
    EXPECT_EQ(messageOf(element), "in list item: the item has no value");
    k = DoubleValue(4);
    EXPECT_EQ(messageOf(element), "in list item: index out of bounds");
}

// ---- sequences

SequenceElement sequence(double start, double stop, double step, int type = DOUBLE_VAL) {
    return SequenceElement(makeNumber(start), makeNumber(stop), makeNumber(step), type);
}

TEST(SequenceElement, IsARunningSum) {
    DoubleValue workspace;
    sequence(0, 1, 0.1).pValue(&workspace);
    ASSERT_EQ(workspace.size(), 11);
    double sum = 0;
    for (int i = 0; i < 11; ++i, sum += 0.1) EXPECT_EQ(workspace[i], sum);
    sequence(1e15, 1e15 + 3, 1).pValue(&workspace);
    EXPECT_EQ(elements(workspace), Doubles({1e15, 1e15 + 1, 1e15 + 2, 1e15 + 3}));
}

TEST(SequenceElement, WholeNumbersBeyondExactSumsAreStillARunningSum) {
    DoubleValue workspace;
    const double start = 9007199254740990.0;  // 2^53 - 2
    sequence(start, start + 12, 3).pValue(&workspace);
    double sum = start;
    for (int i = 0; i < workspace.size(); ++i, sum += 3) EXPECT_EQ(workspace[i], sum);
}

TEST(SequenceElement, IntegersWrapAround) {
    IntValue workspace;
    sequence(2147483646, 2147483649.0, 1, INTEGER_VAL).pValue(&workspace);
    ASSERT_EQ(workspace.size(), 4);
    EXPECT_EQ(workspace[2], INT32_MIN);
}

TEST(SequenceElement, EmptyOnesLeaveNothingBehind) {
    DoubleValue workspace = row({1, 2, 3});
    workspace.setMark(FORM_STRING);
    const double infinity = std::numeric_limits<double>::infinity();
    for (SequenceElement* element :
         {new SequenceElement(sequence(2, 1, 1)), new SequenceElement(sequence(1, 2, 0)),
          new SequenceElement(sequence(1, infinity, 1)), new SequenceElement(sequence(1, std::nan(""), 1)),
          new SequenceElement(sequence(1, 2, -1))}) {
        const EvaluatablePtr owner(element);
        element->pValue(&workspace);
        EXPECT_EQ(workspace.size(), 0);
        EXPECT_EQ(workspace.nrow(), 0);
        EXPECT_EQ(workspace.mark(), FORM_NUMERIC);
    }
}

TEST(SequenceElement, AStepTowardsTheWrongSideWithinOneIsTheStart) {
    // (0.5 - 1) / 2 is truncated to 0.
    DoubleValue workspace;
    sequence(1, 0.5, 2).pValue(&workspace);
    EXPECT_EQ(elements(workspace), Doubles({1}));
}

TEST(SequenceElement, MoreThanAValueHoldsIsExhaustedMemory) {
    DoubleValue workspace;
    EXPECT_THROW(sequence(1, 1e12, 1).pValue(&workspace), std::bad_alloc);
    EXPECT_THROW((void)sequence(1, 2147483648.0, 1).readRange(), std::bad_alloc);
    EXPECT_EQ(sequence(1, 2147483647.0, 1).readRange().count, INT32_MAX);
}

TEST(SequenceElement, PartsAreEvaluatedInTheirOrder) {
    std::string order;
    const auto part = [&](char name, double x) {
        return ask([&order, name, x] {
            order += name;
            return x;
        });
    };
    SequenceElement element(part('a', 1), part('z', 7), part('s', 3), DOUBLE_VAL);
    DoubleValue workspace;
    element.pValue(&workspace);
    EXPECT_EQ(order, "asz");
    order.clear();
    (void)element.readIntegerBounds();
    EXPECT_EQ(order, "asz");
}

TEST(SequenceElement, EveryFailureOfAPartHasOneMessage) {
    constexpr const char* message = "sequence must have scalar start, step, stop";
    DoubleValue two = row({1, 2});
    SequenceElement array(variable(two), makeNumber(3), nullptr, DOUBLE_VAL);
    EXPECT_EQ(messageOf(array), message);
    SequenceElement colon(makeNumber(1), std::make_unique<OpenSequenceElement>(), nullptr, DOUBLE_VAL);
    EXPECT_EQ(messageOf(colon), message);
    SequenceElement fails(ask([]() -> double { throw OperatorFailure{'+'}; }), makeNumber(3), nullptr,
                          DOUBLE_VAL);
    EXPECT_EQ(messageOf(fails), message);
    EXPECT_THROW((void)fails.readIntegerBounds(), RuntimeError);
}

IndexedWithSequenceElement stretch(Value& target, double start, double stop, double step,
                                   int irc = INDEX_ELEMENT) {
    return IndexedWithSequenceElement(
        &target, irc, std::make_unique<SequenceElement>(sequence(start, stop, step, INTEGER_VAL)));
}

TEST(IndexedWithSequenceElement, StaysWithinTheArray) {
    DoubleValue x = row({1, 2, 3, 4, 5});
    constexpr const char* message = "in sequenced index: index out of bounds";
    const double bounds[][3] = {{0, 2, 1},  {-3, 2, 1}, {1, 6, 1},       {6, 1, -1},   {3, 0, -1},
                                {9, 1, -4}, {7, 7, 1},  {5, -1e300, -1}, {1, 1e300, 1}};
    for (const auto& b : bounds) {
        auto element = stretch(x, b[0], b[1], b[2]);
        EXPECT_EQ(messageOf(element), message) << b[0] << ':' << b[2] << ':' << b[1];
    }
    auto none = stretch(x, 5, 2, 1);
    EXPECT_EQ(messageOf(none), "none");
    auto zero = stretch(x, 1, 3, 0);
    EXPECT_EQ(messageOf(zero), "sequence with zero step");
}

TEST(IndexedWithSequenceElement, EveryKindAndDirection) {
    DoubleValue x = row({1, 2, 3, 4, 5}), workspace;
    EXPECT_EQ(elements(*stretch(x, 5, 1, -2).pValue(&workspace)), Doubles({5, 3, 1}));
    EXPECT_EQ(workspace.nrow(), 1);
    x.transpose();
    stretch(x, 2, 3, 1).pValue(&workspace);
    EXPECT_EQ(workspace.nrow(), 2);
    DoubleValue m = row({1, 2, 3, 4, 5, 6}, 2);
    m.setMark(FORM_STRING);
    EXPECT_EQ(elements(*stretch(m, 2, 1, -1, INDEX_ROW).pValue(&workspace)), Doubles({2, 1, 4, 3, 6, 5}));
    EXPECT_EQ(workspace.mark(), FORM_NUMERIC);
    EXPECT_EQ(elements(*stretch(m, 1, 3, 2, INDEX_COLUMN).pValue(&workspace)), Doubles({1, 2, 5, 6}));
    EXPECT_EQ(elements(*stretch(m, 2, 3, 1).pValue(&workspace)), Doubles({2, 3}));
    EXPECT_EQ(workspace.mark(), FORM_STRING);
    EXPECT_TRUE(stretch(m, 1, 1, 1, INDEX_PLANE).pValue(&workspace)->isEmpty());
    ListValue list, out;
    list.setSizeShapeMark(2, 1, FORM_TEXT);
    list[0].set(std::make_unique<DoubleValue>(1));
    list[1].set(std::make_unique<DoubleValue>(2));
    stretch(list, 2, 1, -1).pValue(&out);
    ASSERT_EQ(out.size(), 2);
    EXPECT_EQ(out[0].get()->doubleValue(), 2);
    EXPECT_NE(out[0].get(), list[1].get());
}

}  // namespace
}  // namespace vorpen
