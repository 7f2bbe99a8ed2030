// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The last result that was shown, which the language reads as `ans`. There is
// a value for each kind, so that compiled code may point at one of them while
// it is changed; one of the four is the answer. Each engine has its own.

#include <memory>

#include "values/value.h"

namespace vorpen {

class LastAnswer {
public:
    LastAnswer();
    LastAnswer(const LastAnswer&) = delete;
    LastAnswer& operator=(const LastAnswer&) = delete;

    /// An empty double before any answer.
    [[nodiscard]] Value& value() { return *values_[type_]; }
    /// Makes a copy of a value the last answer. A value of another kind frees
    /// the former answer.
    void set(const Value& v);
    /// The same, but takes over the contents of a value that is no longer
    /// needed.
    void take(Value& v);
    /// Back to the state before any answer, in new values.
    void reset();

private:
    void select(int type);

    int type_ = DOUBLE_VAL;
    std::unique_ptr<Value> values_[4];  ///< one for each kind
};

}  // namespace vorpen
