// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/fit_figure.h"

#include "base/output.h"
#include "builtins/engine_context.h"

namespace vorpen {

void drawFit(const FitFigure& figure) {
    if (engineContext().drawFit) return engineContext().drawFit(figure);
    output().print("no figure can be made here: the fit is not plotted", true, PrintMode::markup);
}

}  // namespace vorpen
