// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/figure_events.h"

#include <algorithm>
#include <array>

#include "base/errors.h"
#include "base/output.h"
#include "builtins/curve_tracker.h"
#include "builtins/mouse_state.h"
#include "eval/run_state.h"
#include "plot/figure_list.h"

namespace vorpen {
namespace {

/// Keys from this code on come as characters as well.
constexpr int firstCharacterKey = 65;

DoubleValue pairOf(double first, double second) {
    DoubleValue pair;
    pair.setSizeShapeMark(2, 1, FORM_NUMERIC);
    pair[0] = first;
    pair[1] = second;
    return pair;
}

/// Puts the state of the statements that wait back when an event is over.
class RunPause {
public:
    RunPause() : running_(runState().running), signal_(runState().loopSignal) { runState().start(); }
    ~RunPause() {
        runState().running = running_;
        runState().loopSignal = signal_;
    }
    RunPause(const RunPause&) = delete;
    RunPause& operator=(const RunPause&) = delete;

private:
    bool running_;
    LoopSignal signal_;
};

/// The current figure and its current frame are the same after an event,
/// unless they are gone.
class FigureKept {
public:
    explicit FigureKept(const Figure& figure) : number_(figure.number()), frame_(figure.currentIndex()) {}
    ~FigureKept() {
        Figure* figure = figureList().find(number_);
        if (figure == nullptr) return;
        figureList().setCurrentFigure(figure);
        figure->setCurrentFrame(frame_);
    }
    FigureKept(const FigureKept&) = delete;
    FigureKept& operator=(const FigureKept&) = delete;

private:
    int number_, frame_;
};

void noteMouse(Figure& figure) {
    MouseState& mouse = mouseState();
    mouse.frameIndex = figure.frameUnderMouse(mouse.pixel);
    const Frame& frame = figure.frame(mouse.frameIndex);
    mouse.mouseX = frame.valueX(mouse.pixel.x);
    mouse.mouseY = frame.valueY(mouse.pixel.y);
}

void update(int figureNumber) {
    if (Figure* figure = figureList().find(figureNumber)) figure->drawAll();
}

double held(double value, double low, double high) { return std::max(std::min(value, high), low); }

/// What a press does to a control by itself.
void advanceState(Frame& frame, PlotableButton& button) {
    switch (button.control) {
        case ControlKind::CheckBox: button.state = button.state == 0 ? 1 : 0; break;
        case ControlKind::ThreeState: button.state = (button.state + 1) % 3; break;
        case ControlKind::RadioButton:
            // One of the radio buttons of a frame is pressed in.
            for (int k = 0; k < frame.itemCount(); ++k)
                if (auto* other = frame.findItem<PlotableButton>(k);
                    other && other != &button && other->control == ControlKind::RadioButton && other->state != 0) {
                    other->state = 0;
                    frame.drawItem(k);
                }
            button.state = 1;
            break;
        default: break;
    }
}

}  // namespace

FigureEvents::FigureEvents(Calc& calc, std::function<void(const std::string&)> typeCommand)
    : calc_(calc), typeCommand_(std::move(typeCommand)) {}

// ---- delivering an event

bool* FigureEvents::enableFlag(std::string_view name) {
    UserFunctionTable& table = calc_.functions();
    if (name == "onMove") return &table.onMoveEnabled;
    if (name == "onDrag") return &table.onDragEnabled;
    if (name == "onDragable") return &table.onDragableEnabled;
    return nullptr;
}

void FigureEvents::callFunction(UserFunc& function, const EventSubject& subject) {
    Require(function.depth() == 0, "recursion not allowed in mouse function");
    constexpr int mostInputs = 2;
    Require(function.minArguments() <= mostInputs, "too many parameters for a mouse function");
    Require(function.desc().byReference == 0, "a mouse function takes no parameter by reference");
    DoubleValue place = pairOf(mouseState().mouseX, mouseState().mouseY);
    DoubleValue second(subject.id);
    if (subject.value) second = pairOf(subject.id, *subject.value);
    std::array<FuncArgument, mostInputs> arguments;
    arguments[0].value = &place;
    arguments[1].value = &second;
    const auto inputs = static_cast<std::size_t>(std::min(function.parameterCount(), mostInputs));
    const auto result = newHolder(function.outputType());
    function.call(std::span(arguments).first(inputs), nullptr, *result);
    if (result->valueType() <= DOUBLE_VAL) mouseState().eventResult.copyFrom(*result);
}

void FigureEvents::reportFailure(const std::string& name, const std::string& message) {
    bool* enabled = enableFlag(name);
    if (enabled != nullptr) *enabled = false;
    calc_.host().messageBox("", name + " --> " + message + (enabled ? " disabled" : ""));
}

void FigureEvents::fireEvent(Figure& figure, const char* name, EventSubject subject) {
    figureList().setCurrentFigure(&figure);
    noteMouse(figure);
    UserFunc* function = calc_.functions().find(name);
    if (function == nullptr) return;
    const FigureKept kept(figure);
    figure.setCurrentFrame(mouseState().frameIndex);
    const RunPause pause;
    try {
        callFunction(*function, subject);
    } catch (const RuntimeError& failure) {
        reportFailure(name, failure.message);
    } catch (const SyntaxError& failure) {
        reportFailure(name, failure.message);
    } catch (...) {
        // Nothing is known of it; an event that comes often would come again.
        if (bool* enabled = enableFlag(name)) *enabled = false;
        output().print("{r error during mouse function}", true, PrintMode::markup);
    }
}

// ---- the mouse

void FigureEvents::focused(Figure& figure) { figureList().setCurrentFigure(&figure); }

void FigureEvents::mouseMoved(Figure& figure, Pixel at) {
    MouseState& mouse = mouseState();
    mouse.pixel = at;
    if (figureList().currentFigure() != &figure) return;
    noteMouse(figure);
    if (mouse.leftDown) {
        if (mouse.draggedItem != 0)
            drag(figure, at);
        else if (calc_.functions().onDragEnabled)
            fireEvent(figure, "onDrag");
        return;
    }
    moveTracker(figure.frame(mouse.frameIndex), at);
    if (calc_.functions().onMoveEnabled) fireEvent(figure, "onMove");
}

void FigureEvents::drag(Figure& figure, Pixel at) {
    MouseState& mouse = mouseState();
    const ItemId id = ItemId::of(mouse.draggedItem);
    if (id.frame < 0 || id.frame >= figure.frameCount()) return;
    Frame& frame = figure.frame(id.frame);
    const auto region = frame.dragables.find(id.item);
    if (region == frame.dragables.end() || !frame.hasItem(id.item)) return;
    const DragRegion& limits = region->second;
    const double x = held(frame.valueX(at.x), limits.x, limits.x + limits.width);
    const double y = held(frame.valueY(at.y), limits.y, limits.y + limits.height);
    Plotable& item = frame.item(id.item);
    (void)frame.moveItem(mouse.draggedItem, x - item.x, y - item.y);
    item.x = x;
    item.y = y;
    if (calc_.functions().onDragableEnabled)
        fireEvent(figure, "onDragable", {static_cast<double>(mouse.draggedItem), {}});
}

std::int32_t FigureEvents::pick(Figure& figure, Pixel at) {
    for (int f = 0; f < figure.frameCount(); ++f) {
        Frame& frame = figure.frame(f);
        for (const auto& [index, region] : frame.dragables) {
            if (!frame.hasItem(index)) {
                frame.dragables.erase(index);
                output().print("The list of dragable items has become invalid.", true, PrintMode::markup);
                break;
            }
            const Plotable& item = frame.item(index);
            const Pixel place = frame.pixel(item.x, item.y);
            const std::int64_t dx = std::int64_t{place.x} - at.x, dy = std::int64_t{place.y} - at.y;
            if (dx * dx + dy * dy < mouseState().pickRadiusSquared) return ItemId{f, index}.number();
        }
    }
    return 0;
}

void FigureEvents::leftPressed(Figure& figure, Pixel at) {
    MouseState& mouse = mouseState();
    const int number = figure.number();
    figureList().setCurrentFigure(&figure);
    mouse.pixel = mouse.pressPixel = at;
    mouse.leftDown = mouse.pressed = true;
    noteMouse(figure);
    mouse.pressX = mouse.mouseX;
    mouse.pressY = mouse.mouseY;
    mouse.draggedItem = pick(figure, at);
    if (mouse.draggedItem != 0 && calc_.functions().onDragableEnabled)
        fireEvent(figure, "onDragable", {static_cast<double>(mouse.draggedItem), {}});
    if (Figure* same = figureList().find(number)) fireEvent(*same, "onLDown");
    ++mouse.leftPresses;
}

void FigureEvents::leftReleased(Figure& figure, Pixel at) {
    MouseState& mouse = mouseState();
    const int number = figure.number();
    mouse.pixel = at;
    mouse.leftDown = mouse.doubleClicked = false;
    fireEvent(figure, "onLUp");
    mouse.draggedItem = 0;
    update(number);
}

void FigureEvents::leftDoubleClicked(Figure& figure, Pixel at) {
    mouseState().pixel = at;
    mouseState().doubleClicked = true;
    fireEvent(figure, "onLDouble");
}

void FigureEvents::rightPressed(Figure& figure, Pixel at) {
    mouseState().pixel = at;
    mouseState().rightDown = mouseState().pressed = true;
    fireEvent(figure, "onRDown");
}

void FigureEvents::rightReleased(Figure& figure, Pixel at) {
    const int number = figure.number();
    mouseState().pixel = at;
    mouseState().rightDown = false;
    fireEvent(figure, "onRUp");
    update(number);
}

// ---- keys

void FigureEvents::keyPressed(Figure& figure, int code) {
    mouseState().key = code;
    if (code < firstCharacterKey) fireEvent(figure, "onKeyDown");
}

void FigureEvents::keyReleased() { mouseState().key = 0; }

void FigureEvents::characterTyped(Figure& figure, int character) {
    mouseState().key = character;
    fireEvent(figure, "onKeyDown");
}

// ---- controls and menus

void FigureEvents::chooseMenuItem(const Figure& figure, int index) {
    const auto& commands = figure.menuCommands;
    if (index < 0 || static_cast<std::size_t>(index) >= commands.size() || !typeCommand_) return;
    typeCommand_(std::string(commands[static_cast<std::size_t>(index)]));
}

void FigureEvents::pressControl(Figure& figure, int controlId) {
    const auto found = figure.controls.find(controlId);
    if (found == figure.controls.end()) return;
    const ItemId id = ItemId::of(found->second);
    if (id.frame < 0 || id.frame >= figure.frameCount()) return;
    Frame& frame = figure.frame(id.frame);
    auto* button = frame.findItem<PlotableButton>(id.item);
    if (button == nullptr) return;
    advanceState(frame, *button);
    frame.drawItem(id.item);
    const double value = std::trunc(button->value().front());
    fireEvent(figure, "onButton", {static_cast<double>(found->second), value});
}

void FigureEvents::command(Figure& figure, int identifier) {
    mouseState().pressed = true;
    if (identifier >= firstMenuIdentifier)
        chooseMenuItem(figure, identifier - firstMenuIdentifier);
    else
        pressControl(figure, identifier);
}

}  // namespace vorpen
