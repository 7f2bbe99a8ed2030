// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/function_elements.h"

#include "base/errors.h"
#include "eval/elements.h"
#include "eval/indexing.h"

namespace vorpen {
namespace {

EvaluatablePtr widened(EvaluatablePtr child) {
    if (child && child->type() == INTEGER_VAL) return std::make_unique<IntToDoubleElement>(std::move(child));
    return child;
}

void shapeLike(Value& target, const Value& source) {
    if (&target != &source) target.setSizeShapeMark(source.size(), source.nrow(), source.mark());
}

/// A variable of doubles itself; a copy of anything else.
DoubleValue& changeable(Evaluatable& element, DoubleValue& copy) {
    if (auto* variable = dynamic_cast<ValueElement*>(&element); variable && variable->type() == DOUBLE_VAL)
        return asDouble(*variable->variable());
    Workspace local(element.type());
    copy.copyFrom(*element.pValue(local.get()));
    return copy;
}

/// Calls work(column, k) for each column of a matrix, read in place.
template <class T, class Work>
void forEachColumn(T& matrix, Work&& work) {
    const int rows = matrix.nrow(), columns = matrix.ncol();
    T scratch;
    for (int c = 0; c < columns; ++c) {
        scratch.viewOf(matrix.data() + std::int64_t{c} * rows, rows, rows, matrix.mark());
        work(scratch, c);
    }
    scratch.endView();
}

/// Fills a row with body(column) for each column of a matrix of any numeric
/// kind.
template <class Row, class Body>
void reduceColumns(Value& matrix, Row& row, Body body) {
    row.setShape(1, matrix.ncol());
    const auto store = [&](const Value& column, int c) { row[c] = body(column); };
    switch (matrix.valueType()) {
        case INTEGER_VAL: return forEachColumn(asInt(matrix), store);
        case DOUBLE_VAL: return forEachColumn(asDouble(matrix), store);
        case COMPLEX_VAL: return forEachColumn(asComplex(matrix), store);
        default: raiseRuntimeError("function may not be applied to a list");
    }
}

}  // namespace

// ---- element-wise functions

SimpleFuncElement::SimpleFuncElement(EvaluatablePtr inner, RealBody body, bool threadSafe)
    : With1Evaluatable(std::move(inner)), body_(body), threadSafe_(threadSafe) {
    program_ = BlockProgram::compile(*this);
}

Value* SimpleFuncElement::pValue(Value* workspace) { return valueOf(evaluate(workspace), workspace); }

Outcome SimpleFuncElement::evaluate(Value* workspace) { return program_->evaluate(workspace); }

Value* SimpleFuncIntElement::pValue(Value* workspace) {
    IntValue local;
    const Value* result = child(0)->pValue(&local);
    workspace->assign(*result);
    if (workspace->valueType() == INTEGER_VAL)
        for (int& x : asInt(*workspace).items()) x = body()(x);
    else if (workspace->valueType() == DOUBLE_VAL)
        for (double& x : asDouble(*workspace).items()) x = body()(truncateToInt(x));
    return workspace;
}

Value* SimpleFuncComplexElement::pValue(Value* workspace) {
    const Value& result = *child(0)->pValue(workspace);
    shapeLike(*workspace, result);
    auto& out = asComplex(*workspace);
    const auto& in = asComplex(result);
    for (int i = 0; i < out.size(); ++i) out[i] = body()(in[i]);
    return workspace;
}

Value* SimpleFuncCtoDElement::pValue(Value* workspace) {
    ComplexValue local;
    const auto& in = asComplex(*child(0)->pValue(&local));
    shapeLike(*workspace, in);
    auto& out = asDouble(*workspace);
    for (int i = 0; i < out.size(); ++i) out[i] = body()(in[i]);
    return workspace;
}

// ---- bodies with arrays

Value* DVal_DValFuncElement::pValue(Value* workspace) {
    const Value& in = *child(0)->pValue(workspace);
    body()(in, asDouble(*workspace));
    return workspace;
}

Value* DVal_IValFuncElement::pValue(Value* workspace) {
    Workspace local(child(0)->type());
    const Value& in = *child(0)->pValue(local.get());
    if (workspace->valueType() == INTEGER_VAL) {
        body()(in, asInt(*workspace));
        return workspace;
    }
    IntValue result;
    body()(in, result);
    workspace->assign(result);
    return workspace;
}

Outcome Value2ScalarI_Element::evaluate(Value*) {
    Workspace local(child(0)->type());
    return Outcome::scalar(body()(*child(0)->pValue(local.get())));
}

Outcome Value2ScalarD_Element::evaluate(Value*) {
    Workspace local(child(0)->type());
    return Outcome::scalar(body()(*child(0)->pValue(local.get())));
}

Outcome ColumnWiseFuncI_Element::evaluate(Value* workspace) {
    Workspace local(child(0)->type());
    Value& in = *child(0)->pValue(local.get());
    const int mark = logical_ ? FORM_BOOL : FORM_NUMERIC;
    if (in.isVector()) return Outcome::scalar(body()(in), mark);
    IntValue row;
    reduceColumns(in, row, body());
    row.setMark(mark);
    workspace->assign(row);
    return outcomeOf(workspace);
}

Outcome ColumnWiseFuncD_Element::evaluate(Value* workspace) {
    Workspace local(child(0)->type());
    Value& in = *child(0)->pValue(local.get());
    if (in.isVector()) return Outcome::scalar(body()(in));
    DoubleValue row;
    reduceColumns(in, row, body());
    workspace->assign(row);
    return outcomeOf(workspace);
}

// ---- other kinds

AnsFuncElement::AnsFuncElement(AnsBody body, EvaluatablePtr flag)
    : With1Evaluatable(std::move(flag)), body_(body), type_(body(0)->valueType()) {}

Value* AnsFuncElement::pValue(Value* workspace) {
    int flag = 0;
    if (child(0)) {
        Workspace local(child(0)->type());
        const Value& result = *child(0)->pValue(local.get());
        flag = result.isEmpty() ? 0 : result.intValue();
    }
    Value* answer = body_(flag);
    if (answer->valueType() == type_) return answer;
    // The answer has changed its kind since the line was compiled.
    workspace->assign(*answer);
    return workspace;
}

TwoArgFuncElement::TwoArgFuncElement(EvaluatablePtr first, EvaluatablePtr second, TwoArgBody body, bool pure)
    : With2Evaluatable(widened(std::move(first)), widened(std::move(second))), body_(body), pure_(pure) {}

Value* TwoArgFuncElement::pValue(Value* workspace) {
    const Value& first = *child(0)->pValue(workspace);
    if (!child(1)) {
        body_(first, nullptr, *workspace);
        return workspace;
    }
    DoubleValue local;
    body_(first, &asDouble(*child(1)->pValue(&local)), *workspace);
    return workspace;
}

template <class Out>
Value* ChangingFuncElement<Out>::pValue(Value* workspace) {
    DoubleValue copy;
    DoubleValue& subject = changeable(*child(0), copy);
    if (workspace->valueType() == type()) {
        body_(subject, static_cast<Out&>(*workspace));
    } else {
        Out result;
        body_(subject, result);
        workspace->assign(result);
    }
    return workspace;
}

template class ChangingFuncElement<DoubleValue>;
template class ChangingFuncElement<IntValue>;

ChangingTwoArgElement::ChangingTwoArgElement(EvaluatablePtr first, EvaluatablePtr second, ChangingTwoArgBody body)
    : With2Evaluatable(widened(std::move(first)), widened(std::move(second))), body_(body) {}

Value* ChangingTwoArgElement::pValue(Value* workspace) {
    DoubleValue copy, local;
    DoubleValue& subject = changeable(*child(0), copy);
    const DoubleValue* second = child(1) ? &asDouble(*child(1)->pValue(&local)) : nullptr;
    body_(subject, second, asDouble(*workspace));
    return workspace;
}

SimpleFunctorElement::SimpleFunctorElement(EvaluatablePtr parameters, EvaluatablePtr points, FunctorBody body)
    : With2Evaluatable(widened(std::move(parameters)), widened(std::move(points))), body_(body) {}

Value* SimpleFunctorElement::pValue(Value* workspace) {
    Require(child(1) != nullptr, "function missing a parameter");
    const auto& points = asDouble(*child(1)->pValue(workspace));
    DoubleValue local;
    const auto& parameters = asDouble(*child(0)->pValue(&local));
    // The parameters may have changed the variable that holds the points.
    shapeLike(*workspace, points);
    body_(parameters, points, asDouble(*workspace));
    workspace->setMark(FORM_NUMERIC);
    return workspace;
}

// ---- calls with any number of arguments

MultiInputOutput_Element::MultiInputOutput_Element(std::vector<EvaluatablePtr> arguments, int type)
    : arguments_(std::move(arguments)), type_(type) {}

bool MultiInputOutput_Element::uses(const Value* v) const {
    return std::any_of(arguments_.begin(), arguments_.end(), [v](const auto& a) { return a->uses(v); });
}

void MultiInputOutput_Element::evaluateArguments(std::span<FuncArgument> records, Workspaces& workspaces) {
    bool leading = true;
    for (std::size_t i = 0; i < arguments_.size(); ++i) {
        Evaluatable& argument = *arguments_[i];
        records[i].element = &argument;
        leading = leading && argument.elementKind() == ElementKind::functionReference;
        if (leading)
            records[i].function = &argument;
        else
            records[i].value = evaluateArgument(argument, workspaces);
    }
}

Value* GeneralFuncElement::evaluateArgument(Evaluatable& argument, Workspaces& workspaces) {
    if (argument.elementKind() != ElementKind::listItem || argument.type() != UNKNOWN_VAL)
        return MultiInputOutput_Element::evaluateArgument(argument, workspaces);
    // Bodies that take any argument take an item of any kind.
    const Value& item = static_cast<ListItemElement&>(argument).fetchItem();
    Value* copy = workspaces.add(item.valueType()).get();
    copy->copyFrom(item);
    return copy;
}

void GeneralFuncElement::run(ExtraOutputs extraOutputs, Value& out) {
    if (out.valueType() != type()) {
        // A target of several is a double, whatever the body writes.
        const std::unique_ptr<Value> result = newValue(type());
        run(extraOutputs, *result);
        out.copyFrom(*result);
        return;
    }
    withArguments([&](std::span<FuncArgument> arguments) { body_(arguments, extraOutputs, out); });
}

}  // namespace vorpen
