// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The surface of a figure's window: a picture that is drawn frame by frame, and
// from which the window is painted. Lines and fillings are pixels of one colour
// each, without shades at their edges, so that an inverting item disappears
// without a trace when it is drawn a second time. Text has shades unless it
// inverts.
//
// The picture has as many dots to a pixel of the figure as the screen has. A
// shape whose places are whole pixels covers the dots of those pixels that it
// covers at one dot to a pixel; text is laid out in pixels and its letters are
// drawn in dots.

#include <QtGui/QFont>
#include <QtGui/QFontMetrics>
#include <QtGui/QImage>
#include <QtGui/QTransform>
#include <memory>
#include <string>
#include <vector>

#include "plot/pixel_mask.h"

class QPainter;

namespace vorpen {

/// A face at a size in pixels, from the top to the bottom of a line.
[[nodiscard]] QFont windowFont(const Font& font);
/// Text of a face as the window library has it.
[[nodiscard]] QString faceText(std::string_view bytes, Face face);
[[nodiscard]] QRgb toRgb(Colour colour);

class PainterSurface final : public DrawingSurface {
public:
    /// Starts anew with a white picture of another size in pixels.
    void resize(int width, int height, double resolution = 1);
    /// The size in pixels.
    [[nodiscard]] QSize size() const { return size_; }
    /// Makes the picture white.
    void erase();
    /// The dots of the picture.
    [[nodiscard]] const QImage& image() const { return image_; }
    /// The pixels in which something has been drawn since this was asked last.
    [[nodiscard]] QRect takeChanged();
    /// The dots that show a rectangle of pixels.
    [[nodiscard]] QRect dotsOf(const QRect& pixels) const;

    [[nodiscard]] double resolution() const override { return resolution_; }
    void beginFrame(const FrameOutline& outline) override;
    void endFrame() override;
    void resumeFrame(const FrameOutline& outline) override;
    void setClipping(bool on) override;
    void beginStroke(const PlotStyle& style) override;
    void beginStrokeAndFill(const PlotStyle& style) override;
    void endGroup(GroupEnd end) override;
    void polyline(std::span<const Pixel> points) override;
    void polygon(std::span<const Pixel> points) override;
    void box(const PixelRect& edges, bool filled) override;
    void bar(const PixelRect& edges) override;
    void circle(Pixel centre, int radius) override;
    void beginText(const TextGroup& group) override;
    void beginLine(Pixel anchor) override;
    void text(Pixel at, std::string_view bytes, const Font& font, Colour colour) override;
    void endLine() override;
    void endText() override;
    [[nodiscard]] int textWidth(std::string_view bytes, const Font& font) const override;
    [[nodiscard]] FontMetrics metrics(const Font& font) const override;
    [[nodiscard]] int rightEdge() const override;
    void bitmap(Pixel at, const Bitmap& picture, bool transparent) override;

private:
    /// A font that has been asked for; there are few at a time.
    struct KnownFont {
        Font font;
        QFont face;
        QFontMetrics measure;
    };
    struct Run {
        Pixel at;
        QString text;
        const KnownFont* font;
        Colour colour;
    };

    [[nodiscard]] PixelRect dotsOf(const PixelRect& pixels) const;
    [[nodiscard]] PixelRect drawnArea() const;
    void setPen(const PlotStyle& style, bool fills);
    void outline(std::span<const Pixel> points);
    void finishShape();
    void put(const PixelMask& mask, Colour colour, const PixelMask* except);
    void changed(const PixelRect& area);
    [[nodiscard]] const KnownFont& known(const Font& font) const;
    [[nodiscard]] QTransform intoFrame(const QRectF& line) const;
    void paintRuns(QPainter& painter, bool inverting) const;
    void paintLine(const QRect& visible, const QTransform& place);

    QImage image_;
    QSize size_;
    double resolution_ = 1;
    QRect changed_;    ///< in dots
    PixelRect frame_;  ///< in pixels
    PixelRect frameDots_, dataDots_;
    bool clips_ = false;
    PlotStyle style_;
    int pen_ = 1, penReach_ = 0;  ///< in dots, as PixelMask has them
    std::vector<int> dashes_;
    bool fills_ = false;
    PixelMask lines_, widened_, filling_;
    TextGroup group_;
    bool inLine_ = false;
    Pixel lineStart_;
    std::vector<Run> runs_;
    mutable std::vector<std::unique_ptr<KnownFont>> fonts_;
};

}  // namespace vorpen
