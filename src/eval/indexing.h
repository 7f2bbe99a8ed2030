// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Reading part of an array. An index may be a number, a list of numbers, a
// boolean mask, a sequence that is never made into a list, or a key that is
// looked up in a vector of labels. The elements hold the variable they read;
// its lengths are asked for at run time, so that `end` and the checks follow
// the variable as it is.

#include <memory>

#include "eval/index_reader.h"
#include "eval/mask_program.h"

namespace vorpen {

/// x[k] with a positive integer literal: the index is not evaluated.
class ConstIndexElement final : public Evaluatable {
public:
    ConstIndexElement(Value* target, int index);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return target_->valueType(); }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::namedValue; }
    [[nodiscard]] bool uses(const Value* v) const override { return v == target_; }
    [[nodiscard]] bool isPure() const override { return true; }
    [[nodiscard]] Value* target() const { return target_; }
    [[nodiscard]] int index() const { return index_; }

private:
    Value* target_;
    const DoubleValue* doubles_;  ///< the target, or null for another kind
    int index_;
};

/// `end` inside an index: the length of the dimension in which it stands.
class EndIndexElement final : public Evaluatable {
public:
    EndIndexElement(Value* target, int dimension) : target_(target), dimension_(dimension) {}
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return INTEGER_VAL; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::endIndex; }
    /// Its length counts as reading it, so that no assignment computes into
    /// the target while the length is still asked for.
    [[nodiscard]] bool uses(const Value* v) const override { return v == target_; }
    [[nodiscard]] bool isPure() const override { return true; }
    [[nodiscard]] int value() const { return target_->dimension(dimension_); }
    [[nodiscard]] const Value* target() const { return target_; }

private:
    Value* target_;
    int dimension_;
};

/// start:stop or start:step:stop, as a row of numbers and as an index.
class SequenceElement final : public With3Evaluatable {
public:
    SequenceElement(EvaluatablePtr start, EvaluatablePtr stop, EvaluatablePtr step, int type)
        : With3Evaluatable(std::move(start), std::move(stop), std::move(step)), type_(type) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return type_; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::sequence; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }

    /// The owners of the parts, for the front end: start, stop, step (may be
    /// empty).
    [[nodiscard]] EvaluatablePtr& startOwner() { return childOwner(0); }
    [[nodiscard]] EvaluatablePtr& stopOwner() { return childOwner(1); }
    [[nodiscard]] EvaluatablePtr& stepOwner() { return childOwner(2); }
    void setType(int type) { type_ = type; }

    /// The numbers that the sequence stands for; each is the one before plus
    /// the step.
    struct Range {
        double start, step;
        int count;
    };
    /// Evaluates the parts. Fails unless they are scalars, and as exhausted
    /// memory does when the count is more than a value can hold.
    [[nodiscard]] Range readRange() const;

    struct Bounds {
        int start, step, stop;
    };
    /// The three parts as integers, for use as an index.
    [[nodiscard]] Bounds readIntegerBounds() const;

private:
    int type_;
};

/// (stop - start) / step, truncated toward zero; the step is not 0.
[[nodiscard]] inline std::int64_t sequenceSteps(const SequenceElement::Bounds& b) {
    return (std::int64_t{b.stop} - b.start) / b.step;
}

/// One index on an array.
class IndexedElementSingle final : public With1Evaluatable {
public:
    IndexedElementSingle(EvaluatablePtr index, Value* target, int irc);
    Value* pValue(Value* workspace) override { return valueOf(evaluate(workspace), workspace); }
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return target_->valueType(); }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::indexed; }
    [[nodiscard]] bool uses(const Value* v) const override {
        return v == target_ || With1Evaluatable::uses(v);
    }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
    [[nodiscard]] Value* target() const { return target_; }
    [[nodiscard]] Evaluatable& index() const { return *child(0); }
    [[nodiscard]] int irc() const { return irc_; }

private:
    [[nodiscard]] bool selectsElements() const {
        return irc_ == INDEX_ELEMENT || (irc_ < 0 && target_->chosenIndexCode() == INDEX_ELEMENT);
    }
    Outcome elementAt(double k, Value* workspace);
    /// Apart, so that the way of a plain variable needs no room for it.
    [[gnu::noinline]] Outcome evaluateIndex(Value* workspace);
    [[gnu::noinline]] Outcome evaluateMask(Value* workspace);
    Value* select(const Outcome& index, Value* workspace);

    Value* target_;
    const DoubleValue* doubles_;  ///< the target, or null for another kind
    int irc_;
    IndexReader index_;
    std::unique_ptr<MaskProgram> mask_;  ///< an index that is a condition
};

/// Row and column index on a matrix, or a key and its labels.
class IndexedElementDouble final : public With2Evaluatable {
public:
    IndexedElementDouble(EvaluatablePtr row, EvaluatablePtr column, Value* target);
    Value* pValue(Value* workspace) override { return valueOf(evaluate(workspace), workspace); }
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return target_->valueType(); }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::indexed; }
    [[nodiscard]] bool uses(const Value* v) const override {
        return v == target_ || With2Evaluatable::uses(v);
    }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
    [[nodiscard]] Value* target() const { return target_; }
    [[nodiscard]] Evaluatable& row() const { return *child(0); }
    [[nodiscard]] Evaluatable& column() const { return *child(1); }

private:
    /// Apart, so that the way of two plain variables needs no room for it.
    [[gnu::noinline]] Outcome evaluateIndices(Value* workspace);
    Value* select(const Outcome& row, const Outcome& column, Value* workspace);
    Value* selectByKey(int irc, int position, Value* workspace);

    Value* target_;
    const DoubleValue* doubles_;  ///< the target, or null for another kind
    IndexReader row_;
    IndexReader column_;
};

/// A sequence as the one index.
class IndexedWithSequenceElement final : public Evaluatable {
public:
    IndexedWithSequenceElement(Value* target, int irc, std::unique_ptr<SequenceElement> sequence)
        : target_(target), irc_(irc), sequence_(std::move(sequence)) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return target_->valueType(); }
    [[nodiscard]] bool uses(const Value* v) const override { return v == target_ || sequence_->uses(v); }
    [[nodiscard]] bool isPure() const override { return sequence_->isPure(); }

private:
    Value* target_;
    int irc_;
    std::unique_ptr<SequenceElement> sequence_;
};

/// One item of a list. Its static type is unknown unless the item is kept as a
/// list.
class ListItemElement final : public With1Evaluatable {
public:
    ListItemElement(EvaluatablePtr index, ListValue* list, int itemType)
        : With1Evaluatable(std::move(index)), list_(list), itemType_(itemType), index_(*child(0)) {}
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return itemType_; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::listItem; }
    [[nodiscard]] bool uses(const Value* v) const override { return v == list_ || With1Evaluatable::uses(v); }

    /// The selected item; fails when the index is no scalar within the list.
    [[nodiscard]] Value& fetchItem();

private:
    Value& fetchFitting(const Value& workspace);

    ListValue* list_;
    int itemType_;
    IndexReader index_;
};

}  // namespace vorpen
