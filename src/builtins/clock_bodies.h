// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that measure and spend time, and the constants without argument. Time
// is that of the host, so that a test can stand still.

namespace vorpen::builtin {

/// Starts the measurement that the two below read; answers 0.
double startClock();
double elapsedMilliseconds();
double elapsedSeconds();

/// Waits so many milliseconds from the call, serves events meanwhile, and
/// answers its argument.
int waitMilliseconds(int milliseconds);

double on();
double off();
double pi();
/// `end` has a meaning inside an index only, where no body is called.
double endOutsideIndex();

}  // namespace vorpen::builtin
