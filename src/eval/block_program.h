// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An expression on doubles as a short program for a stack machine. It is made
// once, from the flat list of an expression with the lists of its
// sub-expressions and the element-wise functions in it worked in, and runs in
// one of two ways.
//
// While every operand is a scalar, the program runs on numbers, in order, and
// no value is built. With the first array it goes over to the second way: the
// rest of the operands are evaluated in the same order, each operator checks
// the shapes when its turn comes, so that failures arise exactly where an
// operator-by-operator evaluation has them, and what is left is a list of
// array operations. That list then runs over blocks of a few hundred elements
// whose intermediate results stay in the first-level cache: one pass over
// memory, straight into the result, on several threads when the arrays are
// large.
//
// Operands that can run a user's code are evaluated in their turn; an array
// variable read before such an operand is copied, since it may change.

#include <memory>
#include <vector>

#include "eval/evaluatable.h"

namespace vorpen {

class Expression;

class BlockProgram {
public:
    /// The program of a node of static type double: an expression or an
    /// element-wise function. The program refers to nodes below `root`, and
    /// lives no longer than it.
    static std::unique_ptr<BlockProgram> compile(const Evaluatable& root);

    /// True for the expressions whose operators all work element by element.
    static bool applies(const Expression& expression);

    /// The workspace must be a double when the result is an array.
    Outcome evaluate(Value* workspace) const;

    enum class Kind : unsigned char {
        pushDouble,    ///< a double variable
        pushInt,       ///< an integer variable or a constant array of integers
        pushNumber,    ///< a constant scalar
        pushNode,      ///< any other node, evaluated
        call,          ///< a function over the elements of the top
        negate,
        operate,       ///< the two on top become one
        operateDouble, ///< pushDouble and operate in one
        operateNumber, ///< pushNumber and operate in one
    };

    struct Instruction {
        Kind kind;
        unsigned char op = 0;        ///< operator code of the operating kinds
        bool integerOperand = false; ///< right operand of a mixed product or quotient
        bool copyArray = false;      ///< a later operand may change the variable
        int mark = 0;
        union {
            Value* variable;
            Evaluatable* node;
            double (*body)(double);
            double number;
        };
    };

private:
    friend class ProgramBuilder;
    std::vector<Instruction> code_;
    int stackDepth_ = 0;
    bool hasNodes_ = false;
    bool threadSafe_ = true;  ///< all functions called may run on workers
};

}  // namespace vorpen
