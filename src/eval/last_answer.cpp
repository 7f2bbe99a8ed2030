// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/last_answer.h"

namespace vorpen {

LastAnswer::LastAnswer() { reset(); }

void LastAnswer::reset() {
    type_ = DOUBLE_VAL;
    for (int type = INTEGER_VAL; type <= LIST_VAL; ++type) values_[type] = newValue(type);
}

void LastAnswer::select(int type) {
    if (type == type_) return;
    values_[type_]->clear();
    type_ = type;
}

void LastAnswer::set(const Value& v) {
    Value& answer = *values_[v.valueType()];
    if (&answer != &v) answer.copyFrom(v);
    select(v.valueType());
}

void LastAnswer::take(Value& v) {
    Value& answer = *values_[v.valueType()];
    if (&answer != &v) {
        SavedData contents = v.detachData();
        answer.adoptData(contents);
    }
    select(v.valueType());
}

}  // namespace vorpen
