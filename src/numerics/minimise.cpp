// SPDX-License-Identifier: GPL-3.0-or-later
#include "numerics/minimise.h"

#include <algorithm>
#include <cmath>

#include "base/errors.h"

namespace vorpen {
namespace {

constexpr double golden = 1.618034;         // the step of the walk, against the one before
constexpr double farthestStep = 100.0;      // of a parabola, against the one before
constexpr double leastDenominator = 1e-20;  // keeps a parabola that is a line from a division by zero

// Golden steps take any start out of the range of doubles in about 2000
// rounds. Only a function that depends on more than its argument falls on.
constexpr int walkRounds = 100'000;

constexpr double goldenSection = 0.381966;
// Below this, steps near x = 0 are too small to tell points apart.
constexpr double leastTolerance = 2.220446049250313e-19;
constexpr int brentRounds = 100;

double withSign(double size, double sign) { return sign >= 0 ? std::fabs(size) : -std::fabs(size); }

/// Where the parabola through three points has its extreme.
double parabolaExtreme(double ax, double bx, double cx, double fa, double fb, double fc) {
    const double r = (bx - ax) * (fb - fc);
    const double q = (bx - cx) * (fb - fa);
    double denominator = q - r;
    if (std::fabs(denominator) <= leastDenominator) denominator = withSign(leastDenominator, denominator);
    return bx - ((bx - cx) * q - (bx - ax) * r) / (2 * denominator);
}

/// The search of brentMinimum: x is the lowest point so far, w the second
/// lowest, v the one before w; the minimum lies between a and b.
class BrentSearch {
public:
    BrentSearch(RealFunction f, const Bracket& bracket, double tol)
        : f_(f),
          relativeTol_(tol),
          a_(std::min(bracket.a, bracket.c)),
          b_(std::max(bracket.a, bracket.c)),
          x_(bracket.b),
          w_(x_),
          v_(x_),
          fx_(f(x_)),
          fw_(fx_),
          fv_(fx_) {}

    /// One round; true when the minimum has been found.
    bool round() {
        middle_ = (a_ + b_) / 2;
        tol_ = relativeTol_ * std::fabs(x_) + leastTolerance;
        if (std::fabs(x_ - middle_) <= 2 * tol_ - (b_ - a_) / 2) return true;
        if (!(std::fabs(lastButOne_) > tol_ && stepByParabola())) stepByGoldenSection();
        const double u = std::fabs(step_) >= tol_ ? x_ + step_ : x_ + withSign(tol_, step_);
        take(u, f_(u));
        return false;
    }

    [[nodiscard]] Minimum minimum() const { return {x_, fx_}; }

private:
    void stepByGoldenSection() {
        lastButOne_ = x_ < middle_ ? b_ - x_ : a_ - x_;
        step_ = goldenSection * lastButOne_;
    }

    /// False when the parabola through x, w and v leads out of the interval or
    /// is longer than half the step before the last.
    bool stepByParabola() {
        const double r = (x_ - w_) * (fx_ - fv_);
        double q = (x_ - v_) * (fx_ - fw_);
        double p = (x_ - v_) * q - (x_ - w_) * r;
        q = 2 * (q - r);
        if (q > 0) p = -p;
        q = std::fabs(q);
        const double before = lastButOne_;
        lastButOne_ = step_;
        if (std::fabs(p) >= std::fabs(q * before / 2) || p <= q * (a_ - x_) || p >= q * (b_ - x_))
            return false;
        step_ = p / q;
        const double u = x_ + step_;
        if (u - a_ < 2 * tol_ || b_ - u < 2 * tol_) step_ = withSign(tol_, middle_ - x_);
        return true;
    }

    void take(double u, double fu) {
        if (fu <= fx_) {
            (u < x_ ? b_ : a_) = x_;
            v_ = w_, fv_ = fw_;
            w_ = x_, fw_ = fx_;
            x_ = u, fx_ = fu;
            return;
        }
        (u < x_ ? a_ : b_) = u;
        if (fu <= fw_ || w_ == x_) {
            v_ = w_, fv_ = fw_;
            w_ = u, fw_ = fu;
        } else if (fu <= fv_ || v_ == x_ || v_ == w_) {
            v_ = u, fv_ = fu;
        }
    }

    RealFunction f_;
    double relativeTol_;
    double a_, b_;
    double x_, w_, v_;
    double fx_, fw_, fv_;
    double step_ = 0, lastButOne_ = 0;
    double middle_ = 0, tol_ = 0;  ///< of this round
};

}  // namespace

Bracket bracketMinimum(RealFunction f, double ax, double bx) {
    double fa = f(ax), fb = f(bx);
    if (fa < fb) {
        std::swap(ax, bx);
        std::swap(fa, fb);
    }
    double cx = bx + golden * (bx - ax);
    double fc = f(cx);
    for (int round = 0; fb > fc; ++round) {
        Require(round < walkRounds, "couldn't find a minimum");
        double u = parabolaExtreme(ax, bx, cx, fa, fb, fc);
        double fu;
        const double limit = bx + farthestStep * (cx - bx);
        if ((bx - u) * (u - cx) > 0) {
            fu = f(u);
            if (fu < fc) return {bx, u, cx};
            if (fu > fb) return {ax, bx, u};
            u = cx + golden * (cx - bx);
            fu = f(u);
        } else if ((cx - u) * (u - limit) > 0) {
            fu = f(u);
            if (fu < fc) {
                bx = cx, fb = fc;
                cx = u, fc = fu;
                u = cx + golden * (cx - bx);
                fu = f(u);
            }
        } else {
            u = (u - limit) * (limit - cx) >= 0 ? limit : cx + golden * (cx - bx);
            fu = f(u);
        }
        ax = bx, fa = fb;
        bx = cx, fb = fc;
        cx = u, fc = fu;
    }
    return {ax, bx, cx};
}

Minimum brentMinimum(RealFunction f, const Bracket& bracket, double tol) {
    BrentSearch search(f, bracket, tol);
    for (int round = 0; round < brentRounds; ++round)
        if (search.round()) return search.minimum();
    raiseRuntimeError("max number of iterations exceeded in function minimisation");
}

}  // namespace vorpen
