// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "eval/evaluatable.h"

namespace vorpen {

/// An operand and the operator behind it: the operator's code, OP_END for the
/// last.
struct ExpressionItem {
    EvaluatablePtr operand;
    int op;
};

using ExpressionItems = std::vector<ExpressionItem>;

}  // namespace vorpen
