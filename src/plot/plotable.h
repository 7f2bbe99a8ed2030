// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The items of a frame: curves, points, bars, texts, circles, boxes, pictures,
// axes and controls. A frame owns them and draws them in their order. What
// they have in common is an anchor, a style and being visible; the rest is the
// matter of each class.

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "plot/bitmap.h"
#include "plot/drawing_surface.h"
#include "plot/style.h"

namespace vorpen {

class Frame;
class FramePainter;

/// By which frames tell items apart. `Other` cannot be given new data.
enum class PlotableKind : int {
    Other = 0,
    Curve = 1,
    Text = 2,
    Labels = 3,
    Point = 4,
    Circle = 5,
    Box = 6,
    Button = 7,
};

class Plotable {
public:
    double x = 0, y = 0;  ///< the anchor; 0 for items of several points
    PlotStyle style;
    bool visible = true;
    bool dragable = false;
    bool isCursor = false;  ///< belongs to the window and not to the figure, so no file has it

    Plotable() = default;
    Plotable(double anchorX, double anchorY) : x(anchorX), y(anchorY) {}
    virtual ~Plotable() = default;
    Plotable(const Plotable&) = delete;
    Plotable& operator=(const Plotable&) = delete;

    virtual void draw(FramePainter& painter) = 0;
    virtual void move(double dx, double dy) {
        x += dx;
        y += dy;
    }
    [[nodiscard]] virtual PlotableKind kind() const { return PlotableKind::Other; }
    /// What a script learns of the item.
    [[nodiscard]] virtual std::vector<double> value() const { return {y}; }
    /// Reads a style string as this kind of item does.
    virtual void changeStyle(std::string_view text) { style.parseStyle(text); }
};

/// The outline of the plot area, in fractions of the frame's box.
class BoxRel final : public Plotable {
public:
    BoxRel(double left, double bottom, double w, double h) : Plotable(left, bottom), width(w), height(h) {}
    double width, height;
    void draw(FramePainter& painter) override;
};

/// Points joined by a line, marked, or filled, as the style says.
class Curve : public Plotable {
public:
    Curve(std::vector<double> xData, std::vector<double> yData, std::string_view styleText);

    std::vector<double> xs, ys;
    std::vector<Pixel> pixels;  ///< dots of the surface that it was drawn on last
    double resolution = 1;      ///< of that surface
    MarkerStyle marker;
    bool filled = false;

    void draw(FramePainter& painter) override;
    /// Says in `pixels` where the points are.
    void findPixels(const Frame& frame, double surfaceResolution);
    /// Draws points that are in `pixels` already.
    void drawPixels(FramePainter& painter);
    void move(double dx, double dy) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Curve; }
    void changeStyle(std::string_view text) override;
};

/// A cross and a vertical bar with caps at each point.
class ErrorBars final : public Curve {
public:
    /// `errorData` has one element for all points, or one for each.
    ErrorBars(std::vector<double> xData, std::vector<double> yData, std::vector<double> errorData);
    std::vector<double> errors;
    void draw(FramePainter& painter) override;
};

class SinglePoint final : public Plotable {
public:
    SinglePoint(double px, double py, std::string_view styleText);
    MarkerStyle marker;
    void draw(FramePainter& painter) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Point; }
    void changeStyle(std::string_view text) override;
};

class BarChart final : public Plotable {
public:
    /// The bars are brought into the order of x. `barWidths` is empty, then
    /// bars are as wide as the smallest distance of two less `gap`; or has one
    /// element for all or one for each bar.
    BarChart(std::vector<double> xData, std::vector<double> yData, std::vector<double> barWidths,
             std::string_view styleText, double gap = 0);
    std::vector<double> xs, ys;
    double barWidth = 1;
    std::vector<double> widths;  ///< one for each bar, or empty
    void draw(FramePainter& painter) override;
};

/// How a placement string such as "NE" or "W|" sets a text about its anchor.
struct TextAlignment {
    int code = 5;   ///< TextAnchor in the low two bits, TextBaseline above
    int angle = 0;  ///< degrees, 0 or 90

    static TextAlignment of(std::string_view placement);
    bool operator==(const TextAlignment&) const = default;
};

class TextLabel final : public Plotable {
public:
    TextLabel(double anchorX, double anchorY, std::string_view labelText, std::string_view placement,
              std::string_view styleText, bool isRelative = false);
    std::string text;
    TextAlignment alignment;
    bool relative;  ///< the anchor is in percent of the axes
    void draw(FramePainter& painter) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Text; }
};

/// The labels of both axes and the title.
class MainLabels final : public Plotable {
public:
    MainLabels();
    TextLabel xLabel, yLabel, title;
    /// The label called `x`, `y` or `t`.
    [[nodiscard]] TextLabel& label(char which) {
        return which == 'x' ? xLabel : which == 'y' ? yLabel : title;
    }
    void draw(FramePainter& painter) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Labels; }
};

/// Round on the screen whatever the scales; the radius is in units of x.
class MyCircle final : public Plotable {
public:
    MyCircle(double centreX, double centreY, double circleRadius, std::string_view styleText);
    double radius;
    bool filled;
    void draw(FramePainter& painter) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Circle; }
    void changeStyle(std::string_view text) override;
};

/// A rectangle in data units.
class Box final : public Plotable {
public:
    Box(double left, double bottom, double w, double h, std::string_view styleText);
    double width, height;
    bool filled;
    void draw(FramePainter& painter) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Box; }
    void changeStyle(std::string_view text) override;
};

class MyBitmap final : public Plotable {
public:
    MyBitmap(double left, double top, Bitmap content, bool isTransparent)
        : Plotable(left, top), picture(std::move(content)), transparent(isTransparent) {}
    Bitmap picture;
    bool transparent;
    void draw(FramePainter& painter) override;
};

/// A row of parallel lines: ticks or a grid. The anchor is where the first
/// line starts; positions along the axis go on from there.
class Raster final : public Plotable {
public:
    int count = 0;
    double length = 0;           ///< of each line
    bool lengthInPixels = true;  ///< else in data units
    bool horizontal = false;     ///< the lines run along x, and the row along y
    bool additive = true;        ///< positions add the step, else they multiply by it
    double step = 0;

    Raster();
    Raster(const Raster& other);
    Raster& operator=(const Raster&) = delete;
    void draw(FramePainter& painter) override;
    /// Where the lines stand along the axis.
    [[nodiscard]] std::vector<double> positions() const;
};

/// What an axis shows, as bits.
enum AxisFlags : int {
    TICKS_NEAR = 4,
    TICKS_FAR = 8,
    LINE_AT_ZERO = 16,
    TICK_LABELS = 32,
    TICKS_AT_ZERO = 64,
    AREA_IS_FRAME = 1024,
    AXIS_DEFAULT = 63,
};

class AxisTicks final : public Plotable {
public:
    explicit AxisTicks(int x = AXIS_DEFAULT, int y = AXIS_DEFAULT) : xFlags(x), yFlags(y) {}
    int xFlags, yFlags;
    void draw(FramePainter& painter) override;
};

/// What a control is, by its letter.
enum class ControlKind : char {
    PushButton = 'b',
    CheckBox = 'c',
    EditField = 'e',
    Label = 'h',
    RadioButton = 'r',
    ThreeState = 't',
};

/// A control in a figure's window. The item knows where it is and what state
/// it has; a window shows a control of its own for it and reports changes.
class PlotableButton final : public Plotable {
public:
    PlotableButton(ControlKind controlKind, std::string_view buttonText);
    ControlKind control;
    std::string text;
    bool relative = false;         ///< place and size are in percent of the axes
    double width = 0, height = 0;  ///< 0 for the default of 20 pixels
    int state = 0;                 ///< 0, 1, or 2 for neither
    int controlId = 0;
    void draw(FramePainter& painter) override;
    [[nodiscard]] PlotableKind kind() const override { return PlotableKind::Button; }
    [[nodiscard]] std::vector<double> value() const override { return {static_cast<double>(state)}; }
    /// Its place in the client area of the figure.
    [[nodiscard]] PixelRect place(const Frame& frame) const;
};

}  // namespace vorpen
