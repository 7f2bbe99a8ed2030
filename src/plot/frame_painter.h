// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The primitives that items are drawn with: shapes in data units or pixels of
// one frame, put on a surface. Coordinates of data go through the frame's map,
// as finely as the surface can show them; what is drawn may be anywhere, so
// numbers are limited before they become pixels. Points are dots of the
// surface, sizes of markers pixels.

#include <span>
#include <string_view>

#include "plot/drawing_surface.h"
#include "plot/frame.h"
#include "plot/text_writer.h"

namespace vorpen {

class FramePainter {
public:
    FramePainter(Frame& frame, DrawingSurface& surface);

    [[nodiscard]] Frame& frame() const { return frame_; }
    [[nodiscard]] DrawingSurface& surface() const { return surface_; }
    [[nodiscard]] TextWriter& writer() { return writer_; }

    /// Dots of the surface to a pixel.
    [[nodiscard]] double resolution() const { return resolution_; }
    /// Where data are.
    [[nodiscard]] int dotX(double x) const { return frame_.pixelX(x, resolution_); }
    [[nodiscard]] int dotY(double y) const { return frame_.pixelY(y, resolution_); }
    [[nodiscard]] Pixel dot(double x, double y) const { return {dotX(x), dotY(y)}; }
    /// How many dots a length in pixels has.
    [[nodiscard]] int dots(int pixels) const;

    /// A line through points, inside a group. Three points and more are held
    /// within 8 heights of the plot area.
    void drawPolyline(std::span<const Pixel> points);
    /// A polyline as a group of its own, clipped.
    void drawLine(std::span<const Pixel> points, const PlotStyle& style);
    /// Segments given as pairs of points, as one group.
    void drawSegments(std::span<const Pixel> ends, const PlotStyle& style);
    void drawPolygon(std::span<const Pixel> points, const PlotStyle& style);
    /// A rectangle in data units; in fractions of the frame's box without a
    /// style.
    void drawRectangle(bool filled, const PlotStyle* style, double x, double y, double width, double height);
    void drawCircles(std::span<const Pixel> centres, const PlotStyle& style, int radius, bool filled = false);
    /// Bars from y down to 0. `widths` may be empty, then all have the default
    /// width, in units of x.
    void drawBars(std::span<const double> x, std::span<const double> y, std::span<const double> widths,
                  const PlotStyle& style, double defaultWidth);
    /// One marker at each point. For `~` the half-lengths are the errors in
    /// units of y, one for all or one for each point. Fails with "unrecognized
    /// marker character".
    void drawMarkers(std::span<const Pixel> points, const PlotStyle& style, char marker, int size,
                     std::span<const double> errors = {});
    /// A marked-up text; the anchor is in data units, or in percent of the axes
    /// when `relative`. The style's width is the font size.
    void drawText(int alignment, bool relative, std::string_view text, const PlotStyle& style, int angle,
                  double x, double y);

private:
    Frame& frame_;
    DrawingSurface& surface_;
    double resolution_;
    TextWriter writer_;
    std::vector<Pixel> scratch_;
};

}  // namespace vorpen
