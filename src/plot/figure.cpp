// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/figure.h"

#include <algorithm>
#include <cmath>

#include "base/encoding.h"
#include "base/errors.h"
#include "base/replace_file.h"
#include "plot/figure_list.h"
#include "plot/svg_surface.h"

namespace vorpen {
namespace {

/// Where a new figure stands on the screen.
constexpr int startLeft = 600, startTop = 16;

/// A window system has 16 bits with a sign for them.
constexpr int maxControlId = 32767;

/// The frame's part of an item id has 16 bits.
constexpr int maxFrames = 32767;

/// What a figure keeps when its background is not to be changed.
constexpr int keepBackground = -2;

int toScreen(double pixels) {
    constexpr double farthest = 32767;
    return std::isnan(pixels) ? 0 : static_cast<int>(std::clamp(pixels, -farthest, farthest));
}

}  // namespace

Figure::Figure(int number)
    : number_(number),
      place_{startLeft, startTop, startLeft + defaultClient.right, startTop + defaultClient.bottom} {
    addDefaultFrame();
}

Figure::~Figure() = default;

PixelRect Figure::client() const { return view_ ? view_->client() : defaultClient; }

// ---- Frames -------------------------------------------------------------------------

void Figure::addDefaultFrame() {
    frames_.push_back(std::make_unique<Frame>(*this, frameCount()));
    currentFrame_ = frameCount() - 1;
}

bool Figure::setCurrentFrame(int index) {
    if (index < 0 || index >= frameCount()) return false;
    currentFrame_ = index;
    return true;
}

int Figure::selectFrame(const FractionRect& box) {
    for (int k = 0; k < frameCount(); ++k)
        if (frame(k).box() == box) return currentFrame_ = k;
    Require(frameCount() < maxFrames, "too many frames in the figure");
    if (frameCount() == 1 && frame(0).box() == wholeBox) {
        frame(0).wipeFrame(0);
        frames_.clear();
    }
    frames_.push_back(std::make_unique<Frame>(*this, frameCount(), box));
    currentFrame_ = frameCount() - 1;
    drawAll();
    return currentFrame_;
}

bool Figure::makeSubplots(int index, Colour background) {
    if (index >= frameCount()) return false;
    if (index >= 0) {
        currentFrame_ = index;
    } else {
        if (frameCount() != 1) {
            for (const auto& old : frames_) old->wipeFrame(0);
            frames_.clear();
            addDefaultFrame();
        }
        currentFrame_ = 0;
    }
    currentFrame().wipeFrame(1);
    if (index != keepBackground) currentFrame().background = background;
    drawAll();
    return true;
}

Frame& Figure::idToFrame(std::int32_t id) const {
    const int index = ItemId::of(id).frame;
    Require(index >= 0 && index < frameCount(), "id not recognized: invalid frame");
    return frame(index);
}

int Figure::frameUnderMouse(Pixel at) const {
    for (int k = 0; k < frameCount(); ++k)
        if (frame(k).outline().frame.contains(at)) return k;
    return 0;
}

// ---- Window and drawing ---------------------------------------------------------------

void Figure::setView(std::unique_ptr<FigureView> view) {
    view_ = std::move(view);
    resized();
}

void Figure::bringToTop() {
    if (view_) view_->bringToTop();
}

void Figure::resized() {
    for (const auto& frame : frames_) frame->rescale();
    drawAll();
}

void Figure::drawAll() noexcept {
    if (paused || !view_) return;
    try {
        view_->erase();
        for (const auto& frame : frames_) frame->redraw();
    } catch (...) {
        // A window that asks to be painted can do nothing about a failure.
    }
}

void Figure::pumpPaint() {
    if (!view_) return;
    paused = !paused;
    view_->dispatchWaiting();
    paused = !paused;
}

void Figure::position(double x, double y, double w, double h) {
    const double screenWidth = figureList().screenWidth(), screenHeight = figureList().screenHeight();
    const bool fractionsX = x <= 1 && w <= 1, fractionsY = y <= 1 && h <= 1;
    const double unitX = fractionsX ? screenWidth : 1, unitY = fractionsY ? screenHeight : 1;
    const double left = x * unitX, top = screenHeight - y * unitY - h * unitY;
    place_ = {toScreen(left), toScreen(top), toScreen(left + w * unitX), toScreen(top + h * unitY)};
    if (view_) view_->setScreenPlace(place_);
}

std::vector<double> Figure::placeOnScreen() const {
    const PixelRect place = view_ ? view_->screenPlace() : place_;
    const int bottom = figureList().screenHeight();
    return {static_cast<double>(place.left), static_cast<double>(place.right),
            static_cast<double>(bottom - place.bottom), static_cast<double>(bottom - place.top)};
}

void Figure::setMenus(const std::vector<Menu>& menus) {
    if (view_) view_->setMenus(menus);
}

int Figure::nextControlId() {
    Require(lastControlId_ < maxControlId,
            "button creation failed; likely cause is a graphics mix-up of some kind");
    return ++lastControlId_;
}

void Figure::removeControl(int controlId) {
    if (controls.erase(controlId) > 0 && view_) view_->removeControl(controlId);
}

void Figure::writeSvg(std::string& out) {
    const PixelRect area = client();
    SvgSurface surface(out, area.width(), area.height());
    for (const auto& frame : frames_) frame->drawOn(surface, false);
    surface.finish();
}

void printFigure(Figure& figure, const std::string& path, const std::string& name) {
    std::string text;
    figure.writeSvg(text);
    bool opened = false;
    const bool written = replaceFile(toUtf8(path), [&](std::ostream& out) {
        opened = true;
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
    });
    if (written) return;
    Require(opened, "cannot open " + name, "print");
    raiseRuntimeError("writing to figure file failed", "print");
}

}  // namespace vorpen
