// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/plotable.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numeric>

#include "plot/figure.h"
#include "plot/frame.h"
#include "plot/frame_painter.h"

namespace vorpen {
namespace {

constexpr Colour curveColour = 0x006400, textColour = 0x640000;
constexpr int curveWidth = 2, fontSize = 20;

PlotStyle curveStyle(std::string_view text) {
    PlotStyle style;
    style.lineColour = curveColour;
    style.width = curveWidth;
    style.parseStyle(text);
    return style;
}

PlotStyle parsedStyle(std::string_view text) {
    PlotStyle style;
    style.parseStyle(text);
    return style;
}

/// A style whose markers are drawn with an unbroken line.
PlotStyle solid(PlotStyle style) {
    style.penStyle = PenStyle::Solid;
    return style;
}

}  // namespace

void BoxRel::draw(FramePainter& painter) {
    if (visible) painter.drawRectangle(true, nullptr, x, y, width, height);
}

// ---- Curves and points ------------------------------------------------------

Curve::Curve(std::vector<double> xData, std::vector<double> yData, std::string_view styleText)
    : xs(std::move(xData)),
      ys(std::move(yData)),
      marker(markerOf(styleText)),
      filled(asksForFill(styleText)) {
    const std::size_t count = std::min(xs.size(), ys.size());
    xs.resize(count);
    ys.resize(count);
    style = curveStyle(styleText);
}

void Curve::findPixels(const Frame& frame, double surfaceResolution) {
    resolution = surfaceResolution;
    frame.toPixels(xs, ys, pixels, resolution);
}

void Curve::draw(FramePainter& painter) {
    findPixels(painter.frame(), painter.resolution());
    drawPixels(painter);
}

void Curve::drawPixels(FramePainter& painter) {
    if (style.drawLine) painter.drawLine(pixels, style);
    painter.drawMarkers(pixels, solid(style), marker.marker, marker.size);
    if (filled) painter.drawPolygon(pixels, style);
}

void Curve::move(double dx, double dy) {
    for (double& value : xs) value += dx;
    for (double& value : ys) value += dy;
}

void Curve::changeStyle(std::string_view text) {
    style.parseStyle(text);
    if (text.empty()) return;
    marker = markerOf(text);
    filled = asksForFill(text);
}

ErrorBars::ErrorBars(std::vector<double> xData, std::vector<double> yData, std::vector<double> errorData)
    : Curve(std::move(xData), std::move(yData), "g1"), errors(std::move(errorData)) {}

void ErrorBars::draw(FramePainter& painter) {
    constexpr int crossSize = 1;
    findPixels(painter.frame(), painter.resolution());
    painter.drawMarkers(pixels, style, 'x', crossSize);
    painter.drawMarkers(pixels, style, '~', marker.size, errors);
}

SinglePoint::SinglePoint(double px, double py, std::string_view styleText)
    : Plotable(px, py), marker(markerOf(styleText)) {
    style = curveStyle(styleText);
}

void SinglePoint::draw(FramePainter& painter) {
    const Pixel at = painter.dot(x, y);
    painter.drawMarkers({&at, 1}, solid(style), marker.marker, marker.size);
}

void SinglePoint::changeStyle(std::string_view text) {
    style.parseStyle(text);
    if (!text.empty()) marker = markerOf(text);
}

BarChart::BarChart(std::vector<double> xData, std::vector<double> yData, std::vector<double> barWidths,
                   std::string_view styleText, double gap) {
    const std::size_t count = std::min(xData.size(), yData.size());
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    // Numbers before NaNs, so that the order is one.
    std::stable_sort(order.begin(), order.end(), [&xData](std::size_t a, std::size_t b) {
        return xData[a] < xData[b] || (std::isnan(xData[b]) && !std::isnan(xData[a]));
    });
    for (const std::size_t k : order) {
        xs.push_back(xData[k]);
        ys.push_back(yData[k]);
        if (!barWidths.empty()) widths.push_back(barWidths[std::min(k, barWidths.size() - 1)]);
    }
    if (count > 1) {
        barWidth = xs[1] - xs[0];
        for (std::size_t k = 2; k < count; ++k) barWidth = std::min(barWidth, xs[k] - xs[k - 1]);
        barWidth -= gap;
    }
    style = parsedStyle(styleText);
}

void BarChart::draw(FramePainter& painter) { painter.drawBars(xs, ys, widths, style, barWidth); }

// ---- Texts ------------------------------------------------------------------------

TextAlignment TextAlignment::of(std::string_view placement) {
    const auto holds = [placement](char letter) {
        return std::any_of(placement.begin(), placement.end(), [letter](char c) {
            return c == letter || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == letter);
        });
    };
    constexpr int centre = 5, row = 4;
    TextAlignment alignment;
    alignment.code = centre + holds('e') - holds('w') - row * holds('n') + row * holds('s');
    alignment.angle = holds('|') ? 90 : 0;
    return alignment;
}

TextLabel::TextLabel(double anchorX, double anchorY, std::string_view labelText, std::string_view placement,
                     std::string_view styleText, bool isRelative)
    : Plotable(anchorX, anchorY),
      text(labelText),
      alignment(TextAlignment::of(placement)),
      relative(isRelative) {
    style.lineColour = textColour;
    style.width = fontSize;
    style.parseStyle(styleText);
}

void TextLabel::draw(FramePainter& painter) {
    painter.drawText(alignment.code, relative, text, style, alignment.angle, x, y);
}

MainLabels::MainLabels()
    : xLabel(50, -10, "", "S", "", true),
      yLabel(-8, 50, "", "W|", "", true),
      title(50, 102, "", "N", "", true) {}

void MainLabels::draw(FramePainter& painter) {
    for (TextLabel* label : {&xLabel, &yLabel, &title})
        if (!label->text.empty()) label->draw(painter);
}

// ---- Shapes and pictures ------------------------------------------------------------

MyCircle::MyCircle(double centreX, double centreY, double circleRadius, std::string_view styleText)
    : Plotable(centreX, centreY), radius(circleRadius), filled(asksForFill(styleText)) {
    style = parsedStyle(styleText);
}

void MyCircle::draw(FramePainter& painter) {
    const Pixel centre = painter.dot(x, y);
    painter.drawCircles({&centre, 1}, style, painter.dotX(x + radius) - centre.x, filled);
}

void MyCircle::changeStyle(std::string_view text) {
    style.parseStyle(text);
    if (!text.empty()) filled = asksForFill(text);
}

Box::Box(double left, double bottom, double w, double h, std::string_view styleText)
    : Plotable(left, bottom), width(w), height(h), filled(asksForFill(styleText)) {
    style = parsedStyle(styleText);
}

void Box::draw(FramePainter& painter) { painter.drawRectangle(filled, &style, x, y, width, height); }

void Box::changeStyle(std::string_view text) {
    style.parseStyle(text);
    if (!text.empty()) filled = asksForFill(text);
}

void MyBitmap::draw(FramePainter& painter) {
    painter.surface().bitmap(painter.dot(x, y), picture, transparent);
}

// ---- Controls -------------------------------------------------------------------------

PlotableButton::PlotableButton(ControlKind controlKind, std::string_view buttonText)
    : control(controlKind), text(buttonText) {
    style.parseStyle(controlKind == ControlKind::Label ? "16" : "12");
}

PixelRect PlotableButton::place(const Frame& frame) const {
    constexpr int defaultSize = 20;
    const Pixel at = relative ? frame.percentToPixels(x, y) : frame.pixel(x, y);
    const Pixel zero = relative ? frame.percentToPixels(0, 0) : frame.pixel(0, 0);
    const Pixel far = relative ? frame.percentToPixels(width, height) : frame.pixel(width, height);
    const int w = width == 0 ? defaultSize : far.x - zero.x;
    const int h = height == 0 ? defaultSize : zero.y - far.y;
    return {at.x, at.y, at.x + w, at.y + h};
}

void PlotableButton::draw(FramePainter& painter) {
    if (FigureView* view = painter.frame().figure().view()) view->showControl(*this, place(painter.frame()));
}

}  // namespace vorpen
