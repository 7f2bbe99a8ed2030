// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/truth_source.h"

#include "eval/expression.h"

namespace vorpen {

std::optional<JointComparisons> JointComparisons::in(Evaluatable& condition) {
    const auto* joint = dynamic_cast<const GeneralIntegerExpression*>(&condition);
    if (!joint) return std::nullopt;
    const ExpressionItems& items = joint->items();
    const int op = items.front().op;
    if (items.size() != 2 || (op != OP_AND_THEN && op != OP_OR_ELSE)) return std::nullopt;
    for (const ExpressionItem& item : items)
        if (!dynamic_cast<ComparatorElement*>(item.operand.get())) return std::nullopt;
    return JointComparisons{*items[0].operand, *items[1].operand, op == OP_OR_ELSE};
}

TruthSource::TruthSource(Evaluatable& condition) : comparison_(dynamic_cast<ComparatorElement*>(&condition)) {
    if (comparison_) return;
    if (const auto joint = JointComparisons::in(condition)) {
        left_ = std::make_unique<TruthSource>(joint->left);
        right_ = std::make_unique<TruthSource>(joint->right);
        decidesAtOnce_ = joint->decidesAtOnce;
    } else {
        number_ = NumberSource(condition);
    }
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
