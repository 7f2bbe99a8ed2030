// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/random_bodies.h"

#include <algorithm>

#include "base/interrupt.h"
#include "builtins/arguments.h"
#include "numerics/random.h"

namespace vorpen::builtin {
namespace {

constexpr std::string_view tooMany = "too many arguments", tooManyContext = "math function";

std::int64_t randomSize(double x) {
    const std::int64_t n = countOf(x);
    Require(n >= 0, "negative n");
    return n;
}

/// An array of n, or of rows and columns, elements; a missing size is 1.
void shapeRandom(Value& out, std::span<const double> sizes) {
    const std::int64_t first = sizes.empty() ? 1 : randomSize(sizes[0]);
    const std::int64_t second = sizes.size() < 2 ? 1 : randomSize(sizes[1]);
    if (sizes.size() < 2)
        shapeResult(out, 1, first);
    else
        shapeResult(out, first, second);
}

template <class Out, class Draw>
void drawItems(Out& out, Draw draw) {
    inRounds(out.size(), [&](std::int64_t begin, std::int64_t end) {
        std::generate(out.data() + begin, out.data() + end, draw);
    });
}

/// Draws an array for [parameter], [parameter, n] or [parameter, rows,
/// columns]; `makeDraw` gets the parameter and answers what draws one element.
template <class Out, class MakeDraw>
void drawArray(const Value& v, Out& out, MakeDraw makeDraw) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    if (x.isEmpty()) return makeEmpty(out);
    Require(x.size() <= 3, tooMany, tooManyContext);
    const auto draw = makeDraw(x[0]);
    shapeRandom(out, x.items().subspan(1));
    drawItems(out, draw);
}

}  // namespace

double uniformNumber() { return randomSource().uniform(); }

int setSeed(int seed) {
    randomSource().srand(seed);
    return seed;
}

void uniformArray(const Value& sizes, DoubleValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(sizes, scratch);
    if (x.isEmpty()) return makeEmpty(out);
    Require(x.size() <= 2, tooMany, tooManyContext);
    shapeRandom(out, x.items());
    drawItems(out, [&source = randomSource()] { return source.uniform(); });
}

void exponentialArray(const Value& v, DoubleValue& out) {
    drawArray(v, out, [](double rate) {
        return [rate, &source = randomSource()] { return source.exponential(rate); };
    });
}

void normalArray(const Value& v, DoubleValue& out) {
    drawArray(v, out, [](double sigma) {
        return [sigma, &source = randomSource()] { return source.normal(sigma); };
    });
}

void integerArray(const Value& v, IntValue& out) {
    drawArray(v, out, [](double limit) {
        const std::int64_t n = countOf(limit);
        Require(n > 0, "n <= 0", "irand");
        const int below = static_cast<int>(std::min<std::int64_t>(n, INT32_MAX));
        return [below, &source = randomSource()] { return source.below(below); };
    });
}

}  // namespace vorpen::builtin
