// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a script asks of the mouse, the keyboard and the controls of figures.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// [], the mouse's x and y; indices from 0 to 13 or their letters, a value for
/// each.
void mouseValues(const Value& keys, DoubleValue& out);
/// Stores a value for `getmouse(10)`; answers 1.
void setMouseValue(const Value& value, DoubleValue& out);
/// (0), (n): waits for a click in the console or in figure n and answers where
/// it was. Empty where nobody can click.
void waitForClick(const Value& number, DoubleValue& out);
/// The code of the key that is held down.
double keyDown();

/// (ids, limits): lets the mouse drag items, each within its row (xmin, xmax,
/// ymin, ymax); without limits within those of the frame. Answers the ids.
void makeDragable(const Value& ids, const DoubleValue* limits, Value& out);

/// (text, kind, rect) in any order of text and rect: a control in the current
/// frame. Answers the id.
void createButton(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (headings, items): the menus of the current figure.
void createMenus(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

}  // namespace vorpen::builtin
