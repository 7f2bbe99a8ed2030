// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the lane of plain numbers is built (number_source.h). Nodes are made for
// the kinds of their operands; `LaneBuilder` chooses them.
//
// Within the body of a function that runs on numbers alone (number_function.h)
// the locals are slots of a frame, and a node is handed that frame. Everywhere
// else there is no frame.

#include <optional>
#include <span>
#include <variant>

#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/indexing.h"
#include "eval/number_source.h"

namespace vorpen {

class UserCallElement;
class ComparatorElement;

struct VariableOperand {
    const DoubleValue* variable;
    double read(const double*) const {
        double x;
        return readNumber(*variable, x) ? x : NotKnown::note();
    }
};

struct SlotOperand {
    int slot;
    double read(const double* frame) const { return frame[slot]; }
};

struct ConstantOperand {
    double constant;
    double read(const double*) const { return constant; }
};

struct NodeOperand {
    std::unique_ptr<NumberNode> node;
    double read(const double* frame) const { return node->number(frame); }
};

using LaneOperand = std::variant<VariableOperand, SlotOperand, ConstantOperand, NodeOperand>;

/// An operand with whatever carries its mark: a variable, or nothing where the
/// mark is constant.
struct LaneNumber {
    LaneOperand operand;
    const Value* marked;
    int constantMark;
};

/// The locals of a function that are slots of its frame, and those of them
/// that have a value on every way to the place that is being built.
class FrameSlots {
public:
    static constexpr int maxSlots = 8;

    /// The slot of a local, or -1.
    [[nodiscard]] int find(const Value* local) const;
    /// False when there are too many.
    bool add(const Value* local);
    [[nodiscard]] int count() const { return count_; }

    unsigned assigned = 0;  ///< bit i: slot i has a value

private:
    const Value* locals_[maxSlots] = {};
    int count_ = 0;
};

class LaneBuilder {
public:
    /// Outside functions there are no slots.
    explicit LaneBuilder(const FrameSlots* slots = nullptr) : slots_(slots) {}

    /// Nothing where the element may have an effect, or asks for more than
    /// numbers.
    [[nodiscard]] std::optional<LaneNumber> build(Evaluatable& element) const;

    /// The operands from `next` on as far as the "," or ";" that joins them to others, or the end.
    [[nodiscard]] std::optional<LaneNumber> buildPiece(const ExpressionItems& items, std::size_t& next) const;

private:
    [[nodiscard]] std::optional<LaneNumber> buildVariable(const ValueElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildFunction(const SimpleFuncElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildNegation(const UnaryOpElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildLevel(const ExpressionItems& items, std::size_t& next,
                                                       int level) const;
    [[nodiscard]] std::optional<LaneNumber> buildIndex(Evaluatable& index) const;
    [[nodiscard]] std::optional<LaneNumber> buildElement(const IndexedElementSingle& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildFixedElement(const ConstIndexElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildMatrixElement(const IndexedElementDouble& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildCall(UserCallElement& element) const;
    [[nodiscard]] const DoubleValue* arrayTarget(const Value* target) const;

    const FrameSlots* slots_;
};

/// A number as a node of its own.
std::unique_ptr<NumberNode> nodeOf(LaneNumber number);
/// The same for a number that must have the mark 0; null when it never has.
std::unique_ptr<NumberNode> unmarkedNodeOf(LaneNumber number);

/// A node for two operands, joined by the operator of a code.
std::unique_ptr<NumberNode> joinNumbers(int code, LaneOperand left, LaneOperand right);

}  // namespace vorpen
