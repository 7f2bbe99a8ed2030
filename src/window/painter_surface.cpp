// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/painter_surface.h"

#include <QtGui/QPainter>
#include <QtGui/QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "base/encoding.h"
#include "window/encoding.h"

namespace vorpen {
namespace {

/// A glyph above this is larger than any screen, and takes memory for nothing.
constexpr int largestFont = 2000;

/// The widest pen in pixels; it covers a figure.
constexpr int widestPen = 512;

/// Room around the picture in which the middles of wide lines may lie. It is
/// the same for all usual pens, so that the mask keeps its size.
constexpr int usualMargin = 16;

constexpr PlotStyle thinBlack{.width = 1};

PixelRect intersection(const PixelRect& a, const PixelRect& b) {
    const PixelRect both{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                         std::min(a.bottom, b.bottom)};
    return both.left < both.right && both.top < both.bottom ? both : PixelRect{};
}

QRect toQRect(const PixelRect& r) { return {r.left, r.top, r.width(), r.height()}; }

QStringList families(Face face) {
    // The faces of the same widths that free systems have come second.
    if (face == Face::Courier) return {"Courier New", "Liberation Mono", "monospace"};
    return {"Times New Roman", "Liberation Serif", "serif"};
}

std::array<Pixel, 5> corners(const PixelRect& r) {
    return {{{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}, {r.left, r.top}}};
}

/// How many pixels are put together, without asking for each where the next is.
constexpr std::size_t stretch = 64;

/// The first drawn byte of a row of a mask from one on; `count` if there is none.
std::size_t firstDrawn(const std::uint8_t* row, std::size_t from, std::size_t count) {
    const void* const found = std::memchr(row + from, 0xFF, count - from);
    return found != nullptr ? static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - row) : count;
}

/// Where a line of text begins on its base line's direction, and how far below
/// its anchor its upper edge is, both in its own turned coordinates.
struct LinePlace {
    double along, across;
};

/// `width` and `height` are those of the line.
LinePlace placeOf(const TextGroup& group, double width, double height) {
    const auto part = [](auto anchor) { return static_cast<int>(anchor) / 2.0; };
    const double anchor = part(group.anchor), baseline = part(group.baseline);
    // What lies to the east of its anchor lies below it when it is turned.
    if (group.angle == 90) return {-baseline * width, -(1 - anchor) * height};
    return {-(1 - anchor) * width, -(1 - baseline) * height};
}

}  // namespace

QRgb toRgb(Colour colour) {
    return qRgb(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                static_cast<int>(colour >> 16 & 0xFF));
}

QString faceText(std::string_view bytes, Face face) {
    return face == Face::Symbol ? QString::fromStdString(symbolToUtf8(bytes)) : toQString(bytes);
}

QFont windowFont(const Font& font) {
    QFont face;
    face.setFamilies(families(font.face));
    face.setWeight(font.weight > 400 ? QFont::Bold : QFont::Normal);
    face.setItalic(font.italic);
    face.setUnderline(font.underline);
    // The size of a font is that of its letters; a line is higher.
    const int height = std::clamp(font.height, 1, largestFont);
    face.setPixelSize(height);
    const int line = QFontMetrics(face).height();
    face.setPixelSize(
        std::max(1, static_cast<int>(std::lround(height * static_cast<double>(height) / line))));
    return face;
}

void PainterSurface::resize(int width, int height, double resolution) {
    resolution_ = resolution;
    size_ = {std::max(width, 1), std::max(height, 1)};
    image_ = QImage(dotsOf(QRect(QPoint(), size_)).size(), QImage::Format_RGB32);
    erase();
}

QRect PainterSurface::dotsOf(const QRect& pixels) const {
    return QRectF(pixels.x() * resolution_, pixels.y() * resolution_, pixels.width() * resolution_,
                  pixels.height() * resolution_)
        .toAlignedRect();
}

/// Rectangles that have an edge in common have one in dots; a dot in which two
/// of them meet belongs to the upper and left one.
PixelRect PainterSurface::dotsOf(const PixelRect& pixels) const {
    const auto edge = [this](int pixel) { return static_cast<int>(std::ceil(pixel * resolution_)); };
    return {edge(pixels.left), edge(pixels.top), edge(pixels.right), edge(pixels.bottom)};
}

void PainterSurface::erase() {
    image_.fill(Qt::white);
    changed_ = image_.rect();
}

QRect PainterSurface::takeChanged() {
    const QRect dots = std::exchange(changed_, QRect());
    if (dots.isEmpty()) return {};
    return QRectF(dots.x() / resolution_, dots.y() / resolution_, dots.width() / resolution_,
                  dots.height() / resolution_)
        .toAlignedRect();
}

// ---- Frames and groups --------------------------------------------------------------

void PainterSurface::beginFrame(const FrameOutline& outline) {
    resumeFrame(outline);
    if (frameDots_.width() == 0) return;
    for (int y = frameDots_.top; y < frameDots_.bottom; ++y) {
        auto* const row = reinterpret_cast<QRgb*>(image_.scanLine(y));
        std::fill(row + frameDots_.left, row + frameDots_.right, toRgb(outline.background));
    }
    changed(frameDots_);
}

void PainterSurface::endFrame() {
    clips_ = false;
    runs_.clear();
}

void PainterSurface::resumeFrame(const FrameOutline& outline) {
    frame_ = intersection(outline.frame, {0, 0, size_.width(), size_.height()});
    frameDots_ = dotsOf(frame_);
    dataDots_ = dotsOf(intersection(frame_, outline.clip));
    clips_ = inLine_ = false;
    style_ = thinBlack;
    fills_ = false;
    // A drawing that failed half way may have left something.
    runs_.clear();
    setPen(thinBlack, false);
}

void PainterSurface::setClipping(bool on) { clips_ = on; }

PixelRect PainterSurface::drawnArea() const { return clips_ ? dataDots_ : frameDots_; }

void PainterSurface::setPen(const PlotStyle& style, bool fills) {
    style_ = style;
    style_.width = std::clamp(style.width, 1, widestPen);
    fills_ = fills;
    // A pen of an odd width is in the middle of a pixel, one of an even width
    // on its upper left corner; both begin with a whole pixel.
    pen_ = std::max(static_cast<int>(std::lround(style_.width * resolution_)), 1);
    penReach_ = static_cast<int>(style_.width / 2 * resolution_);
    dashes_ = dashLengths(style_.penStyle, style_.width, resolution_);
    const int margin = std::max(usualMargin, pen_);
    const PixelRect picture{0, 0, image_.width(), image_.height()};
    lines_.reset({-margin, -margin, picture.right + margin, picture.bottom + margin});
    widened_.reset(picture);
    filling_.reset(picture);
}

void PainterSurface::beginStroke(const PlotStyle& style) { setPen(style, false); }

void PainterSurface::beginStrokeAndFill(const PlotStyle& style) { setPen(style, true); }

void PainterSurface::endGroup(GroupEnd) {
    finishShape();
    setPen(thinBlack, false);
}

/// Puts what has been drawn into the picture: the filling, and the lines over
/// it.
void PainterSurface::finishShape() {
    const PixelMask* lines = &lines_;
    if (pen_ > 1) {
        widened_.addWidened(lines_, pen_, penReach_);
        lines = &widened_;
    }
    put(filling_, style_.fillColour, lines);
    put(*lines, style_.lineColour, nullptr);
    lines_.reset(lines_.area());
    widened_.reset(widened_.area());
    filling_.reset(filling_.area());
}

/// Pixels that are in `except` too are left out.
void PainterSurface::put(const PixelMask& mask, Colour colour, const PixelMask* except) {
    const PixelRect area = intersection(mask.touched(), drawnArea());
    if (area.width() == 0) return;
    const QRgb pen = toRgb(colour);
    // On white an inverting pen shows its colour, and twice changes nothing.
    const QRgb inverting = ~pen & 0x00FFFFFF;
    const auto columns = static_cast<std::size_t>(area.width());
    for (int y = area.top; y < area.bottom; ++y) {
        QRgb* const pixels = reinterpret_cast<QRgb*>(image_.scanLine(y)) + area.left;
        const std::uint8_t* const wanted = mask.row(y) + (area.left - mask.area().left);
        const std::uint8_t* const left =
            except ? except->row(y) + (area.left - except->area().left) : nullptr;
        // Most of a mask has nothing in it.
        for (std::size_t begin = firstDrawn(wanted, 0, columns); begin < columns;) {
            const std::size_t end = std::min(begin + stretch, columns);
            if (left == nullptr && !style_.xorMode) {
                for (std::size_t x = begin; x < end; ++x) pixels[x] = wanted[x] ? pen : pixels[x];
            } else {
                for (std::size_t x = begin; x < end; ++x) {
                    if (!wanted[x] || (left && left[x])) continue;
                    pixels[x] = style_.xorMode ? pixels[x] ^ inverting : pen;
                }
            }
            begin = firstDrawn(wanted, end, columns);
        }
    }
    changed(area);
}

void PainterSurface::changed(const PixelRect& area) { changed_ |= toQRect(area); }

// ---- Lines and fillings ----------------------------------------------------------------

void PainterSurface::outline(std::span<const Pixel> points) { lines_.polyline(points, dashes_); }

void PainterSurface::polyline(std::span<const Pixel> points) { outline(points); }

/// A filling has no outline; that is the line of its curve.
void PainterSurface::polygon(std::span<const Pixel> points) {
    filling_.fillPolygon(points);
    finishShape();
}

void PainterSurface::box(const PixelRect& edges, bool filled) {
    if (filled) filling_.fillRectangle(edges);
    outline(corners(edges));
    finishShape();
}

void PainterSurface::bar(const PixelRect& edges) {
    if (edges.width() <= 0 || edges.height() <= 0) return;
    filling_.fillRectangle(edges);
    const int pixel = static_cast<int>(std::lround(resolution_));
    outline(corners({edges.left, edges.top, edges.right - pixel, edges.bottom - pixel}));
    finishShape();
}

void PainterSurface::circle(Pixel centre, int radius) {
    lines_.circle(centre, radius);
    if (!fills_) return;
    filling_.fillCircle(centre, radius);
    finishShape();
}

// ---- Text ---------------------------------------------------------------------------------

const PainterSurface::KnownFont& PainterSurface::known(const Font& font) const {
    Font upright = font;
    upright.angle = 0;
    const auto found =
        std::find_if(fonts_.begin(), fonts_.end(), [&](const auto& one) { return one->font == upright; });
    if (found != fonts_.end()) return **found;
    constexpr std::size_t manyFonts = 64;
    if (fonts_.size() >= manyFonts && runs_.empty()) fonts_.clear();
    const QFont face = windowFont(upright);
    fonts_.push_back(std::make_unique<KnownFont>(KnownFont{upright, face, QFontMetrics(face)}));
    return *fonts_.back();
}

int PainterSurface::textWidth(std::string_view bytes, const Font& font) const {
    return known(font).measure.horizontalAdvance(faceText(bytes, font.face));
}

FontMetrics PainterSurface::metrics(const Font& font) const {
    // Of the letters of usual text; the average of a font's file counts signs
    // that are rare and wide.
    static const QString letters = "abcdefghijklmnopqrstuvwxyz";
    const QFontMetrics& measure = known(font).measure;
    return {measure.horizontalAdvance(letters) / static_cast<int>(letters.size()), measure.height()};
}

/// Only of text that begins at its anchor it is known there where it ends.
int PainterSurface::rightEdge() const {
    const bool runsRight = group_.anchor == TextAnchor::Start && group_.angle == 0;
    return runsRight ? size_.width() : std::numeric_limits<int>::max();
}

void PainterSurface::beginText(const TextGroup& group) { group_ = group; }

void PainterSurface::endText() { group_ = {}; }

void PainterSurface::beginLine(Pixel anchor) {
    endLine();
    inLine_ = true;
    lineStart_ = anchor;
}

void PainterSurface::text(Pixel at, std::string_view bytes, const Font& font, Colour colour) {
    const bool isAlone = !inLine_;
    if (isAlone) beginLine(at);
    const KnownFont& face = known(font);
    runs_.push_back({at, faceText(bytes, font.face), &face, colour});
    if (isAlone) endLine();
}

/// Moves a line that the edge of its frame would cut along its length to where
/// it can be read, if its anchor is in the frame.
QTransform PainterSurface::intoFrame(const QRectF& line) const {
    if (!frame_.contains(lineStart_)) return {};
    const auto shift = [](double low, double high, double first, double last) {
        return low < first ? first - low : high > last ? std::max(last - high, first - low) : 0;
    };
    return group_.angle == 0
               ? QTransform::fromTranslate(0, shift(line.top(), line.bottom(), frame_.top, frame_.bottom))
               : QTransform::fromTranslate(shift(line.left(), line.right(), frame_.left, frame_.right), 0);
}

/// Runs hang from one upper edge, raised or lowered by their places.
void PainterSurface::paintRuns(QPainter& painter, bool inverting) const {
    for (const Run& run : runs_) {
        QFont face = run.font->face;
        if (inverting) face.setStyleStrategy(QFont::NoAntialias);
        painter.setFont(face);
        painter.setPen(QColor(toRgb(run.colour)));
        const double x = static_cast<double>(run.at.x) - lineStart_.x;
        const double y = static_cast<double>(run.at.y) - lineStart_.y;
        painter.drawText(QPointF(x, y + run.font->measure.ascent()), run.text);
    }
}

void PainterSurface::paintLine(const QRect& visible, const QTransform& place) {
    if (!group_.inverting) {
        QPainter painter(&image_);
        painter.setClipRect(visible);
        painter.setTransform(place);
        paintRuns(painter, false);
    } else {
        QImage marks(visible.size(), QImage::Format_ARGB32_Premultiplied);
        marks.fill(Qt::transparent);
        QPainter painter(&marks);
        painter.setTransform(place * QTransform::fromTranslate(-visible.left(), -visible.top()));
        paintRuns(painter, true);
        painter.end();
        for (int y = 0; y < visible.height(); ++y) {
            const auto* const from = reinterpret_cast<const QRgb*>(std::as_const(marks).scanLine(y));
            auto* const to = reinterpret_cast<QRgb*>(image_.scanLine(visible.top() + y)) + visible.left();
            for (int x = 0; x < visible.width(); ++x)
                if (qAlpha(from[x]) != 0) to[x] ^= ~from[x] & 0x00FFFFFF;
        }
    }
    changed_ |= visible;
}

void PainterSurface::endLine() {
    if (!std::exchange(inLine_, false) || runs_.empty()) return;
    double width = 0, height = 0;
    for (const Run& run : runs_) {
        const double begin = static_cast<double>(run.at.x) - lineStart_.x;
        width = std::max(width, begin + run.font->measure.horizontalAdvance(run.text));
        height = std::max(height, static_cast<double>(run.font->measure.height()));
    }
    const PixelRect area = drawnArea();
    if (area.width() > 0) {
        const LinePlace start = placeOf(group_, width, height);
        QTransform turn;
        turn.translate(lineStart_.x, lineStart_.y);
        turn.rotate(-group_.angle);
        turn.translate(std::round(start.along), std::round(start.across));
        turn *= intoFrame(turn.mapRect(QRectF(0, 0, width, height)));
        // Marks and slanted letters reach beyond the line.
        const QRectF line(-height, -height, width + 2 * height, 3 * height);
        const QTransform place = turn * QTransform::fromScale(resolution_, resolution_);
        const QRect visible = place.mapRect(line).toAlignedRect() & toQRect(area);
        if (!visible.isEmpty()) paintLine(visible, place);
    }
    runs_.clear();
}

// ---- Pictures ------------------------------------------------------------------------------

void PainterSurface::bitmap(Pixel at, const Bitmap& picture, bool transparent) {
    if (picture.width <= 0 || picture.height <= 0) return;
    const PixelRect area = drawnArea();
    const auto firstIn = [](int low, int from) {
        return std::max<std::int64_t>(std::int64_t{low} - from, 0);
    };
    const auto endIn = [this](int high, int from, int size) {
        const auto whole = static_cast<std::int64_t>(std::ceil(size * resolution_));
        return std::min(std::int64_t{high} - from, whole);
    };
    const std::int64_t left = firstIn(area.left, at.x), right = endIn(area.right, at.x, picture.width);
    const std::int64_t top = firstIn(area.top, at.y), bottom = endIn(area.bottom, at.y, picture.height);
    if (left >= right || top >= bottom) return;
    const auto source = [this](std::int64_t dot, int size) {
        return std::min(static_cast<int>(static_cast<double>(dot) / resolution_), size - 1);
    };
    std::vector<int> columns;
    for (std::int64_t x = left; x < right; ++x) columns.push_back(source(x, picture.width));
    const Colour leftOut = picture.at(0, 0);
    for (std::int64_t y = top; y < bottom; ++y) {
        const int line = source(y, picture.height);
        auto* const row =
            reinterpret_cast<QRgb*>(image_.scanLine(static_cast<int>(at.y + y))) + (at.x + left);
        for (std::size_t k = 0; k < columns.size(); ++k) {
            const Colour colour = picture.at(columns[k], line);
            if (!transparent || colour != leftOut) row[k] = toRgb(colour);
        }
    }
    changed({static_cast<int>(at.x + left), static_cast<int>(at.y + top), static_cast<int>(at.x + right),
             static_cast<int>(at.y + bottom)});
}

}  // namespace vorpen
