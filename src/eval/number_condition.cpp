// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_condition.h"

namespace vorpen {

std::unique_ptr<TruthNode> truthNodeOf(const LaneBuilder& lane, Evaluatable& comparison) {
    return makeComparison(lane, static_cast<const ComparatorElement&>(comparison),
                          [](auto condition) -> std::unique_ptr<TruthNode> {
                              return std::make_unique<ConditionNode<decltype(condition)>>(std::move(condition));
                          });
}

}  // namespace vorpen
