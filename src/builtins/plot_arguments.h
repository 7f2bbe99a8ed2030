// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the plot commands share when they read their arguments: texts, numbers,
// ids and functions to be sampled. A failure of a plot command names the
// command: "in axis: invalid axis limits".

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "builtins/arguments.h"
#include "plot/figure_list.h"

namespace vorpen {

/// Does some work. A failure that names nobody yet gets the command's name.
template <class Work>
decltype(auto) attributed(std::string_view command, Work&& work) {
    try {
        return work();
    } catch (const RuntimeError& failure) {
        if (failure.message.starts_with("in ")) throw;
        raiseRuntimeError(failure.message, command);
    }
}

/// The active figure, or a failure of the command.
[[nodiscard]] Figure& requireFigure(std::string_view command);
[[nodiscard]] Frame& requireFrame(std::string_view command);

[[nodiscard]] inline bool isText(const Value& v) { return v.isString() && v.isNumericKind(); }

/// The value of an argument; "invalid argument" for a function.
[[nodiscard]] const Value& plotValue(const FuncArgument& argument, std::string_view command);
/// The same as a text; fails with the message for anything else.
[[nodiscard]] std::string plotText(const FuncArgument& argument, std::string_view command,
                                   std::string_view fault = "argument must be a string");

/// The elements of an argument as doubles, without a copy where it has them.
class PlotNumbers {
public:
    PlotNumbers(const Value& v, std::string_view command)
        : values_(attributed(command, [&]() -> const DoubleValue& { return asDoubles(v, scratch_); })) {}
    PlotNumbers(const PlotNumbers&) = delete;
    PlotNumbers& operator=(const PlotNumbers&) = delete;

    [[nodiscard]] const DoubleValue& value() const { return values_; }
    [[nodiscard]] std::span<const double> items() const { return values_.items(); }

private:
    DoubleValue scratch_;
    const DoubleValue& values_;
};

/// More than one row, and more than one column.
[[nodiscard]] inline bool isMatrix(const Value& v) { return v.nrow() > 1 && v.nrow() < v.size(); }

/// A number given for a whole one: truncated, and limited to 32 bits.
[[nodiscard]] std::int32_t wholeNumber(double x);

/// Makes `out` the row of ids, a scalar for one of them.
void storeIds(Value& out, std::span<const std::int32_t> ids);

/// A function as a curve.
struct FunctionSamples {
    std::vector<double> x, y;
    std::string style;
    bool hasStyle = false;
};

/// Reads (f), (f, [a, b]), (f, a, b), the last two also with a parameter
/// behind the function, each with strings behind it as style, and evaluates the function at 501 points: at equal distances, on a
/// logarithmic axis at equal factors. Without a range they lie between the
/// limits of the current frame. Fails with "too many arguments", "style
/// argument must be a string", "range must have two values" and as the call
/// does.
[[nodiscard]] FunctionSamples sampleFunction(std::span<FuncArgument> arguments, bool logarithmic,
                                             std::string_view command);

}  // namespace vorpen
