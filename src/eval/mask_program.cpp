// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/mask_program.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "base/errors.h"
#include "base/parallel.h"
#include "eval/comparison.h"
#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/logical_table.h"
#include "values/mask_kernels.h"

namespace vorpen {

// ---- building

bool MaskProgram::applies(const ComparatorElement& comparison) {
    const auto isNumeric = [](const Evaluatable& part) { return part.type() <= DOUBLE_VAL && part.isPure(); };
    if (!isNumeric(comparison.left()) || !isNumeric(comparison.right())) return false;
    if (!comparison.isChain()) return true;
    // Whether the third part is evaluated at all depends on the first two. A
    // constant or a variable lets nobody see that.
    const Evaluatable& third = comparison.third();
    return isNumeric(third) && (dynamic_cast<const NumberElement*>(&third) || dynamic_cast<const ValueElement*>(&third));
}

namespace {

/// A comparison of two numbers fills the block: it meets arrays elsewhere.
void compareBlock(int op, unsigned char* truths, Operand a, Operand b, std::int64_t n) {
    const bool areNumbers = a.one && b.one;
    compareItems(op, truths, a, b, areNumbers ? 1 : n);
    if (areNumbers) std::memset(truths, truths[0], n);
}

/// The last part of a chain as applies() lets it through.
bool isNumber(const Evaluatable& part) {
    if (const auto* variable = dynamic_cast<const ValueElement*>(&part)) return variable->variable()->size() == 1;
    return static_cast<const NumberElement&>(part).value().size() == 1;
}

}  // namespace

bool MaskProgram::addLevel(const GeneralIntegerExpression& expression, std::size_t& next, int level) {
    const ExpressionItems& items = expression.items();
    if (level == 0) return addCondition(*items[next].operand);
    if (!addLevel(expression, next, level - 1)) return false;
    while (items[next].op >> 3 == level - 1) {
        const int code = items[next++].op;
        if (!hasLogicalEntry(code) || !addLevel(expression, next, level - 1)) return false;
        steps_.push_back({nullptr, code});
    }
    return true;
}

bool MaskProgram::addCondition(const Evaluatable& condition) {
    if (const auto* comparison = dynamic_cast<const ComparatorElement*>(&condition)) {
        steps_.push_back({comparison});
        return applies(*comparison) && ++comparisons_ <= maxComparisons;
    }
    const auto* expression = dynamic_cast<const GeneralIntegerExpression*>(&condition);
    std::size_t next = 0;
    return expression && addLevel(*expression, next, OP_END >> 3);
}

std::unique_ptr<MaskProgram> MaskProgram::compile(const Evaluatable& condition) {
    auto program = std::make_unique<MaskProgram>();
    return program->addCondition(condition) ? std::move(program) : nullptr;
}

// ---- preparing a run

MaskRun::Part MaskRun::evaluatePart(Evaluatable& element) {
    Workspace& room = rooms_.add(element.type());
    const Outcome outcome = element.evaluate(room.get());
    if (outcome.isScalar()) return {nullptr, nullptr, outcome.number, 1, 1};
    const Value& value = *outcome.value();
    if (value.size() == 1) return {nullptr, nullptr, value.doubleValue(), 1, value.nrow()};
    if (value.valueType() == INTEGER_VAL) return {nullptr, asInt(value).data(), 0, value.size(), value.nrow()};
    return {asDouble(value).data(), nullptr, 0, value.size(), value.nrow()};
}

MaskRun::Shape MaskRun::prepareComparison(const ComparatorElement& comparison) {
    Comparison& parts = comparisons_[comparisonCount_++];
    parts.op1 = comparison.firstOperator();
    parts.op2 = 0;
    parts.a = evaluatePart(comparison.left());
    parts.b = evaluatePart(comparison.right());
    const Part &a = parts.a, &b = parts.b;
    Require(a.size == 1 || b.size == 1 || (a.size == b.size && a.nrow == b.nrow), "incompatible matrix sizes");
    if (comparison.isChain()) {
        parts.op2 = comparison.secondOperator();
        parts.c = evaluatePart(comparison.third());
    }
    const Part& shaping = b.size == 1 ? a : b;
    return {shaping.size, shaping.nrow};
}

bool MaskRun::prepare() {
    for (const MaskStep& step : steps_)
        if (step.comparison && step.comparison->isChain() && !isNumber(step.comparison->third())) return false;
    int depth = 0;
    for (const MaskStep& step : steps_) {
        if (step.comparison) {
            shapes_[depth++] = prepareComparison(*step.comparison);
            continue;
        }
        Shape &left = shapes_[depth - 2], &right = shapes_[depth - 1];
        --depth;
        if (right.size == 1) continue;
        if (left.size == 1)
            left = right;
        else if (left.size != right.size || left.nrow != right.nrow)
            throw OperatorFailure{'i'};
    }
    return true;
}

// ---- truth values

Operand MaskRun::operandOf(const Part& part, std::int64_t begin, std::int64_t n, double* converted) {
    if (part.size == 1) return {&part.number, true};
    if (part.doubles) return {part.doubles + begin, false};
    std::copy_n(part.integers + begin, n, converted);
    return {converted, false};
}

void MaskRun::compare(const Comparison& comparison, unsigned char* truths, std::int64_t begin, std::int64_t n) const {
    double converted[2][blockSize];
    unsigned char further[blockSize];
    const Operand a = operandOf(comparison.a, begin, n, converted[0]);
    const Operand b = operandOf(comparison.b, begin, n, converted[1]);
    compareBlock(comparison.op1, truths, a, b, n);
    if (comparison.op2 == 0) return;
    compareBlock(comparison.op2, further, b, {&comparison.c.number, true}, n);
    joinTruths(OP_AND, truths, further, n);
}

void MaskRun::makeTruths(unsigned char* truths, std::int64_t begin, std::int64_t n) const {
    unsigned char blocks[MaskProgram::maxComparisons - 1][blockSize];
    const auto at = [&](int depth) { return depth == 0 ? truths : blocks[depth - 1]; };
    int depth = 0;
    const Comparison* next = comparisons_;
    for (const MaskStep& step : steps_) {
        if (step.comparison) {
            compare(*next++, at(depth++), begin, n);
        } else {
            --depth;
            joinTruths(step.op, at(depth - 1), at(depth), n);
        }
    }
}

/// Calls work(truths, begin, n) for each block.
template <class Work>
void MaskRun::forEachBlock(Work&& work) const {
    parallelFor(size(), blockSize, [&](std::int64_t begin, std::int64_t end) {
        unsigned char truths[blockSize];
        for (std::int64_t at = begin; at < end; at += blockSize) {
            const std::int64_t n = std::min(blockSize, end - at);
            makeTruths(truths, at, n);
            work(truths, at, n);
        }
    });
}

Outcome MaskRun::deliver(Value* workspace) const {
    if (size() == 1 && shapes_[0].nrow == 1) {
        unsigned char truth;
        makeTruths(&truth, 0, 1);
        return Outcome::scalar(truth, FORM_BOOL);
    }
    IntValue result;
    result.setSizeShapeMark(size(), shapes_[0].nrow, FORM_BOOL);
    forEachBlock([&](const unsigned char* truths, std::int64_t begin, std::int64_t n) {
        widenTruths(result.data() + begin, truths, n);
    });
    if (workspace->valueType() == INTEGER_VAL)
        asInt(*workspace).adopt(std::move(result));
    else
        workspace->assign(result);
    return Outcome::of(workspace);
}

void MaskRun::select(const DoubleValue& from, DoubleValue& out) const {
    // The first pass over the blocks tells where each one's elements go.
    std::vector<int> ends((size() + blockSize - 1) / blockSize);
    forEachBlock([&](const unsigned char* truths, std::int64_t begin, std::int64_t n) {
        ends[begin / blockSize] = static_cast<int>(countTruths(truths, n));
    });
    std::partial_sum(ends.begin(), ends.end(), ends.begin());
    const int total = ends.empty() ? 0 : ends.back();
    const bool row = from.nrow() == 1 && from.size() >= 2;
    out.setShape(row ? 1 : total, row ? total : 1);
    out.setMark(from.mark());
    forEachBlock([&](const unsigned char* truths, std::int64_t begin, std::int64_t) {
        const std::int64_t block = begin / blockSize;
        const int first = block == 0 ? 0 : ends[block - 1];
        selectItems(out.data() + first, ends[block] - first, from.data() + begin, truths);
    });
}

}  // namespace vorpen
