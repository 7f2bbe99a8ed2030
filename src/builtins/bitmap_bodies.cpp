// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/bitmap_bodies.h"

#include <filesystem>
#include <fstream>
#include <optional>

#include "base/encoding.h"
#include "builtins/engine_context.h"
#include "builtins/plot_arguments.h"
#include "builtins/plot_drawing.h"

namespace vorpen::builtin {
namespace {

/// The largest picture with four bytes a pixel, and its head.
constexpr std::uintmax_t maxFileSize = (std::uintmax_t{1} << 28) + 4096;

std::optional<Bitmap> readPicture(const std::string& path) {
    const std::filesystem::path file(toUtf8(path));
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(file, failure);
    if (failure || size > maxFileSize) return std::nullopt;
    std::string bytes(size, '\0');
    std::ifstream in(file, std::ios::binary);
    in.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return decodeBmp(bytes);
}

std::int32_t idOf(const Value& v, std::string_view fault, std::string_view command) {
    Require(v.size() == 1 && !isText(v), fault, command);
    return wholeNumber(PlotNumbers(v, command).items().front());
}

/// The picture of an id and its frame.
struct Found {
    Frame* frame = nullptr;
    MyBitmap* picture = nullptr;
};

Found findPicture(std::int32_t id, std::string_view fault, std::string_view command) {
    Figure& figure = requireFigure(command);
    const ItemId parts = ItemId::of(id);
    Require(parts.frame >= 0 && parts.frame < figure.frameCount(), fault, command);
    Frame& frame = figure.frame(parts.frame);
    auto* picture = frame.findItem<MyBitmap>(parts.item);
    Require(picture != nullptr, fault, command);
    return {&frame, picture};
}

}  // namespace

void loadBitmap(const Value& name, const DoubleValue* option, Value& out) {
    constexpr std::string_view command = "loadBitmap";
    Frame& frame = requireFrame(command);
    Require(isText(name), "argument must be a string", command);
    const std::string path = attributed(
        command, [&] { return engineContext().directories().fullName(name.text(), false, "bmp"); });
    std::optional<Bitmap> picture = readPicture(path);
    Require(picture.has_value(), "bitmap failed to load", command);
    const int width = picture->width, height = picture->height;
    if (option && !option->isEmpty()) {
        frame.setExactLimits({0, static_cast<double>(width), -static_cast<double>(height), 0});
        frame.setPlotArea(wholeBox);
        frame.rescale();
    }
    const std::int32_t id = attributed(command, [&] {
        return addShown(frame, std::make_unique<MyBitmap>(0, 0, std::move(*picture), false));
    });
    DoubleValue answer;
    shapeResult(answer, 1, 3);
    answer[0] = id;
    answer[1] = width;
    answer[2] = height;
    out.assign(answer);
}

void snipImage(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    constexpr std::string_view command = "snipImage";
    const std::int32_t id = idOf(plotValue(arguments[0], command), "id must be scalar", command);
    const auto [frame, source] = findPicture(id, "could not identify the bitmap", command);
    const PlotNumbers rect(plotValue(arguments[1], command), command);
    Require(rect.items().size() == 4, "invalid parameters", command);
    const auto edge = [&](std::size_t k) { return wholeNumber(rect.items()[k]); };
    Bitmap part = source->picture.cut(edge(0), edge(1), edge(2), edge(3));
    Require(!part.pixels.empty(), "invalid parameters", command);
    auto item = std::make_unique<MyBitmap>(source->x, source->y, std::move(part), false);
    if (arguments.size() > 2) {
        const PlotNumbers option(plotValue(arguments[2], command), command);
        Require(option.items().size() == 1 || option.items().size() == 2,
                "third argument must have 1 or 2 values", command);
        if (option.items().size() == 1) {
            item->transparent = option.items()[0] != 0;
        } else {
            item->x = option.items()[0];
            item->y = option.items()[1];
        }
    }
    Frame& target = *frame;
    out.assignInt(attributed(command, [&] { return addShown(target, std::move(item)); }));
}

void pixelColour(const Value& id, const DoubleValue* place, Value& out) {
    constexpr std::string_view command = "getpixel";
    Require(place && place->size() == 2, "xy argument has the wrong size", command);
    const Found found = findPicture(idOf(id, "id not recognized", command), "id not recognized", command);
    const Bitmap& picture = found.picture->picture;
    const int x = wholeNumber((*place)[0]), y = wholeNumber((*place)[1]);
    Require(picture.contains(x, y), "no such pixel in the bitmap", command);
    const Colour colour = picture.at(x, y);
    out.assignDouble((colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF));
}

}  // namespace vorpen::builtin
