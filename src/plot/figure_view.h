// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What figures ask of the windows that show them. A figure is complete without
// one: it then measures 570 by 406 pixels and is drawn only when it is written
// to a file. The desktop gives the list of figures a FigureDesktop, which makes
// a FigureView for each figure.

#include <memory>
#include <string>
#include <vector>

#include "plot/drawing_surface.h"

namespace vorpen {

class Figure;
class PlotableButton;

/// The client area of a figure without a window.
inline constexpr PixelRect defaultClient{0, 0, 570, 406};
/// The screen where there is none.
inline constexpr int defaultScreenWidth = 1280, defaultScreenHeight = 1024;

struct MenuItem {
    std::string label;
    int commandIndex = 0;  ///< of the figure's menuCommands
};

struct Menu {
    std::string heading;
    std::vector<MenuItem> items;
};

class FigureView {
public:
    virtual ~FigureView() = default;

    [[nodiscard]] virtual PixelRect client() const = 0;
    /// What is drawn on it appears with present().
    virtual DrawingSurface& surface() = 0;
    virtual void present(const PixelRect& changed) = 0;
    /// Erases the client area in white.
    virtual void erase() = 0;
    virtual void bringToTop() = 0;
    /// Its place on the screen, y downward.
    [[nodiscard]] virtual PixelRect screenPlace() const = 0;
    virtual void setScreenPlace(const PixelRect& place) = 0;
    /// Serves the events that wait for this window.
    virtual void dispatchWaiting() = 0;
    /// Shows, moves or changes the control of an item.
    virtual void showControl(const PlotableButton& button, const PixelRect& place) = 0;
    virtual void removeControl(int controlId) = 0;
    virtual void setMenus(const std::vector<Menu>& menus) = 0;
};

class FigureDesktop {
public:
    virtual ~FigureDesktop() = default;

    /// A window with a title for a figure; null when none can be opened.
    virtual std::unique_ptr<FigureView> openWindow(Figure& figure, const std::string& title) = 0;
    [[nodiscard]] virtual int screenWidth() const = 0;
    [[nodiscard]] virtual int screenHeight() const = 0;
    [[nodiscard]] virtual PixelRect consolePlace() const = 0;
};

}  // namespace vorpen
