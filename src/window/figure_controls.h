// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The controls in a figure's window: a widget for each item of the figure that
// is a control, made when the item is first shown. An item knows its text and
// its state, so what the user changes is told to it. Figures are white under
// any theme, and so a dark one is not for the controls on them.

#include <QtWidgets/QWidget>
#include <functional>
#include <map>
#include <string>

#include "plot/plotable.h"

namespace vorpen {

class FigureControls {
public:
    /// What comes of a control, with its id.
    struct Listener {
        std::function<void(int id, int state)> pressed;
        /// Changed along with another one that was pressed.
        std::function<void(int id, int state)> stateChanged;
        std::function<void(int id, const std::string& text)> textChanged;
    };

    /// Widgets are children of `parent` and live no longer.
    FigureControls(QWidget& parent, Listener listener);

    /// Takes the colours of the theme, which has changed.
    void followTheme();

    /// Shows, moves or changes the widget of an item.
    void show(const PlotableButton& button, const PixelRect& place);
    /// It may be the one whose signal is being answered.
    void remove(int id);
    void removeAll();

    /// The widget of a control; null without one.
    [[nodiscard]] QWidget* find(int id) const;

private:
    struct Control {
        QWidget* widget;
        ControlKind kind;
    };

    QWidget* make(const PlotableButton& button);
    void press(int id);

    QWidget& parent_;
    Listener listener_;
    std::map<int, Control> controls_;
};

}  // namespace vorpen
