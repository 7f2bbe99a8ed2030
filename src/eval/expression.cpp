// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/expression.h"

#include <cmath>

#include "base/errors.h"
#include "eval/logical_table.h"
#include "eval/matrix_power.h"
#include "values/kernels.h"

namespace vorpen {
namespace {

using Complex = std::complex<double>;

template <class V>
constexpr bool isComplexKind = std::is_same_v<V, ComplexValue>;

/// An intermediate result: a number with its mark as long as it is a scalar,
/// then an array. An array that is only read may be a variable's own.
template <class V>
class Term {
public:
    using T = std::conditional_t<isComplexKind<V>, Complex, double>;

    void setNumber(T x, int mark) {
        scalar_ = true;
        borrowed_ = nullptr;
        number_ = x;
        mark_ = mark;
    }
    /// Stands for an array that stays as it is while this term lives.
    void borrow(V& array) {
        scalar_ = false;
        borrowed_ = &array;
    }
    void take(V&& array) {
        scalar_ = false;
        borrowed_ = nullptr;
        array_ = std::move(array);
    }
    [[nodiscard]] bool isScalar() const { return scalar_; }
    [[nodiscard]] bool isBorrowed() const { return borrowed_ != nullptr; }
    [[nodiscard]] T number() const { return number_; }
    [[nodiscard]] int mark() const { return mark_; }
    [[nodiscard]] int size() const { return scalar_ ? 1 : borrowed_ ? borrowed_->size() : array_.size(); }

    /// The value as an array for reading.
    V& readable() { return borrowed_ ? *borrowed_ : array(); }

    /// The value as a private array, which it is from now on.
    V& array() {
        if (borrowed_) {
            array_ = *std::exchange(borrowed_, nullptr);
            return array_;
        }
        if (scalar_) {
            if constexpr (std::is_same_v<V, IntValue>)
                array_.fillOne(static_cast<int>(number_));
            else
                array_.fillOne(number_);
            array_.setMark(mark_);
            scalar_ = false;
        }
        return array_;
    }

    /// The truncated number that a condition looks at.
    [[nodiscard]] int asInteger() {
        if constexpr (isComplexKind<V>)
            return 0;
        else
            return scalar_ ? truncateToInt(number_) : readable().intValue();
    }
    [[nodiscard]] bool isNonZero() {
        if constexpr (isComplexKind<V>)
            return false;
        else
            return (scalar_ ? number_ : readable().doubleValue()) != 0;
    }

private:
    bool scalar_ = false;
    int mark_ = 0;
    T number_{};
    V* borrowed_ = nullptr;
    V array_;
};

/// left . right, where the left matrix may be a variable's own.
void multiplyMatrices(DoubleValue& left, bool isPrivate, DoubleValue& right, Term<DoubleValue>& out) {
    if (isPrivate) return left.matrixProduct(right);
    DoubleValue product;
    product.viewOf(left.data(), left.size(), left.nrow(), left.mark());
    product.matrixProduct(right);
    out.take(std::move(product));
}

int wrapped(std::int64_t x) { return static_cast<int>(static_cast<std::uint32_t>(x)); }

/// Walks the list by precedence: each level evaluates the operands of the
/// tighter levels and applies its own operators from left to right.
template <class V>
class LevelEvaluator {
public:
    /// In a pure expression no operand can change a variable, so that arrays
    /// may be read where they are.
    LevelEvaluator(const ExpressionItems& items, int minLevel, bool pure)
        : items_(items), minLevel_(minLevel), pure_(pure) {}

    void evaluateLevel(Term<V>& out, int level) {
        if (level <= minLevel_) return evaluateOperand(out);
        const int own = level - 1;
        evaluateLevel(out, own);
        while (items_[at_].op >> 3 == own) {
            const int code = items_[at_++].op;
            if (own < 3)
                arithmetic(out, code, own);
            else if (code == OP_COMMA || code == OP_SEMICOLON)
                join(out, code, own);
            else if constexpr (isComplexKind<V>)
                raiseRuntimeError("invalid operation in a complex-number expression");
            else if (hasLogicalEntry(code))
                logical(out, code, own);
            else if (own == 6 || own == 7)
                shortCircuit(out, code, own);
            else
                return query(out, own);
        }
    }

private:
    void evaluateOperand(Term<V>& out) {
        Evaluatable& operand = *items_[at_].operand;
        if constexpr (isComplexKind<V>) {
            ComplexValue workspace;
            copyResult(out, *operand.pValue(&workspace), &workspace);
        } else {
            // Where the operand is an integer and the level works in doubles
            // the result is converted on the way.
            Workspace workspace(operand.type());
            const Outcome outcome = operand.evaluate(workspace.get());
            if (outcome.isScalar())
                out.setNumber(outcome.number, outcome.mark());
            else
                copyResult(out, *outcome.value(), workspace.get());
        }
    }

    void copyResult(Term<V>& out, Value& result, Value* workspace) {
        V& array = out.array();
        if (pure_ && &result != workspace && result.valueType() == array.valueType())
            return out.borrow(static_cast<V&>(result));
        if (&result == workspace && result.valueType() == array.valueType())
            array = std::move(static_cast<V&>(result));
        else
            array.copyFrom(result);
    }

    void arithmetic(Term<V>& acc, int code, int own) {
        Term<V> rhs;
        evaluateLevel(rhs, own);
        if (code == OP_QUOTIENT && isComplexKind<V>) throw OperatorFailure{'?'};
        if ((code & 7) < 2 || code == OP_QUOTIENT || code == OP_REMAINDER) return elementwise(acc, code, rhs);
        if constexpr (std::is_same_v<V, DoubleValue>)
            if (code == OP_PRODUCT)
                return multiplyMatrices(acc.readable(), !acc.isBorrowed(), rhs.readable(), acc);
        V& left = acc.array();
        V& right = rhs.readable();
        switch (code) {
            case OP_MATRIX_POWER:
                if constexpr (std::is_same_v<V, DoubleValue>)
                    return matrixPower(left, right);
                else
                    throw OperatorFailure{'?'};
            case OP_PRODUCT: return left.matrixProduct(right);
            case OP_TENSOR: return left.tensorProduct(right);
            case OP_CROSS: return left.crossProduct(right);
            case OP_ADD_LINES: return left.addLines(right, 1);
            case OP_SUBTRACT_LINES: return left.addLines(right, -1);
            default: throw OperatorFailure{'?'};
        }
    }

    static void elementwise(Term<V>& acc, int code, Term<V>& rhs) {
        if constexpr (!isComplexKind<V>)
            if (acc.isScalar() && rhs.isScalar())
                return acc.setNumber(applyNumbers(code, acc.number(), rhs.number()), acc.mark());
        acc.array().operate(code, rhs.readable());
    }

    /// Two numbers of the kind of V, integers held in doubles.
    static double applyNumbers(int code, double a, double b) {
        if constexpr (std::is_same_v<V, IntValue>) {
            const auto x = static_cast<std::int64_t>(a), y = static_cast<std::int64_t>(b);
            switch (code) {
                case OP_PLUS: return wrapped(x + y);
                case OP_MINUS: return wrapped(x - y);
                case OP_TIMES: return wrapped(x * y);
                case OP_POWER: return truncateToInt(std::pow(a, b));
                default: Require(y != 0, "integer division by zero");
            }
            return code == OP_REMAINDER ? wrapped(x % y) : wrapped(x / y);
        } else {
            return applyOperator(code, a, b);
        }
    }

    void logical(Term<V>& acc, int code, int own) {
        Term<V> rhs;
        evaluateLevel(rhs, own);
        if (acc.isScalar() && rhs.isScalar())
            return acc.setNumber(applyLogical(code, numberOf(acc), numberOf(rhs)), acc.mark());
        V& left = acc.array();
        V& right = rhs.readable();
        if (right.size() != 1) {
            if (left.size() == 1) {
                const auto first = left[0];
                left.fill(right.size(), right.nrow(), first);
            } else if (left.size() != right.size() || left.nrow() != right.nrow()) {
                throw OperatorFailure{'i'};
            }
        }
        const int step = right.size() == 1 ? 0 : 1;
        for (int i = 0; i < left.size(); ++i) left[i] = applyLogical(code, left[i], right[i * step]);
    }

    static auto numberOf(const Term<V>& term) {
        if constexpr (std::is_same_v<V, IntValue>)
            return static_cast<int>(term.number());
        else
            return term.number();
    }

    void shortCircuit(Term<V>& acc, int code, int own) {
        Require(acc.size() == 1, "non-scalar condition", "logical operator");
        const bool left = acc.asInteger() != 0;
        if (left == (code == OP_OR_ELSE)) {
            // The right side is left standing: the walk goes on behind its
            // first operand.
            acc.setNumber(left, FORM_NUMERIC);
            return;
        }
        Term<V> rhs;
        evaluateLevel(rhs, own);
        Require(rhs.size() == 1, "non-scalar condition", "logical operator");
        acc.setNumber(rhs.isNonZero(), FORM_NUMERIC);
    }

    void join(Term<V>& acc, int code, int own) {
        Term<V> rhs;
        evaluateLevel(rhs, own);
        if (code == OP_COMMA)
            acc.array().appendColumns(rhs.readable());
        else
            acc.array().appendRows(rhs.readable());
    }

    void query(Term<V>& acc, int own) {
        Require(acc.size() == 1, "non-scalar condition", "query");
        if (acc.asInteger() == 0) {
            while (items_[at_].op != OP_QUERY_ELSE && items_[at_].op != OP_END) ++at_;
            if (items_[at_].op == OP_QUERY_ELSE) ++at_;
        }
        Term<V> chosen;
        evaluateLevel(chosen, own);
        if (chosen.isScalar())
            acc.setNumber(chosen.number(), chosen.mark());
        else
            acc.take(std::move(chosen.array()));
    }

    const ExpressionItems& items_;
    const int minLevel_;
    const bool pure_;
    std::size_t at_ = 0;
};

struct Levels {
    int lowest = 100, highest = 0;
};

Levels levelsOf(const ExpressionItems& items) {
    Levels levels;
    for (std::size_t i = 0; i + 1 < items.size(); ++i) {
        levels.lowest = std::min(levels.lowest, items[i].op >> 3);
        levels.highest = std::max(levels.highest, items[i].op >> 3);
    }
    return levels;
}

template <class V>
Outcome finishTerm(Term<V>& term, Value* workspace) {
    if constexpr (!isComplexKind<V>)
        if (term.isScalar()) return Outcome::scalar(term.number(), term.mark());
    if (workspace->valueType() == term.array().valueType())
        static_cast<V&>(*workspace) = std::move(term.array());
    else
        workspace->assign(term.array());
    return outcomeOf(workspace);
}

template <class V>
void evaluateInto(Term<V>& term, const ExpressionItems& items, int minLevel, int maxLevel, bool pure) {
    LevelEvaluator<V>(items, minLevel, pure).evaluateLevel(term, maxLevel + 1);
}

/// Only the most negative element of a result is looked at: integers wrap
/// around silently, and a product that wrapped to a large negative number is
/// what this catches.
void testOverflow(Term<IntValue>& term) {
    if (term.size() == 0) return;
    const int lowest = term.isScalar() ? static_cast<int>(term.number())
                                       : term.array()[term.array().indexOfMin()];
    constexpr int largest = 0x3FFFFFFF;
    Require(wrapped(-std::int64_t{lowest}) <= largest, "integer overflow");
}

Outcome evaluateIntegers(const ExpressionItems& items, int minLevel, int maxLevel, bool pure, Value* workspace) {
    Term<IntValue> term;
    evaluateInto(term, items, minLevel, maxLevel, pure);
    testOverflow(term);
    return finishTerm(term, workspace);
}

Outcome evaluateComplex(const ExpressionItems& items, int minLevel, int maxLevel, bool pure, Value* workspace) {
    Term<ComplexValue> term;
    evaluateInto(term, items, minLevel, maxLevel, pure);
    return finishTerm(term, workspace);
}

void requireDouble(const Value* workspace, std::string_view context) {
    Require(workspace->valueType() == DOUBLE_VAL,
            "!! Vorpen failure. Invoked with non-DOUBLE_VAL workspace. Please report this bug.", context);
}

}  // namespace

Expression::Expression(ExpressionItems items, int type) : items_(std::move(items)), type_(type) {
    if (items_.back().op != OP_END) items_.back().op = OP_END;
    pure_ = std::all_of(items_.begin(), items_.end(), [](const auto& item) { return item.operand->isPure(); });
}

bool Expression::uses(const Value* v) const {
    return std::any_of(items_.begin(), items_.end(), [v](const auto& item) { return item.operand->uses(v); });
}

SimpleExpression::SimpleExpression(ExpressionItems items, int type) : Expression(std::move(items), type) {
    if (type_ == DOUBLE_VAL) program_ = BlockProgram::compile(*this);
}

Value* SimpleExpression::pValue(Value* workspace) { return valueOf(evaluate(workspace), workspace); }

Outcome SimpleExpression::evaluate(Value* workspace) {
    constexpr int products = 1, sums = 2;
    switch (type_) {
        case INTEGER_VAL: return evaluateIntegers(items_, products, sums, pure_, workspace);
        case DOUBLE_VAL: return program_->evaluate(workspace);
        case COMPLEX_VAL: return evaluateComplex(items_, products, sums, pure_, workspace);
        default: raiseRuntimeError("!Vorpen bug: SimpleExpression::pValue with invalid type");
    }
}

SimpleMixedTypeExpression::SimpleMixedTypeExpression(ExpressionItems items)
    : Expression(std::move(items), DOUBLE_VAL), program_(BlockProgram::compile(*this)) {}

Value* SimpleMixedTypeExpression::pValue(Value* workspace) {
    requireDouble(workspace, "SimpleMixedTypeExpression::pValue");
    return valueOf(evaluate(workspace), workspace);
}

Outcome SimpleMixedTypeExpression::evaluate(Value* workspace) { return program_->evaluate(workspace); }

GeneralExpression::GeneralExpression(ExpressionItems items, int type) : Expression(std::move(items), type) {
    const Levels levels = levelsOf(items_);
    minLevel_ = levels.lowest;
    maxLevel_ = levels.highest;
}

GeneralIntegerExpression::GeneralIntegerExpression(ExpressionItems items)
    : GeneralExpression(std::move(items), INTEGER_VAL), mask_(MaskProgram::compile(*this)) {}

Value* GeneralIntegerExpression::pValue(Value* workspace) { return valueOf(evaluate(workspace), workspace); }

Outcome GeneralIntegerExpression::evaluate(Value* workspace) {
    if (mask_) {
        MaskRun run(mask_->steps());
        if (run.prepare()) return run.deliver(workspace);
    }
    return evaluateIntegers(items_, minLevel_, maxLevel_, pure_, workspace);
}

GeneralMixedTypeExpression::GeneralMixedTypeExpression(ExpressionItems items)
    : GeneralExpression(std::move(items), DOUBLE_VAL) {
    if (BlockProgram::applies(*this))
        program_ = BlockProgram::compile(*this);
    else
        numbers_ = NumberArray::compile(items_);
}

Value* GeneralMixedTypeExpression::pValue(Value* workspace) {
    requireDouble(workspace, "GeneralMixedTypeExpression::pValue");
    return valueOf(evaluate(workspace), workspace);
}

Outcome GeneralMixedTypeExpression::evaluate(Value* workspace) {
    if (program_) return program_->evaluate(workspace);
    if (numbers_ && workspace->valueType() == DOUBLE_VAL && numbers_->store(asDouble(*workspace)))
        return Outcome::of(workspace);
    Term<DoubleValue> term;
    evaluateInto(term, items_, minLevel_, maxLevel_, pure_);
    return finishTerm(term, workspace);
}

GeneralComplexExpression::GeneralComplexExpression(ExpressionItems items)
    : GeneralExpression(std::move(items), COMPLEX_VAL) {}

Value* GeneralComplexExpression::pValue(Value* workspace) {
    return valueOf(evaluateComplex(items_, minLevel_, maxLevel_, pure_, workspace), workspace);
}

}  // namespace vorpen
