// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The closed form behind a double. A number that came out of a computation is
// often a fraction, a root, a multiple of a power of pi, or the logarithm or
// exponential of one of these; closedFormText searches that family in a fixed
// order and answers the form in the language's own notation. Continued
// fractions do the detecting: of a number that is close to p/q with small p
// and q, p/q is one of the first convergents.
//
// The search runs for every scalar that is shown, and a number without a form
// makes it look at some eighty thousand candidates. Nearly all of them are
// dismissed by a filter that is cheap and provably never dismisses a candidate
// that the search would accept; only what passes the filter is computed
// exactly as the search defines it. So the filter affects the speed and never
// the answer.

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace vorpen {

struct Fraction {
    std::int32_t numerator;
    std::int32_t denominator;
};

/// The fractions with numerator and denominator up to 13, each once, in the
/// order in which the search tries them: by the larger of the two numbers,
/// first those above 1 falling, then those below 1 falling. 0/1 and 1/1 come
/// first.
extern const std::array<Fraction, 116> fractionTable;

/// The factors of the product search: 1, pi and 1/pi.
extern const std::array<double, 3> factorTable;

/// The number of partial quotients after which an expansion is cut.
inline constexpr int maxPartialQuotients = 20;

struct PartialQuotients {
    std::array<std::int32_t, maxPartialQuotients> values;
    int count;  ///< at least 1
};

/// The simple continued fraction of x, up to where the remainder is below
/// 1e-8. A quotient that does not fit 32 bits, or of a number that is not
/// finite, is the lowest integer.
PartialQuotients partialQuotients(double x);

/// Expands x and stores the convergents p[i]/q[i] for i below `maxStored`. The
/// answer is 1 plus the index of the convergent with the smallest relative
/// error, the first on ties. With `maxStored` 0 that convergent alone is
/// stored, in p[0] and q[0]. p and q hold at least 1 and at least `maxStored`
/// elements. The recurrence wraps around at 32 bits.
int continuedFraction(double x, int maxStored, std::span<std::int32_t> p, std::span<std::int32_t> q);

/// The convergent of x with the smallest relative error.
Fraction bestConvergent(double x);

/// "(3/2)"; only the numerator when it is 0 or the denominator is 1.
std::string fractionText(std::int32_t numerator, std::int32_t denominator);

/// The tolerance of a search when the user names none.
inline constexpr double defaultFormTolerance = 1e-11;

/// The closed form of x within the relative tolerance `tol`. " i" for an
/// integer; a blank and x with as many digits as the tolerance has when there
/// is no form or |x| is outside 0.001 to 1000. Only a text that begins with no
/// blank is a form worth showing.
std::string closedFormText(double x, double tol);

}  // namespace vorpen
