// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Calls of built-in functions, one class for each way a body is called. The
// front end has fitted the argument to the body: a double body gets a double
// child, and so on.

#include "eval/block_program.h"
#include "eval/function_types.h"

namespace vorpen {

/// Calls a body without arguments.
class TicLikeFuncElement final : public Evaluatable {
public:
    explicit TicLikeFuncElement(TicLikeBody body) : body_(body) {}
    Value* pValue(Value* workspace) override { return storeScalar(workspace, body_(), 0); }
    Outcome evaluate(Value*) override { return Outcome::scalar(body_()); }
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool uses(const Value*) const override { return false; }

private:
    TicLikeBody body_;
};

/// A double function over every element.
class SimpleFuncElement final : public With1Evaluatable {
public:
    /// A thread-safe body may run on worker threads: it is plain arithmetic
    /// that never warns or fails.
    SimpleFuncElement(EvaluatablePtr child, RealBody body, bool threadSafe = false);
    Value* pValue(Value* workspace) override;
    Outcome evaluate(Value* workspace) override;
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::simpleFunction; }
    [[nodiscard]] bool isPure() const override { return childrenArePure(); }
    [[nodiscard]] Evaluatable& inner() const { return *child(0); }
    [[nodiscard]] RealBody body() const { return body_; }
    [[nodiscard]] bool threadSafe() const { return threadSafe_; }

private:
    RealBody body_;
    bool threadSafe_;
    std::unique_ptr<BlockProgram> program_;
};

/// A call of a body with one child and a result of a fixed type.
template <class Body, int resultType>
class BodyElement : public With1Evaluatable {
public:
    BodyElement(EvaluatablePtr child, Body body) : With1Evaluatable(std::move(child)), body_(body) {}
    [[nodiscard]] int type() const override { return resultType; }

protected:
    [[nodiscard]] Body body() const { return body_; }

private:
    Body body_;
};

/// An integer function over every element.
class SimpleFuncIntElement final : public BodyElement<IntBody, INTEGER_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override;
};

/// A complex function over every element.
class SimpleFuncComplexElement final : public BodyElement<ComplexBody, COMPLEX_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override;
};

/// A function from complex to real numbers over every element.
class SimpleFuncCtoDElement final : public BodyElement<ComplexToRealBody, DOUBLE_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override;
};

/// A body that writes an array of doubles of its own shape. A pure one does
/// nothing else, so that its result may go straight into a variable.
class DVal_DValFuncElement final : public BodyElement<VectorToDoubleBody, DOUBLE_VAL> {
public:
    DVal_DValFuncElement(EvaluatablePtr child, VectorToDoubleBody body, bool pure = false)
        : BodyElement(std::move(child), body), pure_(pure) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] bool isPure() const override { return pure_ && childrenArePure(); }

private:
    bool pure_;
};

/// A body that writes an array of integers of its own shape.
class DVal_IValFuncElement final : public BodyElement<VectorToIntBody, INTEGER_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override;
};

/// A body that reduces a whole value to an integer.
class Value2ScalarI_Element final : public BodyElement<ValueToIntBody, INTEGER_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override { return valueOf(evaluate(workspace), workspace); }
    Outcome evaluate(Value* workspace) override;
};

/// A body that reduces a whole value to a double.
class Value2ScalarD_Element final : public BodyElement<ValueToDoubleBody, DOUBLE_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override { return valueOf(evaluate(workspace), workspace); }
    Outcome evaluate(Value* workspace) override;
};

/// A reduction of a vector to one integer; a matrix gives one for each column.
class ColumnWiseFuncI_Element final : public BodyElement<ValueToIntBody, INTEGER_VAL> {
public:
    /// `logical` marks the result as truth values.
    ColumnWiseFuncI_Element(EvaluatablePtr child, ValueToIntBody body, bool logical)
        : BodyElement(std::move(child), body), logical_(logical) {}
    Value* pValue(Value* workspace) override { return valueOf(evaluate(workspace), workspace); }
    Outcome evaluate(Value* workspace) override;

private:
    bool logical_;
};

/// A reduction of a vector to one double; a matrix gives one for each column.
class ColumnWiseFuncD_Element final : public BodyElement<ValueToDoubleBody, DOUBLE_VAL> {
public:
    using BodyElement::BodyElement;
    Value* pValue(Value* workspace) override { return valueOf(evaluate(workspace), workspace); }
    Outcome evaluate(Value* workspace) override;
};

/// A body that answers with a value of its own. The child, which may be
/// missing, is the body's flag.
class AnsFuncElement final : public With1Evaluatable {
public:
    /// Calls the body once, with flag 0, to learn the type of its answer.
    AnsFuncElement(AnsBody body, EvaluatablePtr flag);
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return type_; }

private:
    AnsBody body_;
    int type_;
};

/// One argument of any numeric kind and a second one, which may be missing,
/// delivered as doubles. An integer first argument is widened. Only a pure body
/// with one argument counts as pure: a second one may be refused when the first
/// has already been evaluated into the place of the result.
class TwoArgFuncElement final : public With2Evaluatable {
public:
    TwoArgFuncElement(EvaluatablePtr first, EvaluatablePtr second, TwoArgBody body, bool pure = false);
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }
    [[nodiscard]] bool isPure() const override { return pure_ && !child(1) && childrenArePure(); }

private:
    TwoArgBody body_;
    bool pure_;
};

/// A body that changes its argument, with or without a second one. The first
/// child is a variable, or anything else that is copied before the body sees
/// it.
template <class Out>
class ChangingFuncElement final : public With1Evaluatable {
public:
    using Body = void (*)(DoubleValue& subject, Out& out);
    ChangingFuncElement(EvaluatablePtr child, Body body) : With1Evaluatable(std::move(child)), body_(body) {}
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override {
        return std::is_same_v<Out, IntValue> ? INTEGER_VAL : DOUBLE_VAL;
    }

private:
    Body body_;
};

class ChangingTwoArgElement final : public With2Evaluatable {
public:
    ChangingTwoArgElement(EvaluatablePtr first, EvaluatablePtr second, ChangingTwoArgBody body);
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }

private:
    ChangingTwoArgBody body_;
};

/// Parameters and points; the result has the shape of the points and no mark.
class SimpleFunctorElement final : public With2Evaluatable {
public:
    SimpleFunctorElement(EvaluatablePtr parameters, EvaluatablePtr points, FunctorBody body);
    Value* pValue(Value* workspace) override;
    [[nodiscard]] int type() const override { return DOUBLE_VAL; }

private:
    FunctorBody body_;
};

/// A call with any number of arguments of any kind.
class MultiInputOutput_Element : public Evaluatable {
public:
    MultiInputOutput_Element(std::vector<EvaluatablePtr> arguments, int type);
    [[nodiscard]] int type() const override { return type_; }
    [[nodiscard]] bool uses(const Value* v) const override;
    [[nodiscard]] std::size_t argumentCount() const { return arguments_.size(); }

    /// Evaluates the arguments and runs the call with further outputs.
    virtual void run(ExtraOutputs extraOutputs, Value& out) = 0;
    Value* pValue(Value* workspace) override {
        run(nullptr, *workspace);
        return workspace;
    }

protected:
    /// Leading function references are handed on; every later argument is
    /// evaluated into a workspace of its static type. `body` gets the records.
    template <class Body>
    void withArguments(Body&& body) {
        constexpr std::size_t near = 4;
        Workspaces workspaces;
        if (arguments_.size() <= near) {
            std::array<FuncArgument, near> records;
            const auto used = std::span<FuncArgument>(records).first(arguments_.size());
            evaluateArguments(used, workspaces);
            body(used);
        } else {
            std::vector<FuncArgument> records(arguments_.size());
            evaluateArguments(records, workspaces);
            body(std::span<FuncArgument>(records));
        }
    }

    /// The value of an argument, in a workspace where it has no other place.
    virtual Value* evaluateArgument(Evaluatable& argument, Workspaces& workspaces) {
        return argument.pValue(workspaces.add(argument.type()).get());
    }

private:
    void evaluateArguments(std::span<FuncArgument> records, Workspaces& workspaces);

    std::vector<EvaluatablePtr> arguments_;
    int type_;
};

class GeneralFuncElement final : public MultiInputOutput_Element {
public:
    GeneralFuncElement(std::vector<EvaluatablePtr> arguments, int type, GeneralBody body,
                       bool mayKeepResult = false)
        : MultiInputOutput_Element(std::move(arguments), type), body_(body), mayKeepResult_(mayKeepResult) {}
    void run(ExtraOutputs extraOutputs, Value& out) override;
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::generalFunction; }
    [[nodiscard]] GeneralBody body() const { return body_; }
    /// True for a body that may leave its result as it finds it, which has to
    /// be the value of the target then.
    [[nodiscard]] bool mayKeepResult() const { return mayKeepResult_; }

private:
    Value* evaluateArgument(Evaluatable& argument, Workspaces& workspaces) override;

    GeneralBody body_;
    bool mayKeepResult_;
};

}  // namespace vorpen
