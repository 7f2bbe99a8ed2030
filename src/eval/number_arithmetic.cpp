// SPDX-License-Identifier: GPL-3.0-or-later
// The operators of the lane of plain numbers: one class of nodes for each
// operator that is frequent and each pair of kinds of operands.
#include <cmath>

#include "eval/logical_table.h"
#include "eval/number_lane.h"
#include "values/kernels.h"

namespace vorpen {
namespace {

struct Plus {
    static double apply(double a, double b) { return a + b; }
};
struct Minus {
    static double apply(double a, double b) { return a - b; }
};
struct Times {
    static double apply(double a, double b) { return a * b; }
};
struct Divide {
    static double apply(double a, double b) { return a / b; }
};
struct Remainder {
    static double apply(double a, double b) { return remainderOf(a, b); }
};
/// The remainder by a power of 2 that has been looked at once: the look is two
/// thirds of what remainderOf costs.
struct RemainderByPower {
    double divisor;
    [[nodiscard]] double apply(double a, double) const {
        const double x = std::fabs(a);
        if (!(x < 9007199254740992.0)) return remainderOf(a, divisor);
        const auto m = static_cast<std::int64_t>(x);
        if (static_cast<double>(m) != x) return remainderOf(a, divisor);
        return std::copysign(static_cast<double>(m & (static_cast<std::int64_t>(divisor) - 1)), a);
    }
};
struct OtherOperator {
    int code;
    [[nodiscard]] double apply(double a, double b) const {
        return isElementwise(code) ? applyOperator(code, a, b) : applyLogical(code, a, b);
    }
};

template <class Operator, class L, class R>
class BinaryNode final : public NumberNode {
public:
    BinaryNode(Operator op, L left, R right) : op_(op), left_(std::move(left)), right_(std::move(right)) {}
    double number(const double* frame) const override {
        const double left = left_.read(frame);
        return op_.apply(left, right_.read(frame));
    }

private:
    [[no_unique_address]] Operator op_;
    L left_;
    R right_;
};

// Sums and products know more kinds of operands than the other operators, which
// take longer by themselves.
using FactorOperand = std::variant<VariableOperand, SlotOperand, HeldOperand, HeldElementOperand,
                                   HeldMatrixElementOperand, ConstantOperand, NodeOperand>;
using SimpleOperand = std::variant<VariableOperand, SlotOperand, HeldOperand, ConstantOperand, NodeOperand>;

template <class Operands, class Operator>
std::unique_ptr<NumberNode> join(Operator op, LaneOperand left, LaneOperand right) {
    const auto make = [op](auto& l, auto& r) -> std::unique_ptr<NumberNode> {
        using L = std::remove_reference_t<decltype(l)>;
        using R = std::remove_reference_t<decltype(r)>;
        return std::make_unique<BinaryNode<Operator, L, R>>(op, std::move(l), std::move(r));
    };
    auto l = narrowedTo<Operands>(std::move(left)), r = narrowedTo<Operands>(std::move(right));
    return visitOperands(make, l, r);
}

std::unique_ptr<NumberNode> joinAsNode(int code, LaneOperand left, LaneOperand right) {
    switch (code) {
        case OP_PLUS: return join<FactorOperand>(Plus{}, std::move(left), std::move(right));
        case OP_MINUS: return join<FactorOperand>(Minus{}, std::move(left), std::move(right));
        case OP_TIMES: return join<FactorOperand>(Times{}, std::move(left), std::move(right));
        case OP_DIVIDE: return join<SimpleOperand>(Divide{}, std::move(left), std::move(right));
        case OP_REMAINDER: return join<SimpleOperand>(Remainder{}, std::move(left), std::move(right));
        default: return join<SimpleOperand>(OtherOperator{code}, std::move(left), std::move(right));
    }
}

bool isPowerOfTwo(double x) {
    int exponent;
    return x >= 1 && x < 9007199254740992.0 && std::frexp(x, &exponent) == 0.5;
}

LaneOperand remainderByPower(LaneOperand operand, ConstantOperand power) {
    auto left = narrowedTo<SimpleOperand>(std::move(operand));
    return std::visit(
        [power](auto& l) -> LaneOperand {
            using Node = BinaryNode<RemainderByPower, std::remove_reference_t<decltype(l)>, ConstantOperand>;
            return NodeOperand{std::make_unique<Node>(RemainderByPower{power.constant}, std::move(l), power)};
        },
        left);
}

/// Joins an operand and a constant in a shorter way; nothing where there is none.
std::optional<LaneOperand> joinConstant(int code, const LaneOperand& left, double constant) {
    if ((code == OP_PLUS || code == OP_MINUS) && !std::isnan(constant)) {
        // A difference has the bits of the sum with the opposite number.
        const double addend = code == OP_PLUS ? constant : -constant;
        if (const auto* slot = std::get_if<SlotOperand>(&left)) return SlotSumOperand{slot->slot, addend};
        if (const auto* held = std::get_if<HeldOperand>(&left)) return HeldSumOperand{held->element, addend};
    }
    return std::nullopt;
}

}  // namespace

LaneOperand joinNumbers(int code, LaneOperand left, LaneOperand right) {
    if (const auto* constant = std::get_if<ConstantOperand>(&right)) {
        if (auto joined = joinConstant(code, left, constant->constant)) return std::move(*joined);
        if (code == OP_REMAINDER && isPowerOfTwo(constant->constant))
            return remainderByPower(std::move(left), *constant);
    }
    return NodeOperand{joinAsNode(code, std::move(left), std::move(right))};
}

}  // namespace vorpen
