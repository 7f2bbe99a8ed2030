// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/initial_value.h"

#include <gsl/gsl_errno.h>
#include <gsl/gsl_odeiv2.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "base/output.h"
#include "numerics/gsl_callback.h"
#include "numerics/gsl_errors.h"
#include "numerics/gsl_pointer.h"

namespace vorpen {
namespace {

constexpr double firstStep = 1e-06;
constexpr double absoluteTolerance = 1e-06;
constexpr double relativeTolerance = 0.0;

/// A run is given up when so many calls have brought it so little nearer to its
/// point that it would take a million million calls, the better part of a day:
/// where the solution jumps all the time, or where t is so large that a step is
/// lost in rounding.
constexpr int callsOfWindow = 10000000;
constexpr double mostWindows = 1e5;

/// What GSL's calls of the system get at.
struct SystemCalls {
    const OdeSystem& system;
    std::size_t dimension;
    GuardedCalls calls;
    double target = 0;       ///< the point that is stepped to
    double windowStart = 0;  ///< where t was at the first of the calls that are counted
    int callsInWindow = 0;

    void aimAt(double t, double next) {
        windowStart = t;
        target = next;
        callsInWindow = 0;
    }

    [[nodiscard]] bool isOutOfReachFrom(double t) {
        if (++callsInWindow < callsOfWindow) return false;
        const bool result = std::fabs(target - t) > mostWindows * std::fabs(t - windowStart);
        aimAt(t, target);
        return result;
    }

    /// GSL ends at once on this status, where it would try a smaller step on
    /// any other.
    static constexpr int stop = GSL_EBADFUNC;

    static int odeDerivs(double t, const double* y, double* dydt, void* self) {
        auto& its = *static_cast<SystemCalls*>(self);
        if (its.isOutOfReachFrom(t)) [[unlikely]]
            return stop;
        const bool done = its.calls.make([&] {
            its.system.derivatives({y, its.dimension}, {dydt, its.dimension});
        });
        return done ? int{GSL_SUCCESS} : stop;
    }

    static int odeJacobian(double /*t*/, const double* y, double* dfdy, double* dfdt, void* self) {
        auto& its = *static_cast<SystemCalls*>(self);
        const std::size_t n = its.dimension;
        const bool done = its.calls.make([&] { its.system.jacobian({y, n}, {dfdy, n * n}, {dfdt, n}); });
        return done ? int{GSL_SUCCESS} : stop;
    }
};

}  // namespace

void solveInitialValueProblem(const OdeSystem& system, std::span<const double> x, std::span<double> states) {
    installGslErrorHandler();
    const std::size_t n = states.size() / x.size();
    SystemCalls its{system, n, {}};
    const gsl_odeiv2_system forGsl = {SystemCalls::odeDerivs, SystemCalls::odeJacobian, n, &its};
    const auto driver = ownedByGuard<gsl_odeiv2_driver_free>(gsl_odeiv2_driver_alloc_y_new(
        &forGsl, gsl_odeiv2_step_rk8pd, firstStep, absoluteTolerance, relativeTolerance));
    std::vector<double> y(states.begin(), states.begin() + static_cast<std::ptrdiff_t>(n));
    double t = x[0];
    bool failed = false;
    for (std::size_t i = 1; i < x.size() && !failed; ++i) {
        its.aimAt(t, x[i]);
        // From or to infinity GSL would step for ever.
        const bool isFinite = std::isfinite(t) && std::isfinite(x[i]);
        failed = !isFinite || gsl_odeiv2_driver_apply(driver.get(), &t, x[i], y.data()) != GSL_SUCCESS;
        if (!failed) std::ranges::copy(y, states.begin() + static_cast<std::ptrdiff_t>(i * n));
    }
    its.calls.rethrow();
    if (failed) output().print("ODE failed", true, PrintMode::markup);
}

}  // namespace vorpen
