// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Systems of ordinary differential equations that start from a known state, by
// the Runge-Kutta method of orders 8 and 9 of P. J. Prince and J. R. Dormand
// ("High order embedded Runge-Kutta formulae", Journal of Computational and
// Applied Mathematics 7, 1981) with GSL's control of the step. The equations
// are autonomous: the derivatives depend on the state alone.

#include <cstddef>
#include <span>

#include "numerics/function_ref.h"

namespace vorpen {

struct OdeSystem {
    /// The derivatives at a state, both as long as the system has equations.
    FunctionRef<void(std::span<const double> state, std::span<double> derivatives)> derivatives;
    /// The derivatives of the equations (rows) by the elements of the state
    /// (columns), row after row, and those by t. The method above does without
    /// them; GSL is told them as part of the system.
    FunctionRef<void(std::span<const double> state, std::span<double> byState, std::span<double> byT)>
        jacobian;
};

/// The states at the points x, which go up. `states` holds them one after the
/// other, and the first one, at x[0], is given. The absolute error of a step is
/// at most 1e-6 in each element. A step that fails, and a point that is not
/// finite, shows the warning "ODE failed" and ends the run; the states that it
/// did not reach stay as they are. A failure of a function passes through.
void solveInitialValueProblem(const OdeSystem& system, std::span<const double> x, std::span<double> states);

}  // namespace vorpen
