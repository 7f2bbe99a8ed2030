// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The surface that writes a figure as SVG text. The file has no fonts and no
// colours of text: a text element carries its place alone, and a viewer shows
// it in its own font of 16 pixels, for which widths are estimated here. Pixels
// that do not fit the file's format (a raster picture) are left out.
//
// The text is appended to a string of the caller. Millions of points pass
// through here, so numbers are written without streams and without memory of
// their own.

#include <string>

#include "plot/drawing_surface.h"

namespace vorpen {

class SvgSurface final : public DrawingSurface {
public:
    /// Writes the head of a file of this size; `out` must outlive the surface.
    SvgSurface(std::string& out, int width, int height);

    /// Closes the groups that are still open and the file.
    void finish();

    void beginFrame(const FrameOutline& outline) override;
    void endFrame() override {}
    void resumeFrame(const FrameOutline&) override {}
    void setClipping(bool) override {}
    void beginStroke(const PlotStyle& style) override;
    void beginStrokeAndFill(const PlotStyle& style) override;
    void endGroup(GroupEnd end) override;
    void polyline(std::span<const Pixel> points) override;
    void polygon(std::span<const Pixel> points) override;
    void box(const PixelRect& edges, bool filled) override;
    void bar(const PixelRect& edges) override;
    void circle(Pixel centre, int radius) override;
    void beginText(const TextGroup& group) override;
    void text(Pixel at, std::string_view bytes, const Font& font, Colour colour) override;
    void endText() override;
    [[nodiscard]] int textWidth(std::string_view bytes, const Font& font) const override;
    [[nodiscard]] FontMetrics metrics(const Font& font) const override;
    [[nodiscard]] int rightEdge() const override;
    void bitmap(Pixel, const Bitmap&, bool) override {}

private:
    void number(int n);
    void colour(Colour colour);
    void pointList(std::string_view element, std::span<const Pixel> points);

    std::string& out_;
    int clipNumber_ = 0;
    int openGroups_ = 0;
    int angle_ = 0;
};

}  // namespace vorpen
