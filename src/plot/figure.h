// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A figure is one plot window: its frames, of which one is current, its
// controls and menus. It is written to a file by the same walk that draws it.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "plot/figure_view.h"
#include "plot/frame.h"

namespace vorpen {

class Figure {
public:
    /// A figure with one frame of default size and no window.
    explicit Figure(int number);
    ~Figure();
    Figure(const Figure&) = delete;
    Figure& operator=(const Figure&) = delete;

    std::map<int, std::int32_t> controls;   ///< from the id of a control to that of its item
    std::vector<std::string> menuCommands;  ///< what each menu item types into the console
    bool paused = false;                    ///< painting is held back
    bool hold = false;

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] PixelRect client() const;

    // ---- Frames ----

    [[nodiscard]] int frameCount() const { return static_cast<int>(frames_.size()); }
    /// A frame that must exist.
    [[nodiscard]] Frame& frame(int index) const { return *frames_[static_cast<std::size_t>(index)]; }
    [[nodiscard]] int currentIndex() const { return currentFrame_; }
    [[nodiscard]] Frame& currentFrame() const { return frame(currentFrame_); }
    /// An index outside the frames changes nothing and answers false.
    bool setCurrentFrame(int index);

    /// Makes the frame with exactly this box current, or a new one. The frame
    /// that fills the whole figure alone gives way to the new one. Answers the
    /// index.
    int selectFrame(const FractionRect& box);
    /// Clears a frame down to nothing but its box, gives it a background and
    /// makes it current; false when there is no such frame. An index below 0
    /// clears the figure down to one frame; -2 keeps its background.
    bool makeSubplots(int index, Colour background);
    /// The frame of an item id; fails with "id not recognized: invalid frame".
    [[nodiscard]] Frame& idToFrame(std::int32_t id) const;
    /// Index of the frame that holds a pixel, the first one when none does.
    [[nodiscard]] int frameUnderMouse(Pixel at) const;

    // ---- Window and drawing ----

    [[nodiscard]] FigureView* view() const { return view_.get(); }
    void setView(std::unique_ptr<FigureView> view);
    void bringToTop();
    /// The window has a new size.
    void resized();
    /// Draws everything anew, unless paused. Nothing is thrown: it answers the
    /// window's wish to be painted.
    void drawAll() noexcept;
    /// Serves the window's events with painting held back.
    void pumpPaint();
    /// Places the window. x and w are fractions of the screen when both are at
    /// most 1, else pixels; y and h alike, y from the bottom of the screen.
    void position(double x, double y, double w, double h);
    /// (left, right, bottom, top) on the screen, measured from its bottom.
    [[nodiscard]] std::vector<double> placeOnScreen() const;
    void setMenus(const std::vector<Menu>& menus);
    /// The id for a new control; fails when there are too many.
    int nextControlId();
    void removeControl(int controlId);

    /// Appends the whole figure as SVG text.
    void writeSvg(std::string& out);

private:
    void addDefaultFrame();

    int number_;
    std::vector<std::unique_ptr<Frame>> frames_;
    int currentFrame_ = 0;
    int lastControlId_ = 0;
    PixelRect place_;  ///< on the screen, for a figure without a window
    std::unique_ptr<FigureView> view_;
};

/// Writes a figure into a file at a complete path; `name` is how the user
/// called it. Fails, under "print", with "cannot open " and the name, or
/// "writing to figure file failed".
void printFigure(Figure& figure, const std::string& path, const std::string& name);

}  // namespace vorpen
