// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a name is, asked while a line compiles, and the owner of every global
// variable. Names are bound when they are compiled: an element of a compiled
// tree holds the Value itself and nothing is looked up while it runs. Hence
// the care about clearing a variable or changing its kind: the user functions
// that read it are told before it goes.
//
// There are two levels and no more: the global one, and the function that is
// being compiled. A function sees globals for reading; it assigns to one only
// after `global`. In a function of a resource file the names of functions come
// before globals, so that it computes the same whatever the user has called
// his variables. A resource file that is loaded in the middle of a function
// puts the function's level aside and takes it back afterwards.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "builtins/registry.h"
#include "values/value.h"

namespace vorpen {

class UserFunc;
class UserFunctionTable;

enum class SymbolClass { unknown = 0, constant = 1, function = 2, variable = 3 };

/// What a name stands for at the place where it is read.
struct Symbol {
    SymbolClass symbolClass = SymbolClass::unknown;
    double foundConstant = 0.0;
    Value* found = nullptr;      ///< the variable
    Value* foundHere = nullptr;  ///< the variable that an assignment at this level stores to
    UserFunc* userFunction = nullptr;
    const BuiltinInfo* builtin = nullptr;  ///< the function, when it is no user function

    [[nodiscard]] bool isUnknown() const { return symbolClass == SymbolClass::unknown; }
    [[nodiscard]] bool isConstant() const { return symbolClass == SymbolClass::constant; }
    [[nodiscard]] bool isFunction() const { return symbolClass == SymbolClass::function; }
    [[nodiscard]] bool isVariable() const { return symbolClass == SymbolClass::variable; }
};

/// How many arguments a function takes; a max of -1 means any number.
struct ArgumentLimits {
    int min = 0;
    int max = 0;
};

/// What became of a name that was to be cleared.
enum class ClearResult { done = 0, noSuchSymbol = 1, builtinFunction = 2, constantCleared = 3, failed = 4 };

class SymbolTable {
public:
    explicit SymbolTable(UserFunctionTable& functions);
    SymbolTable(const SymbolTable&) = delete;
    SymbolTable& operator=(const SymbolTable&) = delete;

    using Globals = std::map<std::string, std::unique_ptr<Value>, std::less<>>;
    using Constants = std::map<std::string, double, std::less<>>;

    /// Makes a function of a resource file known; answers whether there is
    /// one. Called for names that nobody has defined, and for those that came
    /// from such a file and have lost their bodies.
    using ResourceLoader = std::function<bool(const std::string& name)>;
    void setResourceLoader(ResourceLoader loader) { loadResource_ = std::move(loader); }

    /// The meaning of a name: a variable hides a constant, and both hide a
    /// function. May load a resource file; fails only when that file does.
    [[nodiscard]] Symbol classify(std::string_view name);
    [[nodiscard]] bool isConstant(std::string_view name) { return classify(name).isConstant(); }
    /// True for a function whose name no loop and no multiple assignment may
    /// take. In a resource file that is not so for those of the user, which it
    /// knows nothing of.
    [[nodiscard]] bool isReserved(const Symbol& symbol) const;
    /// True when a local, global or constant has the name, so that no user
    /// function may take it.
    [[nodiscard]] bool clashesWithFunctionName(std::string_view name) const;

    [[nodiscard]] static ArgumentLimits argumentLimits(const Symbol& function);

    /// Makes a variable at the current level for values of a static type;
    /// integers and unknown types get a double. In a function the value
    /// belongs to the function, and becomes its output when the name is one.
    Value* declareVariable(std::string_view name, int type);
    /// Makes a global anew with another kind; functions that read the former
    /// one are told.
    Value* redeclareVariable(std::string_view name, int type);
    /// Makes the value the global of that name, whatever had it before.
    Value* adoptGlobal(std::string_view name, std::unique_ptr<Value> value);

    /// Lets a name stand for a value, before everything else it may mean,
    /// until it is unbound: the parameter of an anonymous function. The value
    /// is not owned. Bindings nest.
    void bind(std::string_view name, Value* value);
    void unbind(std::string_view name);

    /// Null, or the message of the failure.
    [[nodiscard]] const char* defineConstant(std::string_view name, double value);
    [[nodiscard]] const char* declareGlobal(std::string_view name);
    /// A local that keeps its value from call to call; must come first in a
    /// body.
    [[nodiscard]] const char* declarePersistent(std::string_view name, double value);

    /// Opens the level of a function's body and makes its parameters, which
    /// the function holds already, known by their names. Fails with a
    /// SyntaxError inside another body.
    void openScope(UserFunc& function);
    void closeScope();
    [[nodiscard]] int scopeLevel() const { return scope_.function ? 1 : 0; }
    /// The function whose body is being compiled, or null.
    [[nodiscard]] UserFunc* currentFunction() const { return scope_.function; }

    class GlobalLevel;

    /// Clears a name; with constMode only a constant. `reset` and `everything`
    /// clear all. A constant without constMode fails with a RuntimeError.
    ClearResult clearName(std::string_view name, bool constMode);
    /// Removes all functions, variables and constants; with restoreConstants
    /// the constants of the start come back.
    void clearAll(bool restoreConstants);

    /// Frees variables that are no longer known, and functions too. A tree
    /// that was compiled before may still point at them, so this is for the
    /// time between two inputs.
    void forgetRemoved();

    /// The names of a kind, "vars", "consts" or "funcs", in their order; any
    /// other word gives none.
    [[nodiscard]] std::vector<std::string> listNames(std::string_view what) const;

    [[nodiscard]] const Globals& globals() const { return globals_; }
    [[nodiscard]] const Constants& constants() const { return constants_; }
    [[nodiscard]] UserFunctionTable& functions() const { return functions_; }

private:
    struct Scope {
        UserFunc* function = nullptr;
        std::map<std::string, Value*, std::less<>> locals;
        std::set<std::string, std::less<>> declaredGlobals;
        Constants localConstants;
        std::vector<std::pair<std::string, Value*>> bindings;
    };

    [[nodiscard]] Value* findGlobal(std::string_view name) const;
    [[nodiscard]] std::optional<double> findConstant(std::string_view name) const;
    [[nodiscard]] Symbol classifyFunction(std::string_view name);
    [[nodiscard]] Symbol classifyInResource(std::string_view name);
    Value* replaceGlobal(std::string_view name, std::unique_ptr<Value> value);
    ClearResult clearConstant(std::string_view name);
    void clearVariable(std::string_view name);
    void fillConstants();

    UserFunctionTable& functions_;
    ResourceLoader loadResource_;
    Globals globals_;
    Constants physicsConstants_;
    Constants constants_;  ///< of the user, and the short names
    Scope scope_;
    std::vector<std::unique_ptr<Value>> removed_;
};

/// Puts the level of the current function and all bindings aside, as long as
/// it lives: what is compiled meanwhile is global.
class SymbolTable::GlobalLevel {
public:
    explicit GlobalLevel(SymbolTable& table) : table_(table), saved_(std::exchange(table.scope_, Scope{})) {}
    ~GlobalLevel() { table_.scope_ = std::move(saved_); }
    GlobalLevel(const GlobalLevel&) = delete;
    GlobalLevel& operator=(const GlobalLevel&) = delete;

private:
    SymbolTable& table_;
    Scope saved_;
};

}  // namespace vorpen
