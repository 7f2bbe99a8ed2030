// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/fit_bodies.h"

#include <algorithm>

#include "base/number_text.h"
#include "base/output.h"
#include "builtins/arguments.h"
#include "builtins/array_bodies.h"
#include "builtins/fit_figure.h"
#include "builtins/function_arguments.h"
#include "numerics/curve_fit.h"
#include "numerics/line_fit.h"
#include "numerics/smoothing_filter.h"

namespace vorpen::builtin {
namespace {

/// How many points make a drawn curve look smooth.
constexpr int curvePoints = 501;

/// Below this the probability of a fit is called small in its figure.
constexpr double smallProbability = 0.001;

constexpr const char* unequalPoints = "x and y must have same number of points";
constexpr const char* wrongSigma = "sig size does not match number of data points";

void warn(std::string_view text) { output().print(text, true, PrintMode::markup); }

std::vector<double> copyOf(std::span<const double> items) { return {items.begin(), items.end()}; }

/// Stores a further output of a multiple assignment when there is a target.
void storeExtra(ExtraOutputs targets, std::size_t which, const DoubleValue& value) {
    if (targets && which < targets->size()) (*targets)[which]->assign(value);
}

DoubleValue rowOf(double first, double second) {
    DoubleValue row;
    shapeResult(row, 1, 2);
    row[0] = first;
    row[1] = second;
    return row;
}

std::string labelText(const std::string& name, double value, double error) {
    const ValueWithError rounded = roundedToError(value, error);
    return name + " = " + doubleText(rounded.value, 9) + " +/- " + doubleText(rounded.error, 9);
}

/// The options behind the data of a fit.
struct FitOptions {
    bool plot = false;
    std::optional<double> number;  ///< what a second element sets
};

FitOptions fitOptions(std::span<const double> options) {
    FitOptions result;
    if (!options.empty()) result.plot = options[0] > 0;
    if (options.size() > 1) result.number = options[1];
    return result;
}

/// Argument number i as doubles; none when it is left out.
std::span<const double> optionalDoubles(std::span<FuncArgument> arguments, std::size_t i,
                                        DoubleValue& scratch) {
    if (i >= arguments.size()) return {};
    return asDoubles(argumentValue(arguments[i]), scratch).items();
}

// ---- straight lines

void drawLine(const LineFit& fit, std::span<const double> x, std::span<const double> y,
              std::optional<double> tickLimit) {
    const auto [least, greatest] = std::ranges::minmax(x);
    const double margin = (greatest - least) * 0.1;
    FitFigure figure;
    figure.x = copyOf(x);
    figure.y = copyOf(y);
    figure.errors = fit.errors;
    for (const double end : {least - margin, greatest + margin}) {
        figure.curveX.push_back(end);
        figure.curveY.push_back(fit.a + fit.b * end);
    }
    figure.residuals = fit.residuals;
    figure.title = "Data and fitted line y = a + b x";
    figure.labels = {labelText("a", fit.a, fit.sigmaA), labelText("b", fit.b, fit.sigmaB)};
    figure.tickLimit = tickLimit;
    drawFit(figure);
}

// ---- curves

/// The arguments of `lsfit`, copied: the function may change any variable.
struct CurveArguments {
    DoubleValue parameters, x;
    std::vector<double> y, sigma;
    std::vector<char> free;
    bool plot = false;
    double tol = curveFitTolerance;
};

CurveArguments curveArguments(std::span<FuncArgument> arguments, const FunctionArgs& bound) {
    CurveArguments result;
    result.parameters.copyFrom(*bound.parameter);
    result.parameters.setMark(FORM_NUMERIC);
    const auto count = static_cast<std::size_t>(result.parameters.size());
    Require(count > 0, "illegal use of empty argument []");
    const bool masked = arguments.size() > 4 && bound.point->size() == bound.parameter->size();
    const std::size_t mostArguments = masked ? 7 : 6;
    constexpr const char* ambiguous = "either an ambiguous syntax or inconsistent numbers of points";
    Require(arguments.size() <= mostArguments, ambiguous);
    result.free.assign(count, 1);
    if (masked)
        for (std::size_t i = 0; i < count; ++i) result.free[i] = (*bound.point)[static_cast<int>(i)] != 0;

    std::size_t next = masked ? 3 : 2;
    DoubleValue xScratch, scratch;
    const DoubleValue& x = asDoubles(argumentValue(arguments[next++]), xScratch);
    result.y = copyOf(optionalDoubles(arguments, next++, scratch));
    Require(result.y.size() == x.items().size(), masked ? ambiguous : unequalPoints);
    Require(!result.y.empty(), "illegal use of empty argument []");
    result.x.copyFrom(x);
    result.sigma = copyOf(optionalDoubles(arguments, next++, scratch));
    Require(result.sigma.empty() || result.sigma.size() == result.y.size(), wrongSigma);
    const FitOptions options = fitOptions(optionalDoubles(arguments, next, scratch));
    result.plot = options.plot;
    result.tol = options.number.value_or(curveFitTolerance);
    return result;
}

/// The user's function as a model.
class CurveFunction {
public:
    CurveFunction(FuncRefElement& function, const DoubleValue& parameters) : function_(function) {
        Require(function.inputCount() != 1, "too many arguments for the specified function");
        parameters_.copyFrom(parameters);
    }

    std::span<const double> at(std::span<const double> parameters, DoubleValue& x) {
        std::ranges::copy(parameters, parameters_.data());
        function_.setCallInputs(&parameters_, &x);
        return function_.evaluateAtEach("lsfit").items();
    }

private:
    MethodFunction function_;
    DoubleValue parameters_;
};

std::string residualTitle(const CurveFit& fit, bool qIsKnown) {
    if (!qIsKnown) return "Residuals.   q unavailable";
    return "Residuals.  ({$c}^{2} , {$n })=(" + doubleText(fit.chi2, 3) + ", " +
           std::to_string(fit.degreesOfFreedom) + ")   =>   q = " + doubleText(fit.q, 2);
}

std::vector<std::string> parameterLabels(const CurveFit& fit, std::span<const char> free) {
    std::vector<std::string> labels;
    std::size_t error = 0;
    for (std::size_t i = 0; i < fit.parameters.size(); ++i) {
        const std::string name = "p" + std::to_string(i + 1);
        labels.push_back(free[i] ? labelText(name, fit.parameters[i], fit.errors[error++])
                                 : name + " = " + doubleText(fit.parameters[i], 9));
    }
    return labels;
}

void drawCurve(const CurveFit& fit, const CurveArguments& arguments, CurveFunction& function) {
    // Without errors of the data the probability of the fit says nothing.
    const bool qIsKnown = !arguments.sigma.empty();
    FitFigure figure;
    figure.x = copyOf(arguments.x.items());
    figure.y = arguments.y;
    figure.errors = arguments.sigma;
    for (std::size_t i = 0; i < figure.y.size(); ++i) figure.residuals.push_back(figure.y[i] - fit.values[i]);
    const auto [least, greatest] = std::ranges::minmax(figure.x);
    DoubleValue points;
    shapeVector(points, curvePoints, isColumn(arguments.x));
    for (int i = 0; i < curvePoints; ++i) points[i] = least + (greatest - least) * i / (curvePoints - 1);
    figure.curveX = copyOf(points.items());
    figure.curveY = copyOf(function.at(fit.parameters, points));
    figure.title = "Data and fitted curve";
    if (qIsKnown && fit.q < smallProbability) figure.title += " (small q)";
    figure.residualTitle = residualTitle(fit, qIsKnown);
    figure.labels = parameterLabels(fit, arguments.free);
    drawFit(figure);
}

/// A vector that lies as the parameters do.
DoubleValue vectorLike(const DoubleValue& parameters, std::span<const double> items) {
    DoubleValue vector;
    shapeVector(vector, static_cast<std::int64_t>(items.size()), isColumn(parameters));
    std::ranges::copy(items, vector.data());
    return vector;
}

// ---- filters

FilterShape filterShape(std::span<const double> v) {
    const auto at = [&](std::size_t i) { return countOf(v[i]); };
    FilterShape shape;
    if (v.size() == 1 || v.size() == 2) {
        shape.left = shape.right = countOf(v[0] * 0.5);
        shape.order = v.size() == 2 ? at(1) : 2;
    } else if (v.size() == 3 || v.size() == 4) {
        shape = {at(0), at(1), at(2), v.size() == 4 ? at(3) : 0};
    } else {
        Require(v.empty(), "inconsistent arguments for smoothing filter");
    }
    return shape;
}

}  // namespace

void straightLineFit(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& result) {
    DoubleValue& out = doubleResult(result, "slf");
    DoubleValue xScratch, yScratch, errorScratch, optionScratch;
    const auto x = asDoubles(argumentValue(arguments[0]), xScratch).items();
    const auto y = asDoubles(argumentValue(arguments[1]), yScratch).items();
    Require(x.size() == y.size(), unequalPoints);
    const auto errors = optionalDoubles(arguments, 2, errorScratch);
    Require(errors.size() <= 1 || errors.size() == x.size(), wrongSigma);
    const FitOptions options = fitOptions(optionalDoubles(arguments, 3, optionScratch));

    const LineFit fit = fitLine(x, y, errors);
    // A line that could not be fitted has no quality to speak of.
    if (std::isfinite(fit.a) && std::isfinite(fit.b)) {
        const std::string remark = fitRemark(fit.dubiousPoints, fit.q, x.size(), fit.chi2);
        if (!remark.empty()) warn(remark);
    }
    const ValueWithError a = roundedToError(fit.a, fit.sigmaA);
    const ValueWithError b = roundedToError(fit.b, fit.sigmaB);
    if (options.plot) drawLine(fit, x, y, options.number);
    storeExtra(extraOutputs, 0, rowOf(fit.a, fit.b));
    DoubleValue table;
    shapeResult(table, 3, 2);
    const double items[] = {a.value, a.error, fit.chi2, b.value, b.error, fit.q};
    std::ranges::copy(items, table.data());
    out.adopt(std::move(table));
}

void curveFit(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& result) {
    DoubleValue& out = doubleResult(result, "lsfit");
    const FunctionArgs bound = bindFunctionArgs(arguments, ArgumentForm::fit);
    CurveArguments data = curveArguments(arguments, bound);
    CurveFunction function(*bound.function, data.parameters);
    const auto model = [&](std::span<const double> p) { return function.at(p, data.x); };
    const CurveFit fit = fitCurve(model, {data.y, data.sigma}, data.parameters.items(), data.free, data.tol);
    if (!fit.converged) warn("did not converge");
    if (data.plot) drawCurve(fit, data, function);

    storeExtra(extraOutputs, 0, vectorLike(data.parameters, fit.errors));
    storeExtra(extraOutputs, 1, rowOf(fit.chi2, fit.q));
    DoubleValue covariance;
    shapeResult(covariance, static_cast<std::int64_t>(fit.errors.size()),
                static_cast<std::int64_t>(fit.errors.size()));
    std::ranges::copy(fit.covariance, covariance.data());
    storeExtra(extraOutputs, 2, covariance);
    std::ranges::copy(fit.parameters, data.parameters.data());
    out.adopt(std::move(data.parameters));
}

void smoothingFilter(const Value& shape, DoubleValue& out) {
    DoubleValue scratch;
    const FilterShape filter = filterShape(asDoubles(shape, scratch).items());
    shapeVector(out, filterLength(filter), false);
    wrappedFilter(filter, out.items());
}

void smoothed(const Value& v, const DoubleValue* shape, Value& result) {
    DoubleValue& out = doubleResult(result, "smooth");
    DoubleValue smoothedValue;
    smoothedValue.copyFrom(v);
    if (smoothedValue.form() != FORM_3D) smoothedValue.setMark(FORM_NUMERIC);
    const int length = v.isVector() ? v.size() : v.nrow();
    const bool given = shape && !shape->isEmpty();
    const FilterShape filter = given ? filterShape(shape->items()) : standardFilter(length);
    const auto items = smoothedValue.items();
    if (items.empty()) vorpen::smooth(filter, items, items);
    for (std::size_t first = 0; first < items.size(); first += static_cast<std::size_t>(length)) {
        const auto column = items.subspan(first, static_cast<std::size_t>(length));
        vorpen::smooth(filter, column, column);
    }
    out.adopt(std::move(smoothedValue));
}

}  // namespace vorpen::builtin
