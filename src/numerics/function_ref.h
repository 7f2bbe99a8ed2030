// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A callable handed to a numerical method for the time of one call: two
// pointers, no copy and no allocation. So the methods are compiled once,
// whatever they are given, and what the callable throws passes through them
// to the caller. Each call is a place where the user's interrupt takes effect.

#include <concepts>
#include <memory>
#include <type_traits>
#include <utility>

#include "base/interrupt.h"

namespace vorpen {

template <class Signature>
class FunctionRef;

/// Refers to a function object, which must outlive the reference.
template <class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
public:
    template <class Callable>
    requires(std::is_object_v<std::remove_reference_t<Callable>> &&
             !std::same_as<std::remove_cvref_t<Callable>, FunctionRef> &&
             std::is_invocable_r_v<Result, Callable&, Arguments...>) FunctionRef(Callable&& callable)
        : object_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
          call_([](void* object, Arguments... arguments) -> Result {
              return (*static_cast<std::remove_reference_t<Callable>*>(object))(
                  std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const {
        checkInterrupt();
        return call_(object_, std::forward<Arguments>(arguments)...);
    }

private:
    void* object_;
    Result (*call_)(void*, Arguments...);
};

/// A real function of one real variable.
using RealFunction = FunctionRef<double(double)>;

}  // namespace vorpen
