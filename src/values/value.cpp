// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/value.h"

#include <new>

#include "base/errors.h"
#include "base/output.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

/// Levels of lists in a value that may become an item of another list: files
/// are read to 1000 levels, and copying and destroying take room on the stack
/// for each.
constexpr int mostListLevels = 999;

/// Counts the lists around a value while it is copied.
class ListLevel {
public:
    explicit ListLevel(const Value& value) : counts_(value.valueType() == LIST_VAL) {
        if (!counts_) return;
        Require(level_ < mostListLevels, "lists nested too deeply");
        ++level_;
    }
    ~ListLevel() {
        if (counts_) --level_;
    }
    ListLevel(const ListLevel&) = delete;
    ListLevel& operator=(const ListLevel&) = delete;

private:
    static inline constinit thread_local int level_ = 0;
    bool counts_;
};

}  // namespace

std::string_view formName(int form) {
    static constexpr std::string_view names[] = {"numeric", "bool",  "string", "complex", "key",  "---list",
                                                 "text",    "array", "set",    "stack",   "queue"};
    return form >= 0 && form < static_cast<int>(std::size(names)) ? names[form] : "---";
}

int Value::ncol3D() const {
    if (form() != FORM_3D) throw PlainFailure{"BUG: ncol3D called for non-3D value"};
    const std::int64_t rows = std::int64_t{planes()} * nrow_;
    return rows >= 1 ? static_cast<int>(size_ / rows) : 0;
}

int Value::dimension(int code) const {
    if (code < 0) return isVector() ? size_ : ncol();
    switch (code) {
        case INDEX_ELEMENT: return size_;
        case INDEX_ROW: return nrow_;
        case INDEX_COLUMN: return ncol();
        default: return form() == FORM_3D ? planes() : 1;
    }
}

double Value::doubleValue() const {
    if (type_ == DOUBLE_VAL) return asDouble(*this)[0];
    return type_ == INTEGER_VAL ? asInt(*this)[0] : 0.0;
}

int Value::intValue() const {
    if (type_ == INTEGER_VAL) return asInt(*this)[0];
    return type_ == DOUBLE_VAL ? truncateToInt(asDouble(*this)[0]) : 0;
}

void Value::setShape(int nrow, int ncol) {
    const std::int64_t wanted = std::int64_t{nrow} * ncol;
    if (wanted != size_) setSize(wanted);
    nrow_ = nrow;
}

std::unique_ptr<Value> newValue(int type) {
    switch (type) {
        case INTEGER_VAL: return std::make_unique<IntValue>();
        case COMPLEX_VAL: return std::make_unique<ComplexValue>();
        case LIST_VAL: return std::make_unique<ListValue>();
        case DOUBLE_VAL: break;
        default: output().print("variable of unknown type declared; double assumed", true, PrintMode::markup);
    }
    return std::make_unique<DoubleValue>();
}

std::unique_ptr<Value> newValueCopy(const Value& value) {
    const ListLevel level(value);
    auto copy = newHolder(value.valueType());
    copy->copyFrom(value);
    return copy;
}

std::unique_ptr<Value> newHolder(int staticType) {
    return newValue(staticType == UNKNOWN_VAL ? int{DOUBLE_VAL} : staticType);
}

}  // namespace vorpen
