// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/interaction.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"
#include "base/interrupt.h"
#include "plot/figure_list.h"

namespace vorpen {
namespace {

constexpr std::string_view onMove = "onMove", onDrag = "onDrag", onDragable = "onDragable";

/// The events that stop when their function fails.
bool isFrequent(std::string_view name) { return name == onMove || name == onDrag || name == onDragable; }

/// Keys from here on bring a character message of their own, all but the
/// function keys.
constexpr int firstCharacterKey = 65, firstFunctionKey = 112, lastFunctionKey = 135;

Pixel anchorOf(const Frame& frame, const Plotable& item) {
    const auto* text = dynamic_cast<const TextLabel*>(&item);
    return text != nullptr && text->relative ? frame.percentToPixels(item.x, item.y)
                                             : frame.pixel(item.x, item.y);
}

double squaredDistance(Pixel a, Pixel b) {
    const double dx = static_cast<double>(a.x) - b.x, dy = static_cast<double>(a.y) - b.y;
    return dx * dx + dy * dy;
}

}  // namespace

double MouseState::read(int entry) {
    if (entry != MOUSE_CLEAR_CLICK) return (*this)[entry];
    (*this)[MOUSE_CLICKED] = 0;
    return 0;
}

int MouseState::entryOf(char letter) {
    constexpr std::string_view letters = "xylrcXYDimfFk";
    const std::size_t at = letters.find(letter);
    return at == std::string_view::npos ? -1 : static_cast<int>(at) + 1;
}

// ---- Events -----------------------------------------------------------------------

/// The mouse's place in units of the frame under it, which is the answer; null
/// in a figure without frames.
Frame* Interaction::updatePlace(Figure& figure) {
    const int index = figure.frameUnderMouse(mouse.pixel);
    if (index >= figure.frameCount()) return nullptr;
    Frame& frame = figure.frame(index);
    mouse[MOUSE_FRAME] = index;
    mouse[MOUSE_X] = frame.valueX(mouse.pixel.x);
    mouse[MOUSE_Y] = frame.valueY(mouse.pixel.y);
    return &frame;
}

bool Interaction::wants(std::string_view name) const {
    return target_ != nullptr && target_->isEnabled(name);
}

double Interaction::callGuarded(std::string_view name, std::span<const double> second) {
    const auto [entry, isFirst] = active_.emplace(name);
    Require(isFirst, "recursion not allowed in mouse function");
    struct Leave {
        std::set<std::string, std::less<>>& active;
        std::set<std::string, std::less<>>::iterator entry;
        ~Leave() { active.erase(entry); }
    } const leave{active_, entry};
    return target_->callFunction(name, {mouse[MOUSE_X], mouse[MOUSE_Y]}, second);
}

void Interaction::fireEvent(std::string_view name, std::int32_t id, std::span<const double> pair) {
    if (target_ == nullptr || !target_->hasFunction(name)) return;
    Figure* const figure = figureList().currentFigure();
    const int number = figure != nullptr ? figure->number() : 0;
    if (figure != nullptr && updatePlace(*figure) != nullptr)
        figure->setCurrentFrame(static_cast<int>(mouse[MOUSE_FRAME]));
    const int frame = figure != nullptr ? figure->currentIndex() : 0;

    const auto report = [&](const std::string& message) {
        // Whoever asked for the end needs no box to be told of it.
        if (isInterrupted()) return target_->print("{r " + std::string(name) + " interrupted}");
        if (isFrequent(name)) target_->disable(name);
        target_->messageBox(std::string(name) + " --> " + message + " disabled");
    };
    const double idNumber = id;
    try {
        mouse[MOUSE_RESULT] = callGuarded(name, pair.empty() ? std::span(&idNumber, 1) : pair);
    } catch (const RuntimeError& error) {
        report(error.message.size() == 1 ? operatorFailureText(error.message[0]) : error.message);
    } catch (const OperatorFailure& failure) {
        report(operatorFailureText(failure.code));
    } catch (...) {
        throw PlainFailure{"error during mouse function"};
    }
    // The function may have made another figure or frame the current one, or
    // closed this one.
    if (Figure* const before = figureList().find(number)) {
        figureList().setCurrentFigure(before);
        before->setCurrentFrame(frame);
    }
}

/// Moves come faster than a function may answer them. Those that come while it
/// is in a call are one call when it has ended, for the last place.
void Interaction::fireMove(std::string_view name, std::int32_t id) {
    if (active_.contains(name)) {
        missed_.emplace(name);
        return;
    }
    do {
        missed_.erase(std::string(name));
        if (!wants(name)) return;
        fireEvent(name, id);
    } while (missed_.contains(name) && figureList().currentFigure() != nullptr);
}

void Interaction::mouseMove(Pixel at, bool leftDown) {
    mouse.pixel = at;
    Figure* const figure = figureList().currentFigure();
    if (figure == nullptr) return;
    Frame* const frame = updatePlace(*figure);
    if (!leftDown) {
        if (frame != nullptr) moveTracker(*frame, at);
        fireMove(onMove);
        return;
    }
    const auto dragged = static_cast<std::int32_t>(mouse[MOUSE_ITEM]);
    if (dragged == 0) {
        fireMove(onDrag);
        return;
    }
    dragTo(*figure, dragged, at);
    fireMove(onDragable, dragged);
}

void Interaction::leftPress(Pixel at) {
    mouse.pixel = mouse.pressPixel = at;
    mouse[MOUSE_LEFT] = mouse[MOUSE_CLICKED] = 1;
    if (Figure* const figure = figureList().currentFigure()) {
        updatePlace(*figure);
        mouse[MOUSE_PRESS_X] = mouse[MOUSE_X];
        mouse[MOUSE_PRESS_Y] = mouse[MOUSE_Y];
        const std::int32_t picked = pick(*figure, at);
        mouse[MOUSE_ITEM] = picked;
        if (picked != 0) fireMove(onDragable, picked);
    }
    ++mouse.leftPresses;
    fireEvent("onLDown");
}

void Interaction::leftRelease() {
    mouse[MOUSE_LEFT] = mouse[MOUSE_DOUBLE] = 0;
    fireEvent("onLUp");
}

void Interaction::doubleClick() {
    mouse[MOUSE_DOUBLE] = 1;
    fireEvent("onLDouble");
}

void Interaction::rightPress() {
    mouse[MOUSE_RIGHT] = mouse[MOUSE_CLICKED] = 1;
    fireEvent("onRDown");
}

void Interaction::rightRelease() {
    mouse[MOUSE_RIGHT] = 0;
    fireEvent("onRUp");
}

void Interaction::keyDown(int code) {
    mouse[MOUSE_KEY] = code;
    const bool isFunctionKey = code >= firstFunctionKey && code <= lastFunctionKey;
    if (code < firstCharacterKey || isFunctionKey) fireEvent("onKeyDown");
}

void Interaction::keyUp() { mouse[MOUSE_KEY] = 0; }

void Interaction::character(int code) {
    mouse[MOUSE_KEY] = code;
    fireEvent("onKeyDown");
}

void Interaction::controlPressed(Figure& figure, int controlId, int state) {
    mouse[MOUSE_CLICKED] = 1;
    const auto control = figure.controls.find(controlId);
    if (control == figure.controls.end()) return;
    const ItemId id = ItemId::of(control->second);
    if (id.frame < 0 || id.frame >= figure.frameCount()) return;
    auto* const button = figure.frame(id.frame).findItem<PlotableButton>(id.item);
    if (button == nullptr) return;
    button->state = state;
    fireEvent("onButton", control->second,
              std::array<double, 2>{static_cast<double>(control->second), static_cast<double>(state)});
}

void Interaction::menuChosen(Figure& figure, int commandIndex) {
    mouse[MOUSE_CLICKED] = 1;
    if (commandIndex < 0 || static_cast<std::size_t>(commandIndex) >= figure.menuCommands.size()) return;
    if (target_ != nullptr) target_->typeCommand(figure.menuCommands[static_cast<std::size_t>(commandIndex)]);
}

// ---- Dragging -------------------------------------------------------------------------

void Interaction::makeDragable(Figure& figure, std::int32_t id, const DragRegion* region) {
    Frame& frame = figure.idToFrame(id);
    const int index = ItemId::of(id).item;
    Require(frame.hasItem(index), "invalid id: no such item in the frame");
    const Limits& limits = frame.limits();
    frame.dragables[index] =
        region != nullptr
            ? *region
            : DragRegion{limits.xmin, limits.ymin, limits.xmax - limits.xmin, limits.ymax - limits.ymin};
    frame.item(index).dragable = true;
}

std::int32_t Interaction::pick(Figure& figure, Pixel at) {
    for (int f = 0; f < figure.frameCount(); ++f) {
        Frame& frame = figure.frame(f);
        for (const auto& entry : frame.dragables) {
            const int index = entry.first;
            if (!frame.hasItem(index)) {
                frame.dragables.erase(index);
                if (target_ != nullptr) target_->print("The list of dragable items has become invalid.");
                break;
            }
            if (squaredDistance(at, anchorOf(frame, frame.item(index))) < pickRadiusSquared)
                return ItemId{f, index}.number();
        }
    }
    return 0;
}

void Interaction::dragTo(Figure& figure, std::int32_t id, Pixel at) {
    const ItemId parts = ItemId::of(id);
    if (parts.frame < 0 || parts.frame >= figure.frameCount()) return;
    Frame& frame = figure.frame(parts.frame);
    const auto region = frame.dragables.find(parts.item);
    if (region == frame.dragables.end() || !frame.hasItem(parts.item)) return;
    const auto within = [](double value, double low, double extent) {
        return std::max(std::min(value, low + extent), low);
    };
    const DragRegion& r = region->second;
    frame.placeItem(parts.item, within(frame.valueX(at.x), r.x, r.width),
                    within(frame.valueY(at.y), r.y, r.height));
}

void Interaction::reset() {
    mouse = {};
    pickRadiusSquared = 200;
    active_.clear();
    missed_.clear();
}

Interaction& interaction() {
    static Interaction state;
    return state;
}

}  // namespace vorpen
