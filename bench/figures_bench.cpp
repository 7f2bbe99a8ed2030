// SPDX-License-Identifier: GPL-3.0-or-later
// Figures written as SVG text: the road of the many points of a curve, and that
// of the many small elements of frames with axes.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

#include "plot/figure.h"

namespace vorpen {
namespace {

void plotSine(Frame& frame, int points) {
    std::vector<double> x, y;
    for (int k = 0; k < points; ++k) {
        x.push_back(k * 1e-3);
        y.push_back(std::sin(x.back()));
    }
    frame.setLimits(x.front(), x.back(), -1, 1);
    frame.addItem(std::make_unique<AxisTicks>());
    frame.addItem(std::make_unique<Curve>(std::move(x), std::move(y), ""));
}

void write(benchmark::State& state, Figure& figure) {
    for (auto _ : state) {
        std::string text;
        figure.writeSvg(text);
        benchmark::DoNotOptimize(text.data());
    }
}

void curveToSvg(benchmark::State& state) {
    Figure figure(1);
    plotSine(figure.frame(0), static_cast<int>(state.range(0)));
    write(state, figure);
}
BENCHMARK(curveToSvg)->Arg(100000)->Unit(benchmark::kMicrosecond);

void framesToSvg(benchmark::State& state) {
    Figure figure(1);
    for (int k = 0; k < 100; ++k) {
        figure.selectFrame({k % 10 * 0.1, k / 10 * 0.1, 0.1, 0.1});
        plotSine(figure.currentFrame(), 100);
    }
    write(state, figure);
}
BENCHMARK(framesToSvg)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace vorpen
