// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/plot_label_bodies.h"

#include <optional>

#include "builtins/plot_arguments.h"

namespace vorpen::builtin {
namespace {

void setLabel(std::span<FuncArgument> arguments, std::string_view command, char which, Value& out) {
    const std::string words = plotText(arguments[0], command);
    const std::string style =
        arguments.size() > 1 ? plotText(arguments[1], command, "style argument must be a string") : "";
    out.assignInt(attributed(
        command, [&] { return figureList().openFigure().currentFrame().setLabel(words, style, which); }));
}

// ---- text

constexpr std::string_view missingText = "missing text or muddled x placement";
constexpr std::string_view badCoordinates = "coords neither scalar nor size 2";

/// A text in which names behind a backslash are symbols.
std::string withSymbols(std::string words) {
    constexpr std::string_view symbolMark = "{;";
    const bool holdsNames = words.size() > 2 && words.find('\\') != std::string::npos;
    return holdsNames && !words.starts_with(symbolMark) ? words.insert(0, symbolMark) : words;
}

/// The arguments of `text`, read from left to right.
class TextCall {
public:
    explicit TextCall(std::span<FuncArgument> arguments) : arguments_(arguments) {
        if (atText()) {
            placement_ = takeText();
            placementIsGiven_ = true;
        }
        readPlace();
        Require(atText(), missingText, "text");
        words_ = withSymbols(takeText());
        if (!placementIsGiven_ && next_ < arguments_.size()) {
            placement_ = takeOption();
            placementIsGiven_ = true;
        }
        if (next_ < arguments_.size()) {
            style_ = takeOption();
            styleIsGiven_ = true;
        }
        Require(next_ == arguments_.size(), "too many arguments", "text");
    }

    std::int32_t run() const { return changesItem_ ? changeItem() : addText(); }

private:
    [[nodiscard]] bool atText() const {
        return next_ < arguments_.size() && arguments_[next_].value && isText(*arguments_[next_].value);
    }
    std::string takeText() { return arguments_[next_++].value->text(); }
    std::string takeOption() {
        return plotText(arguments_[next_++], "text", "style argument must be a string");
    }

    void readPlace() {
        Require(next_ < arguments_.size() && !atText(), missingText, "text");
        const PlotNumbers first(plotValue(arguments_[next_++], "text"), "text");
        x_ = first.items().empty() ? 0 : first.items().front();
        if (first.items().size() == 2) {
            y_ = first.items().back();
            return;
        }
        Require(first.items().size() == 1, badCoordinates, "text");
        changesItem_ = atText();
        if (changesItem_) return;
        Require(next_ < arguments_.size(), missingText, "text");
        const PlotNumbers second(plotValue(arguments_[next_++], "text"), "text");
        Require(second.items().size() != 2, "text(id,xy) not yet implemented. Maybe try replot?", "text");
        Require(second.items().size() == 1, badCoordinates, "text");
        y_ = second.items().front();
    }

    [[nodiscard]] std::int32_t changeItem() const {
        const std::int32_t id = wholeNumber(x_);
        Frame& frame = attributed("text", [&]() -> Frame& { return requireFigure("text").idToFrame(id); });
        Require(frame.changeStyle(id, StyleChange::Text, words_), "failed", "text");
        const int index = ItemId::of(id).item;
        if (auto* label = frame.findItem<TextLabel>(index)) {
            if (placementIsGiven_) frame.alignText(index, TextAlignment::of(placement_));
            if (styleIsGiven_) label->changeStyle(style_);
            if (placementIsGiven_ || styleIsGiven_) frame.redraw();
        }
        return id;
    }

    [[nodiscard]] std::int32_t addText() const {
        return attributed("text", [&] {
            Frame& frame = figureList().openFigure().currentFrame();
            const int before = frame.itemCount();
            const std::int32_t id =
                frame.addItem(std::make_unique<TextLabel>(x_, y_, words_, placement_, style_));
            // One that took another's place is shown already.
            if (frame.itemCount() > before) {
                if (figureList().redrawOnAdd)
                    frame.redraw();
                else
                    frame.drawItem(before);
            }
            return id;
        });
    }

    std::span<FuncArgument> arguments_;
    std::size_t next_ = 0;
    double x_ = 0, y_ = 0;
    bool changesItem_ = false;  ///< x_ is the id of a text
    std::string words_, placement_ = "NE", style_;
    bool placementIsGiven_ = false, styleIsGiven_ = false;
};

// ---- replot

/// An id as given: one number, -1 for the last curve of the current frame.
std::int32_t idOf(const Value& v, std::string_view command) {
    Require(v.size() == 1 && !isText(v), "non-scalar id", command);
    return wholeNumber(PlotNumbers(v, command).items().front());
}

Frame& frameOf(Figure& figure, std::int32_t id) {
    return id == -1 ? figure.currentFrame()
                    : attributed("replot", [&]() -> Frame& { return figure.idToFrame(id); });
}

std::int32_t resolved(const Frame& frame, std::int32_t id) {
    if (id != -1) return id;
    const int last = frame.lastItemOfKind(PlotableKind::Curve);
    Require(last >= 0, "id not recognized", "replot");
    return ItemId{frame.id(), last}.number();
}

int redrawFrame(Figure& figure, const Value& which) {
    const std::int32_t number = idOf(which, "replot");
    Require(number >= 1 && number <= figure.frameCount(), "invalid frame id", "replot");
    figure.frame(number - 1).redraw();
    return number;
}

std::int32_t restyle(Frame& frame, std::int32_t id, const std::string& style) {
    const std::int32_t item = resolved(frame, id);
    Require(frame.changeStyle(item, StyleChange::Style, style), "failed", "replot");
    return item;
}

/// Column k of the data: the whole of a vector, whatever k.
std::span<const double> columnOf(const DoubleValue& data, std::size_t k) {
    if (!isMatrix(data)) return data.items();
    const auto rows = static_cast<std::size_t>(data.nrow());
    return data.items().subspan(k * rows, rows);
}

std::int32_t replotData(Frame& frame, std::int32_t id, std::span<FuncArgument> data) {
    const PlotNumbers y(plotValue(data.back(), "replot"), "replot");
    DoubleValue none;
    std::optional<PlotNumbers> given;
    if (data.size() == 2) given.emplace(plotValue(data.front(), "replot"), "replot");
    const DoubleValue& x = given ? given->value() : none;
    Require(!isMatrix(x) || x.ncol() == y.value().ncol(), "wrong number of points", "replot");
    const std::int32_t first = resolved(frame, id);
    const int columns = isMatrix(y.value()) ? y.value().ncol() : 1;
    attributed("replot", [&] {
        for (int k = 0; k < columns; ++k) {
            const auto column = static_cast<std::size_t>(k);
            (void)frame.replotItem(first + k, columnOf(x, column), columnOf(y.value(), column));
        }
    });
    return first;
}

}  // namespace

void title(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    setLabel(arguments, "title", 't', out);
}

void labelX(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    setLabel(arguments, "xlabel", 'x', out);
}

void labelY(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    setLabel(arguments, "ylabel", 'y', out);
}

void text(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    out.assignInt(TextCall(arguments).run());
}

void replot(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    Figure* figure = figureList().currentFigure();
    Require(figure != nullptr, "there is no figure", "replot");
    if (arguments.empty()) {
        figure->drawAll();
        return out.assignInt(1);
    }
    const Value& first = plotValue(arguments[0], "replot");
    if (arguments.size() == 1) return out.assignInt(redrawFrame(*figure, first));
    const std::int32_t id = idOf(first, "replot");
    Frame& frame = frameOf(*figure, id);
    if (isText(plotValue(arguments[1], "replot"))) {
        Require(arguments.size() == 2, "invalid syntax", "replot");
        return out.assignInt(restyle(frame, id, arguments[1].value->text()));
    }
    out.assignInt(replotData(frame, id, arguments.subspan(1)));
}

void moveItem(const Value& id, const DoubleValue* distance, Value& out) {
    constexpr std::string_view command = "replot_move";
    Require(id.size() == 1 && distance && distance->size() == 2, "missing id or invalid dxy", command);
    Figure& figure = requireFigure(command);
    const std::int32_t item = wholeNumber(PlotNumbers(id, command).items().front());
    Frame& frame = attributed(command, [&]() -> Frame& { return figure.idToFrame(item); });
    Require(frame.moveItem(item, (*distance)[0], (*distance)[1]), "id not recognized", command);
    out.assignDouble(item);
}

}  // namespace vorpen::builtin
