// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/serial_form.h"

#include <algorithm>
#include <vector>

#include "base/little_endian.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

/// The fields in front of the elements.
struct Head {
    std::int32_t size = 0, nrow = 0, mark = 0, type = 0;
};

void writeHead(std::ostream& out, const Head& head) {
    for (const std::int32_t field : {head.size, head.nrow, head.mark, head.type})
        writeLittleEndian(out, field);
}

/// False when the stream ends first. Of a size below 0 only that is read.
bool readHead(std::istream& in, Head& head) {
    if (!readLittleEndian(in, head.size)) return false;
    return head.size < 0 || (readLittleEndian(in, head.nrow) && readLittleEndian(in, head.mark) &&
                             readLittleEndian(in, head.type));
}

bool isKind(std::int32_t type) { return type >= INTEGER_VAL && type <= LIST_VAL; }

/// The forms that a value of a kind may have. Numbers keep their form when
/// they are converted, so that all numeric kinds have the same ones.
bool hasForm(int type, int form) {
    if (type == LIST_VAL) return form == FORM_TEXT;
    return form == FORM_NUMERIC || form == FORM_BOOL || form == FORM_STRING || form == FORM_COMPLEX ||
           form == FORM_KEY || form == FORM_3D;
}

int mendedRows(std::int32_t size, std::int32_t nrow) {
    if (size == 0) return std::max(nrow, 0);
    return nrow >= 1 && size % nrow == 0 ? nrow : 1;
}

/// For rows that are mended already.
int mendedMark(std::int32_t size, int nrow, std::int32_t mark, int type) {
    const int form = mark & 15;
    if (!hasForm(type, form)) return type == LIST_VAL ? FORM_TEXT : FORM_NUMERIC;
    if (form != FORM_3D) return form;
    const int planes = mark >> 4;
    const bool fit = planes >= 1 && (size == 0 || size / nrow % planes == 0);
    return fit ? mark : FORM_NUMERIC;
}

/// The elements as plain numbers. A complex number is its two parts behind
/// each other, as the standard of the language has it.
template <class Item>
auto plainNumbers(Item* items, std::int64_t count) {
    const auto n = static_cast<std::size_t>(count);
    if constexpr (std::is_arithmetic_v<Item>) {
        return std::span<Item>(items, n);
    } else {
        using Part = std::conditional_t<std::is_const_v<Item>, const double, double>;
        return std::span<Part>(reinterpret_cast<Part*>(items), 2 * n);
    }
}

void writeAny(std::ostream& out, const Value& value);

template <class T>
void writeNumbers(std::ostream& out, const JMatrix<T>& array) {
    writeLittleEndian(out, plainNumbers(array.data(), array.size()));
}

void writeItems(std::ostream& out, const ListValue& list) {
    for (const ListItem& item : list.items()) {
        if (item.get())
            writeAny(out, *item.get());
        else
            writeHead(out, {0, 0, FORM_NUMERIC, DOUBLE_VAL});
    }
}

void writeAny(std::ostream& out, const Value& value) {
    writeHead(out, {value.size(), value.nrow(), value.mark(), value.valueType()});
    switch (value.valueType()) {
        case INTEGER_VAL: return writeNumbers(out, asInt(value));
        case DOUBLE_VAL: return writeNumbers(out, asDouble(value));
        case COMPLEX_VAL: return writeNumbers(out, asComplex(value));
        case LIST_VAL: return writeItems(out, static_cast<const ListValue&>(value));
    }
}

/// False when the stream ends first.
template <class T>
bool readNumbers(std::istream& in, JMatrix<T>& array, std::int64_t storedCount) {
    if (!readLittleEndian(in, plainNumbers(array.data(), array.size()))) return false;
    const std::int64_t beyond = storedCount - array.size();
    return beyond == 0 || in.seekg(beyond * static_cast<std::int64_t>(sizeof(T)), std::ios::cur);
}

std::optional<std::unique_ptr<Value>> readLevel(std::istream& in, int listsAround);

/// The list grows as its items arrive, since the count may be damaged.
bool readItems(std::istream& in, std::int32_t count, int listsAround, ListValue& list) {
    if (listsAround >= mostStoredLevels) return false;
    std::vector<std::unique_ptr<Value>> items;
    for (std::int32_t i = 0; i < count; ++i) {
        auto item = readLevel(in, listsAround + 1);
        if (!item) return false;
        items.push_back(*item ? std::move(*item) : newValue(DOUBLE_VAL));
    }
    list.setSize(count);
    for (std::int32_t i = 0; i < count; ++i) list[i].set(std::move(items[i]));
    return true;
}

std::optional<std::unique_ptr<Value>> readLevel(std::istream& in, int listsAround) {
    Head head;
    if (!readHead(in, head)) return std::nullopt;
    if (head.size < 0) return std::unique_ptr<Value>();
    std::unique_ptr<Value> value = newValue(head.type);
    const std::int32_t count = std::min(head.size, mostStoredElements);
    bool whole = false;
    if (value->valueType() == LIST_VAL) {
        whole = readItems(in, count, listsAround, static_cast<ListValue&>(*value));
    } else {
        value->setSize(count);
        switch (value->valueType()) {
            case INTEGER_VAL: whole = readNumbers(in, asInt(*value), head.size); break;
            case COMPLEX_VAL: whole = readNumbers(in, asComplex(*value), head.size); break;
            default: whole = readNumbers(in, asDouble(*value), head.size);
        }
    }
    if (!whole) return std::nullopt;
    value->setNrow(mendedRows(count, head.nrow));
    value->setMark(mendedMark(count, value->nrow(), head.mark, value->valueType()));
    return value;
}

}  // namespace

bool canBeStored(const Value& value) {
    // Level by level, without recursion.
    std::vector<const Value*> level{&value}, next;
    for (int levels = 1; levels <= mostStoredLevels; ++levels) {
        next.clear();
        for (const Value* v : level) {
            if (v->valueType() != LIST_VAL) continue;
            for (const ListItem& item : static_cast<const ListValue*>(v)->items())
                if (item.get() && item.get()->valueType() == LIST_VAL) next.push_back(item.get());
        }
        if (next.empty()) return true;
        level.swap(next);
    }
    return false;
}

void writeValue(std::ostream& out, const Value& value) { writeAny(out, value); }

std::optional<std::unique_ptr<Value>> readValue(std::istream& in) { return readLevel(in, 0); }

std::optional<ValueType> readValueType(std::istream& in) {
    Head head;
    if (!readHead(in, head)) return std::nullopt;
    return head.size >= 0 && isKind(head.type) ? static_cast<ValueType>(head.type) : DOUBLE_VAL;
}

}  // namespace vorpen
