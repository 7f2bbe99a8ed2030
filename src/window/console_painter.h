// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Draws the console's text: marked-up lines run by run, each in its font and
// colour. The face is one of fixed width, and each of its characters takes a
// whole number of pixels, so that a column is a place on the screen.

#include <QtGui/QFont>
#include <QtGui/QRgb>
#include <map>
#include <string_view>

#include "console/command_line.h"

class QPainter;

namespace vorpen {

class ConsolePainter {
public:
    /// Takes the height of a line of text, in pixels.
    void setSize(int pixels);
    [[nodiscard]] CellMetrics metrics() const { return metrics_; }

    /// Draws a line with its upper left corner at a place, over a colour, and
    /// marks it where it runs over the right edge.
    void drawMarkedUp(QPainter& painter, int x, int y, std::string_view text, Colour background, int right);
    /// Draws a text without marks, as much of it as can be seen.
    void drawPlain(QPainter& painter, int x, int y, std::string_view text, Colour colour, int right);

private:
    struct Face {
        QFont font;
        int ascent = 0;
    };

    const Face& faceOf(char code);
    int drawRun(QPainter& painter, int x, int y, std::string_view text, char code, Colour colour);
    void drawOverflowMark(QPainter& painter, int y, int right);

    int size_ = 0;
    CellMetrics metrics_;
    std::map<char, Face> faces_;  ///< by style code, for the present size
};

/// A colour of the program as the window library has it.
[[nodiscard]] QRgb rgbOf(Colour colour);

}  // namespace vorpen
