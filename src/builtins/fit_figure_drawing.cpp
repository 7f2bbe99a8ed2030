// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/fit_figure_drawing.h"

#include <algorithm>

#include "builtins/plot_arguments.h"
#include "builtins/plot_drawing.h"
#include "console/markup.h"

namespace vorpen {
namespace {

constexpr FractionRect dataBox{0, 0.37, 1, 0.59}, residualBox{0, 0.035, 1, 0.325};
constexpr FractionRect windowPlace{0.5, 0.1, 0.4, 0.8};
constexpr std::string_view markerStyle = "b+2 1", curveStyle = "m 1", residualStyle = "k+2 1";
constexpr std::string_view titleStyle = "20", remarkStyle = " 22";
constexpr Colour white = 0xFFFFFF;

/// Where remarks stand in percent of the axes: above the plot, as a title does.
constexpr double remarkX = 10, remarkY = 102, lineHeight = 20;

std::vector<double> joined(std::vector<double> first, std::span<const double> second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// The ends of the error bars, so that the limits hold them; the data alone
/// without errors.
std::vector<double> endsOfErrors(const FitFigure& fit) {
    std::vector<double> ends = fit.y;
    if (fit.errors.empty()) return ends;
    for (std::size_t k = 0; k < fit.y.size(); ++k) {
        const double error = fit.errors[fit.errors.size() == 1 ? 0 : std::min(k, fit.errors.size() - 1)];
        ends.push_back(fit.y[k] - error);
        ends.push_back(fit.y[k] + error);
    }
    return ends;
}

/// One frame, whatever the figure held.
void clearFigure(Figure& figure) {
    if (figure.frameCount() == 1) figure.selectFrame(wholeBox);
    figure.makeSubplots(-1, white);
    figure.currentFrame().fixed = false;
}

void addText(Frame& frame, const std::string& text, std::string_view style) {
    frame.addItem(std::make_unique<TextLabel>(remarkX, remarkY, text, "ne", style, true));
}

void addTitle(Frame& frame, const std::string& title) {
    frame.setLabel(title, titleStyle, 't');
    frame.redraw();
}

/// Remarks take the place of the title, which goes one line higher.
void addRemarks(Frame& frame, const std::vector<std::string>& remarks) {
    if (remarks.empty()) return;
    std::string line;
    for (const std::string& remark : remarks) line += (line.empty() ? "" : ",   ") + remark;
    const double percentOfPixel = 100.0 / std::max(frame.outline().plotArea.height(), 1);
    frame.firstItem<MainLabels>().first->title.y += lineHeight * percentOfPixel;
    addText(frame, line, remarkStyle);
    frame.redraw();
}

void drawData(Frame& frame, const FitFigure& fit) {
    showData(frame, joined(fit.x, fit.curveX), joined(endsOfErrors(fit), fit.curveY));
    frame.fixed = true;
    addShown(frame, std::make_unique<Curve>(fit.x, fit.y, markerStyle));
    // Among more points than the caller wants marked, bars hide the curve.
    const bool showsErrors =
        !fit.errors.empty() && !(fit.tickLimit && static_cast<double>(fit.x.size()) > *fit.tickLimit);
    if (showsErrors) addShown(frame, std::make_unique<ErrorBars>(fit.x, fit.y, fit.errors));
    addShown(frame, std::make_unique<Curve>(fit.curveX, fit.curveY, curveStyle));
    addTitle(frame, fit.title);
    addRemarks(frame, fit.labels);
    frame.fixed = false;
}

void drawResiduals(Frame& frame, const FitFigure& fit, const Limits& above) {
    showData(frame, fit.x, fit.residuals);
    // One x for both frames.
    const Limits own = frame.limits();
    frame.setExactLimits({above.xmin, above.xmax, own.ymin, own.ymax});
    frame.rescale();
    addShown(frame, std::make_unique<Curve>(fit.x, fit.residuals, residualStyle));
    addTitle(frame, fit.residualTitle);
}

}  // namespace

void drawFitFigure(const FitFigure& fit) {
    attributed("plot", [&] {
        Figure& figure = figureList().openFigure();
        clearFigure(figure);
        if (fit.residualTitle.empty()) return drawData(figure.currentFrame(), fit);
        figure.selectFrame(dataBox);
        figure.position(windowPlace.x, windowPlace.y, windowPlace.width, windowPlace.height);
        drawData(figure.currentFrame(), fit);
        const Limits limits = figure.currentFrame().limits();
        figure.selectFrame(residualBox);
        drawResiduals(figure.currentFrame(), fit, limits);
        figure.selectFrame(dataBox);
    });
}

}  // namespace vorpen
