// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A compiled expression is a tree of Evaluatables. It is built once and
// evaluated each time its statement runs. A node answers what its value is in
// two forms of one protocol.
//
// pValue(workspace) either fills the workspace that the caller owns and
// returns it, or returns a value that somebody else owns: a variable, a
// literal. So a variable costs nothing, and a temporary lives in a workspace
// on the caller's stack that the next operator reuses. What comes back is read
// only unless it is the workspace itself.
//
// evaluate(workspace) is the same question for callers that can take a plain
// number: a scalar then travels in registers and no value is built at all.
// Every node is evaluated exactly once by either form, whichever way the
// answer comes.
//
// Evaluation is re-entrant: nothing of a running evaluation is written into
// the tree.

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "values/list_value.h"
#include "values/mathmatrix.h"

namespace vorpen {

/// The shape of a node, for the decisions made while compiling.
enum class ElementKind {
    other = 0,
    constant = 1,         ///< a number or "[]"
    namedValue = 2,       ///< a variable, or a constant index into one
    doubleToInt = 3,
    indexed = 4,
    expression = 5,
    sequence = 6,
    endIndex = 7,
    openSequence = 8,
    simpleFunction = 9,
    generalFunction = 10,
    userFunction = 11,
    functionReference = 12,
    listItem = 13,
};

/// The answer of an evaluation: a scalar of the node's static type with its
/// mark, or a value in memory. It fits two registers.
class Outcome {
public:
    static Outcome scalar(double number, int mark = 0) {
        return {number, static_cast<std::uintptr_t>(mark)};
    }
    static Outcome of(Value* value) { return {0.0, reinterpret_cast<std::uintptr_t>(value)}; }

    /// Marks below this stand in the place of the pointer; a mark with planes
    /// is above it, and such a value is always handed over in memory.
    static constexpr std::uintptr_t markLimit = 16;

    [[nodiscard]] bool isScalar() const { return where < markLimit; }
    [[nodiscard]] int mark() const { return static_cast<int>(where); }
    [[nodiscard]] Value* value() const { return reinterpret_cast<Value*>(where); }

    double number;
    std::uintptr_t where;
};

/// Whether a value can travel as a scalar outcome.
inline bool travelsAsScalar(const Value& v) {
    return v.size() == 1 && v.nrow() == 1 && static_cast<unsigned>(v.mark()) < Outcome::markLimit &&
           v.valueType() <= DOUBLE_VAL;
}

/// A value as an outcome: as a scalar when it is one.
inline Outcome outcomeOf(Value* v) {
    if (!travelsAsScalar(*v)) return Outcome::of(v);
    return Outcome::scalar(v->doubleValue(), v->mark());
}

/// Puts a scalar with its mark into a workspace of any kind.
inline Value* storeScalar(Value* workspace, double number, int mark) {
    workspace->assignDouble(number);
    workspace->setMark(mark);
    return workspace;
}

class Evaluatable {
public:
    virtual ~Evaluatable() = default;

    /// The workspace is of the kind of the static type, or a double where the
    /// static type is integer.
    virtual Value* pValue(Value* workspace) = 0;

    /// As pValue, but a scalar comes back as a number.
    virtual Outcome evaluate(Value* workspace) { return outcomeOf(pValue(workspace)); }

    /// The static type: a ValueType, or UNKNOWN_VAL.
    [[nodiscard]] virtual int type() const = 0;
    [[nodiscard]] virtual ElementKind elementKind() const { return ElementKind::other; }

    /// True if evaluating this node reads the value.
    [[nodiscard]] virtual bool uses(const Value* v) const = 0;

    /// True if evaluating this node changes no variable and runs no code of
    /// the user, so that values read before and after it are the same.
    [[nodiscard]] virtual bool isPure() const { return false; }
};

using EvaluatablePtr = std::unique_ptr<Evaluatable>;

/// The value of a node in memory, whichever way it answers.
inline Value* valueOf(Outcome outcome, Value* workspace) {
    return outcome.isScalar() ? storeScalar(workspace, outcome.number, outcome.mark()) : outcome.value();
}

/// Makes the target a private copy of a result of the same kind, unless the
/// result is the target.
template <class T>
void copyIn(T& target, const Value& result) {
    if (&target != &result) target.copyFrom(result);
}

/// A workspace of the kind that a static type asks for; unknown types get a
/// double. Made and dropped at each evaluation, so both are in line.
class Workspace {
public:
    explicit Workspace(int staticType) {
        switch (staticType) {
            case INTEGER_VAL: value_ = new (room_) IntValue; break;
            case COMPLEX_VAL: value_ = new (room_) ComplexValue; break;
            case LIST_VAL: value_ = new (room_) ListValue; break;
            default: value_ = new (room_) DoubleValue;
        }
    }
    ~Workspace() {
        switch (value_->valueType()) {
            case INTEGER_VAL: static_cast<IntValue*>(value_)->~IntValue(); break;
            case DOUBLE_VAL: static_cast<DoubleValue*>(value_)->~DoubleValue(); break;
            default: value_->~Value();
        }
    }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    [[nodiscard]] Value* get() { return value_; }
    [[nodiscard]] Value& operator*() { return *value_; }
    [[nodiscard]] Value* operator->() { return value_; }

private:
    static constexpr std::size_t roomSize =
        std::max({sizeof(IntValue), sizeof(DoubleValue), sizeof(ComplexValue), sizeof(ListValue)});
    alignas(16) unsigned char room_[roomSize];
    Value* value_;
};

/// Workspaces for the operands of one evaluation; the first few cost no
/// allocation. They keep their addresses.
class Workspaces {
public:
    Workspaces() = default;
    ~Workspaces() {
        while (count_ > 0) near(--count_)->~Workspace();
    }
    Workspaces(const Workspaces&) = delete;
    Workspaces& operator=(const Workspaces&) = delete;

    Workspace& add(int staticType) {
        if (count_ < nearCount) return *new (near(count_++)) Workspace(staticType);
        return *far_.emplace_back(std::make_unique<Workspace>(staticType));
    }

private:
    static constexpr int nearCount = 4;
    Workspace* near(int i) { return reinterpret_cast<Workspace*>(rooms_) + i; }

    int count_ = 0;
    std::vector<std::unique_ptr<Workspace>> far_;
    alignas(Workspace) unsigned char rooms_[nearCount * sizeof(Workspace)];
};

/// Nodes with owned children, any of which may be missing where the class
/// says so.
template <int N>
class WithChildren : public Evaluatable {
public:
    [[nodiscard]] bool uses(const Value* v) const override {
        for (const auto& child : children_)
            if (child && child->uses(v)) return true;
        return false;
    }

protected:
    template <class... Children>
    explicit WithChildren(Children... children) : children_{std::move(children)...} {}

    [[nodiscard]] Evaluatable* child(int i) const { return children_[i].get(); }
    [[nodiscard]] EvaluatablePtr& childOwner(int i) { return children_[i]; }
    [[nodiscard]] bool childrenArePure() const {
        for (const auto& child : children_)
            if (child && !child->isPure()) return false;
        return true;
    }

private:
    EvaluatablePtr children_[N];
};

using With1Evaluatable = WithChildren<1>;
using With2Evaluatable = WithChildren<2>;
using With3Evaluatable = WithChildren<3>;

}  // namespace vorpen
