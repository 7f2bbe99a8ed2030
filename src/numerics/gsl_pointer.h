// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <new>

namespace vorpen {

template <auto free>
struct GslFree {
    template <class T>
    void operator()(T* object) const {
        free(object);
    }
};

/// An object of GSL's that is freed with its owner.
template <class T, auto free>
using GslPointer = std::unique_ptr<T, GslFree<free>>;

/// Takes over what one of GSL's allocators answered.
/// @throws std::bad_alloc for null
template <auto free, class T>
[[nodiscard]] GslPointer<T, free> ownedByGuard(T* object) {
    if (!object) throw std::bad_alloc();
    return GslPointer<T, free>(object);
}

}  // namespace vorpen
