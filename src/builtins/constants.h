// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The constants that the language starts with: numbers of mathematics and
// physics under their own names, and three short names. The tables are data;
// the stores that a program can change belong to the symbol table, which fills
// them from here at start-up and on `clear reset`.

#include <limits>
#include <span>
#include <string_view>

#include "values/value.h"

namespace vorpen {

struct NamedConstant {
    std::string_view name;
    double value;
};

/// The built-in constants in their order of entry, SI units. Each value is
/// written so that its double form has the bits that the language promises;
/// kB, muB, GG and sigSB are older recommended values on purpose.
inline constexpr NamedConstant physicsConstantRows[] = {
    {"pi",      3.141592653589793},
    {"rt2",     1.4142135623730951},
    {"rt3",     1.7320508075688772},
    {"ee",      2.718281828459045},
    {"ln2",     0.6931471805599453},
    {"deg",     0.017453292519943295},   // one degree in radians
    {"cc",      299792458.0},            // speed of light, m/s
    {"mu0",     1.25663706212e-06},      // vacuum permeability
    {"eps0",    8.8541878128e-12},       // vacuum permittivity
    {"GG",      6.674301e-11},           // gravitational constant
    {"year",    31557600.0},             // Julian year, s
    {"AU",      149597870700.0},         // astronomical unit, m
    {"hbar",    1.054571817e-34},        // reduced Planck constant
    {"kB",      1.3806494e-23},          // Boltzmann constant
    {"eV",      1.602176634e-19},        // electron volt, J; electron charge, C
    {"Mp",      1.67262192369e-27},      // proton mass, kg
    {"Me",      9.1093837015e-31},       // electron mass, kg
    {"au",      1.6605390666e-27},       // atomic mass unit, kg
    {"NA",      6.02214076e+23},         // Avogadro constant
    {"T0",      273.15},                 // zero Celsius, K
    {"alpha",   0.0072973525693},        // fine structure constant
    {"muB",     9.27400915e-24},         // Bohr magneton
    {"sigSB",   5.670373e-08},           // Stefan-Boltzmann constant
    {"lPlanck", 1.616199e-35},           // Planck length, m
    {"aBohr",   5.2917721092e-11},       // Bohr radius, m
    {"Mpc",     3.08567758149137e+22},   // megaparsec, m
    {"inf",     std::numeric_limits<double>::infinity()},
    {"nan",     std::numeric_limits<double>::quiet_NaN()},
};

/// Names of one letter, entered behind the built-in constants in the store of
/// the user's own: c and G repeat cc and GG, g is standard gravity, m/s^2.
inline constexpr NamedConstant shortConstantRows[] = {
    {"c", 299792458.0},
    {"G", 6.674301e-11},
    {"g", 9.80665},
};

namespace builtin {

/// A limit of the machine's numbers, by key or by code: 0 for an empty
/// argument or an unknown code; an unknown key fails.
double numericLimits(const Value& keyOrCode);

}  // namespace builtin
}  // namespace vorpen
