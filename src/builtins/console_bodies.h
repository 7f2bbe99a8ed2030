// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that talk to the user while a program runs. The host knows where its
// user is: at a console, or at the other end of a pipe.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// The code of one character, waited for and shown.
/// @throws RuntimeError "end of input" when there is no further one
double readCharacter();

/// A line as a string, waited for and shown. A text as argument is shown
/// before. Fails as `readCharacter` does.
void readLine(const Value& prompt, IntValue& out);

/// Shows a value in a box that the user dismisses; answers the number of the
/// button, which is 1.
int showBox(const Value& text);

}  // namespace vorpen::builtin
