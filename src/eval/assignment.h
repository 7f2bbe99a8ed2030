// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Assignments to a whole variable. Each form has a class of its own, so that
// what depends on static types is decided once, while compiling, and a run does
// as little as it can. The classes differ in what they may take for granted:
// that the target is a double, that the right side does not read the target,
// that the type of the right side is known.
//
// A number goes from the right side into a target of one element without a
// value being made. What else a statement may have to do stands apart from
// that, in a function of its own, so that the way of numbers saves no registers
// and makes no room for values: a tenth of a loop's time.

#include <functional>
#include <optional>
#include <vector>

#include "eval/function_elements.h"
#include "eval/indexing.h"
#include "eval/number_source.h"
#include "eval/statement.h"

namespace vorpen {

/// Assigns to a double variable. The right side is evaluated aside, since it
/// may read the target.
class AssignStm : public Statement {
public:
    AssignStm(int line, DoubleValue* lhs, EvaluatablePtr rhs);
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override { return v == lhs_ || Statement::uses(v); }
    [[nodiscard]] const Value* assignedValue() const override { return lhs_; }
    [[nodiscard]] DoubleValue* lhs() const { return lhs_; }

    /// True when the right side becomes the whole of the target.
    [[nodiscard]] virtual bool isPlainAssignment() const { return true; }
    /// The operator of `x op= ...`.
    [[nodiscard]] virtual std::optional<int> operatorCode() const { return std::nullopt; }

protected:
    DoubleValue* lhs_;
    int rhsType_;  ///< the static type of the right side
    NumberSource rhsNumber_;

private:
    [[gnu::noinline]] void exeGeneral();
};

/// For a call that may leave its result as it finds it: the result starts as a
/// copy of the target.
class KeepingAssignStm final : public AssignStm {
public:
    KeepingAssignStm(int line, DoubleValue* lhs, EvaluatablePtr rhs) : AssignStm(line, lhs, std::move(rhs)) {}
    void exe() override;
};

/// For a right side that does not read the target: it is computed straight
/// into it.
class FastAssignStm final : public AssignStm {
public:
    FastAssignStm(int line, DoubleValue* lhs, EvaluatablePtr rhs) : AssignStm(line, lhs, std::move(rhs)) {}
    void exe() override;

private:
    [[gnu::noinline]] void exeGeneral();
};

/// x op= right side, for a double right side. Code is one of OP_PLUS,
/// OP_MINUS, OP_TIMES, OP_DIVIDE.
template <int Code>
class OpAssignDStm final : public AssignStm {
public:
    OpAssignDStm(int line, DoubleValue* lhs, EvaluatablePtr rhs) : AssignStm(line, lhs, std::move(rhs)) {}
    void exe() override;
    [[nodiscard]] bool isPlainAssignment() const override { return false; }
    [[nodiscard]] std::optional<int> operatorCode() const override { return Code; }

private:
    [[gnu::noinline]] void exeGeneral();
};

using AssignPlusDStm = OpAssignDStm<OP_PLUS>;
using AssignMinusDStm = OpAssignDStm<OP_MINUS>;
using AssignTimesDStm = OpAssignDStm<OP_TIMES>;
using AssignDivideDStm = OpAssignDStm<OP_DIVIDE>;

/// x op= right side, for an integer right side.
class OpAssignIntStm final : public AssignStm {
public:
    OpAssignIntStm(int line, DoubleValue* lhs, EvaluatablePtr rhs, int code)
        : AssignStm(line, lhs, std::move(rhs)), code_(code) {}
    void exe() override;
    [[nodiscard]] bool isPlainAssignment() const override { return false; }
    [[nodiscard]] std::optional<int> operatorCode() const override { return code_; }

private:
    [[gnu::noinline]] void exeGeneral();

    int code_;
};

/// `x ,= v` and `x ;= v`: joins columns or rows to the target.
class GrowAssignDStm final : public AssignStm {
public:
    /// side is 'C' for columns, anything else for rows.
    GrowAssignDStm(int line, DoubleValue* lhs, EvaluatablePtr rhs, char side)
        : AssignStm(line, lhs, std::move(rhs)), side_(side) {}
    void exe() override;
    [[nodiscard]] bool isPlainAssignment() const override { return false; }

private:
    char side_;
};

/// An assignment whose target may be of any kind.
class WithAnyValueStm : public Statement {
public:
    [[nodiscard]] bool uses(const Value* v) const override { return v == target_ || Statement::uses(v); }
    [[nodiscard]] const Value* assignedValue() const override { return target_; }

protected:
    WithAnyValueStm(int line, Value* target, EvaluatablePtr rhs)
        : Statement(line, std::move(rhs)), target_(target) {}

    /// The right side as an item of a list, or null when it is none.
    [[nodiscard]] ListItemElement* listItem() const;

    Value* target_;
};

/// Assigns a right side whose type is known only at run time.
class CheckedAssignStm final : public WithAnyValueStm {
public:
    CheckedAssignStm(int line, Value* target, EvaluatablePtr rhs)
        : WithAnyValueStm(line, target, std::move(rhs)) {}
    void exe() override;
};

class ComplexAssignStm final : public WithAnyValueStm {
public:
    ComplexAssignStm(int line, ComplexValue* target, EvaluatablePtr rhs)
        : WithAnyValueStm(line, target, std::move(rhs)) {}
    void exe() override;
};

/// An assignment to a list.
class WithListValueStm : public Statement {
public:
    [[nodiscard]] bool uses(const Value* v) const override { return v == target_ || Statement::uses(v); }
    [[nodiscard]] const Value* assignedValue() const override { return target_; }

protected:
    WithListValueStm(int line, ListValue* target, EvaluatablePtr rhs)
        : Statement(line, std::move(rhs)), target_(target) {}

    /// A copy of the right side as an item. A right side of unknown type must
    /// be a list item, else the message is raised.
    [[nodiscard]] std::unique_ptr<Value> evaluateItem(std::string_view unknownMessage,
                                                      std::string_view context);
    /// A list on the right side, in a list of its own.
    void evaluateList(ListValue& out);

    ListValue* target_;
};

/// A list becomes the target; any other value becomes its one item.
class ListAssignStm final : public WithListValueStm {
public:
    ListAssignStm(int line, ListValue* target, EvaluatablePtr rhs)
        : WithListValueStm(line, target, std::move(rhs)) {}
    void exe() override;
};

/// `L ,= v` and `L ;= v`: joins a list, or appends any other value as an item.
class GrowListStm final : public WithListValueStm {
public:
    GrowListStm(int line, ListValue* target, EvaluatablePtr rhs, char side)
        : WithListValueStm(line, target, std::move(rhs)), side_(side) {}
    void exe() override;

private:
    char side_;
};

/// `[a, b] = f(...)`: runs the call with several targets.
class MultiAssignStm final : public Statement {
public:
    /// At least one target. The call is a GeneralFuncElement or a call of a
    /// user function.
    MultiAssignStm(int line, std::vector<Value*> targets, EvaluatablePtr call);
    void exe() override;
    [[nodiscard]] bool uses(const Value* v) const override;

private:
    [[nodiscard]] MultiInputOutput_Element& call() const {
        return static_cast<MultiInputOutput_Element&>(*expression());
    }
    void runAside();

    Value* first_;
    std::vector<Value*> outputs_;  ///< the further targets
    bool readsTargets_;            ///< the call reads what it is to store to
};

}  // namespace vorpen
