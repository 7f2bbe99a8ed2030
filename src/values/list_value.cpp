// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/list_value.h"

#include "base/errors.h"
#include "values/mathmatrix.h"

namespace vorpen {

void ListValue::assignSame(const Value& source) { fillOne(ListItem(newValueCopy(source))); }

void ListValue::assignString(std::string_view text) {
    setSizeShapeMark(1, 1, FORM_TEXT);
    auto item = std::make_unique<IntValue>();
    item->assignString(text);
    items()[0].set(std::move(item));
}

void ListValue::assignDouble(double x) { fillOne(ListItem(std::make_unique<DoubleValue>(x))); }

void ListValue::assignInt(int i) { fillOne(ListItem(std::make_unique<IntValue>(i))); }

void ListValue::stringItem(std::string& out, int i, int precision) const {
    out.clear();
    const Value* item = items()[i].get();
    if (!item || item->isEmpty()) return;
    Require(item->valueType() != LIST_VAL, "nested list: stringItem not yet implemented");
    // Rows one after the other, as the item would be written in brackets.
    std::string element;
    const int rows = item->nrow(), columns = item->ncol();
    for (int r = 0; r < rows; ++r) {
        if (r > 0) out += "; ";
        for (int c = 0; c < columns; ++c) {
            const int at = c * rows + r;
            if (item->isString()) {
                const int code = item->valueType() == INTEGER_VAL ? asInt(*item)[at]
                                                                  : truncateToInt(asDouble(*item)[at]);
                out += static_cast<char>(code);
                continue;
            }
            item->stringItem(element, at, precision);
            if (c > 0) out += ' ';
            out += element;
        }
    }
}

void ListValue::toString(std::string& out) const { out = "ListValue::toString not implemented yet"; }

Value& ListValue::appendItem(int type) {
    auto item = newValue(type);
    growTo(std::int64_t{size_} + 1);
    nrow_ = size_;
    items()[size_ - 1].set(std::move(item));
    return *items()[size_ - 1].get();
}

}  // namespace vorpen
