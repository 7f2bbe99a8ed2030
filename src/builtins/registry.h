// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The registry of built-in functions: one row for each name of the language
// that is neither a variable nor a constant nor a user function. A row says
// how the body is called (its dispatch kind), where it stands in the table of
// its kind, what it returns and how many arguments it takes. The compiler
// asks for a row by name and builds the element around the body.
//
// The tables are constant data and are put into order while the program is
// compiled, so that the registry costs nothing at start-up and a look-up is a
// binary search.

#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "eval/function_types.h"

namespace vorpen {

/// How a body is called.
enum BuiltinKind : int {
    TICLIKE = 1,          ///< no argument, one double
    ANSFUNC = 2,          ///< a whole value; the optional argument is a flag
    SCALAR2SCALAR = 3,    ///< one number to one number, over every element
    COLUMN2SCALAR = 4,    ///< a vector to one number; a matrix column by column
    VALUE2SCALAR = 5,     ///< a whole value, also a list, to one number
    VECTOR2VECTOR = 6,    ///< an array to an array of its own shape
    TWOARG = 7,           ///< an array and an optional array of doubles
    FUNCTOR = 8,          ///< parameters and points; the result has the points' shape
    GENERAL = 9,          ///< any number of arguments and outputs
    USERFUNC = 10,        ///< a function of the user; in no row of the registry
};

using BuiltinBody =
    std::variant<TicLikeBody, AnsBody, RealBody, IntBody, ValueToDoubleBody, ValueToIntBody, VectorToDoubleBody,
                 VectorToIntBody, TwoArgBody, FunctorBody, GeneralBody, ChangingToDoubleBody, ChangingToIntBody,
                 ChangingTwoArgBody>;

/// What sets single functions apart for the compiler.
enum BuiltinTrait : unsigned {
    NO_TRAIT = 0,
    ANY_ARGUMENT = 1,     ///< the types of the arguments are not checked
    LOGICAL = 2,          ///< the result is a truth value
    WORD_FORM = 4,        ///< a plain word behind the name is its argument, as text
    EMPTY_ARGUMENT = 8,   ///< standing alone it is called with the empty array
    END_OF_INDEX = 16,    ///< `end`, which the parser deals with
    THREAD_SAFE = 32,     ///< plain arithmetic that may run on worker threads
    TYPED_BY_FILE = 128,  ///< the value in the file of that name tells the type of the result
    KEEPS_RESULT = 256,   ///< may leave its result as it finds it
    PURE = 512,           ///< reads its arguments, which it checks first, and writes a result no larger
};

/// One row of the registry.
struct BuiltinInfo {
    std::string_view name;
    BuiltinKind kind{};
    int index = 0;        ///< place in the table of the kind, from 0
    int resultType = 0;   ///< a ValueType
    int minArgs = 0;
    int maxArgs = 0;      ///< -1: no upper limit
    unsigned traits = NO_TRAIT;
    BuiltinBody body;

    [[nodiscard]] constexpr bool has(BuiltinTrait trait) const { return (traits & trait) != 0; }
    [[nodiscard]] constexpr bool anyArgument() const { return has(ANY_ARGUMENT); }
};

/// The row of a name, or null. Names are case-sensitive.
[[nodiscard]] const BuiltinInfo* findBuiltin(std::string_view name);

/// All rows, ordered by name.
[[nodiscard]] std::span<const BuiltinInfo> allBuiltins();

/// What takes the place of a body of kind SCALAR2SCALAR when its argument is
/// complex.
struct ComplexVariant {
    std::variant<ComplexBody, ComplexToRealBody> body;
    int resultType;  ///< COMPLEX_VAL or DOUBLE_VAL
};

/// The complex variant of a body, or nothing when it takes no complex number.
[[nodiscard]] std::optional<ComplexVariant> complexVariantOf(RealBody body);

/// How many functions have a complex variant, and how many pairs of a function
/// and a variant were entered for them; a later pair replaces an earlier one.
struct ComplexVariantCounts {
    int functions, pairs;
};
[[nodiscard]] ComplexVariantCounts complexVariantCounts();

}  // namespace vorpen
