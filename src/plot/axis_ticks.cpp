// SPDX-License-Identifier: GPL-3.0-or-later

// The axes of a frame as they are drawn: grid, ticks, their numbers, and the
// lines through zero. The arithmetic is in axis_scale.h.

#include <array>
#include <cmath>

#include "plot/frame.h"
#include "plot/frame_painter.h"

namespace vorpen {
namespace {

constexpr Colour gridColour = 0xE6D8AD, logGridColour = 0xFACE87, zeroColour = 0x0A0A0A;
constexpr int majorLength = 10, minorLength = 5;
constexpr int labelGapX = 5, labelGapY = 7;  ///< pixels between an axis and its numbers
constexpr int labelDigits = 4;

/// The number of 12 decades and their minor ticks is far below this.
constexpr double mostMinorTicks = 1000;

PlotStyle thinLine(Colour colour) {
    PlotStyle style;
    style.lineColour = colour;
    style.width = 1;
    return style;
}

/// Draws what belongs to one axis of a frame.
class AxisDrawing {
public:
    AxisDrawing(FramePainter& painter, AxisScale& axis, int flags)
        : painter_(painter), frame_(painter.frame()), axis_(axis), flags_(flags) {
        const Limits& limits = frame_.limits();
        low_ = axis.isY ? limits.ymin : limits.xmin;
        high_ = axis.isY ? limits.ymax : limits.xmax;
        across_ = axis.isY ? limits.xmax - limits.xmin : limits.ymax - limits.ymin;
        chooseTicks(axis, low_, high_);
    }

    void draw();

private:
    [[nodiscard]] bool has(int bit) const { return (flags_ & bit) != 0; }
    [[nodiscard]] Raster ticks(int count, double first, double step, bool additive, int length) const;
    [[nodiscard]] Raster major() const {
        return ticks(axis_.count, axis_.first, axis_.step, axis_.additive(), majorLength);
    }
    void drawAcross(Raster raster, Colour colour);
    void drawAtZero(Raster raster);
    void drawAtFarEdge(Raster raster);
    void drawLabels(const Raster& raster);
    void drawMinorTicks();
    void drawLinearMinorTicks();

    FramePainter& painter_;
    const Frame& frame_;
    AxisScale& axis_;
    int flags_;
    double low_, high_, across_;
};

/// Ticks at the near edge.
Raster AxisDrawing::ticks(int count, double first, double step, bool additive, int length) const {
    Raster raster;
    raster.count = count;
    raster.length = length;
    raster.horizontal = axis_.isY;
    raster.additive = additive;
    raster.step = step;
    raster.x = axis_.isY ? frame_.limits().xmin : first;
    raster.y = axis_.isY ? first : frame_.limits().ymin;
    return raster;
}

/// The same places with lines over the whole plot area.
void AxisDrawing::drawAcross(Raster raster, Colour colour) {
    raster.length = across_;
    raster.lengthInPixels = false;
    raster.style = thinLine(colour);
    raster.draw(painter_);
}

void AxisDrawing::drawAtZero(Raster raster) {
    (axis_.isY ? raster.x : raster.y) = 0;
    raster.draw(painter_);
}

void AxisDrawing::drawAtFarEdge(Raster raster) {
    // The middle of the dot, so that the way back ends in it.
    constexpr double half = 0.5;
    const int length = painter_.dots(majorLength);
    if (axis_.isY)
        raster.x =
            frame_.valueX((painter_.dotX(frame_.limits().xmax) - length + half) / painter_.resolution());
    else
        raster.y =
            frame_.valueY((painter_.dotY(frame_.limits().ymax) + length + half) / painter_.resolution());
    raster.draw(painter_);
}

void AxisDrawing::drawLabels(const Raster& raster) {
    const bool showsAll = !axis_.linear && axis_.minors > 0;
    const Pixel corner = frame_.pixel(frame_.limits().xmin, frame_.limits().ymin);
    DrawingSurface& surface = painter_.surface();
    const TextGroup group = axis_.isY ? TextGroup{TextAnchor::End, TextBaseline::Middle}
                                      : TextGroup{TextAnchor::Middle, TextBaseline::Top};
    surface.beginText(group);
    for (double value : raster.positions()) {
        if (!showsAll && !(axis_.isY ? frame_.showsY(value) : frame_.showsX(value))) continue;
        if (axis_.linear && std::fabs(value) < (high_ - low_) * 1e-6) value = 0;
        const Pixel at = axis_.isY ? Pixel{corner.x - labelGapY, frame_.pixelY(value)}
                                   : Pixel{frame_.pixelX(value), corner.y + labelGapX};
        painter_.writer().write(surface, at.x, at.y, formatTick(labelDigits, value));
    }
    surface.endText();
}

void AxisDrawing::drawLinearMinorTicks() {
    const double step = axis_.minorStep;
    const double first = axis_.first - std::floor((axis_.first - low_) * 1.0001 / step) * step;
    const double count = std::floor((high_ - first) * 1.0001 / step);
    if (!std::isfinite(first) || !(count > 0)) return;
    const Raster raster =
        ticks(static_cast<int>(std::min(count, mostMinorTicks)), first, step, true, minorLength);
    if (has(TICKS_NEAR)) Raster(raster).draw(painter_);
    if (has(TICKS_AT_ZERO)) drawAtZero(raster);
}

void AxisDrawing::drawMinorTicks() {
    if (axis_.count == 0) return;
    if (axis_.linear) return drawLinearMinorTicks();
    if (!has(TICKS_NEAR)) return;
    if (axis_.minors == AxisScale::logPattern) {
        double decade = axis_.first;
        for (int k = 0; k < axis_.count; ++k, decade *= 10)
            drawAcross(ticks(8, 2 * decade, decade, true, minorLength), gridColour);
    } else {
        const double first = axis_.first * axis_.minorStart;
        ticks(axis_.count * axis_.minors, first, axis_.minorStep, false, minorLength).draw(painter_);
    }
}

void AxisDrawing::draw() {
    if (has(TICKS_NEAR) || has(TICKS_AT_ZERO)) {
        // First the grid, so that it lies beneath the ticks.
        if (axis_.grid > 0) drawAcross(major(), axis_.linear ? gridColour : logGridColour);
        if (has(TICKS_NEAR)) major().draw(painter_);
        if (has(TICK_LABELS)) drawLabels(major());
        drawMinorTicks();
    }
    if (has(TICKS_FAR)) drawAtFarEdge(major());
    if (has(TICKS_AT_ZERO)) drawAtZero(major());
}

}  // namespace

Raster::Raster() { style = thinLine(0); }

Raster::Raster(const Raster& other)
    : Plotable(other.x, other.y),
      count(other.count),
      length(other.length),
      lengthInPixels(other.lengthInPixels),
      horizontal(other.horizontal),
      additive(other.additive),
      step(other.step) {
    style = other.style;
    visible = other.visible;
}

std::vector<double> Raster::positions() const { return series(count, additive, step, horizontal ? y : x); }

void Raster::draw(FramePainter& painter) {
    const Frame& frame = painter.frame();
    std::vector<Pixel> ends;
    for (const double at : positions()) {
        if (!(horizontal ? frame.showsY(at) : frame.showsX(at))) continue;
        const Pixel start = horizontal ? painter.dot(x, at) : painter.dot(at, y);
        Pixel end = start;
        if (horizontal)
            end.x =
                lengthInPixels ? start.x + painter.dots(static_cast<int>(length)) : painter.dotX(x + length);
        else
            end.y =
                lengthInPixels ? start.y - painter.dots(static_cast<int>(length)) : painter.dotY(y + length);
        ends.push_back(start);
        ends.push_back(end);
    }
    painter.drawSegments(ends, style);
}

void AxisTicks::draw(FramePainter& painter) {
    Frame& frame = painter.frame();
    if (xFlags != 0) AxisDrawing(painter, frame.xScale, xFlags).draw();
    if (yFlags != 0) AxisDrawing(painter, frame.yScale, yFlags).draw();

    const Limits& limits = frame.limits();
    const auto line = [&painter](Pixel from, Pixel to, Colour colour) {
        painter.drawSegments(std::array{from, to}, thinLine(colour));
    };
    if ((xFlags & LINE_AT_ZERO) && limits.xmin < 0 && limits.xmax > 0)
        line(painter.dot(0, limits.ymin), painter.dot(0, limits.ymax), zeroColour);
    if ((yFlags & LINE_AT_ZERO) && limits.ymin < 0 && limits.ymax > 0)
        line(painter.dot(limits.xmin, 0), painter.dot(limits.xmax, 0), zeroColour);
    if (!frame.equal) return;
    // With equal scales the frame's outline is not at the limits of the data.
    const Pixel corner = painter.dot(limits.xmin, limits.ymin);
    if (xFlags & TICKS_NEAR) line(corner, painter.dot(limits.xmax, limits.ymin), 0);
    if (yFlags & TICKS_NEAR) line(corner, painter.dot(limits.xmin, limits.ymax), 0);
}

}  // namespace vorpen
