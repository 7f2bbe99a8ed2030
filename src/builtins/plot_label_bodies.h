// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Commands for texts in figures, and those that change items that are there.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (text, style): a label of the current frame; the index of the item that
/// holds all three.
void title(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
void labelX(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
void labelY(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (x, y, t), ([x, y], t), each with placement and style behind, or with the
/// placement in front; (id, t) gives a text that is there other words.
void text(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (), everything anew; (n), frame n anew; (id, style); (id, y), (id, x, y),
/// new data, where the columns of a matrix go to the item and those behind it.
void replot(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

/// (id, [dx, dy]): moves an item; answers the id.
void moveItem(const Value& id, const DoubleValue* distance, Value& out);

}  // namespace vorpen::builtin
