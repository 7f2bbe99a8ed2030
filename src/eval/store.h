// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a result reaches a double variable: a number straight into its one
// element, an array by a copy or, where it was made for this, by moving it.

#include "eval/evaluatable.h"

namespace vorpen {

/// The variable becomes a number with a mark; nothing is allocated.
inline void storeNumber(DoubleValue& target, double x, int mark) {
    target.makeOne();
    target[0] = x;
    target.setNrow(1);
    target.setMark(mark);
}

/// Stores an answer. A value that stands in `workspace` is moved.
inline void storeOutcome(DoubleValue& target, const Outcome& outcome, DoubleValue& workspace) {
    if (outcome.isScalar())
        storeNumber(target, outcome.number, outcome.mark());
    else if (outcome.value() == &workspace)
        target.adopt(std::move(workspace));
    else
        copyIn(target, *outcome.value());
}

/// A 3-D array whose columns no longer fill its planes becomes a matrix.
inline void dropBrokenPlanes(Value& v) {
    if (v.form() != FORM_3D) return;
    const std::int64_t line = std::int64_t{v.planes()} * v.nrow();
    if (line < 1 || v.size() % line != 0) v.setMark(FORM_NUMERIC);
}

}  // namespace vorpen
