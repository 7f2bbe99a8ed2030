// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/block_program.h"

#include <array>
#include <cmath>
#include <cstring>

#include "base/errors.h"
#include "base/interrupt.h"
#include "base/parallel.h"
#include "eval/elements.h"
#include "eval/expression.h"
#include "eval/function_elements.h"
#include "eval/logical_table.h"
#include "values/kernels.h"

namespace vorpen {

using Instruction = BlockProgram::Instruction;
using Kind = BlockProgram::Kind;

namespace {

/// Elements in a block: the blocks of all intermediate results of an ordinary
/// expression, and of what it reads, fit the first-level cache together.
constexpr std::int64_t blockSize = 512;

bool worksByElement(int code) { return isElementwise(code) || hasLogicalEntry(code); }

double applyCode(int code, double a, double b) {
    return isElementwise(code) ? applyOperator(code, a, b) : applyLogical(code, a, b);
}

char failureLetter(int code) { return isElementwise(code) ? operatorLetter(code) : 'i'; }

}  // namespace

// ---- building

class ProgramBuilder {
public:
    explicit ProgramBuilder(BlockProgram& program) : program_(program) {}

    void emitRoot(const Evaluatable& root) {
        if (const auto* function = dynamic_cast<const SimpleFuncElement*>(&root))
            emitFunction(*function);
        else
            emitExpression(static_cast<const Expression&>(root));
        noteLaterChanges();
    }

private:
    void push(Instruction instruction) {
        program_.code_.push_back(instruction);
        program_.stackDepth_ = std::max(program_.stackDepth_, ++depth_);
    }

    void emitOperator(int code, bool integerOperand) {
        auto& code_ = program_.code_;
        Instruction& last = code_.back();
        --depth_;
        // A right operand that was just pushed is taken along by the operator.
        const bool single = lastPush_ == code_.size() - 1 && code_.size() > 1;
        if (single && last.kind == Kind::pushDouble)
            last.kind = Kind::operateDouble;
        else if (single && last.kind == Kind::pushNumber)
            last.kind = Kind::operateNumber;
        else
            code_.push_back(Instruction{.kind = Kind::operate, .variable = nullptr});
        code_.back().op = static_cast<unsigned char>(code);
        code_.back().integerOperand = integerOperand;
    }

    void emitOperand(Evaluatable& operand) {
        if (const auto* variable = dynamic_cast<const ValueElement*>(&operand)) {
            emitVariable(variable->variable());
        } else if (const auto* number = dynamic_cast<const NumberElement*>(&operand)) {
            emitConstant(operand, *number);
        } else if (const auto* function = dynamic_cast<const SimpleFuncElement*>(&operand)) {
            emitFunction(*function);
        } else if (const auto* inner = dynamic_cast<const Expression*>(&operand);
                   inner && inner->type() == DOUBLE_VAL && BlockProgram::applies(*inner)) {
            emitExpression(*inner);
        } else if (const auto* unary = dynamic_cast<const UnaryOpElement*>(&operand);
                   unary && unary->op() == '-' && unary->type() == DOUBLE_VAL) {
            emitOperand(unary->inner());
            program_.code_.push_back(Instruction{.kind = Kind::negate, .variable = nullptr});
        } else if (auto* widened = dynamic_cast<IntToDoubleElement*>(&operand)) {
            emitOperand(widened->inner());
        } else {
            pushNode(operand);
        }
    }

    void pushNode(Evaluatable& node) {
        program_.hasNodes_ = true;
        push(Instruction{.kind = Kind::pushNode, .node = &node});
    }

    void emitVariable(Value* variable) {
        lastPush_ = program_.code_.size();
        const Kind kind = variable->valueType() == DOUBLE_VAL ? Kind::pushDouble : Kind::pushInt;
        push(Instruction{.kind = kind, .variable = variable});
    }

    void emitConstant(Evaluatable& node, const NumberElement& number) {
        const Value& value = number.value();
        if (!travelsAsScalar(value)) return pushNode(node);
        lastPush_ = program_.code_.size();
        push(Instruction{.kind = Kind::pushNumber, .mark = value.mark(), .number = value.doubleValue()});
    }

    void emitFunction(const SimpleFuncElement& function) {
        emitOperand(function.inner());
        program_.code_.push_back(Instruction{.kind = Kind::call, .body = function.body()});
        program_.threadSafe_ &= function.threadSafe();
    }

    void emitExpression(const Expression& expression) {
        const bool mixed = dynamic_cast<const SimpleMixedTypeExpression*>(&expression) != nullptr;
        std::size_t next = 0;
        emitLevel(expression.items(), next, OP_END >> 3, mixed);
    }

    /// Emits the operands from `next` on that operators below `level` join.
    void emitLevel(const ExpressionItems& items, std::size_t& next, int level, bool mixed) {
        if (level == 0) return emitOperand(*items[next].operand);
        emitLevel(items, next, level - 1, mixed);
        while (items[next].op >> 3 == level - 1) {
            const int code = items[next++].op;
            const bool integer = mixed && code >> 3 == 1 && items[next].operand->type() == INTEGER_VAL;
            emitLevel(items, next, level - 1, mixed);
            emitOperator(code, integer);
        }
    }

    /// An array variable is copied when an operand behind it is not pure.
    void noteLaterChanges() {
        bool changes = false;
        for (auto at = program_.code_.rbegin(); at != program_.code_.rend(); ++at) {
            at->copyArray = changes;
            if (at->kind == Kind::pushNode) changes = changes || !at->node->isPure();
        }
    }

    BlockProgram& program_;
    int depth_ = 0;
    std::size_t lastPush_ = SIZE_MAX;
};

std::unique_ptr<BlockProgram> BlockProgram::compile(const Evaluatable& root) {
    std::unique_ptr<BlockProgram> program(new BlockProgram);
    ProgramBuilder(*program).emitRoot(root);
    return program;
}

bool BlockProgram::applies(const Expression& expression) {
    for (const ExpressionItem& item : expression.items())
        if (item.op != OP_END && !worksByElement(item.op)) return false;
    return expression.type() == DOUBLE_VAL;
}

namespace {

// ---- running on arrays

/// Where an array operation reads: memory, a block of an earlier result, or a
/// number. These records are trivial, so that room for many costs nothing.
struct Source {
    enum Kind : unsigned char { number, doubles, integers, block } kind;
    int blockIndex;
    const void* memory;
    double value;

    static Source ofNumber(double x) { return {number, 0, nullptr, x}; }
    static Source ofBlock(int index) { return {block, index, nullptr, 0}; }
    static Source ofDoubles(const double* items) { return {doubles, 0, items, 0}; }
    static Source ofIntegers(const int* items) { return {integers, 0, items, 0}; }
};

struct ArrayOperation {
    enum Kind : unsigned char { operate, call, sineAndCosine, negate, copy } kind;
    int code;
    double (*body)(double);  ///< of a pair the one whose result is wanted first
    int target;              ///< block that takes the result
    Source a, b;             ///< b of a pair is the block of the other result
};

/// Something on the stack: its shape and where its elements are. One element
/// is always known as a number.
struct Entry {
    int size, nrow, mark;
    Source source;
};

/// A list that seldom needs the heap.
template <class T, int near>
class ShortList {
public:
    T& push() {
        if (count_ < near) return near_[count_++];
        ++count_;
        return far_.emplace_back();
    }
    T& operator[](int i) { return i < near ? near_[i] : far_[i - near]; }
    [[nodiscard]] int size() const { return count_; }

private:
    std::array<T, near> near_;
    std::vector<T> far_;
    int count_ = 0;
};

void runOperation(const ArrayOperation& operation, double* target, double* blocks, std::int64_t begin,
                  std::int64_t n) {
    double numbers[2];
    int used = 0;
    const auto resolve = [&](const Source& source) -> Operand {
        switch (source.kind) {
            case Source::number: numbers[used] = source.value; return {&numbers[used++], true};
            case Source::block: return {blocks + source.blockIndex * blockSize, false};
            default: return {static_cast<const double*>(source.memory) + begin, false};
        }
    };
    switch (operation.kind) {
        case ArrayOperation::operate: {
            const Operand a = resolve(operation.a), b = resolve(operation.b);
            if (isElementwise(operation.code)) return applyOperator(operation.code, target, a, b, n);
            for (std::int64_t i = 0; i < n; ++i)
                target[i] = applyLogical(operation.code, a.items[a.one ? 0 : i], b.items[b.one ? 0 : i]);
            break;
        }
        case ArrayOperation::call:
            applyFunction(operation.body, target, resolve(operation.a).items, n);
            break;
        case ArrayOperation::sineAndCosine: {
            double* other = blocks + operation.b.blockIndex * blockSize;
            const bool sineFirst = operation.body == ::sin;
            sineAndCosine(sineFirst ? target : other, sineFirst ? other : target, resolve(operation.a).items, n);
            break;
        }
        case ArrayOperation::negate: {
            const double* from = resolve(operation.a).items;
            for (std::int64_t i = 0; i < n; ++i) target[i] = -from[i];
            break;
        }
        case ArrayOperation::copy:
            if (operation.a.kind == Source::integers) {
                const int* from = static_cast<const int*>(operation.a.memory) + begin;
                for (std::int64_t i = 0; i < n; ++i) target[i] = from[i];
            } else {
                const Operand from = resolve(operation.a);
                std::copy_n(from.items, n, target);
            }
    }
}

/// The second way of running: the operands that are left are evaluated and the
/// shapes checked. Operations on arrays that fit one block run at once; those
/// on longer ones are kept and run block by block at the end.
class ArrayRun {
public:
    ArrayRun(Workspaces& workspaces, Value* workspace, int stackDepth)
        : workspaces_(workspaces), workspace_(workspace), spareBlock_(stackDepth) {}

    /// The operation that comes next makes the result.
    void expectResult() { resultIsNext_ = true; }

    void pushNumber(double x, int mark) { top(depth_++) = Entry{1, 1, mark, Source::ofNumber(x)}; }

    void pushValue(const Value& value, bool copyArray) {
        const Value& kept = copyArray && value.size() > 1 ? copyOf(value) : value;
        Entry& entry = top(depth_++);
        entry.size = kept.size();
        entry.nrow = kept.nrow();
        entry.mark = kept.mark();
        if (kept.size() == 1)
            entry.source = Source::ofNumber(kept.doubleValue());
        else if (kept.valueType() == INTEGER_VAL)
            entry.source = Source::ofIntegers(asInt(kept).data());
        else
            entry.source = Source::ofDoubles(asDouble(kept).data());
    }

    void pushOutcome(Outcome outcome, bool copyArray) {
        if (outcome.isScalar())
            pushNumber(outcome.number, outcome.mark());
        else
            pushValue(*outcome.value(), copyArray && !isOurs(outcome.value()));
    }

    /// Evaluates a node into a workspace of its own.
    Outcome evaluateNode(Evaluatable& node) {
        Workspace& workspace = workspaces_.add(node.type());
        lastWorkspace_ = workspace.get();
        return node.evaluate(workspace.get());
    }

    void noteWorkspace(const Value* workspace) { lastWorkspace_ = workspace; }

    void operate(int code, bool integerOperand) {
        const int at = depth_ - 2;
        Entry& left = top(at);
        Entry& right = top(at + 1);
        --depth_;
        if (right.size == 1) {
            if (left.size == 1) {
                left.source.value = applyCode(code, left.source.value, right.source.value);
                return;
            }
        } else if (left.size == 1) {
            left.size = right.size;
            left.nrow = right.nrow;
            if (integerOperand) left.mark = right.mark;
        } else if (left.size != right.size || left.nrow != right.nrow) {
            throw OperatorFailure{failureLetter(code)};
        }
        makeReadable(left, at);
        makeReadable(right, at + 1);
        perform({ArrayOperation::operate, code, nullptr, at, left.source, right.source}, left);
    }

    void call(double (*body)(double)) {
        Entry& entry = top(depth_ - 1);
        if (entry.size == 1) {
            entry.source.value = body(entry.source.value);
            return;
        }
        if (joinsCall(body, entry)) return;
        makeReadable(entry, depth_ - 1);
        perform({ArrayOperation::call, 0, body, depth_ - 1, entry.source, {}}, entry);
    }

    void negate() {
        Entry& entry = top(depth_ - 1);
        if (entry.size == 1) {
            entry.source.value = -entry.source.value;
            return;
        }
        makeReadable(entry, depth_ - 1);
        perform({ArrayOperation::negate, 0, nullptr, depth_ - 1, entry.source, {}}, entry);
    }

    Outcome finish(bool threadSafe) {
        Entry& result = top(0);
        if (result.size == 1) return finishScalar(result);
        if (resultStands_) return Outcome::of(workspace_);
        if (operations_.size() == 0) {
            resultIsNext_ = true;
            perform({ArrayOperation::copy, 0, nullptr, 0, result.source, {}}, result);
            if (resultStands_) return Outcome::of(workspace_);
        }
        runBlocks(prepareWorkspace(result), result.size, threadSafe);
        return Outcome::of(workspace_);
    }

private:
    /// Blocks for intermediate results of arrays that fit one. A run may stand
    /// on the stack many times, so they are few.
    static constexpr int nearBlocks = 3;

    Entry& top(int at) {
        while (stack_.size() <= at) stack_.push();
        return stack_[at];
    }

    const Value& copyOf(const Value& value) {
        Workspace& workspace = workspaces_.add(value.valueType());
        workspace->copyFrom(value);
        return *workspace;
    }

    /// A node that filled its own workspace answered with a private array.
    bool isOurs(const Value* value) const { return value == lastWorkspace_; }

    double* prepareWorkspace(const Entry& shape) {
        Require(workspace_->valueType() == DOUBLE_VAL,
                "!! Vorpen failure. Invoked with non-DOUBLE_VAL workspace. Please report this bug.",
                "SimpleMixedTypeExpression::pValue");
        workspace_->setSizeShapeMark(shape.size, shape.nrow, shape.mark);
        return asDouble(*workspace_).data();
    }

    double* blockAt(int index) {
        if (index < nearBlocks) return blocks_ + index * blockSize;
        while (static_cast<int>(farBlocks_.size()) <= index - nearBlocks) farBlocks_.emplace_back(blockSize);
        return farBlocks_[index - nearBlocks].data();
    }

    /// The sine and the cosine of one array in one expression are made
    /// together, which takes 11.4 ns for two numbers instead of 18.7. True when
    /// an operation that waits to be run has taken this call over.
    bool joinsCall(double (*body)(double), Entry& entry) {
        double (*const partner)(double) = body == ::sin ? ::cos : body == ::cos ? ::sin : nullptr;
        if (!partner || entry.source.kind != Source::doubles) return false;
        for (int i = 0; i < operations_.size(); ++i) {
            ArrayOperation& earlier = operations_[i];
            if (earlier.kind != ArrayOperation::call || earlier.body != partner ||
                earlier.a.kind != Source::doubles || earlier.a.memory != entry.source.memory)
                continue;
            earlier.kind = ArrayOperation::sineAndCosine;
            earlier.b = entry.source = Source::ofBlock(spareBlock_++);
            blockCount_ = std::max(blockCount_, spareBlock_);
            return true;
        }
        return false;
    }

    /// The elements of an entry as doubles; integers are converted first.
    void makeReadable(Entry& entry, int at) {
        if (entry.source.kind != Source::integers) return;
        const bool resultIsNext = std::exchange(resultIsNext_, false);
        perform({ArrayOperation::copy, 0, nullptr, at, entry.source, {}}, entry);
        resultIsNext_ = resultIsNext;
    }

    /// Runs an operation at once, or keeps it; the entry stands for its result.
    void perform(const ArrayOperation& operation, Entry& entry) {
        if (entry.size > blockSize) {
            operations_.push() = operation;
            blockCount_ = std::max(blockCount_, operation.target + 1);
            entry.source = Source::ofBlock(operation.target);
            return;
        }
        double* target = resultIsNext_ ? prepareWorkspace(entry) : blockAt(operation.target);
        resultStands_ = resultIsNext_;
        runOperation(operation, target, nullptr, 0, entry.size);
        entry.source = Source::ofDoubles(target);
    }

    Outcome finishScalar(const Entry& result) {
        const double x = result.source.value;
        if (result.nrow == 1 && static_cast<unsigned>(result.mark) < Outcome::markLimit)
            return Outcome::scalar(x, result.mark);
        storeScalar(workspace_, x, result.mark);
        workspace_->setNrow(result.nrow);
        return Outcome::of(workspace_);
    }

    void runBlocks(double* out, std::int64_t n, bool threadSafe) {
        const auto work = [this, out](std::int64_t begin, std::int64_t end) { runRange(out, begin, end); };
        if (threadSafe && n >= parallelThreshold)
            parallelFor(n, blockSize, work);
        else
            work(0, n);
        checkInterrupt();
    }

    void runRange(double* out, std::int64_t begin, std::int64_t end) {
        constexpr int nearCount = 8;
        alignas(64) double near[nearCount * blockSize];
        std::vector<double> far;
        double* blocks = near;
        if (blockCount_ > nearCount) {
            far.resize(blockCount_ * blockSize);
            blocks = far.data();
        }
        const int last = operations_.size() - 1;
        for (std::int64_t at = begin; at < end && !isInterrupted(); at += blockSize) {
            const std::int64_t n = std::min(blockSize, end - at);
            for (int i = 0; i < last; ++i)
                runOperation(operations_[i], blocks + operations_[i].target * blockSize, blocks, at, n);
            runOperation(operations_[last], out + at, blocks, at, n);
        }
    }

    Workspaces& workspaces_;
    Value* workspace_;
    const Value* lastWorkspace_ = nullptr;
    bool resultIsNext_ = false;
    bool resultStands_ = false;
    int depth_ = 0;
    int blockCount_ = 0;
    int spareBlock_;  ///< the first block that no place of the stack uses
    ShortList<Entry, 8> stack_;
    ShortList<ArrayOperation, 16> operations_;
    std::vector<std::vector<double>> farBlocks_;
    alignas(64) double blocks_[nearBlocks * blockSize];
};

/// Runs an instruction whose operand, where it is a node, is evaluated here.
void runInstruction(ArrayRun& run, const Instruction& in) {
    switch (in.kind) {
        case Kind::pushDouble:
        case Kind::pushInt: run.pushValue(*in.variable, in.copyArray); break;
        case Kind::pushNumber: run.pushNumber(in.number, in.mark); break;
        case Kind::pushNode: run.pushOutcome(run.evaluateNode(*in.node), in.copyArray); break;
        case Kind::call: run.call(in.body); break;
        case Kind::negate: run.negate(); break;
        case Kind::operate: run.operate(in.op, in.integerOperand); break;
        case Kind::operateDouble:
            run.pushValue(*in.variable, in.copyArray);
            run.operate(in.op, in.integerOperand);
            break;
        case Kind::operateNumber:
            run.pushNumber(in.number, in.mark);
            run.operate(in.op, in.integerOperand);
            break;
    }
}

[[gnu::always_inline]] inline double applyNumbers(int code, double a, double b) {
    switch (code) {
        case OP_PLUS: return a + b;
        case OP_MINUS: return a - b;
        case OP_TIMES: return a * b;
        case OP_DIVIDE: return a / b;
        default: return applyCode(code, a, b);
    }
}

bool isNumber(const Value& v) {
    return v.size() == 1 && v.nrow() == 1 && static_cast<unsigned>(v.mark()) < Outcome::markLimit;
}

struct NumberEntry {
    double number;
    int mark;
};

/// The rest of a run from the instruction on that met an array. Kept out of
/// line, so that the run on numbers stays small.
[[gnu::noinline]] Outcome continueOnArrays(std::span<const Instruction> rest, std::span<const NumberEntry> stack,
                                           const Outcome* node, const Value* nodeWorkspace,
                                           Workspaces& workspaces, Value* workspace, bool threadSafe,
                                           int stackDepth) {
    ArrayRun run(workspaces, workspace, stackDepth);
    for (const NumberEntry& entry : stack) run.pushNumber(entry.number, entry.mark);
    if (node) {
        run.noteWorkspace(nodeWorkspace);
        run.pushOutcome(*node, rest.front().copyArray);
        rest = rest.subspan(1);
    }
    for (const Instruction& in : rest) {
        if (&in == &rest.back()) run.expectResult();
        runInstruction(run, in);
    }
    return run.finish(threadSafe);
}

/// The most frequent array expression: variables and constants, the arrays of
/// one shape and no longer than a block, joined by element-wise operators.
class OneShapeRun {
public:
    static constexpr int maxDepth = 4;

    /// False, with nothing changed, for any other expression.
    bool run(std::span<const Instruction> code, Value* workspace) {
        if (!workspace || workspace->valueType() != DOUBLE_VAL) return false;
        Item* top = stack_ - 1;
        for (const Instruction& in : code) {
            const bool takesOperand = in.kind != Kind::operate;
            if (takesOperand && !read(in, *++top)) return false;
            if (in.kind == Kind::pushDouble || in.kind == Kind::pushNumber) continue;
            --top;
            const bool isResult = &in == &code.back();
            if (!top[0].operand.one || !top[1].operand.one) {
                if (!isElementwise(in.op)) return false;
                double* target = isResult ? prepare(workspace, top->mark) : blocks_ + (top - stack_) * blockSize;
                applyOperator(in.op, target, top[0].operand, top[1].operand, shape_.size);
                top->operand = {target, false};
            } else {
                if (isResult) return false;
                top->number = applyNumbers(in.op, *top[0].operand.items, *top[1].operand.items);
                top->operand = {&top->number, true};
            }
        }
        return true;
    }

private:
    struct Item {
        Operand operand;  ///< an array, or the number below
        double number;
        int mark;
    };
    struct Shape {
        int size, nrow;
    };

    bool read(const Instruction& in, Item& item) {
        switch (in.kind) {
            case Kind::pushDouble:
            case Kind::operateDouble: return readVariable(static_cast<const DoubleValue&>(*in.variable), item);
            case Kind::pushNumber:
            case Kind::operateNumber:
                item.operand = {&in.number, true};
                item.mark = in.mark;
                return true;
            default: return false;
        }
    }

    bool readVariable(const DoubleValue& variable, Item& item) {
        item.operand = {variable.data(), isNumber(variable)};
        item.mark = variable.mark();
        if (item.operand.one) return true;
        const Shape shape{variable.size(), variable.nrow()};
        if (shape_.size == 0 && shape.size >= 2 && shape.size <= blockSize) shape_ = shape;
        return shape_.size != 0 && shape.size == shape_.size && shape.nrow == shape_.nrow;
    }

    double* prepare(Value* workspace, int mark) const {
        workspace->setSizeShapeMark(shape_.size, shape_.nrow, mark);
        return static_cast<DoubleValue*>(workspace)->data();
    }

    Shape shape_{0, 0};
    Item stack_[maxDepth];
    alignas(64) double blocks_[maxDepth * blockSize];
};

[[gnu::noinline]] bool runOnOneShape(std::span<const Instruction> code, Value* workspace) {
    OneShapeRun run;
    return run.run(code, workspace);
}

/// The workspaces of a program without nodes.
struct NoWorkspaces {};

/// Runs a program on numbers as long as there are no arrays. `bottom` has room
/// for the program's stack.
template <bool hasNodes>
Outcome runOnNumbers(std::span<const Instruction> code, NumberEntry* bottom, Value* workspace, bool threadSafe,
                     int stackDepth) {
    [[maybe_unused]] std::conditional_t<hasNodes, Workspaces, NoWorkspaces> workspaces;
    NumberEntry* end = bottom;  // behind the top
    const auto goOn = [&](const Instruction& at, const Outcome* node, const Value* nodeWorkspace) {
        const auto rest = code.subspan(&at - code.data());
        if constexpr (hasNodes) {
            return continueOnArrays(rest, {bottom, end}, node, nodeWorkspace, workspaces, workspace, threadSafe,
                                    stackDepth);
        } else {
            const bool isTried = &at == code.data();
            if (!isTried && stackDepth <= OneShapeRun::maxDepth && runOnOneShape(code, workspace))
                return Outcome::of(workspace);
            Workspaces copies;
            return continueOnArrays(rest, {bottom, end}, nullptr, nullptr, copies, workspace, threadSafe, stackDepth);
        }
    };
    for (const Instruction& in : code) {
        switch (in.kind) {
            case Kind::pushDouble: {
                const auto& v = static_cast<const DoubleValue&>(*in.variable);
                if (!isNumber(v)) return goOn(in, nullptr, nullptr);
                *end++ = {v[0], v.mark()};
                break;
            }
            case Kind::pushInt:
                if (!isNumber(*in.variable)) return goOn(in, nullptr, nullptr);
                *end++ = {static_cast<double>(asInt(*in.variable)[0]), in.variable->mark()};
                break;
            case Kind::pushNumber: *end++ = {in.number, in.mark}; break;
            case Kind::pushNode:
                if constexpr (hasNodes) {
                    Workspace& own = workspaces.add(in.node->type());
                    const Outcome outcome = in.node->evaluate(own.get());
                    if (!outcome.isScalar()) return goOn(in, &outcome, own.get());
                    *end++ = {outcome.number, outcome.mark()};
                }
                break;
            case Kind::call: end[-1].number = in.body(end[-1].number); break;
            case Kind::negate: end[-1].number = -end[-1].number; break;
            case Kind::operate:
                --end;
                end[-1].number = applyNumbers(in.op, end[-1].number, end->number);
                break;
            case Kind::operateDouble: {
                const auto& v = static_cast<const DoubleValue&>(*in.variable);
                if (!isNumber(v)) return goOn(in, nullptr, nullptr);
                end[-1].number = applyNumbers(in.op, end[-1].number, v[0]);
                break;
            }
            case Kind::operateNumber: end[-1].number = applyNumbers(in.op, end[-1].number, in.number); break;
        }
    }
    return Outcome::scalar(bottom->number, bottom->mark);
}

}  // namespace

Outcome BlockProgram::evaluate(Value* workspace) const {
    const Instruction& first = code_.front();
    const bool beginsWithArray = first.kind == Kind::pushDouble && first.variable->size() > 1;
    if (beginsWithArray && !hasNodes_ && stackDepth_ <= OneShapeRun::maxDepth && runOnOneShape(code_, workspace))
        return Outcome::of(workspace);
    constexpr int nearDepth = 16;
    const auto run = hasNodes_ ? runOnNumbers<true> : runOnNumbers<false>;
    if (stackDepth_ <= nearDepth) {
        NumberEntry stack[nearDepth];
        return run(code_, stack, workspace, threadSafe_, stackDepth_);
    }
    std::vector<NumberEntry> stack(stackDepth_);
    return run(code_, stack.data(), workspace, threadSafe_, stackDepth_);
}

}  // namespace vorpen
