// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/evaluation_statements.h"

#include "base/errors.h"
#include "display/display.h"
#include "eval/indexing.h"
#include "eval/run_state.h"

namespace vorpen {
namespace {

/// The item that an expression of unknown type stands for.
Value& itemOf(Evaluatable& expression, std::string_view otherwise) {
    Require(expression.elementKind() == ElementKind::listItem, otherwise);
    return static_cast<ListItemElement&>(expression).fetchItem();
}

}  // namespace

void EvalStm::exe() {
    const int type = expression()->type();
    if (type == UNKNOWN_VAL) {
        itemOf(*expression(), "EvalStm: expression involving a list item");
        return;
    }
    Workspace workspace(type);
    expression()->evaluate(workspace.get());
}

void EvalAndDisplayStm::exe() {
    const int type = expression()->type();
    if (type == UNKNOWN_VAL) {
        runState().setAns(itemOf(*expression(), "EvalAndDisplayStm::exe not yet handling this case"));
    } else {
        Workspace workspace(type);
        Value* result = expression()->pValue(workspace.get());
        if (result == workspace.get())
            runState().moveToAns(*result);
        else
            runState().setAns(*result);
    }
    Display(runState().ans(), true, false, true);
}

void AssignAndDisplayStm::exe() {
    body().exe();
    runState().setAns(*value_);
    displayNamed(*value_, name_);
}

/// The result is on view and no more: it does not become the last answer.
void BreakPointStm::stopAfterExpression() {
    Evaluatable& expression = *body().expression();
    if (expression.type() == UNKNOWN_VAL)
        return runState().debugPause(
            line(), &itemOf(expression, "EvalStm: expression involving a list item"), function_);
    Workspace workspace(expression.type());
    runState().debugPause(line(), expression.pValue(workspace.get()), function_);
}

void BreakPointStm::exe() {
    if (!value_) return stopAfterExpression();
    body().exe();
    runState().setAns(*value_);
    runState().debugPause(line(), value_, function_);
}

}  // namespace vorpen
