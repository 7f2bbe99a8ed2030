// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The typed array under every value. A single element is stored inside the
// object, so that scalars cost no allocation; more elements live in one heap
// block. The block may be longer than the array: growth by appending reserves
// room in proportion, so that a loop that appends stays linear in cost, and a
// small shrink keeps the block.
//
// The operations trust their indices; the language's checks are made by the
// statements and index elements that call them.

#include <algorithm>
#include <cassert>
#include <complex>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "values/buffer.h"
#include "values/value.h"

namespace vorpen {

template <class T>
constexpr bool isPlainItem = std::is_trivially_copyable_v<T>;

template <class T>
class JMatrix : public Value {
public:
    ~JMatrix() override {
        if (!isPlainItem<T> || capacity_ > 0) release();
    }
    JMatrix(const JMatrix& other) : Value(other.valueType()) { copyElements(other); }
    JMatrix(JMatrix&& other) noexcept : Value(other.valueType()) { steal(other); }
    JMatrix& operator=(const JMatrix& other) {
        if (this != &other) copyElements(other);
        return *this;
    }
    JMatrix& operator=(JMatrix&& other) noexcept {
        if (this != &other) {
            release();
            steal(other);
        }
        return *this;
    }

    [[nodiscard]] T* data() { return data_; }
    [[nodiscard]] const T* data() const { return data_; }
    [[nodiscard]] std::span<T> items() { return {data_, static_cast<std::size_t>(size_)}; }
    [[nodiscard]] std::span<const T> items() const { return {data_, static_cast<std::size_t>(size_)}; }
    [[nodiscard]] T& operator[](int i) { return data_[i]; }
    [[nodiscard]] const T& operator[](int i) const { return data_[i]; }

    void copyFrom(const Value& source) override;
    void assignSame(const Value& source) override;
    void setSize(std::int64_t n) override;
    void resize(std::int64_t n) override;
    /// n copies of an item, in nrow rows; the mark stays.
    void fill(std::int64_t n, int nrow, const T& item);
    /// One element, one row; the mark stays.
    void fillOne(const T& item) {
        setSize(1);
        data_[0] = item;
        nrow_ = 1;
    }

    /// Size 1; rows, mark and the element are for the caller to set.
    void makeOne() {
        if (size_ == 1) return;
        if (isPlainItem<T> && capacity_ == 0) {
            data_ = &inlineItem_;
            size_ = 1;
        } else {
            setSize(1);
        }
    }
    /// True for a single element within the object, which can be dropped
    /// without freeing anything.
    [[nodiscard]] bool isInside() const { return data_ == &inlineItem_; }

    [[nodiscard]] int itemSize() const override;
    [[nodiscard]] bool anyNonZero() const override;
    [[nodiscard]] bool allNonZero() const override;
    [[nodiscard]] int indexOfMin() const override;
    [[nodiscard]] int indexOfMax() const override;
    [[nodiscard]] int firstNonZero() const override;
    [[nodiscard]] int lastNonZero() const override;

    [[nodiscard]] void* rawData() override { return data_; }
    [[nodiscard]] void* itemAddress(int i) override { return data_ + i; }

    void getOne(int index, Value& out, int irc) const override;
    void getMany(IndexList indices, Value& out, int irc) const override;
    void getBlock(IndexList rows, IndexList cols, Value& out) const override;
    void getItemForLoop(int i, Value& out) const override;
    void erase(int irc, std::span<int> indices) override;
    void transpose() override;
    void conjugate() override;
    void clear() override;
    SavedData detachData() override;
    void adoptData(SavedData& saved) override;
    void dropData(SavedData& saved) const override;

    /// Stores the right side at the indices; a right side of one element is
    /// repeated. The sizes have been checked by the caller.
    void IndexedAssign(int irc, IndexList indices, const JMatrix& rhs);

    /// Joins the right value's columns to the left; operator failure `,` when
    /// the rows differ.
    void appendColumns(const JMatrix& right);
    /// Joins the right value's rows below; operator failure `;` when the
    /// columns differ.
    void appendRows(const JMatrix& right);

    /// Takes elements, rows and mark of another array, which is left empty.
    void adopt(JMatrix&& other) noexcept { *this = std::move(other); }

    /// Reads somebody else's elements without owning them, until the next
    /// change of size or `endView`.
    void viewOf(T* elements, int size, int nrow, int mark) {
        release();
        data_ = elements;
        size_ = size;
        nrow_ = nrow;
        mark_ = mark;
    }
    void endView() {
        data_ = nullptr;
        size_ = 0;
    }

protected:
    explicit JMatrix(ValueType type) : Value(type) {}

    /// Reserves a block of at least n items with room to grow, keeping the
    /// present elements.
    void growTo(std::int64_t n);

private:
    void release() noexcept;
    void steal(JMatrix& other) noexcept;
    void copyElements(const JMatrix& other);
    void allocate(std::int64_t n, std::int64_t capacity);
    void moveToNewBlock(std::int64_t n, std::int64_t capacity);
    void eraseElements(std::span<const int> sorted);
    void eraseColumns(std::span<const int> sorted);

    T* data_ = nullptr;
    std::int64_t capacity_ = 0;  ///< of the heap block; 0 when there is none
    T inlineItem_{};
};

}  // namespace vorpen
