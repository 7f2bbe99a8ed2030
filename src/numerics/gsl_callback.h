// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A function that GSL calls may fail, and nothing may be thrown through the
// frames of a C library: that would be undefined and would leave GSL's
// workspaces behind. So a call is guarded. What it throws is kept, the function
// is not called again, GSL gets a number or a status by which it ends soon, and
// whoever called GSL throws the failure on when GSL has returned.

#include <exception>
#include <optional>
#include <utility>

#include "numerics/gsl_errors.h"

namespace vorpen {

class GuardedCalls {
public:
    /// Makes a call unless an earlier one has failed. False when there is no
    /// answer. From a failure on GSL's warnings are silent.
    template <class Call>
    [[nodiscard]] bool make(Call&& call) noexcept {
        if (failure_) [[unlikely]]
            return false;
        try {
            std::forward<Call>(call)();
            return true;
        } catch (...) {
            failure_ = std::current_exception();
            silence_.emplace();
            return false;
        }
    }

    /// Throws on what a call has thrown. Called when GSL has returned.
    void rethrow() {
        if (!failure_) [[likely]]
            return;
        silence_.reset();
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }

private:
    std::exception_ptr failure_;
    std::optional<NoGslWarnings> silence_;
};

}  // namespace vorpen
