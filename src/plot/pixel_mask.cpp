// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/pixel_mask.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace vorpen {
namespace {

constexpr std::uint8_t drawn = 0xFF;

// A place on a line between two pixels, in 2^-32 pixels.
constexpr int fractionBits = 32;
constexpr std::int64_t half = std::int64_t{1} << (fractionBits - 1);

std::int64_t slopeOf(std::int64_t rise, std::int64_t run) { return run == 0 ? 0 : rise * (half * 2) / run; }

/// A row of a round pen's picture: its first and last pixel.
struct Chord {
    int left, right;
};

std::vector<Chord> chordsOfDisc(int diameter) {
    std::vector<Chord> chords;
    const double radius = diameter / 2.0, centre = (diameter - 1) / 2.0;
    for (int i = 0; i < diameter; ++i) {
        const double dy = i - centre, reach = std::sqrt(radius * radius - dy * dy);
        const int first = static_cast<int>(std::ceil(centre - reach));
        const int last = static_cast<int>(std::floor(centre + reach));
        chords.push_back({first, last});
    }
    return chords;
}

/// Half the height of a circle at a distance from its middle.
std::int64_t circleReach(std::int64_t radius, std::int64_t distance) {
    return std::llround(std::sqrt(static_cast<double>(radius * radius - distance * distance)));
}

/// Where the next byte is that differs from a value, or the end. Both many
/// short and few long stretches of a value are passed quickly.
const std::uint8_t* behind(std::uint8_t value, const std::uint8_t* p, const std::uint8_t* end) {
    std::uint64_t eight, same;
    std::memset(&same, value, sizeof same);
    while (p < end && *p == value) {
        ++p;
        for (; end - p >= 8; p += 8) {
            std::memcpy(&eight, p, sizeof eight);
            if (eight != same) break;
        }
    }
    return p;
}

bool isOn(std::span<const int> dashes, std::int64_t phase) {
    for (std::size_t k = 0; k < dashes.size(); ++k) {
        phase -= dashes[k];
        if (phase < 0) return k % 2 == 0;
    }
    return true;
}

std::span<const int> dashPattern(PenStyle style) {
    static constexpr std::array dash{18, 6}, dot{3, 3};
    static constexpr std::array dashDot{9, 6, 3, 6};
    switch (style) {
        case PenStyle::Dash: return dash;
        case PenStyle::Dot: return dot;
        case PenStyle::DashDot: return dashDot;
        case PenStyle::Solid: break;
    }
    return {};
}

}  // namespace

std::vector<int> dashLengths(PenStyle style, int pen, double resolution) {
    std::vector<int> lengths;
    // A pen of one pixel has no ends here; where it is several wide, they add
    // to what is drawn.
    const int ends = static_cast<int>(std::lround(resolution)) - 1;
    for (const int length : dashPattern(style)) {
        const int own = static_cast<int>(std::lround(length * std::max(pen, 1) * resolution));
        lengths.push_back(std::max(lengths.size() % 2 == 0 ? own - ends : own + ends, 1));
    }
    return lengths;
}

void PixelMask::reset(const PixelRect& area) {
    if (area.width() == area_.width() && area.height() == area_.height()) {
        // Clears no more than was drawn.
        for (int y = touched_.top; y < touched_.bottom; ++y)
            std::memset(at(touched_.left, y), 0, static_cast<std::size_t>(touched_.width()));
        area_ = area;
    } else {
        area_ = {area.left, area.top, std::max(area.right, area.left), std::max(area.bottom, area.top)};
        stride_ = static_cast<std::size_t>(area_.width());
        bytes_.assign(stride_ * static_cast<std::size_t>(area_.height()), 0);
    }
    touched_ = {};
}

void PixelMask::touch(int left, int top, int right, int bottom) {
    left = std::max(left, area_.left);
    top = std::max(top, area_.top);
    right = std::min(right, area_.right);
    bottom = std::min(bottom, area_.bottom);
    if (left >= right || top >= bottom) return;
    if (touched_.right == touched_.left) {
        touched_ = {left, top, right, bottom};
        return;
    }
    touched_ = {std::min(left, touched_.left), std::min(top, touched_.top), std::max(right, touched_.right),
                std::max(bottom, touched_.bottom)};
}

void PixelMask::set(std::int64_t x, std::int64_t y) {
    if (x < area_.left || x >= area_.right || y < area_.top || y >= area_.bottom) return;
    const int column = static_cast<int>(x), line = static_cast<int>(y);
    *at(column, line) = drawn;
    touch(column, line, column + 1, line + 1);
}

// ---- Lines ------------------------------------------------------------------------

/// One pixel in each column of a flat line, one in each row of a steep one. The
/// pixels of a line are those of the whole line, however much of it is outside.
void PixelMask::line(Pixel a, Pixel b) {
    const auto [left, right] = std::minmax(a.x, b.x);
    const auto [top, bottom] = std::minmax(a.y, b.y);
    if (left >= area_.right || right < area_.left || top >= area_.bottom || bottom < area_.top) return;
    touch(left, top, right + 1, bottom + 1);
    const std::int64_t dx = std::int64_t{b.x} - a.x, dy = std::int64_t{b.y} - a.y;
    if (std::abs(dx) >= std::abs(dy)) {
        const Pixel start = a.x <= b.x ? a : b;
        const std::int64_t slope = slopeOf(dy, dx);
        const int first = std::max(left, area_.left), last = std::min(right, area_.right - 1);
        std::int64_t y = start.y * (half * 2) + half + slope * (std::int64_t{first} - start.x);
        for (int x = first; x <= last; ++x, y += slope) {
            const std::int64_t row = y >> fractionBits;
            if (row >= area_.top && row < area_.bottom) *at(x, static_cast<int>(row)) = drawn;
        }
    } else {
        const Pixel start = a.y <= b.y ? a : b;
        const std::int64_t slope = slopeOf(dx, dy);
        const int first = std::max(top, area_.top), last = std::min(bottom, area_.bottom - 1);
        std::int64_t x = start.x * (half * 2) + half + slope * (std::int64_t{first} - start.y);
        for (int y = first; y <= last; ++y, x += slope) {
            const std::int64_t column = x >> fractionBits;
            if (column >= area_.left && column < area_.right) *at(static_cast<int>(column), y) = drawn;
        }
    }
}

/// The pattern goes on from line to line, counted by `phase`. The last pixel
/// belongs to the next line.
void PixelMask::dashedLine(Pixel a, Pixel b, std::span<const int> dashes, std::int64_t& phase) {
    const std::int64_t dx = std::int64_t{b.x} - a.x, dy = std::int64_t{b.y} - a.y;
    const bool isFlat = std::abs(dx) >= std::abs(dy);
    const std::int64_t steps = isFlat ? std::abs(dx) : std::abs(dy);
    const std::int64_t begin = phase;
    std::int64_t period = 0;
    for (const int length : dashes) period += length;
    phase = (phase + steps) % period;
    // The steps that are inside along the longer side.
    const bool isForward = (isFlat ? dx : dy) >= 0;
    const std::int64_t from = isFlat ? a.x : a.y;
    const std::int64_t low = isFlat ? area_.left : area_.top;
    const std::int64_t high = (isFlat ? area_.right : area_.bottom) - 1;
    const std::int64_t first = std::max<std::int64_t>(isForward ? low - from : from - high, 0);
    const std::int64_t last = std::min(isForward ? high - from : from - low, steps - 1);
    const std::int64_t slope = slopeOf(isFlat ? dy : dx, steps);
    for (std::int64_t k = first; k <= last; ++k) {
        if (!isOn(dashes, (begin + k) % period)) continue;
        const std::int64_t along = isForward ? from + k : from - k;
        const std::int64_t across = ((isFlat ? a.y : a.x) * (half * 2) + half + slope * k) >> fractionBits;
        if (isFlat)
            set(along, across);
        else
            set(across, along);
    }
}

void PixelMask::polyline(std::span<const Pixel> points, std::span<const int> dashes) {
    if (points.empty()) return;
    std::int64_t phase = 0;
    const auto join = [&](Pixel from, Pixel to) {
        if (dashes.empty())
            line(from, to);
        else
            dashedLine(from, to, dashes, phase);
    };
    Pixel last = points[0];
    if (std::all_of(points.begin(), points.end(), [last](Pixel p) { return p == last; }))
        return line(last, last);
    for (std::size_t k = 1; k < points.size();) {
        // A long curve goes up and down in one column before it reaches the
        // next; there it covers what lies between its highest and lowest point.
        int low = last.y, high = last.y;
        std::size_t end = k;
        for (; end < points.size() && points[end].x == last.x; ++end) {
            low = std::min(low, points[end].y);
            high = std::max(high, points[end].y);
        }
        constexpr std::size_t fewPoints = 4;
        if (end > k + fewPoints) {
            join(last, {last.x, low});
            join({last.x, low}, {last.x, high});
            if (!dashes.empty()) join({last.x, high}, points[end - 1]);
            last = points[end - 1];
            k = end;
        } else {
            if (points[k] != last) join(last, points[k]);
            last = points[k++];
        }
    }
}

void PixelMask::circle(Pixel centre, int radius) {
    const std::int64_t r = std::abs(std::int64_t{radius}), cx = centre.x, cy = centre.y;
    if (cx + r < area_.left || cx - r >= area_.right || cy + r < area_.top || cy - r >= area_.bottom) return;
    // The quarters to the left and right row by row, the others column by column.
    const auto steep = static_cast<std::int64_t>(static_cast<double>(r) * M_SQRT1_2);
    const auto inside = [steep](std::int64_t middle, int low, int high) {
        return std::pair{std::max<std::int64_t>(middle - steep, low),
                         std::min<std::int64_t>(middle + steep, high - 1)};
    };
    const auto [top, bottom] = inside(cy, area_.top, area_.bottom);
    for (std::int64_t y = top; y <= bottom; ++y) {
        const std::int64_t reach = circleReach(r, y - cy);
        set(cx - reach, y);
        set(cx + reach, y);
    }
    const auto [left, right] = inside(cx, area_.left, area_.right);
    for (std::int64_t x = left; x <= right; ++x) {
        const std::int64_t reach = circleReach(r, x - cx);
        set(x, cy - reach);
        set(x, cy + reach);
    }
}

void PixelMask::addWidened(const PixelMask& thin, int pen, int reach) {
    const std::vector<Chord> chords = chordsOfDisc(std::clamp(pen, 1, maxPen));
    const int beyond = static_cast<int>(chords.size()) - 1 - reach;
    const PixelRect& source = thin.touched_;
    if (source.width() == 0) return;
    for (int y = source.top; y < source.bottom; ++y) {
        const std::uint8_t* const row = thin.row(y) + (source.left - thin.area_.left);
        const std::uint8_t* const rowEnd = row + source.width();
        // Stretches of drawn pixels, each widened to both sides at once.
        for (const std::uint8_t* p = behind(0, row, rowEnd); p < rowEnd; p = behind(0, p, rowEnd)) {
            const int first = source.left + static_cast<int>(p - row);
            p = behind(drawn, p, rowEnd);
            const int x = source.left + static_cast<int>(p - row);
            for (std::size_t k = 0; k < chords.size(); ++k) {
                const int line = y - reach + static_cast<int>(k);
                if (line < area_.top || line >= area_.bottom) continue;
                const int left = std::max(first - reach + chords[k].left, area_.left);
                const int right = std::min(x - reach + chords[k].right, area_.right);
                if (left < right) std::memset(at(left, line), drawn, static_cast<std::size_t>(right - left));
            }
        }
    }
    touch(source.left - reach, source.top - reach, source.right + beyond, source.bottom + beyond);
}

// ---- Fillings ----------------------------------------------------------------------

/// Marks where an edge is crossed on the way along each row.
void PixelMask::toggleEdge(Pixel a, Pixel b) {
    if (a.y == b.y) return;
    const Pixel start = a.y < b.y ? a : b, stop = a.y < b.y ? b : a;
    const std::int64_t slope = slopeOf(std::int64_t{stop.x} - start.x, std::int64_t{stop.y} - start.y);
    const int first = std::max(start.y, area_.top), last = std::min(stop.y, area_.bottom);
    // Rounded up: the first pixel whose middle is behind the edge.
    std::int64_t x = start.x * (half * 2) + (half * 2 - 1) + slope * (std::int64_t{first} - start.y);
    for (int y = first; y < last; ++y, x += slope) {
        const std::int64_t column = std::max<std::int64_t>(x >> fractionBits, area_.left);
        if (column < area_.right) *at(static_cast<int>(column), y) ^= drawn;
    }
}

void PixelMask::fillPolygon(std::span<const Pixel> points) {
    if (points.size() < 3) return;
    PixelRect box{points[0].x, points[0].y, points[0].x, points[0].y};
    for (const Pixel p : points)
        box = {std::min(box.left, p.x), std::min(box.top, p.y), std::max(box.right, p.x),
               std::max(box.bottom, p.y)};
    box = {std::max(box.left, area_.left), std::max(box.top, area_.top), std::min(box.right, area_.right),
           std::min(box.bottom, area_.bottom)};
    if (box.left >= box.right || box.top >= box.bottom) return;
    // The edges are counted in a mask of their own.
    PixelMask edges;
    edges.reset(box);
    Pixel last = points.back();
    for (std::size_t k = 0; k < points.size(); ++k) {
        // Of edges on one upright line only the sum counts.
        const Pixel p = points[k];
        if (k + 1 < points.size() && p.x == last.x && points[k + 1].x == p.x) continue;
        edges.toggleEdge(last, p);
        last = p;
    }
    for (int y = box.top; y < box.bottom; ++y) {
        const std::uint8_t* const from = edges.at(box.left, y);
        std::uint8_t* const to = at(box.left, y);
        std::uint8_t inside = 0;
        for (int x = 0; x < box.width(); ++x) {
            inside ^= from[x];
            to[x] |= inside;
        }
    }
    touch(box.left, box.top, box.right, box.bottom);
}

void PixelMask::fillCircle(Pixel centre, int radius) {
    const std::int64_t r = std::abs(std::int64_t{radius}), cx = centre.x, cy = centre.y;
    const std::int64_t top = std::max<std::int64_t>(cy - r, area_.top);
    const std::int64_t bottom = std::min<std::int64_t>(cy + r, area_.bottom - 1);
    for (std::int64_t y = top; y <= bottom; ++y) {
        const std::int64_t reach = circleReach(r, y - cy);
        const auto left = static_cast<int>(std::max<std::int64_t>(cx - reach, area_.left));
        const auto right = static_cast<int>(std::min<std::int64_t>(cx + reach + 1, area_.right));
        if (left < right) fillRectangle({left, static_cast<int>(y), right, static_cast<int>(y) + 1});
    }
}

void PixelMask::fillRectangle(const PixelRect& edges) {
    const int left = std::max(edges.left, area_.left), right = std::min(edges.right, area_.right);
    const int top = std::max(edges.top, area_.top), bottom = std::min(edges.bottom, area_.bottom);
    if (left >= right) return;
    for (int y = top; y < bottom; ++y)
        std::memset(at(left, y), drawn, static_cast<std::size_t>(right - left));
    touch(left, top, right, bottom);
}

}  // namespace vorpen
