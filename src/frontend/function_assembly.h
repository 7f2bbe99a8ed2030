// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The element around the body of a built-in function, chosen by the dispatch
// kind of its row in the registry, with the conversions that fit the arguments
// to the body.

#include <vector>

#include "builtins/registry.h"
#include "eval/evaluatable.h"

namespace vorpen {

/// True for the functions of one array argument, which take the next item
/// only.
[[nodiscard]] constexpr bool takesOneItem(const BuiltinInfo& builtin) {
    return builtin.kind >= SCALAR2SCALAR && builtin.kind <= VECTOR2VECTOR;
}

/// A call of a function of one array argument. Fails with a SyntaxError for a
/// list or a complex argument that the function does not take.
[[nodiscard]] EvaluatablePtr makeArrayFunction(const BuiltinInfo& builtin, EvaluatablePtr argument);

/// A call of any other built-in. The count of the arguments fits. Complex
/// arguments and lists fail with a SyntaxError unless the function takes any.
[[nodiscard]] EvaluatablePtr makeGeneralFunction(const BuiltinInfo& builtin,
                                                 std::vector<EvaluatablePtr> arguments);

}  // namespace vorpen
