// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The truth of a condition whose operands are plain numbers: a comparison, a
// number, or two of them joined by `&&` and `||`. As in the lane of numbers,
// "not known" has no effect and sends whoever asked to evaluate the condition.

#include <memory>

#include "eval/comparison.h"

namespace vorpen {

/// A number as a condition: it is truncated, and what has no integer counts as
/// one that is not 0.
inline bool isTrue(double x) { return !(x > -1 && x < 1); }

/// A condition as a node of the lane.
class TruthNode {
public:
    virtual ~TruthNode() = default;
    /// As with a number, it may be noted that the truth is not known.
    [[nodiscard]] virtual bool test(const double* frame) const = 0;
};

/// Two comparisons joined by `&&` or `||`.
struct JointComparisons {
    Evaluatable& left;
    Evaluatable& right;
    bool decidesAtOnce;  ///< the left truth that makes the right one needless

    /// Nothing for any other condition. With more operands what is skipped
    /// depends on their order, and a plain number on the right is tested
    /// untruncated.
    static std::optional<JointComparisons> in(Evaluatable& condition);
};

class TruthSource {
public:
    explicit TruthSource(Evaluatable& condition);

    enum class Truth : unsigned char { no, yes, notKnown };
    [[nodiscard]] Truth read() const {
        if (comparison_) {
            bool truth;
            return comparison_->readTruth(truth) ? Truth{truth} : Truth::notKnown;
        }
        return readOther();
    }

private:
    [[nodiscard]] Truth readOther() const;

    const ComparatorElement* comparison_ = nullptr;
    std::unique_ptr<TruthSource> left_, right_;  ///< of a joint condition
    bool decidesAtOnce_ = false;                 ///< the left truth that makes the right one needless
    NumberSource number_;
};

}  // namespace vorpen
