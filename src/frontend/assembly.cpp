// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/assembly.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "base/errors.h"
#include "eval/comparison.h"
#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/indexing.h"
#include "frontend/operator_table.h"

namespace vorpen {
namespace {

/// The type that an operand has for the evaluator around it: what is not known
/// until run time is fetched as a double.
int fetchedType(const Evaluatable& operand) {
    const int type = operand.type();
    return type == UNKNOWN_VAL ? int{DOUBLE_VAL} : type;
}

bool isSimple(int code) {
    return code == OP_PLUS || code == OP_MINUS || code == OP_TIMES || code == OP_DIVIDE || code == OP_END;
}

bool makesDoubles(char op) { return op == '/' || op == '^' || isFraction(op); }

bool isConstantOperand(const Evaluatable& operand) {
    const ElementKind kind = operand.elementKind();
    if (kind == ElementKind::constant) return true;
    return kind == ElementKind::simpleFunction &&
           static_cast<const SimpleFuncElement&>(operand).inner().elementKind() == ElementKind::constant;
}

EvaluatablePtr computeNow(Evaluatable& element) {
    Workspace workspace(element.type());
    return std::make_unique<NumberElement>(newValueCopy(*element.pValue(workspace.get())));
}

EvaluatablePtr selectFromList(ListValue& list, std::vector<EvaluatablePtr> indices, int type) {
    if (indices.size() != 1) throw SyntaxError{"list indexing with more than 1 index is not yet implemented"};
    if (indices[0]->elementKind() == ElementKind::openSequence)
        throw SyntaxError{"this form of indexing of a list is not yet implemented"};
    return std::make_unique<ListItemElement>(std::move(indices[0]), &list, type);
}

void requireIntegers(const std::vector<EvaluatablePtr>& indices) {
    for (const EvaluatablePtr& index : indices)
        if (index->type() != INTEGER_VAL) throw SyntaxError{"something wrong: index was not an INTEGER_VAL"};
}

/// x[k] with a literal for k, or null for any other index.
EvaluatablePtr selectAtConstant(Value& target, const Evaluatable& index) {
    if (index.elementKind() != ElementKind::constant) return nullptr;
    const Value& constant = static_cast<const NumberElement&>(index).value();
    if (constant.valueType() != INTEGER_VAL || !constant.isScalar()) return nullptr;
    if (constant.intValue() < 1) throw SyntaxError{"index must be positive"};
    return std::make_unique<ConstIndexElement>(&target, constant.intValue());
}

EvaluatablePtr selectAll(Value& target, int mode) {
    auto variable = std::make_unique<ValueElement>(&target);
    if (mode == INDEX_ROW || mode == INDEX_COLUMN) return variable;
    return std::make_unique<UnaryOpElement>(std::move(variable), ':');
}

EvaluatablePtr selectByOne(Value& target, EvaluatablePtr index, int mode) {
    const ElementKind kind = index->elementKind();
    if (kind == ElementKind::openSequence) return selectAll(target, mode);
    if (kind == ElementKind::sequence) {
        std::unique_ptr<SequenceElement> sequence(static_cast<SequenceElement*>(index.release()));
        return std::make_unique<IndexedWithSequenceElement>(&target, mode, std::move(sequence));
    }
    if (mode == INDEX_ELEMENT && target.valueType() != LIST_VAL)
        if (EvaluatablePtr element = selectAtConstant(target, *index)) return element;
    return std::make_unique<IndexedElementSingle>(std::move(index), &target, mode);
}

}  // namespace

void Assembly::appendUnary(char op) {
    EvaluatablePtr& operand = items_.back().operand;
    const bool sign = op == '-', flag = op == '!' || op == '~';
    if (operand->type() == LIST_VAL && (sign || flag)) throw SyntaxError{"illegal unary operator for a list"};
    if (operand->type() == COMPLEX_VAL && flag)
        throw SyntaxError{"illegal unary operator for a complex value"};
    operand = std::make_unique<UnaryOpElement>(std::move(operand), op);
}

void Assembly::appendIndexed(Value& target, std::vector<EvaluatablePtr> indices, int mode, int type) {
    if (target.valueType() == LIST_VAL && type != LIST_VAL)
        return append(selectFromList(static_cast<ListValue&>(target), std::move(indices), type));
    requireIntegers(indices);
    if (indices.size() == 1) return append(selectByOne(target, std::move(indices[0]), mode));
    append(std::make_unique<IndexedElementDouble>(std::move(indices[0]), std::move(indices[1]), &target));
}

void Assembly::foldSequence() {
    EvaluatablePtr last = std::move(items_.back().operand);
    items_.pop_back();
    EvaluatablePtr& first = items_.back().operand;
    items_.back().op = 0;
    if (first->elementKind() != ElementKind::sequence) {
        const bool integers = first->type() == INTEGER_VAL && last->type() == INTEGER_VAL;
        first = std::make_unique<SequenceElement>(std::move(first), std::move(last), nullptr,
                                                  integers ? INTEGER_VAL : DOUBLE_VAL);
        return;
    }
    auto& sequence = static_cast<SequenceElement&>(*first);
    if (sequence.stepOwner()) throw SyntaxError{"a:b:c:d ??"};
    if (last->type() == DOUBLE_VAL && last->elementKind() != ElementKind::endIndex)
        sequence.setType(DOUBLE_VAL);
    sequence.stepOwner() = std::exchange(sequence.stopOwner(), std::move(last));
}

/// Cuts a list into parts; a part ends with an item whose operator the
/// condition holds for, and the last part with the list.
template <class EndsPart>
std::vector<Assembly::Items> Assembly::splitBehind(Items items, EndsPart endsPart) {
    std::vector<Items> parts(1);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const char op = items[i].op;
        parts.back().push_back(std::move(items[i]));
        if (endsPart(op) && i + 1 < items.size()) parts.emplace_back();
    }
    return parts;
}

void Assembly::regroup(int level, int stopLevel) {
    Items grouped;
    for (Items& run : splitBehind(std::move(items_), [&](char op) { return operatorLevel(op) >= level; })) {
        const char op = std::exchange(run.back().op, 0);
        Assembly part(std::move(run));
        if (level > stopLevel) part.regroup(level - 1, stopLevel);
        grouped.push_back({part.finish(), op});
    }
    items_ = std::move(grouped);
}

EvaluatablePtr Assembly::makeComparison(Items sides) {
    if (sides.size() > 3) throw SyntaxError{"illegal form of comparison (more than 3 parts)"};
    const int first = operatorCode(sides[0].op);
    if (sides.size() == 2) {
        if (first == OP_IDENTICAL)
            return std::make_unique<FullyCompareElement>(std::move(sides[0].operand),
                                                         std::move(sides[1].operand));
        return std::make_unique<ComparatorElement>(std::move(sides[0].operand), first,
                                                   std::move(sides[1].operand));
    }
    const int second = operatorCode(sides[1].op);
    if (first == OP_IDENTICAL || second == OP_IDENTICAL)
        throw SyntaxError{"illegal combination of === with a further comparison"};
    return std::make_unique<ComparatorElement>(
        std::move(sides[0].operand), first, std::move(sides[1].operand), second, std::move(sides[2].operand));
}

/// A run without an operator above the level of comparisons, as one operand.
Assembly::Item Assembly::compareSides(Items run, bool hadFractions) {
    const char op = std::exchange(run.back().op, 0);
    Items sides;
    for (Items& side : splitBehind(std::move(run), isComparison)) {
        const char comparison = std::exchange(side.back().op, 0);
        Assembly part(std::move(side));
        if (hadFractions) part.fractionStep();
        sides.push_back({part.finish(), comparison});
    }
    if (sides.size() == 1) return {std::move(sides[0].operand), op};
    return {makeComparison(std::move(sides)), op};
}

void Assembly::comparisonStep(bool hadFractions) {
    Items grouped;
    for (Items& run :
         splitBehind(std::move(items_), [](char op) { return operatorLevel(op) > levelOfComparison; }))
        grouped.push_back(compareSides(std::move(run), hadFractions));
    items_ = std::move(grouped);
}

/// Divides the neighbour of each `//` by what stands right of it, last first.
Assembly::Items Assembly::divideNear(Items items) {
    for (std::size_t i = items.size(); i-- > 0;) {
        if (items[i].op != 'V') continue;
        items[i].op = '/';
        Assembly right(Items(std::move_iterator(items.begin() + i + 1), std::move_iterator(items.end())));
        items.erase(items.begin() + i + 1, items.end());
        items.push_back({right.finish(), 0});
    }
    return items;
}

/// Divides what stands between one `%` and the next, from the left.
Assembly::Items Assembly::divideFar(Items items) {
    std::vector<Items> parts = splitBehind(std::move(items), [](char op) { return op == '%'; });
    if (parts.size() == 1) return divideNear(std::move(parts[0]));
    Items quotient;
    for (Items& part : parts) {
        part.back().op = 0;
        quotient.push_back({Assembly(divideNear(std::move(part))).finish(), '/'});
    }
    quotient.back().op = 0;
    return quotient;
}

void Assembly::fractionStep() {
    Items divided;
    for (Items& part :
         splitBehind(std::move(items_), [](char op) { return operatorLevel(op) == levelOfQuery; })) {
        const char op = std::exchange(part.back().op, 0);
        for (Item& item : divideFar(std::move(part))) divided.push_back(std::move(item));
        divided.back().op = op;
    }
    items_ = std::move(divided);
}

/// Elements of rows, rows, and parts of queries become operands of their own
/// where they are more than that already.
void Assembly::groupSeparators() {
    int lowest = levelOfQuery, highest = 0;
    for (std::size_t i = 0; i + 1 < items_.size(); ++i) {
        const int level = operatorLevel(items_[i].op);
        lowest = std::min(lowest, level);
        highest = std::max(highest, level);
    }
    if (highest >= levelOfComma && lowest != highest) regroup(levelOfSemicolon, levelOfComma);
}

int Assembly::staticType() const {
    int type = INTEGER_VAL;
    for (const Item& item : items_) type = std::max(type, fetchedType(*item.operand));
    if (type == INTEGER_VAL && std::ranges::any_of(items_, makesDoubles, &Item::op)) return DOUBLE_VAL;
    return type;
}

bool Assembly::isConstant() const {
    return std::ranges::all_of(items_, [](const Item& item) { return isConstantOperand(*item.operand); });
}

EvaluatablePtr Assembly::makeEvaluator(int type) {
    ExpressionItems list;
    list.reserve(items_.size());
    bool simple = true, uniform = true;
    for (Item& item : items_) {
        const int code = operatorCode(item.op);
        simple = simple && isSimple(code);
        uniform = uniform && fetchedType(*item.operand) == type;
        if (type == COMPLEX_VAL && item.operand->type() != COMPLEX_VAL)
            item.operand = std::make_unique<ToComplexElement>(std::move(item.operand));
        list.push_back({std::move(item.operand), code});
    }
    if (simple) {
        if (uniform || type == COMPLEX_VAL) return std::make_unique<SimpleExpression>(std::move(list), type);
        return std::make_unique<SimpleMixedTypeExpression>(std::move(list));
    }
    if (type == INTEGER_VAL) return std::make_unique<GeneralIntegerExpression>(std::move(list));
    if (type == COMPLEX_VAL) return std::make_unique<GeneralComplexExpression>(std::move(list));
    return std::make_unique<GeneralMixedTypeExpression>(std::move(list));
}

EvaluatablePtr Assembly::finish() {
    if (items_.empty()) throw SyntaxError{"an empty expression is not allowed"};
    groupSeparators();
    const bool constant = isConstant();
    if (items_.size() == 1) {
        EvaluatablePtr operand = std::move(items_[0].operand);
        if (!constant || operand->elementKind() == ElementKind::constant) return operand;
        return computeNow(*operand);
    }
    const int type = staticType();
    if (type == LIST_VAL) throw SyntaxError{"expression contains an illegal operation involving a list"};
    EvaluatablePtr evaluator = makeEvaluator(type);
    return constant ? computeNow(*evaluator) : std::move(evaluator);
}

EvaluatablePtr applyToConstant(char op, const Evaluatable& constant) {
    const Value& value = static_cast<const NumberElement&>(constant).value();
    if (!value.isNumericKind()) throw PlainFailure{"vorpen bug! Expression::Append with a list"};
    auto result = newValueCopy(value);
    if (op == '-')
        result->negate();
    else
        result->logicalNot();
    return std::make_unique<NumberElement>(std::move(result));
}

}  // namespace vorpen
