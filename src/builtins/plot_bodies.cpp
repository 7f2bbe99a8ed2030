// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/plot_bodies.h"

#include "builtins/plot_arguments.h"
#include "builtins/plot_drawing.h"
#include "plot/interaction.h"

namespace vorpen::builtin {
namespace {

constexpr std::string_view heading = "plot";

std::vector<double> copyOf(const PlotNumbers& numbers) {
    return {numbers.items().begin(), numbers.items().end()};
}

/// A style that asks for a filling, whatever the user's style says.
std::string fillStyle(std::string style) {
    if (style.find('#') != std::string::npos) return style;
    return style.insert(style.starts_with('^') ? 1 : 0, "#");
}

/// One call of the family: walks over the arguments, data set by data set.
class PlotCall {
public:
    PlotCall(std::span<FuncArgument> arguments, LogAxes axes, bool filling)
        : arguments_(arguments), axes_(axes), filling_(filling) {}
    PlotCall(const PlotCall&) = delete;
    PlotCall& operator=(const PlotCall&) = delete;
    ~PlotCall() {
        if (frame_) frame_->fixed = wasFixed_;
    }

    std::vector<std::int32_t> run() {
        if (arguments_[0].function)
            plotFunction();
        else
            while (next_ < arguments_.size()) plotNext();
        return std::move(ids_);
    }

private:
    [[nodiscard]] bool atText() const {
        return next_ < arguments_.size() && arguments_[next_].value && isText(*arguments_[next_].value);
    }

    /// The strings from here on, joined.
    std::string takeStyle(std::string_view behindEach = "") {
        std::string style;
        for (; atText(); ++next_) {
            const std::string part = arguments_[next_].value->text();
            style += filling_ ? fillStyle(part) : part;
            style += behindEach;
        }
        return style.empty() && filling_ ? "#" : style;
    }

    /// What the frame was before the first data set is what it is at the end.
    void noteFrame() {
        if (frame_) return;
        frame_ = &attributed(heading, []() -> Frame& { return figureList().openFigure().currentFrame(); });
        wasFixed_ = frame_->fixed;
    }

    void addRows(std::span<const double> x, const DoubleValue& y, int firstRow, std::string_view style) {
        noteFrame();
        for (const std::int32_t id : plotMatrix(x, y, firstRow, style, axes_)) ids_.push_back(id);
        frame_->fixed = true;
    }

    void plotFunction() {
        FunctionSamples samples = sampleFunction(arguments_, axes_.x, heading);
        noteFrame();
        if (filling_) samples.style = fillStyle(samples.style);
        ids_.push_back(plotOne(samples.x, samples.y, samples.style, axes_));
    }

    void plotNext() {
        const Value& first = plotValue(arguments_[next_++], heading);
        if (isMatrix(first)) return plotRowsOf(first);
        if (next_ == arguments_.size()) return setLimits(first);
        const Value& second = plotValue(arguments_[next_], heading);
        if (isText(second)) return plotPoint(first);
        if (isText(first)) return plotBox(second);
        ++next_;
        const PlotNumbers x(first, heading), y(second, heading);
        const std::string style = takeStyle();
        addRows(x.items(), y.value(), 0, style);
    }

    void plotRowsOf(const Value& matrix) {
        const PlotNumbers numbers(matrix, heading);
        std::vector<double> x(static_cast<std::size_t>(matrix.ncol()));
        for (std::size_t k = 0; k < x.size(); ++k)
            x[k] = numbers.items()[k * static_cast<std::size_t>(matrix.nrow())];
        addRows(x, numbers.value(), 1, takeStyle(" "));
    }

    void setLimits(const Value& limits) {
        Require(!isText(limits) && limits.size() == 2, "missing y data", heading);
        setAxisLimits(PlotNumbers(limits, heading).items());
    }

    void plotPoint(const Value& place) {
        Require(place.size() == 2, "missing y data", heading);
        const PlotNumbers xy(place, heading);
        noteFrame();
        ids_.push_back(plotOne(xy.items().first(1), xy.items().last(1), takeStyle(), axes_));
        frame_->fixed = true;
    }

    void plotBox(const Value& place) {
        Require(place.size() == 4, "invalid box x,y,w,h", heading);
        const PlotNumbers box(place, heading);
        ++next_;
        const auto xywh = box.items();
        Frame& frame =
            attributed(heading, []() -> Frame& { return figureList().openFigure().currentFrame(); });
        auto item = std::make_unique<Box>(xywh[0], xywh[1], xywh[2], xywh[3], takeStyle());
        ids_.push_back(attributed(heading, [&] { return addShown(frame, std::move(item)); }));
    }

    std::span<FuncArgument> arguments_;
    std::size_t next_ = 0;
    LogAxes axes_;
    bool filling_;
    Frame* frame_ = nullptr;
    bool wasFixed_ = false;
    std::vector<std::int32_t> ids_;
};

void plotOn(std::span<FuncArgument> arguments, LogAxes axes, bool filling, Value& out) {
    storeIds(out, PlotCall(arguments, axes, filling).run());
}

}  // namespace

void plot(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) { plotOn(arguments, {}, false, out); }

void loglog(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    plotOn(arguments, {.x = true, .y = true}, false, out);
}

void semilogx(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    plotOn(arguments, {.x = true}, false, out);
}

void semilogy(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    plotOn(arguments, {.y = true}, false, out);
}

void fill(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) { plotOn(arguments, {}, true, out); }

int quickPlot(const Value& data) {
    Require(data.isNumericKind(), "invalid use of a list", heading);
    Require(data.valueType() != COMPLEX_VAL, "plot function requires real numbers", heading);
    const PlotNumbers numbers(data, heading);
    const auto items = numbers.items();
    const bool hasTwoRows = data.nrow() == 2;
    const bool hasTwoColumns = data.ncol() == 2 && data.nrow() != 4 && data.nrow() != 5;
    Require(hasTwoRows || hasTwoColumns, "requires either 2 rows or 2 columns", heading);
    const std::size_t points = items.size() / 2;
    std::vector<double> x(points), y(points);
    for (std::size_t k = 0; k < points; ++k) {
        x[k] = items[hasTwoRows ? 2 * k : k];
        y[k] = items[hasTwoRows ? 2 * k + 1 : points + k];
    }
    return plotOne(x, y, "");
}

void functionPlot(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    constexpr std::string_view command = "fplot";
    Require(arguments[0].function != nullptr, "requires a function argument", command);
    FunctionSamples samples = sampleFunction(arguments, false, command);
    const std::int32_t id = plotOne(samples.x, samples.y, samples.hasStyle ? samples.style : "b");
    Frame& frame = figureList().requireFigure().currentFrame();
    attributed(command, [&] { trackCurve(frame, std::move(samples.x), std::move(samples.y)); });
    out.assignInt(id);
}

void errorBars(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    constexpr std::string_view command = "errorbars";
    const PlotNumbers x(plotValue(arguments[0], command), command);
    const PlotNumbers y(plotValue(arguments[1], command), command);
    const PlotNumbers dy(plotValue(arguments[2], command), command);
    Require(dy.items().size() == 1 || dy.items().size() == y.items().size(), "wrong number of dy values",
            command);
    Frame& frame = prepareFrame(x.items(), y.items());
    auto item = std::make_unique<ErrorBars>(copyOf(x), copyOf(y), copyOf(dy));
    out.assignInt(attributed(command, [&] { return addShown(frame, std::move(item)); }));
}

void barChart(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    constexpr std::string_view command = "barchart";
    const PlotNumbers x(plotValue(arguments[0], command), command);
    const PlotNumbers y(plotValue(arguments[1], command), command);
    Require(x.items().size() == y.items().size(), "x and y have different sizes", command);
    std::string style = "w#b 1";
    std::vector<double> widths;
    if (arguments.size() > 2) {
        const Value& option = plotValue(arguments[2], command);
        if (isText(option)) {
            style = option.text();
        } else {
            const PlotNumbers given(option, command);
            widths = copyOf(given);
            Require(widths.size() == 1 || widths.size() == x.items().size(), "width array has the wrong size",
                    command);
        }
    }
    Frame& frame = prepareFrame(x.items(), y.items());
    auto item = std::make_unique<BarChart>(copyOf(x), copyOf(y), std::move(widths), style);
    out.assignInt(attributed(command, [&] { return addShown(frame, std::move(item)); }));
}

void circle(const Value& place, const DoubleValue* second, Value& out) {
    constexpr std::string_view command = "circle";
    const bool hasRadius = second && !isText(*second);
    Require(place.size() == (hasRadius ? 2 : 3),
            hasRadius ? "xy argument must have size 2" : "xyr argument must have size 3", command);
    const PlotNumbers numbers(place, command);
    const auto items = numbers.items();
    const double radius = hasRadius ? scalarArgument(*second) : items[2];
    auto item = std::make_unique<MyCircle>(items[0], items[1], radius,
                                           second && !hasRadius ? second->text() : std::string());
    const std::int32_t id = attributed(
        command, [&] { return addShown(figureList().openFigure().currentFrame(), std::move(item)); });
    out.assignDouble(id);
}

}  // namespace vorpen::builtin
