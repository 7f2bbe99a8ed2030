// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/curve_tracker.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vorpen {
namespace {

constexpr std::string_view hairlineStyle = "m1^", markStyle = "g1^";

/// How near a place has to be for the mark to snap to it, as the part of all
/// points: a zero is found at a glance, an extremum less so.
constexpr std::size_t zeroReach = 100, extremumReach = 50;

/// Half the width of the mark in pixels.
constexpr int markSize = 6;

constexpr int labelDigits = 4;

/// A curve that commands on curves do not mean.
class CursorCurve final : public Curve {
public:
    explicit CursorCurve(std::string_view styleText) : Curve({}, {}, styleText) { visible = false; }
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Other; }
};

int addCursorCurve(Frame& frame, std::string_view style) {
    return ItemId::of(frame.addItem(std::make_unique<CursorCurve>(style))).item;
}

struct Point {
    double x, y;
};

/// The followed curve near one x.
class CurvePlace {
public:
    CurvePlace(const Frame& frame, double at) : xs_(frame.trackedX), ys_(frame.trackedY) {
        const bool rises = xs_.back() >= xs_.front();
        const auto behind = std::partition_point(
            xs_.begin(), xs_.end(), [&](double x) { return rises ? x <= at : x >= at; });
        const auto index = static_cast<std::size_t>(behind - xs_.begin());
        left_ = std::clamp<std::size_t>(index, 1, xs_.size() - 1) - 1;
        const double low = std::min(xs_.front(), xs_.back()), high = std::max(xs_.front(), xs_.back());
        x_ = std::min(std::max(at, low), high);
    }

    /// On the line between the two points around it.
    [[nodiscard]] Point interpolated() const {
        const double width = xs_[left_ + 1] - xs_[left_];
        const double part = width == 0 ? 0 : (x_ - xs_[left_]) / width;
        return {x_, ys_[left_] + (ys_[left_ + 1] - ys_[left_]) * part};
    }

    [[nodiscard]] std::optional<Point> nearestZero() const {
        return nearest(zeroReach, [this](std::size_t k) -> std::optional<Point> {
            if (k + 1 >= ys_.size() || !(ys_[k] * ys_[k + 1] < 0 || ys_[k] == 0)) return {};
            const double part = ys_[k] / (ys_[k] - ys_[k + 1]);
            return Point{ys_[k] == 0 ? xs_[k] : xs_[k] + (xs_[k + 1] - xs_[k]) * part, 0};
        });
    }

    /// The vertex of the parabola through three points.
    [[nodiscard]] std::optional<Point> nearestExtremum() const {
        return nearest(extremumReach, [this](std::size_t k) -> std::optional<Point> {
            if (k == 0 || k + 1 >= ys_.size()) return {};
            const double before = ys_[k] - ys_[k - 1], after = ys_[k + 1] - ys_[k];
            if (!(before * after < 0)) return {};
            const double shift = (before + after) / (2 * (before - after));
            return Point{xs_[k] + shift * (xs_[k + 1] - xs_[k]), ys_[k] + shift * (before + after) / 4};
        });
    }

private:
    /// What `look` finds at the place nearest to this one, within a part of
    /// all points.
    template <class Look>
    std::optional<Point> nearest(std::size_t reach, Look look) const {
        const std::size_t farthest = xs_.size() / reach;
        for (std::size_t d = 0; d <= farthest; ++d) {
            if (const auto found = look(left_ + d)) return found;
            if (d == 0 || d > left_) continue;
            if (const auto found = look(left_ - d)) return found;
        }
        return {};
    }

    const std::vector<double>& xs_;
    const std::vector<double>& ys_;
    std::size_t left_;
    double x_;
};

/// Erases a cursor curve where it was and draws it where it goes; no points
/// hide it.
void moveCursor(Frame& frame, int index, std::vector<double> xs, std::vector<double> ys) {
    auto* curve = frame.findItem<CursorCurve>(index);
    if (curve == nullptr) return;
    frame.drawItem(index);
    curve->visible = !xs.empty();
    curve->xs = std::move(xs);
    curve->ys = std::move(ys);
    frame.drawItem(index);
}

/// A diamond of a fixed size on the screen.
void moveMark(Frame& frame, std::optional<Point> place) {
    if (!place) return moveCursor(frame, frame.tracker.marker, {}, {});
    const Pixel at = frame.pixel(place->x, place->y);
    std::vector<double> xs, ys;
    for (const auto& [dx, dy] : {std::pair{-markSize, 0}, {0, -markSize}, {markSize, 0}, {0, markSize}}) {
        xs.push_back(frame.valueX(at.x + dx));
        ys.push_back(frame.valueY(at.y + dy));
    }
    xs.push_back(xs.front());
    ys.push_back(ys.front());
    moveCursor(frame, frame.tracker.marker, std::move(xs), std::move(ys));
}

/// Writes the x of the mark beside it. A text cannot be drawn inverting, so
/// the frame is drawn anew when it changes.
void showLabel(Frame& frame, std::optional<Point> place) {
    auto* label = frame.findItem<TextLabel>(frame.tracker.label);
    const std::string text = place ? formatTick(labelDigits, place->x) : std::string();
    if (label == nullptr) {
        if (!place) return;
        auto added = std::make_unique<TextLabel>(place->x, place->y, "", "NE", "16");
        label = added.get();
        frame.tracker.label = ItemId::of(frame.addItem(std::move(added))).item;
    }
    if (label->text == text) return;
    label->text = text;
    label->visible = place.has_value();
    if (place) {
        label->x = place->x;
        label->y = place->y;
    }
    frame.redraw();
}

}  // namespace

void trackCurve(Frame& frame, std::span<const double> x, std::span<const double> y) {
    if (x.size() < 2 || x.size() != y.size()) return;
    frame.trackedX.assign(x.begin(), x.end());
    frame.trackedY.assign(y.begin(), y.end());
    CurveTracker tracker;
    tracker.vertical = addCursorCurve(frame, hairlineStyle);
    tracker.horizontal = addCursorCurve(frame, hairlineStyle);
    tracker.marker = addCursorCurve(frame, markStyle);
    frame.tracker = tracker;
}

void moveTracker(Frame& frame, Pixel mouse) {
    if (!frame.tracker.active() || frame.trackedX.size() < 2) return;
    const CurvePlace place(frame, frame.valueX(mouse.x));
    const Point at = place.interpolated();
    const Limits& limits = frame.limits();
    moveCursor(frame, frame.tracker.vertical, {at.x, at.x}, {limits.ymin, limits.ymax});
    moveCursor(frame, frame.tracker.horizontal, {limits.xmin, limits.xmax}, {at.y, at.y});
    auto snapped = place.nearestZero();
    if (!snapped) snapped = place.nearestExtremum();
    moveMark(frame, snapped);
    showLabel(frame, snapped);
}

}  // namespace vorpen
