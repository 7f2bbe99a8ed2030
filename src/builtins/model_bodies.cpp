// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/model_bodies.h"

#include "numerics/simple_functors.h"

namespace vorpen::builtin {
namespace {

template <class Functor>
void applyTo(const DoubleValue& points, DoubleValue& out, Functor functor) {
    for (int i = 0; i < points.size(); ++i) out[i] = functor(points[i]);
}

template <class Functor>
void applyModel(const DoubleValue& parameters, const DoubleValue& points, DoubleValue& out) {
    if (!points.isEmpty()) applyTo(points, out, Functor(parameters.items()));
}

void interpolate(const DoubleValue& table, const DoubleValue& points, DoubleValue& out, bool cubic) {
    if (points.isEmpty()) return;
    applyTo(points, out, CubicInterpolation(table.items(), static_cast<std::size_t>(table.nrow()), cubic));
}

}  // namespace

void polynomial(const DoubleValue& coefficients, const DoubleValue& x, DoubleValue& out) {
    applyModel<Poly_eval>(coefficients, x, out);
}

void poisson(const DoubleValue& mean, const DoubleValue& k, DoubleValue& out) {
    applyModel<PoissonDistributionFunction>(mean, k, out);
}

void binomial(const DoubleValue& nAndP, const DoubleValue& k, DoubleValue& out) {
    applyModel<BinomialDistributionFunction>(nAndP, k, out);
}

void binomialCoefficient(const DoubleValue& n, const DoubleValue& k, DoubleValue& out) {
    applyModel<BinomialCoefficients>(n, k, out);
}

void gaussian(const DoubleValue& parameters, const DoubleValue& x, DoubleValue& out) {
    applyModel<GaussianFunction>(parameters, x, out);
}

void lorentzian(const DoubleValue& parameters, const DoubleValue& x, DoubleValue& out) {
    applyModel<LorentzianFunction>(parameters, x, out);
}

void besselOfOrder(const DoubleValue& order, const DoubleValue& x, DoubleValue& out) {
    applyModel<BesselFunction>(order, x, out);
}

void cubicInterpolation(const DoubleValue& table, const DoubleValue& x, DoubleValue& out) {
    interpolate(table, x, out, true);
}

void linearInterpolation(const DoubleValue& table, const DoubleValue& x, DoubleValue& out) {
    interpolate(table, x, out, false);
}

void positionInSorted(const DoubleValue& sorted, const DoubleValue& x, DoubleValue& out) {
    applyModel<OrderedListFind>(sorted, x, out);
}

}  // namespace vorpen::builtin
