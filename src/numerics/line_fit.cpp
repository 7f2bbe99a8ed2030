// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/line_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/errors.h"
#include "numerics/incomplete_gamma.h"

namespace vorpen {
namespace {

constexpr std::size_t blockLength = 10;

/// From this number of points on an estimated error is good enough to judge
/// the fit by.
constexpr std::size_t enoughForProbability = 30;

/// A deviation of so many errors is dubious in any number of points, ...
constexpr double dubiousAlways = 6;
/// ... and one of so many in fewer points than these, among which chance has
/// hardly one.
constexpr double dubiousAmongFew = 4;
constexpr std::size_t few = 1000;

/// A line and the sums that its errors are made of.
struct Line {
    double a, b;
    double s, sx, stt;
};

double interceptOf(const Line& line, double sy) { return (sy - line.sx * line.b) / line.s; }

Line lineWithOneError(std::span<const double> x, std::span<const double> y, double error) {
    const double weight = 1 / (error * error);
    double sx = 0, sy = 0;
    for (const double item : x) sx += item;
    for (const double item : y) sy += item;
    Line line{};
    line.s = static_cast<double>(x.size()) / (error * error);
    line.sx = sx * weight;
    const double centre = line.sx / line.s;
    double sty = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double t = x[i] - centre;
        line.stt += t * t;
        sty += t * y[i];
    }
    line.b = sty / line.stt;
    line.stt /= error * error;
    line.a = interceptOf(line, sy * weight);
    return line;
}

Line lineWithErrors(std::span<const double> x, std::span<const double> y, std::span<const double> errors) {
    Line line{};
    double sy = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double weight = 1 / (errors[i] * errors[i]);
        line.s += weight;
        line.sx += x[i] * weight;
        sy += y[i] * weight;
    }
    const double centre = line.sx / line.s;
    double sty = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double t = (x[i] - centre) / errors[i];
        line.stt += t * t;
        sty += t * y[i] / errors[i];
    }
    line.b = sty / line.stt;
    line.a = interceptOf(line, sy);
    return line;
}

double residual(const Line& line, double x, double y) { return y - line.a - line.b * x; }

bool isDubious(double deviation, std::size_t n) {
    return deviation > dubiousAlways || (deviation > dubiousAmongFew && n < few);
}

double probability(std::size_t n, double chi2) {
    return n < 3 ? 1 : gammaQ(static_cast<double>(n - 2) / 2, chi2 / 2);
}

/// Fits with known errors.
LineFit fitWithErrors(std::span<const double> x, std::span<const double> y, std::span<const double> errors) {
    const std::size_t n = x.size();
    const bool same = errors.size() == 1;
    const Line line = same ? lineWithOneError(x, y, errors[0]) : lineWithErrors(x, y, errors);
    LineFit fit{};
    fit.a = line.a;
    fit.b = line.b;
    fit.sigmaA = std::sqrt((1 + line.sx * line.sx / (line.s * line.stt)) / line.s);
    fit.sigmaB = std::sqrt(1 / line.stt);
    fit.errors.assign(errors.begin(), errors.end());
    fit.residuals.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        fit.residuals[i] = residual(line, x[i], y[i]);
        const double deviation = fit.residuals[i] / errors[same ? 0 : i];
        fit.chi2 += deviation * deviation;
        if (isDubious(std::fabs(deviation), n)) ++fit.dubiousPoints;
    }
    return fit;
}

LineFit fitWithoutErrors(std::span<const double> x, std::span<const double> y) {
    const double noise = estimateNoise(x, y);
    const bool usable = noise > 0;
    const double error = usable ? noise : 1;
    LineFit fit = fitWithErrors(x, y, {&error, 1});
    fit.q = usable && x.size() >= enoughForProbability ? probability(x.size(), fit.chi2) : 1;
    if (!usable) {
        fit.sigmaA = fit.sigmaB = fit.chi2 = 0;
        fit.errors = {0.0};
        fit.dubiousPoints = 0;
    }
    return fit;
}

const char* remarkOnProbability(int dubiousPoints, double q, std::size_t n, double chi2) {
    if (q < 1e-6) return "q is extremely low: treat results with caution";
    if (q < 0.001) {
        if (dubiousPoints == 0) return "q is rather low. Has dy error been set too low?";
        const bool many = static_cast<std::size_t>(dubiousPoints) * 10 >= n;
        return many ? "low q and many outliers" : "q is rather low. Query outliers?";
    }
    if (q < 0.01)
        return dubiousPoints > 0 ? "Unlikely result, maybe owing to outliers"
                                 : "Unlikely result ... just acceptable";
    const std::size_t expected = n < 2 ? 0 : (n - 2) / 2;
    if (q >= 0.01 && static_cast<double>(expected) > chi2)
        return "small chi^2 : data may be better than you think";
    return "";
}

/// The power of ten of the first digit.
int leadingPower(double x) {
    int power = static_cast<int>(std::floor(std::log10(x)));
    // Just below a power of ten the logarithm is that of the power.
    if (std::pow(10.0, power) > x) --power;
    return power;
}

/// x as a multiple of a power of ten. A multiplication or division by a whole
/// power of ten leaves the double that is nearest to the decimal number.
double roundedToPower(double x, int power) {
    const double scale = std::pow(10.0, std::abs(power));
    const double multiple = power < 0 ? x * scale : x / scale;
    const bool wholeAlready = !(std::fabs(multiple) < 1 / std::numeric_limits<double>::epsilon());
    if (wholeAlready) return x;
    const double rounded = std::round(multiple) + 0.0;  // what is rounded to 0 loses its sign
    return power < 0 ? rounded / scale : rounded * scale;
}

}  // namespace

double estimateNoise(std::span<const double> x, std::span<const double> y) {
    const std::size_t blocks = std::max<std::size_t>(x.size() / blockLength, 1);
    double variances = 0;
    for (std::size_t k = 0; k < blocks; ++k) {
        const std::size_t first = k * blockLength;
        const std::size_t points = k + 1 < blocks ? blockLength : x.size() - first;
        const auto blockX = x.subspan(first, points), blockY = y.subspan(first, points);
        const Line line = lineWithOneError(blockX, blockY, 1);
        double squares = 0;
        for (std::size_t i = 0; i < points; ++i) {
            const double r = residual(line, blockX[i], blockY[i]);
            squares += r * r;
        }
        variances += squares / (static_cast<double>(points) - 2);
    }
    return std::sqrt(variances / static_cast<double>(blocks));
}

LineFit fitLine(std::span<const double> x, std::span<const double> y, std::span<const double> errors) {
    Require(x.size() >= 2, "not enough points");
    if (errors.empty()) return fitWithoutErrors(x, y);
    LineFit fit = fitWithErrors(x, y, errors);
    fit.q = probability(x.size(), fit.chi2);
    return fit;
}

std::string fitRemark(int dubiousPoints, double q, std::size_t n, double chi2) {
    const std::string remark = remarkOnProbability(dubiousPoints, q, n, chi2);
    if (dubiousPoints == 0) return remark;
    if (dubiousPoints > 1) return std::to_string(dubiousPoints) + " dubious points. " + remark;
    return remark.empty() ? "1 dubious point" : "1 dubious point. " + remark;
}

ValueWithError roundedToError(double value, double error) {
    // The power of ten that undoes a smaller one would not be finite.
    constexpr double smallest = 1e-300;
    if (!(error >= smallest) || std::isinf(error)) return {value, error};
    const int power = leadingPower(error);
    return {roundedToPower(value, power), roundedToPower(error, power)};
}

}  // namespace vorpen
