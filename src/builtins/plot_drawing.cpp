// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/plot_drawing.h"

#include <algorithm>

#include "builtins/plot_arguments.h"

namespace vorpen {
namespace {

constexpr std::string_view heading = "plot";

/// Colours of the second and third curve over one x.
constexpr Colour secondColour = 0x820000, thirdColour = 0x0000AA;
constexpr int repeatedWidth = 2;

/// The range of the finite numbers; (0, 0) without any number.
AxisLimits finiteRange(std::span<const double> numbers) {
    if (numbers.empty()) return {0, 0};
    AxisLimits range{HUGE_VAL, -HUGE_VAL};
    for (const double number : numbers) {
        if (!std::isfinite(number)) continue;
        range.min = std::min(range.min, number);
        range.max = std::max(range.max, number);
    }
    Require(range.min <= range.max, "invalid x values", heading);
    return range;
}

/// Counts plots over the same x in a fixed frame; 0 for any other.
int countRepeats(const Frame& frame, std::span<const double> x) {
    PlotRecord& record = figureList().record;
    const bool repeats =
        frame.fixed && x.size() >= 2 && x.front() == record.firstX && x.back() == record.lastX;
    if (repeats) return ++record.repeats;
    record = x.empty() ? PlotRecord{} : PlotRecord{x.front(), x.back(), 0};
    return 0;
}

void setAxes(Frame& frame, LogAxes axes) {
    frame.xScale.linear = !axes.x;
    frame.yScale.linear = !axes.y;
}

}  // namespace

void showData(Frame& frame, std::span<const double> x, std::span<const double> y, LogAxes axes) {
    setAxes(frame, axes);
    frame.equal = false;
    frame.wipeFrame(1);
    frame.redraw();
    const AxisLimits rangeX = finiteRange(x), rangeY = finiteRange(y);
    frame.setLimits(rangeX.min, rangeX.max, rangeY.min, rangeY.max);
    frame.addItem(std::make_unique<AxisTicks>());
}

Frame& prepareFrame(std::span<const double> x, std::span<const double> y, LogAxes axes) {
    Require(x.size() == y.size(), "x and y data have different sizes", heading);
    Frame& frame = attributed(heading, []() -> Frame& { return figureList().openFigure().currentFrame(); });
    if (!frame.fixed) {
        showData(frame, x, y, axes);
    } else if (frame.xScale.linear == axes.x || frame.yScale.linear == axes.y) {
        // What is there already moves with the new kind of axis.
        setAxes(frame, axes);
        frame.redraw();
    }
    return frame;
}

std::int32_t addShown(Frame& frame, std::unique_ptr<Plotable> item) {
    const std::int32_t id = frame.addItem(std::move(item));
    frame.finishAdd();
    return id;
}

std::int32_t plotOne(std::span<const double> x, std::span<const double> y, std::string_view style,
                     LogAxes axes) {
    Frame& frame = prepareFrame(x, y, axes);
    std::unique_ptr<Plotable> item;
    if (x.size() == 1)
        item = std::make_unique<SinglePoint>(x[0], y[0], style);
    else
        item =
            std::make_unique<Curve>(std::vector(x.begin(), x.end()), std::vector(y.begin(), y.end()), style);
    const int repeats = countRepeats(frame, x);
    if (style.empty() && (repeats == 1 || repeats == 2)) {
        item->style.lineColour = repeats == 1 ? secondColour : thirdColour;
        item->style.width = repeatedWidth;
    }
    return attributed(heading, [&] { return addShown(frame, std::move(item)); });
}

std::vector<std::int32_t> plotMatrix(std::span<const double> x, const DoubleValue& y, int firstRow,
                                     std::string_view style, LogAxes axes) {
    const std::size_t points = y.isVector() ? y.items().size() : static_cast<std::size_t>(y.ncol());
    Require(x.size() == points, "x and y sizes don't match", heading);
    // A column is one curve, as a row is.
    if (x.empty() || y.isVector()) {
        const std::int32_t id = plotOne(x, y.items(), style, axes);
        if (!x.empty()) figureList().requireFigure().currentFrame().fixed = true;
        return {id};
    }
    std::vector<std::int32_t> ids;
    std::vector<double> row(points);
    const auto rows = static_cast<std::size_t>(y.nrow());
    for (auto r = static_cast<std::size_t>(firstRow); r < rows; ++r) {
        for (std::size_t k = 0; k < points; ++k) row[k] = y.items()[r + k * rows];
        ids.push_back(plotOne(x, row, style, axes));
        figureList().requireFigure().currentFrame().fixed = true;
    }
    return ids;
}

bool areUsableLimits(double min, double max) {
    // More than the pixels of any screen, so that their scale is finite too.
    constexpr double pixels = 1e6;
    return min < max && std::isfinite(max - min) && std::isfinite(pixels / (max - min));
}

Frame& axisFrame() {
    if (Figure* figure = figureList().currentFigure()) return figure->currentFrame();
    Frame& frame = attributed("axis", []() -> Frame& { return figureList().openFigure().currentFrame(); });
    frame.setTickFlags(AXIS_DEFAULT, AXIS_DEFAULT);
    frame.fixed = true;
    return frame;
}

void setAxisLimits(std::span<const double> limits) {
    for (std::size_t k = 0; k + 1 < limits.size(); k += 2)
        Require(areUsableLimits(limits[k], limits[k + 1]), "invalid axis limits", "axis");
    Frame& frame = axisFrame();
    Limits taken = frame.limits();
    if (limits.size() == 4) {
        taken.xmin = limits[0];
        taken.xmax = limits[1];
    }
    taken.ymin = limits[limits.size() - 2];
    taken.ymax = limits[limits.size() - 1];
    frame.setExactLimits(taken);
    frame.rescale();
    frame.redraw();
}

std::vector<double> limitsOf(const Frame& frame) {
    const Limits& limits = frame.limits();
    return {limits.xmin, limits.xmax, limits.ymin, limits.ymax};
}

}  // namespace vorpen
