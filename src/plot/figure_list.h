// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// All figures of the program by number, which one is current, and the settings
// that plot commands share. Figures outlive the input that made them, so this
// is the one object of the program that holds them; tests reset it.

#include <memory>
#include <vector>

#include "plot/figure.h"
#include "plot/figure_view.h"

namespace vorpen {

/// What plot commands remember from one call to the next, to give curves over
/// one x different colours.
struct PlotRecord {
    double firstX = 0, lastX = 0;
    int repeats = 0;
};

class FigureList {
public:
    static constexpr int maxNumber = 128;

    PlotRecord record;
    bool redrawOnAdd = true;  ///< a text shows its whole frame anew when it is added

    /// The active figure, null when there is none.
    [[nodiscard]] Figure* currentFigure() const { return current_; }
    void setCurrentFigure(Figure* figure) { current_ = figure; }
    /// The active figure, or a failure "a figure is required but none was
    /// found".
    [[nodiscard]] Figure& requireFigure() const;

    /// Makes a figure current and answers its number: -1 the current one, or
    /// the first there is, 0 a new one with the smallest free number, else the
    /// figure of that number, made when there is none. Fails, under "figure",
    /// with "number must be between 0 and 128".
    int selectFigure(int number);
    /// The figure that selectFigure(number) makes current.
    Figure& openFigure(int number = -1);
    /// Closes the figure of a number, all when it is below 1. Answers the
    /// number, or 0 when there is no such figure.
    int closeFigure(int number);
    /// The figure of a number; null without one.
    [[nodiscard]] Figure* find(int number) const;
    /// In the order in which they were made.
    [[nodiscard]] const std::vector<std::unique_ptr<Figure>>& figures() const { return figures_; }

    /// Where windows come from; null for a program without windows. Not owned.
    [[nodiscard]] FigureDesktop* desktop() const { return desktop_; }
    void setDesktop(FigureDesktop* desktop) { desktop_ = desktop; }
    [[nodiscard]] int screenWidth() const;
    [[nodiscard]] int screenHeight() const;

    /// Closes all figures and forgets all settings but the desktop.
    void reset();

private:
    [[nodiscard]] int smallestFreeNumber() const;
    Figure& make(int number);

    std::vector<std::unique_ptr<Figure>> figures_;
    Figure* current_ = nullptr;
    FigureDesktop* desktop_ = nullptr;
};

[[nodiscard]] FigureList& figureList();

}  // namespace vorpen
