// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/integration_bodies.h"

#include <gsl/gsl_matrix.h>

#include <algorithm>
#include <cmath>

#include "base/output.h"
#include "builtins/arguments.h"
#include "builtins/function_arguments.h"
#include "numerics/initial_value.h"
#include "numerics/quadrature.h"

namespace vorpen::builtin {
namespace {

constexpr double integralTolerance = 1e-09;

// ---- integrals

/// What is read of the arguments before the function is called, which may
/// change the variables that hold them.
struct IntegralTask {
    double a, b, tolerance;
};

IntegralTask integralTask(const FunctionArgs& bound) {
    const DoubleValue& limits = *bound.point;
    Require(limits.size() == 2, "wrong number of x limits");
    return {limits[0], limits[1], bound.extra ? (*bound.extra)[0] : integralTolerance};
}

void integrateByPoints(const FunctionArgs& bound, const IntegralTask& task, Value& out) {
    MethodFunction function(bound);
    const auto f = [&](double x) { return function.valueAt(x); };
    out.assignDouble(integrate(f, task.a, task.b, task.tolerance));
}

void integrateByTens(const FunctionArgs& bound, const IntegralTask& task, Value& out) {
    DoubleValue points;
    points.setSizeShapeMark(gaussPoints, 1, FORM_NUMERIC);
    MethodFunction function(bound);
    function.setCallInputs(bound.parameter, &points);
    const auto f = [&](std::span<const double, gaussPoints> x) {
        std::ranges::copy(x, points.data());
        return function.evaluateAtEach("integ").items().first<gaussPoints>();
    };
    const SmoothIntegral integral = integrateSmooth(f, task.a, task.b, task.tolerance);
    if (!integral.converged) output().print("integ reached max iterations", true, PrintMode::markup);
    out.assignDouble(integral.value);
}

// ---- differential equations

/// A function that answers an array for a state.
class StateFunction {
public:
    StateFunction(FuncRefElement& function, DoubleValue* parameter, const DoubleValue& start)
        : function_(function), state_(start) {
        state_.setMark(FORM_NUMERIC);
        function_.setCallInputs(function_.inputCount() == 1 ? nullptr : parameter, &state_);
    }

    const DoubleValue& at(std::span<const double> state, std::size_t count) {
        std::ranges::copy(state, state_.data());
        const DoubleValue& values = function_.evaluate();
        Require(values.items().size() == count, "user function did not return the requested number of values",
                "ode");
        return values;
    }

private:
    MethodFunction function_;
    DoubleValue state_;
};

/// Solves the system from the arguments of `ode` into one column for each x.
void solveAtPoints(const OdeSystem& system, const DoubleValue& x, const DoubleValue& start, Value& out) {
    DoubleValue states;
    states.setSizeShapeMark(std::int64_t{start.size()} * x.size(), start.size(), FORM_NUMERIC);
    std::ranges::fill(states.items(), 0.0);
    std::ranges::copy(start.items(), states.data());
    const std::vector<double> points(x.items().begin(), x.items().end());
    solveInitialValueProblem(system, points, states.items());
    if (out.valueType() == DOUBLE_VAL)
        asDouble(out).adopt(std::move(states));
    else
        out.assign(states);
}

FuncRefElement& secondFunction(const FuncArgument& argument) {
    Require(argument.function || argument.value, "invalid argument");
    Require(argument.function != nullptr, "2nd argument must be a function");
    return static_cast<FuncRefElement&>(*argument.function);
}

}  // namespace

void integ(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const FunctionArgs bound = bindFunctionArgs(arguments);
    integrateByPoints(bound, integralTask(bound), out);
}

void qinteg(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const FunctionArgs bound = bindFunctionArgs(arguments);
    const IntegralTask task = integralTask(bound);
    if (std::isinf(task.a) || std::isinf(task.b))
        integrateByPoints(bound, task, out);
    else
        integrateByTens(bound, task, out);
}

void ode(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const FunctionArgs bound = bindFunctionArgs(arguments, ArgumentForm::equations);
    FuncRefElement& second = secondFunction(arguments[1]);
    const DoubleValue start = *bound.extra;
    StateFunction f(*bound.function, bound.parameter, start);
    StateFunction jac(second, bound.parameter, start);
    const auto derivatives = [&](std::span<const double> y, std::span<double> dydt) {
        std::ranges::copy(f.at(y, dydt.size()).items(), dydt.begin());
    };
    const auto jacobian = [&](std::span<const double> y, std::span<double> dfdy, std::span<double>) {
        DoubleValue byRow = jac.at(y, dfdy.size());
        byRow.transpose();
        std::ranges::copy(byRow.items(), dfdy.begin());
    };
    solveAtPoints({derivatives, jacobian}, *bound.point, start, out);
}

void odetest(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const FunctionArgs bound = bindFunctionArgs(arguments, ArgumentForm::equations);
    Require(!bound.parameter->isEmpty(), "illegal use of empty argument []");
    const double mu = (*bound.parameter)[0];
    const DoubleValue start = *bound.extra;
    Require(start.size() == 2, "user function did not return the requested number of values", "odetest");
    const auto derivatives = [mu](std::span<const double> y, std::span<double> dydt) {
        dydt[0] = y[1];
        dydt[1] = -y[0] - (y[0] * y[0] - 1) * mu * y[1];
    };
    // Of mu = 10, whatever the equations have.
    const auto jacobian = [](std::span<const double> y, std::span<double> dfdy, std::span<double> dfdt) {
        gsl_matrix_view view = gsl_matrix_view_array(dfdy.data(), 2, 2);
        gsl_matrix_set(&view.matrix, 0, 0, 0.0);
        gsl_matrix_set(&view.matrix, 0, 1, 1.0);
        gsl_matrix_set(&view.matrix, 1, 0, -20 * y[0] * y[1] - 1);
        gsl_matrix_set(&view.matrix, 1, 1, -10 * (y[0] * y[0] - 1));
        std::ranges::fill(dfdt, 0.0);
    };
    solveAtPoints({derivatives, jacobian}, *bound.point, start, out);
}

}  // namespace vorpen::builtin
