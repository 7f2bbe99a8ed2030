// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bodies that work on strings: conversion between text and numbers, cutting
// and joining, searching, keys, and evaluation of text. A string is an array
// of character codes with the string form; it may come as integers or as
// doubles.

#include <string_view>

#include "eval/function_types.h"

namespace vorpen::builtin {

/// The text of a value with 9 or the given number of significant digits. One
/// row keeps the blank at its end; several rows become a character matrix.
void toText(const Value& v, const DoubleValue* precision, Value& out);

/// Whether the whole text, apart from blanks around it, is one decimal number.
[[nodiscard]] bool holdsNumber(std::string_view text);
int isNumber(const Value& text);
/// The number that a text holds; with a base, the integer of that base at its
/// start.
void toNumber(const Value& text, const DoubleValue* base, Value& out);

/// (text), (text, separator), (text, separator, delimiter): a row list of the
/// pieces at white space or at the separator, which does not count between
/// delimiters.
void split(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// (list), (list, between): all items as one row, in the form of the first.
void join(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// (vector, length), (..., fill), (..., fill, side): cut or filled to a
/// length; a side below 1 fills in front. Elements are truncated to integers.
void pad(std::span<FuncArgument> arguments, ExtraOutputs, Value& out);
/// Without the blanks at both ends.
void trim(const Value& text, IntValue& out);
/// Positions from 1 at which the second vector begins in the first, in a row.
void findText(const Value& text, const DoubleValue* part, Value& out);
/// The value of an expression given as text.
void evaluate(const Value& text, DoubleValue& out);

/// Binary digits, most significant first, with a least number of digits; each
/// element of a vector gives a row. A negative width gives the digits in
/// reverse order, in exactly that many places.
void binaryDigits(const Value& n, const DoubleValue* width, Value& out);
/// The numbers whose binary digits stand in the rows; a vector is one number.
void fromBinaryDigits(const Value& digits, IntValue& out);

/// A text packed into one number of key form, and back; several keys give the
/// rows of a character matrix.
void packKey(const Value& text, DoubleValue& out);
void unpackKey(const Value& keys, IntValue& out);

}  // namespace vorpen::builtin
