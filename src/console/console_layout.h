// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where the parts of the console's window stand, in pixels of its client area:
// a strip along the top with the directory box and two buttons, the pane with
// the text, and the input line, which follows the text.

#include <cstdint>

#include "console/command_line.h"

namespace vorpen {

inline constexpr int windowWidth = 840, windowHeight = 600;
struct ScreenPlace {
    int x, y;
};
inline constexpr ScreenPlace primaryPlace{100, 30}, secondaryPlace{120, 50};

inline constexpr int stripHeight = 24;
inline constexpr Rectangle directoryBoxPlace{81, 0, 310, 400};  ///< the height with its list open
inline constexpr Rectangle execButtonPlace{392, 1, 70, 22};
inline constexpr Rectangle againButtonPlace{462, 1, 70, 22};

/// The text whose width, with its sixteen characters, tells how many fit into
/// the directory box.
inline constexpr std::string_view boxSampleText = "NB16_characters.";

/// About how many characters fit into the directory box, for the width of the
/// sample text in its font.
[[nodiscard]] int boxCharacters(int sampleWidth);

/// What a line of text may use of a client area: a little less than all where
/// the input line, which keeps off the bottom, would otherwise cut the feet of
/// the line above it.
[[nodiscard]] int usableHeight(int clientHeight, int lineHeight);

/// What the scroll bar shows and the paint rules go by.
struct ScrollState {
    Rectangle rect{0, stripHeight, 0, 0};  ///< the pane
    std::int64_t position = 0;             ///< session number of the top line
    std::int64_t lineCount = 0;
    int rows = 1;  ///< lines that fit
    int lineHeight = 1;
    int charWidth = 1;

    /// Takes the size of the client area.
    void resize(int width, int clientBottom);
    /// The position at which the end of so many lines is in sight.
    [[nodiscard]] std::int64_t endPosition(std::int64_t total) const {
        return total > rows ? total - rows : 0;
    }
    /// The y of a row, from the top of the pane.
    [[nodiscard]] std::int64_t yOfRow(std::int64_t row) const { return lineHeight * row + 1; }
    /// The session number of the line at a y of the client area.
    [[nodiscard]] std::int64_t lineAt(int y) const;
    /// The column at an x.
    [[nodiscard]] int columnAt(int x) const { return (x - 1) / charWidth; }
    /// Columns of a whole line.
    [[nodiscard]] int columns() const { return (rect.width - 1) / charWidth; }
};

/// What can be done with the scroll bar, by the codes that window systems use.
enum class ScrollAction { lineUp, lineDown, pageUp, pageDown, thumbPosition, thumbTrack, top, bottom, end };

/// By how many lines the text moves down for an action; `track` is where the
/// thumb was put.
[[nodiscard]] std::int64_t scrollDelta(const ScrollState& state, ScrollAction action, std::int64_t track);

/// Rows that came into sight, the last one exclusive.
struct RowRange {
    int first = 0, last = 0;
    [[nodiscard]] int count() const { return last - first; }
    bool operator==(const RowRange&) const = default;
};

/// The rows of an exposed area from one y of the client area to another.
[[nodiscard]] RowRange exposedRows(const ScrollState& state, int top, int bottom);

}  // namespace vorpen
