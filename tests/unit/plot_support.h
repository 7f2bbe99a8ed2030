// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Surfaces and windows for tests of figures: a surface that records in words
// what is drawn on it, and a window of any size that has one.

#include <limits>
#include <string>
#include <vector>

#include "plot/drawing_surface.h"
#include "plot/figure.h"
#include "plot/figure_list.h"
#include "plot/svg_surface.h"

namespace vorpen::test {

/// A line of text for each thing that is drawn. Each character of a text is
/// half as wide as its font is high.
class RecordingSurface final : public DrawingSurface {
public:
    std::vector<std::string> calls;
    int edge = std::numeric_limits<int>::max();
    double dots = 1;  ///< to a pixel

    /// The calls as one text, and forgets them.
    std::string take() {
        std::string all;
        for (const std::string& call : calls) all += (all.empty() ? "" : "; ") + call;
        calls.clear();
        return all;
    }

    [[nodiscard]] double resolution() const override { return dots; }
    void beginFrame(const FrameOutline& outline) override { add("frame " + std::to_string(outline.index)); }
    void endFrame() override { add("end frame"); }
    void resumeFrame(const FrameOutline& outline) override { add("resume " + std::to_string(outline.index)); }
    void setClipping(bool on) override { add(on ? "clip" : "unclip"); }
    void beginStroke(const PlotStyle& style) override { add(pen("stroke", style)); }
    void beginStrokeAndFill(const PlotStyle& style) override { add(pen("fill", style)); }
    void endGroup(GroupEnd end) override {
        add(end == GroupEnd::Line ? "end" : end == GroupEnd::Bare ? "end bare" : "left open");
    }
    void polyline(std::span<const Pixel> points) override { add("line" + places(points)); }
    void polygon(std::span<const Pixel> points) override { add("polygon" + places(points)); }
    void box(const PixelRect& edges, bool filled) override {
        add((filled ? "filled box" : "box") + edgesOf(edges));
    }
    void bar(const PixelRect& edges) override { add("bar" + edgesOf(edges)); }
    void circle(Pixel centre, int radius) override {
        add("circle" + places({&centre, 1}) + " " + std::to_string(radius));
    }
    void beginText(const TextGroup& group) override {
        add("text " + std::to_string(static_cast<int>(group.anchor)) +
            std::to_string(static_cast<int>(group.baseline)) + " " + std::to_string(group.angle) +
            (group.inverting ? " inverting" : ""));
    }
    void text(Pixel at, std::string_view bytes, const Font& font, Colour colour) override {
        add(std::string(bytes) + places({&at, 1}) + " " + std::to_string(font.height) +
            (font.face == Face::Symbol ? "$" : "") + (font.weight > 400 ? "*" : "") +
            (colour ? " colour " + std::to_string(colour) : ""));
    }
    void endText() override { add("end text"); }
    [[nodiscard]] int textWidth(std::string_view bytes, const Font& font) const override {
        return static_cast<int>(bytes.size()) * font.height / 2;
    }
    [[nodiscard]] FontMetrics metrics(const Font& font) const override {
        return {font.height / 2, font.height};
    }
    [[nodiscard]] int rightEdge() const override { return edge; }
    void bitmap(Pixel at, const Bitmap& picture, bool transparent) override {
        add("bitmap" + places({&at, 1}) + " " + std::to_string(picture.width) +
            (transparent ? " masked" : ""));
    }

private:
    void add(std::string call) { calls.push_back(std::move(call)); }
    static std::string pen(const char* what, const PlotStyle& style) {
        return std::string(what) + (style.xorMode ? " inverting" : "");
    }
    static std::string places(std::span<const Pixel> points) {
        std::string text;
        for (const auto [x, y] : points) text += " " + std::to_string(x) + "," + std::to_string(y);
        return text;
    }
    static std::string edgesOf(const PixelRect& r) {
        return places(std::vector<Pixel>{{r.left, r.top}, {r.right, r.bottom}});
    }
};

/// A window of a test: it has a surface, and counts what it is asked.
class RecordingView final : public FigureView {
public:
    RecordingSurface drawn;
    PixelRect area = defaultClient, place{0, 0, 600, 450};
    int presented = 0, erased = 0, raised = 0, served = 0;
    std::vector<std::string> controls;
    std::vector<Menu> menus;
    bool surfaceFails = false;

    [[nodiscard]] PixelRect client() const override { return area; }
    DrawingSurface& surface() override {
        if (surfaceFails) throw 1;
        return drawn;
    }
    void present(const PixelRect&) override { ++presented; }
    void erase() override { ++erased; }
    void bringToTop() override { ++raised; }
    [[nodiscard]] PixelRect screenPlace() const override { return place; }
    void setScreenPlace(const PixelRect& newPlace) override { place = newPlace; }
    void dispatchWaiting() override { ++served; }
    void showControl(const PlotableButton& button, const PixelRect& at) override {
        controls.push_back(button.text + " " + std::to_string(at.left) + "," + std::to_string(at.top) + " " +
                           std::to_string(at.width()) + "x" + std::to_string(at.height()));
    }
    void removeControl(int controlId) override { controls.push_back("removed " + std::to_string(controlId)); }
    void setMenus(const std::vector<Menu>& newMenus) override { menus = newMenus; }
};

}  // namespace vorpen::test
