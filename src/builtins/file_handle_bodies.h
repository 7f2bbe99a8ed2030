// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Files that a program of the user opens, reads and writes piece by piece,
// and commands of the system.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// (name, mode): the number of the opened file; empty when it could not be
/// opened. One that cannot be opened for plain writing gets a number, too,
/// whose use fails.
void openFile(const Value& name, const DoubleValue* mode, Value& out);
/// Closes a file, all of them for a number below 1; answers 0.
int closeFile(int id);
/// 1 once a read has met the end of the file.
int endOfFile(int id);
/// (id, n): a line of a text file as string, n bytes (1 without n) of a binary
/// file as a row of numbers from -128 to 127; empty at the end of the file.
void readFile(const Value& id, const DoubleValue* count, Value& out);
/// (id, v): writes a value as text and ends the line, or its elements as bytes;
/// the number of bytes written. A backslash at the end of the text is left out
/// together with the end of the line.
void writeFile(const Value& id, const DoubleValue* value, Value& out);

/// Runs a command of the system and waits for its end; answers 1, whatever the
/// command answered.
void runSystemCommand(const Value& command, IntValue& out);

}  // namespace vorpen::builtin
