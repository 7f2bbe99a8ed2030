// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What figures are drawn on. The same walk over the same items fills a window
// or writes a file, and never asks which of the two it has: all that differs
// between them (groups of elements or pens, names of clip paths or regions,
// estimated or measured text, an edge that text can run over or none) is
// behind this interface.
//
// Frames and texts are placed in pixels of the figure's client area, y
// downward, and so are laid out alike on every surface. A surface may be finer:
// it has `resolution()` dots to a pixel. Shapes and pictures are placed in
// dots, so that a curve is as fine as it can be shown; how wide a pen is, and
// how large a font, is told in pixels. Without a word on it, a surface has one
// dot to a pixel.
//
// Lines and fillings are drawn between the beginning and the end of a group,
// which sets the pen; a style with `xorMode` inverts what it covers, where the
// surface can. Groups do not nest.

#include <span>
#include <string_view>

#include "plot/bitmap.h"
#include "plot/font.h"
#include "plot/style.h"

namespace vorpen {

struct Pixel {
    int x = 0, y = 0;
    bool operator==(const Pixel&) const = default;
};

/// Edges; the bottom is at the larger y.
struct PixelRect {
    int left = 0, top = 0, right = 0, bottom = 0;

    [[nodiscard]] int width() const { return right - left; }
    [[nodiscard]] int height() const { return bottom - top; }
    [[nodiscard]] bool contains(Pixel p) const {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }
    bool operator==(const PixelRect&) const = default;
};

/// One frame as a surface needs to know it.
struct FrameOutline {
    int index = 0;
    PixelRect frame;     ///< the whole frame, erased with the background
    PixelRect plotArea;  ///< the rectangle inside the axes
    PixelRect clip;      ///< the data limits with a margin, for a clipping that is pixel by pixel
    Colour background = 0xFFFFFF;
};

/// How a group of lines ends. The file format knows three ways; a window puts
/// the pen away in any case.
enum class GroupEnd {
    Line,      ///< closed, and the line ended
    Bare,      ///< closed on the same line
    LeftOpen,  ///< still open: what follows in the file inherits the pen
};

/// Where a text lies about its anchor: 0 the anchor is its end, 1 its middle,
/// 2 its start.
enum class TextAnchor : int { End = 0, Middle = 1, Start = 2 };
/// The same across the line: on the base line, in the middle, under the top.
enum class TextBaseline : int { Alphabetic = 0, Middle = 1, Top = 2 };

struct TextGroup {
    TextAnchor anchor = TextAnchor::Start;
    TextBaseline baseline = TextBaseline::Alphabetic;
    int angle = 0;  ///< degrees, 0 or 90
    bool inverting = false;

    bool operator==(const TextGroup&) const = default;
};

struct FontMetrics {
    int averageWidth = 0;  ///< of a character
    int lineHeight = 0;
};

class DrawingSurface {
public:
    virtual ~DrawingSurface() = default;

    /// Dots to a pixel, on either axis; not necessarily a whole number.
    [[nodiscard]] virtual double resolution() const { return 1; }

    /// Starts a frame anew: erases it, or names its clip path.
    virtual void beginFrame(const FrameOutline& outline) = 0;
    virtual void endFrame() = 0;
    /// Goes on with a frame that was drawn before, without erasing it.
    virtual void resumeFrame(const FrameOutline& outline) = 0;
    /// Confines drawing to the data area, or lifts that.
    virtual void setClipping(bool on) = 0;

    virtual void beginStroke(const PlotStyle& style) = 0;
    virtual void beginStrokeAndFill(const PlotStyle& style) = 0;
    virtual void endGroup(GroupEnd end = GroupEnd::Line) = 0;

    /// A line through the points; two points are a segment. The style of the
    /// group gives the pen.
    virtual void polyline(std::span<const Pixel> points) = 0;
    virtual void polygon(std::span<const Pixel> points) = 0;
    /// The outline of a rectangle. Outside of any group it is drawn with a
    /// black line of width 1. `filled` with the colour of the group's style,
    /// where the surface can.
    virtual void box(const PixelRect& edges, bool filled) = 0;
    virtual void bar(const PixelRect& edges) = 0;
    virtual void circle(Pixel centre, int radius) = 0;

    /// Texts stand in a group that says how they lie about their anchors.
    virtual void beginText(const TextGroup& group) = 0;
    /// The runs of one line follow each other from here. A surface that
    /// measures text lays the line out as a whole about its anchor.
    virtual void beginLine(Pixel) {}
    virtual void endLine() {}
    virtual void text(Pixel at, std::string_view bytes, const Font& font, Colour colour) = 0;
    virtual void endText() = 0;
    /// Width in pixels of bytes drawn in a font, and the font's measures.
    [[nodiscard]] virtual int textWidth(std::string_view bytes, const Font& font) const = 0;
    [[nodiscard]] virtual FontMetrics metrics(const Font& font) const = 0;
    /// The x that text can run over, and is marked there.
    [[nodiscard]] virtual int rightEdge() const = 0;

    /// A picture with its top left corner at a dot; it is as large as its pixels
    /// are. With `transparent` its pixels in the colour of its own top left one
    /// are left out.
    virtual void bitmap(Pixel at, const Bitmap& picture, bool transparent) = 0;
};

}  // namespace vorpen
