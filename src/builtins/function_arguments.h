// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The arguments of a built-in that works on a function: the function itself,
// an optional parameter that is handed to it, the points at which it is
// called, and an optional further argument. And the way such a built-in calls
// its function: a number goes in and comes out without a value being made, so
// that a method pays for the function and little else. Nothing of a running
// method is kept in the function, which may therefore use the method itself.

#include <array>
#include <string_view>

#include "eval/function_reference.h"
#include "eval/function_types.h"

namespace vorpen {

struct FunctionArgs {
    FuncRefElement* function = nullptr;
    DoubleValue* parameter = nullptr;  ///< may be missing
    DoubleValue* point = nullptr;      ///< never empty
    DoubleValue* extra = nullptr;      ///< may be missing, never empty
};

/// What stands in which place behind the function.
enum class ArgumentForm {
    standard,   ///< (f, point), (f, parameter, point), either with an extra as fourth: (f, point, [], extra)
    minimum,    ///< the same, and (f, point, extra) for a function of one input
    fit,        ///< (f, parameter, point, extra, ...)
    equations,  ///< (f, second function, parameter, point, extra)
};

/// Reads the arguments. In the first two forms a function of one input takes
/// no parameter and one of two inputs needs one. Integers are converted; the
/// copies stay with the arguments. The others are the caller's own values,
/// which the function may change: a method reads what it needs of `point` and
/// `extra` before it calls the function.
/// @throws RuntimeError "1st argument must be a function", "too many arguments
///     for the specified function", "missing parameter value", "illegal use of
///     empty argument []", "invalid argument", "invalid argument type"
[[nodiscard]] FunctionArgs bindFunctionArgs(std::span<FuncArgument> arguments,
                                            ArgumentForm form = ArgumentForm::standard);

/// Calls the function of a method.
class MethodFunction {
public:
    /// @throws RuntimeError "non-real result type not yet implemented" for a
    ///     function whose results are complex numbers or lists
    explicit MethodFunction(FuncRefElement& function);
    explicit MethodFunction(const FunctionArgs& bound) : MethodFunction(*bound.function) {
        setCallInputs(bound.parameter, nullptr);
    }
    MethodFunction(const MethodFunction&) = delete;
    MethodFunction& operator=(const MethodFunction&) = delete;

    /// How many inputs the function declares.
    [[nodiscard]] int inputCount() const { return function_.inputCount(); }
    /// True unless the function is built in.
    [[nodiscard]] bool isUserFunction() const;

    /// What the function is given from now on; both are read anew at each
    /// call. Without a parameter the function gets the point alone.
    void setCallInputs(DoubleValue* parameter, DoubleValue* point);

    /// The function's answer at the point. It stands until the next call and
    /// is not empty.
    /// @throws RuntimeError "function returned empty vector []"
    const DoubleValue& evaluate();

    /// The first element of the answer at a number, which takes the place of
    /// the point. Fails as `evaluate` does.
    double valueAt(double x) {
        if (!parameter_) {
            double number;
            if (realBody_) return realBody_(x);
            if (function_.callOnNumber(x, number)) return number;
        }
        const Outcome result = call(Outcome::scalar(x));
        return result.isScalar() ? result.number : asArray(result)[0];
    }

    /// One number for each element of the point. A user function that answers
    /// another count is called element by element, now and in later calls.
    /// @throws RuntimeError "user function did not return the requested number
    ///     of values", with the name in front
    const DoubleValue& evaluateAtEach(std::string_view name);

private:
    std::span<const Outcome> inputsWith(Outcome point) {
        inputs_[1] = point;
        if (!parameter_) return std::span(inputs_).last(1);
        inputs_[0] = outcomeOf(parameter_);
        return inputs_;
    }
    Outcome call(Outcome point) { return function_.call(inputsWith(point), &workspace_); }
    const DoubleValue& asArray(Outcome result);

    FuncRefElement& function_;
    RealBody realBody_;
    DoubleValue* parameter_ = nullptr;
    DoubleValue* point_ = nullptr;
    DoubleValue workspace_;
    std::array<Outcome, 2> inputs_{};
    bool elementByElement_ = false;
};

}  // namespace vorpen
