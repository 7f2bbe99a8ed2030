// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/indexed_assignment.h"

#include <algorithm>

#include "base/errors.h"
#include "eval/store.h"

namespace vorpen {
namespace {

/// The right side of a store as doubles, apart from the target.
class RightSide {
public:
    RightSide(Evaluatable& expression, const DoubleValue& target) {
        if (expression.type() == INTEGER_VAL) {
            IntValue integers;
            take(expression.evaluate(&integers), target);
        } else {
            take(expression.evaluate(&own_), target);
        }
    }
    RightSide(const Outcome& outcome, const DoubleValue& target) { take(outcome, target); }
    [[nodiscard]] const DoubleValue& value() const { return *value_; }

private:
    void take(const Outcome& outcome, const DoubleValue& target) {
        if (outcome.isScalar()) {
            storeNumber(own_, outcome.number, outcome.mark());
        } else if (outcome.value()->valueType() == INTEGER_VAL || outcome.value() == &target) {
            own_.copyFrom(*outcome.value());
        } else {
            value_ = &asDouble(*outcome.value());
        }
    }

    DoubleValue own_;
    const DoubleValue* value_ = &own_;
};

void readIndices(const IndexReader& reader, IntValue& list) {
    const ReadIndex index(reader);
    copyIndices(index.outcome(), list);
}

/// Row or column indices of a store, as a list within 1 to d.
void takeLines(const Outcome& index, int d, int rhsSize, IntValue& list) {
    copyIndices(index, list);
    if (list.isBool()) {
        Require(list.size() == d, "invalid mask size", "lhs");
        maskToIndices(list);
        Require(!list.isEmpty() || rhsSize == 0, "empty lhs index with non-empty rhs", "lhs");
    } else {
        Require(indicesWithin(list, d), "lhs index out of bounds", "lhs");
    }
}

bool sizesMatch(const DoubleValue& lhs, const DoubleValue& rhs, int irc, std::int64_t count) {
    if (rhs.size() == 1) return true;
    switch (irc) {
        case INDEX_ELEMENT: return rhs.size() == count;
        case INDEX_ROW: return rhs.nrow() == count && rhs.ncol() == lhs.ncol();
        case INDEX_COLUMN: return rhs.nrow() == lhs.nrow() && rhs.ncol() == count;
        default: return rhs.nrow() == lhs.nrow() && rhs.ncol() == lhs.ncol3D() * count;
    }
}

/// The columns that make up planes.
std::vector<int> columnsOfPlanes(const Value& array, std::span<const int> planes) {
    const int width = array.ncol3D();
    std::vector<int> columns;
    columns.reserve(planes.size() * static_cast<std::size_t>(width));
    for (const int plane : planes)
        for (int c = 1; c <= width; ++c) columns.push_back((plane - 1) * width + c);
    return columns;
}

/// Stores into planes that have been checked.
void storeIntoPlanes(DoubleValue& lhs, std::span<const int> planes, const DoubleValue& rhs, char op) {
    Require(sizesMatch(lhs, rhs, INDEX_PLANE, static_cast<std::int64_t>(planes.size())), "non-matching sizes",
            "assignment");
    if (op == '=')
        lhs.IndexedAssign(INDEX_PLANE, planes, rhs);
    else
        lhs.mathIndexedAssign(INDEX_COLUMN, columnsOfPlanes(lhs, planes), rhs, op);
}

}  // namespace

// ---- one index

SingleIndexedAssignStm::SingleIndexedAssignStm(int line, DoubleValue* lhs, EvaluatablePtr index, int irc,
                                               EvaluatablePtr rhs, char op)
    : AssignStm(line, lhs, std::move(rhs)),
      index_(std::move(index)),
      reader_(*index_),
      irc_(irc),
      op_(op) {}

void SingleIndexedAssignStm::grow(int irc) {
    DoubleValue& x = *lhs_;
    if (x.isEmpty()) {
        storeNumber(x, 0, x.mark());
    } else if (irc == INDEX_ELEMENT) {
        Require(x.isVector(), "index out of bounds", "lhs");
        x.resize(std::int64_t{x.size()} + 1);
        x[x.size() - 1] = 0;
    } else {
        DoubleValue zeros;
        const bool row = irc == INDEX_ROW;
        const int length = row ? x.ncol() : x.nrow();
        zeros.fill(length, row ? 1 : length, 0.0);
        if (row)
            x.appendRows(zeros);
        else
            x.appendColumns(zeros);
        dropBrokenPlanes(x);
    }
}

void SingleIndexedAssignStm::storeElement(int k, const Outcome& rhs) {
    // The right side may have run code that made the target shorter.
    Require(k <= lhs_->size(), "index out of bounds", "lhs");
    double& element = (*lhs_)[k - 1];
    if (rhs.isScalar()) return changeElement(element, op_, rhs.number);
    Require(rhs.value()->size() == 1, "non-matching sizes", "assignment");
    changeElement(element, op_, rhs.value()->doubleValue());
}

void SingleIndexedAssignStm::storePlanes(const IntValue& planes) {
    Require(lhs_->form() == FORM_3D, "invalid assignment to non-3D array", "lhs");
    Require(indicesWithin(planes, lhs_->planes()), "lhs index out of bounds", "lhs");
    const RightSide rhs(*expression(), *lhs_);
    Require(lhs_->form() == FORM_3D && indicesWithin(planes, lhs_->planes()), "lhs index out of bounds",
            "lhs");
    storeIntoPlanes(*lhs_, planes.items(), rhs.value(), op_);
}

void SingleIndexedAssignStm::storeLines(const IntValue& index, int irc) {
    const RightSide rhs(*expression(), *lhs_);
    Require(index.isEmpty() || indicesWithin(index, lhs_->dimension(irc)), "index out of bounds", "lhs");
    Require(sizesMatch(*lhs_, rhs.value(), irc, index.size()), "non-matching sizes", "assignment");
    if (op_ == '=')
        lhs_->IndexedAssign(irc, index.items(), rhs.value());
    else
        lhs_->mathIndexedAssign(irc, index.items(), rhs.value(), op_);
}

void SingleIndexedAssignStm::exe() {
    double k, x;
    if (reader_.readNumber(k) && isIndexWithin(k, lhs_->size()) && selectsElements() && rhsNumber_.read(x))
        return changeElement((*lhs_)[static_cast<int>(k) - 1], op_, x);
    exeGeneral();
}

void SingleIndexedAssignStm::exeGeneral() {
    const ReadIndex read(reader_);
    if (read.isNumber() && selectsElements() && isIndexWithin(read.number(), lhs_->size())) {
        const int k = static_cast<int>(read.number());
        if (rhsType_ == INTEGER_VAL) {
            IntValue workspace;
            storeElement(k, expression()->evaluate(&workspace));
        } else {
            DoubleValue workspace;
            storeElement(k, expression()->evaluate(&workspace));
        }
        return;
    }
    IntValue index;
    copyIndices(read.outcome(), index);
    const int irc = irc_ < 0 ? lhs_->chosenIndexCode() : irc_;
    if (irc == INDEX_PLANE) {
        if (index.isBool()) maskToIndices(index);
        return storePlanes(index);
    }
    const int d = lhs_->dimension(irc);
    if (index.isBool()) {
        Require(index.size() == d, "invalid mask size", "assignment");
        maskToIndices(index);
    } else {
        Require(indicesWithin(index, d == INT32_MAX ? d : d + 1), "index out of bounds", "lhs");
        if (index[index.indexOfMax()] > d) grow(irc);
    }
    storeLines(index, irc);
}

// ---- a sequence

void SingleIndexed_SeqAssignStm::exe() {
    const int irc = irc_ < 0 ? lhs_->chosenIndexCode() : irc_;
    const SequenceElement::Bounds b = sequence_->readIntegerBounds();
    Require(b.step != 0, "sequence with zero step");
    if (irc == INDEX_PLANE) Require(lhs_->form() == FORM_3D, "invalid assignment to non-3D array", "lhs");
    const std::int64_t n = std::max<std::int64_t>(0, sequenceSteps(b)) + 1;
    const std::int64_t last = b.start + (n - 1) * b.step;
    const auto within = [&](int d) {
        return b.start >= 1 && b.stop <= d && b.start <= d && last >= 1 && last <= d;
    };
    Require(within(lhs_->dimension(irc)), "lhs index out of bounds", "assignment");
    const RightSide right(*expression(), *lhs_);
    Require(within(lhs_->dimension(irc)), "lhs index out of bounds", "assignment");
    const DoubleValue& rhs = right.value();
    Require(sizesMatch(*lhs_, rhs, irc, n), "non-matching sizes", "assignment");

    // The selected places, walked in the order of the right side.
    const int rows = lhs_->nrow();
    const std::int64_t width = irc == INDEX_PLANE ? std::int64_t{rows} * lhs_->ncol3D() : rows;
    double* to = lhs_->data();
    const double* from = rhs.data();
    const int next = rhs.size() == 1 ? 0 : 1;
    if (irc == INDEX_ELEMENT) {
        std::int64_t at = b.start - 1;
        for (std::int64_t k = 0; k < n; ++k, at += b.step, from += next) to[at] = *from;
    } else if (irc == INDEX_ROW) {
        for (int c = 0; c < lhs_->ncol(); ++c) {
            std::int64_t at = std::int64_t{c} * rows + b.start - 1;
            for (std::int64_t k = 0; k < n; ++k, at += b.step, from += next) to[at] = *from;
        }
    } else {
        for (std::int64_t k = 0; k < n; ++k) {
            double* block = to + (b.start - 1 + k * b.step) * width;
            for (std::int64_t i = 0; i < width; ++i, from += next) block[i] = *from;
        }
    }
}

// ---- two indices

IndexedAssignStm::IndexedAssignStm(int line, DoubleValue* lhs, EvaluatablePtr row, EvaluatablePtr column,
                                   EvaluatablePtr rhs, char op)
    : AssignStm(line, lhs, std::move(rhs)),
      row_(std::move(row)),
      column_(std::move(column)),
      rowReader_(*row_),
      columnReader_(*column_),
      op_(op) {}

void IndexedAssignStm::exe() {
    double r, c, x;
    if (rhsNumber_.read(x) && rowReader_.readNumber(r) && columnReader_.readNumber(c)) {
        const int at = elementPosition(*lhs_, r, c);
        if (at >= 0) return changeElement((*lhs_)[at], op_, x);
    }
    exeGeneral();
}

void IndexedAssignStm::exeGeneral() {
    if (rhsType_ == DOUBLE_VAL) {
        DoubleValue workspace;
        store(expression()->evaluate(&workspace));
    } else {
        Workspace workspace(rhsType_);
        store(expression()->evaluate(workspace.get()));
    }
}

void IndexedAssignStm::store(const Outcome& right) {
    double r, c;
    if (right.isScalar() && rowReader_.readNumber(r) && columnReader_.readNumber(c)) {
        const int at = elementPosition(*lhs_, r, c);
        if (at >= 0) return changeElement((*lhs_)[at], op_, right.number);
    }
    storeAtIndices(right);
}

void IndexedAssignStm::storeAtIndices(const Outcome& right) {
    DoubleValue& m = *lhs_;
    const ReadIndex row(rowReader_);
    if (!right.isScalar() || !row.isNumber() || !isIndexWithin(row.number(), m.nrow()))
        return storeBlock(right, row.outcome(), nullptr);
    const ReadIndex column(columnReader_);
    const int at = column.isNumber() ? elementPosition(m, row.number(), column.number()) : -1;
    if (at >= 0) return changeElement(m[at], op_, right.number);
    storeBlock(right, row.outcome(), &column);
}

/// The column index is evaluated here, after the row has been checked, unless
/// that has been done.
void IndexedAssignStm::storeBlock(const Outcome& right, const Outcome& row, const ReadIndex* column) {
    DoubleValue& m = *lhs_;
    const RightSide rhsHolder(right, m);
    const DoubleValue& rhs = rhsHolder.value();
    IntValue lists[2];
    takeLines(row, m.nrow(), rhs.size(), lists[0]);
    Require(rhs.size() == 1 || lists[0].size() == rhs.nrow(), "non-matching sizes", "lhs");
    takeLines(column ? column->outcome() : ReadIndex(columnReader_).outcome(), m.ncol(), rhs.size(),
              lists[1]);
    Require(rhs.size() == 1 || lists[1].size() == rhs.ncol(), "non-matching sizes", "lhs");
    if (lists[0].isEmpty() || lists[1].isEmpty()) return;
    // The second index may have run code that changed either side.
    Require(indicesWithin(lists[0], m.nrow()) && indicesWithin(lists[1], m.ncol()), "lhs index out of bounds",
            "lhs");
    Require(rhs.size() == 1 || std::int64_t{lists[0].size()} * lists[1].size() == rhs.size(),
            "non-matching sizes", "lhs");
    if (op_ != '=') return m.mathIndexedAssign(lists[0].items(), lists[1].items(), rhs, op_);
    const double* from = rhs.data();
    const int next = rhs.size() == 1 ? 0 : 1;
    for (const int column : lists[1].items())
        for (const int row : lists[0].items()) {
            m[(column - 1) * m.nrow() + row - 1] = *from;
            from += next;
        }
}

// ---- items of a list

IndexedAnyAssignStm::IndexedAnyAssignStm(int line, Value* target, std::vector<EvaluatablePtr> indices,
                                         EvaluatablePtr rhs)
    : WithAnyValueStm(line, target, std::move(rhs)), indices_(std::move(indices)) {}

bool IndexedAnyAssignStm::uses(const Value* v) const {
    return std::any_of(indices_.begin(), indices_.end(), [&](const auto& index) { return index->uses(v); }) ||
           WithAnyValueStm::uses(v);
}

std::unique_ptr<Value> IndexedAnyAssignStm::evaluateItem() {
    if (listItem()) return newValueCopy(listItem()->fetchItem());
    std::unique_ptr<Value> item = newHolder(expression()->type());
    const Value* result = expression()->pValue(item.get());
    return result == item.get() ? std::move(item) : newValueCopy(*result);
}

void IndexedAnyAssignStm::exe() {
    std::unique_ptr<Value> item = evaluateItem();
    std::vector<IntValue> lists(indices_.size());
    for (std::size_t k = 0; k < indices_.size(); ++k) {
        readIndices(IndexReader(*indices_[k]), lists[k]);
        const int d = indices_.size() == 1 ? target_->size() : k == 0 ? target_->nrow() : target_->ncol();
        if (lists[k].isBool()) {
            Require(lists[k].size() == d, "invalid mask size", "lhs");
            maskToIndices(lists[k]);
            Require(!lists[k].isEmpty() || item->isEmpty(), "empty lhs index with non-empty rhs", "lhs");
        } else {
            Require(indicesWithin(lists[k], d), "index out of bounds", "lhs");
        }
    }
    Require(target_->valueType() == LIST_VAL, "?vorpen bug: IndexedAnyAssignStm called on non-list");
    Require(lists.size() == 1, "too many indices assigning to list", "lhs");
    Require(lists[0].size() == 1, "indexed assignment to list using non-scalar index", "lhs");
    auto& list = static_cast<ListValue&>(*target_);
    Require(lists[0][0] <= list.size(), "index out of bounds", "lhs");
    list[lists[0][0] - 1].set(std::move(item));
}

// ---- erasure

void ErasureStm::erasePlanes(IntValue& planes) {
    std::sort(planes.items().begin(), planes.items().end());
    const auto last = std::unique(planes.items().begin(), planes.items().end());
    const auto count = static_cast<std::size_t>(last - planes.items().begin());
    const int left = target_->planes() - static_cast<int>(count);
    std::vector<int> columns = columnsOfPlanes(*target_, planes.items().first(count));
    target_->erase(INDEX_COLUMN, columns);
    if (left > 0) {
        target_->setMark(FORM_3D | left << 4);
    } else {
        target_->clear();
        target_->setMark(FORM_NUMERIC);
    }
}

void ErasureStm::exe() {
    if (!index_) return target_->clear();
    IntValue index;
    readIndices(IndexReader(*index_), index);
    if (index.isBool()) maskToIndices(index);
    const int irc = irc_ < 0 ? target_->chosenIndexCode() : irc_;
    require(indicesWithin(index, target_->dimension(irc)), "lhs index out of bounds", "erasure");
    require(irc > INDEX_ELEMENT || target_->isVector(), "can't erase single elements from a non-vector");
    if (irc == INDEX_PLANE) {
        require(target_->form() == FORM_3D, "lhs index out of bounds", "erasure");
        return erasePlanes(index);
    }
    target_->erase(irc, index.items());
    dropBrokenPlanes(*target_);
}

}  // namespace vorpen
