// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/interaction_bodies.h"

#include <algorithm>

#include "builtins/figure_waiting.h"
#include "builtins/plot_arguments.h"
#include "builtins/plot_drawing.h"
#include "plot/interaction.h"
#include "values/list_value.h"

namespace vorpen::builtin {
namespace {

// ---- the mouse

int entryOf(double key, bool isLetter) {
    const int number = wholeNumber(key);
    const int entry = isLetter ? MouseState::entryOf(static_cast<char>(number)) : number;
    Require(entry >= 0 && entry < MouseState::entryCount, "invalid index", "getmouse");
    return entry;
}

/// What a script keeps with the mouse may be of any size, so it comes alone.
double entryValue(int entry) {
    Require(entry != MOUSE_USER, "non-scalar argument", "getmouse");
    return interaction().mouse.read(entry);
}

void storePair(DoubleValue& out, double x, double y) {
    shapeResult(out, 1, 2);
    out[0] = x;
    out[1] = y;
}

// ---- controls

constexpr std::string_view controlKinds = "bcehrt";

/// The words and numbers of `createButton`, whichever come first.
struct ButtonArguments {
    std::string text;
    char kind = 'b';
    std::vector<double> place;
};

char kindOf(const std::string& word) {
    Require(!word.empty(), "empty vector or string argument", "createButton");
    const char kind = word[0] >= 'A' && word[0] <= 'Z' ? static_cast<char>(word[0] - 'A' + 'a') : word[0];
    Require(controlKinds.find(kind) != std::string_view::npos, "unrecognized kind of control",
            "createButton");
    return kind;
}

ButtonArguments buttonArguments(std::span<FuncArgument> arguments) {
    constexpr std::string_view command = "createButton";
    ButtonArguments result;
    bool hasText = false;
    for (const FuncArgument& argument : arguments) {
        const Value& v = plotValue(argument, command);
        const bool isFirst = &argument == arguments.data();
        Require(!v.isEmpty(), "empty vector or string argument", command);
        if (isText(v)) {
            if (hasText)
                result.kind = kindOf(v.text());
            else
                result.text = v.text();
            hasText = true;
            continue;
        }
        Require(!isFirst || v.size() > 1, "plotted-item-button not yet implemented", command);
        const PlotNumbers place(v, command);
        Require(place.items().size() >= 2 && place.items().size() <= 5, "rect must have 2 to 5 values",
                command);
        result.place.assign(place.items().begin(), place.items().end());
    }
    return result;
}

// ---- menus

constexpr std::string_view wrongMenuFormat = "wrong format (should be list or string matrix)";

/// Identifiers of menu items are 16 bits with a sign, from 4096 on.
constexpr std::size_t maxMenuItems = 28671;

std::string withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

/// The rows of a string matrix, or the texts of a list.
std::vector<std::string> textsOf(const Value* v) {
    Require(v != nullptr, wrongMenuFormat, "menu");
    std::vector<std::string> texts;
    if (!v->isNumericKind()) {
        for (const ListItem& item : static_cast<const ListValue*>(v)->items()) {
            Require(item.get() != nullptr && isText(*item.get()), wrongMenuFormat, "menu");
            texts.push_back(withoutBlanks(item.get()->text()));
        }
        return texts;
    }
    Require(isText(*v), wrongMenuFormat, "menu");
    const std::string all = v->text();
    const auto width = static_cast<std::size_t>(std::max(v->ncol(), 1));
    for (std::size_t begin = 0; begin < all.size(); begin += width)
        texts.push_back(withoutBlanks(std::string_view(all).substr(begin, width)));
    return texts;
}

/// The items under each heading. A single menu may come without a list.
std::vector<std::vector<std::string>> menusOf(const Value* v) {
    Require(v != nullptr, wrongMenuFormat, "menu");
    if (v->isNumericKind()) return {textsOf(v)};
    std::vector<std::vector<std::string>> menus;
    for (const ListItem& item : static_cast<const ListValue*>(v)->items())
        menus.push_back(textsOf(item.get()));
    return menus;
}

/// "label->command"; without an arrow one text is both.
std::pair<std::string, std::string> labelAndCommand(const std::string& text) {
    constexpr std::string_view arrow = "->";
    const std::size_t place = text.find(arrow);
    if (place == std::string::npos) return {text, text};
    return {withoutBlanks(text.substr(0, place)), withoutBlanks(text.substr(place + arrow.size()))};
}

}  // namespace

void mouseValues(const Value& keys, DoubleValue& out) {
    // The keys may be where the answer goes.
    DoubleValue wanted;
    wanted.copyFrom(keys);
    serveFigureEvents();
    MouseState& mouse = interaction().mouse;
    if (wanted.isEmpty()) return storePair(out, mouse[MOUSE_X], mouse[MOUSE_Y]);
    const auto entryAt = [&](int k) { return entryOf(wanted[k], wanted.isString()); };
    if (wanted.size() == 1 && entryAt(0) == MOUSE_USER) return out.copyFrom(interaction().mouse.userValue);
    shapeResult(out, wanted.nrow(), wanted.ncol());
    for (int k = 0; k < wanted.size(); ++k) out[k] = entryValue(entryAt(k));
}

void setMouseValue(const Value& value, DoubleValue& out) {
    interaction().mouse.userValue.copyFrom(value);
    out.assignDouble(1);
}

void waitForClick(const Value& number, DoubleValue& out) {
    const bool isGiven = !number.isEmpty();
    const int figure = isGiven ? wholeNumber(scalarArgument(number)) : -1;
    makeEmpty(out);
    if (figure < 0) return;
    if (figure > 0) attributed("getclick", [&] { (void)figureList().selectFigure(figure); });
    if (!waitForPress(figure)) return;
    MouseState& mouse = interaction().mouse;
    if (figure == 0) return storePair(out, mouse[MOUSE_X], mouse[MOUSE_Y]);
    Require(figureList().currentFigure() != nullptr, "no figure open for mouse click", "getclick");
    storePair(out, mouse[MOUSE_PRESS_X], mouse[MOUSE_PRESS_Y]);
}

double keyDown() {
    Require(!figureList().figures().empty(), "no figure window is open", "getkeyb");
    serveFigureEvents();
    return interaction().mouse[MOUSE_KEY];
}

void makeDragable(const Value& ids, const DoubleValue* limits, Value& out) {
    constexpr std::string_view command = "dragable";
    Figure& figure = requireFigure(command);
    DoubleValue taken;
    {
        const PlotNumbers given(ids, command);
        taken.copyFrom(given.value());
    }
    const bool hasLimits = limits && !limits->isEmpty();
    if (hasLimits) {
        Require(limits->nrow() == taken.size(), "limits.nrow must match id.size", command);
        Require(limits->ncol() == 4, "limits should have 4 columns", command);
    }
    for (int k = 0; k < taken.size(); ++k) {
        const std::int32_t id = wholeNumber(taken[k]);
        DragRegion region;
        if (hasLimits) {
            const auto column = [&](int c) { return (*limits)[c * limits->nrow() + k]; };
            region = {column(0), column(2), column(1) - column(0), column(3) - column(2)};
        }
        attributed(command, [&] { Interaction::makeDragable(figure, id, hasLimits ? &region : nullptr); });
    }
    out.assign(taken);
}

void createButton(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    constexpr std::string_view command = "createButton";
    const ButtonArguments given = buttonArguments(arguments);
    Figure& figure = requireFigure(command);
    Frame& frame = figure.currentFrame();
    auto button = std::make_unique<PlotableButton>(static_cast<ControlKind>(given.kind), given.text);
    const std::vector<double>& place = given.place;
    if (!place.empty()) {
        button->x = place[0];
        button->y = place[1];
        // An odd count of numbers says percent.
        button->relative = place.size() % 2 == 1;
    }
    if (place.size() >= 4) {
        button->width = place[2];
        button->height = place[3];
    }
    out.assignInt(attributed(command, [&] {
        button->controlId = figure.nextControlId();
        const int controlId = button->controlId;
        const std::int32_t id = addShown(frame, std::move(button));
        figure.controls[controlId] = id;
        return id;
    }));
}

void createMenus(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const std::vector<std::string> headings = textsOf(arguments[0].value);
    const auto itemsOfMenus = menusOf(arguments[1].value);
    Require(headings.size() == itemsOfMenus.size(), "number of menus does not match number of headings",
            "menu");
    Figure& figure = requireFigure("menu");
    std::vector<std::string> commands;
    std::vector<Menu> menus;
    for (std::size_t m = 0; m < headings.size(); ++m) {
        Menu menu{headings[m], {}};
        for (const std::string& item : itemsOfMenus[m]) {
            auto [label, command] = labelAndCommand(item);
            menu.items.push_back({std::move(label), static_cast<int>(commands.size())});
            commands.push_back(std::move(command));
        }
        menus.push_back(std::move(menu));
    }
    Require(commands.size() <= maxMenuItems, "too many menu items", "menu");
    figure.menuCommands = std::move(commands);
    figure.setMenus(menus);
    out.assignInt(1);
}

}  // namespace vorpen::builtin
