// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Functions of one variable that carry parameters: model functions for fits,
// distributions, polynomials, interpolation. A functor is built once from the
// parameters of a call, does there what does not depend on the point, and is
// then applied to point after point without allocating. It keeps a reference
// to the parameters that it is given, which must outlive it.
//
// A fault of the parameters is a RuntimeError raised by the constructor; the
// operators raise only what is told for them.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vorpen {

class SimpleFunctor {
public:
    virtual ~SimpleFunctor() = default;
    virtual double operator()(double x) = 0;
};

/// c[0] + c[1] x + ... by Horner's rule. At least one coefficient.
class Poly_eval final : public SimpleFunctor {
public:
    explicit Poly_eval(std::span<const double> coefficients);
    double operator()(double x) override;

private:
    std::span<const double> c;
};

/// The Poisson distribution with the mean that is the first parameter, 1
/// without one: the probability of x, which need not be an integer.
class PoissonDistributionFunction final : public SimpleFunctor {
public:
    explicit PoissonDistributionFunction(std::span<const double> parameters);
    double operator()(double k) override;

private:
    double mean;
    double logMean;
};

/// The binomial distribution for the two parameters n and p. 0 above n; a
/// negative x raises a RuntimeError.
class BinomialDistributionFunction final : public SimpleFunctor {
public:
    explicit BinomialDistributionFunction(std::span<const double> parameters);
    double operator()(double k) override;

private:
    double n;  ///< an integer
    double logP;
    double logNotP;
    double logFactorialN;
};

/// Four parameters, of which missing ones are 1, 1, 0, 0.
using PeakParameters = std::array<double, 4>;

/// A exp(-((x-mu)/sigma)^2 / 2) + offset for the parameters A, sigma, mu,
/// offset.
class GaussianFunction final : public SimpleFunctor {
public:
    explicit GaussianFunction(std::span<const double> parameters);
    double operator()(double x) override;

private:
    PeakParameters p;
};

/// h A / ((x-x0)^2 + h) + offset with h = w^2/4, for the parameters A, w, x0,
/// offset.
class LorentzianFunction final : public SimpleFunctor {
public:
    explicit LorentzianFunction(std::span<const double> parameters);
    double operator()(double x) override;

private:
    PeakParameters p;
};

/// The binomial coefficient n over k for the one parameter n; n and k are
/// truncated. 1 for a k outside 0 to n.
class BinomialCoefficients final : public SimpleFunctor {
public:
    explicit BinomialCoefficients(std::span<const double> parameters);
    double operator()(double k) override;

private:
    double n;  ///< an integer, unless infinite
};

/// The Bessel function of the first kind whose integer order is the one
/// parameter; without exactly one it raises the OperatorFailure `]`.
class BesselFunction final : public SimpleFunctor {
public:
    explicit BesselFunction(std::span<const double> parameters);
    double operator()(double x) override;

private:
    std::int32_t order;
};

/// Interpolation in a table: the first column holds the abscissae in ascending
/// order, the second the ordinates. A point beyond an end is extrapolated from
/// the first or last segment; NaN gives NaN. At least 2 rows and 2 columns.
///
/// The cubic on a segment has the ordinates at its ends and, there, the slopes
/// of the chords over the two adjacent segments. The segment last used is
/// tried first, so a sorted sweep makes one comparison a point.
class CubicInterpolation final : public SimpleFunctor {
public:
    /// `table` is stored by column.
    CubicInterpolation(std::span<const double> table, std::size_t rows, bool cubic);
    double operator()(double x) override;

private:
    std::size_t findSegment(double x) const;
    void useSegment(std::size_t i);

    std::span<const double> X;
    std::span<const double> Y;
    bool cubic;
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::size_t segment = none;
    double dx = 0;
    double slope = 0;
    double slopeLeft = 0;
    double slopeRight = 0;
};

/// The position, from 1, of the first element of an ascending vector that is
/// not less than x; the size plus 1 when all are less.
class OrderedListFind final : public SimpleFunctor {
public:
    explicit OrderedListFind(std::span<const double> sorted) : v(sorted) {}
    double operator()(double x) override;

private:
    std::span<const double> v;
};

}  // namespace vorpen
