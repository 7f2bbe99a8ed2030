// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/clock_bodies.h"

#include <numbers>

#include "base/errors.h"
#include "builtins/engine_context.h"

namespace vorpen::builtin {

double startClock() {
    engineContext().ticBase = engineContext().surroundings().clockSeconds();
    return 0;
}

double elapsedSeconds() { return engineContext().surroundings().clockSeconds() - engineContext().ticBase; }

double elapsedMilliseconds() { return elapsedSeconds() * 1000; }

int waitMilliseconds(int milliseconds) {
    if (milliseconds > 0) engineContext().surroundings().sleepMilliseconds(milliseconds, true);
    return milliseconds;
}

double on() { return 1; }

double off() { return 0; }

double pi() { return std::numbers::pi; }

double endOutsideIndex() { raiseRuntimeError("??endIndex called"); }

}  // namespace vorpen::builtin
