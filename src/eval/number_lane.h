// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How the lane of plain numbers is built (number_source.h). Nodes are made for
// the kinds of their operands; `LaneBuilder` chooses them.
//
// Within the body of a function that runs on numbers alone (number_function.h)
// the locals are slots of a frame, and a node is handed that frame. Everywhere
// else there is no frame. Within a loop that runs on numbers (number_loop.h) the
// variables are held: a node reads their elements without a look at them.

#include <optional>
#include <span>
#include <variant>

#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/index_reader.h"
#include "eval/indexing.h"
#include "eval/number_source.h"

namespace vorpen {

class UserCallElement;
class ComparatorElement;

// An operand that is certain never notes that it is not known.

struct VariableOperand {
    static constexpr bool isCertain = false;
    const DoubleValue* variable;
    double read(const double*) const {
        double x;
        return readNumber(*variable, x) ? x : NotKnown::note();
    }
};

struct SlotOperand {
    static constexpr bool isCertain = true;
    int slot;
    double read(const double* frame) const { return frame[slot]; }
};

/// `n-1` and the like: a slot and a constant.
struct SlotSumOperand {
    static constexpr bool isCertain = true;
    int slot;
    double addend;
    double read(const double* frame) const { return frame[slot] + addend; }
};

/// A variable that a loop holds.
struct HeldOperand {
    static constexpr bool isCertain = true;
    const double* element;
    double read(const double*) const { return *element; }
};

struct HeldSumOperand {
    static constexpr bool isCertain = true;
    const double* element;
    double addend;
    double read(const double*) const { return *element + addend; }
};

/// `x[k]` of an array and an index that a loop holds.
struct HeldElementOperand {
    static constexpr bool isCertain = false;
    const DoubleValue* array;
    const double* index;
    double read(const double*) const {
        if (!isIndexWithin(*index, array->size())) [[unlikely]]
            return NotKnown::note();
        return (*array)[truncatedIndex(*index) - 1];
    }
};

/// `m[i,k]` of the same.
struct HeldMatrixElementOperand {
    static constexpr bool isCertain = false;
    const DoubleValue* matrix;
    const double* row;
    const double* column;
    double read(const double*) const {
        const std::int64_t at = elementPosition(*matrix, *row, *column);
        if (at < 0) [[unlikely]]
            return NotKnown::note();
        return matrix->data()[at];
    }
};

struct ConstantOperand {
    static constexpr bool isCertain = true;
    double constant;
    double read(const double*) const { return constant; }
};

struct NodeOperand {
    static constexpr bool isCertain = false;
    std::unique_ptr<NumberNode> node;
    double read(const double* frame) const { return node->number(frame); }
};

using LaneOperand = std::variant<VariableOperand, SlotOperand, SlotSumOperand, HeldOperand, HeldSumOperand,
                                 HeldElementOperand, HeldMatrixElementOperand, ConstantOperand, NodeOperand>;

template <class Operand, class... Kinds>
constexpr bool isAmong = (std::is_same_v<Operand, Kinds> || ...);

/// The operands in the body of a loop that holds its variables, and those
/// everywhere else. The two never meet, so that no node is made for such a pair.
template <class Operand>
constexpr bool isOfLoop = isAmong<Operand, HeldOperand, HeldSumOperand, HeldElementOperand,
                                  HeldMatrixElementOperand, ConstantOperand, NodeOperand>;
template <class Operand>
constexpr bool isOutsideLoop = !isOfLoop<Operand> || isAmong<Operand, ConstantOperand, NodeOperand>;

enum class Place { any, loop, outside };

template <Place place, class... Operands>
constexpr bool mayMeet = (place != Place::outside && (isOfLoop<Operands> && ...)) ||
                         (place != Place::loop && (isOutsideLoop<Operands> && ...));

/// Calls make(operands...) with the operands as what they are, and answers what
/// it makes, a pointer; null for operands that are not found in this place.
template <Place place = Place::any, class Make, class... Variants>
auto visitOperands(const Make& make, Variants&... variants) {
    using Made = decltype(make(std::get<NodeOperand>(variants)...));
    return std::visit(
        [&](auto&... each) -> Made {
            if constexpr (mayMeet<place, std::remove_reference_t<decltype(each)>...>)
                return make(each...);
            else
                return nullptr;
        },
        variants...);
}

/// An operand with whatever carries its mark: a variable, or nothing where the
/// mark is constant.
struct LaneNumber {
    LaneOperand operand;
    const Value* marked;
    int constantMark;
    const DoubleValue* first = nullptr;  ///< the leftmost operand, where it is a variable
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

/// What a loop takes for granted of variables while it runs on numbers: each
/// holds one number, or is an array whose elements alone change. None has a
/// mark.
class Hold {
public:
    /// Holds a variable as a number, and answers where it stands; null when it
    /// is none now.
    [[nodiscard]] const double* holdNumber(const DoubleValue& variable);
    /// Holds a variable as an array; false when it cannot be one. In a vector
    /// one index means an element.
    [[nodiscard]] bool holdArray(const DoubleValue& variable, bool isVector);
    /// True while all that is still so.
    [[nodiscard]] bool isKept() const;

private:
    struct Number {
        const DoubleValue* variable;
        const double* element;
        [[nodiscard]] bool isKept() const;
    };
    struct Array {
        const DoubleValue* variable;
        bool isVector;
        [[nodiscard]] bool isKept() const;
    };

    std::vector<Number> numbers_;
    std::vector<Array> arrays_;
};

/// A number that has no mark, as a parameter or an index must be; a truth value
/// as an index would be a mask.
struct UnmarkedVariable {
    static constexpr bool isCertain = false;
    const DoubleValue* variable;
    double read(const double*) const {
        double x;
        return readNumber(*variable, x) && variable->mark() == FORM_NUMERIC ? x : NotKnown::note();
    }
};

using UnmarkedOperand = std::variant<UnmarkedVariable, SlotOperand, SlotSumOperand, HeldOperand, HeldSumOperand,
                                     ConstantOperand, NodeOperand>;

/// Nothing for a number that never has the mark 0.
std::optional<UnmarkedOperand> unmarkedOperandOf(LaneNumber number);

class LaneBuilder {
public:
    /// For an expression anywhere.
    LaneBuilder() = default;
    /// For the body of a function.
    explicit LaneBuilder(const FrameSlots& slots) : slots_(&slots) {}
    /// For the body of a loop: what is built takes for granted what is held
    /// from then on.
    explicit LaneBuilder(Hold& hold) : hold_(&hold) {}

    /// Nothing where the element may have an effect, or asks for more than
    /// numbers.
    [[nodiscard]] std::optional<LaneNumber> build(Evaluatable& element) const;

    /// The operands from `next` on as far as the "," or ";" that joins them to others, or the end.
    [[nodiscard]] std::optional<LaneNumber> buildPiece(const ExpressionItems& items, std::size_t& next) const;

    /// An index, behind the truncation that the front end puts around it.
    [[nodiscard]] std::optional<UnmarkedOperand> buildIndex(Evaluatable& index) const;

private:
    [[nodiscard]] std::optional<LaneNumber> buildVariable(const ValueElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildFunction(const SimpleFuncElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildNegation(const UnaryOpElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildLevel(const ExpressionItems& items, std::size_t& next,
                                                       int level) const;
    [[nodiscard]] std::optional<LaneNumber> buildElement(const IndexedElementSingle& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildFixedElement(const ConstIndexElement& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildMatrixElement(const IndexedElementDouble& element) const;
    [[nodiscard]] std::optional<LaneNumber> buildCall(UserCallElement& element) const;
    template <class Make>
    [[nodiscard]] std::optional<LaneNumber> elementOf(const DoubleValue& target, bool isVector,
                                                      const Make& make) const;
    [[nodiscard]] const DoubleValue* arrayTarget(const Value* target) const;

    const FrameSlots* slots_ = nullptr;
    Hold* hold_ = nullptr;
};

/// A number as a node of its own.
std::unique_ptr<NumberNode> nodeOf(LaneNumber number);
/// The same for a number that must have the mark 0; null when it never has.
std::unique_ptr<NumberNode> unmarkedNodeOf(LaneNumber number);

/// An operand of fewer kinds: any other one becomes a node.
template <class Operands>
Operands narrowedTo(LaneOperand operand) {
    return std::visit(
        [](auto& kind) -> Operands {
            using Kind = std::remove_reference_t<decltype(kind)>;
            if constexpr (std::is_constructible_v<Operands, std::in_place_type_t<Kind>, Kind>)
                return Operands(std::in_place_type<Kind>, std::move(kind));
            else
                return NodeOperand{nodeOf({std::move(kind), nullptr, FORM_NUMERIC})};
        },
        operand);
}

/// Two operands, joined by the operator of a code.
LaneOperand joinNumbers(int code, LaneOperand left, LaneOperand right);

}  // namespace vorpen
