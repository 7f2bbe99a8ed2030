// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/reduction_bodies.h"

#include <gsl/gsl_sys.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "base/multiversion.h"
#include "base/output.h"
#include "base/parallel.h"
#include "builtins/arguments.h"
#include "numerics/simpson.h"

namespace vorpen::builtin {
namespace {

/// Elements that are worked on at once: two vectors of the widest kind.
constexpr int lanes = 16;

VORPEN_MULTIVERSION
double squareSum(const double* x, std::int64_t n) {
    double partial[lanes] = {};
    std::int64_t i = 0;
    for (; i + lanes <= n; i += lanes)
        for (int k = 0; k < lanes; ++k) partial[k] += x[i + k] * x[i + k];
    double total = 0;
    for (; i < n; ++i) total += x[i] * x[i];
    for (const double p : partial) total += p;
    return total;
}

/// Doubles that one comparison handles together on every processor; the
/// compiler does not vectorise a loop on single elements with a condition in
/// it. Four of them in turn keep the comparisons from waiting for each other.
using Pair [[gnu::vector_size(16)]] = double;
constexpr int pairs = 4;

/// The extreme among the numbers that are not NaN, or `start`; `isBetter`
/// compares two numbers or two pairs.
template <class IsBetter>
double extremeFrom(double start, const double* x, std::int64_t n, IsBetter isBetter) {
    Pair best[pairs], next;
    for (Pair& b : best) b = Pair{start, start};
    std::int64_t i = 0;
    for (; i + 2 * pairs <= n; i += 2 * pairs)
        for (int k = 0; k < pairs; ++k) {
            std::memcpy(&next, x + i + 2 * k, sizeof next);
            best[k] = isBetter(next, best[k]) ? next : best[k];
        }
    for (; i < n; ++i) start = isBetter(x[i], start) ? x[i] : start;
    for (const Pair& b : best)
        for (int k = 0; k < 2; ++k) start = isBetter(b[k], start) ? b[k] : start;
    return start;
}

double largestOf(double start, const double* x, std::int64_t n) {
    return extremeFrom(start, x, n, [](auto a, auto b) { return a > b; });
}

double smallestOf(double start, const double* x, std::int64_t n) {
    return extremeFrom(start, x, n, [](auto a, auto b) { return a < b; });
}

using Extreme = double (*)(double start, const double* x, std::int64_t n);

/// The same, in pieces by several threads where there are many numbers.
double extremeOfPieces(Extreme extreme, double start, const double* x, std::int64_t n) {
    constexpr std::int64_t grain = 1 << 16;
    if (n < parallelThreshold) return extreme(start, x, n);
    std::vector<double> best((n + grain - 1) / grain, start);
    parallelFor(n, grain, [&](std::int64_t begin, std::int64_t end) {
        best[begin / grain] = extreme(start, x + begin, end - begin);
    });
    return extreme(start, best.data(), static_cast<std::int64_t>(best.size()));
}

/// Position from 0 of the first extreme of a double vector that is not empty.
/// A NaN in front compares false with everything and stays.
int firstPosition(const DoubleValue& v, Extreme extreme) {
    if (std::isnan(v[0])) return 0;
    const double best = extremeOfPieces(extreme, v[0], v.data(), v.size());
    return static_cast<int>(std::find(v.data(), v.data() + v.size(), best) - v.data());
}

int positionOfMinimum(const Value& v) {
    return v.valueType() == DOUBLE_VAL ? firstPosition(asDouble(v), smallestOf) : v.indexOfMin();
}

int positionOfMaximum(const Value& v) {
    return v.valueType() == DOUBLE_VAL ? firstPosition(asDouble(v), largestOf) : v.indexOfMax();
}

/// The first extreme of a vector itself; 0 for an empty one.
double extremeOf(const Value& v, Extreme extreme) {
    if (v.isEmpty()) return 0;
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    const double best = extremeOfPieces(extreme, x[0], x.data(), x.size());
    // Zeros of both signs are equal, and the first one counts.
    return best == 0 ? x[firstPosition(x, extreme)] : best;
}

/// The sum of squares of integers, each square formed in 32 bits, where it
/// wraps around.
double squareSum(const IntValue& v) {
    double total = 0;
    for (const int x : v.items()) total += static_cast<int>(static_cast<unsigned>(x) * static_cast<unsigned>(x));
    return total;
}

}  // namespace

double sumOfElements(const Value& v) {
    DoubleValue scratch;
    double total = 0;
    for (const double x : asDoubles(v, scratch).items()) total += x;
    return total;
}

double sumOfSquares(const Value& v) {
    if (v.valueType() == INTEGER_VAL) return squareSum(asInt(v));
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    return squareSum(x.data(), x.size());
}

double mean(const Value& v) { return sumOfElements(v) / v.size(); }

double variance(const Value& v) {
    const double m = mean(v);
    return sumOfSquares(v) / v.size() - m * m;
}

double standardDeviation(const Value& v) { return std::sqrt(variance(v)); }

double minimum(const Value& v) { return extremeOf(v, smallestOf); }

double maximum(const Value& v) { return extremeOf(v, largestOf); }

double range(const Value& v) { return maximum(v) - minimum(v); }

double product(const Value& v) {
    DoubleValue scratch;
    double total = 1;
    for (const double x : asDoubles(v, scratch).items()) total *= x;
    return total;
}

double integralOfSamples(const Value& v) {
    DoubleValue scratch;
    return simpson(asDoubles(v, scratch).items(), 1.0);
}

double norm(const Value& v) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    // Two components may be near the ends of the range of doubles.
    return x.size() == 2 ? gsl_hypot(x[1], x[0]) : std::sqrt(sumOfSquares(x));
}

double lastElement(const Value& v) {
    Require(v.isNumericKind(), "?VORPEN BUG: jfunc::lastElement called for a list");
    if (v.isEmpty()) throw OperatorFailure{']'};
    DoubleValue scratch;
    return asDoubles(v, scratch)[v.size() - 1];
}

double trace(const Value& v) {
    DoubleValue scratch;
    const DoubleValue& m = asDoubles(v, scratch);
    Require(m.nrow() == m.ncol(), "non-square matrix", "trace");
    double total = 0;
    for (std::int64_t i = 0; i < m.nrow(); ++i) total += m.data()[i * m.nrow() + i];
    return total;
}

int allNonZero(const Value& v) { return v.allNonZero(); }

int anyNonZero(const Value& v) { return v.anyNonZero(); }

int minimumIndex(const Value& v) { return v.isEmpty() ? 0 : positionOfMinimum(v) + 1; }

int maximumIndex(const Value& v) { return v.isEmpty() ? 0 : positionOfMaximum(v) + 1; }

int firstNonZero(const Value& v) { return v.firstNonZero(); }

int lastNonZero(const Value& v) { return v.lastNonZero(); }

int size(const Value& v) { return v.size(); }

int rowCount(const Value& v) { return v.nrow(); }

int columnCount(const Value& v) { return v.columns(); }

int formOf(const Value& v) { return v.form(); }

int markOf(const Value& v) { return v.mark(); }

int isEmpty(const Value& v) { return v.isEmpty(); }

int isScalar(const Value& v) { return v.isScalar(); }

int isVector(const Value& v) { return v.isVector(); }

int isBoolean(const Value& v) { return v.isBool(); }

int isString(const Value& v) { return v.isString(); }

int isDefined(const Value&) {
    output().print("function isdefined is not yet implemented: sorry", true, PrintMode::markup);
    return 0;
}

}  // namespace vorpen::builtin
