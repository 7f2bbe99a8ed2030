// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A list is an array whose elements each own one other value of any kind. It
// has the shape fields, the index codes and the joins of every array, and no
// arithmetic.

#include "values/jmatrix.h"

namespace vorpen {

/// Owns a value, possibly none; copying makes a deep copy. However deeply lists
/// are nested, an item is copied and freed without recursion, so that no list
/// that fits memory can exhaust the stack.
class ListItem {
public:
    ListItem() = default;
    explicit ListItem(std::unique_ptr<Value> value) : value_(std::move(value)) {}
    ListItem(const ListItem& other) : value_(copyOf(other)) {}
    ListItem(ListItem&&) noexcept = default;
    ListItem& operator=(const ListItem& other) {
        if (this != &other) set(copyOf(other));
        return *this;
    }
    ListItem& operator=(ListItem&& other) noexcept {
        if (this != &other) set(std::move(other.value_));
        return *this;
    }
    ~ListItem() {
        if (holdsList()) freeNested(std::move(value_));
    }

    [[nodiscard]] Value* get() const { return value_.get(); }
    void set(std::unique_ptr<Value> value) {
        std::swap(value_, value);
        if (value && value->valueType() == LIST_VAL) freeNested(std::move(value));
    }
    [[nodiscard]] bool holdsList() const { return value_ && value_->valueType() == LIST_VAL; }
    [[nodiscard]] int itemSize() const { return value_ ? value_->size() : 0; }

private:
    static std::unique_ptr<Value> copyOf(const ListItem& other);
    static void freeNested(std::unique_ptr<Value> list) noexcept;
    std::unique_ptr<Value> value_;
};

class ListValue final : public JMatrix<ListItem> {
public:
    ListValue() : JMatrix(LIST_VAL) {}
    using JMatrix::operator=;

    void assignSame(const Value& source) override;
    void assignString(std::string_view text) override;
    void assignDouble(double x) override;
    void assignInt(int i) override;
    void stringItem(std::string& out, int i, int precision) const override;
    void toString(std::string& out) const override;
    void logicalNot() override {}
    void negate() override {}

    /// Appends an empty item of a kind; the list is a column after this.
    Value& appendItem(int type);
};

}  // namespace vorpen
