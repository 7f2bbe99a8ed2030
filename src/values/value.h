// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Every datum of the language is a Value: a variable, a constant, an
// intermediate result, an item of a list. There are four kinds, all arrays:
// integers (32 bits), doubles, complex numbers and lists. A scalar is an array
// of one element, a string an array of character codes with the string mark, a
// truth value a number with the boolean mark. Values own their elements and
// are never shared: a copy copies the elements.
//
// The record is small and the same for all kinds: size, rows, mark, elements.
// Elements lie column after column. The record fields are kept here, in the
// abstract root, so that asking for a size or a kind costs no virtual call.

#include <complex>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vorpen {

/// The kind of a value, in widening order: a lower numeric kind converts to a
/// higher one without loss of meaning.
enum ValueType : int { INTEGER_VAL = 0, DOUBLE_VAL = 1, COMPLEX_VAL = 2, LIST_VAL = 3 };

/// A static type only: the kind is not known until run time. No value has it.
inline constexpr int UNKNOWN_VAL = 4;

/// What the numbers of a value stand for: the low four bits of its mark.
enum Form : int {
    FORM_NUMERIC = 0,
    FORM_BOOL = 1,
    FORM_STRING = 2,
    FORM_COMPLEX = 3,
    FORM_KEY = 4,
    FORM_TEXT = 6,   ///< a list of strings
    FORM_3D = 8,     ///< the number of planes stands above the low four bits
};

/// The name that a type query shows for each form 0 to 10.
std::string_view formName(int form);

/// What an index selects.
enum IndexCode : int {
    INDEX_AUTO = -1,  ///< chosen by the value: a plane, an element, or a column
    INDEX_ELEMENT = 0,
    INDEX_ROW = 1,
    INDEX_COLUMN = 2,
    INDEX_PLANE = 3,
};

/// Indices counted from 1.
using IndexList = std::span<const int>;

/// The contents of a value while they are kept elsewhere, as in the frame of a
/// recursive call. It does not know the kind: it goes back to the value it
/// came from, or is dropped by one of that kind.
struct SavedData {
    void* heap = nullptr;
    std::int64_t capacity = 0;
    alignas(16) unsigned char inlineItem[16] = {};
    int size = 0, nrow = 0, mark = 0;
};

class Value {
public:
    virtual ~Value() = default;

    [[nodiscard]] ValueType valueType() const { return type_; }
    [[nodiscard]] int size() const { return size_; }
    [[nodiscard]] int nrow() const { return nrow_; }
    [[nodiscard]] int mark() const { return mark_; }
    [[nodiscard]] int form() const { return mark_ & 15; }
    [[nodiscard]] int planes() const { return mark_ >> 4; }
    void setNrow(int nrow) { nrow_ = nrow; }
    void setMark(int mark) { mark_ = mark; }

    /// size / nrow, or 0 without rows.
    [[nodiscard]] int ncol() const { return nrow_ >= 1 ? size_ / nrow_ : 0; }
    /// Columns of one plane of a 3-D value; any other form is an internal fault.
    [[nodiscard]] int ncol3D() const;
    /// ncol, or ncol3D for a 3-D value.
    [[nodiscard]] int columns() const { return form() == FORM_3D ? ncol3D() : ncol(); }
    [[nodiscard]] bool isVector() const { return nrow_ == 1 || size_ == nrow_; }
    [[nodiscard]] bool isEmpty() const { return size_ == 0; }
    [[nodiscard]] bool isScalar() const { return size_ == 1; }
    [[nodiscard]] bool isBool() const { return form() == FORM_BOOL; }
    [[nodiscard]] bool isString() const { return form() == FORM_STRING; }
    [[nodiscard]] bool isNumericKind() const { return type_ != LIST_VAL; }

    /// The length that an index of this code counts up to, also what `end`
    /// stands for: below 0 the length along a vector or the columns of a
    /// matrix, 0 the size, 1 the rows, 2 the columns, 3 the planes.
    [[nodiscard]] int dimension(int code) const;
    /// The code that INDEX_AUTO stands for here.
    [[nodiscard]] int chosenIndexCode() const {
        return form() == FORM_3D ? INDEX_PLANE : isVector() ? INDEX_ELEMENT : INDEX_COLUMN;
    }

    /// The first element as a double; 0 for complex values and lists. The
    /// value must not be empty.
    [[nodiscard]] double doubleValue() const;
    /// The first element as an integer, truncated; 0 for complex values and
    /// lists. The value must not be empty.
    [[nodiscard]] int intValue() const;

    /// Assignment with conversion; fails with operator failure `=` where the
    /// source does not widen to this kind.
    Value& assign(const Value& source) {
        copyFrom(source);
        return *this;
    }
    virtual void copyFrom(const Value& source) = 0;
    /// A copy of a value of the same kind.
    virtual void assignSame(const Value& source) = 0;
    /// Becomes a string: one row of character codes, each taken as a signed byte.
    virtual void assignString(std::string_view text) = 0;
    /// Becomes a scalar without mark.
    virtual void assignDouble(double x) = 0;
    virtual void assignInt(int i) = 0;

    /// nrow by ncol; the elements are undefined unless the size stays.
    void setShape(int nrow, int ncol);
    virtual void setSize(std::int64_t n) = 0;
    void setSizeShapeMark(std::int64_t size, int nrow, int mark) {
        setSize(size);
        nrow_ = nrow;
        mark_ = mark;
    }
    /// Keeps the leading elements; a column vector stays one.
    virtual void resize(std::int64_t n) = 0;

    [[nodiscard]] virtual int itemSize() const = 0;
    [[nodiscard]] virtual bool anyNonZero() const = 0;
    [[nodiscard]] virtual bool allNonZero() const = 0;
    /// Position from 0 of the first extreme; 0 for an empty value.
    [[nodiscard]] virtual int indexOfMin() const = 0;
    [[nodiscard]] virtual int indexOfMax() const = 0;
    /// Position from 1, or 0 if there is none.
    [[nodiscard]] virtual int firstNonZero() const = 0;
    [[nodiscard]] virtual int lastNonZero() const = 0;

    /// Text of element i (from 0) with so many significant digits.
    virtual void stringItem(std::string& out, int i, int precision) const = 0;
    /// The elements read as character codes, row after row.
    virtual void toString(std::string& out) const = 0;
    [[nodiscard]] std::string text() const {
        std::string result;
        toString(result);
        return result;
    }

    [[nodiscard]] virtual void* rawData() = 0;
    [[nodiscard]] virtual void* itemAddress(int i) = 0;

    /// The slice at one index counted from 1; out must be of the same kind.
    virtual void getOne(int index, Value& out, int irc) const = 0;
    virtual void getMany(IndexList indices, Value& out, int irc) const = 0;
    virtual void getBlock(IndexList rows, IndexList cols, Value& out) const = 0;
    /// Erases elements, rows or columns; sorts and thins the caller's indices.
    virtual void erase(int irc, std::span<int> indices) = 0;
    /// Element, row or item number i (from 0), as a loop delivers it.
    virtual void getItemForLoop(int i, Value& out) const = 0;

    virtual void transpose() = 0;
    virtual void conjugate() = 0;
    virtual void logicalNot() = 0;
    virtual void negate() = 0;

    /// Frees the elements; the mark stays.
    virtual void clear() = 0;
    /// Moves the contents out and leaves an empty value; rows and mark stay.
    virtual SavedData detachData() = 0;
    /// Drops the contents and takes over saved ones of a value of this kind.
    virtual void adoptData(SavedData& saved) = 0;
    /// Frees saved contents of a value of this kind.
    virtual void dropData(SavedData& saved) const = 0;

protected:
    explicit Value(ValueType type) : type_(type) {}
    Value(const Value&) = default;
    /// The kind of a value never changes; its contents are the business of
    /// the derived class.
    Value& operator=(const Value&) { return *this; }

    int size_ = 0;
    int nrow_ = 0;
    int mark_ = 0;

private:
    const ValueType type_;
};

/// A new empty value of a kind. Any other number warns on the console and
/// gives a double.
std::unique_ptr<Value> newValue(int type);

/// A deep copy of the same kind, rows and mark included.
std::unique_ptr<Value> newValueCopy(const Value& value);

/// The value behind a declaration of a static type; unknown types start as
/// doubles.
std::unique_ptr<Value> newHolder(int staticType);

}  // namespace vorpen
