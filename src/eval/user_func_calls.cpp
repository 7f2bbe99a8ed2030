// SPDX-License-Identifier: GPL-3.0-or-later

// Calls: frames, and binding by value and by reference.

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>

#include "base/errors.h"
#include "base/output.h"
#include "eval/run_state.h"
#include "eval/store.h"
#include "eval/user_func.h"

namespace vorpen {

namespace {

/// True for contents that a frame can hold without a block.
bool isNumberOrEmpty(const DoubleValue& v) { return v.isEmpty() || (v.size() == 1 && v.isInside()); }

void dropItems(DoubleValue& v, int mark) {
    if (!v.isEmpty()) {
        if (v.isInside())
            v.endView();
        else
            v.clear();
    }
    v.setMark(mark);
}

bool widens(int from, int to) { return from == to || (from < to && to <= COMPLEX_VAL); }

}  // namespace

// ---- frames

void UserFunc::printInChain() const { output().print("in " + name() + ";", true, PrintMode::markup); }

bool UserFunc::ownsFramed(const Value* v) const {
    return std::ranges::any_of(framed_, [v](const Framed& local) { return local.value == v; });
}

void UserFunc::pushFrame() {
    if (frames_.size() < frameTop_ + framed_.size()) frames_.resize(2 * frameTop_ + 8 * framed_.size());
    SavedLocal* saved = frames_.data() + frameTop_;
    frameTop_ += framed_.size();
    for (const Framed& local : framed_) {
        SavedLocal& record = *saved++;
        if (!local.number || !isNumberOrEmpty(*local.number)) [[unlikely]] {
            record.state = SavedLocal::block;
            blocks_.push_back(local.value->detachData());
            continue;
        }
        DoubleValue& number = *local.number;
        record.state = number.isEmpty() ? SavedLocal::empty : SavedLocal::single;
        record.nrow = number.nrow();
        record.mark = number.mark();
        if (number.isEmpty()) continue;
        record.number = number[0];
        // A parameter is set anew at once; any other local begins empty.
        if (!local.isParameter) number.endView();
    }
}

void UserFunc::popFrame() noexcept {
    frameTop_ -= framed_.size();
    // Backwards, as the blocks lie.
    for (std::size_t i = framed_.size(); i-- > 0;) {
        const SavedLocal& record = frames_[frameTop_ + i];
        if (record.state == SavedLocal::block) [[unlikely]] {
            framed_[i].value->adoptData(blocks_.back());
            blocks_.pop_back();
            continue;
        }
        DoubleValue& number = *framed_[i].number;
        if (record.state == SavedLocal::single)
            storeNumber(number, record.number, record.mark);
        else
            dropItems(number, record.mark);
        number.setNrow(record.nrow);
    }
}

void UserFunc::releaseLocals() noexcept {
    for (const Framed& local : framed_)
        if (local.value->size() > 1) local.value->clear();
}

void UserFunc::attendAndRequireRoom() const {
    checkInterrupt();
    if (hasRoom()) return;
    Require(depth_ >= 0, "negative recursion depth: something is wrong", name());
    throw RuntimeError("max recursion depth exceeded", name());
}

void UserFunc::begin() {
    if (!body_) [[unlikely]]
        failWithoutBody();
    requireRoom();
    if (depth_ != 0) pushFrame();
    ++depth_;
}

void UserFunc::end() noexcept {
    if (--depth_ == 0)
        releaseLocals();
    else
        popFrame();
}

void UserFunc::unwind() {
    end();
    enteredAgain_ = depth_ > 0;
    printInChain();
}

// ---- calls

void UserFunc::failAtArgument() const {
    output().print("invalid input argument", true, PrintMode::markup);
    printInChain();
    throw OperatorFailure{'='};
}

void UserFunc::bindDefaults(std::size_t bound) {
    for (std::size_t i = bound; i < desc_.paramNames.size(); ++i)
        locals_[i].value->assignDouble(desc_.defaults[i - static_cast<std::size_t>(minArguments())]);
}

void UserFunc::runBody() {
    bodyRun_.exe();
    checkInterrupt();
    runState().resume();
}

SavedData UserFunc::takeOutput() {
    // A single element stays: a later call that sets no output answers it.
    if (outputIsMovable_ && output_->size() > 1) return output_->detachData();
    return newValueCopy(*output_)->detachData();
}

Outcome UserFunc::callPlain(std::span<const Outcome> arguments, Value* workspace) {
    assert(plain_ || !body_);
    if (desc_.has(FUNCTION_VECTORISED) && !arguments.empty() && !arguments.back().isScalar())
        return callForEach(arguments, workspace);

    begin();
    Outcome result = Outcome::of(workspace);
    SavedData contents;
    try {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            if (arguments[i].isScalar())
                storeNumber(parameter(i), arguments[i].number, arguments[i].mark());
            else
                parameter(i) = std::move(asDouble(*arguments[i].value()));
        }
        bindDefaults(arguments.size());
        runBody();
        const DoubleValue& output = asDouble(*output_);
        if (travelsAsScalar(output))
            result = Outcome::scalar(output[0], output.mark());
        else
            contents = takeOutput();
    } catch (...) {
        unwind();
        throw;
    }
    end();
    if (result.isScalar()) return result;
    workspace->adoptData(contents);
    return Outcome::of(workspace);
}

/// The locals of one call of a function on numbers, while a further call runs.
class UserFunc::NumberFrame {
public:
    /// False, with nothing changed, when one of them is an array.
    bool save(const UserFunc& function) {
        SavedNumber* saved = saved_;
        for (const Framed& local : function.framed_) {
            const DoubleValue& v = *local.number;
            if (!isNumberOrEmpty(v)) return false;
            *saved++ = {v.isEmpty() ? 0 : v[0], v.size(), v.nrow(), v.mark()};
        }
        for (const Framed& local : function.framed_)
            if (!local.isParameter && !local.number->isEmpty()) local.number->endView();
        return true;
    }

    void restore(const UserFunc& function) const noexcept {
        const SavedNumber* saved = saved_;
        for (const Framed& local : function.framed_) {
            if (saved->size == 1)
                storeNumber(*local.number, saved->number, saved->mark);
            else
                dropItems(*local.number, saved->mark);
            local.number->setNrow(saved++->nrow);
        }
    }

private:
    struct SavedNumber {
        double number;
        int size, nrow, mark;
    };
    SavedNumber saved_[maxNumberLocals];
};

Outcome UserFunc::callOnNumbers(std::span<const Outcome> arguments, Value* workspace) {
    NumberFrame frame;
    const bool again = depth_ != 0;
    if (!isOnNumbers_) [[unlikely]]
        return callPlain(arguments, workspace);
    requireRoom();
    if (again && !frame.save(*this)) [[unlikely]]
        return callPlain(arguments, workspace);
    ++depth_;
    try {
        for (std::size_t i = 0; i < arguments.size(); ++i)
            storeNumber(*framed_[i].number, arguments[i].number, arguments[i].mark());
        if (arguments.size() < desc_.paramNames.size()) bindDefaults(arguments.size());
        bodyRun_.exe();
        checkInterrupt();
    } catch (...) {
        endOnNumbers(again, frame);
        enteredAgain_ = again;
        printInChain();
        throw;
    }
    runState().resume();
    const auto& output = static_cast<const DoubleValue&>(*output_);
    if (!travelsAsScalar(output)) [[unlikely]]
        return finishWithArray(again, frame, workspace);
    const Outcome result = Outcome::scalar(output[0], output.mark());
    endOnNumbers(again, frame);
    return result;
}

inline void UserFunc::endOnNumbers(bool again, const NumberFrame& frame) noexcept {
    --depth_;
    if (again)
        frame.restore(*this);
    else
        releaseLocals();
}

Outcome UserFunc::finishWithArray(bool again, const NumberFrame& frame, Value* workspace) {
    SavedData contents = takeOutput();
    endOnNumbers(again, frame);
    workspace->adoptData(contents);
    return Outcome::of(workspace);
}

Outcome UserFunc::callForEach(std::span<const Outcome> arguments, Value* workspace) {
    const std::size_t last = arguments.size() - 1;
    const DoubleValue points = std::move(asDouble(*arguments[last].value()));
    DoubleValue result;
    result.setSizeShapeMark(points.size(), points.nrow(), points.mark());

    for (int k = 0; k < points.size(); ++k) {
        // The call uses its arguments up, so each point gets copies.
        std::array<DoubleValue, maxPlainArguments> copies;
        std::array<Outcome, maxPlainArguments> inputs{arguments[0], arguments[0], arguments[0], arguments[0]};
        for (std::size_t i = 0; i < last; ++i) {
            inputs[i] = arguments[i];
            if (inputs[i].isScalar()) continue;
            copies[i].copyFrom(*inputs[i].value());
            inputs[i] = Outcome::of(&copies[i]);
        }
        inputs[last] = Outcome::scalar(points[k]);
        DoubleValue room;
        const Outcome answer = callPlain(std::span(inputs).first(arguments.size()), &room);
        if (!answer.isScalar() && answer.value()->size() != 1) throw OperatorFailure{']'};
        result[k] = answer.isScalar() ? answer.number : answer.value()->doubleValue();
    }
    asDouble(*workspace) = std::move(result);
    return Outcome::of(workspace);
}

// ---- calls with everything

/// The arguments of one call that share their elements with parameters. A
/// source that is a local of the function itself lies in the frame while the
/// call runs, so its contents go through a value of their own.
class UserFunc::References {
public:
    References(UserFunc& function, std::span<FuncArgument> arguments)
        : function_(function), arguments_(arguments), sources_(arguments.size()) {}

    /// To be called before the frame is pushed.
    void setAside() {
        if (function_.depth_ == 0) return;
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            FuncArgument& argument = arguments_[i];
            if (!isReference(i) || !isVariable(argument) || !function_.ownsFramed(argument.value)) continue;
            if (argument.value->valueType() != DOUBLE_VAL || isRepeated(i)) continue;
            argument.inner = std::make_unique<DoubleValue>();
            sources_[i].home = argument.value;
            move(*argument.value, *argument.inner);
        }
    }

    void bind() {
        for (std::size_t i = 0; i < arguments_.size(); ++i)
            if (isReference(i)) bindOne(i);
    }

    /// Gives the contents back to the callers' variables.
    void undo() {
        for (std::size_t i = 0; i < arguments_.size(); ++i) {
            Source& source = sources_[i];
            if (!source.bound) continue;
            source.bound = false;
            move(function_.parameter(i), *source.holder);
            if (source.integer) source.integer->assign(*source.holder);
        }
    }

    /// The same after a failure, which goes before any other.
    void undoAfterFailure() noexcept {
        try {
            undo();
        } catch (...) {
        }
    }

    /// To be called when the frame is gone.
    void putBack() {
        for (std::size_t i = 0; i < arguments_.size(); ++i)
            if (sources_[i].home) move(*arguments_[i].inner, *sources_[i].home);
    }

    [[nodiscard]] bool isReference(std::size_t i) const { return function_.desc_.byReference >> i & 1u; }

private:
    struct Source {
        bool bound = false;
        DoubleValue* holder = nullptr;  ///< what the parameter's elements go back to
        Value* integer = nullptr;       ///< the integer behind a converted copy
        Value* home = nullptr;          ///< the local of the function itself
    };

    static void move(Value& from, Value& to) {
        SavedData contents = from.detachData();
        to.adoptData(contents);
    }

    /// False for literals and other values inside a compiled tree, which keep
    /// their elements.
    static bool isVariable(const FuncArgument& argument) {
        return !argument.element || argument.element->elementKind() == ElementKind::namedValue;
    }

    [[nodiscard]] bool isRepeated(std::size_t i) const {
        for (std::size_t k = 0; k < i; ++k)
            if (isReference(k) && arguments_[k].value == arguments_[i].value && isVariable(arguments_[i]))
                return true;
        return false;
    }

    void bindOne(std::size_t i) {
        FuncArgument& argument = arguments_[i];
        Source& source = sources_[i];
        const int kind = function_.desc_.paramKinds[i];
        const int type = argument.value->valueType();
        Require(widens(type, kind) && !isRepeated(i), "argument has incorrect type");
        Require(kind < COMPLEX_VAL, "pass by reference not yet implemented for complex or list");

        if (!source.home && (type == INTEGER_VAL || !isVariable(argument))) {
            argument.inner = std::make_unique<DoubleValue>();
            argument.inner->copyFrom(*argument.value);
        }
        if (type == INTEGER_VAL) source.integer = argument.value;
        source.holder = argument.inner ? argument.inner.get() : &asDouble(*argument.value);
        source.bound = true;
        move(*source.holder, function_.parameter(i));
    }

    UserFunc& function_;
    std::span<FuncArgument> arguments_;
    std::vector<Source> sources_;
};

/// What a call answers, kept until the frame is gone: the targets may be
/// locals of the function itself.
class UserFunc::Results {
public:
    Results(UserFunc& function, ExtraOutputs extraOutputs, Value& out)
        : function_(function), extraOutputs_(extraOutputs), out_(out) {}

    void take() {
        if (!widens(function_.output_->valueType(), out_.valueType())) throw OperatorFailure{'='};
        first_ = newValue(function_.output_->valueType());
        SavedData contents = function_.takeOutput();
        first_->adoptData(contents);
        if (!extraOutputs_) return;
        for (std::size_t k = 0; k < extraOutputs_->size(); ++k) {
            Require(function_.desc_.outputKinds[k + 1] == DOUBLE_VAL,
                    "non-double type output not yet implemented");
            const Value& output = *function_.otherOutputs_[k];
            if (!widens(output.valueType(), (*extraOutputs_)[k]->valueType())) throw OperatorFailure{'='};
            others_.push_back(newValueCopy(output));
        }
    }

    /// Also behind a failure, for what had been taken before it.
    void deliver() {
        if (!first_) return;
        out_.assign(*first_);
        for (std::size_t k = 0; k < others_.size(); ++k) (*extraOutputs_)[k]->assign(*others_[k]);
    }

private:
    UserFunc& function_;
    ExtraOutputs extraOutputs_;
    Value& out_;
    std::unique_ptr<Value> first_;
    std::vector<std::unique_ptr<Value>> others_;
};

void UserFunc::bindAll(std::span<FuncArgument> arguments, References& references) {
    try {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            Require(arguments[i].value, "argument has incorrect type");
            if (!references.isReference(i)) locals_[i].value->copyFrom(*arguments[i].value);
        }
        // Behind the copies: a variable that is shared has no elements of its own.
        references.bind();
    } catch (...) {
        references.undoAfterFailure();
        output().print("invalid input argument", true, PrintMode::markup);
        throw;
    }
    bindDefaults(arguments.size());
}

void UserFunc::call(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out) {
    References references(*this, arguments);
    Results results(*this, extraOutputs, out);
    // A value that is a local of this function goes into the frame.
    std::vector<std::unique_ptr<Value>> copies;
    if (depth_ > 0)
        for (std::size_t i = 0; i < arguments.size(); ++i)
            if (!references.isReference(i) && ownsFramed(arguments[i].value))
                arguments[i].value = copies.emplace_back(newValueCopy(*arguments[i].value)).get();

    if (!body_) failWithoutBody();
    requireRoom();
    references.setAside();
    begin();
    try {
        bindAll(arguments, references);
        runBody();
        results.take();
        references.undo();
    } catch (...) {
        references.undoAfterFailure();
        unwind();
        references.putBack();
        results.deliver();
        throw;
    }
    end();
    references.putBack();
    results.deliver();
}

}  // namespace vorpen
