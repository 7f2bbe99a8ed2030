// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Commands on figures and frames as a whole: which one is current, where it
// is, what its axes show, and the file it is written to.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// Makes a figure current and answers its number: 0 or nothing for a new one,
/// -1 for the current one or the first.
int selectFigure(const Value& number);
/// The number, or 0 when there is no such figure; below 1 closes all.
int closeFigure(int number);

/// Whether the current frame keeps its limits and items when data is plotted.
/// Both answer what held before.
double fixFrame();
double unfixFrame();
/// Shows what has been drawn and serves the figure's events.
double updateFigure();
/// Moves the current figure's window back and forth for a while; for the
/// development of windows.
void shakeFigure(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// Grid lines on both axes when above 0.
int setGrid(int lines);

/// [], the limits; a mode as word or number; [ymin, ymax]; [xFlags, yFlags,
/// mode]; [xmin, xmax, ymin, ymax]. Answers the limits, or the former mode.
void axis(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// [], the current figure; (letter), the same with a background; (n, letter),
/// frame n.
void wipe(const Value& what, IntValue& out);

/// (n), a frame that exists; (count, index); (rows, columns, index); (x1, x2,
/// y1, y2) in fractions. Answers the frame's number from 1.
int selectSubplot(const Value& what);

/// [], the screen; (0), the console; (n), a figure; the forms of subplot move
/// the current figure. Answers (left, right, bottom, top).
void figurePosition(const Value& what, IntValue& out);

/// Writes the current figure to an SVG file.
void printFigure(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (name, value): a setting of the program.
void setParameter(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// [r, g, b] for the colour letter `u`, of four numbers for `U`; answers the
/// letter.
void useColour(const Value& rgb, IntValue& out);

}  // namespace vorpen::builtin
