// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/curve_fit.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/errors.h"
#include "base/multiversion.h"
#include "base/output.h"
#include "numerics/incomplete_gamma.h"
#include "numerics/lu.h"

namespace vorpen {
namespace {

/// The step of the derivatives, the same for all parameters.
constexpr double derivativeStep = 1e-08;

constexpr double firstLambda = 0.001;
constexpr int maxRounds = 1000;
constexpr int smallChangesToStop = 4;

/// The sum of products, in lanes so that it runs as fast as memory.
VORPEN_MULTIVERSION
double dot(const double* a, const double* b, std::size_t n) {
    constexpr std::size_t lanes = 16;
    std::array<double, lanes> sums{};
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        for (std::size_t j = 0; j < lanes; ++j) sums[j] += a[i + j] * b[i + j];
    for (; i < n; ++i) sums[0] += a[i] * b[i];
    for (std::size_t half = lanes / 2; half > 0; half /= 2)
        for (std::size_t j = 0; j < half; ++j) sums[j] += sums[j + half];
    return sums[0];
}

VORPEN_MULTIVERSION
void subtract(const double* a, const double* b, double* result, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) result[i] = a[i] - b[i];
}

VORPEN_MULTIVERSION
void forwardDifference(const double* moved, const double* values, double* result, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) result[i] = (moved[i] - values[i]) / derivativeStep;
}

VORPEN_MULTIVERSION
void multiply(const double* a, const double* b, double* result, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) result[i] = a[i] * b[i];
}

/// Takes the place of the console for a while and notes whether anything was
/// to be shown.
class SilentOutput final : public Output {
public:
    SilentOutput() : former_(output()) { setOutput(this); }
    ~SilentOutput() override { setOutput(&former_); }
    void print(std::string_view, bool, PrintMode) override { spoken_ = true; }
    [[nodiscard]] bool spoken() const { return spoken_; }

private:
    Output& former_;
    bool spoken_ = false;
};

/// The linearised problem at some parameters.
struct NormalEquations {
    std::vector<double> parameters;
    std::vector<double> alpha;  ///< design times design, by column
    std::vector<double> beta;   ///< design times residuals
    double chi2 = 0;
};

class LevenbergMarquardt {
public:
    LevenbergMarquardt(CurveModel model, const CurveData& data, std::span<const double> start,
                       std::span<const char> free)
        : model_(model), y_(data.y) {
        for (std::size_t i = 0; i < free.size(); ++i)
            if (free[i]) free_.push_back(i);
        weights_.reserve(data.sigma.size());
        for (const double sigma : data.sigma) weights_.push_back(1 / (sigma * sigma));
        values_.resize(points());
        residuals_.resize(points());
        if (!weights_.empty()) weighted_.resize(points());
        design_.resize(points() * freeCount());
        for (NormalEquations* equations : {&current_, &trial_}) {
            equations->parameters.assign(start.begin(), start.end());
            equations->alpha.resize(freeCount() * freeCount());
            equations->beta.resize(freeCount());
        }
    }

    /// Whether the fit converged.
    bool run(double tol) {
        computeNormal(current_);
        double lambda = firstLambda;
        int smallChanges = 0;
        for (int round = 0; round < maxRounds; ++round) {
            if (!takeStep(lambda)) {
                lambda *= 10;
                continue;
            }
            computeNormal(trial_);
            const double tolerance = std::max(tol, tol * trial_.chi2);
            if (std::fabs(trial_.chi2 - current_.chi2) < tolerance) ++smallChanges;
            const bool nearer =
                trial_.chi2 < current_.chi2 || (std::isnan(current_.chi2) && !std::isnan(trial_.chi2));
            if (nearer) std::swap(current_, trial_);
            lambda *= nearer ? 0.1 : 10;
            if (smallChanges >= smallChangesToStop) return true;
        }
        return false;
    }

    [[nodiscard]] CurveFit result() {
        const auto values = model_(current_.parameters);
        CurveFit fit{};
        fit.values.assign(values.begin(), values.end());
        fit.parameters = current_.parameters;
        fit.chi2 = current_.chi2;
        fit.degreesOfFreedom = static_cast<int>(points()) - static_cast<int>(freeCount());
        fit.q = fit.degreesOfFreedom < 1 ? 1 : gammaQ(fit.degreesOfFreedom * 0.5, fit.chi2 / 2);
        LuForm lu;
        lu.factorise(current_.alpha, freeCount());
        fit.covariance.resize(freeCount() * freeCount());
        lu.inverse(fit.covariance);
        for (std::size_t i = 0; i < freeCount(); ++i)
            fit.errors.push_back(std::sqrt(fit.covariance[i + i * freeCount()]));
        return fit;
    }

private:
    [[nodiscard]] std::size_t points() const { return y_.size(); }
    [[nodiscard]] std::size_t freeCount() const { return free_.size(); }
    [[nodiscard]] double* designColumn(std::size_t k) { return design_.data() + k * points(); }

    /// Evaluates the model and its derivatives at the parameters.
    void computeNormal(NormalEquations& equations) {
        std::ranges::copy(model_(equations.parameters), values_.begin());
        for (std::size_t k = 0; k < freeCount(); ++k) {
            double& parameter = equations.parameters[free_[k]];
            const double kept = parameter;
            parameter = kept + derivativeStep;
            const auto moved = model_(equations.parameters);
            parameter = kept;
            forwardDifference(moved.data(), values_.data(), designColumn(k), points());
        }
        subtract(y_.data(), values_.data(), residuals_.data(), points());
        equations.chi2 = dot(weighted(residuals_.data()), residuals_.data(), points());
        for (std::size_t k = 0; k < freeCount(); ++k) {
            const double* const column = weighted(designColumn(k));
            equations.beta[k] = dot(column, residuals_.data(), points());
            for (std::size_t j = 0; j <= k; ++j) {
                const double product = dot(column, designColumn(j), points());
                equations.alpha[j + k * freeCount()] = equations.alpha[k + j * freeCount()] = product;
            }
        }
    }

    /// The column times the weights, until the next call.
    const double* weighted(const double* column) {
        if (weights_.empty()) return column;
        multiply(column, weights_.data(), weighted_.data(), points());
        return weighted_.data();
    }

    /// Puts the parameters one step farther into the trial. False when the
    /// normal matrix is singular; a greater lambda makes it less so. Once
    /// lambda cannot grow, the failure or the warning of the factorisation
    /// reaches the user.
    bool takeStep(double lambda) {
        raised_ = current_.alpha;
        for (std::size_t k = 0; k < freeCount(); ++k) raised_[k + k * freeCount()] *= 1 + lambda;
        if (std::isfinite(lambda * 10)) {
            if (!factoriseSilently()) return false;
        } else {
            lu_.factorise(raised_, freeCount());
        }
        step_ = current_.beta;
        lu_.solve(step_);
        trial_.parameters = current_.parameters;
        for (std::size_t k = 0; k < freeCount(); ++k) trial_.parameters[free_[k]] += step_[k];
        return true;
    }

    bool factoriseSilently() {
        const SilentOutput silence;
        try {
            lu_.factorise(raised_, freeCount());
        } catch (const RuntimeError&) {
            return false;
        }
        return !silence.spoken();
    }

    CurveModel model_;
    std::span<const double> y_;
    std::vector<double> weights_;  ///< empty for weights of 1
    std::vector<std::size_t> free_;
    std::vector<double> values_, residuals_, weighted_;
    std::vector<double> design_;  ///< a column of derivatives for each free parameter
    NormalEquations current_, trial_;
    std::vector<double> raised_, step_;
    LuForm lu_;
};

}  // namespace

CurveFit fitCurve(CurveModel model, const CurveData& data, std::span<const double> start,
                  std::span<const char> free, double tol) {
    Require(data.sigma.empty() || data.sigma.size() == data.y.size(), "sig array has the wrong length");
    LevenbergMarquardt method(model, data, start, free);
    const bool converged = method.run(tol);
    CurveFit fit = method.result();
    fit.converged = converged;
    return fit;
}

}  // namespace vorpen
