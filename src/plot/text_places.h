// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where the texts of a frame stand. A text takes the place of one with the same
// anchor and alignment, and a figure can have tens of thousands of texts, so
// that one is found without looking at all items.

#include <set>

#include "plot/plotable.h"

namespace vorpen {

class TextPlaces {
public:
    /// The lowest index of a text at the place of this one; -1 without one.
    [[nodiscard]] int find(const TextLabel& text) const {
        const auto found = places_.lower_bound(placeOf(text, 0));
        return found != places_.end() && isSame(*found, text) ? found->index : -1;
    }
    void add(const TextLabel& text, int index) {
        // A place that is no number equals no other, and has no order.
        if (text.x == text.x && text.y == text.y) places_.insert(placeOf(text, index));
    }
    void remove(const TextLabel& text, int index) {
        if (text.x == text.x && text.y == text.y) places_.erase(placeOf(text, index));
    }
    /// Forgets the texts from an index on.
    void removeFrom(int first) {
        std::erase_if(places_, [first](const Place& place) { return place.index >= first; });
    }

private:
    struct Place {
        double x, y;
        int alignment, index;
        bool operator<(const Place& other) const {
            if (x != other.x) return x < other.x;
            if (y != other.y) return y < other.y;
            if (alignment != other.alignment) return alignment < other.alignment;
            return index < other.index;
        }
    };
    static Place placeOf(const TextLabel& text, int index) {
        return {text.x, text.y, text.alignment.code, index};
    }
    static bool isSame(const Place& place, const TextLabel& text) {
        return place.x == text.x && place.y == text.y && place.alignment == text.alignment.code;
    }

    std::set<Place> places_;
};

}  // namespace vorpen
