// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the mouse, the keys and the controls of a figure do. A window passes on
// what it hears as pixels and key codes; here it becomes the state that scripts
// ask for, the dragging of items, the cursor on a curve, and calls of the user
// functions that carry the names of events. No function has to be registered:
// it is looked up by name when the event comes, and without one nothing
// happens.
//
// Which functions there are and how they are called is the engine's matter;
// it is reached through EventTarget. A test is a target too.

#include <array>
#include <cstdint>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "plot/figure.h"
#include "values/mathmatrix.h"

namespace vorpen {

/// The engine, as events need it.
class EventTarget {
public:
    virtual ~EventTarget() = default;

    [[nodiscard]] virtual bool hasFunction(std::string_view name) const = 0;
    /// Calls a user function with a place in data units and, if it takes two
    /// arguments, a second array. Answers the first number of its result. What
    /// the function fails with passes on.
    virtual double callFunction(std::string_view name, std::array<double, 2> place,
                                std::span<const double> second) = 0;
    /// The events that come so often that they are switched off when their
    /// function fails: onMove, onDrag, onDragable.
    [[nodiscard]] virtual bool isEnabled(std::string_view name) const = 0;
    virtual void disable(std::string_view name) = 0;
    virtual void messageBox(std::string_view text) = 0;
    /// A line for the console.
    virtual void print(std::string_view text) = 0;
    /// A command as if it had been typed, with Enter.
    virtual void typeCommand(std::string_view text) = 0;
};

/// The entries of the mouse's record, by which scripts ask for them.
enum MouseEntry : int {
    MOUSE_CLEAR_CLICK = 0,  ///< reading it clears MOUSE_CLICKED
    MOUSE_X = 1,            ///< in data units
    MOUSE_Y = 2,
    MOUSE_LEFT = 3,
    MOUSE_RIGHT = 4,
    MOUSE_CLICKED = 5,  ///< since it was cleared
    MOUSE_PRESS_X = 6,  ///< of the last left press, in data units
    MOUSE_PRESS_Y = 7,
    MOUSE_DOUBLE = 8,
    MOUSE_ITEM = 9,  ///< id of the item that is dragged, 0 for none
    MOUSE_USER = 10,
    MOUSE_RESULT = 11,  ///< of the last event function
    MOUSE_FRAME = 12,
    MOUSE_KEY = 13,  ///< that is held down, 0 for none
};

struct MouseState {
    static constexpr int entryCount = 14;
    std::array<double, entryCount> entries{};
    Pixel pixel, pressPixel;
    DoubleValue userValue{0.0};  ///< entry MOUSE_USER, what a script keeps by `setmouse`
    unsigned leftPresses = 0;  ///< so far, for who waits for one

    [[nodiscard]] double& operator[](int entry) { return entries[static_cast<std::size_t>(entry)]; }
    /// An entry as a script reads it; it must exist.
    double read(int entry);
    /// The entry with a letter of "xylrcXYDimfFk"; -1 without one.
    [[nodiscard]] static int entryOf(char letter);
};

class Interaction {
public:
    MouseState mouse;
    /// A dragable item is picked when its squared distance in pixels is below.
    std::int32_t pickRadiusSquared = 200;

    /// Where events go; null drops them. Not owned.
    void setTarget(EventTarget* target) { target_ = target; }

    // ---- What a window hears. Events go to the current figure. ----

    void mouseMove(Pixel at, bool leftDown);
    void leftPress(Pixel at);
    void leftRelease();
    void doubleClick();
    void rightPress();
    void rightRelease();
    void keyDown(int code);
    void keyUp();
    void character(int code);
    /// A control of a figure was pressed and has a new state.
    void controlPressed(Figure& figure, int controlId, int state);
    /// An item of the figure's menus was chosen; one that there is not is
    /// ignored.
    void menuChosen(Figure& figure, int commandIndex);

    /// Calls the user function of an event, if there is one, and shows what it
    /// fails with in a message box. `pair` replaces the second argument, the
    /// id. Fails with the plain text "error during mouse function" when the
    /// function fails in an unknown way.
    void fireEvent(std::string_view name, std::int32_t id = 0, std::span<const double> pair = {});

    /// Whether a user function that answers an event is running.
    [[nodiscard]] bool isCalling() const { return !active_.empty(); }

    /// Lets an item be dragged in a region; in the frame's limits without one.
    /// Fails with "invalid id: no such item in the frame" or "id not
    /// recognized: invalid frame".
    static void makeDragable(Figure& figure, std::int32_t id, const DragRegion* region = nullptr);
    /// The id of the dragable item at a pixel, 0 for none.
    std::int32_t pick(Figure& figure, Pixel at);
    /// Moves a dragable item to a pixel, no further than its region.
    static void dragTo(Figure& figure, std::int32_t id, Pixel at);

    void reset();

private:
    Frame* updatePlace(Figure& figure);
    [[nodiscard]] bool wants(std::string_view name) const;
    void fireMove(std::string_view name, std::int32_t id = 0);
    double callGuarded(std::string_view name, std::span<const double> second);

    EventTarget* target_ = nullptr;
    std::set<std::string, std::less<>> active_;  ///< functions that are in a call
    std::set<std::string, std::less<>> missed_;  ///< moves that came while their function was in a call
};

[[nodiscard]] Interaction& interaction();

/// Puts a cursor on a curve: two hairlines that follow the mouse, a marker that
/// snaps to zeros and extrema, and a label with the x found. They are hidden
/// until the mouse moves, and never part of a file.
void trackCurve(Frame& frame, std::vector<double> x, std::vector<double> y);

/// Moves the cursor of a frame to the mouse.
void moveTracker(Frame& frame, Pixel mouse);

/// A zero or an extremum of a curve near one of its points.
struct CurveFeature {
    bool found = false;
    double x = 0, y = 0;
};

[[nodiscard]] CurveFeature featureNear(std::span<const double> x, std::span<const double> y,
                                       std::size_t index);

}  // namespace vorpen
