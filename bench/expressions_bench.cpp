// SPDX-License-Identifier: GPL-3.0-or-later
// Element-wise expressions against the same loop written by hand: the loop is
// what the machine allows on one thread.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"

namespace vorpen {
namespace {

struct Arrays {
    explicit Arrays(int n) {
        for (DoubleValue* v : {&a, &b, &c, &d, &e}) {
            v->setShape(1, n);
            for (int i = 0; i < n; ++i) (*v)[i] = 1.0 + (i % 1000) * 0.001;
        }
    }
    DoubleValue a, b, c, d, e;
};

EvaluatablePtr variable(DoubleValue& v) { return std::make_unique<ValueElement>(&v); }

/// a + b*c - d/e
EvaluatablePtr arithmetic(Arrays& x) {
    ExpressionItems items;
    items.push_back({variable(x.a), OP_PLUS});
    items.push_back({variable(x.b), OP_TIMES});
    items.push_back({variable(x.c), OP_MINUS});
    items.push_back({variable(x.d), OP_DIVIDE});
    items.push_back({variable(x.e), OP_END});
    return std::make_unique<SimpleExpression>(std::move(items), DOUBLE_VAL);
}

/// sqrt(a) * exp(b)
EvaluatablePtr functions(Arrays& x) {
    ExpressionItems items;
    items.push_back({std::make_unique<SimpleFuncElement>(
                         variable(x.a), [](double t) { return std::sqrt(t); }, true),
                     OP_TIMES});
    items.push_back({std::make_unique<SimpleFuncElement>(
                         variable(x.b), [](double t) { return std::exp(t); }, true),
                     OP_END});
    return std::make_unique<SimpleExpression>(std::move(items), DOUBLE_VAL);
}

template <class Make>
void runExpression(benchmark::State& state, Make make) {
    Arrays x(static_cast<int>(state.range(0)));
    const EvaluatablePtr expression = make(x);
    DoubleValue result;
    for (auto _ : state) benchmark::DoNotOptimize(expression->evaluate(&result));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void expressionArithmetic(benchmark::State& state) { runExpression(state, arithmetic); }
void expressionFunctions(benchmark::State& state) { runExpression(state, functions); }

template <class Loop>
void runLoop(benchmark::State& state, Loop loop) {
    Arrays x(static_cast<int>(state.range(0)));
    DoubleValue result;
    result.setShape(1, x.a.size());
    for (auto _ : state) {
        for (int i = 0; i < result.size(); ++i) result[i] = loop(x, i);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void loopArithmetic(benchmark::State& state) {
    Arrays x(static_cast<int>(state.range(0)));
    std::vector<double> result(x.a.size());
    const double *a = x.a.data(), *b = x.b.data(), *c = x.c.data(), *d = x.d.data(), *e = x.e.data();
    double* out = result.data();
    const std::size_t n = result.size();
    for (auto _ : state) {
        for (std::size_t i = 0; i < n; ++i) out[i] = a[i] + b[i] * c[i] - d[i] / e[i];
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void loopFunctions(benchmark::State& state) {
    runLoop(state, [](const Arrays& x, int i) { return std::sqrt(x.a[i]) * std::exp(x.b[i]); });
}

/// The same expression on scalars: what an operator costs in a loop.
void expressionScalars(benchmark::State& state) {
    Arrays x(1);
    const EvaluatablePtr expression = arithmetic(x);
    DoubleValue result;
    for (auto _ : state) benchmark::DoNotOptimize(expression->evaluate(&result));
}

BENCHMARK(expressionScalars);
BENCHMARK(expressionArithmetic)->Arg(100)->Arg(10000)->Arg(10000000);
BENCHMARK(loopArithmetic)->Arg(100)->Arg(10000)->Arg(10000000);
BENCHMARK(expressionFunctions)->Arg(100)->Arg(10000000);
BENCHMARK(loopFunctions)->Arg(100)->Arg(10000000);

}  // namespace
}  // namespace vorpen
