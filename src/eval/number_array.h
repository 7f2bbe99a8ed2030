// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An array written out of numbers, such as `[y[2]; a*(1-y[1])]` or `[0, 1; x, y]`.
// Joining pieces one after the other makes an array for each; where all of them
// turn out to be single numbers of the lane (number_source.h) they are stored
// straight into the place of the result. It is what the right side of a
// differential equation does at each call, in two thirds of the time.

#include <memory>
#include <vector>

#include "eval/expression_items.h"
#include "eval/number_source.h"

namespace vorpen {

class NumberArray {
public:
    /// Null where something else is joined, or a lot. The array refers to the
    /// operands.
    static std::unique_ptr<NumberArray> compile(const ExpressionItems& items);

    /// Makes the target the array; false, with nothing done, when a piece is
    /// no single number.
    [[nodiscard]] bool store(DoubleValue& target) const;

private:
    bool add(const ExpressionItems& items);

    /// What is longer spends its time on the numbers.
    static constexpr int mostElements = 32;

    std::vector<NumberSource> elements_;  ///< row after row, as written
    int rows_ = 1;
};

}  // namespace vorpen
