// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/figure_list.h"

#include <algorithm>

#include "base/errors.h"

namespace vorpen {

Figure& FigureList::requireFigure() const {
    Require(current_ != nullptr, "a figure is required but none was found");
    return *current_;
}

Figure* FigureList::find(int number) const {
    const auto found = std::find_if(figures_.begin(), figures_.end(),
                                    [number](const auto& figure) { return figure->number() == number; });
    return found == figures_.end() ? nullptr : found->get();
}

int FigureList::smallestFreeNumber() const {
    int number = 1;
    while (number <= maxNumber && find(number) != nullptr) ++number;
    return number;
}

Figure& FigureList::make(int number) {
    auto figure = std::make_unique<Figure>(number);
    if (desktop_ != nullptr) {
        auto window = desktop_->openWindow(*figure, "Figure " + std::to_string(number));
        Require(window != nullptr, "Graphics or memory problem: could not open a window");
        figure->setView(std::move(window));
    }
    figures_.push_back(std::move(figure));
    return *figures_.back();
}

int FigureList::selectFigure(int number) {
    Require(number >= -1 && number <= maxNumber, "number must be between 0 and 128", "figure");
    if (number == -1 && !figures_.empty())
        number = current_ != nullptr ? current_->number() : figures_.front()->number();
    if (number <= 0) number = smallestFreeNumber();
    Figure* figure = find(number);
    current_ = figure != nullptr ? figure : &make(number);
    current_->bringToTop();
    return number;
}

Figure& FigureList::openFigure(int number) {
    selectFigure(number);
    return *current_;
}

int FigureList::closeFigure(int number) {
    if (number < 1) {
        current_ = nullptr;
        figures_.clear();
        return number;
    }
    const auto closed = std::find_if(figures_.begin(), figures_.end(),
                                     [number](const auto& figure) { return figure->number() == number; });
    if (closed == figures_.end()) return 0;
    if (closed->get() == current_) current_ = nullptr;
    figures_.erase(closed);
    return number;
}

int FigureList::screenWidth() const { return desktop_ ? desktop_->screenWidth() : defaultScreenWidth; }
int FigureList::screenHeight() const { return desktop_ ? desktop_->screenHeight() : defaultScreenHeight; }

void FigureList::reset() {
    current_ = nullptr;
    figures_.clear();
    record = {};
    redrawOnAdd = true;
}

FigureList& figureList() {
    static FigureList list;
    return list;
}

}  // namespace vorpen
