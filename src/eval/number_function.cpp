// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_function.h"

#include "eval/assignment.h"
#include "eval/control_flow.h"
#include "eval/number_condition.h"
#include "eval/return_statement.h"
#include "eval/user_func.h"

namespace vorpen {
namespace {

using Flow = NumberStatement::Flow;
using NumberStatementPtr = std::unique_ptr<NumberStatement>;
using NodePtr = std::unique_ptr<NumberNode>;

/// Gives a slot a value; a return does so and ends the call.
template <Flow flow, class Number>
class StoreNode final : public NumberStatement {
public:
    StoreNode(int slot, Number number) : slot_(slot), number_(std::move(number)) {}
    Flow exe(double* frame) const override {
        frame[slot_] = number_.read(frame);
        return !Number::isCertain && NotKnown::isNoted() ? Flow::notKnown : flow;
    }
    NodePtr takeReturned() override {
        return flow == Flow::done ? nodeOf({std::move(number_), nullptr, FORM_NUMERIC}) : nullptr;
    }

private:
    int slot_;
    Number number_;
};

template <Flow flow>
NumberStatementPtr makeStore(int slot, LaneOperand number) {
    const auto make = [slot](auto& x) -> NumberStatementPtr {
        using Number = std::remove_reference_t<decltype(x)>;
        return std::make_unique<StoreNode<flow, Number>>(slot, std::move(x));
    };
    return visitOperands<Place::outside>(make, number);
}

class EndNode final : public NumberStatement {
public:
    Flow exe(double*) const override { return Flow::done; }
};

class SequenceNode final : public NumberStatement {
public:
    explicit SequenceNode(std::vector<NumberStatementPtr> statements) : statements_(std::move(statements)) {}
    Flow exe(double* frame) const override {
        for (const NumberStatementPtr& statement : statements_)
            if (const Flow flow = statement->exe(frame); flow != Flow::next) return flow;
        return Flow::next;
    }

private:
    std::vector<NumberStatementPtr> statements_;
};

/// A condition with a branch for each truth; either may be missing.
template <class Condition>
class ChoiceNode final : public NumberStatement {
public:
    ChoiceNode(Condition condition, NumberStatementPtr yes, NumberStatementPtr no)
        : condition_(std::move(condition)), yes_(std::move(yes)), no_(std::move(no)) {}
    Flow exe(double* frame) const override {
        const bool truth = condition_.test(frame);
        if (!Condition::isCertain && NotKnown::isNoted()) return Flow::notKnown;
        // Two branches of the machine's own, and no table of two: what is called
        // through a table is foreseen by the processor far less often, which made
        // a recursion take twice as long.
        if (truth) return yes_ ? yes_->exe(frame) : Flow::next;
        return no_ ? no_->exe(frame) : Flow::next;
    }

private:
    Condition condition_;
    NumberStatementPtr yes_, no_;
};

/// Makes the second form of a body; each way answers null where there is none.
class BodyBuilder {
public:
    /// The slot of the first output, and those of all outputs as bits.
    BodyBuilder(FrameSlots& slots, int output, unsigned outputs)
        : slots_(slots), output_(output), outputs_(outputs) {}

    NumberStatementPtr build(Statement& statement) {
        if (auto* block = dynamic_cast<BlockStm*>(&statement)) return buildBlock(*block);
        if (auto* choice = dynamic_cast<IfElseStm*>(&statement))
            return buildChoice(*choice, &choice->body(), &choice->elseBody());
        if (auto* choice = dynamic_cast<IfStm*>(&statement)) return buildChoice(*choice, &choice->body(), nullptr);
        if (auto* choice = dynamic_cast<UnlessStm*>(&statement))
            return buildChoice(*choice, nullptr, &choice->body());
        if (auto* end = dynamic_cast<ReturnStm*>(&statement)) return buildReturn(*end);
        if (auto* assignment = dynamic_cast<AssignStm*>(&statement)) return buildAssignment(*assignment);
        return nullptr;
    }

    [[nodiscard]] bool endsWithOutputs() const { return (slots_.assigned & outputs_) == outputs_; }

private:
    /// Behind a return anything may be said of the slots.
    static constexpr unsigned everything = ~0u;

    [[nodiscard]] bool isAssigned(int slot) const { return (slots_.assigned >> slot & 1u) != 0; }
    void setAssigned(int slot) { slots_.assigned |= 1u << slot; }

    NumberStatementPtr buildBlock(BlockStm& block) {
        std::vector<NumberStatementPtr> statements;
        for (const StatementPtr& statement : block.statements()) {
            statements.push_back(build(*statement));
            if (!statements.back()) return nullptr;
        }
        if (statements.size() == 1) return std::move(statements.front());
        return std::make_unique<SequenceNode>(std::move(statements));
    }

    NumberStatementPtr buildChoice(Statement& choice, Statement* yes, Statement* no) {
        // The condition comes first, with what has its value by then.
        return makeCondition<Place::outside>(LaneBuilder(slots_), *choice.expression(), [&](auto condition) {
            return withBranches(std::move(condition), yes, no);
        });
    }

    template <class Condition>
    NumberStatementPtr withBranches(Condition condition, Statement* yes, Statement* no) {
        const unsigned before = slots_.assigned;
        NumberStatementPtr first = yes ? build(*yes) : nullptr;
        const unsigned afterFirst = std::exchange(slots_.assigned, before);
        NumberStatementPtr second = no ? build(*no) : nullptr;
        if ((yes && !first) || (no && !second)) return nullptr;
        slots_.assigned &= afterFirst;
        return std::make_unique<ChoiceNode<Condition>>(std::move(condition), std::move(first), std::move(second));
    }

    NumberStatementPtr buildReturn(ReturnStm& statement) {
        NumberStatementPtr result;
        if (!statement.expression()) {
            if (endsWithOutputs()) result = std::make_unique<EndNode>();
        } else if (slots_.find(statement.lhs()) == output_) {
            result = buildStore<Flow::done>(output_, *statement.expression());
            setAssigned(output_);
            if (!endsWithOutputs()) return nullptr;
        }
        slots_.assigned = everything;
        return result;
    }

    NumberStatementPtr buildAssignment(AssignStm& statement) {
        const int slot = slots_.find(statement.lhs());
        if (slot < 0) return nullptr;
        if (statement.isPlainAssignment()) {
            auto result = buildStore<Flow::next>(slot, *statement.expression());
            setAssigned(slot);
            return result;
        }
        if (!statement.operatorCode() || !isAssigned(slot)) return nullptr;
        auto number = LaneBuilder(slots_).build(*statement.expression());
        if (!number) return nullptr;
        return makeStore<Flow::next>(
            slot, joinNumbers(*statement.operatorCode(), SlotOperand{slot}, std::move(number->operand)));
    }

    template <Flow flow>
    NumberStatementPtr buildStore(int slot, Evaluatable& expression) {
        auto number = LaneBuilder(slots_).build(expression);
        if (!number) return nullptr;
        // A certain number has no variable that could carry a mark.
        if (!number->marked && number->constantMark == FORM_NUMERIC)
            return makeStore<flow>(slot, std::move(number->operand));
        NodePtr node = unmarkedNodeOf(std::move(*number));
        return node ? makeStore<flow>(slot, NodeOperand{std::move(node)}) : nullptr;
    }

    FrameSlots& slots_;
    int output_;
    unsigned outputs_;
};

}  // namespace

std::unique_ptr<NumberFunction> NumberFunction::compile(UserFunc& function, Statement& body,
                                                        const Value& output) {
    FrameSlots slots;
    const auto locals = function.locals();
    const int parameters = function.parameterCount();
    for (int i = 0; i < static_cast<int>(locals.size()); ++i) {
        const bool isPersistent = i >= parameters && i < parameters + function.persistentCount();
        if (isPersistent) continue;
        if (locals[i].value->valueType() != DOUBLE_VAL || !slots.add(locals[i].value.get())) return nullptr;
    }
    if (slots.find(&output) < 0 && !slots.add(&output)) return nullptr;
    slots.assigned = (1u << parameters) - 1;
    const int first = slots.find(&output);
    unsigned outputs = 1u << first;
    for (const Value* other : function.otherOutputs()) {
        const int slot = slots.find(other);
        if (slot < 0) return nullptr;
        outputs |= 1u << slot;
    }
    BodyBuilder builder(slots, first, outputs);
    auto compiled = builder.build(body);
    if (!compiled || !builder.endsWithOutputs()) return nullptr;
    return std::make_unique<NumberFunction>(std::move(compiled), first);
}

}  // namespace vorpen
