// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/exact_form.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <optional>

#include "base/number_text.h"

namespace vorpen {
namespace {

constexpr int largestTerm = 13;

constexpr std::array<Fraction, 116> makeFractionTable() {
    std::array<Fraction, 116> table{};
    std::size_t row = 0;
    table[row++] = {0, 1};
    table[row++] = {1, 1};
    for (std::int32_t n = 2; n <= largestTerm; ++n) {
        for (std::int32_t d = 1; d < n; ++d)
            if (std::gcd(n, d) == 1) table[row++] = {n, d};
        for (std::int32_t d = n - 1; d > 0; --d)
            if (std::gcd(n, d) == 1) table[row++] = {d, n};
    }
    return table;
}

}  // namespace

constexpr std::array<Fraction, 116> fractionTable = makeFractionTable();
constexpr std::array<double, 3> factorTable = {1.0, 3.141592653589793, 0x1.45f306dc9c883p-2};

namespace {

constexpr int fractionCount = static_cast<int>(fractionTable.size());
constexpr std::int32_t lowestInt = std::numeric_limits<std::int32_t>::min();

const Fraction& fraction(int row) { return fractionTable[static_cast<std::size_t>(row)]; }

std::string rowText(int row) {
    const auto [a, b] = fraction(row);
    return fractionText(a, b);
}

/// Truncates; what does not fit 32 bits is the lowest integer.
std::int32_t toInt32(double x) {
    return x > -2147483649.0 && x < 2147483648.0 ? static_cast<std::int32_t>(x) : lowestInt;
}

/// a * b + c with wrap-around.
std::int32_t wrappedMultiplyAdd(std::int32_t a, std::int32_t b, std::int32_t c) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b) +
                                     static_cast<std::uint32_t>(c));
}

std::int32_t wrappedAbs(std::int32_t a) {
    return a < 0 ? static_cast<std::int32_t>(-static_cast<std::uint32_t>(a)) : a;
}

// ---- fractions plus or minus a square root --------------------------------

/// x is the fraction of row j, negated when `negative` is set, plus or minus
/// the square root of row k.
struct SumForm {
    int k;
    int j;
    bool negative;
    bool minusRoot;
};

std::string sumFormText(const SumForm& form) {
    const Fraction whole = fraction(form.j);
    const Fraction root = fraction(form.k);
    std::string text;
    if (form.negative) text += '-';
    if (whole.numerator != 0) text += rowText(form.j);
    if (root.numerator == 0) return text;
    if (form.minusRoot)
        text += '-';
    else if (whole.numerator != 0)
        text += '+';
    text += "sqrt";
    if (root.denominator == 1) text += ' ';
    return text += rowText(form.k);
}

bool hasRationalRoot(const Fraction& f) {
    const auto isSquare = [](std::int32_t n) { return n == 1 || n == 4 || n == 9; };
    return isSquare(f.numerator) && isSquare(f.denominator);
}

std::optional<SumForm> findSumForm(double x, double tol) {
    std::array<double, fractionTable.size()> value;
    std::transform(fractionTable.begin(), fractionTable.end(), value.begin(), [](Fraction f) {
        return static_cast<double>(f.numerator) / static_cast<double>(f.denominator);
    });
    // A difference above this cannot pass the test with the quotient.
    const double bound = tol * std::fabs(x) * (1 + 1e-9);
    for (int k = 0; k < fractionCount; ++k) {
        if (hasRationalRoot(fraction(k))) continue;
        const double s = std::sqrt(value[static_cast<std::size_t>(k)]);
        for (const double sign : {1.0, -1.0}) {
            for (int j = 0; j < fractionCount; ++j) {
                const double r = sign * value[static_cast<std::size_t>(j)];
                const bool minusRoot = !(r <= x);
                const double y = minusRoot ? r - s : r + s;
                if (std::fabs(y - x) > bound) continue;
                if (std::fabs((y - x) / x) < tol) return SumForm{k, j, sign < 0, minusRoot};
            }
        }
    }
    return std::nullopt;
}

// ---- products of powers ---------------------------------------------------

/// One accepted form: the number, its logarithm or its exponential (by
/// `transform`) is (p/q)^(row e) times a power (row d) of factor c.
struct Candidate {
    std::int32_t transform;
    std::int32_t factor;
    std::int32_t numerator;
    std::int32_t denominator;
    std::int32_t exponentRow;
    std::int32_t factorRow;
    std::int32_t cost1;  ///< size of the numbers, ten times a decimal logarithm
    std::int32_t cost2;  ///< deviation, ten times a decimal logarithm
};

constexpr std::size_t maxCandidates = 3;

/// A candidate's score, log10(p q e d), stays below this.
constexpr double scoreLimit = 7.0;

/// Numbers that are both larger than this are replaced by an earlier
/// convergent that is good enough.
constexpr std::int32_t largeTerm = 1000;

/// Whether p/q is the power B of a fraction of the table, so that its root
/// would be written with a needless exponent.
bool isPerfectPower(std::int32_t p, std::int32_t q, std::int32_t power) {
    for (int k = 1; k < fractionCount; ++k) {
        const auto [a, b] = fraction(k);
        if (p == toInt32(std::pow(a, power)) && q == toInt32(std::pow(b, power))) return true;
    }
    return false;
}

/// The fraction that stands for y: the best convergent, or an earlier one when
/// its terms are large; nothing when there is none.
std::optional<Fraction> smallFraction(double y, double tol) {
    std::array<std::int32_t, maxPartialQuotients> p;
    std::array<std::int32_t, maxPartialQuotients> q;
    const auto n = static_cast<std::size_t>(continuedFraction(y, maxPartialQuotients, p, q));
    const Fraction best{p[n - 1], wrappedAbs(q[n - 1])};
    if (best.numerator <= largeTerm || best.denominator <= largeTerm) return best;
    for (std::size_t i = 0; i < n; ++i)
        if (std::fabs(q[i] * y - p[i]) < p[i] * tol) return Fraction{p[i], q[i]};
    return std::nullopt;
}

/// Judges w, which is u without its power of the factor: whether w to the
/// inverse of row e is a fraction of small numbers.
std::optional<Candidate> judge(double w, std::int32_t m, std::int32_t c, int d, int e, double tol) {
    const double inverseOfRow =
        static_cast<double>(fraction(e).denominator) / static_cast<double>(fraction(e).numerator);
    const double y = std::pow(w, inverseOfRow);
    const auto form = smallFraction(y, tol);
    if (!form || form->numerator <= 0 || form->denominator <= 0) return std::nullopt;
    const std::int32_t p = form->numerator;
    const std::int32_t q = form->denominator;
    // An integer up to the tolerance: the number itself already says so.
    if (m == 0 && c == 0 && e == 1 && q == 1) return std::nullopt;
    const double deviation = std::fabs(q * y - p) / p;
    if (!(deviation < tol)) return std::nullopt;
    const double score = std::log10(static_cast<double>(p)) + std::log10(static_cast<double>(q)) +
                         std::log10(static_cast<double>(e)) + std::log10(static_cast<double>(d));
    const double logDeviation = std::log10(deviation);
    if (!(score < scoreLimit) || !(score < -logDeviation - 2.0)) return std::nullopt;
    if (e > 1 && isPerfectPower(p, q, fraction(e).denominator)) return std::nullopt;
    return Candidate{m, c, p, q, e, d, toInt32(score * 10), toInt32(logDeviation * 10)};
}

// ---- the filter -----------------------------------------------------------
//
// An accepted candidate has y = w^f, f the inverse of row e, with
// y = (p/q)(1 + delta), p q e d < 1e7 and |delta| p q e d < 0.01. For
// z = max(y, 1/y), with P/Q the larger of p/q and q/p, follows
// |z - P/Q| Q^2 < 0.0102/(e d) < 1/2, so P/Q is a convergent of z (Legendre;
// Khinchin, Continued Fractions, 1964, theorem 19), and what remains of the
// expansion behind it is below 1/(97 e d). The expansion is taken with the
// nearest integer: it keeps every convergent that is followed by a quotient
// above 1 and needs a third fewer steps. With x1, x2, ... its complete
// quotients, |x1 ... xn| is Q up to a few percent. So a lane is a hit when a
// remainder is below 1/(90 e d) while e d z (x1 ... xn)^2 is below 1.1e7. The
// margins are a thousand times what the rounding of z, below 1e-12, moves.

/// How many lanes go through the expansion together; the compiler turns the
/// loops over them into vector instructions.
constexpr std::size_t laneBlock = 8;
constexpr std::size_t laneCount = 120;  ///< the 115 rows, filled to full blocks

constexpr double sizeLimit = 1.1e7;
constexpr double remainderLimit = 1.0 / 90;

/// Adding and subtracting this number rounds to the nearest integer.
constexpr double roundingShift = 0x1.8p52;

using RootPowers = std::array<double, largestTerm * largestTerm>;

constexpr std::size_t powerIndex(std::int32_t root, std::int32_t power) {
    return static_cast<std::size_t>((power - 1) * largestTerm + root - 1);
}

/// The rows e of the fraction table by falling size, so that the lanes of a
/// block need about the same number of steps.
struct Lanes {
    std::array<std::uint8_t, laneCount> row{};         ///< e
    std::array<std::uint8_t, laneCount> powerIndex{};  ///< place of z among the powers
    std::array<double, laneCount> weight{};            ///< e; infinite for a filler
};

constexpr Lanes makeLanes() {
    Lanes lanes;
    std::array<std::uint8_t, fractionTable.size() - 1> rows{};
    std::iota(rows.begin(), rows.end(), std::uint8_t{1});
    std::sort(rows.begin(), rows.end(), [](std::uint8_t i, std::uint8_t j) {
        const auto [a, b] = fractionTable[i];
        const auto [c, d] = fractionTable[j];
        return a * d > c * b;
    });
    lanes.weight.fill(std::numeric_limits<double>::infinity());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const auto [a, b] = fractionTable[rows[i]];
        lanes.row[i] = rows[i];
        lanes.powerIndex[i] = static_cast<std::uint8_t>(powerIndex(a, b));
        lanes.weight[i] = rows[i];
    }
    return lanes;
}

constexpr Lanes lanes = makeLanes();

/// The powers exp(logarithm * b / a) for a and b from 1 to 13.
RootPowers rootPowers(double logarithm) {
    RootPowers z;
    for (std::int32_t a = 1; a <= largestTerm; ++a) z[powerIndex(a, 1)] = std::exp(logarithm / a);
    for (std::int32_t b = 2; b <= largestTerm; ++b)
        for (std::int32_t a = 1; a <= largestTerm; ++a)
            z[powerIndex(a, b)] = z[powerIndex(a, b - 1)] * z[powerIndex(a, 1)];
    return z;
}

/// Expands the numbers x of one block; the answer is above 0 in the lanes that
/// are hits. A lane is active while its size, which starts as e d x, is below
/// the limit; its remainder is small when it is below `small`.
std::array<double, laneBlock> expand(std::array<double, laneBlock> x, std::array<double, laneBlock> size,
                                     const std::array<double, laneBlock>& small) {
    std::array<double, laneBlock> hit{};
    double anyActive;
    do {
        std::array<double, laneBlock> active;
        for (std::size_t i = 0; i < laneBlock; ++i) {
            const double nearest = (x[i] + roundingShift) - roundingShift;
            const double remainder = x[i] - nearest;
            hit[i] += std::fabs(remainder) < small[i] ? 1.0 : 0.0;
            x[i] = 1 / remainder;
            size[i] *= x[i] * x[i];
            active[i] = size[i] < sizeLimit ? 1.0 : 0.0;
        }
        for (std::size_t i = 0; i < laneBlock / 2; ++i) active[i] += active[i + laneBlock / 2];
        anyActive = (active[0] + active[1]) + (active[2] + active[3]);
    } while (anyActive > 0);
    return hit;
}

/// Marks the rows e that may give a candidate for w, of which the modulus of
/// the logarithm is given; d is the row of the factor's exponent.
void findHits(double logarithm, double d, std::array<bool, fractionTable.size()>& hits) {
    hits.fill(false);
    const RootPowers powers = rootPowers(logarithm);
    for (std::size_t start = 0; start < laneCount; start += laneBlock) {
        std::array<double, laneBlock> x;
        std::array<double, laneBlock> size;
        std::array<double, laneBlock> small;
        bool anyActive = false;
        for (std::size_t i = 0; i < laneBlock; ++i) {
            const double weight = lanes.weight[start + i] * d;
            x[i] = powers[lanes.powerIndex[start + i]];
            size[i] = x[i] * weight;
            const bool active = size[i] < sizeLimit;
            small[i] = active ? remainderLimit / weight : 0.0;
            anyActive |= active;
        }
        if (!anyActive) continue;
        const auto hit = expand(x, size, small);
        for (std::size_t i = 0; i < laneBlock; ++i)
            if (hit[i] > 0) hits[lanes.row[start + i]] = true;
    }
}

// ---- the product search ---------------------------------------------------

/// F^(A/B) for the rows of the table, as the search divides by them.
struct FactorPowers {
    std::array<std::array<double, fractionTable.size()>, 3> power;
    std::array<std::array<double, fractionTable.size()>, 3> logarithm;
};

const FactorPowers& factorPowers() {
    static const FactorPowers table = [] {
        FactorPowers t;
        for (std::size_t c = 0; c < 3; ++c)
            for (std::size_t d = 0; d < fractionTable.size(); ++d) {
                const auto [a, b] = fractionTable[d];
                const double exponent = static_cast<double>(a) / static_cast<double>(b);
                t.power[c][d] = std::pow(factorTable[c], exponent);
                t.logarithm[c][d] = std::log(factorTable[c]) * exponent;
            }
        return t;
    }();
    return table;
}

class ProductSearch {
public:
    ProductSearch(double ax, double tol) : ax(ax), tol(tol) {}

    std::optional<Candidate> run() {
        searchTransform(0, ax, std::log(ax));
        const double logarithm = std::log(ax);
        searchTransform(1, logarithm, std::log(std::fabs(logarithm)));
        searchTransform(2, std::exp(ax), ax);
        if (count == 0) return std::nullopt;
        const auto cost = [](const Candidate& f) { return f.cost2 + 2 * f.cost1; };
        return *std::min_element(found.begin(), found.begin() + count,
                                 [&](const Candidate& a, const Candidate& b) { return cost(a) < cost(b); });
    }

private:
    void searchTransform(std::int32_t m, double u, double logarithm) {
        const FactorPowers& factors = factorPowers();
        for (std::int32_t c = 0; c < 3; ++c) {
            const int rows = c == 0 ? 2 : fractionCount;
            for (int d = 1; d < rows && count < maxCandidates; ++d) {
                const auto row = static_cast<std::size_t>(d);
                const auto factor = static_cast<std::size_t>(c);
                findHits(std::fabs(logarithm - factors.logarithm[factor][row]), d, hits);
                judgeHits(u / factors.power[factor][row], m, c, d);
            }
        }
    }

    void judgeHits(double w, std::int32_t m, std::int32_t c, int d) {
        for (int e = 1; e < fractionCount && count < maxCandidates; ++e) {
            if (!hits[static_cast<std::size_t>(e)]) continue;
            if (const auto candidate = judge(w, m, c, d, e, tol)) found[count++] = *candidate;
        }
    }

    double ax;
    double tol;
    std::array<Candidate, maxCandidates> found;
    std::size_t count = 0;
    std::array<bool, fractionTable.size()> hits;
};

std::string candidateText(const Candidate& form, bool negative) {
    std::string number;
    if (form.factor == 0 || form.numerator != form.denominator)
        number = fractionText(form.numerator, form.denominator);
    std::string text;
    if (negative) text += '-';
    if (form.transform == 1) text += "exp[";
    if (form.transform == 2) text += "ln[";
    if (form.exponentRow == form.factorRow) {
        if (form.factor != 0) text += '(';
        text += number;
        if (form.factor != 0) text += form.factor == 1 ? "pi)" : "/pi)";
    } else {
        text += number;
        if (form.exponentRow > 1) text.append("^").append(rowText(form.exponentRow)) += ' ';
        if (form.factor != 0) text += form.factor == 1 ? "pi" : "(1/pi)";
    }
    if (form.factorRow > 1) text.append("^").append(rowText(form.factorRow));
    if (form.transform != 0) text += "]";
    return text;
}

}  // namespace

PartialQuotients partialQuotients(double x) {
    PartialQuotients quotients;
    double t = x;
    for (int i = 0; i < maxPartialQuotients; ++i) {
        const std::int32_t a = toInt32(std::floor(t));
        quotients.values[static_cast<std::size_t>(i)] = a;
        quotients.count = i + 1;
        if (std::fabs(t - a) < 1e-08) break;
        t = 1 / (t - a);
    }
    return quotients;
}

int continuedFraction(double x, int maxStored, std::span<std::int32_t> p, std::span<std::int32_t> q) {
    const PartialQuotients quotients = partialQuotients(x);
    // The two latest convergents; before the first stands 1/0.
    Fraction before{1, 0};
    Fraction latest{quotients.values[0], 1};
    Fraction best = latest;
    int bestIndex = 0;
    double bestError = std::fabs(1 - x / latest.numerator);
    for (int i = 0;; ++i) {
        if (i < maxStored) {
            p[static_cast<std::size_t>(i)] = latest.numerator;
            q[static_cast<std::size_t>(i)] = latest.denominator;
        }
        // A zero has one convergent only, so it never gets as far as a second.
        if (i + 1 == quotients.count) break;
        const std::int32_t a = quotients.values[static_cast<std::size_t>(i + 1)];
        const Fraction next{wrappedMultiplyAdd(a, latest.numerator, before.numerator),
                            wrappedMultiplyAdd(a, latest.denominator, before.denominator)};
        before = latest;
        latest = next;
        const double error = std::fabs(1 - latest.denominator * x / latest.numerator);
        if (error < bestError) {
            bestError = error;
            bestIndex = i + 1;
            best = latest;
        }
    }
    if (maxStored == 0) {
        p[0] = best.numerator;
        q[0] = best.denominator;
    }
    return bestIndex + 1;
}

Fraction bestConvergent(double x) {
    Fraction best;
    continuedFraction(x, 0, std::span(&best.numerator, 1), std::span(&best.denominator, 1));
    return best;
}

std::string fractionText(std::int32_t numerator, std::int32_t denominator) {
    if (denominator == 1 || numerator == 0) return std::to_string(numerator);
    std::string text = "(";
    text.append(std::to_string(numerator)).append("/").append(std::to_string(denominator));
    return text += ')';
}

std::string closedFormText(double x, double tol) {
    const double ax = std::fabs(x);
    if (ax * 1e-12 > ax - std::floor(ax)) return " i";
    // Nothing deviates by less than a tolerance that is not above 0.
    if (ax >= 0.001 && ax <= 1000 && tol > 0) {
        if (const auto form = findSumForm(x, tol)) return sumFormText(*form);
        if (const auto form = ProductSearch(ax, tol).run()) return candidateText(*form, x < 0);
    }
    std::string text = " ";
    appendDoubleText(text, x, toInt32(std::log10(1 / tol)));
    return text;
}

}  // namespace vorpen
