// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/symbol_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "parse_session.h"

namespace vorpen {
namespace {

class Symbols : public testing::Test, protected ParseSession {
protected:
    UserFunc& openFunction(std::vector<std::string> outputs = {""},
                           std::vector<std::string> parameters = {}) {
        FunctionDesc desc;
        desc.name = "fun";
        desc.outputKinds.assign(outputs.size(), DOUBLE_VAL);
        desc.outputNames = std::move(outputs);
        desc.paramKinds.assign(parameters.size(), DOUBLE_VAL);
        desc.paramNames = std::move(parameters);
        UserFunc& function = functions.declare(desc);
        function.resetFunction(desc);
        symbols.openScope(function);
        return function;
    }
    std::string clearFailure(const std::string& name) {
        try {
            (void)symbols.clearName(name, false);
        } catch (const RuntimeError& e) {
            return e.message;
        }
        return {};
    }
};

TEST_F(Symbols, NamesOfTheStartAreConstantsAndBuiltIns) {
    const Symbol pi = symbols.classify("pi");
    EXPECT_EQ(pi.symbolClass, SymbolClass::constant);
    EXPECT_EQ(pi.foundConstant, 3.141592653589793);
    EXPECT_EQ(symbols.classify("c").foundConstant, 299792458.0);
    EXPECT_EQ(symbols.classify("G").foundConstant, 6.674301e-11);
    EXPECT_EQ(symbols.classify("g").foundConstant, 9.80665);
    EXPECT_TRUE(symbols.classify("sqrt").isFunction());
    EXPECT_TRUE(symbols.classify("sqrt").builtin);
    EXPECT_TRUE(symbols.classify("nosuch").isUnknown());
    EXPECT_TRUE(symbols.classify("while").isUnknown());
}

TEST_F(Symbols, AVariableHidesConstantsAndFunctions) {
    Value* x = symbols.declareVariable("sin", DOUBLE_VAL);
    const Symbol symbol = symbols.classify("sin");
    EXPECT_TRUE(symbol.isVariable());
    EXPECT_EQ(symbol.found, x);
    EXPECT_EQ(symbol.foundHere, x);
    symbols.declareVariable("pi", DOUBLE_VAL);
    EXPECT_TRUE(symbols.classify("pi").isVariable());
}

TEST_F(Symbols, AUserFunctionHidesABuiltIn) {
    UserFunc& function = define("sqrt", {"x"}, "x+1");
    EXPECT_EQ(symbols.classify("sqrt").userFunction, &function);
    EXPECT_FALSE(symbols.classify("sqrt").builtin);
    EXPECT_EQ(symbols.argumentLimits(symbols.classify("sqrt")).max, 1);
}

TEST_F(Symbols, ArgumentLimitsComeFromTheRegistry) {
    EXPECT_EQ(symbols.argumentLimits(symbols.classify("fopen")).min, 1);
    EXPECT_EQ(symbols.argumentLimits(symbols.classify("fopen")).max, 2);
    EXPECT_EQ(symbols.argumentLimits(symbols.classify("list")).max, -1);
}

TEST_F(Symbols, GlobalsOfIntegerAndUnknownTypeAreDoubles) {
    EXPECT_EQ(symbols.declareVariable("i", INTEGER_VAL)->valueType(), DOUBLE_VAL);
    EXPECT_EQ(symbols.declareVariable("u", UNKNOWN_VAL)->valueType(), DOUBLE_VAL);
    EXPECT_EQ(symbols.declareVariable("z", COMPLEX_VAL)->valueType(), COMPLEX_VAL);
    EXPECT_EQ(symbols.declareVariable("L", LIST_VAL)->valueType(), LIST_VAL);
}

TEST_F(Symbols, AFunctionSeesGlobalsButAssignsToItsOwn) {
    Value* a = symbols.declareVariable("a", DOUBLE_VAL);
    openFunction();
    EXPECT_EQ(symbols.scopeLevel(), 1);
    EXPECT_EQ(symbols.classify("a").found, a);
    EXPECT_EQ(symbols.classify("a").foundHere, nullptr);

    Value* local = symbols.declareVariable("a", DOUBLE_VAL);
    EXPECT_NE(local, a);
    EXPECT_EQ(symbols.classify("a").found, local);
    EXPECT_EQ(symbols.classify("a").foundHere, local);

    symbols.closeScope();
    EXPECT_EQ(symbols.scopeLevel(), 0);
    EXPECT_EQ(symbols.classify("a").found, a);
}

TEST_F(Symbols, ADeclaredGlobalIsAssignedToInAFunction) {
    Value* a = symbols.declareVariable("a", DOUBLE_VAL);
    openFunction();
    EXPECT_EQ(symbols.declareGlobal("a"), nullptr);
    EXPECT_EQ(symbols.classify("a").foundHere, a);
    EXPECT_EQ(symbols.declareGlobal("fresh"), nullptr);
    EXPECT_TRUE(symbols.classify("fresh").foundHere);
    symbols.closeScope();
    EXPECT_TRUE(symbols.classify("fresh").isVariable());
}

TEST_F(Symbols, DeclarationsOfAFunctionHaveTheirPlace) {
    EXPECT_STREQ(symbols.declareGlobal("a"), "invalid command at global scope");
    EXPECT_STREQ(symbols.declarePersistent("a", 1), "invalid command at global scope");

    UserFunc& function = openFunction({""}, {"p"});
    EXPECT_STREQ(symbols.declareGlobal("p"), "misplaced declaration");
    EXPECT_STREQ(symbols.declarePersistent("p", 1), "misplaced declaration");
    EXPECT_EQ(symbols.declarePersistent("count", 7), nullptr);
    EXPECT_EQ(function.persistentCount(), 1);
    Value* count = symbols.classify("count").foundHere;
    ASSERT_TRUE(count);
    EXPECT_EQ(count->doubleValue(), 7);
    EXPECT_EQ(count->mark(), 0);
    symbols.declareVariable("local", DOUBLE_VAL);
    EXPECT_STREQ(symbols.declarePersistent("late", 1), "misplaced persistent declaration");
    symbols.closeScope();
}

TEST_F(Symbols, ALocalWithTheNameOfAnOutputIsTheOutput) {
    UserFunc& function = openFunction({"y", "z"});
    Value* y = symbols.declareVariable("y", DOUBLE_VAL);
    EXPECT_EQ(&function.returnTarget(), y);
    symbols.closeScope();
}

TEST_F(Symbols, FunctionsDoNotNest) {
    UserFunc& function = openFunction();
    EXPECT_THROW(symbols.openScope(function), SyntaxError);
    symbols.closeScope();
    EXPECT_NO_THROW(symbols.openScope(function));
    symbols.closeScope();
}

TEST_F(Symbols, ConstantsKeepTheirValue) {
    EXPECT_EQ(symbols.defineConstant("k", 2), nullptr);
    EXPECT_EQ(symbols.classify("k").foundConstant, 2);
    EXPECT_EQ(symbols.defineConstant("k", 2), nullptr);
    EXPECT_STREQ(symbols.defineConstant("k", 3), "attempt to change value of a const");
    EXPECT_EQ(symbols.defineConstant("pi", 3.141592653589793), nullptr);
    EXPECT_STREQ(symbols.defineConstant("pi", 3), "attempt to change value of a const");
    EXPECT_EQ(symbols.defineConstant("nan", NAN), nullptr);
    symbols.declareVariable("x", DOUBLE_VAL);
    EXPECT_STREQ(symbols.defineConstant("x", 1), "const name clash");
}

TEST_F(Symbols, AConstantOfAFunctionEndsWithIt) {
    openFunction({""}, {"p"});
    EXPECT_EQ(symbols.defineConstant("m", 5), nullptr);
    EXPECT_EQ(symbols.classify("m").foundConstant, 5);
    EXPECT_STREQ(symbols.defineConstant("m", 6), "attempt to change value of a const");
    EXPECT_STREQ(symbols.defineConstant("p", 6), "const name clash");
    symbols.closeScope();
    EXPECT_TRUE(symbols.classify("m").isUnknown());
}

TEST_F(Symbols, AParameterHidesAConstant) {
    openFunction({""}, {"pi"});
    EXPECT_TRUE(symbols.classify("pi").isVariable());
    symbols.closeScope();
    EXPECT_TRUE(symbols.classify("pi").isConstant());
}

TEST_F(Symbols, BindingsHideAllElseAndNest) {
    Value* x = symbols.declareVariable("x", DOUBLE_VAL);
    DoubleValue first, second;
    symbols.bind("x", &first);
    symbols.bind("x", &second);
    EXPECT_EQ(symbols.classify("x").found, &second);
    symbols.unbind("x");
    EXPECT_EQ(symbols.classify("x").found, &first);
    symbols.unbind("x");
    EXPECT_EQ(symbols.classify("x").found, x);
}

TEST_F(Symbols, ClearingTellsWhatBecameOfTheName) {
    symbols.declareVariable("x", DOUBLE_VAL);
    define("f", {"a"}, "a");
    EXPECT_EQ(symbols.clearName("x", false), ClearResult::done);
    EXPECT_TRUE(symbols.classify("x").isUnknown());
    EXPECT_EQ(symbols.clearName("x", false), ClearResult::noSuchSymbol);
    EXPECT_EQ(symbols.clearName("sin", false), ClearResult::builtinFunction);
    EXPECT_EQ(symbols.clearName("f", false), ClearResult::done);
    EXPECT_TRUE(symbols.classify("f").isUnknown());
    EXPECT_EQ(clearFailure("pi"), "To clear a constant you must use 'clear (const) pi'");
}

TEST_F(Symbols, ConstantsAreClearedOnlyInTheirMode) {
    symbols.declareVariable("x", DOUBLE_VAL);
    EXPECT_EQ(symbols.clearName("x", true), ClearResult::done);
    EXPECT_TRUE(symbols.classify("x").isVariable());
    EXPECT_EQ(symbols.clearName("c", true), ClearResult::constantCleared);
    EXPECT_TRUE(symbols.classify("c").isUnknown());
    EXPECT_TRUE(symbols.classify("cc").isConstant());
    EXPECT_EQ(symbols.clearName("pi", true), ClearResult::constantCleared);
    EXPECT_TRUE(symbols.classify("pi").isFunction());
}

TEST_F(Symbols, ClearingEverythingLeavesNoConstant) {
    symbols.declareVariable("x", DOUBLE_VAL);
    define("f", {"a"}, "a");
    EXPECT_EQ(symbols.clearName("everything", false), ClearResult::done);
    for (const char* name : {"x", "f", "hbar", "c"}) EXPECT_TRUE(symbols.classify(name).isUnknown()) << name;
    EXPECT_TRUE(symbols.classify("pi").isFunction());
    EXPECT_EQ(symbols.clearName("reset", false), ClearResult::done);
    EXPECT_TRUE(symbols.classify("hbar").isConstant());
    EXPECT_EQ(symbols.classify("c").foundConstant, 299792458.0);
}

TEST_F(Symbols, AFunctionThatReadsAClearedVariableSaysSo) {
    symbols.declareVariable("a", DOUBLE_VAL)->assignDouble(2);
    symbols.declareVariable("b", DOUBLE_VAL)->assignDouble(3);
    define("readsA", {"x"}, "a*x");
    define("readsB", {"x"}, "b*x");
    ASSERT_EQ(value("readsA(4)"), "8");
    (void)symbols.clearName("a", false);
    EXPECT_EQ(failure("readsA(4)"), "r function readsA refers to a cleared variable: a");
    EXPECT_EQ(value("readsB(4)"), "12");
}

TEST_F(Symbols, AFunctionThatReadsARetypedVariableSaysSo) {
    symbols.declareVariable("a", DOUBLE_VAL)->assignDouble(2);
    define("readsA", {"x"}, "a*x");
    EXPECT_EQ(symbols.redeclareVariable("a", COMPLEX_VAL)->valueType(), COMPLEX_VAL);
    EXPECT_EQ(failure("readsA(4)"), "r function readsA refers to a cleared variable: a");
}

TEST_F(Symbols, ATreeMayOutliveItsVariableUntilTheNextInput) {
    symbols.declareVariable("a", DOUBLE_VAL)->assignDouble(2);
    auto tree = parse("a+1");
    symbols.clearAll(true);
    EXPECT_EQ(show(*tree), "3");
    symbols.forgetRemoved();
}

TEST_F(Symbols, FunctionNamesClashWithVariablesAndConstants) {
    symbols.declareVariable("x", DOUBLE_VAL);
    EXPECT_TRUE(symbols.clashesWithFunctionName("x"));
    EXPECT_TRUE(symbols.clashesWithFunctionName("pi"));
    EXPECT_FALSE(symbols.clashesWithFunctionName("sqrt"));
    EXPECT_FALSE(symbols.clashesWithFunctionName("fresh"));
}

TEST_F(Symbols, UnknownNamesAreLookedForInResourceFilesAtTheGlobalLevel) {
    int asked = 0;
    openFunction({""}, {"local"});
    symbols.setResourceLoader([&](const std::string& name) {
        ++asked;
        EXPECT_EQ(symbols.scopeLevel(), 0);
        if (name != "fromFile") return false;
        define(name, {"x"}, "2*x");
        return true;
    });
    EXPECT_TRUE(symbols.classify("fromFile").userFunction);
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(symbols.classify("fromFile").userFunction);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(symbols.scopeLevel(), 1);
    EXPECT_TRUE(symbols.classify("local").isVariable());
    EXPECT_TRUE(symbols.classify("while").isUnknown());
    EXPECT_EQ(asked, 1);
    symbols.closeScope();
}

TEST_F(Symbols, ListsNamesInTheirOrder) {
    symbols.declareVariable("b", DOUBLE_VAL);
    symbols.declareVariable("a", DOUBLE_VAL);
    define("f", {"x"}, "x");
    EXPECT_EQ(symbols.listNames("vars"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(symbols.listNames("funcs"), (std::vector<std::string>{"f"}));
    const auto constants = symbols.listNames("consts");
    EXPECT_EQ(constants.size(), 31u);
    EXPECT_TRUE(std::ranges::is_sorted(constants));
    EXPECT_TRUE(symbols.listNames("others").empty());
}

TEST_F(Symbols, ALoadedValueBecomesTheGlobal) {
    auto value = std::make_unique<ComplexValue>(std::complex<double>(1, 2));
    Value* raw = value.get();
    EXPECT_EQ(symbols.adoptGlobal("pi", std::move(value)), raw);
    EXPECT_EQ(symbols.classify("pi").found, raw);
    EXPECT_EQ(symbols.globals().size(), 1u);
}

}  // namespace
}  // namespace vorpen
