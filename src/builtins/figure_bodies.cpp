// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/figure_bodies.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base/interrupt.h"
#include "builtins/engine_context.h"
#include "builtins/figure_waiting.h"
#include "builtins/plot_arguments.h"
#include "builtins/plot_drawing.h"
#include "console/markup.h"
#include "numerics/scalar_functions.h"

namespace vorpen::builtin {
namespace {

constexpr Colour white = 0xFFFFFF;

Colour colourOf(int red, int green, int blue) {
    return static_cast<Colour>(red) | static_cast<Colour>(green) << 8 | static_cast<Colour>(blue) << 16;
}

Frame& openFrame(std::string_view command) {
    return attributed(command, []() -> Frame& { return figureList().openFigure().currentFrame(); });
}

// ---- axis

struct AxisWord {
    std::string_view word;
    int mode;
};

constexpr std::array axisWords{
    AxisWord{"on", AXIS_SHOWN},
    AxisWord{"off", 0},
    AxisWord{"equal", AXIS_SHOWN | AXIS_EQUAL},
    AxisWord{"full", AXIS_SHOWN | AXIS_FULL},
};

int setMode(int mode) {
    Frame& frame = axisFrame();
    const int before = attributed("axis", [&] { return frame.setAxisMode(mode); });
    frame.redraw();
    return before;
}

int setWord(const std::string& word) {
    const auto found = std::ranges::find(axisWords, word, &AxisWord::word);
    Require(found != axisWords.end(), "unrecognized string", "axis");
    return setMode(found->mode);
}

/// One vector, or scalars one by one.
std::vector<double> axisNumbers(std::span<FuncArgument> arguments) {
    std::vector<double> numbers;
    for (const FuncArgument& argument : arguments) {
        const Value& v = plotValue(argument, "axis");
        Require(!isText(v) && (arguments.size() == 1 || v.size() == 1), "non-scalar argument(s)", "axis");
        const PlotNumbers items(v, "axis");
        numbers.insert(numbers.end(), items.items().begin(), items.items().end());
    }
    return numbers;
}

void storeRow(Value& out, std::span<const double> numbers) {
    DoubleValue row;
    shapeResult(row, 1, static_cast<std::int64_t>(numbers.size()));
    std::ranges::copy(numbers, row.data());
    out.assign(row);
}

int setFlags(double xFlags, double yFlags, double mode) {
    attributed("axis", [&] { axisFrame().setTickFlags(wholeNumber(xFlags), wholeNumber(yFlags)); });
    return setMode(wholeNumber(mode));
}

// ---- subplot and figpos

/// Cells of equal size.
struct Grid {
    int rows = 1, columns = 1;
};

/// The most cells and the largest number that subplot takes.
constexpr double tooMany = 101;

Grid gridFor(int count) {
    if (count <= 1) return {1, 1};
    if (count <= 3) return {count, 1};
    if (count == 4) return {2, 2};
    if (count <= 6) return {3, 2};
    if (count <= 9) return {3, 3};
    if (count <= 12) return {4, 3};
    return {(count + 3) / 4, 4};
}

/// The rectangle that two to four numbers name; nothing when they name none.
std::optional<FractionRect> rectangleOf(std::span<const double> v, double limit) {
    if (!std::ranges::all_of(v, [](double x) { return std::isfinite(x); }) || !(v[0] < limit)) return {};
    if (v.size() == 4) {
        if (!(v[0] < v[1] && v[2] < v[3])) return {};
        return FractionRect{v[0], v[2], v[1] - v[0], v[3] - v[2]};
    }
    const int first = wholeNumber(v[0]), index = wholeNumber(v.back());
    const bool isCount = v.size() == 2;
    const Grid grid = isCount ? gridFor(first) : Grid{first, wholeNumber(v[1])};
    if (first < (isCount ? 0 : 1) || grid.columns < 1 || grid.columns >= tooMany) return {};
    if (index < 1 || index > grid.rows * grid.columns) return {};
    const int column = (index - 1) % grid.columns, row = (index - 1) / grid.columns;
    // Two forms of one frame have to give the same numbers, so each is
    // computed in one way: as multiples of a size, or as quotients.
    if (isCount) {
        const double width = 1.0 / grid.columns, height = 1.0 / grid.rows;
        return FractionRect{column * width, (grid.rows - 1 - row) * height, width, height};
    }
    return FractionRect{static_cast<double>(column) / grid.columns,
                        static_cast<double>(grid.rows - row - 1) / grid.rows, 1.0 / grid.columns,
                        1.0 / grid.rows};
}

FractionRect requiredRectangle(std::span<const double> numbers, double limit, std::string_view command) {
    constexpr std::size_t mostNumbers = 4;
    Require(numbers.size() <= mostNumbers, "too many parameters", command);
    const auto rectangle = numbers.size() < 2 ? std::nullopt : rectangleOf(numbers, limit);
    Require(rectangle.has_value(), "invalid specification", command);
    return *rectangle;
}

void storeWhole(IntValue& out, std::span<const double> numbers) {
    shapeResult(out, 1, static_cast<std::int64_t>(numbers.size()));
    std::ranges::transform(numbers, out.data(), wholeNumber);
}

std::vector<double> placeOf(const PixelRect& rect, int screenHeight) {
    return {static_cast<double>(rect.left), static_cast<double>(rect.right),
            static_cast<double>(screenHeight - rect.bottom), static_cast<double>(screenHeight - rect.top)};
}

std::vector<double> placeOfWindow(int number) {
    const FigureList& list = figureList();
    if (number == 0) {
        const PixelRect wholeScreen{0, 0, list.screenWidth(), list.screenHeight()};
        return placeOf(list.desktop() ? list.desktop()->consolePlace() : wholeScreen, list.screenHeight());
    }
    const Figure* figure = list.find(number);
    Require(figure != nullptr, "invalid specification", "figpos");
    return figure->placeOnScreen();
}

// ---- set

constexpr double startAiryPrecision = 1e-09;

void setRgb(const std::string& parameter, const Value* value, Value& out) {
    constexpr std::size_t letterPlace = 4;
    Require(parameter.size() > letterPlace, "format should be 'RGB u'", "set");
    const char letter = parameter[letterPlace];
    if (value == nullptr) {
        constexpr int shade = 10;
        const bool isLetter = letter >= 'a' && letter <= 'z';
        if (isLetter) colourTable().set(letter, colourOf(shade, shade, shade));
        const std::array<double, 3> taken{shade, shade, shade};
        return storeRow(out, std::span(taken).first(isLetter ? 3 : 0));
    }
    Require(value->size() == 3, "RGB code should have three numbers", "set");
    const PlotNumbers rgb(*value, "set");
    const auto component = [&](std::size_t k) { return static_cast<int>(countOf(rgb.items()[k]) & 0xFF); };
    colourTable().set(letter, colourOf(component(0), component(1), component(2)));
    out.assign(rgb.value());
}

std::string lowerCase(std::string text) {
    for (char& c : text)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return text;
}

}  // namespace

int selectFigure(const Value& number) {
    if (number.isEmpty()) return figureList().selectFigure(0);
    Require(number.isNumericKind() && number.valueType() != COMPLEX_VAL, "invalid argument type", "figure");
    return attributed("figure",
                      [&] { return figureList().selectFigure(wholeNumber(scalarArgument(number))); });
}

int closeFigure(int number) { return figureList().closeFigure(number); }

double fixFrame() { return std::exchange(openFrame("fix").fixed, true) ? 1 : 0; }

double unfixFrame() { return std::exchange(requireFrame("unfix").fixed, false) ? 1 : 0; }

double updateFigure() {
    Figure& figure = requireFigure("update");
    figure.hold = false;
    figure.drawAll();
    serveFigureEvents();
    return 1;
}

void shakeFigure(std::span<FuncArgument>, ExtraOutputs, Value& out) {
    constexpr int rounds = 500;
    constexpr double pixels = 10;
    const int number = requireFigure("debugtest").number();
    for (int round = 0; round < rounds; ++round) {
        checkInterrupt();
        // An event may have closed it.
        Figure* figure = figureList().find(number);
        if (!figure) break;
        const std::vector<double> place = figure->placeOnScreen();
        const double step = round % 2 == 0 ? pixels : -pixels;
        figure->position(place[0] + step, place[2], place[1] - place[0], place[3] - place[2]);
        serveFigureEvents();
    }
    out.assignDouble(1);
}

int setGrid(int lines) {
    Frame& frame = requireFrame("grid");
    frame.xScale.grid = frame.yScale.grid = lines;
    frame.redraw();
    return lines;
}

void axis(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const Value& first = plotValue(arguments[0], "axis");
    if (arguments.size() == 1 && first.isEmpty()) {
        const Figure* figure = figureList().currentFigure();
        Require(figure != nullptr, "there is no open figure", "axis");
        return storeRow(out, limitsOf(figure->currentFrame()));
    }
    if (arguments.size() == 1 && isText(first)) return out.assignDouble(setWord(first.text()));
    const std::vector<double> numbers = axisNumbers(arguments);
    switch (numbers.size()) {
        case 1: return out.assignDouble(setMode(wholeNumber(numbers[0])));
        case 3: return out.assignDouble(setFlags(numbers[0], numbers[1], numbers[2]));
        case 2:
        case 4: setAxisLimits(numbers); return storeRow(out, limitsOf(axisFrame()));
        default:
            raiseRuntimeError("axis does not take " + std::to_string(numbers.size()) + " arguments", "axis");
    }
}

void wipe(const Value& what, IntValue& out) {
    Figure& figure = requireFigure("wipe");
    const PlotNumbers numbers(what, "wipe");
    const auto items = numbers.items();
    Require(items.size() <= 2, "invalid number of parameters", "wipe");
    if (items.empty()) {
        constexpr int wholeFigure = -2;
        figure.makeSubplots(wholeFigure, white);
    } else {
        const Colour background = colourTable().colourOf(static_cast<char>(wholeNumber(items.back())));
        const int index = items.size() == 1 ? -1 : std::max(wholeNumber(items[0]), 0) - 1;
        const bool isFrame = items.size() == 1 || index >= 0;
        Require(isFrame && figure.makeSubplots(index, background), "invalid subplot number", "wipe");
    }
    out.assignInt(figure.currentIndex() + 1);
}

int selectSubplot(const Value& what) {
    constexpr std::string_view command = "subplot";
    Require(what.isNumericKind() && what.valueType() != COMPLEX_VAL, "invalid specification", command);
    const PlotNumbers numbers(what, command);
    const auto items = numbers.items();
    if (items.size() == 1) {
        Require(items[0] < tooMany, "invalid specification", command);
        Figure& figure = openFrame(command).figure();
        const int number = wholeNumber(items[0]);
        Require(number >= 1 && figure.setCurrentFrame(number - 1), "invalid specification", command);
        return number;
    }
    const FractionRect box = requiredRectangle(items, tooMany, command);
    return attributed(command, [&] { return openFrame(command).figure().selectFrame(box); }) + 1;
}

void figurePosition(const Value& what, IntValue& out) {
    constexpr std::string_view command = "figpos";
    const PlotNumbers numbers(what, command);
    const auto items = numbers.items();
    const FigureList& list = figureList();
    if (items.empty()) {
        const std::array<double, 4> screen{1, static_cast<double>(list.screenWidth()), 1,
                                           static_cast<double>(list.screenHeight())};
        return storeWhole(out, screen);
    }
    if (items.size() == 1) return storeWhole(out, placeOfWindow(wholeNumber(items[0])));
    // A place may be given in pixels.
    const double limit = items.size() == 4 ? HUGE_VAL : tooMany;
    const FractionRect place = requiredRectangle(items, limit, command);
    Figure& figure = requireFigure(command);
    figure.position(place.x, place.y, place.width, place.height);
    storeWhole(out, figure.placeOnScreen());
}

void printFigure(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    Figure& figure = requireFigure("print");
    const std::string name = plotText(arguments[0], "print");
    const std::string path =
        attributed("print", [&] { return engineContext().directories().fullName(name, false, "svg"); });
    vorpen::printFigure(figure, path, name);
    out.assignInt(1);
}

void setParameter(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    if (arguments.empty()) return out.assignString("airy, RGB, text");
    const std::string parameter = lowerCase(plotValue(arguments[0], "set").text());
    const Value* value = arguments.size() > 1 ? &plotValue(arguments[1], "set") : nullptr;
    if (parameter == "airy") {
        airyPrecision() = value ? scalarArgument(*value) : startAiryPrecision;
        out.assignDouble(airyPrecision());
    } else if (parameter == "text") {
        figureList().redrawOnAdd = !value || scalarArgument(*value) != 0;
        out.assignInt(figureList().redrawOnAdd ? 1 : 0);
        out.setMark(FORM_BOOL);
    } else if (parameter.starts_with("rgb")) {
        setRgb(parameter, value, out);
    } else if (parameter == "cd") {
        // An old setting that nothing looks at.
        out.assignInt(value ? wholeNumber(scalarArgument(*value)) : 0);
    } else {
        raiseRuntimeError(parameter + " not a recognized parameter", "set");
    }
}

void useColour(const Value& rgb, IntValue& out) {
    Require(rgb.size() == 3 || rgb.size() == 4, "rgb must be 3 or 4 values", "useColour");
    const PlotNumbers numbers(rgb, "useColour");
    const auto component = [&](std::size_t k) { return std::clamp(wholeNumber(numbers.items()[k]), 0, 255); };
    const char letter = rgb.size() == 3 ? 'u' : 'U';
    colourTable().set(letter, colourOf(component(0), component(1), component(2)));
    out.assignString({&letter, 1});
}

}  // namespace vorpen::builtin
