// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a figure of a fit shows, as plain data: the fits make the numbers and
// texts, whoever draws figures takes them. Texts are marked up.

#include <optional>
#include <string>
#include <vector>

namespace vorpen {

struct FitFigure {
    std::vector<double> x, y;
    std::vector<double> errors;          ///< of y: one for all points, or one for each; none when not known
    std::vector<double> curveX, curveY;  ///< the ends of a line, or a curve
    std::vector<double> residuals;
    std::string title;
    std::string residualTitle;        ///< of the frame with the residuals; empty for a figure without
    std::vector<std::string> labels;  ///< one for each parameter
    std::optional<double> tickLimit;  ///< the limit that the caller gave for ticks
};

/// Draws the figure.
void drawFit(const FitFigure& figure);

}  // namespace vorpen
