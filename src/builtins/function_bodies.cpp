// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/function_bodies.h"

#include <algorithm>

#include "base/output.h"
#include "builtins/arguments.h"
#include "builtins/array_bodies.h"
#include "builtins/function_arguments.h"
#include "numerics/differentiate.h"
#include "numerics/minimise.h"
#include "numerics/roots.h"

namespace vorpen::builtin {
namespace {

constexpr double rootTolerance = 1e-10;
constexpr double minimumTolerance = 1e-08;
/// From a single starting point to the second one.
constexpr double firstStepDownhill = 0.01;

DoubleValue& realResult(Value& out, std::string_view name) {
    Require(out.valueType() == DOUBLE_VAL, "non-real result type not yet implemented", name);
    return asDouble(out);
}

/// Samples come alone or with one more argument.
void checkSampleArguments(std::span<FuncArgument> arguments) {
    Require(arguments.size() <= 2, "1st argument must be a function");
}

void zerosOfSamples(std::span<FuncArgument> arguments, DoubleValue& out) {
    checkSampleArguments(arguments);
    DoubleValue yScratch, xScratch;
    const DoubleValue& y = asDoubles(argumentValue(arguments[0]), yScratch);
    Require(y.size() > 1, "not enough points", "fzero");
    std::vector<double> zeros;
    if (arguments.size() > 1) {
        const DoubleValue& x = asDoubles(argumentValue(arguments[1]), xScratch);
        Require(x.size() == y.size(), "y,x have unequal lengths", "fzero");
        zeros = zeroCrossings(y.items(), x.items());
    } else {
        zeros = zeroCrossings(y.items());
    }
    if (zeros.empty()) return makeEmpty(out);
    shapeVector(out, static_cast<std::int64_t>(zeros.size()), true);
    std::ranges::copy(zeros, out.data());
}

void derivativeOfSamples(std::span<FuncArgument> arguments, DoubleValue& out) {
    checkSampleArguments(arguments);
    const Value& y = argumentValue(arguments[0]);
    Require(y.isVector(), "argument must be a vector", "differ");
    double spacing = 1.0;
    if (arguments.size() > 1) {
        DoubleValue scratch;
        const DoubleValue& x = asDoubles(argumentValue(arguments[1]), scratch);
        if (x.size() == 1) spacing = x[0];
        if (x.size() > 1) spacing = x[1] - x[0];
    }
    sampledDerivative(y, out);
    for (double& d : out.items()) d /= spacing;
}

void derivativeOfFunction(const FunctionArgs& bound, DoubleValue& out) {
    // The points may be a variable that the function changes.
    const DoubleValue x(*bound.point);
    DoubleValue stencil, derivative;
    stencil.setSizeShapeMark(stencilSize, 1, FORM_NUMERIC);
    MethodFunction function(bound);
    function.setCallInputs(bound.parameter, &stencil);
    const auto values = [&](std::span<const double, stencilSize> points) {
        std::ranges::copy(points, stencil.data());
        return function.evaluateAtEach("differ").items().first<stencilSize>();
    };
    derivative.setSizeShapeMark(x.size(), x.nrow(), x.form() == FORM_3D ? x.mark() : int{FORM_NUMERIC});
    differentiate(values, x.items(), derivativeStep(x.items()), derivative.items());
    out.adopt(std::move(derivative));
}

Bracket bracketAround(RealFunction f, const DoubleValue& start) {
    const double first = start[0];
    return bracketMinimum(f, first, start.size() > 1 ? start[1] : first + firstStepDownhill);
}

}  // namespace

void fzero(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    DoubleValue& out = realResult(result, "fzero");
    if (!arguments[0].function) return zerosOfSamples(arguments, out);
    const FunctionArgs bound = bindFunctionArgs(arguments);
    double tol = rootTolerance;
    if (bound.extra) {
        const DoubleValue& options = *bound.extra;
        tol = options[0];
        if (options.size() > 1 && countOf(options[1]) != 0) return;
    }
    const DoubleValue& limits = *bound.point;
    Require(limits.size() > 1 || !bound.extra, "ambiguous arguments: use a vector xlim");
    MethodFunction function(bound);
    const auto f = [&](double x) { return function.valueAt(x); };
    const double x1 = limits[0];
    const double x2 = limits.size() > 1 ? limits[1] : findZeroCrossing(f, x1);
    const Root root = ridders(f, x1, x2, tol);
    if (!root.converged) output().print("fzero: max number of iterations exceeded", true, PrintMode::markup);
    out.assignDouble(root.x);
}

void differ(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    DoubleValue& out = realResult(result, "differ");
    if (arguments[0].function)
        derivativeOfFunction(bindFunctionArgs(arguments), out);
    else
        derivativeOfSamples(arguments, out);
}

void fminbrac(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    DoubleValue& out = realResult(result, "fminbrac");
    const FunctionArgs bound = bindFunctionArgs(arguments);
    MethodFunction function(bound);
    const auto f = [&](double x) { return function.valueAt(x); };
    const Bracket bracket = bracketAround(f, *bound.point);
    shapeResult(out, 1, 3);
    out[0] = bracket.a;
    out[1] = bracket.b;
    out[2] = bracket.c;
}

void fmin(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& result) {
    DoubleValue& out = realResult(result, "fmin1d");
    const FunctionArgs bound = bindFunctionArgs(arguments, ArgumentForm::minimum);
    const double tol = bound.extra ? (*bound.extra)[0] : minimumTolerance;
    MethodFunction function(bound);
    const auto f = [&](double x) { return function.valueAt(x); };
    const Minimum minimum = brentMinimum(f, bracketAround(f, *bound.point), tol);
    out.assignDouble(minimum.x);
    if (extraOutputs && !extraOutputs->empty()) extraOutputs->front()->assignDouble(minimum.value);
}

}  // namespace vorpen::builtin
