// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/index_reader.h"

#include "base/errors.h"
#include "eval/elements.h"

namespace vorpen {

IndexReader::IndexReader(Evaluatable& element)
    : source_(&element), fromDouble_(element.elementKind() == ElementKind::doubleToInt) {
    if (fromDouble_) source_ = &static_cast<DoubleToIntElement&>(element).inner();
    number_ = NumberSource(*source_);
}

void copyIndices(const Outcome& index, IntValue& list) {
    if (index.isScalar()) {
        list.fillOne(truncateToInt(index.number));
        list.setMark(index.mark());
        return;
    }
    const Value& value = *index.value();
    if (value.valueType() == INTEGER_VAL)
        copyIn(list, value);
    else if (value.valueType() == DOUBLE_VAL)
        list = IntValue(asDouble(value));
    else
        raiseRuntimeError("invalid type of index");
}

void maskToIndices(IntValue& mask) {
    int count = 0;
    const bool column = mask.nrow() > 1;
    for (int i = 0; i < mask.size(); ++i)
        if (mask[i] != 0) mask[count++] = i + 1;
    mask.resize(count);
    mask.setNrow(column ? count : 1);
    mask.setMark(FORM_NUMERIC);
}

bool indicesWithin(const IntValue& list, int d) {
    if (list.isEmpty()) return false;
    int least = INT32_MAX, most = INT32_MIN;
    for (const int k : list.items()) {
        least = std::min(least, k);
        most = std::max(most, k);
    }
    return least > 0 && most <= d;
}

}  // namespace vorpen
