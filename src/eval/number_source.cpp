// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_source.h"

#include <optional>
#include <variant>

#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/indexing.h"
#include "eval/logical_table.h"
#include "eval/user_func.h"
#include "values/kernels.h"

namespace vorpen {
namespace {

// ---- operands: a node is made for the kinds of its own

struct VariableOperand {
    const DoubleValue* variable;
    bool read(double& x) const { return readNumber(*variable, x); }
};

struct ConstantOperand {
    double constant;
    bool read(double& x) const {
        x = constant;
        return true;
    }
};

struct NodeOperand {
    std::unique_ptr<NumberNode> node;
    bool read(double& x) const {
        const NumberNode::Answer answer = node->number();
        x = answer.number;
        return answer.known;
    }
};

using LaneOperand = std::variant<VariableOperand, ConstantOperand, NodeOperand>;

/// An operand with whatever carries its mark.
struct Built {
    LaneOperand operand;
    const Value* marked;
    int constantMark;
};

// ---- nodes

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
    Answer number() const override {
        double a, b;
        if (!left_.read(a) || !right_.read(b)) return unknown;
        return {op_.apply(a, b), true};
    }

private:
    [[no_unique_address]] Operator op_;
    L left_;
    R right_;
};

template <class Inner>
class NegationNode final : public NumberNode {
public:
    explicit NegationNode(Inner inner) : inner_(std::move(inner)) {}
    Answer number() const override {
        double x;
        if (!inner_.read(x)) return unknown;
        return {-x, true};
    }

private:
    Inner inner_;
};

template <class Inner>
class FunctionNode final : public NumberNode {
public:
    FunctionNode(RealBody body, Inner inner) : body_(body), inner_(std::move(inner)) {}
    Answer number() const override {
        double x;
        if (!inner_.read(x)) return unknown;
        return {body_(x), true};
    }

private:
    RealBody body_;
    Inner inner_;
};

/// A number in the place of an index; a truth value would be a mask.
template <class Inner>
struct IndexOperand {
    Inner inner;
    const Value* marked;

    bool read(double& k) const {
        return inner.read(k) && (!marked || (marked->mark() & 15) == FORM_NUMERIC);
    }
};

template <class Index>
class ElementNode final : public NumberNode {
public:
    ElementNode(const DoubleValue& target, int irc, Index index)
        : target_(target), elementsOnly_(irc == INDEX_ELEMENT), index_(std::move(index)) {}
    Answer number() const override {
        double k;
        if (!index_.read(k) || !isIndexWithin(k, target_.size())) return unknown;
        if (target_.form() == FORM_3D || !(elementsOnly_ || target_.isVector())) return unknown;
        return {target_[static_cast<int>(k) - 1], true};
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
    Answer number() const override {
        double r, c;
        if (!row_.read(r) || !column_.read(c) || target_.form() >= FORM_KEY) return unknown;
        const int at = elementPosition(target_, r, c);
        if (at < 0) return unknown;
        return {target_[at], true};
    }

private:
    const DoubleValue& target_;
    Row row_;
    Column column_;
};

/// A call of a quick function.
class QuickCallNode final : public NumberNode {
public:
    explicit QuickCallNode(const QuickUserFuncElement& call) : call_(call) {}
    Answer number() const override { return call_.number(); }

private:
    const QuickUserFuncElement& call_;
};

/// `end`.
class LengthNode final : public NumberNode {
public:
    explicit LengthNode(const EndIndexElement& end) : end_(end) {}
    Answer number() const override { return {static_cast<double>(end_.value()), true}; }

private:
    const EndIndexElement& end_;
};

}  // namespace

// ---- building

class LaneBuilder {
public:
    static std::optional<Built> build(Evaluatable& element) {
        if (auto* variable = dynamic_cast<ValueElement*>(&element)) return buildVariable(*variable);
        if (auto* number = dynamic_cast<NumberElement*>(&element)) return buildConstant(*number);
        if (auto* expression = dynamic_cast<Expression*>(&element)) return buildExpression(*expression);
        if (auto* widened = dynamic_cast<IntToDoubleElement*>(&element)) return build(widened->inner());
        if (auto* one = dynamic_cast<IndexedElementSingle*>(&element)) return buildElement(*one);
        if (auto* two = dynamic_cast<IndexedElementDouble*>(&element)) return buildMatrixElement(*two);
        if (auto* fixed = dynamic_cast<ConstIndexElement*>(&element)) return buildFixedElement(*fixed);
        if (auto* function = dynamic_cast<SimpleFuncElement*>(&element)) return buildFunction(*function);
        if (auto* unary = dynamic_cast<UnaryOpElement*>(&element)) return buildNegation(*unary);
        if (auto* call = dynamic_cast<QuickUserFuncElement*>(&element))
            return Built{NodeOperand{std::make_unique<QuickCallNode>(*call)}, nullptr, FORM_NUMERIC};
        if (auto* end = dynamic_cast<EndIndexElement*>(&element))
            return Built{NodeOperand{std::make_unique<LengthNode>(*end)}, nullptr, FORM_NUMERIC};
        return std::nullopt;
    }

    static void fill(NumberSource& source, Built built) {
        source.marked_ = built.marked;
        source.constantMark_ = built.constantMark;
        if (auto* variable = std::get_if<VariableOperand>(&built.operand)) {
            source.kind_ = NumberSource::Kind::variable;
            source.variable_ = variable->variable;
        } else if (auto* constant = std::get_if<ConstantOperand>(&built.operand)) {
            source.kind_ = NumberSource::Kind::constant;
            source.constant_ = constant->constant;
        } else {
            source.kind_ = NumberSource::Kind::node;
            source.node_ = std::move(std::get<NodeOperand>(built.operand).node);
        }
    }

private:
    static std::optional<Built> buildVariable(const ValueElement& element) {
        const auto* variable = dynamic_cast<const DoubleValue*>(element.variable());
        if (!variable) return std::nullopt;
        return Built{VariableOperand{variable}, variable, 0};
    }

    static std::optional<Built> buildConstant(const NumberElement& element) {
        const Value& value = element.value();
        if (!travelsAsScalar(value)) return std::nullopt;
        return Built{ConstantOperand{value.doubleValue()}, nullptr, value.mark()};
    }

    static std::optional<Built> buildFunction(const SimpleFuncElement& element) {
        // Others may warn, and would do so twice.
        if (!element.threadSafe()) return std::nullopt;
        auto inner = build(element.inner());
        if (!inner) return std::nullopt;
        std::visit(
            [&](auto& operand) {
                using Inner = std::remove_reference_t<decltype(operand)>;
                inner->operand =
                    NodeOperand{std::make_unique<FunctionNode<Inner>>(element.body(), std::move(operand))};
            },
            inner->operand);
        return inner;
    }

    static std::optional<Built> buildNegation(const UnaryOpElement& element) {
        if (element.op() != '-' || element.type() != DOUBLE_VAL) return std::nullopt;
        auto inner = build(element.inner());
        if (!inner) return std::nullopt;
        std::visit(
            [&](auto& operand) {
                using Inner = std::remove_reference_t<decltype(operand)>;
                inner->operand = NodeOperand{std::make_unique<NegationNode<Inner>>(std::move(operand))};
            },
            inner->operand);
        return inner;
    }

    static std::optional<Built> buildExpression(const Expression& expression) {
        if (!BlockProgram::applies(expression)) return std::nullopt;
        std::size_t next = 0;
        return buildLevel(expression.items(), next, OP_END >> 3);
    }

    /// The operands from `next` on that operators below `level` join.
    static std::optional<Built> buildLevel(const ExpressionItems& items, std::size_t& next, int level) {
        if (level == 0) return build(*items[next].operand);
        auto left = buildLevel(items, next, level - 1);
        while (left && items[next].op >> 3 == level - 1) {
            const int code = items[next++].op;
            auto right = buildLevel(items, next, level - 1);
            if (!right) return std::nullopt;
            left->operand = NodeOperand{combine(code, std::move(left->operand), std::move(right->operand))};
        }
        return left;
    }

    static std::unique_ptr<NumberNode> combine(int code, LaneOperand left, LaneOperand right) {
        switch (code) {
            case OP_PLUS: return join(Plus{}, std::move(left), std::move(right));
            case OP_MINUS: return join(Minus{}, std::move(left), std::move(right));
            case OP_TIMES: return join(Times{}, std::move(left), std::move(right));
            case OP_DIVIDE: return join(Divide{}, std::move(left), std::move(right));
            case OP_REMAINDER: return join(Remainder{}, std::move(left), std::move(right));
            default: return join(OtherOperator{code}, std::move(left), std::move(right));
        }
    }

    template <class Operator>
    static std::unique_ptr<NumberNode> join(Operator op, LaneOperand left, LaneOperand right) {
        return std::visit(
            [op](auto& l, auto& r) -> std::unique_ptr<NumberNode> {
                using L = std::remove_reference_t<decltype(l)>;
                using R = std::remove_reference_t<decltype(r)>;
                return std::make_unique<BinaryNode<Operator, L, R>>(op, std::move(l), std::move(r));
            },
            left, right);
    }

    /// An index, behind the truncation that the front end puts around it.
    static std::optional<Built> buildIndex(Evaluatable& index) {
        auto* truncated = dynamic_cast<DoubleToIntElement*>(&index);
        auto built = build(truncated ? truncated->inner() : index);
        if (built && !built->marked && (built->constantMark & 15) != FORM_NUMERIC) return std::nullopt;
        return built;
    }

    template <class Inner>
    static IndexOperand<Inner> asIndex(Inner& inner, const Built& built) {
        return {std::move(inner), built.marked};
    }

    static std::optional<Built> buildElement(const IndexedElementSingle& element) {
        const auto* target = dynamic_cast<const DoubleValue*>(element.target());
        if (!target || element.irc() > INDEX_ELEMENT) return std::nullopt;
        auto index = buildIndex(element.index());
        if (!index) return std::nullopt;
        auto node = std::visit(
            [&](auto& inner) -> std::unique_ptr<NumberNode> {
                auto operand = asIndex(inner, *index);
                return std::make_unique<ElementNode<decltype(operand)>>(*target, element.irc(),
                                                                        std::move(operand));
            },
            index->operand);
        return Built{NodeOperand{std::move(node)}, target, 0};
    }

    static std::optional<Built> buildFixedElement(const ConstIndexElement& element) {
        const auto* target = dynamic_cast<const DoubleValue*>(element.target());
        if (!target) return std::nullopt;
        auto node = std::make_unique<ElementNode<ConstantOperand>>(
            *target, INDEX_ELEMENT, ConstantOperand{static_cast<double>(element.index())});
        return Built{NodeOperand{std::move(node)}, target, 0};
    }

    static std::optional<Built> buildMatrixElement(const IndexedElementDouble& element) {
        const auto* target = dynamic_cast<const DoubleValue*>(element.target());
        if (!target) return std::nullopt;
        auto row = buildIndex(element.row());
        auto column = buildIndex(element.column());
        if (!row || !column) return std::nullopt;
        auto node = std::visit(
            [&](auto& r, auto& c) -> std::unique_ptr<NumberNode> {
                auto rowOperand = asIndex(r, *row);
                auto columnOperand = asIndex(c, *column);
                using Node = MatrixElementNode<decltype(rowOperand), decltype(columnOperand)>;
                return std::make_unique<Node>(*target, std::move(rowOperand), std::move(columnOperand));
            },
            row->operand, column->operand);
        return Built{NodeOperand{std::move(node)}, target, 0};
    }
};

NumberSource::NumberSource(Evaluatable& element) {
    if (auto built = LaneBuilder::build(element)) LaneBuilder::fill(*this, std::move(*built));
}

}  // namespace vorpen
