// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/frame.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "plot/figure.h"
#include "plot/figure_list.h"
#include "plot/frame_painter.h"

namespace vorpen {
namespace {

/// Where the low half of an item id ends.
constexpr std::size_t maxItems = 65536;

/// Where the plot area is when labels stand around it.
constexpr FractionRect labelledArea{0.13, 0.15, 0.83, 0.75};

/// Logarithms of limits that are above 0.
AxisLimits transformed(const AxisScale& axis, double min, double max) {
    return axis.linear ? AxisLimits{min, max} : AxisLimits{std::log(min), std::log(max)};
}

/// A value as its axis counts; what has no logarithm is at the lower limit.
double scaled(const AxisScale& axis, double value, double min) {
    return axis.linear ? value : std::log(value <= 0 ? min : value);
}

struct LinearMap {
    double scale, offset;
};

/// The map that takes the limits to two pixels.
LinearMap mapOnto(const AxisLimits& limits, int first, int last) {
    const double range = limits.max - limits.min;
    return {(last - first) / range, (first * limits.max - last * limits.min) / range};
}

void makePositive(double& min, double& max) {
    if (!(max > 0)) max = 1e-10;
    if (!(min > 0)) min = max / 1e10;
}

bool isWithin(const AxisScale& axis, double value, double min, double max) {
    const AxisLimits limits = transformed(axis, min, max);
    const double at = axis.linear ? value : std::log(value);
    const double tolerance = 1e-6 * (limits.max - limits.min);
    return at >= limits.min - tolerance && at <= limits.max + tolerance;
}

double percentOf(const AxisScale& axis, double percent, double min, double max) {
    const AxisLimits limits = transformed(axis, min, max);
    return ((100 - percent) * limits.min + percent * limits.max) * 0.01;
}

}  // namespace

Frame::Frame(Figure& figure, int id, const FractionRect& box) : figure_(figure), id_(id), box_(box) {
    yScale.isY = true;
    plotable_.push_back(std::make_unique<BoxRel>(area_.x, area_.y, area_.width, area_.height));
    rescale();
}

Frame::~Frame() = default;

// ---- Rectangles, limits, pixels -----------------------------------------------

void Frame::setPlotArea(const FractionRect& area) {
    Require(!plotable_.empty(), "bug? in Frame::setPlotArea: empty plotable[]");
    if (area.width == 0 && area.height == 0) return;
    if (area.width != 0) {
        area_.x = area.x;
        area_.width = area.width;
    }
    if (area.height != 0) {
        area_.y = area.y;
        area_.height = area.height;
    }
    if (BoxRel* outline = boxItem()) {
        outline->x = area_.x;
        outline->y = area_.y;
        outline->width = area_.width;
        outline->height = area_.height;
        rescale();
    }
}

void Frame::setLimits(double xmin, double xmax, double ymin, double ymax) {
    const AxisLimits x = niceLimits(xScale, 3, xmin, xmax), y = niceLimits(yScale, 2, ymin, ymax);
    limits_ = {x.min, x.max, y.min, y.max};
    rescale();
}

void Frame::rescale() {
    if (!xScale.linear) makePositive(limits_.xmin, limits_.xmax);
    if (!yScale.linear) makePositive(limits_.ymin, limits_.ymax);
    const PixelRect area = fractionsToPixels(area_);
    const AxisLimits x = transformed(xScale, limits_.xmin, limits_.xmax);
    const AxisLimits y = transformed(yScale, limits_.ymin, limits_.ymax);
    const LinearMap mapX = mapOnto(x, area.left, area.right), mapY = mapOnto(y, area.bottom, area.top);
    scaleX_ = mapX.scale;
    offsetX_ = mapX.offset;
    scaleY_ = mapY.scale;
    offsetY_ = mapY.offset;
    if (!equal) return;
    // The plot stays in the middle of its area.
    const double unit = std::min(-scaleY_, scaleX_);
    offsetX_ += (x.max + x.min) * (scaleX_ - unit) * 0.5;
    offsetY_ += (y.max + y.min) * (scaleY_ + unit) * 0.5;
    scaleX_ = unit;
    scaleY_ = -unit;
}

double Frame::scaledX(double x) const { return scaled(xScale, x, limits_.xmin); }
double Frame::scaledY(double y) const { return scaled(yScale, y, limits_.ymin); }

void Frame::toPixels(std::span<const double> x, std::span<const double> y, std::vector<Pixel>& out,
                     double resolution) const {
    out.resize(std::min(x.size(), y.size()));
    if (xScale.linear && yScale.linear) {
        // All local, so that storing a point is seen to change none of them.
        const LinearMap mapX{scaleX_, offsetX_}, mapY{scaleY_, offsetY_};
        const double low = minPixel * resolution, high = maxPixel * resolution;
        const auto dot = [=](double p) {
            p *= resolution;
            p = p > low ? p : low;
            return static_cast<int>(p < high ? p : high);
        };
        const std::span<Pixel> dots = out;
        for (std::size_t k = 0; k < dots.size(); ++k)
            dots[k] = {dot(x[k] * mapX.scale + mapX.offset), dot(y[k] * mapY.scale + mapY.offset)};
    } else {
        for (std::size_t k = 0; k < out.size(); ++k) out[k] = pixel(x[k], y[k], resolution);
    }
}

double Frame::valueX(double pixel) const {
    const double value = (pixel - offsetX_) / scaleX_;
    return xScale.linear ? value : std::exp(value);
}

double Frame::valueY(double pixel) const {
    const double value = (pixel - offsetY_) / scaleY_;
    return yScale.linear ? value : std::exp(value);
}

Pixel Frame::percentToPixels(double x, double y) const {
    return {toPixel(percentOf(xScale, x, limits_.xmin, limits_.xmax) * scaleX_ + offsetX_),
            toPixel(percentOf(yScale, y, limits_.ymin, limits_.ymax) * scaleY_ + offsetY_)};
}

std::array<int, 2> Frame::polylineRange(double resolution) const {
    constexpr double heights = 8;
    const AxisLimits y = transformed(yScale, limits_.ymin, limits_.ymax);
    const double beyond = heights * (y.max - y.min);
    const int top = toPixel((y.max + beyond) * scaleY_ + offsetY_, resolution);
    const int bottom = toPixel((y.min - beyond) * scaleY_ + offsetY_, resolution);
    return {std::min(top, bottom), std::max(top, bottom)};
}

bool Frame::showsX(double x) const { return isWithin(xScale, x, limits_.xmin, limits_.xmax); }
bool Frame::showsY(double y) const { return isWithin(yScale, y, limits_.ymin, limits_.ymax); }

PixelRect Frame::fractionsToPixels(const FractionRect& rect) const {
    const PixelRect client = figure_.client();
    const double width = client.width(), height = -client.height();
    return {toPixel((rect.x * box_.width + box_.x) * width + client.left),
            toPixel(((rect.y + rect.height) * box_.height + box_.y) * height + client.bottom),
            toPixel(((rect.x + rect.width) * box_.width + box_.x) * width + client.left),
            toPixel((rect.y * box_.height + box_.y) * height + client.bottom)};
}

FrameOutline Frame::outline() const {
    const Pixel low = pixel(limits_.xmin, limits_.ymin), high = pixel(limits_.xmax, limits_.ymax);
    return {id_,
            fractionsToPixels(wholeBox),
            fractionsToPixels(area_),
            {low.x - 1, high.y - 1, high.x + 1, low.y + 2},
            background};
}

// ---- Items ---------------------------------------------------------------------------

int Frame::lastItemOfKind(PlotableKind kind) const {
    for (int k = itemCount() - 1; k >= 0; --k)
        if (item(k).kind() == kind && !item(k).isCursor) return k;
    return -1;
}

std::int32_t Frame::addItem(std::unique_ptr<Plotable> added) {
    const auto* text = dynamic_cast<const TextLabel*>(added.get());
    if (const int k = text != nullptr ? textPlaces_.find(*text) : -1; k >= 0) {
        plotable_[static_cast<std::size_t>(k)] = std::move(added);
        if (figureList().redrawOnAdd)
            redraw();
        else
            drawItem(k);
        return k;
    }
    Require(plotable_.size() < maxItems, "too many items in the frame");
    plotable_.push_back(std::move(added));
    if (text != nullptr) textPlaces_.add(*text, itemCount() - 1);
    return ItemId{id_, itemCount() - 1}.number();
}

void Frame::finishAdd() {
    if (fixed)
        drawItem(itemCount() - 1);
    else
        redraw();
}

void Frame::wipeFrame(int keep) {
    const auto kept = static_cast<std::size_t>(std::clamp(keep, 0, itemCount()));
    for (std::size_t k = kept; k < plotable_.size(); ++k)
        if (const auto* button = dynamic_cast<const PlotableButton*>(plotable_[k].get()))
            figure_.removeControl(button->controlId);
    plotable_.resize(kept);
    textPlaces_.removeFrom(static_cast<int>(kept));
    dragables.clear();
    tracker = {};
}

std::vector<double> Frame::itemValue(std::int32_t id) const {
    const ItemId parts = ItemId::of(id);
    Require(parts.frame == id_ && hasItem(parts.item), "invalid id: no such item in the frame");
    return item(parts.item).value();
}

/// The index behind an id, -1 for the last curve; fails when there is none.
int Frame::itemIndex(std::int32_t id) const {
    const ItemId parts = id == -1 ? ItemId{id_, lastItemOfKind(PlotableKind::Curve)} : ItemId::of(id);
    Require(parts.frame == id_ && hasItem(parts.item), "id not recognized");
    return parts.item;
}

/// A curve becomes an inverting one when it first gets new data; from then on
/// it moves without the frame being drawn anew.
void Frame::replotCurve(int index, Curve& curve, std::span<const double> x, std::span<const double> y) {
    Require(x.empty() ? y.empty() || y.size() == curve.ys.size() : x.size() == y.size(),
            "wrong number of points");
    const double resolution = figure_.view() != nullptr ? figure_.view()->surface().resolution() : 1;
    // A file may have been written since, and has left pixels of its own.
    if (curve.resolution != resolution && !curve.pixels.empty()) curve.findPixels(*this, resolution);
    if (!x.empty() || y.empty()) curve.xs.assign(x.begin(), x.end());
    curve.ys.assign(y.begin(), y.end());
    if (!curve.style.xorMode) {
        curve.style.xorMode = true;
        redraw();
        return;
    }
    std::vector<Pixel> old = std::exchange(curve.pixels, {});
    curve.findPixels(*this, resolution);
    if (!curve.visible || old == curve.pixels) return;
    onSurface([&](FramePainter& painter) {
        curve.pixels.swap(old);
        curve.drawPixels(painter);
        curve.pixels.swap(old);
        item(index).draw(painter);
    });
}

std::int32_t Frame::replotItem(std::int32_t id, std::span<const double> x, std::span<const double> y) {
    const int index = itemIndex(id);
    Plotable& changed = item(index);
    const auto scalarPlace = [&] {
        Require(y.size() == 1 && x.size() <= 1, "x,y must be scalar for a single point");
        changePlace(index, [&] {
            if (!x.empty()) changed.x = x[0];
            changed.y = y[0];
        });
    };
    switch (changed.kind()) {
        case PlotableKind::Curve: replotCurve(index, static_cast<Curve&>(changed), x, y); break;
        case PlotableKind::Text:
            scalarPlace();
            redraw();
            break;
        case PlotableKind::Point:
            if (std::exchange(changed.visible, true)) drawItem(index);
            scalarPlace();
            drawItem(index);
            break;
        case PlotableKind::Box: {
            Require(y.size() == 4, "a box must be indicated by [x,y,w,h]");
            auto& box = static_cast<Box&>(changed);
            drawItem(index);
            box.x = y[0];
            box.y = y[1];
            box.width = y[2];
            box.height = y[3];
            drawItem(index);
            break;
        }
        default: raiseRuntimeError("the plot item is not a curve, point, box or text");
    }
    return ItemId{id_, index}.number();
}

bool Frame::changeStyle(std::int32_t id, StyleChange change, std::string_view text) {
    const ItemId parts = ItemId::of(id);
    if (parts.frame != id_ || !hasItem(parts.item)) return false;
    Plotable& changed = item(parts.item);
    auto* button = dynamic_cast<PlotableButton*>(&changed);
    if (change == StyleChange::Style && button == nullptr) {
        changeShown(parts.item, [text](Plotable& shown) { shown.changeStyle(text); });
        return true;
    }
    auto* label = dynamic_cast<TextLabel*>(&changed);
    if (change == StyleChange::Style) {
        button->changeStyle(text);
    } else if (label != nullptr || button != nullptr) {
        (label != nullptr ? label->text : button->text) = text;
    } else {
        return false;
    }
    if (button != nullptr)
        drawItem(parts.item);
    else
        redraw();
    return true;
}

void Frame::changeShown(int index, const std::function<void(Plotable&)>& change) {
    Plotable& changed = item(index);
    const bool wasInverting = changed.style.xorMode;
    if (wasInverting) drawItem(index);
    change(changed);
    if (wasInverting && changed.style.xorMode)
        drawItem(index);
    else
        redraw();
}

bool Frame::moveItem(std::int32_t id, double dx, double dy) {
    const ItemId parts = ItemId::of(id);
    if (parts.frame != id_ || !hasItem(parts.item)) return false;
    changePlace(parts.item,
                [&] { changeShown(parts.item, [dx, dy](Plotable& moved) { moved.move(dx, dy); }); });
    return true;
}

void Frame::placeItem(int index, double x, double y) {
    changePlace(index, [&] {
        changeShown(index, [x, y](Plotable& placed) {
            placed.x = x;
            placed.y = y;
        });
    });
}

void Frame::alignText(int index, const TextAlignment& alignment) {
    if (auto* text = findItem<TextLabel>(index)) changePlace(index, [&] { text->alignment = alignment; });
}

// ---- Axes and labels --------------------------------------------------------------------

AxisTicks& Frame::axisTicks() {
    if (const auto found = firstItem<AxisTicks>().first) return *found;
    auto added = std::make_unique<AxisTicks>();
    AxisTicks& ticks = *added;
    addItem(std::move(added));
    return ticks;
}

int Frame::setAxisMode(int mode) {
    Require(!plotable_.empty(), "vorpen bug! figure graphics has no items");
    BoxRel* outline = boxItem();
    const AxisTicks* shown = firstItem<AxisTicks>().first;
    const int before = (shown != nullptr && shown->visible ? AXIS_SHOWN : 0) | (equal ? AXIS_EQUAL : 0) |
                       (outline != nullptr && !outline->visible ? AXIS_NO_BOX : 0) |
                       (area_ == wholeBox ? AXIS_FULL : 0);
    axisTicks().visible = (mode & AXIS_SHOWN) != 0;
    if (mode != 0) {
        equal = (mode & AXIS_EQUAL) != 0;
        if (outline != nullptr) outline->visible = (mode & AXIS_NO_BOX) == 0;
        if (mode & AXIS_FULL) setPlotArea(wholeBox);
        rescale();
    }
    return before;
}

void Frame::setTickFlags(int xFlags, int yFlags) {
    if (xFlags != 0 || yFlags != 0 || firstItem<AxisTicks>().first != nullptr) {
        AxisTicks& ticks = axisTicks();
        ticks.xFlags = xFlags;
        ticks.yFlags = yFlags;
    }
    if (xFlags & AREA_IS_FRAME) setPlotArea({0, 0, 1, 0});
    if (yFlags & AREA_IS_FRAME) setPlotArea({0, 0, 0, 1});
}

int Frame::setLabel(std::string_view text, std::string_view style, char which) {
    auto [labels, index] = firstItem<MainLabels>();
    if (labels == nullptr) {
        index = ItemId::of(addItem(std::make_unique<MainLabels>())).item;
        labels = findItem<MainLabels>(index);
        setPlotArea(labelledArea);
    }
    TextLabel& label = labels->label(which);
    label.text = text;
    label.style.parseStyle(style);
    redraw();
    return index;
}

// ---- Drawing -----------------------------------------------------------------------------

bool Frame::On() {
    if (surface_ != nullptr) return true;
    if (FigureView* view = figure_.view()) surface_ = &view->surface();
    return false;
}

bool Frame::Off() {
    if (surface_ == nullptr) return false;
    surface_ = nullptr;
    figure_.view()->present(fractionsToPixels(wholeBox));
    return true;
}

void Frame::onSurface(const std::function<void(FramePainter&)>& draw) {
    const bool wasHeld = On();
    if (surface_ == nullptr) return;
    surface_->resumeFrame(outline());
    FramePainter painter(*this, *surface_);
    draw(painter);
    surface_->endFrame();
    if (!wasHeld) Off();
}

void Frame::drawItem(int index) {
    if (!hasItem(index) || !item(index).visible) return;
    onSurface([&](FramePainter& painter) { item(index).draw(painter); });
}

void Frame::redraw() {
    rescale();
    const bool wasHeld = On();
    if (surface_ == nullptr) return;
    drawOn(*surface_);
    if (!wasHeld) Off();
}

void Frame::drawOn(DrawingSurface& surface, bool withCursors) {
    rescale();
    surface.beginFrame(outline());
    FramePainter painter(*this, surface);
    for (int k = 1; k < itemCount(); ++k)
        if (item(k).visible && (withCursors || !item(k).isCursor)) item(k).draw(painter);
    if (itemCount() > 0) item(0).draw(painter);
    surface.endFrame();
}

}  // namespace vorpen
