// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What bodies of built-in functions need of the engine that runs them. A body
// is a plain function, so it asks this one record; the engine fills it when it
// is made. The console is reached through console(), the last answer through
// runState().

#include <functional>
#include <string>

#include "base/host.h"
#include "files/dir.h"
#include "values/mathmatrix.h"

namespace vorpen {

struct FitFigure;

struct EngineContext {
    Host* host = nullptr;
    Dir* paths = nullptr;

    /// Compiles a text as an expression and stores its value.
    std::function<void(const std::string& text, DoubleValue& out)> evaluateText;

    /// Draws a fit; missing where there are no figures.
    std::function<void(const FitFigure& figure)> drawFit;

    /// Where `toc` counts from, in seconds of the host's clock.
    double ticBase = 0;

    /// What a script keeps with the mouse, by `setmouse`.
    DoubleValue mouseValue{0.0};

    /// The surroundings; there must be some.
    [[nodiscard]] Host& surroundings() const;
    [[nodiscard]] Dir& directories() const;
};

[[nodiscard]] EngineContext& engineContext();

}  // namespace vorpen
