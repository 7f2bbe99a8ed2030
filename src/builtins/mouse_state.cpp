// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/mouse_state.h"

#include "builtins/engine_context.h"
#include "plot/figure_list.h"

namespace vorpen {
namespace {

/// Painting held back while it lives. An event may close the figure, so it is
/// looked for again at the end.
class PaintPause {
public:
    PaintPause() {
        if (Figure* figure = figureList().currentFigure()) {
            number_ = figure->number();
            figure->paused = !figure->paused;
        }
    }
    ~PaintPause() {
        if (Figure* figure = number_ > 0 ? figureList().find(number_) : nullptr)
            figure->paused = !figure->paused;
    }
    PaintPause(const PaintPause&) = delete;
    PaintPause& operator=(const PaintPause&) = delete;

private:
    int number_ = 0;
};

}  // namespace

MouseState& mouseState() {
    static MouseState state;
    return state;
}

void serveFigureEvents() {
    const PaintPause pause;
    engineContext().surroundings().pumpEvents();
}

}  // namespace vorpen
