// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What happens in the window of a figure, as the language sees it: presses and
// moves of the mouse, keys, menus and controls become calls of user functions
// with fixed names (onLDown, onMove, onKeyDown ...), looked up when the event
// comes. The window layer translates its own events into these calls, and so
// does a test; nothing here knows a window.
//
// A user function may do anything, close the figure included, so a figure is
// known here by its number once a function has been called. No operation lets
// a failure out: the events come from loops that could not carry one.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "engine/calc.h"
#include "plot/figure.h"

namespace vorpen {

/// What an event function is given behind the mouse's place: an id, or an id
/// and a value.
struct EventSubject {
    double id = 0;
    std::optional<double> value;
};

class FigureEvents {
public:
    /// `typeCommand` types a line into the console, for the items of menus.
    explicit FigureEvents(Calc& calc, std::function<void(const std::string&)> typeCommand = {});

    // ---- The mouse; places in pixels of the figure's client area

    void mouseMoved(Figure& figure, Pixel at);
    void leftPressed(Figure& figure, Pixel at);
    void leftReleased(Figure& figure, Pixel at);
    void leftDoubleClicked(Figure& figure, Pixel at);
    void rightPressed(Figure& figure, Pixel at);
    void rightReleased(Figure& figure, Pixel at);

    // ---- Keys; codes as the key table of the window system has them

    void keyPressed(Figure& figure, int code);
    void keyReleased();
    void characterTyped(Figure& figure, int character);

    // ---- Controls and menus

    /// From this identifier on a command is the item of a menu.
    static constexpr int firstMenuIdentifier = 4096;
    /// A control was pressed, whose state then changes as its kind asks for,
    /// or the item of a menu was chosen.
    void command(Figure& figure, int identifier);

    /// The figure's window has the focus.
    static void focused(Figure& figure);

private:
    /// Calls the user function of an event, if there is one.
    void fireEvent(Figure& figure, const char* name, EventSubject subject = {});
    void callFunction(UserFunc& function, const EventSubject& subject);
    void reportFailure(const std::string& name, const std::string& message);
    [[nodiscard]] bool* enableFlag(std::string_view name);
    void drag(Figure& figure, Pixel at);
    /// The id of the dragable item near a pixel, 0 for none.
    std::int32_t pick(Figure& figure, Pixel at);
    void chooseMenuItem(const Figure& figure, int index);
    void pressControl(Figure& figure, int controlId);

    Calc& calc_;
    std::function<void(const std::string&)> typeCommand_;
};

}  // namespace vorpen
