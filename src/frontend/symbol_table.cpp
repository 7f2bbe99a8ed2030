// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/symbol_table.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "base/errors.h"
#include "builtins/constants.h"
#include "builtins/keywords.h"
#include "eval/user_func.h"
#include "frontend/resource_functions.h"

namespace vorpen {
namespace {

constexpr const char* onlyInFunctions = "invalid command at global scope";
constexpr const char* misplaced = "misplaced declaration";

bool sameNumber(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

Symbol constantSymbol(double value) {
    Symbol symbol;
    symbol.symbolClass = SymbolClass::constant;
    symbol.foundConstant = value;
    return symbol;
}

Symbol variableSymbol(Value* value, bool here) {
    Symbol symbol;
    symbol.symbolClass = SymbolClass::variable;
    symbol.found = value;
    symbol.foundHere = here ? value : nullptr;
    return symbol;
}

Symbol functionSymbol(UserFunc* function, const BuiltinInfo* builtin) {
    Symbol symbol;
    symbol.symbolClass = SymbolClass::function;
    symbol.userFunction = function;
    symbol.builtin = builtin;
    return symbol;
}

template <class Map>
void appendKeys(std::vector<std::string>& names, const Map& map) {
    for (const auto& entry : map) names.push_back(entry.first);
}

}  // namespace

SymbolTable::SymbolTable(UserFunctionTable& functions) : functions_(functions) { fillConstants(); }

void SymbolTable::fillConstants() {
    physicsConstants_.clear();
    for (const NamedConstant& row : physicsConstantRows) physicsConstants_.emplace(row.name, row.value);
    for (const NamedConstant& row : shortConstantRows)
        constants_.insert_or_assign(std::string(row.name), row.value);
}

Value* SymbolTable::findGlobal(std::string_view name) const {
    const auto found = globals_.find(name);
    return found == globals_.end() ? nullptr : found->second.get();
}

std::optional<double> SymbolTable::findConstant(std::string_view name) const {
    if (const auto found = constants_.find(name); found != constants_.end()) return found->second;
    if (const auto found = physicsConstants_.find(name); found != physicsConstants_.end())
        return found->second;
    return std::nullopt;
}

Symbol SymbolTable::classifyFunction(std::string_view name) {
    UserFunc* function = functions_.find(name);
    if (loadResource_ && !isKeyword(name) && (!function || hasLostItsBody(*function))) {
        const GlobalLevel level(*this);
        if (loadResource_(std::string(name))) function = functions_.find(name);
    }
    if (function) return functionSymbol(function, nullptr);
    if (const BuiltinInfo* builtin = findBuiltin(name)) return functionSymbol(nullptr, builtin);
    return {};
}

/// What the user calls `mean` must not change what a resource file computes:
/// there a function comes before a global, and constants are those of the
/// language.
Symbol SymbolTable::classifyInResource(std::string_view name) {
    const auto isOfLanguage = [&](const NamedConstant& row) { return row.name == name; };
    if (physicsConstants_.contains(name) || std::ranges::any_of(shortConstantRows, isOfLanguage))
        if (const auto constant = findConstant(name)) return constantSymbol(*constant);
    const UserFunc* known = functions_.find(name);
    if (known && !known->desc().has(FUNCTION_RESOURCE))
        if (const BuiltinInfo* builtin = findBuiltin(name)) return functionSymbol(nullptr, builtin);
    if (const Symbol function = classifyFunction(name); function.isFunction()) return function;
    Value* global = findGlobal(name);
    return global ? variableSymbol(global, false) : Symbol();
}

Symbol SymbolTable::classify(std::string_view name) {
    for (auto binding = scope_.bindings.rbegin(); binding != scope_.bindings.rend(); ++binding)
        if (binding->first == name) return variableSymbol(binding->second, true);
    bool globalIsHere = true;
    if (scope_.function) {
        globalIsHere = scope_.declaredGlobals.contains(name);
        if (!globalIsHere) {
            if (const auto local = scope_.locals.find(name); local != scope_.locals.end())
                return variableSymbol(local->second, true);
            if (const auto local = scope_.localConstants.find(name); local != scope_.localConstants.end())
                return constantSymbol(local->second);
        }
    }
    if (scope_.function && !globalIsHere && scope_.function->desc().has(FUNCTION_RESOURCE))
        return classifyInResource(name);
    if (Value* global = findGlobal(name)) return variableSymbol(global, globalIsHere);
    if (const auto constant = findConstant(name)) return constantSymbol(*constant);
    return classifyFunction(name);
}

bool SymbolTable::isReserved(const Symbol& symbol) const {
    const bool inResource = scope_.function && scope_.function->desc().has(FUNCTION_RESOURCE);
    const bool isUsersOwn = symbol.userFunction && !symbol.userFunction->desc().has(FUNCTION_RESOURCE);
    return symbol.isFunction() && !(inResource && isUsersOwn);
}

bool SymbolTable::clashesWithFunctionName(std::string_view name) const {
    return scope_.locals.contains(name) || findGlobal(name) || findConstant(name);
}

ArgumentLimits SymbolTable::argumentLimits(const Symbol& function) {
    if (function.userFunction)
        return {function.userFunction->minArguments(), function.userFunction->parameterCount()};
    return {function.builtin->minArgs, function.builtin->maxArgs};
}

Value* SymbolTable::declareVariable(std::string_view name, int type) {
    if (scope_.function) {
        Value* local = scope_.function->addLocal(name, type);
        scope_.locals.insert_or_assign(std::string(name), local);
        return local;
    }
    return replaceGlobal(name, newHolder(type == INTEGER_VAL ? int{DOUBLE_VAL} : type));
}

Value* SymbolTable::redeclareVariable(std::string_view name, int type) {
    assert(findGlobal(name));
    functions_.variableCleared(findGlobal(name), name);
    return replaceGlobal(name, newHolder(type == INTEGER_VAL ? int{DOUBLE_VAL} : type));
}

Value* SymbolTable::adoptGlobal(std::string_view name, std::unique_ptr<Value> value) {
    if (const Value* former = findGlobal(name)) functions_.variableCleared(former, name);
    return replaceGlobal(name, std::move(value));
}

Value* SymbolTable::replaceGlobal(std::string_view name, std::unique_ptr<Value> value) {
    std::unique_ptr<Value>& global = globals_[std::string(name)];
    std::swap(global, value);
    if (value) removed_.push_back(std::move(value));
    return global.get();
}

void SymbolTable::bind(std::string_view name, Value* value) { scope_.bindings.emplace_back(name, value); }

void SymbolTable::unbind(std::string_view name) {
    const auto binding = std::ranges::find(scope_.bindings.rbegin(), scope_.bindings.rend(), name,
                                           &std::pair<std::string, Value*>::first);
    assert(binding != scope_.bindings.rend());
    scope_.bindings.erase(std::next(binding).base());
}

const char* SymbolTable::defineConstant(std::string_view name, double value) {
    const bool local = scope_.function != nullptr;
    std::optional<double> present;
    if (!local)
        present = findConstant(name);
    else if (const auto found = scope_.localConstants.find(name); found != scope_.localConstants.end())
        present = found->second;
    if (present) return sameNumber(*present, value) ? nullptr : "attempt to change value of a const";
    if (local ? scope_.locals.contains(name) : findGlobal(name) != nullptr) return "const name clash";
    (local ? scope_.localConstants : constants_).insert_or_assign(std::string(name), value);
    return nullptr;
}

const char* SymbolTable::declareGlobal(std::string_view name) {
    if (!scope_.function) return onlyInFunctions;
    if (scope_.locals.contains(name)) return misplaced;
    scope_.declaredGlobals.emplace(name);
    if (!findGlobal(name)) replaceGlobal(name, newValue(DOUBLE_VAL));
    return nullptr;
}

const char* SymbolTable::declarePersistent(std::string_view name, double value) {
    if (!scope_.function) return onlyInFunctions;
    if (scope_.locals.contains(name)) return misplaced;
    Value* local = scope_.function->addPersistent(name, value);
    if (!local) return "misplaced persistent declaration";
    scope_.locals.emplace(name, local);
    return nullptr;
}

void SymbolTable::openScope(UserFunc& function) {
    if (scope_.function) throw SyntaxError{"nested functions not allowed"};
    scope_ = Scope{};
    scope_.function = &function;
    for (const UserFunc::Local& local : function.locals())
        scope_.locals.insert_or_assign(local.name, local.value.get());
}

void SymbolTable::closeScope() { scope_ = Scope{}; }

void SymbolTable::clearVariable(std::string_view name) {
    const auto global = globals_.find(name);
    functions_.variableCleared(global->second.get(), name);
    global->second->clear();
    removed_.push_back(std::move(global->second));
    globals_.erase(global);
}

ClearResult SymbolTable::clearConstant(std::string_view name) {
    for (Constants* constants : {&constants_, &physicsConstants_})
        if (const auto found = constants->find(name); found != constants->end()) {
            constants->erase(found);
            return ClearResult::constantCleared;
        }
    return ClearResult::done;
}

ClearResult SymbolTable::clearName(std::string_view name, bool constMode) {
    if (name == "reset" || name == "everything") {
        clearAll(name == "reset");
        return ClearResult::done;
    }
    if (constMode) return clearConstant(name);
    const Symbol symbol = classify(name);
    switch (symbol.symbolClass) {
        case SymbolClass::unknown: return ClearResult::noSuchSymbol;
        case SymbolClass::constant:
            throw RuntimeError("To clear a constant you must use 'clear (const) " + std::string(name) + "'");
        case SymbolClass::function:
            if (symbol.builtin) return ClearResult::builtinFunction;
            return functions_.remove(name) ? ClearResult::done : ClearResult::failed;
        case SymbolClass::variable:
            if (!findGlobal(name)) return ClearResult::failed;
            clearVariable(name);
            return ClearResult::done;
    }
    return ClearResult::failed;
}

void SymbolTable::clearAll(bool restoreConstants) {
    functions_.clear();
    for (auto& [name, value] : globals_) removed_.push_back(std::move(value));
    globals_.clear();
    constants_.clear();
    physicsConstants_.clear();
    if (restoreConstants) fillConstants();
}

void SymbolTable::forgetRemoved() {
    functions_.forgetRemoved();
    removed_.clear();
}

std::vector<std::string> SymbolTable::listNames(std::string_view what) const {
    std::vector<std::string> names;
    if (what == "vars") appendKeys(names, globals_);
    if (what == "funcs") appendKeys(names, functions_.functions());
    if (what == "consts") {
        appendKeys(names, constants_);
        appendKeys(names, physicsConstants_);
        std::ranges::sort(names);
    }
    return names;
}

}  // namespace vorpen
