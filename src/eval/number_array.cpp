// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/number_array.h"

#include "eval/number_lane.h"

namespace vorpen {

bool NumberArray::add(const ExpressionItems& items) {
    int columns = 0, inRow = 0;
    for (std::size_t next = 0;; ++next) {
        auto piece = LaneBuilder().buildPiece(items, next);
        if (!piece || elements_.size() == mostElements) return false;
        elements_.emplace_back(std::move(*piece));
        ++inRow;
        const int op = items[next].op;
        if (op == OP_COMMA) continue;
        if (columns > 0 && inRow != columns) return false;
        columns = std::exchange(inRow, 0);
        if (op == OP_END) return true;
        if (op != OP_SEMICOLON) return false;
        ++rows_;
    }
}

std::unique_ptr<NumberArray> NumberArray::compile(const ExpressionItems& items) {
    auto array = std::make_unique<NumberArray>();
    return array->add(items) ? std::move(array) : nullptr;
}

bool NumberArray::store(DoubleValue& target) const {
    const int size = static_cast<int>(elements_.size()), columns = size / rows_;
    double numbers[mostElements];
    for (int i = 0; i < size; ++i)
        if (!elements_[i].read(numbers[i])) return false;
    // The first piece gives the whole its mark.
    const int mark = elements_.front().mark();
    if (mark >= static_cast<int>(Outcome::markLimit)) return false;
    target.setSizeShapeMark(size, rows_, mark);
    for (int r = 0; r < rows_; ++r)
        for (int c = 0; c < columns; ++c) target[c * rows_ + r] = numbers[r * columns + c];
    return true;
}

}  // namespace vorpen
