// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_condition.h"

namespace vorpen {
namespace {

std::optional<JointTruth::Part> partOf(const LaneBuilder& lane, Evaluatable& part) {
    const auto& comparison = static_cast<const ComparatorElement&>(part);
    if (comparison.isChain()) return std::nullopt;
    auto left = lane.build(comparison.left()), right = lane.build(comparison.right());
    if (!left || !right) return std::nullopt;
    return JointTruth::Part{comparison.accepted(), nodeOf(std::move(*left)), nodeOf(std::move(*right))};
}

}  // namespace

std::optional<JointTruth> jointTruthOf(const LaneBuilder& lane, const JointComparisons& joint) {
    auto left = partOf(lane, joint.left), right = partOf(lane, joint.right);
    if (!left || !right) return std::nullopt;
    return JointTruth{std::move(*left), std::move(*right), joint.decidesAtOnce};
}

}  // namespace vorpen
