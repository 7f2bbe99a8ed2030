// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The arithmetic of axes: which limits are shown for some data, how far apart
// the ticks stand and where the first one is, and how their numbers read. Pure
// functions of doubles; whatever comes in, the counts that go out are small.

#include <string>
#include <vector>

namespace vorpen {

/// A number taken apart into digits and a power of ten.
struct Sci {
    double rounded = 0;   ///< to the digits asked for, halves away from zero
    double mantissa = 0;  ///< rounded with the point behind its first digit
    int exponent = 0;
    double power = 0;  ///< 10 to the exponent

    bool operator==(const Sci&) const = default;
};

/// All zero for 0 and for what is not finite.
[[nodiscard]] Sci decompose(int digits, double value);

/// One axis of a frame. The ticks are filled in by chooseTicks.
struct AxisScale {
    double first = 0;  ///< the first major tick
    double step = 0;   ///< between major ticks; a factor unless `additive`
    int count = 0;     ///< of major ticks
    double minorStart = 0;
    double minorStep = 0;
    int minors = 0;  ///< minor ticks in a major interval; `logPattern` for lines at 2 to 9
    bool isY = false;
    int grid = 1;  ///< lines across the plot at major ticks when above 0
    bool linear = true;

    static constexpr int logPattern = -1;

    /// Whether major ticks are `step` apart, rather than a factor.
    [[nodiscard]] bool additive() const { return linear || minors == 0; }
};

struct AxisLimits {
    double min = 0, max = 1;
    bool operator==(const AxisLimits&) const = default;
};

/// The limits to show for data between min and max: rounded outward to `digits`
/// digits where that costs little, with a margin when digits is 2, down to zero
/// when that is near, and whole decades on a log axis.
[[nodiscard]] AxisLimits niceLimits(const AxisScale& axis, int digits, double min, double max);

/// Fills the ticks of an axis with these limits. There are none (count 0) when
/// the limits leave no room for any.
void chooseTicks(AxisScale& axis, double min, double max);

/// `count` numbers: first, then each the one before plus or times the step.
[[nodiscard]] std::vector<double> series(int count, bool additive, double step, double first);

/// The text of a number beside a tick.
[[nodiscard]] std::string formatTick(int digits, double value);

}  // namespace vorpen
