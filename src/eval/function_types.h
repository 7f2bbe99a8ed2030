// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The signatures of the bodies of built-in functions. A body is a plain
// function; which of these it has is fixed by its dispatch kind.

#include <complex>
#include <span>
#include <string>
#include <vector>

#include "eval/evaluatable.h"

namespace vorpen {

/// One argument of a call of many arguments, evaluated or, for a reference to
/// a function, not.
struct FuncArgument {
    Value* value = nullptr;            ///< null for a function reference
    Evaluatable* function = nullptr;   ///< the reference, null for a value
    Evaluatable* element = nullptr;    ///< the node that the value came from
    std::unique_ptr<DoubleValue> inner;  ///< a converted copy, for arguments passed by reference
};

/// Targets of a multiple assignment after the first, or null in any other call.
using ExtraOutputs = const std::vector<Value*>*;

using TicLikeBody = double (*)();
using AnsBody = Value* (*)(int flag);
using RealBody = double (*)(double);
using IntBody = int (*)(int);
using ComplexBody = std::complex<double> (*)(std::complex<double>);
using ComplexToRealBody = double (*)(std::complex<double>);
using ValueToDoubleBody = double (*)(const Value&);
using ValueToIntBody = int (*)(const Value&);
/// `in` may be `out`.
using VectorToDoubleBody = void (*)(const Value& in, DoubleValue& out);
using VectorToIntBody = void (*)(const Value& in, IntValue& out);
/// Bodies that change their argument. They are given the variable itself when
/// the argument is one, and a copy of anything else. `subject` may be `out`.
using ChangingToDoubleBody = void (*)(DoubleValue& subject, DoubleValue& out);
using ChangingToIntBody = void (*)(DoubleValue& subject, IntValue& out);
using ChangingTwoArgBody = void (*)(DoubleValue& subject, const DoubleValue* second, DoubleValue& out);
/// `second` is null in a call of one argument; `first` may be `out`.
using TwoArgBody = void (*)(const Value& first, const DoubleValue* second, Value& out);
/// `out` has the shape of `points`, and may be it.
using FunctorBody = void (*)(const DoubleValue& parameters, const DoubleValue& points, DoubleValue& out);
using GeneralBody = void (*)(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out);

}  // namespace vorpen
