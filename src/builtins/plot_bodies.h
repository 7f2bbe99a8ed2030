// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Commands that plot data: curves, error bars, bars, fillings and circles. All
// open a figure when there is none, work on its current frame, and answer the
// id of what they added, a row of ids for several curves.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// Data sets one after the other, each with the strings behind it as style:
/// (x, y), where each row of a matrix y is a curve; (m), the rows of a matrix
/// against its first one; ([x, y], style), a point; (text, [x, y, w, h]), a
/// box; and last [ymin, ymax], limits. Or a function: (f, [a, b]), (f, a, b),
/// (f, parameter, [a, b]), with a style. The first data set gives the limits.
void plot(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
void loglog(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
void semilogx(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
void semilogy(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// As plot, but each data set is filled.
void fill(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// One array with x and y as two rows or two columns.
int quickPlot(const Value& data);

/// The forms of a function as in plot, with a cursor that follows its curve.
void functionPlot(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (x, y, dy); dy is one error for all points or one for each.
void errorBars(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (x, y), (x, y, style), (x, y, width), with one width or one for each bar.
void barChart(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// ([x, y], r), ([x, y, r], style).
void circle(const Value& place, const DoubleValue* second, Value& out);

}  // namespace vorpen::builtin
