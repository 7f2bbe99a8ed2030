// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/comparison.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "eval/indexing.h"
#include "eval/mask_program.h"

namespace vorpen {
namespace {

template <class Work>
void withComparison(int op, Work&& work) {
    switch (op) {
        case OP_LESS: return work([](auto a, auto b) { return a < b; });
        case OP_LESS_EQUAL: return work([](auto a, auto b) { return a <= b; });
        case OP_EQUAL: return work([](auto a, auto b) { return a == b; });
        case OP_NOT_EQUAL: return work([](auto a, auto b) { return a != b; });
        case OP_GREATER_EQUAL: return work([](auto a, auto b) { return a >= b; });
        default: return work([](auto a, auto b) { return a > b; });
    }
}

bool compareNumbers(int op, double a, double b) { return comparesTrue(acceptedOrderings(op), a, b); }

template <class L, class R, class F>
void compareArrays(const L& left, const R& right, IntValue& out, F f) {
    if (right.size() == 1) {
        const auto r = right[0];
        out.setSizeShapeMark(left.size(), left.nrow(), FORM_BOOL);
        for (int i = 0; i < out.size(); ++i) out[i] = f(left[i], r);
    } else if (left.size() == 1) {
        const auto l = left[0];
        out.setSizeShapeMark(right.size(), right.nrow(), FORM_BOOL);
        for (int i = 0; i < out.size(); ++i) out[i] = f(l, right[i]);
    } else {
        Require(left.nrow() == right.nrow() && left.ncol() == right.ncol(), "incompatible matrix sizes");
        out.setSizeShapeMark(left.size(), left.nrow(), FORM_BOOL);
        const int n = std::min({out.size(), left.size(), right.size()});
        for (int i = 0; i < n; ++i) out[i] = f(left[i], right[i]);
    }
}

void compareValues(int op, const Value& left, const Value& right, IntValue& out) {
    const bool li = left.valueType() == INTEGER_VAL, ri = right.valueType() == INTEGER_VAL;
    withComparison(op, [&](auto f) {
        if (li && ri)
            compareArrays(asInt(left), asInt(right), out, f);
        else if (li)
            compareArrays(asInt(left), asDouble(right), out, f);
        else if (ri)
            compareArrays(asDouble(left), asInt(right), out, f);
        else
            compareArrays(asDouble(left), asDouble(right), out, f);
    });
}

/// True for an operand whose values have no order: complex numbers and lists.
bool hasNoOrder(Evaluatable& operand) {
    if (operand.type() != UNKNOWN_VAL) return operand.type() > DOUBLE_VAL;
    auto* item = dynamic_cast<ListItemElement*>(&operand);
    return item && item->fetchItem().valueType() > DOUBLE_VAL;
}

/// One part of a comparison: a number, or an array that no later part can
/// change.
class Part {
public:
    Part(Evaluatable& element, bool laterPartsArePure) : workspace_(element.type()) {
        outcome_ = element.evaluate(workspace_.get());
        if (outcome_.isScalar() || outcome_.value() == workspace_.get() || laterPartsArePure) return;
        workspace_->assign(*outcome_.value());
        outcome_ = Outcome::of(workspace_.get());
    }
    [[nodiscard]] bool isScalar() const { return outcome_.isScalar(); }
    [[nodiscard]] double number() const { return outcome_.number; }
    [[nodiscard]] const Value& value() { return *valueOf(outcome_, workspace_.get()); }

private:
    Workspace workspace_;
    Outcome outcome_;
};

Outcome emptyTruth(Value* workspace) {
    workspace->setSizeShapeMark(0, 0, FORM_BOOL);
    return Outcome::of(workspace);
}

/// Hands over the truth values of a comparison.
Outcome deliver(IntValue& result, Value* workspace) {
    if (travelsAsScalar(result)) return outcomeOf(&result);
    if (workspace->valueType() == INTEGER_VAL)
        asInt(*workspace).adopt(std::move(result));
    else
        workspace->assign(result);
    return Outcome::of(workspace);
}

/// The value of a node of any kind, items of lists included.
const Value& anyValue(Evaluatable& element, Workspace& workspace) {
    if (auto* item = dynamic_cast<ListItemElement*>(&element); item && item->type() == UNKNOWN_VAL)
        return item->fetchItem();
    return *element.pValue(workspace.get());
}

bool sameShape(const Value& a, const Value& b) {
    return a.size() == b.size() && a.nrow() == b.nrow() && a.mark() == b.mark();
}

template <class T>
bool sameItems(const JMatrix<T>& a, const JMatrix<T>& b) {
    return sameShape(a, b) && std::equal(a.data(), a.data() + a.size(), b.data());
}

bool sameNumbers(const IntValue& a, const DoubleValue& b) {
    return a.form() == b.form() && a.nrow() == b.nrow() && a.size() == b.size() &&
           std::equal(a.data(), a.data() + a.size(), b.data());
}

/// For values that are no lists.
bool sameArrays(const Value& a, const Value& b) {
    if (a.valueType() == b.valueType()) {
        switch (a.valueType()) {
            case INTEGER_VAL: return sameItems<int>(asInt(a), asInt(b));
            case DOUBLE_VAL: return sameItems<double>(asDouble(a), asDouble(b));
            default: return sameItems<std::complex<double>>(asComplex(a), asComplex(b));
        }
    }
    if (a.valueType() == INTEGER_VAL && b.valueType() == DOUBLE_VAL) return sameNumbers(asInt(a), asDouble(b));
    if (a.valueType() == DOUBLE_VAL && b.valueType() == INTEGER_VAL) return sameNumbers(asInt(b), asDouble(a));
    return false;
}

bool identical(const Value& first, const Value& second) {
    if (first.valueType() != LIST_VAL) return sameArrays(first, second);
    // Pairs of items wait in a heap block and not on the stack, since lists
    // may be nested to any depth.
    std::vector<std::pair<const Value*, const Value*>> waiting{{&first, &second}};
    while (!waiting.empty()) {
        const auto [a, b] = waiting.back();
        waiting.pop_back();
        if (!a || !b) {
            if (a != b) return false;
        } else if (a->valueType() == LIST_VAL && b->valueType() == LIST_VAL) {
            if (!sameShape(*a, *b)) return false;
            const auto& x = static_cast<const ListValue&>(*a);
            const auto& y = static_cast<const ListValue&>(*b);
            for (int i = x.size() - 1; i >= 0; --i) waiting.emplace_back(x[i].get(), y[i].get());
        } else if (!sameArrays(*a, *b)) {
            return false;
        }
    }
    return true;
}

}  // namespace

unsigned acceptedOrderings(int op) {
    switch (op) {
        case OP_LESS: return ORDER_LESS;
        case OP_LESS_EQUAL: return ORDER_LESS | ORDER_EQUAL;
        case OP_EQUAL: return ORDER_EQUAL;
        case OP_NOT_EQUAL: return ORDER_LESS | ORDER_GREATER | ORDER_NONE;
        case OP_GREATER_EQUAL: return ORDER_GREATER | ORDER_EQUAL;
        default: return ORDER_GREATER;
    }
}

ComparatorElement::ComparatorElement(EvaluatablePtr a, int op1, EvaluatablePtr b, int op2, EvaluatablePtr c)
    : With3Evaluatable(std::move(a), std::move(b), std::move(c)),
      isMask_(MaskProgram::applies(*this)),
      op1_(op1),
      op2_(op2),
      accepted_(acceptedOrderings(op1)) {
    if (child(2)) return;
    first_ = NumberSource(*child(0));
    second_ = NumberSource(*child(1));
}

Value* ComparatorElement::pValue(Value* workspace) { return valueOf(evaluate(workspace), workspace); }

Outcome ComparatorElement::evaluate(Value* workspace) {
    bool truth;
    if (readTruth(truth)) return Outcome::scalar(truth, FORM_BOOL);
    double b;
    if (second_.isKnown() && child(0)->type() == DOUBLE_VAL && !first_.isKnown()) {
        DoubleValue local;
        const Outcome outcome = child(0)->evaluate(&local);
        if (outcome.isScalar() && second_.read(b))
            return Outcome::scalar(comparesTrue(accepted_, outcome.number, b), FORM_BOOL);
        Workspace room(child(1)->type());
        IntValue result;
        compareValues(op1_, *valueOf(outcome, &local), *child(1)->pValue(room.get()), result);
        return deliver(result, workspace);
    }
    if (isMask_) {
        const MaskStep step{this};
        MaskRun run({&step, 1});
        if (run.prepare()) return run.deliver(workspace);
    }
    return compareParts(workspace);
}

Outcome ComparatorElement::compareParts(Value* workspace) {
    Evaluatable* third = child(2);
    if (hasNoOrder(*child(0)) || hasNoOrder(*child(1)) || (third && hasNoOrder(*third)))
        return emptyTruth(workspace);
    const bool thirdIsPure = !third || third->isPure();
    Part a(*child(0), child(1)->isPure() && thirdIsPure);
    Part b(*child(1), thirdIsPure);
    if (a.isScalar() && b.isScalar()) {
        const bool first = compareNumbers(op1_, a.number(), b.number());
        if (!first || !third) return Outcome::scalar(first, FORM_BOOL);
    }
    IntValue result;
    compareValues(op1_, a.value(), b.value(), result);
    if (third && result.anyNonZero()) {
        Part c(*third, true);
        IntValue second, both;
        compareValues(op2_, b.value(), c.value(), second);
        compareArrays(result, second, both, [](int x, int y) { return x & y; });
        result.adopt(std::move(both));
    }
    return deliver(result, workspace);
}

Value* FullyCompareElement::pValue(Value* workspace) {
    Workspace first(child(0)->type()), second(child(1)->type());
    const Value* a = &anyValue(*child(0), first);
    if (a != first.get() && !child(1)->isPure()) {
        const auto copy = newValueCopy(*a);
        workspace->assignInt(identical(*copy, anyValue(*child(1), second)));
        return workspace;
    }
    workspace->assignInt(identical(*a, anyValue(*child(1), second)));
    return workspace;
}

}  // namespace vorpen
