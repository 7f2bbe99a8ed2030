// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Conditions in the lane of numbers (number_source.h), for the forms that whole
// functions and loops have in it: a comparison that knows its operator and the
// kinds of its operands, two comparisons joined by `&&` or `||`, or a number.

#include <functional>
#include <memory>
#include <type_traits>

#include "eval/number_lane.h"
#include "eval/truth_source.h"

namespace vorpen {

template <class Compare, class L, class R>
struct Comparison {
    static constexpr bool isCertain = L::isCertain && R::isCertain;

    L left;
    R right;
    [[nodiscard]] bool test(const double* frame) const {
        const double a = left.read(frame);
        return Compare{}(a, right.read(frame));
    }
};

struct NumberTruth {
    static constexpr bool isCertain = false;

    std::unique_ptr<NumberNode> number;
    [[nodiscard]] bool test(const double* frame) const { return isTrue(number->number(frame)); }
};

template <class Condition>
class ConditionNode final : public TruthNode {
public:
    explicit ConditionNode(Condition condition) : condition_(std::move(condition)) {}
    [[nodiscard]] bool test(const double* frame) const override { return condition_.test(frame); }

private:
    Condition condition_;
};

struct JointTruth {
    static constexpr bool isCertain = false;

    std::unique_ptr<TruthNode> left, right;
    bool decidesAtOnce;  ///< the left truth that makes the right one needless
    [[nodiscard]] bool test(const double* frame) const {
        const bool truth = left->test(frame);
        return truth == decidesAtOnce ? truth : right->test(frame);
    }
};

/// Hands make(...) the comparison in the form that fits it; null where there is none.
template <class Make>
auto makeComparison(const LaneBuilder& lane, const ComparatorElement& comparison, const Make& make) {
    using Made = decltype(make(NumberTruth{}));
    if (comparison.isChain()) return Made{};
    auto left = lane.build(comparison.left()), right = lane.build(comparison.right());
    if (!left || !right) return Made{};
    return std::visit(
        [&](auto& l, auto& r) {
            using L = std::remove_reference_t<decltype(l)>;
            using R = std::remove_reference_t<decltype(r)>;
            const auto with = [&](auto compare) {
                return make(Comparison<decltype(compare), L, R>{std::move(l), std::move(r)});
            };
            switch (comparison.accepted()) {
                case ORDER_LESS: return with(std::less<double>());
                case ORDER_LESS | ORDER_EQUAL: return with(std::less_equal<double>());
                case ORDER_EQUAL: return with(std::equal_to<double>());
                case ORDER_GREATER: return with(std::greater<double>());
                case ORDER_GREATER | ORDER_EQUAL: return with(std::greater_equal<double>());
                default: return with(std::not_equal_to<double>());
            }
        },
        left->operand, right->operand);
}

/// The comparison as a node; null where there is no such form.
std::unique_ptr<TruthNode> truthNodeOf(const LaneBuilder& lane, Evaluatable& comparison);

/// Hands make(...) the condition in the form that fits it, and answers what it
/// makes, a pointer: null where there is no such form.
template <class Make>
auto makeCondition(const LaneBuilder& lane, Evaluatable& condition, const Make& make) {
    using Made = decltype(make(NumberTruth{}));
    if (const auto* comparison = dynamic_cast<const ComparatorElement*>(&condition))
        return makeComparison(lane, *comparison, make);
    if (const auto joint = JointComparisons::in(condition)) {
        auto left = truthNodeOf(lane, joint->left), right = truthNodeOf(lane, joint->right);
        if (!left || !right) return Made{};
        return make(JointTruth{std::move(left), std::move(right), joint->decidesAtOnce});
    }
    auto number = lane.build(condition);
    return number ? make(NumberTruth{nodeOf(std::move(*number))}) : Made{};
}

}  // namespace vorpen
