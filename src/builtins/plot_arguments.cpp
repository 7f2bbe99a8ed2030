// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/plot_arguments.h"

#include <algorithm>
#include <array>
#include <limits>

#include "builtins/function_arguments.h"

namespace vorpen {
namespace {

/// As many points as make a curve smooth on any screen.
constexpr int samplePoints = 501;

struct Range {
    double first = 0, last = 1;
};

/// One array with the ends, or the two of them.
Range rangeOf(std::span<const FuncArgument> ends, std::string_view command) {
    const PlotNumbers first(plotValue(ends.front(), command), command);
    const PlotNumbers last(plotValue(ends.back(), command), command);
    Require(!first.items().empty() && !last.items().empty(), "illegal use of empty argument []", command);
    Require(first.items().size() >= 2 || ends.size() == 2, "range must have two values", command);
    return {first.items().front(), last.items().back()};
}

bool isScalarAt(std::span<const FuncArgument> arguments, std::size_t i, std::string_view command) {
    return plotValue(arguments[i], command).size() == 1;
}

/// Where the numbers behind a function stand.
struct Places {
    std::size_t parameter = 0;             ///< none when 0
    std::size_t range = 0, rangeSize = 0;  ///< none when 0
};

Places placesOf(std::span<const FuncArgument> arguments, std::string_view command) {
    const auto& function = *static_cast<const FuncRefElement*>(arguments[0].function);
    const UserFunc* user = function.userFunction();
    const bool needsParameter = (user ? user->minArguments() : function.inputCount()) > 1;
    const std::size_t numbers = arguments.size() - 1;
    if (numbers <= 1) return {0, numbers, numbers};
    const bool endsInScalars =
        isScalarAt(arguments, numbers - 1, command) && isScalarAt(arguments, numbers, command);
    if (numbers == 2 && endsInScalars && !needsParameter) return {0, 1, 2};
    const bool takesParameter = function.inputCount() > 1;
    Require(takesParameter && (numbers == 2 || endsInScalars), "style argument must be a string", command);
    return {1, 2, numbers - 1};
}

Range currentRange() {
    const Figure* figure = figureList().currentFigure();
    const Limits limits = figure ? figure->currentFrame().limits() : Limits{};
    return {limits.xmin, limits.xmax};
}

/// Points over a range, the last one exactly at its end.
void fillPoints(std::span<double> points, Range range, bool logarithmic) {
    const auto steps = static_cast<double>(points.size() - 1);
    const bool byFactors = logarithmic && range.first > 0 && range.last > 0;
    for (std::size_t k = 0; k < points.size(); ++k) {
        const double part = static_cast<double>(k) / steps;
        points[k] = byFactors ? range.first * std::pow(range.last / range.first, part)
                              : range.first + (range.last - range.first) * part;
    }
    points.back() = range.last;
}

}  // namespace

Figure& requireFigure(std::string_view command) {
    return attributed(command, []() -> Figure& { return figureList().requireFigure(); });
}

Frame& requireFrame(std::string_view command) { return requireFigure(command).currentFrame(); }

const Value& plotValue(const FuncArgument& argument, std::string_view command) {
    Require(argument.value != nullptr, "invalid argument", command);
    return *argument.value;
}

std::string plotText(const FuncArgument& argument, std::string_view command, std::string_view fault) {
    Require(argument.value != nullptr && isText(*argument.value), fault, command);
    return argument.value->text();
}

std::int32_t wholeNumber(double x) {
    using Limits32 = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(countOf(x), Limits32::min(), Limits32::max()));
}

void storeIds(Value& out, std::span<const std::int32_t> ids) {
    if (ids.size() == 1) return out.assignInt(ids[0]);
    IntValue row;
    shapeResult(row, ids.empty() ? 0 : 1, static_cast<std::int64_t>(ids.size()));
    std::ranges::copy(ids, row.data());
    out.assign(row);
}

FunctionSamples sampleFunction(std::span<FuncArgument> arguments, bool logarithmic,
                               std::string_view command) {
    constexpr std::size_t mostArguments = 4;
    Require(arguments.size() <= mostArguments, "too many arguments", command);
    FunctionSamples samples;
    for (; arguments.size() > 1 && isText(plotValue(arguments.back(), command));
         arguments = arguments.first(arguments.size() - 1)) {
        samples.hasStyle = true;
        samples.style.insert(0, arguments.back().value->text() + ' ');
    }
    const Places places = placesOf(arguments, command);
    const Range range = places.range != 0
                            ? rangeOf(arguments.subspan(places.range, places.rangeSize), command)
                            : currentRange();

    // The function gets points in place of the range.
    DoubleValue points;
    shapeVector(points, samplePoints, false);
    fillPoints(points.items(), range, logarithmic);
    std::array<FuncArgument, 3> call;
    const std::size_t place = places.parameter != 0 ? 2 : 1;
    call[0].function = arguments[0].function;
    if (place == 2) call[1].value = arguments[places.parameter].value;
    call[place].value = &points;
    const FunctionArgs bound =
        attributed(command, [&] { return bindFunctionArgs(std::span(call).first(place + 1)); });

    samples.x.assign(points.items().begin(), points.items().end());
    MethodFunction function(bound);
    function.setCallInputs(bound.parameter, bound.point);
    const DoubleValue& values = function.evaluateAtEach(command);
    samples.y.assign(values.items().begin(), values.items().end());
    return samples;
}

}  // namespace vorpen
