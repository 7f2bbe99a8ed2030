// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_loop.h"

#include "eval/control_flow.h"
#include "eval/indexed_assignment.h"
#include "eval/number_condition.h"

namespace vorpen {
namespace {

using StepPtr = std::unique_ptr<NumberStep>;

bool isKept(const Hold& hold) { return hold.isKept() && !runState().debugStepping; }

/// A statement as it is.
class PlainStep : public NumberStep {
public:
    PlainStep(Statement& statement, const Hold& hold) : statement_(statement), hold_(hold) {}
    [[nodiscard]] bool exe() const override { return runStatement(); }

protected:
    /// Also for a step whose operands are not known.
    [[gnu::noinline]] bool runStatement() const {
        statement_.exe();
        return isKept(hold_) && runState().goesOn();
    }

private:
    Statement& statement_;
    const Hold& hold_;
};

class BlockStep final : public NumberStep {
public:
    BlockStep(BlockStm& block, std::vector<StepPtr> steps) : block_(block), steps_(std::move(steps)) {}
    [[nodiscard]] bool exe() const override {
        for (const StepPtr& step : steps_) {
            if (step->exe()) [[likely]]
                continue;
            block_.goOnBehind(static_cast<std::size_t>(&step - steps_.data()));
            return false;
        }
        return true;
    }

private:
    BlockStm& block_;
    std::vector<StepPtr> steps_;
};

// What a number does to the element that it is assigned to.
struct Become {
    static void change(double& target, double x) { target = x; }
};
struct Add {
    static void change(double& target, double x) { target += x; }
};
struct Subtract {
    static void change(double& target, double x) { target -= x; }
};
struct Multiply {
    static void change(double& target, double x) { target *= x; }
};
struct DivideBy {
    static void change(double& target, double x) { target /= x; }
};
struct ChangeByLetter {
    char op;
    void change(double& target, double x) const { changeElement(target, op, x); }
};

/// `x = number` and `x op= number`.
template <class Change, class Number>
class StoreStep final : public PlainStep {
public:
    StoreStep(AssignStm& statement, const Hold& hold, double* target, Number number)
        : PlainStep(statement, hold), target_(target), number_(std::move(number)) {}
    [[nodiscard]] bool exe() const override {
        const double x = number_.read(nullptr);
        if (!Number::isCertain && NotKnown::take()) return runStatement();
        Change::change(*target_, x);
        return true;
    }

private:
    double* target_;
    Number number_;
};

/// `x[k] = number`, also with an operator.
template <class Change, class Index, class Number>
class ElementStoreStep final : public PlainStep {
public:
    ElementStoreStep(AssignStm& statement, const Hold& hold, Change change, Index index, Number number)
        : PlainStep(statement, hold),
          target_(*statement.lhs()),
          change_(change),
          index_(std::move(index)),
          number_(std::move(number)) {}
    [[nodiscard]] bool exe() const override {
        const double k = index_.read(nullptr);
        const double x = number_.read(nullptr);
        if (!(Index::isCertain && Number::isCertain) && NotKnown::take()) return runStatement();
        if (!isIndexWithin(k, target_.size())) [[unlikely]]
            return runStatement();
        change_.change(target_[truncatedIndex(k) - 1], x);
        return true;
    }

private:
    DoubleValue& target_;
    [[no_unique_address]] Change change_;
    Index index_;
    Number number_;
};

/// `m[i,j] = number`, also with an operator.
template <class Row, class Column>
class MatrixStoreStep final : public PlainStep {
public:
    MatrixStoreStep(AssignStm& statement, const Hold& hold, ChangeByLetter change, Row row, Column column,
                    NodeOperand number)
        : PlainStep(statement, hold),
          target_(*statement.lhs()),
          change_(change),
          row_(std::move(row)),
          column_(std::move(column)),
          number_(std::move(number)) {}
    [[nodiscard]] bool exe() const override {
        const double row = row_.read(nullptr), column = column_.read(nullptr);
        const double x = number_.read(nullptr);
        if (NotKnown::take()) return runStatement();
        const std::int64_t at = elementPosition(target_, row, column);
        if (at < 0) [[unlikely]]
            return runStatement();
        change_.change(target_.data()[at], x);
        return true;
    }

private:
    DoubleValue& target_;
    ChangeByLetter change_;
    Row row_;
    Column column_;
    NodeOperand number_;
};

/// A condition with a branch for each truth; either may be empty.
template <class Condition>
class ChoiceStep final : public PlainStep {
public:
    ChoiceStep(Statement& statement, const Hold& hold, Condition condition, NumberBody yes, NumberBody no)
        : PlainStep(statement, hold),
          condition_(std::move(condition)),
          yes_(std::move(yes)),
          no_(std::move(no)) {}
    [[nodiscard]] bool exe() const override {
        const bool truth = condition_.test(nullptr);
        if (!Condition::isCertain && NotKnown::take()) return runStatement();
        // Two branches of the machine's own, see ChoiceNode in number_function.cpp.
        if (truth) return yes_.isEmpty() || yes_.exe();
        return no_.isEmpty() || no_.exe();
    }

private:
    Condition condition_;
    NumberBody yes_, no_;
};

/// Makes the steps of a body; what is no matter of numbers is run as it is.
class LoopBuilder {
public:
    explicit LoopBuilder(Hold& hold) : hold_(hold), lane_(hold) {}

    NumberBody buildBody(Statement& body) {
        auto* block = dynamic_cast<BlockStm*>(&body);
        if (!block) return {build(body), nullptr};
        if (block->statements().size() == 1) {
            Statement& only = *block->statements().front();
            return {build(only), &only};
        }
        std::vector<StepPtr> steps;
        for (const StatementPtr& statement : block->statements()) steps.push_back(build(*statement));
        return {std::make_unique<BlockStep>(*block, std::move(steps)), nullptr};
    }

    /// Steps that are more than the statement itself.
    [[nodiscard]] int gain() const { return gain_; }

private:
    StepPtr build(Statement& statement) {
        const Hold before = hold_;
        if (StepPtr step = buildOnNumbers(statement)) {
            ++gain_;
            return step;
        }
        hold_ = before;
        return std::make_unique<PlainStep>(statement, hold_);
    }

    StepPtr buildOnNumbers(Statement& statement) {
        if (auto* choice = dynamic_cast<IfElseStm*>(&statement))
            return buildChoice(*choice, &choice->body(), &choice->elseBody());
        if (auto* choice = dynamic_cast<IfStm*>(&statement))
            return buildChoice(*choice, &choice->body(), nullptr);
        if (auto* choice = dynamic_cast<UnlessStm*>(&statement))
            return buildChoice(*choice, nullptr, &choice->body());
        if (auto* store = dynamic_cast<SingleIndexedAssignStm*>(&statement)) return buildElementStore(*store);
        if (auto* store = dynamic_cast<IndexedAssignStm*>(&statement)) return buildMatrixStore(*store);
        if (auto* store = dynamic_cast<AssignStm*>(&statement)) return buildStore(*store);
        return nullptr;
    }

    StepPtr buildChoice(Statement& choice, Statement* yes, Statement* no) {
        return makeCondition<Place::loop>(lane_, *choice.expression(), [&](auto condition) -> StepPtr {
            NumberBody first = yes ? buildBody(*yes) : NumberBody(),
                       second = no ? buildBody(*no) : NumberBody();
            return std::make_unique<ChoiceStep<decltype(condition)>>(choice, hold_, std::move(condition),
                                                                     std::move(first), std::move(second));
        });
    }

    /// The right side, without a mark.
    std::optional<UnmarkedOperand> buildRightSide(AssignStm& statement) {
        auto number = lane_.build(*statement.expression());
        return number ? unmarkedOperandOf(std::move(*number)) : std::nullopt;
    }

    StepPtr buildStore(AssignStm& statement) {
        if (!statement.isPlainAssignment() && !statement.operatorCode()) return nullptr;
        if (!hold_.holdNumber(*statement.lhs())) return nullptr;
        auto number = buildRightSide(statement);
        if (!number) return nullptr;
        switch (statement.operatorCode().value_or(OP_END)) {
            case OP_END: return storeStep<Become>(statement, *number);
            case OP_PLUS: return storeStep<Add>(statement, *number);
            case OP_MINUS: return storeStep<Subtract>(statement, *number);
            case OP_TIMES: return storeStep<Multiply>(statement, *number);
            default: return storeStep<DivideBy>(statement, *number);
        }
    }

    template <class Change>
    StepPtr storeStep(AssignStm& statement, UnmarkedOperand& number) {
        const auto make = [&](auto& x) -> StepPtr {
            using Step = StoreStep<Change, std::remove_reference_t<decltype(x)>>;
            return std::make_unique<Step>(statement, hold_, statement.lhs()->data(), std::move(x));
        };
        return visitOperands<Place::loop>(make, number);
    }

    StepPtr buildElementStore(SingleIndexedAssignStm& statement) {
        if (statement.irc() > INDEX_ELEMENT) return nullptr;
        if (!hold_.holdArray(*statement.lhs(), statement.irc() != INDEX_ELEMENT)) return nullptr;
        auto index = lane_.buildIndex(statement.index());
        auto number = buildRightSide(statement);
        if (!index || !number) return nullptr;
        if (statement.op() == '=') return elementStoreStep(statement, Become(), *index, *number);
        return elementStoreStep(statement, ChangeByLetter{statement.op()}, *index, *number);
    }

    template <class Change>
    StepPtr elementStoreStep(AssignStm& statement, Change change, UnmarkedOperand& index,
                             UnmarkedOperand& number) {
        const auto make = [&](auto& k, auto& x) -> StepPtr {
            using Step = ElementStoreStep<Change, std::remove_reference_t<decltype(k)>,
                                          std::remove_reference_t<decltype(x)>>;
            return std::make_unique<Step>(statement, hold_, change, std::move(k), std::move(x));
        };
        return visitOperands<Place::loop>(make, index, number);
    }

    StepPtr buildMatrixStore(IndexedAssignStm& statement) {
        if (!hold_.holdArray(*statement.lhs(), false)) return nullptr;
        auto row = lane_.buildIndex(statement.row()), column = lane_.buildIndex(statement.column());
        auto number = lane_.build(*statement.expression());
        auto node = number ? unmarkedNodeOf(std::move(*number)) : nullptr;
        if (!row || !column || !node) return nullptr;
        const auto make = [&](auto& r, auto& c) -> StepPtr {
            using Step =
                MatrixStoreStep<std::remove_reference_t<decltype(r)>, std::remove_reference_t<decltype(c)>>;
            return std::make_unique<Step>(statement, hold_, ChangeByLetter{statement.op()}, std::move(r),
                                          std::move(c), NodeOperand{std::move(node)});
        };
        return visitOperands<Place::loop>(make, *row, *column);
    }

    Hold& hold_;
    LaneBuilder lane_;
    int gain_ = 0;
};

}  // namespace

void NumberBody::stopBehindOnlyOne() const {
    if (onlyOne_ && runState().debugStepping) [[unlikely]]
        stopBehind(*onlyOne_);
}

std::unique_ptr<NumberLoop> NumberLoop::compile(Statement& body, const DoubleValue* loopVariable,
                                                Evaluatable* condition) {
    auto loop = std::make_unique<NumberLoop>();
    if (loopVariable && !loop->hold_.holdNumber(*loopVariable)) return nullptr;
    LoopBuilder builder(loop->hold_);
    loop->body_ = builder.buildBody(body);
    if (builder.gain() == 0) return nullptr;
    if (condition)
        loop->condition_ = makeCondition<Place::loop>(
            LaneBuilder(loop->hold_), *condition, [](auto made) -> std::unique_ptr<TruthNode> {
                return std::make_unique<ConditionNode<decltype(made)>>(std::move(made));
            });
    return loop;
}

bool NumberLoop::mayRun() const { return isKept(hold_); }

}  // namespace vorpen
