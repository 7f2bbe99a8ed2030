// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/operator_table.h"

#include <array>

#include "values/mathmatrix.h"

namespace vorpen {
namespace {

struct OperatorRow {
    char character;
    OpCode code;
};

// clang-format off
constexpr OperatorRow operatorRows[] = {
    {'^', OP_POWER},        {'R', OP_MATRIX_POWER},
    {'*', OP_TIMES},        {'/', OP_DIVIDE},         {'.', OP_PRODUCT}, {'@', OP_TENSOR},
    {'v', OP_CROSS},        {'_', OP_QUOTIENT},
    {'+', OP_PLUS},         {'-', OP_MINUS},          {'u', OP_REMAINDER},
    {'p', OP_ADD_LINES},    {'m', OP_SUBTRACT_LINES},
    {'a', OP_BIT_AND},
    {'r', OP_BIT_OR},       {'X', OP_BIT_XOR},
    {'<', OP_LESS},         {'L', OP_LESS_EQUAL},     {'E', OP_EQUAL},   {'I', OP_IDENTICAL},
    {'N', OP_NOT_EQUAL},    {'G', OP_GREATER_EQUAL},  {'>', OP_GREATER},
    {'A', OP_AND_THEN},     {'&', OP_AND},
    {'O', OP_OR_ELSE},      {'|', OP_OR},             {'x', OP_XOR},
    {',', OP_COMMA},
    {';', OP_SEMICOLON},
    {'?', OP_QUERY},        {'W', OP_QUERY_ELSE},
    {'\0', OP_END},
};
// clang-format on

constexpr auto codeOfCharacter = [] {
    std::array<unsigned char, 256> codes{};
    for (const OperatorRow& row : operatorRows) codes[static_cast<unsigned char>(row.character)] = row.code;
    return codes;
}();

}  // namespace

int operatorCode(char op) { return codeOfCharacter[static_cast<unsigned char>(op)]; }

}  // namespace vorpen
