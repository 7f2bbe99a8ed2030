// SPDX-License-Identifier: GPL-3.0-or-later

// The cursor on the curve of a plotted function.

#include <algorithm>
#include <cmath>

#include "plot/frame.h"
#include "plot/interaction.h"

namespace vorpen {
namespace {

/// How near a zero and an extremum must be for the marker to snap to them, as
/// parts of the count of points.
constexpr std::size_t zeroPart = 100, extremumPart = 20;
/// Half the length of the marker on the curve, as a part of the count.
constexpr std::size_t markerPart = 50;

/// The interval of the curve that holds x, walking from a point of it.
std::size_t walkTo(std::span<const double> xs, std::size_t index, double x) {
    while (index + 2 < xs.size() && xs[index + 1] < x) ++index;
    while (index > 0 && xs[index] > x) --index;
    return index;
}

double interpolated(std::span<const double> xs, std::span<const double> ys, std::size_t k, double x) {
    const double width = xs[k + 1] - xs[k];
    return width == 0 ? ys[k] : ys[k] + (ys[k + 1] - ys[k]) * (x - xs[k]) / width;
}

CurveFeature zeroIn(std::span<const double> xs, std::span<const double> ys, std::size_t k) {
    const double a = ys[k], b = ys[k + 1];
    if (a == 0) return {true, xs[k], 0};
    if (b == 0) return {true, xs[k + 1], 0};
    if (!((a < 0 && b > 0) || (a > 0 && b < 0))) return {};
    return {true, xs[k] + (xs[k + 1] - xs[k]) * a / (a - b), 0};
}

/// The top of the parabola through three points, when the middle one is above
/// or below both others.
CurveFeature extremumAt(std::span<const double> xs, std::span<const double> ys, std::size_t k) {
    const double before = ys[k] - ys[k - 1], behind = ys[k + 1] - ys[k];
    if (!((before > 0 && behind < 0) || (before < 0 && behind > 0))) return {};
    const double part = 0.5 * (before + behind) / (before - behind);
    return {true, xs[k] + part * (xs[k + 1] - xs[k - 1]) / 2, ys[k] + part * (before + behind) / 4};
}

std::span<const double> part(const std::vector<double>& all, std::size_t first, std::size_t last) {
    return std::span(all).subspan(first, last - first);
}

void moveCurve(Frame& frame, int index, std::vector<double> x, std::vector<double> y) {
    auto* const curve = frame.findItem<Curve>(index);
    if (curve == nullptr) return;
    if (curve->visible) frame.drawItem(index);
    curve->visible = true;
    curve->xs = std::move(x);
    curve->ys = std::move(y);
    frame.drawItem(index);
}

}  // namespace

CurveFeature featureNear(std::span<const double> x, std::span<const double> y, std::size_t index) {
    const std::size_t count = std::min(x.size(), y.size());
    if (count < 3 || index >= count) return {};
    // The nearest first, one step to either side after the other.
    const std::size_t zeros = std::max<std::size_t>(count / zeroPart, 1);
    for (std::size_t step = 0; step <= zeros; ++step)
        for (const std::size_t k : {index - step, index + step})
            if (k < count - 1)
                if (const CurveFeature zero = zeroIn(x, y, k); zero.found) return zero;
    const std::size_t extrema = std::max<std::size_t>(count / extremumPart, 1);
    for (std::size_t step = 0; step <= extrema; ++step)
        for (const std::size_t k : {index - step, index + step})
            if (k >= 1 && k < count - 1)
                if (const CurveFeature top = extremumAt(x, y, k); top.found) return top;
    return {};
}

void trackCurve(Frame& frame, std::vector<double> x, std::vector<double> y) {
    const std::size_t count = std::min(x.size(), y.size());
    if (count < 2) return;
    x.resize(count);
    y.resize(count);
    const auto add = [&frame](std::unique_ptr<Plotable> item) {
        item->visible = false;
        item->isCursor = true;
        return ItemId::of(frame.addItem(std::move(item))).item;
    };
    const auto addCurve = [&](const char* style) {
        return add(std::make_unique<Curve>(std::vector<double>{}, std::vector<double>{}, style));
    };
    frame.tracker.vertical = addCurve("m1^");
    frame.tracker.horizontal = addCurve("m1^");
    frame.tracker.marker = addCurve("g1^");
    frame.tracker.label = add(std::make_unique<TextLabel>(2, 98, "", "SE", "k16^", true));
    frame.trackedX = std::move(x);
    frame.trackedY = std::move(y);
    frame.trackedIndex = 0;
}

void moveTracker(Frame& frame, Pixel mouse) {
    if (!frame.tracker.active() || frame.trackedX.size() < 2) return;
    const std::vector<double>&xs = frame.trackedX, &ys = frame.trackedY;
    const Limits& limits = frame.limits();
    const double x =
        std::clamp(frame.valueX(mouse.x), std::min(xs.front(), xs.back()), std::max(xs.front(), xs.back()));
    const std::size_t index = frame.trackedIndex = walkTo(xs, std::min(frame.trackedIndex, xs.size() - 2), x);
    const double y = interpolated(xs, ys, index, x);
    moveCurve(frame, frame.tracker.vertical, {x, x}, {limits.ymin, limits.ymax});
    moveCurve(frame, frame.tracker.horizontal, {limits.xmin, limits.xmax}, {y, y});

    auto* const label = frame.findItem<TextLabel>(frame.tracker.label);
    if (label == nullptr) return;
    const CurveFeature feature = featureNear(xs, ys, index);
    const std::string text = feature.found ? formatTick(6, feature.x) : "";
    if (text == label->text) return;
    if (label->visible) frame.drawItem(frame.tracker.label);
    label->text = text;
    label->visible = feature.found;
    if (feature.found) {
        const std::size_t centre = walkTo(xs, index, feature.x),
                          half = std::max<std::size_t>(xs.size() / markerPart, 1);
        const std::size_t first = centre - std::min(centre, half),
                          last = std::min(centre + half + 1, xs.size());
        const auto markedX = part(xs, first, last), markedY = part(ys, first, last);
        moveCurve(frame, frame.tracker.marker, {markedX.begin(), markedX.end()},
                  {markedY.begin(), markedY.end()});
        frame.drawItem(frame.tracker.label);
    } else if (auto* const marker = frame.findItem<Curve>(frame.tracker.marker); marker && marker->visible) {
        frame.drawItem(frame.tracker.marker);
        marker->visible = false;
    }
}

}  // namespace vorpen
