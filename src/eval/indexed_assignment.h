// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Stores into a part of a variable, and erasure. One index past the end grows
// the target before the right side is evaluated; what such a store leaves
// behind when it then fails is 0. Bounds are tested for all indices at once
// before the first element is written, and tested again where the right side
// or a later index may have changed the target in between.
//
// The store of a number at a number, `x[i] = v` and `m[i,j] = v`, builds
// nothing: one bounds check and one write.

#include <vector>

#include "eval/assignment.h"
#include "eval/index_reader.h"
#include "eval/number_source.h"

namespace vorpen {

/// What a store of a number does to an element. op is '=' for a plain store, or
/// one of P, M, T, D for += -= *= /=.
inline void changeElement(double& target, char op, double x) {
    switch (op) {
        case '=': target = x; break;
        case 'P': target += x; break;
        case 'M': target -= x; break;
        case 'T': target *= x; break;
        default: target /= x;
    }
}

/// One index on a double variable. For op see
/// changeElement.
class SingleIndexedAssignStm final : public AssignStm {
public:
    SingleIndexedAssignStm(int line, DoubleValue* lhs, EvaluatablePtr index, int irc, EvaluatablePtr rhs,
                           char op);
    void exe() override;
    [[nodiscard]] bool isPlainAssignment() const override { return false; }
    [[nodiscard]] bool uses(const Value* v) const override { return index_->uses(v) || AssignStm::uses(v); }
    [[nodiscard]] Evaluatable& index() const { return *index_; }
    [[nodiscard]] int irc() const { return irc_; }
    [[nodiscard]] char op() const { return op_; }

private:
    [[nodiscard]] bool selectsElements() const {
        return irc_ == INDEX_ELEMENT || (irc_ < 0 && lhs_->chosenIndexCode() == INDEX_ELEMENT);
    }
    /// Apart, so that a number stored at a plain variable needs no room for it.
    [[gnu::noinline]] void exeGeneral();
    void storeElement(int k, const Outcome& rhs);
    void storePlanes(const IntValue& planes);
    void storeLines(const IntValue& index, int irc);
    void grow(int irc);

    EvaluatablePtr index_;
    IndexReader reader_;
    int irc_;
    char op_;
};

/// A sequence as the one index; it is never made into a list.
class SingleIndexed_SeqAssignStm final : public AssignStm {
public:
    SingleIndexed_SeqAssignStm(int line, DoubleValue* lhs, std::unique_ptr<SequenceElement> sequence, int irc,
                               EvaluatablePtr rhs)
        : AssignStm(line, lhs, std::move(rhs)), sequence_(std::move(sequence)), irc_(irc) {}
    void exe() override;
    [[nodiscard]] bool isPlainAssignment() const override { return false; }
    [[nodiscard]] bool uses(const Value* v) const override {
        return sequence_->uses(v) || AssignStm::uses(v);
    }

private:
    std::unique_ptr<SequenceElement> sequence_;
    int irc_;
};

/// Row and column index on a double variable; nothing grows.
class IndexedAssignStm final : public AssignStm {
public:
    IndexedAssignStm(int line, DoubleValue* lhs, EvaluatablePtr row, EvaluatablePtr column,
                     EvaluatablePtr rhs, char op);
    void exe() override;
    [[nodiscard]] bool isPlainAssignment() const override { return false; }
    [[nodiscard]] bool uses(const Value* v) const override {
        return row_->uses(v) || column_->uses(v) || AssignStm::uses(v);
    }
    [[nodiscard]] Evaluatable& row() const { return *row_; }
    [[nodiscard]] Evaluatable& column() const { return *column_; }
    [[nodiscard]] char op() const { return op_; }

private:
    void store(const Outcome& right);
    /// Apart, so that the store at two plain variables needs no room for it.
    [[gnu::noinline]] void exeGeneral();
    [[gnu::noinline]] void storeAtIndices(const Outcome& right);
    void storeBlock(const Outcome& right, const Outcome& row, const ReadIndex* column);

    EvaluatablePtr row_;
    EvaluatablePtr column_;
    IndexReader rowReader_;
    IndexReader columnReader_;
    char op_;
};

/// An index on a variable that is no double: an item of a list is replaced.
class IndexedAnyAssignStm final : public WithAnyValueStm {
public:
    IndexedAnyAssignStm(int line, Value* target, std::vector<EvaluatablePtr> indices, EvaluatablePtr rhs);
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override;

private:
    [[nodiscard]] std::unique_ptr<Value> evaluateItem();

    std::vector<EvaluatablePtr> indices_;
};

/// `x = []` and `x[i] = []`.
class ErasureStm final : public Statement {
public:
    /// Without an index the whole variable is emptied.
    ErasureStm(int line, Value* target, EvaluatablePtr index, int irc)
        : Statement(line), index_(std::move(index)), irc_(irc), target_(target) {}
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override {
        return v == target_ || (index_ && index_->uses(v));
    }
    [[nodiscard]] const Value* assignedValue() const override { return target_; }

private:
    void erasePlanes(IntValue& planes);

    EvaluatablePtr index_;
    int irc_;
    Value* target_;
};

}  // namespace vorpen
