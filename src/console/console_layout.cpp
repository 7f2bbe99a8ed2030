// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/console_layout.h"

#include <algorithm>

namespace vorpen {

int boxCharacters(int sampleWidth) {
    constexpr int allSamples = 310 * 16;
    // The arrow of the box takes the room of four.
    constexpr int arrowCharacters = 4;
    return std::max(allSamples / std::max(sampleWidth, 1) - arrowCharacters, 1);
}

int usableHeight(int clientHeight, int lineHeight) {
    // The input line ends three pixels above the bottom and the text begins one
    // below the top.
    constexpr int needed = 4;
    const int pane = clientHeight - stripHeight - lineHeight;
    const int rest = pane > 0 ? pane % lineHeight : needed;
    return rest < needed ? clientHeight - rest - 1 : clientHeight;
}

void ScrollState::resize(int width, int clientBottom) {
    rect = {0, stripHeight, std::max(width, 0), std::max(clientBottom - lineHeight - stripHeight, 0)};
    rows = std::max(rect.height / lineHeight, 1);
}

std::int64_t ScrollState::lineAt(int y) const {
    const int row = (y - stripHeight) / lineHeight;
    // A pointer above the pane is on no row of it.
    return position + (y < stripHeight ? row - 1 : row);
}

std::int64_t scrollDelta(const ScrollState& state, ScrollAction action, std::int64_t track) {
    switch (action) {
        case ScrollAction::lineUp: return 1;
        case ScrollAction::lineDown: return -1;
        case ScrollAction::thumbPosition:
        case ScrollAction::thumbTrack: return state.position - track;
        case ScrollAction::top: return -state.position;
        case ScrollAction::bottom: return state.lineCount - state.position;
        default: return 0;
    }
}

RowRange exposedRows(const ScrollState& state, int top, int bottom) {
    return {(top - state.rect.y) / state.lineHeight, (bottom - state.rect.y + 1) / state.lineHeight};
}

}  // namespace vorpen
