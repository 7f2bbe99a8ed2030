// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Lays out a marked-up line on a surface, run by run: each run in its font and
// colour, raised or lowered, and a superscript directly behind a subscript
// above it. On a surface with an edge a text that runs over it is marked with
// a red sign of three dots.

#include <string_view>

#include "plot/drawing_surface.h"

namespace vorpen {

class TextWriter {
public:
    explicit TextWriter(Face face, int size = defaultSize, Colour colour = 0)
        : face_(face), size_(size), colour_(colour) {}

    static constexpr int defaultSize = 16;

    [[nodiscard]] int size() const { return size_; }
    void setSize(int pixels) { size_ = pixels; }
    /// The colour of text without a mark.
    void setColour(Colour colour) { colour_ = colour; }
    /// Of the line, in degrees anticlockwise.
    void setAngle(int degrees) { angle_ = degrees; }
    /// The y that positions are counted from.
    void setTop(int top) { top_ = top; }

    /// The font of a run with a style code.
    [[nodiscard]] Font font(char code = '.') const { return selectFont(face_, size_, code, angle_ * 10); }

    /// Draws a line and answers the number of its characters without marks. It
    /// has to be called inside a text group.
    std::size_t write(DrawingSurface& surface, int x, int y, std::string_view text) const;

private:
    std::size_t writePlain(DrawingSurface& surface, Pixel at, std::string_view text) const;
    void overflowMark(DrawingSurface& surface, Pixel at) const;

    Face face_;
    int size_;
    Colour colour_;
    int angle_ = 0;
    int top_ = 0;
};

}  // namespace vorpen
