// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A frame is one subplot: a rectangle of a figure with limits, the map from
// data to pixels that follows from them, and the items drawn in it. Item 0 is
// always the outline of the plot area; it is drawn last, over the data.
//
// An item is known to users by one number, its id: the frame's index in the
// high 16 bits and the item's index in the low 16 bits.

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "plot/axis_scale.h"
#include "plot/drawing_surface.h"
#include "plot/plotable.h"
#include "plot/text_places.h"

namespace vorpen {

class Figure;

/// A rectangle in fractions of another, from its bottom left corner.
struct FractionRect {
    double x = 0, y = 0, width = 1, height = 1;
    bool operator==(const FractionRect&) const = default;
};

inline constexpr FractionRect wholeBox{0, 0, 1, 1};

struct Limits {
    double xmin = 0, xmax = 1, ymin = 0, ymax = 1;
    bool operator==(const Limits&) const = default;
};

/// Where a dragged item may go, in data units.
struct DragRegion {
    double x = 0, y = 0, width = 0, height = 0;
};

/// The cursor that follows a curve. `vertical` not below 0 means that it is on;
/// all four are item indices.
struct CurveTracker {
    std::int32_t vertical = -1, horizontal = -1, marker = -1, label = -1;
    [[nodiscard]] bool active() const { return vertical >= 0; }
};

/// The two parts of an item id.
struct ItemId {
    int frame = 0, item = 0;

    static ItemId of(std::int32_t id) { return {id >> 16, id & 0xFFFF}; }
    [[nodiscard]] std::int32_t number() const {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(frame) << 16 |
                                         static_cast<std::uint32_t>(item));
    }
};

/// The modes of `axis`, as bits.
enum AxisMode : int {
    AXIS_SHOWN = 1,
    AXIS_EQUAL = 256,
    AXIS_NO_BOX = 512,
    AXIS_FULL = 1024,
};

/// What an item's number can be changed to by `changeStyle`.
enum class StyleChange { Style, Text };

class Frame {
public:
    /// A frame with the outline of its plot area as only item.
    Frame(Figure& figure, int id, const FractionRect& box = wholeBox);
    ~Frame();
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    // ---- State that commands set ----

    Colour background = 0xFFFFFF;
    bool fixed = false;  ///< the limits do not follow the data, and plots are overlaid
    bool equal = false;  ///< as many pixels for a unit on both axes
    AxisScale xScale, yScale;
    std::map<int, DragRegion> dragables;  ///< by item index
    CurveTracker tracker;
    std::vector<double> trackedX, trackedY;  ///< the curve that the tracker follows
    std::size_t trackedIndex = 0;            ///< where the tracker is on it

    [[nodiscard]] Figure& figure() const { return figure_; }
    [[nodiscard]] int id() const { return id_; }
    void setId(int id) { id_ = id; }

    // ---- Rectangles and limits ----

    [[nodiscard]] const FractionRect& box() const { return box_; }
    [[nodiscard]] const FractionRect& plotArea() const { return area_; }
    /// Takes a new plot area, in fractions of the box. A width or height of
    /// exactly 0 leaves that direction as it is.
    void setPlotArea(const FractionRect& area);

    [[nodiscard]] const Limits& limits() const { return limits_; }
    /// Limits for data in these ranges, widened to round numbers.
    void setLimits(double xmin, double xmax, double ymin, double ymax);
    /// Exactly these limits. Follow with rescale().
    void setExactLimits(const Limits& limits) { limits_ = limits; }
    /// Computes the map from data to pixels, and brings limits on a log axis
    /// above 0.
    void rescale();

    // ---- Data and pixels ----

    /// A pixel is limited to 16 bits; a NaN is at -32768, and on a log axis a
    /// value of 0 or less is at the lower limit.
    /// With a resolution it is a dot of a finer surface, so many to a pixel.
    [[nodiscard]] int pixelX(double x, double resolution = 1) const {
        return toPixel(scaledX(x) * scaleX_ + offsetX_, resolution);
    }
    [[nodiscard]] int pixelY(double y, double resolution = 1) const {
        return toPixel(scaledY(y) * scaleY_ + offsetY_, resolution);
    }
    [[nodiscard]] Pixel pixel(double x, double y, double resolution = 1) const {
        return {pixelX(x, resolution), pixelY(y, resolution)};
    }
    /// All points at once.
    void toPixels(std::span<const double> x, std::span<const double> y, std::vector<Pixel>& out,
                  double resolution = 1) const;
    [[nodiscard]] double valueX(double pixel) const;
    [[nodiscard]] double valueY(double pixel) const;
    /// A place in percent of the axes.
    [[nodiscard]] Pixel percentToPixels(double x, double y) const;
    /// Pixels for a unit of data (of its logarithm on a log axis); that of y is
    /// below 0.
    [[nodiscard]] double pixelsPerX() const { return scaleX_; }
    [[nodiscard]] double pixelsPerY() const { return scaleY_; }
    /// The y pixels that a polyline is held between, 8 heights above and below
    /// the limits: the smaller pixel first.
    [[nodiscard]] std::array<int, 2> polylineRange(double resolution = 1) const;

    /// Whether a place on an axis is within the limits, or out by no more than
    /// rounding.
    [[nodiscard]] bool showsX(double x) const;
    [[nodiscard]] bool showsY(double y) const;

    /// The frame, its plot area and the clipped area in pixels.
    [[nodiscard]] FrameOutline outline() const;
    /// A rectangle given in fractions of the frame's box.
    [[nodiscard]] PixelRect fractionsToPixels(const FractionRect& rect) const;

    // ---- Items ----

    [[nodiscard]] int itemCount() const { return static_cast<int>(plotable_.size()); }
    /// An item, which must exist.
    [[nodiscard]] Plotable& item(int index) const { return *plotable_[static_cast<std::size_t>(index)]; }
    [[nodiscard]] bool hasItem(int index) const { return index >= 0 && index < itemCount(); }
    /// The item, or null when the index is none of an item of type T.
    template <class T>
    [[nodiscard]] T* findItem(int index) const {
        return hasItem(index) ? dynamic_cast<T*>(&item(index)) : nullptr;
    }
    /// The first item of type T and its index; null and -1 without one.
    template <class T>
    [[nodiscard]] std::pair<T*, int> firstItem() const {
        for (int k = 0; k < itemCount(); ++k)
            if (T* found = dynamic_cast<T*>(&item(k))) return {found, k};
        return {nullptr, -1};
    }
    /// The last item of a kind that is no cursor; -1 without one.
    [[nodiscard]] int lastItemOfKind(PlotableKind kind) const;
    /// The frame's outline; null when the frame is wiped down to nothing.
    [[nodiscard]] BoxRel* boxItem() const { return findItem<BoxRel>(0); }

    /// Adds an item and answers its id. A text takes the place of one with the
    /// same anchor and alignment; then it is drawn, and the answer is that
    /// one's index without the frame.
    std::int32_t addItem(std::unique_ptr<Plotable> item);
    /// Shows the item added last: alone when the frame is fixed, else all anew.
    void finishAdd();
    /// Removes the items from an index on, and all dragging.
    void wipeFrame(int keep);
    /// What the item says of itself; fails with "invalid id: no such item in
    /// the frame".
    [[nodiscard]] std::vector<double> itemValue(std::int32_t id) const;

    /// New data for an item, -1 for the last curve. `x` may be empty for a
    /// curve that keeps its x. Answers the id. Fails with "id not recognized",
    /// "x,y must be scalar for a single point", "a box must be indicated by
    /// [x,y,w,h]", "wrong number of points", "the plot item is not a curve,
    /// point, box or text".
    std::int32_t replotItem(std::int32_t id, std::span<const double> x, std::span<const double> y);
    /// A new style, or a new text for a text item or a control; false when the
    /// item cannot take it.
    bool changeStyle(std::int32_t id, StyleChange change, std::string_view text);
    /// Moves an item by a distance in data units; false without such an item.
    bool moveItem(std::int32_t id, double dx, double dy);
    /// Puts the anchor of an item, which must exist, at a place.
    void placeItem(int index, double x, double y);
    /// Sets a text about its anchor in another way; any other item stays.
    void alignText(int index, const TextAlignment& alignment);

    // ---- Axes and labels ----

    /// Shows axes as a mode of AxisMode bits says, and answers the mode before.
    int setAxisMode(int mode);
    /// Sets what the axes show, as AxisFlags.
    void setTickFlags(int xFlags, int yFlags);
    /// Sets the label `which`: `x`, `y`, or `t` for the title. Answers the
    /// index of the item that holds the labels.
    int setLabel(std::string_view text, std::string_view style, char which);

    // ---- Drawing ----

    /// Takes the surface of the figure's window for drawing; true when it was
    /// held already. Without a window nothing is held, and nothing is drawn.
    bool On();
    /// Gives it back and shows what was drawn; false when it was not held.
    bool Off();
    /// Draws everything anew in the figure's window, if it has one.
    void redraw();
    /// Draws everything on a surface, with the cursors of the window or without.
    void drawOn(DrawingSurface& surface, bool withCursors = true);
    /// Draws one item as it is now in the window; an inverting one that is
    /// there disappears.
    void drawItem(int index);

private:
    [[nodiscard]] static int toPixel(double p, double resolution = 1) {
        // The first comparison is false for a NaN.
        p = p > minPixel ? p : minPixel;
        return static_cast<int>((p < maxPixel ? p : maxPixel) * resolution);
    }
    [[nodiscard]] double scaledX(double x) const;
    [[nodiscard]] double scaledY(double y) const;
    [[nodiscard]] int itemIndex(std::int32_t id) const;
    void replotCurve(int index, Curve& curve, std::span<const double> x, std::span<const double> y);
    /// Changes the anchor or the alignment of an item. No text is moved in any
    /// other way, so that its place is known.
    template <class Change>
    void changePlace(int index, Change change) {
        auto* const text = findItem<TextLabel>(index);
        if (text != nullptr) textPlaces_.remove(*text, index);
        change();
        if (text != nullptr) textPlaces_.add(*text, index);
    }
    AxisTicks& axisTicks();
    /// Changes an item that is shown: between two drawings of an inverting one,
    /// else before the frame is drawn anew.
    void changeShown(int index, const std::function<void(Plotable&)>& change);
    /// Draws in the figure's window, if it has one.
    void onSurface(const std::function<void(FramePainter&)>& draw);

    static constexpr double minPixel = -32768, maxPixel = 32767;

    Figure& figure_;
    int id_;
    FractionRect box_;
    FractionRect area_{0.1, 0.15, 0.85, 0.83};
    Limits limits_;
    double offsetX_ = 0, scaleX_ = 1, offsetY_ = 0, scaleY_ = 1;
    std::vector<std::unique_ptr<Plotable>> plotable_;
    TextPlaces textPlaces_;  ///< of the texts in plotable_
    DrawingSurface* surface_ = nullptr;  ///< between On and Off
};

}  // namespace vorpen
