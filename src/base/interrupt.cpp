// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/interrupt.h"

#include "base/errors.h"

namespace vorpen {

void raiseInterrupted() { raiseRuntimeError("interrupted"); }

}  // namespace vorpen
