// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/painter_surface.h"

#include <QtGui/QPainter>
#include <QtGui/QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "base/encoding.h"
#include "window/encoding.h"

namespace vorpen {
namespace {

/// A glyph above this is larger than any screen, and takes memory for nothing.
constexpr int largestFont = 2000;

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
    face.setPixelSize(std::max(1, static_cast<int>(std::lround(height * static_cast<double>(height) / line))));
    return face;
}

void PainterSurface::resize(int width, int height) {
    image_ = QImage(std::max(width, 1), std::max(height, 1), QImage::Format_RGB32);
    erase();
}

void PainterSurface::erase() {
    image_.fill(Qt::white);
    changed_ = image_.rect();
}

QRect PainterSurface::takeChanged() { return std::exchange(changed_, QRect()); }

// ---- Frames and groups --------------------------------------------------------------

void PainterSurface::beginFrame(const FrameOutline& outline) {
    resumeFrame(outline);
    if (frame_.width() == 0) return;
    for (int y = frame_.top; y < frame_.bottom; ++y) {
        auto* const row = reinterpret_cast<QRgb*>(image_.scanLine(y));
        std::fill(row + frame_.left, row + frame_.right, toRgb(outline.background));
    }
    changed(frame_);
}

void PainterSurface::endFrame() {
    clips_ = false;
    runs_.clear();
}

void PainterSurface::resumeFrame(const FrameOutline& outline) {
    frame_ = intersection(outline.frame, {0, 0, image_.width(), image_.height()});
    dataArea_ = intersection(frame_, outline.clip);
    clips_ = inLine_ = false;
    style_ = thinBlack;
    fills_ = false;
    // A drawing that failed half way may have left something.
    runs_.clear();
    setPen(thinBlack, false);
}

void PainterSurface::setClipping(bool on) { clips_ = on; }

PixelRect PainterSurface::drawnArea() const { return clips_ ? dataArea_ : frame_; }

void PainterSurface::setPen(const PlotStyle& style, bool fills) {
    style_ = style;
    style_.width = std::clamp(style.width, 1, PixelMask::maxPen);
    fills_ = fills;
    const int margin = std::max(usualMargin, style_.width);
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
    if (style_.width > 1) {
        widened_.addWidened(lines_, style_.width);
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
        if (except == nullptr && !style_.xorMode) {
            for (std::size_t x = 0; x < columns; ++x) pixels[x] = wanted[x] ? pen : pixels[x];
        } else {
            const std::uint8_t* const left =
                except ? except->row(y) + (area.left - except->area().left) : nullptr;
            for (std::size_t x = 0; x < columns; ++x) {
                if (!wanted[x] || (left && left[x])) continue;
                pixels[x] = style_.xorMode ? pixels[x] ^ inverting : pen;
            }
        }
    }
    changed(area);
}

void PainterSurface::changed(const PixelRect& area) { changed_ |= toQRect(area); }

// ---- Lines and fillings ----------------------------------------------------------------

void PainterSurface::outline(std::span<const Pixel> points) {
    lines_.polyline(points, style_.penStyle, style_.width);
}

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
    outline(corners({edges.left, edges.top, edges.right - 1, edges.bottom - 1}));
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
    const auto found = std::find_if(fonts_.begin(), fonts_.end(),
                                    [&](const auto& one) { return one->font == upright; });
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
    return runsRight ? image_.width() : std::numeric_limits<int>::max();
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
        const LinePlace place = placeOf(group_, width, height);
        QTransform turn;
        turn.translate(lineStart_.x, lineStart_.y);
        turn.rotate(-group_.angle);
        turn.translate(std::round(place.along), std::round(place.across));
        turn *= intoFrame(turn.mapRect(QRectF(0, 0, width, height)));
        // Marks and slanted letters reach beyond the line.
        const QRectF line(-height, -height, width + 2 * height, 3 * height);
        const QRect visible = turn.mapRect(line).toAlignedRect() & toQRect(area);
        if (!visible.isEmpty()) paintLine(visible, turn);
    }
    runs_.clear();
}

// ---- Pictures ------------------------------------------------------------------------------

void PainterSurface::bitmap(Pixel at, const Bitmap& picture, bool transparent) {
    if (picture.width <= 0 || picture.height <= 0) return;
    const PixelRect area = drawnArea();
    const auto firstIn = [](int low, int from) { return std::max<std::int64_t>(std::int64_t{low} - from, 0); };
    const auto endIn = [](int high, int from, int size) {
        return std::min<std::int64_t>(std::int64_t{high} - from, size);
    };
    const std::int64_t left = firstIn(area.left, at.x), right = endIn(area.right, at.x, picture.width);
    const std::int64_t top = firstIn(area.top, at.y), bottom = endIn(area.bottom, at.y, picture.height);
    if (left >= right || top >= bottom) return;
    const Colour leftOut = picture.at(0, 0);
    for (std::int64_t y = top; y < bottom; ++y) {
        auto* const row = reinterpret_cast<QRgb*>(image_.scanLine(static_cast<int>(at.y + y)));
        for (std::int64_t x = left; x < right; ++x) {
            const Colour colour = picture.at(static_cast<int>(x), static_cast<int>(y));
            if (!transparent || colour != leftOut) row[at.x + x] = toRgb(colour);
        }
    }
    changed_ |= QRect(QPoint(static_cast<int>(at.x + left), static_cast<int>(at.y + top)),
                      QPoint(static_cast<int>(at.x + right) - 1, static_cast<int>(at.y + bottom) - 1));
}

}  // namespace vorpen
