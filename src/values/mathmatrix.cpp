// SPDX-License-Identifier: GPL-3.0-or-later
#include "values/mathmatrix.h"

#include <gsl/gsl_blas.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "base/blas_loader.h"
#include "base/errors.h"
#include "base/interrupt.h"
#include "base/number_text.h"
#include "values/kernels.h"

namespace vorpen {
namespace {

using Complex = std::complex<double>;

// Integer arithmetic wraps around in 32 bits, so it is done on unsigned
// numbers, where that is defined.

int wrap(unsigned x) { return static_cast<int>(x); }

int divideIntegers(int a, int b) {
    Require(b != 0, "integer division by zero");
    return b == -1 ? wrap(0u - static_cast<unsigned>(a)) : a / b;
}

int remainderOfIntegers(int a, int b) {
    Require(b != 0, "integer division by zero");
    return b == -1 ? 0 : a % b;
}

/// The character whose code an element is, cut to 8 bits.
template <class T>
char characterOf(const T& item) {
    if constexpr (std::is_same_v<T, int>)
        return static_cast<char>(item);
    else if constexpr (std::is_same_v<T, double>)
        return static_cast<char>(truncateToInt(item));
    else
        return static_cast<char>(truncateToInt(item.real()));
}

int applyTo(int code, int a, int b) {
    const auto x = static_cast<unsigned>(a), y = static_cast<unsigned>(b);
    switch (code) {
        case OP_PLUS: return wrap(x + y);
        case OP_MINUS: return wrap(x - y);
        case OP_TIMES: return wrap(x * y);
        case OP_DIVIDE:
        case OP_QUOTIENT: return divideIntegers(a, b);
        case OP_REMAINDER: return remainderOfIntegers(a, b);
        default: return truncateToInt(std::pow(static_cast<double>(a), static_cast<double>(b)));
    }
}

Complex applyTo(int code, const Complex& a, const Complex& b) {
    switch (code) {
        case OP_PLUS: return a + b;
        case OP_MINUS: return a - b;
        case OP_TIMES: return a * b;
        case OP_DIVIDE: return a / b;
        case OP_QUOTIENT: return std::floor((a / b).real());
        case OP_REMAINDER: return a - b * std::floor((a / b).real());
        default: return std::pow(a, b);
    }
}

template <class T>
struct Items {
    const T* items;
    bool one;
};

template <class T>
void applyLoop(int code, T* out, Items<T> a, Items<T> b, std::int64_t n) {
    for (std::int64_t i = 0; i < n; ++i) out[i] = applyTo(code, a.items[a.one ? 0 : i], b.items[b.one ? 0 : i]);
}

void applyLoop(int code, int* out, Items<int> a, Items<int> b, std::int64_t n) {
    const auto run = [&](auto op) {
        if (b.one) {
            const unsigned y = *b.items;
            for (std::int64_t i = 0; i < n; ++i) out[i] = wrap(op(static_cast<unsigned>(a.items[i]), y));
        } else {
            for (std::int64_t i = 0; i < n; ++i)
                out[i] = wrap(op(static_cast<unsigned>(a.items[i]), static_cast<unsigned>(b.items[i])));
        }
    };
    switch (code) {
        case OP_PLUS: return run([](unsigned x, unsigned y) { return x + y; });
        case OP_MINUS: return run([](unsigned x, unsigned y) { return x - y; });
        case OP_TIMES: return run([](unsigned x, unsigned y) { return x * y; });
        default: applyLoop<int>(code, out, a, b, n);
    }
}

void applyLoop(int code, double* out, Items<double> a, Items<double> b, std::int64_t n) {
    applyOperator(code, out, {a.items, a.one}, {b.items, b.one}, n);
}

double one(int code, double a, double b) { return applyOperator(code, a, b); }
int one(int code, int a, int b) { return applyTo(code, a, b); }
Complex one(int code, const Complex& a, const Complex& b) { return applyTo(code, a, b); }

int codeOfAssignment(char op) {
    switch (op) {
        case 'P': return OP_PLUS;
        case 'M': return OP_MINUS;
        case 'T': return OP_TIMES;
        case 'D': return OP_DIVIDE;
        default: return OP_END;
    }
}

// ---- matrix product: out is m by n, left m by k, right k by n, all by columns

template <class T>
void productLoop(T* out, const T* left, const T* right, int m, int k, int n) {
    std::fill_n(out, std::int64_t{m} * n, T{});
    for (int c = 0; c < n; ++c) {
        T* column = out + std::int64_t{c} * m;
        for (int j = 0; j < k; ++j) {
            const T factor = right[std::int64_t{c} * k + j];
            const T* source = left + std::int64_t{j} * m;
            for (int r = 0; r < m; ++r) {
                if constexpr (std::is_same_v<T, int>)
                    column[r] = applyTo(OP_PLUS, column[r], applyTo(OP_TIMES, source[r], factor));
                else
                    column[r] += source[r] * factor;
            }
        }
    }
}

// The multiplications after which a product looks whether it is to go on: less than
// a tenth of a second on two cores. Fewer columns at a time cost the library speed.
constexpr std::int64_t productsAtOnce = 4'000'000'000;
constexpr std::int64_t leastColumnsAtOnce = 128;

void productOfColumns(double* out, const double* left, const double* right, int m, int k, int n) {
    // A stored column is a row to this interface, so the call multiplies the
    // transposes in exchanged order.
    const auto a = gsl_matrix_const_view_array(right, n, k);
    const auto b = gsl_matrix_const_view_array(left, k, m);
    auto c = gsl_matrix_view_array(out, n, m);
    gsl_blas_dgemm(CblasNoTrans, CblasNoTrans, 1.0, &a.matrix, &b.matrix, 0.0, &c.matrix);
}

void productByBlas(double* out, const double* left, const double* right, int m, int k, int n) {
    requireBlas();
    const std::int64_t fitting = std::max(productsAtOnce / (std::int64_t{m} * k), leastColumnsAtOnce);
    for (std::int64_t first = 0; first < n; first += fitting) {
        checkInterrupt();
        const int columns = static_cast<int>(std::min(fitting, n - first));
        productOfColumns(out + first * m, left, right + first * k, m, k, columns);
    }
}

// Below this many products the plain loop is faster than the library, and the
// library need not be loaded at all.
constexpr std::int64_t blasThreshold = 20000;

void product(double* out, const double* left, const double* right, int m, int k, int n) {
    if (std::int64_t{m} * k * n < blasThreshold)
        productLoop(out, left, right, m, k, n);
    else
        productByBlas(out, left, right, m, k, n);
}

template <class T>
void product(T* out, const T* left, const T* right, int m, int k, int n) {
    productLoop(out, left, right, m, k, n);
}

template <class T>
void crossOf(const T* a, const T* b, T* out) {
    const auto minor = [&](int i, int j) {
        return one(OP_MINUS, one(OP_TIMES, a[i], b[j]), one(OP_TIMES, a[j], b[i]));
    };
    const T x = minor(1, 2), y = minor(2, 0), z = minor(0, 1);
    out[0] = x;
    out[1] = y;
    out[2] = z;
}

bool holdsTriples(const Value& v) { return v.nrow() == 3 || v.ncol() == 3; }

}  // namespace

char operatorLetter(int code) {
    static constexpr std::string_view letters = "^1234567*/012_45+-u";
    return code >= 0 && code < static_cast<int>(letters.size()) ? letters[code] : '?';
}

// ---- single values and strings

template <class T>
void MathMatrix<T>::assignDouble(double x) {
    if constexpr (std::is_same_v<T, int>)
        this->fillOne(truncateToInt(x));
    else
        this->fillOne(T(x));
    this->mark_ = FORM_NUMERIC;
}

template <class T>
void MathMatrix<T>::assignInt(int i) {
    this->fillOne(T(i));
    this->mark_ = FORM_NUMERIC;
}

template <class T>
void MathMatrix<T>::assignString(std::string_view text) {
    if constexpr (std::is_same_v<T, Complex>) {
        raiseRuntimeError("you can't assign a character string to a complex value");
    } else {
        this->setSizeShapeMark(static_cast<std::int64_t>(text.size()), 1, FORM_STRING);
        std::ranges::transform(text, this->data(), [](char c) { return static_cast<signed char>(c); });
    }
}

template <class T>
void MathMatrix<T>::stringItem(std::string& out, int i, int precision) const {
    if constexpr (std::is_same_v<T, int>)
        out = std::to_string((*this)[i]);
    else if constexpr (std::is_same_v<T, double>)
        out = doubleText((*this)[i], precision);
    else
        out = complexText((*this)[i], precision);
}

template <class T>
void MathMatrix<T>::toString(std::string& out) const {
    const std::int64_t rows = this->nrow_, columns = this->ncol();
    const T* const items = this->data();
    out.resize(static_cast<std::size_t>(rows * columns));
    char* to = out.data();
    if (rows == 1) {
        std::transform(items, items + columns, to, characterOf<T>);
        return;
    }
    for (std::int64_t r = 0; r < rows; ++r)
        for (std::int64_t c = 0; c < columns; ++c) *to++ = characterOf(items[c * rows + r]);
}

template <class T>
void MathMatrix<T>::logicalNot() {
    for (T& x : this->items()) {
        if constexpr (std::is_same_v<T, Complex>)
            x = x.real() == 0 ? 1.0 : 0.0;
        else
            x = x == 0;
    }
}

template <class T>
void MathMatrix<T>::negate() {
    for (T& x : this->items()) {
        if constexpr (std::is_same_v<T, int>)
            x = wrap(0u - static_cast<unsigned>(x));
        else
            x = -x;
    }
}

// ---- element-wise operators

template <class T>
void MathMatrix<T>::repeatTo(const MathMatrix& shape) {
    const T first = (*this)[0];
    this->fill(shape.size_, shape.nrow_, first);
}

template <class T>
void MathMatrix<T>::operate(int code, const MathMatrix& right) {
    if (!isElementwise(code)) throw OperatorFailure{operatorLetter(code)};
    if (right.size_ == 1) {
        const T scalar = right[0];
        if (this->size_ == 1)
            (*this)[0] = one(code, (*this)[0], scalar);
        else
            applyLoop(code, this->data(), Items<T>{this->data(), false}, Items<T>{&scalar, true}, this->size_);
        return;
    }
    if (this->size_ == 1)
        repeatTo(right);
    else if (this->size_ != right.size_ || this->nrow_ != right.nrow_)
        throw OperatorFailure{operatorLetter(code)};
    applyLoop(code, this->data(), Items<T>{this->data(), false}, Items<T>{right.data(), false}, this->size_);
}

void DoubleValue::operateInt(int code, const IntValue& right) {
    if (right.size() == 1) {
        const double scalar = right[0];
        applyOperator(code, data(), {data(), false}, {&scalar, true}, size());
        return;
    }
    if (size() == 1) {
        const double scalar = (*this)[0];
        setSizeShapeMark(right.size(), right.nrow(), right.mark());
        std::copy_n(right.data(), size(), data());
        // The difference is not exchanged: it is element minus scalar.
        if (code == OP_MINUS)
            applyOperator(code, data(), {data(), false}, {&scalar, true}, size());
        else
            applyOperator(code, data(), {&scalar, true}, {data(), false}, size());
        return;
    }
    if (size() != right.size() || nrow() != right.nrow()) throw OperatorFailure{operatorLetter(code)};
    for (int i = 0; i < size(); ++i) data()[i] = applyOperator(code, data()[i], static_cast<double>(right[i]));
}

// ---- matrix operators

template <class T>
void MathMatrix<T>::matrixProduct(const MathMatrix& right, bool transposeLeft) {
    if constexpr (!std::is_same_v<T, double>) {
        if (right.size_ == 1) return operate(OP_TIMES, right);
        if (this->size_ == 1) {
            const MathMatrix scalar = *this;
            this->copyFrom(right);
            return operate(OP_TIMES, scalar);
        }
    }
    if (transposeLeft) this->transpose();
    if (this->ncol() != right.nrow_) throw OperatorFailure{'.'};
    if (this->isEmpty() || right.isEmpty()) return this->clear();
    const int m = this->nrow_, k = right.nrow_, n = right.ncol();
    MathMatrix result(this->valueType());
    result.setShape(m, n);
    product(result.data(), this->data(), right.data(), m, k, n);
    this->adopt(std::move(result));
}

template <class T>
void MathMatrix<T>::tensorProduct(const MathMatrix& right) {
    if (this->isEmpty()) return this->clear();
    // Blocks without elements add nothing to the first of them.
    if (right.isEmpty()) return this->copyFrom(right);
    const int rowsA = this->nrow_, colsA = this->ncol(), rowsB = right.nrow_, colsB = right.ncol();
    const std::int64_t rows = std::int64_t{rowsA} * rowsB;
    MathMatrix result(this->valueType());
    result.setSizeShapeMark(rows * colsA * colsB, 1, right.mark_);
    result.setNrow(static_cast<int>(rows));
    T* to = result.data();
    for (int ca = 0; ca < colsA; ++ca)
        for (int cb = 0; cb < colsB; ++cb)
            for (int ra = 0; ra < rowsA; ++ra)
                for (int rb = 0; rb < rowsB; ++rb)
                    *to++ = one(OP_TIMES, right[cb * rowsB + rb], (*this)[ca * rowsA + ra]);
    this->adopt(std::move(result));
}

template <class T>
void MathMatrix<T>::crossProduct(const MathMatrix& right) {
    if (this->size_ == 3 && right.size_ == 3) {
        crossOf(this->data(), right.data(), this->data());
        return;
    }
    if (!holdsTriples(*this) || !holdsTriples(right)) throw OperatorFailure{'^'};
    MathMatrix a = *this, b = right;
    const bool turned = (this->ncol() > 1 && this->nrow_ != 3) || (this->ncol() == 1 && right.nrow_ != 3);
    if (a.nrow_ != 3) a.transpose();
    if (b.nrow_ != 3) b.transpose();
    const int na = a.ncol(), nb = b.ncol();
    if (na != nb && std::min(na, nb) != 1) throw OperatorFailure{'^'};
    const int n = std::max(na, nb);
    this->setShape(3, n);
    for (int c = 0; c < n; ++c)
        crossOf(a.data() + 3 * (na == 1 ? 0 : c), b.data() + 3 * (nb == 1 ? 0 : c), this->data() + 3 * c);
    if (turned) this->transpose();
}

template <class T>
void MathMatrix<T>::addLines(const MathMatrix& right, int sign) {
    const int code = sign > 0 ? OP_PLUS : OP_MINUS;
    if (right.isEmpty() && !this->isEmpty()) throw OperatorFailure{'@'};
    const int rows = this->nrow_, columns = this->ncol();
    const auto addToAll = [&](auto lineOf) {
        for (int c = 0; c < columns; ++c)
            for (int r = 0; r < rows; ++r) {
                T& x = (*this)[c * rows + r];
                x = one(code, x, right[lineOf(r, c)]);
            }
    };
    if (right.nrow_ != rows) {
        if (columns == 0) return;
        if (right.nrow_ != 1 || right.ncol() != columns) throw OperatorFailure{'@'};
        addToAll([](int, int c) { return c; });
    } else if (right.size_ != this->size_) {
        if (right.nrow_ != 1 && right.nrow_ != right.size_) throw OperatorFailure{'@'};
        addToAll([](int r, int) { return r; });
    } else {
        operate(code, right);
    }
}

// ---- operator assignment into parts

template <class T>
void MathMatrix<T>::mathIndexedAssign(int irc, IndexList indices, const MathMatrix& rhs, char op) {
    const int code = codeOfAssignment(op);
    const bool scalar = rhs.size_ == 1;
    if (irc > INDEX_COLUMN || irc < INDEX_ELEMENT)
        throw PlainFailure{"invalid irc in in MathMatrix<T>::mathIndexedAssign"};
    if (code == OP_END) return;
    const int rows = this->nrow_, columns = this->ncol();
    const auto combine = [&](std::int64_t at, std::int64_t from) {
        (*this)[at] = one(code, (*this)[at], rhs[scalar ? 0 : from]);
    };
    for (int k = 0; k < static_cast<int>(indices.size()); ++k) {
        const std::int64_t line = indices[k] - 1;
        if (irc == INDEX_ELEMENT)
            combine(line, k);
        else if (irc == INDEX_ROW)
            for (int c = 0; c < columns; ++c) combine(std::int64_t{c} * rows + line, k + std::int64_t{c} * rhs.nrow_);
        else
            for (int r = 0; r < rows; ++r) combine(line * rows + r, std::int64_t{k} * rhs.nrow_ + r);
    }
}

template <class T>
void MathMatrix<T>::mathIndexedAssign(IndexList rows, IndexList cols, const MathMatrix& rhs, char op) {
    const int code = codeOfAssignment(op);
    if (code == OP_END) throw OperatorFailure{op};
    const int step = rhs.size_ == 1 ? 0 : 1;
    int from = 0;
    for (const int c : cols)
        for (const int r : rows) {
            T& x = (*this)[(c - 1) * this->nrow_ + r - 1];
            x = one(code, x, rhs[from]);
            from += step;
        }
}

IntValue::IntValue(const DoubleValue& source) : IntValue() {
    setSizeShapeMark(source.size(), source.nrow(), source.mark());
    for (int i = 0; i < size(); ++i) data()[i] = truncateToInt(source[i]);
}

template class MathMatrix<int>;
template class MathMatrix<double>;
template class MathMatrix<Complex>;

}  // namespace vorpen
