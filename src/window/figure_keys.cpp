// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/figure_keys.h"

#include <QtGui/QKeyEvent>
#include <algorithm>
#include <array>

#include "window/encoding.h"

namespace vorpen {
namespace {

struct NamedKey {
    int key;
    int code;
};

// clang-format off
constexpr std::array namedKeys{
    NamedKey{Qt::Key_Backspace, 8},   NamedKey{Qt::Key_Tab, 9},        NamedKey{Qt::Key_Backtab, 9},
    NamedKey{Qt::Key_Clear, 12},      NamedKey{Qt::Key_Return, 13},    NamedKey{Qt::Key_Enter, 13},
    NamedKey{Qt::Key_Shift, 16},      NamedKey{Qt::Key_Control, 17},   NamedKey{Qt::Key_Pause, 19},
    NamedKey{Qt::Key_CapsLock, 20},   NamedKey{Qt::Key_Escape, 27},    NamedKey{Qt::Key_Space, 32},
    NamedKey{Qt::Key_PageUp, 33},     NamedKey{Qt::Key_PageDown, 34},  NamedKey{Qt::Key_End, 35},
    NamedKey{Qt::Key_Home, 36},       NamedKey{Qt::Key_Left, 37},      NamedKey{Qt::Key_Up, 38},
    NamedKey{Qt::Key_Right, 39},      NamedKey{Qt::Key_Down, 40},      NamedKey{Qt::Key_Print, 44},
    NamedKey{Qt::Key_Insert, 45},     NamedKey{Qt::Key_Delete, 46},    NamedKey{Qt::Key_Meta, 91},
    NamedKey{Qt::Key_Menu, 93},       NamedKey{Qt::Key_NumLock, 144},  NamedKey{Qt::Key_ScrollLock, 145},
};
// clang-format on

constexpr int firstFunctionKey = 112, functionKeys = 24;

int codeOf(int key) {
    if (key >= Qt::Key_F1 && key < Qt::Key_F1 + functionKeys) return firstFunctionKey + key - Qt::Key_F1;
    const bool isLetterOrDigit =
        (key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9);
    if (isLetterOrDigit) return key;
    const auto found = std::find_if(namedKeys.begin(), namedKeys.end(),
                                    [key](const NamedKey& named) { return named.key == key; });
    return found == namedKeys.end() ? 0 : found->code;
}

}  // namespace

FigureKey figureKey(const QKeyEvent& event) {
    FigureKey result;
    // The key Delete is no character, though some systems say so.
    if (event.key() != Qt::Key_Delete) result.characters = fromQString(event.text());
    if (result.characters.empty()) result.code = codeOf(event.key());
    return result;
}

}  // namespace vorpen
