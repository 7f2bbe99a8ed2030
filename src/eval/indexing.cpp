// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/indexing.h"

#include "base/errors.h"
#include "base/interrupt.h"

namespace vorpen {
namespace {

/// Runs `select` with a workspace of the target's kind: the caller's, unless
/// an integer target is asked for as doubles.
template <class Select>
Value* withWorkspaceLike(const Value& target, Value* workspace, Select&& select) {
    if (workspace->valueType() == target.valueType()) {
        select(*workspace);
    } else {
        Workspace own(target.valueType());
        select(*own);
        workspace->copyFrom(*own);
    }
    return workspace;
}

void makeEmptyOfForm(Value& out, int form) {
    out.clear();
    // A 3-D form without planes would be no array.
    out.setMark(form == FORM_3D ? int{FORM_NUMERIC} : form);
}

/// One plane, or the columns of a list of them.
void getPlanes(const Value& target, const IntValue& list, int irc, Value& out) {
    if (list.size() == 1) {
        if (list[0] > target.planes()) throw OperatorFailure{'('};
        target.getOne(list[0], out, irc);
        return;
    }
    // A list of planes gathers single columns, which an empty array lacks.
    if (!indicesWithin(list, target.ncol())) throw OperatorFailure{'('};
    target.getMany(list.items(), out, irc);
}

/// The elements of a target that a mask of its size selects, without a list
/// of their positions.
template <class Mask>
void selectByMask(const DoubleValue& target, std::span<const Mask> mask, DoubleValue& out) {
    int n = 0;
    for (const Mask m : mask) n += m != 0;
    const bool row = target.nrow() == 1 && target.size() >= 2;
    out.setShape(row ? 1 : n, row ? n : 1);
    out.setMark(target.mark());
    const double* from = target.data();
    double* to = out.data();
    int k = 0;
    inRounds(target.size(), [&](std::int64_t begin, std::int64_t end) {
        for (std::int64_t i = begin; i < end && k < n; ++i) {
            to[k] = from[i];
            k += mask[i] != 0;
        }
    });
}

/// The row of a table of characters that holds the key, filled with blanks;
/// -1 if there is none.
int findKeyRow(const IntValue& table, const IntValue& key) {
    const int rows = table.nrow(), columns = table.ncol();
    if (key.size() > columns) return -1;
    for (int r = 0; r < rows; ++r) {
        int c = 0;
        while (c < columns && table[c * rows + r] == (c < key.size() ? key[c] : ' ')) ++c;
        if (c == columns) return r;
    }
    return -1;
}

template <class T>
int findElement(const JMatrix<T>& labels, T key) {
    const auto items = labels.items();
    const auto found = std::find(items.begin(), items.end(), key);
    return found == items.end() ? -1 : static_cast<int>(found - items.begin());
}

/// Where a key lies and which lines of the target it names.
struct KeyPlace {
    int irc;
    int position;  ///< from 0, or -1
};

KeyPlace findNumericKey(const DoubleValue& row, const DoubleValue& column) {
    if (row.size() == 1 && column.isVector()) return {INDEX_ROW, findElement(column, row[0])};
    if (row.isVector() && column.size() == 1) return {INDEX_COLUMN, findElement(row, column[0])};
    raiseRuntimeError("keyed indexing: only one row or col is allowed at a time");
}

KeyPlace findStringKey(const IntValue& row, const IntValue& column) {
    if (row.size() == 1 && column.isVector()) return {INDEX_ROW, findElement(column, row[0])};
    if (row.isVector() && column.size() == 1) return {INDEX_COLUMN, findElement(row, column[0])};
    if (column.nrow() < 2) return {INDEX_COLUMN, findKeyRow(row, column)};
    return {INDEX_ROW, findKeyRow(column, row)};
}

void copyAsDouble(const Outcome& outcome, DoubleValue& out) {
    if (outcome.isScalar())
        storeScalar(&out, outcome.number, outcome.mark());
    else
        out.copyFrom(*outcome.value());
}

int formOf(const Outcome& outcome) {
    return outcome.isScalar() ? outcome.mark() & 15 : outcome.value()->form();
}

/// A mask becomes a list of positions; a list is checked.
void fitLineIndices(IntValue& list, int d, const char* wrongMask, const char* outOfBounds) {
    if (list.isBool()) {
        Require(list.size() == d, wrongMask);
        maskToIndices(list);
    } else {
        Require(indicesWithin(list, d), outOfBounds);
    }
}

}  // namespace

// ---- one index

ConstIndexElement::ConstIndexElement(Value* target, int index)
    : target_(target), doubles_(dynamic_cast<const DoubleValue*>(target)), index_(index) {}

Outcome ConstIndexElement::evaluate(Value* workspace) {
    Require(index_ <= target_->size(), "index exceeds array size");
    if (doubles_ && static_cast<unsigned>(doubles_->mark()) < Outcome::markLimit)
        return Outcome::scalar((*doubles_)[index_ - 1], doubles_->mark());
    return outcomeOf(withWorkspaceLike(*target_, workspace,
                                       [&](Value& out) { target_->getOne(index_, out, INDEX_ELEMENT); }));
}

Value* ConstIndexElement::pValue(Value* workspace) { return valueOf(evaluate(workspace), workspace); }

Value* EndIndexElement::pValue(Value* workspace) {
    Require(workspace->valueType() <= DOUBLE_VAL, "use of 'end' with invalid type");
    workspace->assignInt(value());
    return workspace;
}

Outcome EndIndexElement::evaluate(Value*) { return Outcome::scalar(value()); }

IndexedElementSingle::IndexedElementSingle(EvaluatablePtr index, Value* target, int irc)
    : With1Evaluatable(std::move(index)),
      target_(target),
      doubles_(dynamic_cast<const DoubleValue*>(target)),
      irc_(irc),
      index_(*child(0)),
      mask_(doubles_ ? MaskProgram::compile(*child(0)) : nullptr) {}

Outcome IndexedElementSingle::elementAt(double k, Value* workspace) {
    if (doubles_ && isIndexWithin(k, doubles_->size()) &&
        static_cast<unsigned>(doubles_->mark()) < Outcome::markLimit && selectsElements())
        return Outcome::scalar((*doubles_)[static_cast<int>(k) - 1], doubles_->mark());
    return Outcome::of(select(Outcome::scalar(k), workspace));
}

Outcome IndexedElementSingle::evaluate(Value* workspace) {
    double k;
    if (index_.readNumber(k)) return elementAt(k, workspace);
    return mask_ ? evaluateMask(workspace) : evaluateIndex(workspace);
}

Outcome IndexedElementSingle::evaluateIndex(Value* workspace) {
    const ReadIndex index(index_);
    const Outcome outcome = index.outcome();
    if (IndexReader::isPlainNumber(outcome)) return elementAt(outcome.number, workspace);
    return Outcome::of(select(outcome, workspace));
}

Outcome IndexedElementSingle::evaluateMask(Value* workspace) {
    MaskRun run(mask_->steps());
    if (!run.prepare()) return evaluateIndex(workspace);
    if (run.size() == 1 || !selectsElements()) {
        IntValue truths;
        return Outcome::of(select(run.deliver(&truths), workspace));
    }
    Require(run.size() == target_->dimension(irc_), "boolean mask has wrong size");
    run.select(*doubles_, asDouble(*workspace));
    return Outcome::of(workspace);
}

Value* IndexedElementSingle::select(const Outcome& index, Value* workspace) {
    const int d = target_->dimension(irc_);
    const bool isMask = formOf(index) == FORM_BOOL;
    if (isMask && doubles_ && selectsElements() && !index.isScalar() &&
        index.value()->valueType() == INTEGER_VAL && workspace->valueType() == DOUBLE_VAL) {
        Require(index.value()->size() == d, "boolean mask has wrong size");
        selectByMask<int>(*doubles_, asInt(*index.value()).items(), asDouble(*workspace));
        return workspace;
    }
    IntValue list;
    copyIndices(index, list);
    const int code = irc_ < 0 ? target_->chosenIndexCode() : irc_;
    if (isMask) {
        Require(list.size() == d, "boolean mask has wrong size");
        maskToIndices(list);
    } else if (list.isEmpty()) {
        makeEmptyOfForm(*workspace, target_->form());
        return workspace;
    } else if (code == INDEX_PLANE && irc_ < 0) {
        Require(list[list.indexOfMin()] > 0, "B");
    } else {
        Require(indicesWithin(list, d), "B");
    }
    return withWorkspaceLike(*target_, workspace, [&](Value& out) {
        if (code == INDEX_PLANE && !list.isEmpty())
            getPlanes(*target_, list, code, out);
        else if (list.size() == 1)
            target_->getOne(list[0], out, irc_);
        else
            target_->getMany(list.items(), out, irc_);
    });
}

// ---- two indices

IndexedElementDouble::IndexedElementDouble(EvaluatablePtr row, EvaluatablePtr column, Value* target)
    : With2Evaluatable(std::move(row), std::move(column)),
      target_(target),
      doubles_(dynamic_cast<const DoubleValue*>(target)),
      row_(*child(0)),
      column_(*child(1)) {}

Outcome IndexedElementDouble::evaluate(Value* workspace) {
    double r, c;
    const bool isPlainMatrix = doubles_ && doubles_->form() < FORM_KEY;
    if (isPlainMatrix && row_.readNumber(r) && column_.readNumber(c)) {
        const int at = elementPosition(*doubles_, r, c);
        if (at >= 0) return Outcome::scalar((*doubles_)[at], doubles_->mark());
    }
    return evaluateIndices(workspace);
}

Outcome IndexedElementDouble::evaluateIndices(Value* workspace) {
    const ReadIndex row(row_);
    const ReadIndex column(column_);
    // Asked again: evaluating an index may have changed the matrix.
    if (doubles_ && doubles_->form() < FORM_KEY && row.isNumber() && column.isNumber()) {
        const int at = elementPosition(*doubles_, row.number(), column.number());
        if (at >= 0) return Outcome::scalar((*doubles_)[at], doubles_->mark());
    }
    return Outcome::of(select(row.outcome(), column.outcome(), workspace));
}

Value* IndexedElementDouble::selectByKey(int irc, int position, Value* workspace) {
    Require(position >= 0, "key not recognized");
    Require(position < target_->dimension(irc), "B");
    return withWorkspaceLike(*target_, workspace,
                             [&](Value& out) { target_->getOne(position + 1, out, irc); });
}

Value* IndexedElementDouble::select(const Outcome& row, const Outcome& column, Value* workspace) {
    if (row_.isFromDouble() && formOf(row) == FORM_KEY) {
        DoubleValue rowKeys, columnKeys;
        copyAsDouble(row, rowKeys);
        copyAsDouble(column, columnKeys);
        const KeyPlace place = findNumericKey(rowKeys, columnKeys);
        return selectByKey(place.irc, place.position, workspace);
    }
    IntValue rows, columns;
    copyIndices(row, rows);
    copyIndices(column, columns);
    Require(target_->form() < 5, "two indices but it is not a matrix");
    if (rows.form() > FORM_BOOL) {
        Require(rows.isString(), "invalid index type");
        Require(rows.form() == columns.form(), "keyed indexing with inconsistent types");
        const KeyPlace place = findStringKey(rows, columns);
        return selectByKey(place.irc, place.position, workspace);
    }
    fitLineIndices(rows, target_->nrow(), "boolean mask has wrong size for rows", "row index out of bounds");
    fitLineIndices(columns, target_->ncol(), "boolean mask has wrong size for columns",
                   "column index out of bounds");
    return withWorkspaceLike(*target_, workspace,
                             [&](Value& out) { target_->getBlock(rows.items(), columns.items(), out); });
}

// ---- items of a list

Value& ListItemElement::fetchItem() {
    const ReadIndex read(index_);
    const Outcome outcome = read.outcome();
    int k;
    if (IndexReader::isPlainNumber(outcome)) {
        k = truncateToInt(outcome.number);
    } else {
        IntValue index;
        copyIndices(outcome, index);
        if (index.isBool()) maskToIndices(index);
        Require(index.size() == 1, "list item with a non-scalar index", "list item");
        k = index[0];
    }
    Require(k > 0 && k <= list_->size(), "B", "list item");
    Value* item = (*list_)[k - 1].get();
    Require(item != nullptr, "the item has no value", "list item");
    return *item;
}

Value& ListItemElement::fetchFitting(const Value& workspace) {
    Value& item = fetchItem();
    const int from = item.valueType(), to = workspace.valueType();
    Require(from == to || (from < to && to < LIST_VAL), "list item has incompatible data type");
    return item;
}

Value* ListItemElement::pValue(Value* workspace) {
    // Copied, since code that runs before the answer is used may replace the
    // item.
    workspace->copyFrom(fetchFitting(*workspace));
    return workspace;
}

Outcome ListItemElement::evaluate(Value* workspace) {
    Value& item = fetchFitting(*workspace);
    if (travelsAsScalar(item)) return Outcome::scalar(item.doubleValue(), item.mark());
    workspace->copyFrom(item);
    return Outcome::of(workspace);
}

}  // namespace vorpen
