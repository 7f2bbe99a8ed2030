// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An index as the loops of a program meet it. Most indices are one number held
// in a double variable, or computed from such; the front end has put a
// truncation around them. The reader looks behind that truncation, so that a
// plain number reaches the bounds check in a register and nothing is built.
// Anything else (a list of positions, a mask, a string) becomes a private
// array of integers on demand.

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "eval/number_source.h"

namespace vorpen {

class IndexReader {
public:
    /// The element is not owned; it has been made fit for an index.
    explicit IndexReader(Evaluatable& element);

    /// True when the index is a plain number that needs no evaluation; it is
    /// not yet truncated. A truth value is none: it is a mask.
    [[nodiscard]] bool readNumber(double& k) const { return number_.readIndex(k); }

    /// The index, not yet truncated where it is a double. The workspace is of
    /// the kind of workspaceType().
    [[nodiscard]] Outcome evaluate(Value* workspace) const { return source_->evaluate(workspace); }
    /// DOUBLE_VAL or INTEGER_VAL.
    [[nodiscard]] int workspaceType() const { return fromDouble_ ? DOUBLE_VAL : INTEGER_VAL; }
    /// True for an index that the front end truncates.
    [[nodiscard]] bool isFromDouble() const { return fromDouble_; }

    /// True when an outcome is a number to index with.
    [[nodiscard]] static bool isPlainNumber(const Outcome& index) {
        return index.isScalar() && (index.mark() & 15) == FORM_NUMERIC;
    }

private:
    Evaluatable* source_;
    NumberSource number_;
    bool fromDouble_;
};

/// One index, evaluated. A plain number stays a number; anything else is an
/// outcome whose value lives as long as this.
class ReadIndex {
public:
    explicit ReadIndex(const IndexReader& reader) {
        if (reader.readNumber(number_)) return;
        outcome_ = reader.evaluate(workspace_.emplace(reader.workspaceType()).get());
        isNumber_ = IndexReader::isPlainNumber(outcome_);
        number_ = outcome_.number;
    }
    ReadIndex(const ReadIndex&) = delete;
    ReadIndex& operator=(const ReadIndex&) = delete;

    [[nodiscard]] bool isNumber() const { return isNumber_; }
    /// Not yet truncated.
    [[nodiscard]] double number() const { return number_; }
    [[nodiscard]] Outcome outcome() const { return isNumber_ ? Outcome::scalar(number_) : outcome_; }

private:
    double number_ = 0;
    bool isNumber_ = true;
    Outcome outcome_ = Outcome::scalar(0);
    std::optional<Workspace> workspace_;
};

/// Truncation as in truncateToInt, which gives the lowest integer for what does
/// not fit; here by the one instruction that does just that.
inline int truncatedIndex(double k) {
#ifdef __SSE2__
    return _mm_cvttsd_si32(_mm_set_sd(k));
#else
    return truncateToInt(k);
#endif
}

/// True for a number that, truncated, lies in 1 to d.
inline bool isIndexWithin(double k, int d) {
    return static_cast<unsigned>(truncatedIndex(k)) - 1u < static_cast<unsigned>(d);
}

/// Where the element at a row and column, not yet truncated, lies in a matrix;
/// -1 when it is outside. A row within the rows leaves the place of a wrong
/// column below 0 or behind the end, so that one comparison finds both.
inline std::int64_t elementPosition(const Value& m, double row, double column) {
    const auto rows = static_cast<std::uint32_t>(m.nrow());
    const std::uint32_t r = static_cast<std::uint32_t>(truncatedIndex(row)) - 1u;
    const std::int64_t at = (std::int64_t{truncatedIndex(column)} - 1) * rows + r;
    const bool isWithin = r < rows && static_cast<std::uint64_t>(at) < static_cast<std::uint32_t>(m.size());
    return isWithin ? at : -1;
}

/// Copies an index, truncated to integers, with its rows and mark. Fails with
/// "invalid type of index" for complex values and lists.
void copyIndices(const Outcome& index, IntValue& list);

/// Turns a mask into the list of the positions of its non-zero elements,
/// counted from 1.
void maskToIndices(IntValue& mask);

/// True when the list is not empty and all of it lies in 1 to d.
[[nodiscard]] bool indicesWithin(const IntValue& list, int d);

}  // namespace vorpen
