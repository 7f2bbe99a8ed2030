// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The figures of fits: the data with their errors and the fitted curve, and
// below them the residuals.

#include "builtins/fit_figure.h"

namespace vorpen {

/// Clears the current figure, or opens one, and draws the fit.
void drawFitFigure(const FitFigure& fit);

}  // namespace vorpen
