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

/// The operands that a comparison knows; any other is a node.
using ComparedOperand =
    std::variant<VariableOperand, SlotOperand, HeldOperand, HeldElementOperand, ConstantOperand, NodeOperand>;

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

/// Two comparisons joined by `&&` or `||`.
struct JointTruth {
    static constexpr bool isCertain = false;

    struct Part {
        unsigned accepted;
        std::unique_ptr<NumberNode> left, right;
        [[nodiscard]] bool test(const double* frame) const {
            const double a = left->number(frame);
            return comparesTrue(accepted, a, right->number(frame));
        }
    };
    Part left, right;
    bool decidesAtOnce;  ///< the left truth that makes the right one needless
    [[nodiscard]] bool test(const double* frame) const {
        const bool truth = left.test(frame);
        return truth == decidesAtOnce ? truth : right.test(frame);
    }
};

/// Nothing where there is no such form.
std::optional<JointTruth> jointTruthOf(const LaneBuilder& lane, const JointComparisons& joint);

/// Hands make(...) the comparison in the form that fits it; null where there is none.
template <Place place, class Make>
auto makeComparison(const LaneBuilder& lane, const ComparatorElement& comparison, const Make& make) {
    using Made = decltype(make(NumberTruth{}));
    if (comparison.isChain()) return Made{};
    auto left = lane.build(comparison.left()), right = lane.build(comparison.right());
    if (!left || !right) return Made{};
    auto l = narrowedTo<ComparedOperand>(std::move(left->operand));
    auto r = narrowedTo<ComparedOperand>(std::move(right->operand));
    const auto with = [&](auto compare, ComparedOperand& a, ComparedOperand& b) {
        const auto makeOf = [&](auto& first, auto& second) {
            using First = std::remove_reference_t<decltype(first)>;
            using Second = std::remove_reference_t<decltype(second)>;
            return make(Comparison<decltype(compare), First, Second>{std::move(first), std::move(second)});
        };
        return visitOperands<place>(makeOf, a, b);
    };
    switch (comparison.accepted()) {
        case ORDER_LESS: return with(std::less<double>(), l, r);
        case ORDER_LESS | ORDER_EQUAL: return with(std::less_equal<double>(), l, r);
        case ORDER_EQUAL: return with(std::equal_to<double>(), l, r);
        case ORDER_GREATER: return with(std::less<double>(), r, l);
        case ORDER_GREATER | ORDER_EQUAL: return with(std::less_equal<double>(), r, l);
        default: return with(std::not_equal_to<double>(), l, r);
    }
}

/// Hands make(...) the condition in the form that fits it, and answers what it
/// makes, a pointer: null where there is no such form.
template <Place place, class Make>
auto makeCondition(const LaneBuilder& lane, Evaluatable& condition, const Make& make) {
    using Made = decltype(make(NumberTruth{}));
    if (const auto* comparison = dynamic_cast<const ComparatorElement*>(&condition))
        return makeComparison<place>(lane, *comparison, make);
    if (const auto joint = JointComparisons::in(condition)) {
        auto truth = jointTruthOf(lane, *joint);
        return truth ? make(std::move(*truth)) : Made{};
    }
    auto number = lane.build(condition);
    return number ? make(NumberTruth{nodeOf(std::move(*number))}) : Made{};
}

}  // namespace vorpen
