// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/exact_bodies.h"

#include <algorithm>

#include "builtins/arguments.h"
#include "numerics/exact_form.h"

namespace vorpen::builtin {

void rationalApproximation(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    if (x.isEmpty()) return makeEmpty(out);
    if (x.size() == 2 && x[1] == 1) {
        const PartialQuotients quotients = partialQuotients(x[0]);
        shapeResult(out, 1, quotients.count);
        std::copy_n(quotients.values.begin(), quotients.count, out.data());
        return;
    }
    shapeResult(out, 2, x.size());
    for (std::int64_t i = 0; i < x.size(); ++i) {
        const Fraction fraction = bestConvergent(x.data()[i]);
        out.data()[2 * i] = fraction.numerator;
        out.data()[2 * i + 1] = fraction.denominator;
    }
}

void closedForm(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& x = asDoubles(v, scratch);
    if (x.isEmpty()) return makeEmpty(out);
    out.assignString(closedFormText(x[0], x.size() > 1 ? x[1] : defaultFormTolerance));
}

}  // namespace vorpen::builtin
