// SPDX-License-Identifier: GPL-3.0-or-later
#include "eval/user_func.h"

#include <algorithm>
#include <cassert>

#include "base/errors.h"

namespace vorpen {

bool sameSignature(const FunctionDesc& a, const FunctionDesc& b) {
    return a.paramKinds == b.paramKinds && a.outputKinds == b.outputKinds && a.byReference == b.byReference &&
           a.defaults == b.defaults;
}

// ---- the definition

UserFunc::~UserFunc() { assert(depth_ == 0 && frameTop_ == 0 && blocks_.empty()); }

void UserFunc::resetFunction(FunctionDesc desc) {
    assert(depth_ == 0);
    if (!sameSignature(desc_, desc)) ++version_;
    body_.reset();
    quickBody_ = numberBody_ = nullptr;
    usedNumberFunction_ = nullptr;
    numberFunction_.reset();
    isOnNumbers_ = false;
    inputs_[0] = inputs_[1] = nullptr;
    plain_ = false;
    output_ = nullptr;
    inferredOutput_.reset();
    hasBareReturn_ = false;
    framed_.clear();
    locals_.clear();
    persistentCount_ = 0;
    lostBody_.clear();
    desc_ = std::move(desc);
    otherOutputs_.assign(desc_.outputNames.size() - 1, nullptr);
    for (int i = 0; i < desc_.parameterCount(); ++i) addLocal(desc_.paramNames[i], desc_.paramKinds[i]);
}

Value* UserFunc::addLocal(std::string_view name, int type) {
    const bool isResult = name == desc_.outputNames.front();
    if (type == INTEGER_VAL || type == UNKNOWN_VAL) type = DOUBLE_VAL;
    std::unique_ptr<Value> value;
    // A `return` ahead of the first assignment has made the output already.
    if (isResult && inferredOutput_ && inferredOutput_->valueType() == type)
        value = std::move(inferredOutput_);
    if (!value) value = newValue(type);

    Value* local = value.get();
    locals_.push_back({std::string(name), std::move(value)});
    if (isResult) output_ = local;
    for (std::size_t i = 1; i < desc_.outputNames.size(); ++i)
        if (name == desc_.outputNames[i]) otherOutputs_[i - 1] = local;
    return local;
}

Value* UserFunc::addPersistent(std::string_view name, double value) {
    if (static_cast<int>(locals_.size()) != parameterCount() + persistentCount_) return nullptr;
    Value* local = addLocal(name, DOUBLE_VAL);
    local->assignDouble(value);
    ++persistentCount_;
    return local;
}

Value& UserFunc::returnTarget() {
    if (!output_) {
        inferredOutput_ = newValue(outputType());
        output_ = inferredOutput_.get();
    }
    return *output_;
}

void UserFunc::inferOutput() {
    // A return without an expression asks for no output to be made.
    if (dynamic_cast<const ReturnStm*>(body_.get())) {
        returnTarget();
        return;
    }
    auto* block = dynamic_cast<BlockStm*>(body_.get());
    if (!block) throw SyntaxError{"could not infer a return value for function " + name()};
    insertReturn(*block, returnTarget());
}

void UserFunc::finishFunction(StatementPtr body) {
    body_ = std::move(body);
    setFlag(FUNCTION_DECLARED_ONLY, false);
    if (!output_) inferOutput();
    for (std::size_t i = 0; i < otherOutputs_.size(); ++i)
        if (!otherOutputs_[i]) throw SyntaxError{desc_.outputNames[i + 1] + " output has not been set"};
    describeCalls();
}

/// True when no call can end without a `return` that stores its value.
bool UserFunc::alwaysReturnsValue() const {
    if (hasBareReturn_) return false;
    const Statement* last = body_.get();
    if (auto* block = dynamic_cast<BlockStm*>(body_.get())) last = block->statements().back().get();
    return dynamic_cast<const ReturnStm*>(last) != nullptr;
}

void UserFunc::describeCalls() {
    const auto isDouble = [](int kind) { return kind == DOUBLE_VAL; };
    plain_ = desc_.byReference == 0 && std::ranges::all_of(desc_.paramKinds, isDouble) &&
             isDouble(outputType()) && output_->valueType() == DOUBLE_VAL;

    const auto* lone = dynamic_cast<const ReturnStm*>(body_.get());
    const bool quick = lone && lone->expression() && plain_ && desc_.has(FUNCTION_QUICK_ELIGIBLE);
    setFlag(FUNCTION_QUICK, quick);
    quickBody_ = quick ? lone->expression() : nullptr;
    quickBodyIsPure_ = quick && quickBody_->isPure();
    quickBodyType_ = quick ? quickBody_->type() : int{DOUBLE_VAL};
    const bool isNumber = quickBodyType_ <= DOUBLE_VAL || quickBodyType_ == UNKNOWN_VAL;
    numberBody_ = isNumber && !desc_.has(FUNCTION_VECTORISED) ? quickBody_ : nullptr;
    for (int i = 0; quick && i < parameterCount(); ++i) inputs_[i] = &asDouble(*locals_[i].value);

    bodyRun_ = RunnableBody(*body_);
    // It is no local, so a call that stores nothing answers what it holds.
    outputIsMovable_ = output_ == inferredOutput_.get() && alwaysReturnsValue();
    framed_.clear();
    for (int i = 0; i < static_cast<int>(locals_.size()); ++i) {
        Value* value = locals_[i].value.get();
        const bool isParameter = i < parameterCount();
        if (!isParameter && i < parameterCount() + persistentCount_) continue;
        framed_.push_back(
            {value, value->valueType() == DOUBLE_VAL ? &asDouble(*value) : nullptr, isParameter});
        const bool shared = isParameter && (desc_.byReference >> i & 1u);
        if (value == output_ && !shared) outputIsMovable_ = true;
    }
    // The general way refuses to run for each element what is no double.
    const bool isRefused = quick && desc_.has(FUNCTION_VECTORISED) && quickBodyType_ != DOUBLE_VAL;
    if (plain_ && !isRefused) {
        makesNumberFunction_ = true;
        numberFunction_ = NumberFunction::compile(*this, *body_, *output_);
        makesNumberFunction_ = false;
        usedNumberFunction_ = numberFunction_.get();
        numberCredit_ = initialCredit;
    }
    const auto isDoubleLocal = [](const Framed& local) { return local.number != nullptr; };
    isOnNumbers_ = plain_ && framed_.size() <= maxNumberLocals && std::ranges::all_of(framed_, isDoubleLocal);
}

void UserFunc::loseBody(std::string message) {
    assert(depth_ == 0);
    body_.reset();
    quickBody_ = numberBody_ = nullptr;
    usedNumberFunction_ = nullptr;
    numberFunction_.reset();
    isOnNumbers_ = false;
    plain_ = false;
    setFlag(FUNCTION_QUICK, false);
    lostBody_ = std::move(message);
}

void UserFunc::failWithoutBody() const {
    throw RuntimeError(lostBody_.empty() ? "function " + name() + " is declared but has no body" : lostBody_);
}

void UserFunc::checkArguments(std::span<const int> types) const {
    const int count = static_cast<int>(types.size());
    if (count < minArguments()) throw RuntimeError(name() + "(...) has too few arguments");
    if (count > parameterCount()) throw RuntimeError(name() + "(...) has too many arguments");
    for (int i = 0; i < count; ++i) {
        const int kind = desc_.paramKinds[i];
        const bool widens = types[i] <= kind && kind != LIST_VAL;
        Require(types[i] == UNKNOWN_VAL || types[i] == kind || widens, "illegal argument type");
    }
}

// ---- the table

UserFunc* UserFunctionTable::find(std::string_view name) const {
    const auto entry = functions_.find(name);
    return entry == functions_.end() ? nullptr : entry->second.get();
}

UserFunc& UserFunctionTable::declare(FunctionDesc desc) {
    auto& entry = functions_[desc.name];
    entry = std::make_unique<UserFunc>(desc.name);
    entry->resetFunction(std::move(desc));
    return *entry;
}

void UserFunctionTable::loseReaders(const Value* read, const std::string& what) {
    for (const auto& [name, function] : functions_)
        if (function->uses(read)) function->loseBody("function " + name + " refers to a cleared " + what);
}

void UserFunctionTable::retire(std::unique_ptr<UserFunc> function) {
    function->loseBody("function " + function->name() + " has been cleared");
    removed_.push_back(std::move(function));
}

bool UserFunctionTable::remove(std::string_view name) {
    const auto entry = functions_.find(name);
    if (entry == functions_.end()) return false;
    const std::string cleared(name);
    const Value* token = entry->second->token();
    const bool busy = std::ranges::any_of(functions_, [token](const auto& other) {
        const UserFunc& function = *other.second;
        return function.depth() > 0 && (function.token() == token || function.uses(token));
    });
    if (busy) throw SyntaxError{"function in use, can't be cleared here: " + cleared};

    retire(std::move(entry->second));
    functions_.erase(entry);
    loseReaders(token, "function: " + cleared);
    return true;
}

void UserFunctionTable::clear() {
    for (const auto& [name, function] : functions_)
        if (function->depth() > 0) throw SyntaxError{"function in use, can't be cleared here: " + name};
    for (auto& entry : functions_) retire(std::move(entry.second));
    functions_.clear();
}

void UserFunctionTable::variableCleared(const Value* variable, std::string_view name) {
    const std::string cleared(name);
    for (const auto& entry : functions_)
        if (entry.second->depth() > 0 && entry.second->uses(variable))
            throw SyntaxError{"variable in use, can't be cleared here: " + cleared};
    loseReaders(variable, "variable: " + cleared);
}

}  // namespace vorpen
