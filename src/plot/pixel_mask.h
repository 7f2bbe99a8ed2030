// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The pixels that a pen or a brush touches, as one byte each. Shapes are first
// drawn here and put on a picture together, so that no pixel is touched twice
// by one curve: a curve that inverts what it covers has no holes where its
// lines meet, and the time for a wide pen depends on the size of the picture
// and not on the number of points.
//
// Lines are as thin as one pixel; `addWidened` then gives them the width of
// their pen, with round joins and ends. Points may be anywhere; what lies outside the
// area takes no time and no memory.

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "plot/drawing_surface.h"

namespace vorpen {

/// Lengths of drawn and left out pieces in turn, in pixels along the longer
/// side of a line; empty for an unbroken line. They grow with the pen. At a
/// resolution of so many pixels here to one of the pen, the gaps that its round
/// ends leave grow too.
[[nodiscard]] std::vector<int> dashLengths(PenStyle style, int pen = 1, double resolution = 1);

class PixelMask {
public:
    /// The widest pen; a wider one is drawn like this.
    static constexpr int maxPen = 2048;

    /// Empties the mask and says where pixels may be drawn.
    void reset(const PixelRect& area);

    [[nodiscard]] const PixelRect& area() const { return area_; }
    /// A rectangle that holds all pixels drawn so far.
    [[nodiscard]] const PixelRect& touched() const { return touched_; }
    /// The bytes of a row of the area, 0 or 0xFF, beginning at its left edge.
    [[nodiscard]] const std::uint8_t* row(int y) const { return bytes_.data() + offset(area_.left, y); }

    // ---- Lines ----

    /// A line through points; broken by lengths above 0, if there are any.
    void polyline(std::span<const Pixel> points, std::span<const int> dashes = {});
    void circle(Pixel centre, int radius);
    /// Makes the lines of `thin`, which was drawn in an area wider by the pen,
    /// as wide as a pen. It reaches so far to the left and above its pixel, and
    /// the rest to the right and below.
    void addWidened(const PixelMask& thin, int pen, int reach);
    /// A pen in the middle of its pixel, or half a pixel to the left and above.
    void addWidened(const PixelMask& thin, int pen) { addWidened(thin, pen, std::clamp(pen, 1, maxPen) / 2); }

    // ---- Fillings ----

    /// Inside is what an odd number of lines parts from the outside. The pixels
    /// on the right and the lower edge are not inside.
    void fillPolygon(std::span<const Pixel> points);
    void fillCircle(Pixel centre, int radius);
    /// Without the right and the lower edge.
    void fillRectangle(const PixelRect& edges);

private:
    [[nodiscard]] std::size_t offset(int x, int y) const {
        return static_cast<std::size_t>(y - area_.top) * stride_ + static_cast<std::size_t>(x - area_.left);
    }
    [[nodiscard]] std::uint8_t* at(int x, int y) { return bytes_.data() + offset(x, y); }
    void touch(int left, int top, int right, int bottom);
    void set(std::int64_t x, std::int64_t y);
    void line(Pixel a, Pixel b);
    void dashedLine(Pixel a, Pixel b, std::span<const int> dashes, std::int64_t& phase);
    void toggleEdge(Pixel a, Pixel b);

    PixelRect area_;
    PixelRect touched_;
    std::size_t stride_ = 0;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace vorpen
