// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/figure_waiting.h"

#include "base/interrupt.h"
#include "builtins/engine_context.h"
#include "plot/figure_list.h"
#include "plot/interaction.h"

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
        if (Figure* figure = figureList().find(number_)) figure->paused = !figure->paused;
    }
    PaintPause(const PaintPause&) = delete;
    PaintPause& operator=(const PaintPause&) = delete;

private:
    int number_ = 0;
};

}  // namespace

void serveFigureEvents() {
    const PaintPause pause;
    engineContext().surroundings().pumpEvents();
}

bool waitForPress(int figure) {
    const unsigned before = interaction().mouse.leftPresses;
    const auto canCome = [figure] { return figure == 0 || figureList().find(figure) != nullptr; };
    while (interaction().mouse.leftPresses == before && canCome()) {
        checkInterrupt();
        if (!engineContext().surroundings().waitForEvent()) return false;
    }
    return true;
}

}  // namespace vorpen
