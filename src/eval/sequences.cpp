// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <new>
#include <utility>

#include "base/errors.h"
#include "base/interrupt.h"
#include "eval/elements.h"
#include "eval/indexing.h"

namespace vorpen {
namespace {

constexpr const char* partsMustBeScalar = "sequence must have scalar start, step, stop";

/// One part of a sequence as a number; complex numbers and lists count as 0.
double partAsNumber(Evaluatable& part) {
    const auto numberOf = [](const Outcome& outcome) {
        if (outcome.isScalar()) return outcome.number;
        Require(outcome.value()->size() == 1, partsMustBeScalar);
        return outcome.value()->doubleValue();
    };
    if (part.type() <= DOUBLE_VAL) {
        DoubleValue workspace;
        return numberOf(part.evaluate(&workspace));
    }
    Workspace workspace(part.type());
    return numberOf(part.evaluate(workspace.get()));
}

/// One part of an index. What is beyond the integers stays beyond every bound;
/// a part that is no number is below them all.
int partAsInteger(Evaluatable& part) {
    Evaluatable& source = part.elementKind() == ElementKind::doubleToInt
                              ? static_cast<DoubleToIntElement&>(part).inner()
                              : part;
    const double x = partAsNumber(source);
    return x >= 2147483647.0 ? INT32_MAX : truncateToInt(x);
}

/// Any failure of a part has the one message.
template <class Read>
auto readingParts(Read&& read) {
    try {
        return read();
    } catch (const RuntimeError&) {
    } catch (const SyntaxError&) {
    } catch (const OperatorFailure&) {
    } catch (const PlainFailure&) {
    } catch (const std::bad_alloc&) {
    }
    raiseRuntimeError(partsMustBeScalar);
}

/// True if every partial sum is a whole number that a double holds exactly, so
/// that start + i*step gives the bits of the running sum.
bool sumsAreExact(const SequenceElement::Range& range) {
    constexpr double limit = 9007199254740992.0;  // 2^53
    return range.start == std::trunc(range.start) && range.step == std::trunc(range.step) &&
           std::abs(range.start) + std::abs(range.step) * range.count < limit;
}

/// Elements from one look at the interrupt to the next.
constexpr int fillBlock = 1 << 18;

/// A function of an index that gives each element in turn.
template <class Kind, class Next>
void fillInBlocks(Kind& out, int count, Next next) {
    auto* to = out.data();
    for (int i = 0; i < count;) {
        const int end = i + std::min(fillBlock, count - i);
        for (; i < end; ++i) to[i] = next(i);
        checkInterrupt();
    }
}

void fillItems(const SequenceElement::Range& range, DoubleValue& out) {
    if (sumsAreExact(range))
        return fillInBlocks(out, range.count, [&](int i) { return range.start + i * range.step; });
    double x = range.start;
    fillInBlocks(out, range.count, [&](int) { return std::exchange(x, x + range.step); });
}

void fillItems(const SequenceElement::Range& range, IntValue& out) {
    const auto step = static_cast<unsigned>(truncateToInt(range.step));
    const auto start = static_cast<unsigned>(truncateToInt(range.start));
    fillInBlocks(out, range.count, [&](int i) { return static_cast<int>(start + static_cast<unsigned>(i) * step); });
}

template <class Kind>
void fillRange(const SequenceElement::Range& range, Kind& out) {
    out.setSizeShapeMark(range.count, range.count > 0 ? 1 : 0, FORM_NUMERIC);
    try {
        fillItems(range, out);
    } catch (...) {
        // Interrupted: nothing that was never written is left to be read.
        out.clear();
        throw;
    }
}

template <class T>
void gatherElements(const JMatrix<T>& from, int start, int step, int n, JMatrix<T>& out) {
    out.setSizeShapeMark(n, from.nrow() == 1 && n > 0 ? 1 : n, from.form() == FORM_3D ? 0 : from.form());
    std::int64_t at = start - 1;
    for (int k = 0; k < n; ++k, at += step) out[k] = from[static_cast<int>(at)];
}

template <class T>
void gatherRows(const JMatrix<T>& from, int start, int step, int n, JMatrix<T>& out) {
    const int rows = from.nrow(), columns = from.ncol();
    out.setShape(n, columns);
    int to = 0;
    for (int c = 0; c < columns; ++c) {
        std::int64_t at = std::int64_t{c} * rows + start - 1;
        for (int k = 0; k < n; ++k, at += step) out[to++] = from[static_cast<int>(at)];
    }
}

template <class T>
void gatherColumns(const JMatrix<T>& from, int start, int step, int n, JMatrix<T>& out) {
    const int rows = from.nrow();
    out.setShape(rows, n);
    std::int64_t column = start - 1;
    for (int k = 0; k < n; ++k, column += step)
        std::copy_n(from.data() + column * rows, rows, out.data() + std::int64_t{k} * rows);
}

template <class T>
void gather(const JMatrix<T>& from, int irc, int start, int step, int n, Value& target) {
    auto& out = static_cast<JMatrix<T>&>(target);
    switch (irc) {
        case INDEX_ELEMENT: return gatherElements(from, start, step, n, out);
        case INDEX_ROW: gatherRows(from, start, step, n, out); break;
        case INDEX_COLUMN: gatherColumns(from, start, step, n, out); break;
        default: out.clear();
    }
    out.setMark(FORM_NUMERIC);
}

void gatherFrom(const Value& from, int irc, int start, int step, int n, Value& out) {
    switch (from.valueType()) {
        case INTEGER_VAL: return gather<int>(asInt(from), irc, start, step, n, out);
        case DOUBLE_VAL: return gather<double>(asDouble(from), irc, start, step, n, out);
        case COMPLEX_VAL: return gather<std::complex<double>>(asComplex(from), irc, start, step, n, out);
        case LIST_VAL: return gather<ListItem>(static_cast<const ListValue&>(from), irc, start, step, n, out);
    }
}

}  // namespace

SequenceElement::Range SequenceElement::readRange() const {
    double stop;
    Range range = readingParts([&] {
        Range parts{partAsNumber(*child(0)), child(2) ? partAsNumber(*child(2)) : 1.0, 0};
        stop = partAsNumber(*child(1));
        return parts;
    });
    const double steps = std::trunc((stop - range.start) / range.step);
    if (!std::isfinite(steps) || steps < 0) return range;
    if (steps >= maxElements) throw std::bad_alloc();
    range.count = static_cast<int>(steps) + 1;
    return range;
}

SequenceElement::Bounds SequenceElement::readIntegerBounds() const {
    return readingParts([&] {
        const int start = partAsInteger(*child(0));
        const int step = child(2) ? partAsInteger(*child(2)) : 1;
        return Bounds{start, step, partAsInteger(*child(1))};
    });
}

Value* SequenceElement::pValue(Value* workspace) {
    const Range range = readRange();
    if (workspace->valueType() == INTEGER_VAL)
        fillRange(range, asInt(*workspace));
    else if (workspace->valueType() == DOUBLE_VAL)
        fillRange(range, asDouble(*workspace));
    return workspace;
}

Value* IndexedWithSequenceElement::pValue(Value* workspace) {
    const SequenceElement::Bounds b = sequence_->readIntegerBounds();
    const int irc = irc_ < 0 ? target_->chosenIndexCode() : irc_;
    Require(b.step != 0, "sequence with zero step");
    const int d = target_->dimension(irc);
    const std::int64_t n = std::max<std::int64_t>(0, sequenceSteps(b) + 1);
    const std::int64_t last = b.start + (n - 1) * b.step;
    Require(b.start > 0 && b.stop <= d && (n == 0 || (b.start <= d && last >= 1 && last <= d)), "B",
            "sequenced index");
    const auto read = [&](Value& out) {
        gatherFrom(*target_, irc, b.start, b.step, static_cast<int>(n), out);
    };
    if (workspace->valueType() == target_->valueType()) {
        read(*workspace);
    } else {
        Workspace own(target_->valueType());
        read(*own);
        workspace->copyFrom(*own);
    }
    return workspace;
}

}  // namespace vorpen
