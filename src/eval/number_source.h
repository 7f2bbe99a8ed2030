// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where a number comes from when it needs no evaluation: a variable of doubles
// or a constant. Nodes that are asked for numbers all the time, conditions and
// indices, look here first and call nothing.

#include "eval/elements.h"

namespace vorpen {

class NumberSource {
public:
    NumberSource() = default;
    explicit NumberSource(const Evaluatable& node) {
        if (const auto* variable = dynamic_cast<const ValueElement*>(&node)) {
            if (variable->type() == DOUBLE_VAL) variable_ = static_cast<const DoubleValue*>(variable->variable());
        } else if (const auto* number = dynamic_cast<const NumberElement*>(&node)) {
            if (travelsAsScalar(number->value())) {
                constant_ = number->value().doubleValue();
                isConstant_ = true;
            }
        }
    }

    /// The number, or false when the node must be evaluated.
    bool read(double& x) const {
        if (isConstant_) {
            x = constant_;
            return true;
        }
        if (!variable_ || variable_->size() != 1 || variable_->nrow() != 1) return false;
        x = (*variable_)[0];
        return true;
    }
    [[nodiscard]] bool isKnown() const { return isConstant_ || variable_; }

private:
    const DoubleValue* variable_ = nullptr;
    double constant_ = 0;
    bool isConstant_ = false;
};

}  // namespace vorpen
