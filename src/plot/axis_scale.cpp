// SPDX-License-Identifier: GPL-3.0-or-later
#include "plot/axis_scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/number_text.h"

namespace vorpen {
namespace {

/// No axis has more ticks than this. The rules of chooseTicks stay far below
/// it unless rounding breaks down in a range that doubles cannot divide.
constexpr int maxTicks = 100;

/// A power of ten above this is applied in two steps, since one would overflow.
constexpr int maxPower = 300;

double powerOfTen(int exponent) { return std::pow(10.0, exponent); }

int toCount(double count) {
    return count > 0 ? static_cast<int>(std::min(count, static_cast<double>(maxTicks))) : 0;
}

double roundedTo(int digits, double value) { return decompose(digits, value).rounded; }

/// The margin that points of a curve keep from the top and bottom.
constexpr double margin = 0.1;

AxisLimits linearLimits(int digits, double min, double max) {
    if (digits == 2) {
        const double range = max - min;
        const double low = min, high = max;
        if (std::fabs(low) > 0.01 * range) min = low - margin * range;
        if (std::fabs(high) > 0.01 * range) max = high + margin * range;
    }
    const double unit = powerOfTen(1 - digits) * (max - min);
    if (min != 0) {
        const double round = roundedTo(digits, min);
        if (min > round && min - round < unit) min = round;
    }
    if (max != 0) {
        const double round = roundedTo(digits, max);
        if (round > max && round - max < unit) max = round;
    }
    const bool oneSign = (max > 0 && min > 0) || (max < 0 && min < 0);
    if (oneSign && max - min > 2 * std::min(std::fabs(min), std::fabs(max))) (min > 0 ? min : max) = 0;
    if (max == min) {
        const double apart = powerOfTen(-digits) * (std::fabs(min) + 1) * 0.5;
        min -= apart;
        max += apart;
    }
    return {min, max};
}

AxisLimits logLimits(int digits, double min, double max) {
    if (digits == 2 && min > 0 && max / min > 2) {
        max *= 1.1;
        min /= 1.1;
    }
    if (!(max > 0)) return {0.1, 1};
    if (!(min > 0)) return {max * 1e-10, max * 1.1};
    if (max / min < 5) {
        const double low = min / 1.3, high = 1.3 * max;
        return {std::min(low, roundedTo(1, low)), std::max(high, roundedTo(1, high))};
    }
    const double top = decompose(1, max).power, bottom = decompose(1, min).power;
    return {min >= bottom ? bottom : 0.1 * bottom, top >= max ? top : 10 * top};
}

double finite(double x) {
    constexpr double largest = std::numeric_limits<double>::max();
    return std::isnan(x) ? 0 : std::clamp(x, -largest, largest);
}

/// How a linear axis is divided, by the leading digit of its range.
struct Division {
    double step;  ///< in units of the range's power of ten
    int minors;
};

Division divisionOf(int leadingDigit) {
    if (leadingDigit <= 1) return {0.2, 4};
    if (leadingDigit <= 3) return {0.5, 5};
    if (leadingDigit <= 7) return {1, 5};
    return {2, 4};
}

/// A round number near the lower limit, one digit coarser than the step.
double anchorNear(double min, double step) {
    if (min == 0) return 0;
    const double magnitude = std::log10(std::fabs(min));
    const double digits = std::round(std::log10(std::fabs(min) / step)) - 1;
    const double scale = std::pow(10.0, digits - std::floor(magnitude) - 1);
    return std::copysign(std::round(scale * std::fabs(min)) / scale, min);
}

void chooseLinearTicks(AxisScale& axis, double min, double max) {
    const Sci range = decompose(1, max - min);
    const Division division = divisionOf(static_cast<int>(range.mantissa));
    axis.step = division.step * range.power;
    axis.minors = division.minors;
    axis.minorStep = axis.minorStart = axis.step / axis.minors;
    const double anchor = anchorNear(min, axis.step);
    axis.first = anchor - std::ceil((anchor - min) / axis.step) * axis.step;
    if (axis.first - min < -1e-6 * (max - min)) axis.first += axis.step;
    // Up to rounding; the largest ranges have no room for that.
    const double widened = (max - min) * 1.0000000001;
    axis.count = toCount(std::ceil((std::isfinite(widened) ? widened : max - min) / axis.step));
    if ((axis.count - 1) * axis.step + axis.first > max) --axis.count;
}

void chooseLogTicks(AxisScale& axis, double min, double max) {
    const double high = max > 0 ? max : 1e-50;
    const double low = min > 0 ? min : high * 1e-20;
    const double ratio = high / low;
    const double span = std::isfinite(ratio) ? std::log10(ratio) : std::log10(high) - std::log10(low);
    const int decades = static_cast<int>(std::clamp(std::ceil(span), -1.0, 1000.0));
    axis.first = std::pow(10.0, std::floor(std::log10(low)));
    if (decades >= 10) {
        axis.step = powerOfTen(decades / 5);
        axis.minorStart = axis.minorStep = 10;
        axis.count = 7;
        axis.minors = decades / 5;
    } else if (decades >= 2) {
        axis.step = 10;
        axis.minorStart = 2;
        axis.minorStep = 1;
        axis.minors = AxisScale::logPattern;
        axis.count = decades + 1;
    } else {
        axis.step = decompose(1, max - min).power;
        axis.minors = 0;
        axis.count = toCount((high - low) / axis.step) + 1;
    }
}

}  // namespace

Sci decompose(int digits, double value) {
    if (value == 0 || !std::isfinite(value)) return {};
    const double magnitude = std::fabs(value);
    int exponent = static_cast<int>(std::floor(std::log10(magnitude)));
    const int shift = digits - 1 - exponent;
    const int first = std::clamp(shift, -maxPower, maxPower);
    // The digits as a whole number; negative powers divide, as they are inexact.
    const auto shifted = [](double x, int power) {
        return power < 0 ? x / powerOfTen(-power) : x * powerOfTen(power);
    };
    const double whole = std::round(shifted(shifted(magnitude, first), shift - first));
    const double rounded = shifted(shifted(whole, -(shift - first)), -first);
    const double unit = powerOfTen(digits - 1);
    double mantissa = whole / unit;
    if (mantissa >= 10) {
        mantissa /= 10;
        ++exponent;
    } else if (mantissa < 1) {
        // The logarithm was rounded up to the next whole number.
        mantissa *= 10;
        --exponent;
    }
    return {std::copysign(rounded, value), std::copysign(mantissa, value), exponent, powerOfTen(exponent)};
}

AxisLimits niceLimits(const AxisScale& axis, int digits, double min, double max) {
    const AxisLimits limits = axis.linear ? linearLimits(digits, min, max) : logLimits(digits, min, max);
    return {finite(limits.min), finite(limits.max)};
}

void chooseTicks(AxisScale& axis, double min, double max) {
    if (axis.linear)
        chooseLinearTicks(axis, min, max);
    else
        chooseLogTicks(axis, min, max);
    const bool usable = std::isfinite(axis.first) && std::isfinite(axis.step) && axis.step > 0;
    if (!usable || axis.count < 0) axis.count = 0;
}

std::vector<double> series(int count, bool additive, double step, double first) {
    std::vector<double> numbers(static_cast<std::size_t>(std::max(count, 0)));
    double number = first;
    for (double& out : numbers) {
        out = number;
        number = additive ? number + step : number * step;
    }
    return numbers;
}

std::string formatTick(int digits, double value) { return doubleText(value, digits); }

}  // namespace vorpen
