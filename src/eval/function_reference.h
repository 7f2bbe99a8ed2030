// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A function handed to another function: by its name (`fzero(f, 1)`), or
// written on the spot (`integ(x^2; x, [0,1])`). As a value in an expression
// it is empty; the numerical built-ins find it among their arguments and call
// it themselves, many times. So a call with numbers makes no value and the
// frames of a function in progress are respected: a method may run inside the
// very function that it calls.

#include <string>
#include <vector>

#include "eval/function_types.h"
#include "eval/user_func.h"

namespace vorpen {

/// An expression of parameters of its own: what was written on the spot, or a
/// built-in applied to values that stand for its arguments.
class AnonymousFunction {
public:
    /// Makes the parameters; the body is compiled against them.
    explicit AnonymousFunction(int parameterCount);
    [[nodiscard]] int parameterCount() const { return static_cast<int>(parameters_.size()); }
    [[nodiscard]] DoubleValue* parameter(int i) { return parameters_[i].get(); }
    void setBody(EvaluatablePtr body);
    /// The static type of a result.
    [[nodiscard]] int type() const { return type_; }
    [[nodiscard]] bool uses(const Value* v) const { return body_->uses(v); }
    /// The built-in function that is all of the body, applied to the one
    /// parameter; null for any other body.
    [[nodiscard]] RealBody realBody() const { return realBody_; }

    /// The result is a scalar or stands in the workspace, which is of the
    /// body's kind, or a double where that is integer or unknown, and the
    /// caller's alone. The body may lead back here; the parameters are put back
    /// afterwards.
    Outcome call(std::span<const Outcome> inputs, Value* workspace);

private:
    class Frame;

    std::vector<std::unique_ptr<DoubleValue>> parameters_;
    void setInput(DoubleValue& parameter, Outcome input) const;

    EvaluatablePtr body_;
    bool isPure_ = false;
    int type_ = DOUBLE_VAL;
    RealBody realBody_ = nullptr;
    int depth_ = 0;  ///< calls in progress
};

class FuncRefElement final : public Evaluatable {
public:
    /// A user function by its name.
    explicit FuncRefElement(UserFunc& function) : name_(function.name()), function_(&function) {}
    /// A function without a name, or a built-in.
    FuncRefElement(std::string name, std::unique_ptr<AnonymousFunction> body)
        : name_(std::move(name)), anonymous_(std::move(body)) {}

    /// An empty value; the function is not called.
    Value* pValue(Value* workspace) override;
    /// The static type of a result.
    [[nodiscard]] int type() const override;
    [[nodiscard]] ElementKind elementKind() const override { return ElementKind::functionReference; }
    [[nodiscard]] bool uses(const Value* v) const override;

    [[nodiscard]] const std::string& name() const { return name_; }
    /// Null for anything but a user function.
    [[nodiscard]] UserFunc* userFunction() const { return function_; }
    [[nodiscard]] int inputCount() const;

    /// A function from number to number that does all that a call with a number
    /// does; null where there is none.
    [[nodiscard]] RealBody realBody() const { return anonymous_ ? anonymous_->realBody() : nullptr; }

    /// Calls the function with one input for each parameter, numbers or double
    /// values. The workspace is of the kind of type() and the caller's alone:
    /// no function reads it, and its block is used again from call to call.
    /// See Outcome for where the answer is. Fails as a call in an expression
    /// does.
    Outcome call(std::span<const Outcome> inputs, Value* workspace);

    /// The same for a function of one number that has a form for it. False,
    /// with nothing done, for any other.
    [[nodiscard]] bool callOnNumber(double x, double& result);

    /// The same point by point: the function is called for each element of the
    /// last input and must answer one number each time, else operator failure
    /// `]`. The workspace is a double and takes the shape of that input.
    void callForEach(std::span<const Outcome> inputs, DoubleValue& workspace);

    /// The most inputs that a method passes to a function.
    static constexpr std::size_t maxInputs = 4;

private:
    Outcome callUserFunction(std::span<const Outcome> inputs, Value* workspace);

    std::string name_;
    UserFunc* function_ = nullptr;
    std::unique_ptr<AnonymousFunction> anonymous_;
};

}  // namespace vorpen
