// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/array_bodies.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include "base/interrupt.h"
#include "builtins/arguments.h"
#include "builtins/function_arguments.h"
#include "builtins/reduction_bodies.h"

namespace vorpen::builtin {
namespace {

constexpr std::int64_t defaultPoints = 100;

/// Points of a row that starts at a; each is the one before plus the step.
void runningRow(double a, double b, std::int64_t n, DoubleValue& out) {
    if (n < 1) return makeEmpty(out);
    shapeResult(out, 1, n);
    const double step = (b - a) / static_cast<double>(n - 1);
    double x = a;
    for (double& item : out.items()) {
        item = x;
        x += step;
    }
}

/// An array of one value, of the sizes that `zeros` and `ones` understand.
void filledArray(const Value& sizes, double item, DoubleValue& out) {
    DoubleValue scratch;
    const DoubleValue& n = asDoubles(sizes, scratch);
    if (n.isEmpty()) return makeEmpty(out);
    Require(std::ranges::none_of(n.items(), [](double x) { return x < 0; }), "size must be non-negative",
            "zeros/ones");
    Require(n.size() <= 3, "too many indices");
    const std::int64_t rows = countOf(n[0]);
    const std::int64_t columns = n.size() > 1 ? countOf(n[1]) : rows;
    if (n.size() < 3) {
        shapeResult(out, rows, columns);
    } else {
        // The mark has 27 bits for the number of planes.
        const std::int64_t planes = countOf(n[2]);
        if (planes > maxElements / 16) throw std::bad_alloc();
        shapeResult(out, rows, dimensionOf(columns) * planes);
        out.setMark(static_cast<int>(planes) * 16 + FORM_3D);
    }
    std::ranges::fill(out.items(), item);
}

void diagonalMatrix(const DoubleValue& v, std::int64_t k, DoubleValue& out) {
    const std::int64_t n = v.size() + std::abs(k);
    DoubleValue m;
    shapeResult(m, n, n);
    std::ranges::fill(m.items(), 0.0);
    const std::int64_t first = k >= 0 ? k * n : -k;
    for (std::int64_t i = 0; i < v.size(); ++i) m.data()[first + i * (n + 1)] = v.data()[i];
    out.adopt(std::move(m));
}

void diagonalOfMatrix(const DoubleValue& m, std::int64_t k, DoubleValue& out) {
    const std::int64_t n = m.nrow();
    Require(n == m.ncol(), "non-square matrix", "diag");
    DoubleValue d;
    shapeVector(d, std::max<std::int64_t>(n - std::abs(k), 0), true);
    for (std::int64_t i = 0; i < d.size(); ++i) d.data()[i] = m.data()[k >= 0 ? (k + i) * n + i : i * n + i - k];
    out.adopt(std::move(d));
}

const DoubleValue& vectorArgument(const Value& v, DoubleValue& scratch, std::string_view name) {
    Require(v.isVector(), "argument must be a vector", name);
    return asDoubles(v, scratch);
}

/// A vector that is `less` elements shorter than v; each element is a function
/// of its position in v.
template <class Element>
void shorterVector(const DoubleValue& v, int less, DoubleValue& out, Element element) {
    DoubleValue result;
    if (v.size() <= less)
        makeEmpty(result);
    else
        shapeVector(result, v.size() - less, isColumn(v));
    for (int i = 0; i < result.size(); ++i) result[i] = element(i);
    out.adopt(std::move(result));
}

/// The derivative at each of n >= 3 samples. Inside it is the five-point
/// formula, next to the ends the central difference, and the ends are extended
/// by the second difference.
void derivativeOf(const double* y, std::int64_t n, double* d) {
    for (std::int64_t i = 1; i < n - 1; ++i) d[i] = (y[i + 1] - y[i - 1]) / 2;
    for (std::int64_t i = 2; i < n - 2; ++i) d[i] = (8 * (y[i + 1] - y[i - 1]) - (y[i + 2] - y[i - 2])) / 12;
    d[0] = d[1] - (y[2] - 2 * y[1] + y[0]);
    d[n - 1] = d[n - 2] + (y[n - 1] - 2 * y[n - 2] + y[n - 3]);
}

/// Components of a graph by union and find.
class VertexSets {
public:
    explicit VertexSets(int n) : parent_(n) { std::iota(parent_.begin(), parent_.end(), 0); }
    int find(int vertex) {
        while (parent_[vertex] != vertex) vertex = parent_[vertex] = parent_[parent_[vertex]];
        return vertex;
    }
    /// The root of a set is its first vertex.
    void join(int a, int b) {
        const auto [first, second] = std::minmax({find(a), find(b)});
        parent_[second] = first;
    }

private:
    std::vector<int> parent_;
};

/// The component of each vertex, numbered from 1 by first vertex.
std::vector<int> componentNumbers(const Value& adjacency) {
    constexpr std::string_view fault = "invalid adjacency matrix";
    Require(adjacency.valueType() <= DOUBLE_VAL && adjacency.nrow() == adjacency.ncol(), fault);
    DoubleValue scratch;
    const DoubleValue& m = asDoubles(adjacency, scratch);
    Require(std::ranges::all_of(m.items(), [](double x) { return x == 0 || x == 1; }), fault);
    const int n = m.nrow();
    VertexSets sets(n);
    for (int c = 0; c < n; ++c)
        for (int r = 0; r < n; ++r)
            if (m.data()[std::int64_t{c} * n + r] == 1) sets.join(r, c);
    std::vector<int> numbers(n);
    int count = 0;
    for (int v = 0; v < n; ++v) {
        const int root = sets.find(v);
        numbers[v] = root == v ? ++count : numbers[root];
    }
    return numbers;
}

/// Calls work(result, number of the point) with the function's result at each
/// point, as doubles.
template <class Work>
void forEachPoint(const FunctionArgs& bound, Work work) {
    // The points may be a variable that the function changes.
    const DoubleValue points(*bound.point);
    DoubleValue point(0.0);
    MethodFunction function(bound);
    function.setCallInputs(bound.parameter, &point);
    for (int i = 0; i < points.size(); ++i) {
        point[0] = points[i];
        work(function.evaluate(), i);
    }
}

void sumOfResults(const FunctionArgs& bound, DoubleValue& out) {
    DoubleValue total;
    forEachPoint(bound, [&](const DoubleValue& result, int i) {
        if (i == 0) {
            total.setSizeShapeMark(result.size(), result.nrow(), FORM_NUMERIC);
            std::ranges::copy(result.items(), total.data());
        } else {
            if (result.size() != total.size()) throw OperatorFailure{'+'};
            for (int k = 0; k < total.size(); ++k) total[k] += result[k];
        }
    });
    out.adopt(std::move(total));
}

void tableOfResults(const FunctionArgs& bound, DoubleValue& out) {
    DoubleValue rows;
    const std::int64_t count = bound.point->size();
    forEachPoint(bound, [&](const DoubleValue& result, int i) {
        if (i == 0) {
            shapeResult(rows, count, result.size());
            std::ranges::fill(rows.items(), 0.0);
        }
        Require(result.size() <= rows.ncol(), "a table row is longer than the first row");
        for (int k = 0; k < result.size(); ++k) rows.data()[k * count + i] = result[k];
    });
    out.adopt(std::move(rows));
}

/// The sums of the first elements, from `total` on; answers the last. A loop of
/// its own, so that the sum stays in its register.
[[gnu::noinline]] double addUp(const double* from, double* to, std::int64_t n, double total) {
    for (std::int64_t i = 0; i < n; ++i) to[i] = total += from[i];
    return total;
}

}  // namespace

void evenlySpaced(const Value& limits, DoubleValue& out) {
    Require(limits.size() == 2 || limits.size() == 3, "need 2 or 3 scalar arguments", "seq");
    DoubleValue scratch;
    const DoubleValue& v = asDoubles(limits, scratch);
    runningRow(v[0], v[1], v.size() == 3 ? countOf(v[2]) : defaultPoints, out);
}

void zeros(const Value& sizes, DoubleValue& out) { filledArray(sizes, 0, out); }

void ones(const Value& sizes, DoubleValue& out) { filledArray(sizes, 1, out); }

void identity(const Value& size, DoubleValue& out) {
    Require(size.isScalar(), "argument must be a scalar", "eye");
    const std::int64_t n = countOf(size.doubleValue());
    Require(n >= 0, "size must be non-negative", "eye");
    shapeResult(out, n, n);
    std::ranges::fill(out.items(), 0.0);
    for (std::int64_t i = 0; i < n; ++i) out.data()[i * (n + 1)] = 1;
}

void reshape(const Value& v, const DoubleValue* shape, Value& out) {
    std::int64_t rows = 1, columns = v.size();
    if (shape) {
        Require(!shape->isEmpty(), "empty shape", "reshape");
        Require(shape->size() <= 2, "too many dimensions", "reshape");
        rows = countOf((*shape)[0]);
        columns = countOf((*shape)[shape->size() - 1]);
        const bool fits = rows >= 0 && columns >= 0 && rows <= maxElements && columns <= maxElements;
        Require(fits && rows * columns == v.size(), "invalid: does not preserve the size", "reshape");
    }
    const int mark = partMark(v);
    out.copyFrom(v);
    out.setNrow(static_cast<int>(rows));
    out.setMark(mark);
}

void diagonal(const Value& v, const DoubleValue* k, Value& result) {
    DoubleValue& out = doubleResult(result, "diag");
    Require(!k || k->isScalar(), "2nd argument must be scalar", "diag");
    const std::int64_t offset = k ? countOf((*k)[0]) : 0;
    DoubleValue scratch;
    const DoubleValue& in = asDoubles(v, scratch);
    if (in.isVector())
        diagonalMatrix(in, offset, out);
    else
        diagonalOfMatrix(in, offset, out);
}

void complexFromParts(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    DoubleValue realScratch, imagScratch;
    const DoubleValue& re = asDoubles(argumentValue(arguments[0]), realScratch);
    const DoubleValue& im = asDoubles(argumentValue(arguments[1]), imagScratch);
    Require(re.size() == im.size(), "real and imaginary parts of different size", "complex");
    ComplexValue& out = asComplex(result);
    out.setSizeShapeMark(re.size(), re.nrow(), FORM_COMPLEX);
    for (int i = 0; i < re.size(); ++i) out[i] = {re[i], im[i]};
}

void findAll(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    const auto count = std::ranges::count_if(x.items(), [](double item) { return item != 0; });
    shapeVector(out, count, x.nrow() != 1);
    for (int i = 0, k = 0; i < x.size(); ++i)
        if (x[i] != 0) out[k++] = i + 1;
}

void shape(const Value& v, IntValue& out) {
    const int rows = v.nrow(), columns = v.columns();
    shapeResult(out, 1, 2);
    out[0] = rows;
    out[1] = columns;
}

void runningSum(const Value& v, DoubleValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    out.setSizeShapeMark(x.size(), x.nrow(), x.mark());
    double total = 0;
    inRounds(x.size(), [&](std::int64_t begin, std::int64_t end) {
        total = addUp(x.data() + begin, out.data() + begin, end - begin, total);
    });
}

void reverse(const Value& v, DoubleValue& out) {
    out.copyFrom(v);
    std::ranges::reverse(out.items());
}

void columnSums(const Value& m, DoubleValue& out) {
    DoubleValue scratch, sums;
    const DoubleValue& x = asDoubles(m, scratch);
    shapeResult(sums, 1, x.ncol());
    for (int c = 0; c < sums.size(); ++c) {
        const double* column = x.data() + std::int64_t{c} * x.nrow();
        sums[c] = std::accumulate(column, column + x.nrow(), 0.0);
    }
    out.adopt(std::move(sums));
}

void rowSums(const Value& m, DoubleValue& out) {
    DoubleValue scratch, sums;
    const DoubleValue& x = asDoubles(m, scratch);
    shapeResult(sums, x.nrow(), 1);
    std::ranges::fill(sums.items(), 0.0);
    for (int c = 0; c < x.ncol(); ++c) {
        const double* column = x.data() + std::int64_t{c} * x.nrow();
        for (int r = 0; r < x.nrow(); ++r) sums[r] += column[r];
    }
    out.adopt(std::move(sums));
}

void differences(const Value& v, DoubleValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = vectorArgument(v, scratch, "diff");
    shorterVector(x, 1, out, [&](int i) { return x[i + 1] - x[i]; });
}

void secondDifferences(const Value& v, DoubleValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = vectorArgument(v, scratch, "diff2");
    shorterVector(x, 2, out, [&](int i) { return x[i + 2] - 2 * x[i + 1] + x[i]; });
}

void sampledDerivative(const Value& v, DoubleValue& out) {
    DoubleValue scratch, d;
    const DoubleValue& y = vectorArgument(v, scratch, "vdiffer");
    d.setSizeShapeMark(y.size(), y.nrow(), FORM_NUMERIC);
    if (y.size() >= 3)
        derivativeOf(y.data(), y.size(), d.data());
    else
        std::ranges::fill(d.items(), y.size() == 2 ? y[1] - y[0] : 0.0);
    out.adopt(std::move(d));
}

void sum(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    DoubleValue& out = asDouble(result);
    if (arguments[0].function) return sumOfResults(bindFunctionArgs(arguments), out);
    const Value& v = argumentValue(arguments[0]);
    Require(arguments.size() <= 2, "1st argument must be a function");
    if (arguments.size() == 1) {
        if (v.isVector())
            out.assignDouble(sumOfElements(v));
        else
            columnSums(v, out);
        return;
    }
    const Value& dimension = argumentValue(arguments[1]);
    Require(dimension.isScalar(), "second argument must be a scalar here (to sum two vectors use +)", "sum");
    switch (dimension.intValue()) {
        case 1: raiseRuntimeError("sum along rows not yet implemented");
        case 2: raiseRuntimeError("for column sums please use colsum");
        default: raiseRuntimeError("dimension > 2 not yet implemented");
    }
}

void table(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    tableOfResults(bindFunctionArgs(arguments), asDouble(out));
}

double componentCount(const Value& adjacency) {
    const std::vector<int> numbers = componentNumbers(adjacency);
    return numbers.empty() ? 0 : *std::ranges::max_element(numbers);
}

void components(const Value& adjacency, IntValue& out) {
    const std::vector<int> numbers = componentNumbers(adjacency);
    shapeResult(out, 1, static_cast<std::int64_t>(numbers.size()));
    std::ranges::copy(numbers, out.data());
}

}  // namespace vorpen::builtin
