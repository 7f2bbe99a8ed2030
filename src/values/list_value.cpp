// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/list_value.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

bool holdsLists(const ListValue& list) {
    return std::ranges::any_of(list.items(), &ListItem::holdsList);
}

/// A copy of a list with all lists inside it.
std::unique_ptr<Value> copyNested(const ListValue& source) {
    auto top = std::make_unique<ListValue>();
    std::vector<std::pair<const ListValue*, ListValue*>> waiting{{&source, top.get()}};
    while (!waiting.empty()) {
        const auto [from, to] = waiting.back();
        waiting.pop_back();
        to->setSizeShapeMark(from->size(), from->nrow(), from->mark());
        for (int i = 0; i < from->size(); ++i) {
            const Value* item = (*from)[i].get();
            if ((*from)[i].holdsList()) {
                auto inner = std::make_unique<ListValue>();
                waiting.emplace_back(static_cast<const ListValue*>(item), inner.get());
                (*to)[i].set(std::move(inner));
            } else if (item) {
                (*to)[i].set(newValueCopy(*item));
            }
        }
    }
    return top;
}

}  // namespace

std::unique_ptr<Value> ListItem::copyOf(const ListItem& other) {
    if (other.holdsList()) return copyNested(static_cast<const ListValue&>(*other.value_));
    return other.value_ ? newValueCopy(*other.value_) : nullptr;
}

void ListItem::freeNested(std::unique_ptr<Value> list) noexcept {
    if (!holdsLists(static_cast<const ListValue&>(*list))) return;
    std::vector<std::unique_ptr<Value>> waiting;
    waiting.push_back(std::move(list));
    while (!waiting.empty()) {
        const std::unique_ptr<Value> emptied = std::move(waiting.back());
        waiting.pop_back();
        for (ListItem& item : static_cast<ListValue&>(*emptied).items())
            if (item.holdsList()) waiting.push_back(std::move(item.value_));
    }
}

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
