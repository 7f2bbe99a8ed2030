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

void BreakPointStm::exe() {
    body().exe();
    if (value_) runState().setAns(*value_);
    if (runState().debugPause) runState().debugPause(line(), value_, name_);
}

}  // namespace vorpen
