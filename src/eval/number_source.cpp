// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_source.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "eval/logical_table.h"
#include "eval/number_lane.h"
#include "eval/user_func.h"
#include "values/kernels.h"

namespace vorpen {
namespace {

// ---- nodes

template <class Inner>
class NegationNode final : public NumberNode {
public:
    explicit NegationNode(Inner inner) : inner_(std::move(inner)) {}
    double number(const double* frame) const override { return -inner_.read(frame); }

private:
    Inner inner_;
};

template <class Inner>
class FunctionNode final : public NumberNode {
public:
    FunctionNode(RealBody body, Inner inner) : body_(body), inner_(std::move(inner)) {}
    double number(const double* frame) const override { return body_(inner_.read(frame)); }

private:
    RealBody body_;
    Inner inner_;
};

/// An element of a variable. Where it is held its shape has been looked at.
template <class Index>
class ElementNode final : public NumberNode {
public:
    ElementNode(const DoubleValue& target, int irc, Index index)
        : target_(target), elementsOnly_(irc == INDEX_ELEMENT), index_(std::move(index)) {}
    double number(const double* frame) const override {
        const double k = index_.read(frame);
        if (!isIndexWithin(k, target_.size())) return NotKnown::note();
        if (isOutsideLoop<Index> && (target_.form() == FORM_3D || !(elementsOnly_ || target_.isVector())))
            return NotKnown::note();
        return target_[truncatedIndex(k) - 1];
    }

private:
    const DoubleValue& target_;
    bool elementsOnly_;
    Index index_;
};

template <class Row, class Column>
class MatrixElementNode final : public NumberNode {
public:
    MatrixElementNode(const DoubleValue& target, Row row, Column column)
        : target_(target), row_(std::move(row)), column_(std::move(column)) {}
    double number(const double* frame) const override {
        const double row = row_.read(frame);
        const std::int64_t at = elementPosition(target_, row, column_.read(frame));
        if (at < 0 || (mayMeet<Place::outside, Row, Column> && target_.form() >= FORM_KEY)) return NotKnown::note();
        return target_.data()[at];
    }

private:
    const DoubleValue& target_;
    Row row_;
    Column column_;
};

std::unique_ptr<NumberNode> elementNode(const DoubleValue& target, int irc, UnmarkedOperand& index) {
    const auto make = [&](auto& k) -> std::unique_ptr<NumberNode> {
        return std::make_unique<ElementNode<std::remove_reference_t<decltype(k)>>>(target, irc, std::move(k));
    };
    return visitOperands(make, index);
}

std::unique_ptr<NumberNode> matrixElementNode(const DoubleValue& target, UnmarkedOperand& row,
                                              UnmarkedOperand& column) {
    const auto make = [&](auto& r, auto& c) -> std::unique_ptr<NumberNode> {
        using Node = MatrixElementNode<std::remove_reference_t<decltype(r)>, std::remove_reference_t<decltype(c)>>;
        return std::make_unique<Node>(target, std::move(r), std::move(c));
    };
    return visitOperands(make, row, column);
}

/// A call of a user function. A function without a form for numbers never
/// answers.
template <class... Arguments>
class CallNode final : public NumberNode {
public:
    explicit CallNode(const UserCallElement& call, Arguments... arguments)
        : call_(call), arguments_(std::move(arguments)...) {}
    double number(const double* frame) const override {
        const NumberFunction* function = call_.numberFunction();
        if (!function) return NotKnown::note();
        double values[FrameSlots::maxSlots];
        double* next = values;
        std::apply([&](const Arguments&... each) { ((*next++ = each.read(frame)), ...); }, arguments_);
        if (NotKnown::isNoted()) [[unlikely]]
            return 0;
        return call_.function().callNumberFunction(*function, values);
    }

private:
    const UserCallElement& call_;
    std::tuple<Arguments...> arguments_;
};

/// A number whose mark, which the variable carries, must be 0.
class UnmarkedNode final : public NumberNode {
public:
    UnmarkedNode(std::unique_ptr<NumberNode> inner, const Value& marked)
        : inner_(std::move(inner)), marked_(marked) {}
    double number(const double* frame) const override {
        return marked_.mark() == FORM_NUMERIC ? inner_->number(frame) : NotKnown::note();
    }

private:
    std::unique_ptr<NumberNode> inner_;
    const Value& marked_;
};

/// `end`.
class LengthNode final : public NumberNode {
public:
    explicit LengthNode(const EndIndexElement& end) : end_(end) {}
    double number(const double*) const override { return end_.value(); }

private:
    const EndIndexElement& end_;
};

/// A variable, slot or constant as a node.
template <class Inner>
class LeafNode final : public NumberNode {
public:
    explicit LeafNode(Inner inner) : inner_(inner) {}
    double number(const double* frame) const override { return inner_.read(frame); }

private:
    Inner inner_;
};

template <class Inner>
std::unique_ptr<NumberNode> nodeAround(Inner inner) {
    if constexpr (std::is_same_v<Inner, NodeOperand>)
        return std::move(inner.node);
    else
        return std::make_unique<LeafNode<Inner>>(inner);
}

/// Puts a node around an operand, which keeps its mark.
template <template <class> class Node, class... Fixed>
void wrap(LaneNumber& number, Fixed... fixed) {
    number.operand = std::visit(
        [&](auto& inner) -> LaneOperand {
            using Inner = std::remove_reference_t<decltype(inner)>;
            return NodeOperand{std::make_unique<Node<Inner>>(fixed..., std::move(inner))};
        },
        number.operand);
}

/// The kinds of one or two arguments are known to the node; those of more are not.
std::unique_ptr<NumberNode> makeCall(const UserCallElement& call, std::vector<UnmarkedOperand> arguments) {
    const auto node = [&call](auto&... each) -> std::unique_ptr<NumberNode> {
        return std::make_unique<CallNode<std::remove_reference_t<decltype(each)>...>>(call, std::move(each)...);
    };
    const auto asNode = [](UnmarkedOperand& argument) {
        return std::visit([](auto& inner) { return NodeOperand{nodeAround(std::move(inner))}; }, argument);
    };
    std::vector<NodeOperand> nodes;
    switch (arguments.size()) {
        case 0: return node();
        case 1: return visitOperands(node, arguments[0]);
        case 2: return visitOperands(node, arguments[0], arguments[1]);
        case 3:
        case 4: std::ranges::transform(arguments, std::back_inserter(nodes), asNode); break;
        default: return nullptr;
    }
    return nodes.size() == 3 ? node(nodes[0], nodes[1], nodes[2]) : node(nodes[0], nodes[1], nodes[2], nodes[3]);
}

}  // namespace

// ---- building

std::unique_ptr<NumberNode> nodeOf(LaneNumber number) {
    return std::visit([](auto& inner) { return nodeAround(std::move(inner)); }, number.operand);
}

std::unique_ptr<NumberNode> unmarkedNodeOf(LaneNumber number) {
    const Value* marked = number.marked;
    if (!marked) return number.constantMark == FORM_NUMERIC ? nodeOf(std::move(number)) : nullptr;
    if (auto* variable = std::get_if<VariableOperand>(&number.operand))
        return std::make_unique<LeafNode<UnmarkedVariable>>(UnmarkedVariable{variable->variable});
    return std::make_unique<UnmarkedNode>(nodeOf(std::move(number)), *marked);
}

std::optional<UnmarkedOperand> unmarkedOperandOf(LaneNumber number) {
    if (auto* variable = std::get_if<VariableOperand>(&number.operand)) return UnmarkedVariable{variable->variable};
    if (number.marked) return NodeOperand{unmarkedNodeOf(std::move(number))};
    if (number.constantMark != FORM_NUMERIC) return std::nullopt;
    if (auto* slot = std::get_if<SlotOperand>(&number.operand)) return *slot;
    if (auto* sum = std::get_if<SlotSumOperand>(&number.operand)) return *sum;
    if (auto* held = std::get_if<HeldOperand>(&number.operand)) return *held;
    if (auto* sum = std::get_if<HeldSumOperand>(&number.operand)) return *sum;
    if (auto* constant = std::get_if<ConstantOperand>(&number.operand)) return *constant;
    return NodeOperand{nodeOf(std::move(number))};
}

int FrameSlots::find(const Value* local) const {
    for (int i = 0; i < count_; ++i)
        if (locals_[i] == local) return i;
    return -1;
}

bool FrameSlots::add(const Value* local) {
    if (count_ == maxSlots) return false;
    locals_[count_++] = local;
    return true;
}

bool Hold::Number::isKept() const {
    double x;
    return readNumber(*variable, x) && variable->mark() == FORM_NUMERIC && variable->data() == element;
}

bool Hold::Array::isKept() const {
    return variable->mark() == FORM_NUMERIC && (!isVector || variable->isVector());
}

const double* Hold::holdNumber(const DoubleValue& variable) {
    const Number number{&variable, variable.data()};
    if (!number.isKept()) return nullptr;
    const auto isSame = [&](const Number& other) { return other.variable == &variable; };
    if (std::ranges::none_of(numbers_, isSame)) numbers_.push_back(number);
    return number.element;
}

bool Hold::holdArray(const DoubleValue& variable, bool isVector) {
    const Array array{&variable, isVector};
    if (!array.isKept()) return false;
    const auto isSame = [&](const Array& other) { return other.variable == &variable && other.isVector == isVector; };
    if (std::ranges::none_of(arrays_, isSame)) arrays_.push_back(array);
    return true;
}

bool Hold::isKept() const {
    return std::ranges::all_of(numbers_, &Number::isKept) && std::ranges::all_of(arrays_, &Array::isKept);
}

std::optional<LaneNumber> LaneBuilder::build(Evaluatable& element) const {
    if (auto* variable = dynamic_cast<ValueElement*>(&element)) return buildVariable(*variable);
    if (auto* number = dynamic_cast<NumberElement*>(&element)) {
        const Value& value = number->value();
        if (!travelsAsScalar(value)) return std::nullopt;
        return LaneNumber{ConstantOperand{value.doubleValue()}, nullptr, value.mark()};
    }
    if (auto* expression = dynamic_cast<Expression*>(&element)) {
        if (!BlockProgram::applies(*expression)) return std::nullopt;
        std::size_t next = 0;
        return buildLevel(expression->items(), next, OP_END >> 3);
    }
    if (auto* widened = dynamic_cast<IntToDoubleElement*>(&element)) return build(widened->inner());
    if (auto* one = dynamic_cast<IndexedElementSingle*>(&element)) return buildElement(*one);
    if (auto* two = dynamic_cast<IndexedElementDouble*>(&element)) return buildMatrixElement(*two);
    if (auto* fixed = dynamic_cast<ConstIndexElement*>(&element)) return buildFixedElement(*fixed);
    if (auto* function = dynamic_cast<SimpleFuncElement*>(&element)) return buildFunction(*function);
    if (auto* unary = dynamic_cast<UnaryOpElement*>(&element)) return buildNegation(*unary);
    if (auto* call = dynamic_cast<UserCallElement*>(&element)) return buildCall(*call);
    if (auto* end = dynamic_cast<EndIndexElement*>(&element); end && arrayTarget(end->target()))
        return LaneNumber{NodeOperand{std::make_unique<LengthNode>(*end)}, nullptr, FORM_NUMERIC};
    return std::nullopt;
}

std::optional<LaneNumber> LaneBuilder::buildPiece(const ExpressionItems& items, std::size_t& next) const {
    for (std::size_t at = next; items[at].op < OP_COMMA; ++at)
        if (!isElementwise(items[at].op) && !hasLogicalEntry(items[at].op)) return std::nullopt;
    return buildLevel(items, next, OP_COMMA >> 3);
}

std::optional<LaneNumber> LaneBuilder::buildVariable(const ValueElement& element) const {
    const auto* variable = dynamic_cast<const DoubleValue*>(element.variable());
    if (!variable) return std::nullopt;
    if (hold_) {
        const double* element = hold_->holdNumber(*variable);
        if (!element) return std::nullopt;
        return LaneNumber{HeldOperand{element}, nullptr, FORM_NUMERIC};
    }
    const int slot = slots_ ? slots_->find(variable) : -1;
    if (slot < 0) return LaneNumber{VariableOperand{variable}, variable, 0, variable};
    if (!(slots_->assigned >> slot & 1u)) return std::nullopt;
    return LaneNumber{SlotOperand{slot}, nullptr, FORM_NUMERIC};
}

std::optional<LaneNumber> LaneBuilder::buildFunction(const SimpleFuncElement& element) const {
    // Others may warn, and would do so twice.
    if (!element.threadSafe()) return std::nullopt;
    auto inner = build(element.inner());
    if (inner) wrap<FunctionNode>(*inner, element.body());
    return inner;
}

std::optional<LaneNumber> LaneBuilder::buildNegation(const UnaryOpElement& element) const {
    if (element.op() != '-' || element.type() != DOUBLE_VAL) return std::nullopt;
    auto inner = build(element.inner());
    if (inner) wrap<NegationNode>(*inner);
    return inner;
}

/// The operands from `next` on that operators below `level` join.
std::optional<LaneNumber> LaneBuilder::buildLevel(const ExpressionItems& items, std::size_t& next,
                                                  int level) const {
    if (level == 0) return build(*items[next].operand);
    auto left = buildLevel(items, next, level - 1);
    while (left && items[next].op >> 3 == level - 1) {
        const int code = items[next++].op;
        auto right = buildLevel(items, next, level - 1);
        if (!right) return std::nullopt;
        left->operand = joinNumbers(code, std::move(left->operand), std::move(right->operand));
    }
    return left;
}

std::optional<UnmarkedOperand> LaneBuilder::buildIndex(Evaluatable& index) const {
    auto* truncated = dynamic_cast<DoubleToIntElement*>(&index);
    auto built = build(truncated ? truncated->inner() : index);
    return built ? unmarkedOperandOf(std::move(*built)) : std::nullopt;
}

/// An indexed variable: no slot, which has no array behind it.
const DoubleValue* LaneBuilder::arrayTarget(const Value* target) const {
    if (slots_ && slots_->find(target) >= 0) return nullptr;
    return dynamic_cast<const DoubleValue*>(target);
}

/// An element of an array as a number: the operand is made when the array is
/// held, or needs not be.
template <class Make>
std::optional<LaneNumber> LaneBuilder::elementOf(const DoubleValue& target, bool isVector, const Make& make) const {
    if (hold_ && !hold_->holdArray(target, isVector)) return std::nullopt;
    return LaneNumber{make(), hold_ ? nullptr : &target, FORM_NUMERIC};
}

std::optional<LaneNumber> LaneBuilder::buildElement(const IndexedElementSingle& element) const {
    const DoubleValue* target = arrayTarget(element.target());
    if (!target || element.irc() > INDEX_ELEMENT) return std::nullopt;
    auto index = buildIndex(element.index());
    if (!index) return std::nullopt;
    return elementOf(*target, element.irc() != INDEX_ELEMENT, [&]() -> LaneOperand {
        if (auto* held = std::get_if<HeldOperand>(&*index)) return HeldElementOperand{target, held->element};
        return NodeOperand{elementNode(*target, element.irc(), *index)};
    });
}

std::optional<LaneNumber> LaneBuilder::buildFixedElement(const ConstIndexElement& element) const {
    const DoubleValue* target = arrayTarget(element.target());
    if (!target) return std::nullopt;
    UnmarkedOperand index = ConstantOperand{static_cast<double>(element.index())};
    return elementOf(*target, false, [&] { return NodeOperand{elementNode(*target, INDEX_ELEMENT, index)}; });
}

std::optional<LaneNumber> LaneBuilder::buildMatrixElement(const IndexedElementDouble& element) const {
    const DoubleValue* target = arrayTarget(element.target());
    if (!target) return std::nullopt;
    auto row = buildIndex(element.row());
    auto column = buildIndex(element.column());
    if (!row || !column) return std::nullopt;
    return elementOf(*target, false, [&]() -> LaneOperand {
        const auto *heldRow = std::get_if<HeldOperand>(&*row), *heldColumn = std::get_if<HeldOperand>(&*column);
        if (heldRow && heldColumn) return HeldMatrixElementOperand{target, heldRow->element, heldColumn->element};
        return NodeOperand{matrixElementNode(*target, *row, *column)};
    });
}

/// A function that has a body without a form for numbers would only be a
/// detour; one that is yet to be compiled may get such a form.
std::optional<LaneNumber> LaneBuilder::buildCall(UserCallElement& element) const {
    const UserFunc& function = element.function();
    if (!element.hasPlainArguments() || (function.hasBody() && !function.hasNumberFunction()))
        return std::nullopt;
    if (element.arguments().size() != static_cast<std::size_t>(function.parameterCount())) return std::nullopt;
    std::vector<UnmarkedOperand> arguments;
    for (Evaluatable* given : element.arguments()) {
        auto number = build(*given);
        auto argument = number ? unmarkedOperandOf(std::move(*number)) : std::nullopt;
        if (!argument) return std::nullopt;
        arguments.push_back(std::move(*argument));
    }
    auto node = makeCall(element, std::move(arguments));
    if (!node) return std::nullopt;
    return LaneNumber{NodeOperand{std::move(node)}, nullptr, FORM_NUMERIC};
}

NumberSource::NumberSource(LaneNumber number) : constantMark_(number.constantMark), marked_(number.marked) {
    if (auto* variable = std::get_if<VariableOperand>(&number.operand)) {
        kind_ = Kind::variable;
        variable_ = variable->variable;
    } else if (auto* constant = std::get_if<ConstantOperand>(&number.operand)) {
        kind_ = Kind::constant;
        constant_ = constant->constant;
    } else {
        kind_ = Kind::node;
        variable_ = number.first;
        node_ = nodeOf(std::move(number));
    }
}

NumberSource::NumberSource(Evaluatable& element) {
    if (auto built = LaneBuilder().build(element)) *this = NumberSource(std::move(*built));
}

}  // namespace vorpen
