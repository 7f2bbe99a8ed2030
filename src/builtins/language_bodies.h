// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that belong to the language itself: making lists, showing values,
// failing on purpose, taking apart a multiple assignment, directories.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// A row list with a copy of each argument.
void makeList(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// Shows each argument on lines of its own; the result is empty.
void display(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// (condition, text): fails with the text, or "assertion failed", unless all
/// elements of the condition are non-zero; the result is empty.
void assertTrue(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// Switches breakpoints on or off for what is compiled from now on, and
/// answers what was before.
void switchBreakpoints(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// Fails with the text, or with "in NAME: TEXT".
void fail(const Value& text, const DoubleValue* name, Value& out);
/// One value to each target; all values are taken before any is stored.
void assignEach(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);
/// A polynomial as text, from its coefficients by ascending powers.
void polynomialText(const Value& coefficients, IntValue& out);
/// The current directory, after changing to the one that is named.
void changeDirectory(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// The entries of a directory, a column list of strings.
void listDirectory(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

// ---- values that the body owns

/// The last answer, whatever the flag.
Value* lastAnswer(int flag);
Value* trueValue(int flag);
Value* falseValue(int flag);
/// The directory that the program was started in; with a flag the program's
/// own.
Value* programPath(int flag);
/// Hour, minute and second of the local time, in a row.
Value* timeOfDay(int flag);
/// The local date as 15 characters: "Wed Jan  2 1980".
Value* dateText(int flag);

}  // namespace vorpen::builtin
