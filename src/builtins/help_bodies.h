// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The built-in functions `help` and `property`.

#include <span>

#include "eval/function_types.h"

namespace vorpen::builtin {

/// Shows the guide for a first look at the program; answers 0.
double help();

/// property(name, key) and property(name, key, number): a value of the
/// database of physical properties. The key "formula" asks for the formula of
/// a substance.
void property(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);

}  // namespace vorpen::builtin
