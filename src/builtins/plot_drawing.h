// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Data onto a frame: how a frame is made ready for new data, and how curves
// are added to it. The commands that plot data and the figures of fits are
// built from these.

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "builtins/arguments.h"
#include "plot/figure_list.h"

namespace vorpen {

/// Which axes of a plot count in logarithms.
struct LogAxes {
    bool x = false, y = false;
};

/// The current frame, made ready for data: a figure is opened when there is
/// none, and unless the frame is fixed its items go and its limits follow the
/// finite data. Fails with "x and y data have different sizes" and "invalid x
/// values" when numbers there are, but none finite.
Frame& prepareFrame(std::span<const double> x, std::span<const double> y, LogAxes axes = {});

/// The same for a given frame that is not fixed.
void showData(Frame& frame, std::span<const double> x, std::span<const double> y, LogAxes axes = {});

/// Adds an item, shows it, and answers its id.
std::int32_t addShown(Frame& frame, std::unique_ptr<Plotable> item);

/// One curve, or a point with its marker. Curves over one x in a fixed frame
/// take turns in colour when they have no style.
std::int32_t plotOne(std::span<const double> x, std::span<const double> y, std::string_view style,
                     LogAxes axes = {});

/// The rows of y from a row (counted from 0) on, each against x. The frame is
/// fixed behind the first. Fails with "x and y sizes don't match".
std::vector<std::int32_t> plotMatrix(std::span<const double> x, const DoubleValue& y, int firstRow,
                                     std::string_view style, LogAxes axes = {});

/// Whether a frame can have these limits: rising, finite, and as far apart as
/// pixels can tell.
[[nodiscard]] bool areUsableLimits(double min, double max);

/// Takes (ymin, ymax) or (xmin, xmax, ymin, ymax) as limits of the current
/// frame; without a figure one is opened, and fixed. Fails with "invalid axis
/// limits".
void setAxisLimits(std::span<const double> limits);
/// The frame that `axis` works on.
Frame& axisFrame();
[[nodiscard]] std::vector<double> limitsOf(const Frame& frame);

}  // namespace vorpen
