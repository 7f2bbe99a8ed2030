// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/return_statement.h"

#include "base/errors.h"
#include "eval/assignment.h"
#include "eval/elements.h"
#include "eval/evaluation_statements.h"
#include "eval/run_state.h"
#include "eval/store.h"

namespace vorpen {

namespace {

constexpr const char* incompatible = "incompatable data type in return statement";

bool widens(int from, int to) { return from == to || (from < to && to <= COMPLEX_VAL); }

/// Stores a result of integer, double or unknown type in a double.
void storeReal(Evaluatable& expression, DoubleValue& lhs) {
    DoubleValue room;
    const Outcome result = expression.evaluate(&room);
    if (result.isScalar()) {
        lhs.assignDouble(result.number);
        lhs.setMark(result.mark());
    } else if (result.value() == &room) {
        lhs = std::move(room);
    } else {
        Require(result.value()->valueType() <= DOUBLE_VAL, incompatible);
        copyIn<Value>(lhs, *result.value());
    }
}

Value* emptyPlaceholder() {
    static DoubleValue empty;
    return &empty;
}

}  // namespace

ReturnStm::ReturnStm(int line, EvaluatablePtr expression, Value* lhs)
    : Statement(line, std::move(expression)), lhs_(lhs), number_(dynamic_cast<DoubleValue*>(lhs)) {
    if (number_ && this->expression()) source_ = NumberSource(*this->expression());
}

void ReturnStm::exe() {
    double x;
    if (source_.read(x)) {
        storeNumber(*number_, x, source_.mark());
    } else if (lhs_ && expression()) {
        const int type = expression()->type();
        const bool isReal = type <= DOUBLE_VAL || type == UNKNOWN_VAL;
        if (isReal && lhs_->valueType() == DOUBLE_VAL) {
            storeReal(*expression(), asDouble(*lhs_));
        } else {
            Require(widens(type, lhs_->valueType()), incompatible);
            Workspace room(type);
            copyIn(*lhs_, *expression()->pValue(room.get()));
        }
    }
    runState().stop();
}

void insertReturn(BlockStm& body, Value& output) {
    if (output.valueType() != DOUBLE_VAL)
        throw SyntaxError{"insertReturn: output Value type not implemented"};
    Block& statements = body.statements();
    if (statements.empty()) throw SyntaxError{"empty function"};
    StatementPtr& last = statements.back();
    if (dynamic_cast<const EvalStm*>(last.get())) {
        const int line = last->line();
        last = std::make_unique<ReturnStm>(line, last->takeExpression(), &output);
        return;
    }
    const bool keepsOutput = dynamic_cast<const AssignStm*>(last.get()) != nullptr;
    Value* result = keepsOutput ? &output : emptyPlaceholder();
    statements.push_back(
        std::make_unique<ReturnStm>(last->line(), std::make_unique<ValueElement>(result), &output));
}

}  // namespace vorpen
