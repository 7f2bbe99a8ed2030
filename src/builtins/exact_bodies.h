// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that look for the exact number behind a double.

#include "eval/function_types.h"

namespace vorpen::builtin {

/// The best fractions of all elements, numerators above denominators. The pair
/// [x, 1] asks for the partial quotients of x instead, in a row.
void rationalApproximation(const Value& v, IntValue& out);

/// The closed form of the first element as text, within the relative tolerance
/// that the second element gives.
void closedForm(const Value& v, IntValue& out);

}  // namespace vorpen::builtin
