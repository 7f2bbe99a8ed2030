// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/frame_painter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "base/errors.h"
#include "plot/figure.h"

namespace vorpen {
namespace {

/// The length of a bar or an error may be far beyond any surface. Lines between
/// such places can still be followed in 64 bits.
constexpr double longest = 1 << 26;

/// A length in dots; what is no number is 0.
int toLength(double pixels, double resolution) {
    return std::isnan(pixels) ? 0 : static_cast<int>(std::clamp(pixels, -longest, longest) * resolution);
}

PixelRect rectangleBetween(Pixel a, Pixel b) {
    const auto [left, right] = std::minmax(a.x, b.x);
    const auto [top, bottom] = std::minmax(a.y, b.y);
    return {left, top, right, bottom};
}

/// A rectangle of whole pixels in dots; the data on its edges are there too.
PixelRect toDots(const PixelRect& pixels, double resolution) {
    const auto dot = [resolution](int pixel) { return static_cast<int>(pixel * resolution); };
    return {dot(pixels.left), dot(pixels.top), dot(pixels.right), dot(pixels.bottom)};
}

/// Clipping while it lives.
class Clipping {
public:
    explicit Clipping(DrawingSurface& surface) : surface_(surface) { surface_.setClipping(true); }
    ~Clipping() { surface_.setClipping(false); }
    Clipping(const Clipping&) = delete;
    Clipping& operator=(const Clipping&) = delete;

private:
    DrawingSurface& surface_;
};

/// The ends of the lines of one marker, in pairs.
void addMarkerLines(std::vector<Pixel>& ends, char marker, Pixel p, int s, int zeroY, int halfLength,
                    int dotSize) {
    const auto line = [&ends](Pixel a, Pixel b) {
        ends.push_back(a);
        ends.push_back(b);
    };
    switch (marker) {
        case '.': return addMarkerLines(ends, '+', p, dotSize, zeroY, halfLength, dotSize);
        case '+':
            line({p.x - s, p.y}, {p.x + s, p.y});
            line({p.x, p.y + s}, {p.x, p.y - s});
            break;
        case 'x':
            line({p.x - s, p.y - s}, {p.x + s, p.y + s});
            line({p.x - s, p.y + s}, {p.x + s, p.y - s});
            break;
        case '~':
            line({p.x - s, p.y - halfLength}, {p.x + s, p.y - halfLength});
            line({p.x, p.y - halfLength}, {p.x, p.y + halfLength});
            line({p.x - s, p.y + halfLength}, {p.x + s, p.y + halfLength});
            break;
        case '|': line({p.x, p.y + s}, {p.x, p.y - s}); break;
        case '!': line(p, {p.x, zeroY}); break;
        case '_': line({p.x - s, p.y}, {p.x + s, p.y}); break;
        default: raiseRuntimeError("unrecognized marker character");
    }
}

}  // namespace

FramePainter::FramePainter(Frame& frame, DrawingSurface& surface)
    : frame_(frame), surface_(surface), resolution_(surface.resolution()), writer_(Face::Times) {}

int FramePainter::dots(int pixels) const { return static_cast<int>(std::lround(pixels * resolution_)); }

void FramePainter::drawPolyline(std::span<const Pixel> points) {
    if (points.size() == 2) return surface_.polyline(points);
    const auto [low, high] = frame_.polylineRange(resolution_);
    const auto isWild = [low = low, high = high](Pixel p) { return p.y < low || p.y > high; };
    if (std::none_of(points.begin(), points.end(), isWild)) return surface_.polyline(points);
    scratch_.assign(points.begin(), points.end());
    for (Pixel& p : scratch_) p.y = std::clamp(p.y, low, high);
    surface_.polyline(scratch_);
}

void FramePainter::drawLine(std::span<const Pixel> points, const PlotStyle& style) {
    if (points.empty()) return;
    const Clipping clipping(surface_);
    surface_.beginStroke(style);
    drawPolyline(points);
    surface_.endGroup();
}

void FramePainter::drawSegments(std::span<const Pixel> ends, const PlotStyle& style) {
    if (ends.empty()) return;
    surface_.beginStroke(style);
    for (std::size_t k = 0; k + 1 < ends.size(); k += 2) surface_.polyline(ends.subspan(k, 2));
    surface_.endGroup();
}

void FramePainter::drawPolygon(std::span<const Pixel> points, const PlotStyle& style) {
    if (points.empty()) return;
    const auto [low, high] = frame_.polylineRange(resolution_);
    scratch_.assign(points.begin(), points.end());
    for (Pixel& p : scratch_) p.y = std::clamp(p.y, low, high);
    const Clipping clipping(surface_);
    surface_.beginStrokeAndFill(style);
    surface_.polygon(scratch_);
    surface_.endGroup();
}

void FramePainter::drawRectangle(bool filled, const PlotStyle* style, double x, double y, double width,
                                 double height) {
    if (style == nullptr && filled) {
        surface_.box(toDots(frame_.fractionsToPixels({x, y, width, height}), resolution_), false);
        return;
    }
    const PixelRect edges = rectangleBetween(dot(x, y), dot(x + width, y + height));
    if (style == nullptr) return surface_.box(edges, false);
    surface_.beginStroke(*style);
    surface_.box(edges, filled);
    surface_.endGroup(GroupEnd::LeftOpen);
}

void FramePainter::drawCircles(std::span<const Pixel> centres, const PlotStyle& style, int radius,
                               bool filled) {
    if (centres.empty()) return;
    const Clipping clipping(surface_);
    if (filled)
        surface_.beginStrokeAndFill(style);
    else
        surface_.beginStroke(style);
    for (const Pixel centre : centres) surface_.circle(centre, std::abs(radius));
    surface_.endGroup(GroupEnd::Bare);
}

void FramePainter::drawBars(std::span<const double> x, std::span<const double> y,
                            std::span<const double> widths, const PlotStyle& style, double defaultWidth) {
    const std::size_t count = std::min(x.size(), y.size());
    if (count == 0) return;
    const Clipping clipping(surface_);
    surface_.beginStrokeAndFill(style);
    const int bottom = dotY(0), pixel = dots(1);
    for (std::size_t k = 0; k < count; ++k) {
        const double unit = k < widths.size() ? widths[k] : defaultWidth;
        const int width = toLength(unit * frame_.pixelsPerX(), resolution_);
        const int left = dotX(x[k]) - width / 2;
        surface_.bar(rectangleBetween({left, dotY(y[k])}, {left + width + pixel, bottom}));
    }
    surface_.endGroup();
}

void FramePainter::drawMarkers(std::span<const Pixel> points, const PlotStyle& style, char marker, int size,
                               std::span<const double> errors) {
    if (marker == 0 || points.empty()) return;
    const int s = dots(size);
    if (marker == 'o') return drawCircles(points, style, s);
    std::vector<Pixel> ends;
    const bool isClosedLine = marker == 's' || marker == 't';
    if (!isClosedLine) {
        ends.reserve(points.size() * 6);
        const int zeroY = dotY(0), dotSize = dots(1);
        for (std::size_t k = 0; k < points.size(); ++k) {
            const double error =
                errors.empty() ? 0 : errors[errors.size() == 1 ? 0 : std::min(k, errors.size() - 1)];
            addMarkerLines(ends, marker, points[k], s, zeroY,
                           toLength(error * frame_.pixelsPerY(), resolution_), dotSize);
        }
    }
    const Clipping clipping(surface_);
    surface_.beginStroke(style);
    for (std::size_t k = 0; k + 1 < ends.size(); k += 2) surface_.polyline(std::span(ends).subspan(k, 2));
    if (isClosedLine) {
        for (const auto [x, y] : points) {
            const std::array<Pixel, 5> square = {
                {{x - s, y - s}, {x + s, y - s}, {x + s, y + s}, {x - s, y + s}, {x - s, y - s}}};
            const std::array<Pixel, 4> triangle = {
                {{x - s, y + s}, {x + s, y + s}, {x, y - s}, {x - s, y + s}}};
            drawPolyline(marker == 's' ? std::span<const Pixel>(square) : std::span<const Pixel>(triangle));
        }
    }
    surface_.endGroup(GroupEnd::Bare);
}

void FramePainter::drawText(int alignment, bool relative, std::string_view text, const PlotStyle& style,
                            int angle, double x, double y) {
    if (text.empty()) return;
    const Pixel at = relative ? frame_.percentToPixels(x, y) : frame_.pixel(x, y);
    TextWriter writer(Face::Times, style.width, style.lineColour);
    writer.setAngle(angle);
    surface_.beginText({static_cast<TextAnchor>(std::min(alignment & 3, 2)),
                        static_cast<TextBaseline>(std::clamp(alignment >> 2, 0, 2)), angle, style.xorMode});
    writer.write(surface_, at.x, at.y, text);
    surface_.endText();
}

}  // namespace vorpen
