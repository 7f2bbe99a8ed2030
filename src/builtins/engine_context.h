// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What bodies of built-in functions need of the engine that runs them. A body
// is a plain function, so it asks the one record that is current; each engine
// has one of its own and fills it when it is made. The console is reached
// through console(), the last answer through runState().

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

    /// Whether the compiler puts stops where the source has a breakpoint, by
    /// `debug`.
    bool debugEnabled = true;

    /// The surroundings; there must be some.
    [[nodiscard]] Host& surroundings() const;
    [[nodiscard]] Dir& directories() const;
};

/// The record that is current; one that belongs to no engine when none has
/// been set.
[[nodiscard]] EngineContext& engineContext();

/// Makes a record the current one; null goes back to the one of no engine,
/// emptied. The caller keeps ownership.
void setEngineContext(EngineContext* context);

}  // namespace vorpen
