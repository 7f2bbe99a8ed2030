// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/fit_figure.h"

#include "builtins/engine_context.h"

namespace vorpen {

void drawFit(const FitFigure& figure) {
    if (engineContext().drawFit) engineContext().drawFit(figure);
}

}  // namespace vorpen
