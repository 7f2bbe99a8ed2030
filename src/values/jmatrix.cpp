// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/jmatrix.h"

#include <cmath>

#include "base/errors.h"
#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {
namespace {

using Complex = std::complex<double>;

bool isNonZero(int x) { return x != 0; }
bool isNonZero(double x) { return x != 0; }
bool isNonZero(const Complex& z) { return z.real() != 0; }
bool isNonZero(const ListItem& item) { return item.itemSize() > 0; }

/// As isNonZero, but a missing item of a list counts as non-zero.
template <class T>
bool countsForAll(const T& item) {
    return isNonZero(item);
}
bool countsForAll(const ListItem& item) { return !item.get() || item.itemSize() > 0; }

int orderOf(int x) { return x; }
double orderOf(double x) { return x; }
double orderOf(const Complex& z) { return std::hypot(z.real(), z.imag()); }
int orderOf(const ListItem& item) { return item.itemSize(); }

template <class To, class From>
void convertItems(JMatrix<To>& to, const JMatrix<From>& from) {
    for (int i = 0; i < from.size(); ++i) to[i] = To(from[i]);
}

template <class T>
std::int64_t roomForGrowth(std::int64_t n) {
    // Growth by half keeps repeated appending linear in cost.
    return std::min(maxElements, n + n / 2);
}

}  // namespace

// ---- storage

template <class T>
void JMatrix<T>::release() noexcept {
    if (capacity_ > 0) {
        if constexpr (!isPlainItem<T>) std::destroy_n(data_, size_);
        freeItems(data_);
    } else if constexpr (!isPlainItem<T>) {
        inlineItem_ = T{};
    }
    data_ = nullptr;
    capacity_ = 0;
    size_ = 0;
}

template <class T>
void JMatrix<T>::steal(JMatrix& other) noexcept {
    size_ = other.size_;
    nrow_ = other.nrow_;
    mark_ = other.mark_;
    if (other.data_ == &other.inlineItem_) {
        inlineItem_ = std::move(other.inlineItem_);
        data_ = &inlineItem_;
        capacity_ = 0;
    } else {
        data_ = std::exchange(other.data_, nullptr);
        capacity_ = std::exchange(other.capacity_, 0);
    }
    other.data_ = nullptr;
    other.size_ = 0;
    other.nrow_ = 0;
}

template <class T>
void JMatrix<T>::allocate(std::int64_t n, std::int64_t capacity) {
    if (n == 1) {
        data_ = &inlineItem_;
    } else if (n > 1) {
        data_ = static_cast<T*>(allocateItems(capacity, sizeof(T)));
        capacity_ = capacity;
        if constexpr (!isPlainItem<T>) std::uninitialized_value_construct_n(data_, n);
    }
    size_ = static_cast<int>(n);
}

template <class T>
void JMatrix<T>::setSize(std::int64_t n) {
    if (n == size_) return;
    n = std::max<std::int64_t>(n, 0);
    if (n > maxElements) throw std::bad_alloc();
    // A block that is not much too long is used again: it is warm.
    if constexpr (isPlainItem<T>) {
        if (n > 1 && capacity_ >= n && capacity_ <= 2 * n) {
            size_ = static_cast<int>(n);
            return;
        }
    }
    release();
    allocate(n, n);
}

template <class T>
void JMatrix<T>::moveToNewBlock(std::int64_t n, std::int64_t capacity) {
    const std::int64_t kept = std::min<std::int64_t>(n, size_);
    if (n <= 1) {
        T first = n == 1 && kept == 1 ? std::move(data_[0]) : T{};
        const int nrow = nrow_, mark = mark_;
        release();
        nrow_ = nrow;
        mark_ = mark;
        allocate(n, n);
        if (n == 1) data_[0] = std::move(first);
        return;
    }
    T* block = static_cast<T*>(allocateItems(capacity, sizeof(T)));
    if constexpr (isPlainItem<T>) {
        if (kept > 0) std::memcpy(static_cast<void*>(block), data_, kept * sizeof(T));
    } else {
        std::uninitialized_move_n(data_, kept, block);
        std::uninitialized_value_construct_n(block + kept, n - kept);
    }
    release();
    data_ = block;
    capacity_ = capacity;
    size_ = static_cast<int>(n);
}

template <class T>
void JMatrix<T>::growTo(std::int64_t n) {
    if (n > maxElements) throw std::bad_alloc();
    if (capacity_ >= n) {
        if constexpr (!isPlainItem<T>) std::uninitialized_value_construct_n(data_ + size_, n - size_);
        size_ = static_cast<int>(n);
    } else {
        moveToNewBlock(n, std::max<std::int64_t>(roomForGrowth<T>(n), 4));
    }
}

template <class T>
void JMatrix<T>::resize(std::int64_t n) {
    n = std::max<std::int64_t>(n, 0);
    if (n == size_) return;
    const bool column = nrow_ == size_;
    if (n > size_) {
        growTo(n);
    } else {
        // A small shrink keeps the block, so that popping stays cheap until
        // the array has halved.
        const std::int64_t less = size_ - n;
        const bool replace = 2 * n > size_ ? less >= 100001 : less >= 4;
        if (replace || capacity_ == 0) {
            moveToNewBlock(n, n);
        } else {
            if constexpr (!isPlainItem<T>) std::destroy_n(data_ + n, less);
            size_ = static_cast<int>(n);
        }
    }
    if (column) nrow_ = size_;
}

template <class T>
void JMatrix<T>::fill(std::int64_t n, int nrow, const T& item) {
    const T copy = item;  // the item may be one of ours
    setSize(n);
    std::fill_n(data_, size_, copy);
    nrow_ = nrow;
}

template <class T>
void JMatrix<T>::clear() {
    release();
    nrow_ = 0;
}

template <class T>
SavedData JMatrix<T>::detachData() {
    SavedData saved;
    static_assert(sizeof(T) <= sizeof saved.inlineItem);
    saved.size = size_;
    saved.nrow = nrow_;
    saved.mark = mark_;
    if (data_ == &inlineItem_) {
        new (saved.inlineItem) T(std::move(inlineItem_));
        inlineItem_ = T{};
    } else {
        saved.heap = data_;
        saved.capacity = capacity_;
    }
    data_ = nullptr;
    capacity_ = 0;
    size_ = 0;
    return saved;
}

template <class T>
void JMatrix<T>::adoptData(SavedData& saved) {
    release();
    size_ = saved.size;
    nrow_ = saved.nrow;
    mark_ = saved.mark;
    if (saved.heap) {
        data_ = static_cast<T*>(std::exchange(saved.heap, nullptr));
        capacity_ = saved.capacity;
    } else if (size_ == 1) {
        T* item = std::launder(reinterpret_cast<T*>(saved.inlineItem));
        inlineItem_ = std::move(*item);
        if constexpr (!isPlainItem<T>) item->~T();
        data_ = &inlineItem_;
    }
    saved.size = 0;
}

template <class T>
void JMatrix<T>::dropData(SavedData& saved) const {
    if (saved.heap) {
        if constexpr (!isPlainItem<T>) std::destroy_n(static_cast<T*>(saved.heap), saved.size);
        freeItems(saved.heap);
    } else if (saved.size == 1) {
        if constexpr (!isPlainItem<T>) std::launder(reinterpret_cast<T*>(saved.inlineItem))->~T();
    }
    saved.heap = nullptr;
    saved.size = 0;
}

// ---- copies and conversion

template <class T>
void JMatrix<T>::copyElements(const JMatrix& other) {
    setSize(other.size_);
    if constexpr (isPlainItem<T>) {
        if (size_ > 0) std::memmove(static_cast<void*>(data_), other.data_, sizeof(T) * size_);
    } else {
        std::copy_n(other.data_, size_, data_);
    }
    nrow_ = other.nrow_;
    mark_ = other.mark_;
}

template <class T>
void JMatrix<T>::assignSame(const Value& source) {
    if (&source == this) return;
    if (source.valueType() != valueType()) throw OperatorFailure{'='};
    copyElements(static_cast<const JMatrix&>(source));
}

template <class T>
void JMatrix<T>::copyFrom(const Value& source) {
    const int mine = valueType(), its = source.valueType();
    if (mine == its) {
        if (&source != this) copyElements(static_cast<const JMatrix&>(source));
        return;
    }
    if (mine <= its || mine > COMPLEX_VAL) throw OperatorFailure{'='};
    setSizeShapeMark(source.size(), source.nrow(), source.mark());
    if constexpr (std::is_same_v<T, double>) {
        convertItems(*this, asInt(source));
    } else if constexpr (std::is_same_v<T, Complex>) {
        if (its == INTEGER_VAL)
            convertItems(*this, asInt(source));
        else
            convertItems(*this, asDouble(source));
    }
}

// ---- queries

template <class T>
int JMatrix<T>::itemSize() const {
    // A list reports the size of a pointer of the files it exchanges.
    return isPlainItem<T> ? static_cast<int>(sizeof(T)) : 4;
}

template <class T>
bool JMatrix<T>::anyNonZero() const {
    return std::any_of(data_, data_ + size_, [](const T& x) { return isNonZero(x); });
}

template <class T>
bool JMatrix<T>::allNonZero() const {
    return std::all_of(data_, data_ + size_, [](const T& x) { return countsForAll(x); });
}

template <class T>
int JMatrix<T>::indexOfMin() const {
    int best = 0;
    for (int i = 1; i < size_; ++i)
        if (orderOf(data_[i]) < orderOf(data_[best])) best = i;
    return best;
}

template <class T>
int JMatrix<T>::indexOfMax() const {
    int best = 0;
    for (int i = 1; i < size_; ++i)
        if (orderOf(data_[i]) > orderOf(data_[best])) best = i;
    return best;
}

template <class T>
int JMatrix<T>::firstNonZero() const {
    for (int i = 0; i < size_; ++i)
        if (isNonZero(data_[i])) return i + 1;
    return 0;
}

template <class T>
int JMatrix<T>::lastNonZero() const {
    for (int i = size_; i > 0; --i)
        if (isNonZero(data_[i - 1])) return i;
    return 0;
}

// ---- slices

template <class T>
void JMatrix<T>::getOne(int index, Value& target, int irc) const {
    auto& out = static_cast<JMatrix&>(target);
    const int code = irc < 0 ? chosenIndexCode() : irc;
    out.mark_ = mark_;
    switch (code) {
        case INDEX_ELEMENT: out.fillOne(data_[index - 1]); break;
        case INDEX_ROW: {
            const int columns = ncol();
            out.setShape(1, columns);
            for (int c = 0; c < columns; ++c) out.data_[c] = data_[std::int64_t{c} * nrow_ + index - 1];
            break;
        }
        case INDEX_COLUMN:
            out.setShape(nrow_, 1);
            std::copy_n(data_ + std::int64_t{index - 1} * nrow_, nrow_, out.data_);
            break;
        default: {
            if (index > planes()) throw OperatorFailure{'('};
            out.setShape(nrow_, ncol3D());
            std::copy_n(data_ + std::int64_t{index - 1} * out.size_, out.size_, out.data_);
        }
    }
}

template <class T>
void JMatrix<T>::getMany(IndexList indices, Value& target, int irc) const {
    auto& out = static_cast<JMatrix&>(target);
    const int n = static_cast<int>(indices.size());
    const int code = irc < 0 ? chosenIndexCode() : irc;
    out.mark_ = mark_;
    switch (code) {
        case INDEX_ELEMENT: {
            const bool row = nrow_ == 1 && size_ >= 2;
            out.setShape(row ? 1 : n, row ? n : 1);
            for (int k = 0; k < n; ++k) out.data_[k] = data_[indices[k] - 1];
            break;
        }
        case INDEX_ROW: {
            const int columns = ncol();
            out.setShape(n, columns);
            T* to = out.data_;
            for (int c = 0; c < columns; ++c)
                for (int k = 0; k < n; ++k) *to++ = data_[std::int64_t{c} * nrow_ + indices[k] - 1];
            break;
        }
        default:
            out.setShape(nrow_, n);
            for (int k = 0; k < n; ++k)
                std::copy_n(data_ + std::int64_t{indices[k] - 1} * nrow_, nrow_, out.data_ + std::int64_t{k} * nrow_);
    }
}

template <class T>
void JMatrix<T>::getBlock(IndexList rows, IndexList cols, Value& target) const {
    auto& out = static_cast<JMatrix&>(target);
    out.setShape(static_cast<int>(rows.size()), static_cast<int>(cols.size()));
    out.mark_ = mark_;
    T* to = out.data_;
    for (const int c : cols) {
        const T* column = data_ + std::int64_t{c - 1} * nrow_;
        for (const int r : rows) *to++ = column[r - 1];
    }
}

template <class T>
void JMatrix<T>::getItemForLoop(int i, Value& out) const {
    if constexpr (std::is_same_v<T, ListItem>)
        out.assign(*data_[i].get());
    else
        getOne(i + 1, out, INDEX_ROW);
}

// ---- stores and erasure

template <class T>
void JMatrix<T>::IndexedAssign(int irc, IndexList indices, const JMatrix& rhs) {
    const bool one = rhs.size_ == 1;
    const int n = static_cast<int>(indices.size());
    const auto storeBlocks = [&](std::int64_t blockSize, std::int64_t rhsBlock) {
        for (int k = 0; k < n; ++k) {
            T* block = data_ + (indices[k] - 1) * blockSize;
            if (one)
                std::fill_n(block, blockSize, rhs.data_[0]);
            else
                std::copy_n(rhs.data_ + k * rhsBlock, rhsBlock, block);
        }
    };
    switch (irc) {
        case INDEX_ELEMENT:
            if (one) {
                const T item = rhs.data_[0];
                for (const int index : indices) data_[index - 1] = item;
            } else {
                for (int k = 0; k < n; ++k) data_[indices[k] - 1] = rhs.data_[k];
            }
            break;
        case INDEX_ROW: {
            const int columns = ncol();
            for (int k = 0; k < n; ++k)
                for (int c = 0; c < columns; ++c)
                    data_[std::int64_t{c} * nrow_ + indices[k] - 1] =
                        rhs.data_[one ? 0 : std::int64_t{c} * rhs.nrow_ + k];
            break;
        }
        case INDEX_COLUMN: storeBlocks(nrow_, rhs.nrow_); break;
        case INDEX_PLANE: storeBlocks(std::int64_t{nrow_} * ncol3D(), std::int64_t{rhs.nrow_} * ncol3D()); break;
        default:
            if (one) throw PlainFailure{"invalid irc in in JMatrix<T>::IndexedAssign"};
    }
}

template <class T>
void JMatrix<T>::eraseElements(std::span<const int> sorted) {
    const int m = static_cast<int>(sorted.size());
    if (m == size_) return clear();
    const bool column = nrow_ == size_;
    // The items between the erased positions move down, stretch by stretch.
    T* to = data_ + sorted[0] - 1;
    for (int k = 0; k < m; ++k) {
        const int stretchEnd = k + 1 < m ? sorted[k + 1] - 1 : size_;
        to = std::move(data_ + sorted[k], data_ + stretchEnd, to);
    }
    const int left = size_ - m;
    if (m == 1 && capacity_ > 0) {
        if constexpr (!isPlainItem<T>) std::destroy_n(data_ + left, m);
        size_ = left;
    } else {
        moveToNewBlock(left, left);
    }
    if (column) nrow_ = left;
}

template <class T>
void JMatrix<T>::eraseColumns(std::span<const int> sorted) {
    const int columns = ncol(), m = static_cast<int>(sorted.size());
    T* to = data_ + std::int64_t{sorted[0] - 1} * nrow_;
    for (int k = 0; k < m; ++k) {
        const int stretchEnd = k + 1 < m ? sorted[k + 1] - 1 : columns;
        to = std::move(data_ + std::int64_t{sorted[k]} * nrow_, data_ + std::int64_t{stretchEnd} * nrow_, to);
    }
    const std::int64_t left = std::int64_t{columns - m} * nrow_;
    if (left != size_) moveToNewBlock(left, left);
}

template <class T>
void JMatrix<T>::erase(int irc, std::span<int> indices) {
    if (indices.empty()) return;
    std::sort(indices.begin(), indices.end());
    const auto last = std::unique(indices.begin(), indices.end());
    const std::span<const int> sorted = indices.first(last - indices.begin());
    switch (irc) {
        case INDEX_ELEMENT: eraseElements(sorted); break;
        case INDEX_ROW:
            // Rows may be left that hold nothing, of a matrix that lost its columns.
            if (size_ > 0) {
                transpose();
                eraseColumns(sorted);
            }
            if (size_ > 0)
                transpose();
            else
                nrow_ = 0;
            break;
        case INDEX_COLUMN: eraseColumns(sorted); break;
        default: assert(!"erase knows elements, rows and columns");
    }
}

template <class T>
void JMatrix<T>::transpose() {
    if (size_ < 2) return;
    const int columns = ncol();
    if (isVector()) {
        nrow_ = columns;
        return;
    }
    T* block = static_cast<T*>(allocateItems(size_, sizeof(T)));
    const int count = size_, rows = nrow_;
    // Tiles keep both the read and the written lines in the cache.
    constexpr int tile = 16;
    for (int c0 = 0; c0 < columns; c0 += tile)
        for (int r0 = 0; r0 < rows; r0 += tile)
            for (int c = c0; c < std::min(columns, c0 + tile); ++c)
                for (int r = r0; r < std::min(rows, r0 + tile); ++r)
                    new (block + std::int64_t{r} * columns + c) T(std::move(data_[std::int64_t{c} * rows + r]));
    release();
    data_ = block;
    capacity_ = count;
    size_ = count;
    nrow_ = columns;
}

template <class T>
void JMatrix<T>::conjugate() {
    if constexpr (std::is_same_v<T, Complex>)
        for (Complex& z : items()) z = Complex(z.real(), -z.imag());
}

// ---- joins

template <class T>
void JMatrix<T>::appendColumns(const JMatrix& right) {
    if (right.size_ == 0) return;
    if (size_ == 0) {
        const int mark = mark_;
        copyElements(right);
        mark_ = mark;
        return;
    }
    if (nrow_ != right.nrow_) throw OperatorFailure{','};
    const std::int64_t before = size_, added = right.size_;
    growTo(before + added);
    std::copy_n(right.data_, added, data_ + before);
}

template <class T>
void JMatrix<T>::appendRows(const JMatrix& right) {
    if (right.size_ == 0) return;
    if (size_ == 0) {
        copyElements(right);
        return;
    }
    const int columns = ncol();
    if (columns != right.ncol()) throw OperatorFailure{';'};
    if (columns == 1) {
        const std::int64_t before = size_, added = right.size_;
        growTo(before + added);
        std::copy_n(right.data_, added, data_ + before);
        nrow_ = size_;
        return;
    }
    JMatrix& left = *this;
    const std::int64_t total = std::int64_t{size_} + right.size_;
    if (total > maxElements) throw std::bad_alloc();
    T* block = static_cast<T*>(allocateItems(total, sizeof(T)));
    T* to = block;
    for (int c = 0; c < columns; ++c) {
        to = std::uninitialized_move_n(left.data_ + std::int64_t{c} * nrow_, nrow_, to).second;
        to = std::uninitialized_copy_n(right.data_ + std::int64_t{c} * right.nrow_, right.nrow_, to);
    }
    const int rows = nrow_ + right.nrow_;
    release();
    data_ = block;
    capacity_ = total;
    size_ = static_cast<int>(total);
    nrow_ = rows;
}

template class JMatrix<int>;
template class JMatrix<double>;
template class JMatrix<Complex>;
template class JMatrix<ListItem>;

}  // namespace vorpen
