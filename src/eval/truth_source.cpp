// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/truth_source.h"

#include "eval/expression.h"

namespace vorpen {

TruthSource::TruthSource(Evaluatable& condition) : comparison_(dynamic_cast<ComparatorElement*>(&condition)) {
    if (comparison_) return;
    const auto* joint = dynamic_cast<const GeneralIntegerExpression*>(&condition);
    if (!joint) {
        number_ = NumberSource(condition);
        return;
    }
    // Only two comparisons: with more operands what is skipped depends on
    // their order, and a plain number on the right is tested untruncated.
    const ExpressionItems& items = joint->items();
    const int op = items.front().op;
    if (items.size() != 2 || (op != OP_AND_THEN && op != OP_OR_ELSE)) return;
    for (const ExpressionItem& item : items)
        if (!dynamic_cast<ComparatorElement*>(item.operand.get())) return;
    left_ = std::make_unique<TruthSource>(*items[0].operand);
    right_ = std::make_unique<TruthSource>(*items[1].operand);
    decidesAtOnce_ = op == OP_OR_ELSE;
}

TruthSource::Truth TruthSource::readOther() const {
    if (left_) {
        const Truth left = left_->read();
        return left == Truth::notKnown || left == Truth{decidesAtOnce_} ? left : right_->read();
    }
    double x;
    return number_.read(x) ? Truth{isTrue(x)} : Truth::notKnown;
}

}  // namespace vorpen
