// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/assignment.h"

#include "base/errors.h"
#include "eval/store.h"

namespace vorpen {
namespace {

double applyOperator(int code, double x, double y) {
    switch (code) {
        case OP_PLUS: return x + y;
        case OP_MINUS: return x - y;
        case OP_TIMES: return x * y;
        default: return x / y;
    }
}

bool widens(int from, int to) { return from == to || (from < to && to < LIST_VAL); }

/// The widening of an integer right side, into a double target.
void assignIntegers(DoubleValue& target, Evaluatable& rhs) {
    IntValue workspace;
    const Outcome outcome = rhs.evaluate(&workspace);
    if (outcome.isScalar())
        storeNumber(target, outcome.number, outcome.mark());
    else
        target.copyFrom(*outcome.value());
}

/// Joins a double array; it may be the target itself.
void join(DoubleValue& target, const DoubleValue& value, char side) {
    if (side == 'C')
        target.appendColumns(value);
    else
        target.appendRows(value);
    dropBrokenPlanes(target);
}

/// The most frequent join: one number behind a row or below a column, which
/// needs no array of its own: two thirds of the time of a loop that grows an
/// array went into that. False, with nothing done, for any other join.
bool joinNumber(DoubleValue& target, double x, char side) {
    const int size = target.size();
    const bool isLine = side == 'C' ? target.nrow() == 1 : target.nrow() == size;
    if (size == 0 || !isLine || target.form() == FORM_3D) return false;
    target.resize(std::int64_t{size} + 1);
    target[size] = x;
    target.setNrow(side == 'C' ? 1 : size + 1);
    return true;
}

/// Joins a right side of any shape.
[[gnu::noinline]] void joinAny(DoubleValue& target, Evaluatable& rhs, int rhsType, char side) {
    if (rhsType == INTEGER_VAL) {
        IntValue integers;
        const Outcome outcome = rhs.evaluate(&integers);
        if (outcome.isScalar()) {
            DoubleValue value;
            storeNumber(value, outcome.number, outcome.mark());
            join(target, value, side);
        } else {
            join(target, DoubleValue(asInt(*outcome.value())), side);
        }
        return;
    }
    DoubleValue workspace;
    const Outcome outcome = rhs.evaluate(&workspace);
    join(target, asDouble(*valueOf(outcome, &workspace)), side);
}

}  // namespace

// ---- a double target

AssignStm::AssignStm(int line, DoubleValue* lhs, EvaluatablePtr rhs)
    : Statement(line, std::move(rhs)),
      lhs_(lhs),
      rhsType_(expression()->type()),
      rhsNumber_(*expression()) {}

void AssignStm::exe() {
    double x;
    if (rhsNumber_.read(x)) return storeNumber(*lhs_, x, rhsNumber_.mark());
    exeGeneral();
}

void AssignStm::exeGeneral() {
    if (rhsType_ == INTEGER_VAL) return assignIntegers(*lhs_, *expression());
    DoubleValue workspace;
    const Outcome outcome = expression()->evaluate(&workspace);
    storeOutcome(*lhs_, outcome, workspace);
}

void KeepingAssignStm::exe() {
    DoubleValue workspace(*lhs_);
    const Outcome outcome = expression()->evaluate(&workspace);
    storeOutcome(*lhs_, outcome, workspace);
}

void FastAssignStm::exe() {
    double x;
    if (rhsNumber_.read(x)) return storeNumber(*lhs_, x, rhsNumber_.mark());
    exeGeneral();
}

void FastAssignStm::exeGeneral() {
    if (rhsType_ == INTEGER_VAL) return assignIntegers(*lhs_, *expression());
    const Outcome outcome = expression()->evaluate(lhs_);
    if (outcome.isScalar())
        storeNumber(*lhs_, outcome.number, outcome.mark());
    else
        copyIn(*lhs_, *outcome.value());
}

template <int Code>
void OpAssignDStm<Code>::exe() {
    double x;
    if (lhs_->size() == 1 && rhsNumber_.read(x))
        (*lhs_)[0] = applyOperator(Code, (*lhs_)[0], x);
    else
        exeGeneral();
}

template <int Code>
void OpAssignDStm<Code>::exeGeneral() {
    DoubleValue workspace;
    const Outcome outcome = expression()->evaluate(&workspace);
    if (!outcome.isScalar())
        lhs_->operate(Code, asDouble(*outcome.value()));
    else if (lhs_->size() == 1)
        (*lhs_)[0] = applyOperator(Code, (*lhs_)[0], outcome.number);
    else
        lhs_->operate(Code, DoubleValue(outcome.number));
}

template class OpAssignDStm<OP_PLUS>;
template class OpAssignDStm<OP_MINUS>;
template class OpAssignDStm<OP_TIMES>;
template class OpAssignDStm<OP_DIVIDE>;

void OpAssignIntStm::exe() {
    double x;
    if (lhs_->size() == 1 && rhsNumber_.read(x))
        (*lhs_)[0] = applyOperator(code_, (*lhs_)[0], x);
    else
        exeGeneral();
}

void OpAssignIntStm::exeGeneral() {
    IntValue workspace;
    const Outcome outcome = expression()->evaluate(&workspace);
    if (!outcome.isScalar())
        lhs_->operateInt(code_, asInt(*outcome.value()));
    else if (lhs_->size() == 1)
        (*lhs_)[0] = applyOperator(code_, (*lhs_)[0], outcome.number);
    else
        lhs_->operateInt(code_, IntValue(static_cast<int>(outcome.number)));
}

void GrowAssignDStm::exe() {
    double x;
    if (rhsNumber_.read(x) && joinNumber(*lhs_, x, side_)) return;
    require(rhsType_ <= DOUBLE_VAL, "rhs type is incompatible with lhs", "assignment");
    joinAny(*lhs_, *expression(), rhsType_, side_);
}

// ---- targets of other kinds

ListItemElement* WithAnyValueStm::listItem() const {
    return expression()->elementKind() == ElementKind::listItem ? static_cast<ListItemElement*>(expression())
                                                                : nullptr;
}

void CheckedAssignStm::exe() {
    const int from = expression()->type(), to = target_->valueType();
    if (from == UNKNOWN_VAL && listItem()) {
        const Value& item = listItem()->fetchItem();
        require(widens(item.valueType(), to), "list item's type is incompatible with lhs");
        require(item.valueType() <= DOUBLE_VAL, "this type of checked assignment not yet implemented");
        target_->copyFrom(item);
        return;
    }
    require(widens(from, to), "incompatible types in assignment or return");
    require(from <= DOUBLE_VAL, "this type of checked assignment not yet implemented");
    Workspace workspace(from);
    target_->copyFrom(*expression()->pValue(workspace.get()));
}

void ComplexAssignStm::exe() {
    const int type = expression()->type();
    if (type == UNKNOWN_VAL) {
        Require(listItem() != nullptr, "rhs of unknown type could not be handled");
        const Value& item = listItem()->fetchItem();
        require(item.valueType() <= COMPLEX_VAL, "list item's type is incompatible with lhs", "assignment");
        target_->copyFrom(item);
        return;
    }
    Require(type != LIST_VAL, "invalid type assigning to complex");
    Workspace workspace(type);
    Value* result = expression()->pValue(workspace.get());
    if (type == COMPLEX_VAL && result == workspace.get())
        asComplex(*target_).adopt(std::move(asComplex(*result)));
    else
        target_->copyFrom(*result);
}

// ---- lists

std::unique_ptr<Value> WithListValueStm::evaluateItem(std::string_view unknownMessage,
                                                      std::string_view context) {
    const int type = expression()->type();
    if (type == UNKNOWN_VAL) {
        Require(expression()->elementKind() == ElementKind::listItem, unknownMessage, context);
        return newValueCopy(static_cast<ListItemElement*>(expression())->fetchItem());
    }
    std::unique_ptr<Value> item = newValue(type);
    const Value* result = expression()->pValue(item.get());
    return result == item.get() ? std::move(item) : newValueCopy(*result);
}

void WithListValueStm::evaluateList(ListValue& out) {
    const Value* result = expression()->pValue(&out);
    if (result != &out) out.copyFrom(*result);
}

void ListAssignStm::exe() {
    if (expression()->type() == LIST_VAL) {
        ListValue list;
        evaluateList(list);
        target_->adopt(std::move(list));
        return;
    }
    std::unique_ptr<Value> item = evaluateItem("ListAssignStm::exe not yet handling this case", {});
    if (item->valueType() == LIST_VAL) {
        target_->adopt(std::move(static_cast<ListValue&>(*item)));
        return;
    }
    target_->setSizeShapeMark(1, 1, FORM_TEXT);
    (*target_)[0].set(std::move(item));
}

void GrowListStm::exe() {
    // A list that nothing was assigned to yet has no form.
    target_->setMark(FORM_TEXT);
    if (expression()->type() == LIST_VAL) {
        ListValue list;
        evaluateList(list);
        if (side_ == 'C')
            target_->appendColumns(list);
        else
            target_->appendRows(list);
        return;
    }
    Require(target_->isVector(), "an array cannot grow by only one item", "list");
    std::unique_ptr<Value> item = evaluateItem("cannot append a value of unknown type", "list");
    target_->appendItem(item->valueType());
    (*target_)[target_->size() - 1].set(std::move(item));
}

// ---- several targets

MultiAssignStm::MultiAssignStm(int line, std::vector<Value*> targets, EvaluatablePtr call)
    : Statement(line, std::move(call)),
      first_(targets.front()),
      outputs_(targets.begin() + 1, targets.end()),
      readsTargets_(expression()->uses(first_)) {
    for (const Value* output : outputs_) readsTargets_ = readsTargets_ || expression()->uses(output);
}

bool MultiAssignStm::uses(const Value* v) const {
    return v == first_ || std::find(outputs_.begin(), outputs_.end(), v) != outputs_.end() ||
           Statement::uses(v);
}

void MultiAssignStm::runAside() {
    std::vector<std::unique_ptr<Value>> copies;
    std::vector<Value*> further;
    for (const Value* output : outputs_) {
        copies.push_back(newValueCopy(*output));
        further.push_back(copies.back().get());
    }
    std::unique_ptr<Value> first = newValueCopy(*first_);
    call().run(&further, *first);
    first_->copyFrom(*first);
    for (std::size_t i = 0; i < outputs_.size(); ++i) outputs_[i]->copyFrom(*further[i]);
}

void MultiAssignStm::exe() {
    if (readsTargets_)
        runAside();
    else
        call().run(&outputs_, *first_);
}

}  // namespace vorpen
