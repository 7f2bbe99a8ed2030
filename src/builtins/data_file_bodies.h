// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Files that are read and written as a whole: values in binary form, tables of
// numbers, lines of text. What is written takes the place of the former file
// once it is complete.

#include <optional>
#include <string>

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (name, v): writes a value of any kind in binary form; answers 1.
void saveValue(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// (name): the value of a file in binary form. `out` must be of its kind or of
/// a wider numeric one.
void loadValue(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// The kind of the value in the file that `loadValue` would read; nothing when
/// there is none.
[[nodiscard]] std::optional<ValueType> typeOfStoredValue(const std::string& name);

/// (name): a table of numbers from a text; with further outputs its first
/// columns, one each. (name, anything): all numbers of the text as one column.
void loadTable(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
/// Only says that it is not there.
void saveTable(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// (name): the lines of a text as a column list of strings.
void readLines(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// (name, v): writes the items of a list, or the rows of an array, as lines;
/// answers how many lines there are.
void writeLines(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

/// (name, n): shows a script, or its first n lines; the result is empty.
void showFile(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

}  // namespace vorpen::builtin
