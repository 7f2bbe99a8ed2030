// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/constants.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "base/errors.h"

namespace vorpen::builtin {
namespace {

enum LimitCode : int {
    LIMIT_MIN = 1,
    LIMIT_MAX,
    LIMIT_DMIN,
    LIMIT_DMAX,
    LIMIT_EPS,
    LIMIT_MINE,
    LIMIT_MAXE,
    LIMIT_MINI,
    LIMIT_MAXI,
    LIMIT_BITS,
};

struct LimitKey {
    std::string_view name;
    LimitCode code;
};

constexpr LimitKey limitKeys[] = {
    {"min",  LIMIT_MIN},
    {"max",  LIMIT_MAX},
    {"dmin", LIMIT_DMIN},
    {"dmax", LIMIT_DMAX},
    {"eps",  LIMIT_EPS},
    {"mine", LIMIT_MINE},
    {"maxe", LIMIT_MAXE},
    {"mini", LIMIT_MINI},
    {"maxi", LIMIT_MAXI},
    {"int",  LIMIT_MAXI},
    {"bits", LIMIT_BITS},
};

int limitCode(const Value& keyOrCode) {
    if (!keyOrCode.isString()) return keyOrCode.intValue();
    const auto* key = std::ranges::find(limitKeys, keyOrCode.text(), &LimitKey::name);
    Require(key != std::end(limitKeys), "unrecognised string parameter", "numeric_limits");
    return key->code;
}

}  // namespace

double numericLimits(const Value& keyOrCode) {
    using Double = std::numeric_limits<double>;
    if (keyOrCode.isEmpty()) return 0;
    switch (limitCode(keyOrCode)) {
        case LIMIT_MIN:
        case LIMIT_DMIN: return Double::min();
        case LIMIT_MAX:
        case LIMIT_DMAX: return Double::max();
        case LIMIT_EPS: return Double::epsilon();
        case LIMIT_MINE: return Double::min_exponent10;
        case LIMIT_MAXE: return Double::max_exponent10;
        case LIMIT_MINI: return INT32_MIN;
        case LIMIT_MAXI: return INT32_MAX;
        case LIMIT_BITS: return std::log2(static_cast<double>(UINT32_MAX));
        default: return 0;
    }
}

}  // namespace vorpen::builtin
