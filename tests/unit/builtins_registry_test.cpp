// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/registry.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "builtins_support.h"

namespace vorpen {
namespace {

using testing::failure;

const BuiltinInfo& info(std::string_view name) {
    const BuiltinInfo* found = findBuiltin(name);
    if (!found) throw std::out_of_range(std::string(name));
    return *found;
}

int tableLength(const std::set<int>& kinds, int resultType) {
    std::set<int> indices;
    for (const BuiltinInfo& row : allBuiltins()) {
        if (!kinds.contains(row.kind) || (resultType >= 0 && row.resultType != resultType)) continue;
        EXPECT_TRUE(indices.insert(row.index).second) << row.name;
    }
    // The indices of a table have no gaps.
    EXPECT_TRUE(indices.empty() || (*indices.begin() == 0 && *indices.rbegin() + 1 == static_cast<int>(indices.size())));
    return static_cast<int>(indices.size());
}

TEST(Registry, Has251Names) {
    EXPECT_EQ(allBuiltins().size(), 251u);
    for (const BuiltinInfo& row : allBuiltins()) EXPECT_EQ(findBuiltin(row.name), &row);
}

TEST(Registry, TablesHaveTheirLengths) {
    EXPECT_EQ(tableLength({TICLIKE}, DOUBLE_VAL), 14);
    EXPECT_EQ(tableLength({ANSFUNC}, DOUBLE_VAL), 6);
    EXPECT_EQ(tableLength({SCALAR2SCALAR}, DOUBLE_VAL), 42);
    EXPECT_EQ(tableLength({SCALAR2SCALAR}, INTEGER_VAL), 9);
    EXPECT_EQ(tableLength({COLUMN2SCALAR, VALUE2SCALAR}, DOUBLE_VAL), 15);
    EXPECT_EQ(tableLength({COLUMN2SCALAR, VALUE2SCALAR}, INTEGER_VAL), 23);
    EXPECT_EQ(tableLength({VECTOR2VECTOR}, DOUBLE_VAL), 30);
    EXPECT_EQ(tableLength({VECTOR2VECTOR}, INTEGER_VAL), 20);
    EXPECT_EQ(tableLength({TWOARG, FUNCTOR}, DOUBLE_VAL), 37);
    EXPECT_EQ(tableLength({GENERAL}, -1), 55);
}

TEST(Registry, ABodyHasTheSignatureOfItsKind) {
    for (const BuiltinInfo& row : allBuiltins()) {
        const auto is = [&]<class Body>(Body*) { return std::holds_alternative<Body>(row.body); };
        bool fits = false;
        const bool isDouble = row.resultType == DOUBLE_VAL;
        switch (row.kind) {
            case TICLIKE: fits = is((TicLikeBody*)nullptr); break;
            case ANSFUNC: fits = is((AnsBody*)nullptr); break;
            case SCALAR2SCALAR: fits = isDouble ? is((RealBody*)nullptr) : is((IntBody*)nullptr); break;
            case COLUMN2SCALAR:
            case VALUE2SCALAR: fits = isDouble ? is((ValueToDoubleBody*)nullptr) : is((ValueToIntBody*)nullptr); break;
            case VECTOR2VECTOR:
                fits = isDouble ? is((VectorToDoubleBody*)nullptr) || is((ChangingToDoubleBody*)nullptr)
                                : is((VectorToIntBody*)nullptr) || is((ChangingToIntBody*)nullptr);
                break;
            case TWOARG: fits = is((TwoArgBody*)nullptr) || is((ChangingTwoArgBody*)nullptr); break;
            case FUNCTOR: fits = is((FunctorBody*)nullptr); break;
            case GENERAL: fits = is((GeneralBody*)nullptr); break;
            case USERFUNC: break;
        }
        EXPECT_TRUE(fits) << row.name;
    }
}

TEST(Registry, NamesAreCaseSensitiveAndExact) {
    EXPECT_EQ(findBuiltin("Sin"), nullptr);
    EXPECT_EQ(findBuiltin("si"), nullptr);
    EXPECT_EQ(findBuiltin("sinx"), nullptr);
    EXPECT_EQ(findBuiltin(""), nullptr);
    EXPECT_NE(findBuiltin("toc"), findBuiltin("Toc"));
}

TEST(Registry, TwoNamesOfOneFunctionAreTwoRowsWithOneBody) {
    const auto share = [](const char* a, const char* b) {
        return &info(a) != &info(b) && info(a).index != info(b).index && info(a).body == info(b).body;
    };
    EXPECT_TRUE(share("ln", "log"));
    EXPECT_TRUE(share("ceil", "ceiling"));
    EXPECT_TRUE(share("gamma", "G"));
    EXPECT_TRUE(share("conj", "real"));
    EXPECT_TRUE(share("seq", "linspace"));
    EXPECT_TRUE(share("strfind", "findstr"));
}

TEST(Registry, TheFirstRowsOfATableMayBeOfAnotherKind) {
    EXPECT_EQ(info("all").kind, COLUMN2SCALAR);
    EXPECT_EQ(info("all").index, 0);
    EXPECT_EQ(info("rfind").kind, COLUMN2SCALAR);
    EXPECT_EQ(info("rfind").index, 5);
    EXPECT_EQ(info("size").kind, VALUE2SCALAR);
    EXPECT_EQ(info("size").index, 6);
    EXPECT_EQ(info("numeric_limits").kind, VALUE2SCALAR);
    EXPECT_EQ(info("numeric_limits").index, 0);
    EXPECT_EQ(info("grindex").kind, VALUE2SCALAR);
    EXPECT_EQ(info("grindex").index, 2);
    EXPECT_EQ(info("mean").kind, COLUMN2SCALAR);
    EXPECT_EQ(info("mean").index, 3);
    EXPECT_EQ(info("poly").kind, FUNCTOR);
    EXPECT_EQ(info("poly").index, 0);
    EXPECT_EQ(info("binomial").kind, FUNCTOR);
    EXPECT_EQ(info("diag").kind, TWOARG);
    EXPECT_EQ(info("diag").index, 10);
}

TEST(Registry, ResultTypesOfGeneralFunctionsFollowTheirRows) {
    EXPECT_EQ(info("dir").resultType, LIST_VAL);
    EXPECT_EQ(info("readtext").resultType, LIST_VAL);
    EXPECT_EQ(info("complex").resultType, COMPLEX_VAL);
    EXPECT_EQ(info("cdiag").resultType, COMPLEX_VAL);
    EXPECT_EQ(info("plot").resultType, INTEGER_VAL);
    EXPECT_EQ(info("plot").index, 8);
    EXPECT_EQ(info("fplot").resultType, INTEGER_VAL);
    EXPECT_EQ(info("fplot").index, 34);
    EXPECT_EQ(info("axis").resultType, DOUBLE_VAL);
    EXPECT_EQ(info("odetest").index, 54);
}

TEST(Registry, ArgumentLimits) {
    const auto limits = [](const char* name) { return std::pair(info(name).minArgs, info(name).maxArgs); };
    EXPECT_EQ(limits("tic"), std::pair(0, 0));
    EXPECT_EQ(limits("ans"), std::pair(0, 1));
    EXPECT_EQ(limits("sqrt"), std::pair(1, 1));
    EXPECT_EQ(limits("mean"), std::pair(1, 1));
    EXPECT_EQ(limits("size"), std::pair(1, 1));
    EXPECT_EQ(limits("zeros"), std::pair(1, 1));
    EXPECT_EQ(limits("reshape"), std::pair(1, 2));
    EXPECT_EQ(limits("poly"), std::pair(2, 2));
    const std::map<std::string, std::pair<int, int>> general = {
        {"dir", {0, 1}},      {"list", {0, -1}},   {"split", {1, 3}},     {"readtext", {1, 1}},
        {"complex", {2, 2}},  {"fft", {1, 1}},     {"ifft", {1, 1}},      {"cdiag", {1, 1}},
        {"plot", {1, -1}},    {"loglog", {1, -1}}, {"semilogx", {1, -1}}, {"semilogy", {1, -1}},
        {"disp", {1, -1}},    {"cd", {0, 1}},      {"errbar", {3, 3}},    {"barchart", {2, 3}},
        {"replot", {0, 3}},   {"text", {2, 5}},    {"title", {1, 2}},     {"xlabel", {1, 2}},
        {"ylabel", {1, 2}},   {"fill", {2, -1}},   {"assert", {1, -1}},   {"debug", {0, -1}},
        {"createButton", {1, 3}}, {"menu", {2, 2}}, {"dispfile", {1, 2}}, {"join", {1, 2}},
        {"print", {1, 1}},    {"save", {2, -1}},   {"qsave", {2, 2}},     {"writetext", {2, 2}},
        {"pad", {2, 4}},      {"snipImage", {2, 3}}, {"fplot", {1, 3}},   {"axis", {1, 4}},
        {"load", {1, 2}},     {"qload", {1, 1}},   {"slf", {2, 4}},       {"debugtest", {0, -1}},
        {"property", {2, 3}}, {"$multiassign", {1, -1}}, {"fzero", {1, 5}}, {"differ", {1, 3}},
        {"fminbrac", {2, 3}}, {"fmin", {2, 3}},    {"sum", {1, 3}},       {"table", {2, 3}},
        {"lsfit", {4, 7}},    {"qinteg", {2, 4}},  {"integ", {0, -1}},    {"eigvv", {1, 1}},
        {"set", {0, 2}},      {"ode", {5, 5}},     {"odetest", {5, 5}},
    };
    EXPECT_EQ(general.size(), 55u);
    for (const auto& [name, expected] : general) EXPECT_EQ(limits(name.c_str()), expected) << name;
}

std::set<std::string> namesWith(BuiltinTrait trait) {
    std::set<std::string> names;
    for (const BuiltinInfo& row : allBuiltins())
        if (row.has(trait)) names.emplace(row.name);
    return names;
}

TEST(Registry, TraitsOfSingleFunctions) {
    EXPECT_EQ(namesWith(ANY_ARGUMENT),
              (std::set<std::string>{"list", "fft", "ifft", "cdiag", "disp", "menu", "join", "save", "qsave", "writetext"}));
    EXPECT_EQ(namesWith(LOGICAL), (std::set<std::string>{"all", "any"}));
    EXPECT_EQ(namesWith(WORD_FORM), (std::set<std::string>{"cd", "dir", "property"}));
    EXPECT_EQ(namesWith(EMPTY_ARGUMENT), (std::set<std::string>{"figure", "wipe", "figpos", "getmouse", "getclick", "axis"}));
    EXPECT_EQ(namesWith(END_OF_INDEX), (std::set<std::string>{"end"}));
    EXPECT_EQ(namesWith(TYPED_BY_FILE), (std::set<std::string>{"qload"}));
    // Functions that may warn stay on the main thread.
    for (const char* name : {"besselj0", "besselj1", "airy", "erfinv", "zeta"})
        EXPECT_FALSE(info(name).has(THREAD_SAFE)) << name;
    EXPECT_TRUE(info("sin").has(THREAD_SAFE));
}

TEST(Registry, ComplexVariants) {
    EXPECT_EQ(complexVariantCounts().pairs, 14);
    EXPECT_EQ(complexVariantCounts().functions, 13);
    const auto resultType = [](const char* name) {
        const auto variant = complexVariantOf(std::get<RealBody>(info(name).body));
        return variant ? variant->resultType : -1;
    };
    for (const char* name : {"sqrt", "exp", "log", "ln", "sin", "cos", "tan", "sinh", "cosh", "tanh"})
        EXPECT_EQ(resultType(name), COMPLEX_VAL) << name;
    for (const char* name : {"conj", "real", "imag", "abs", "arg"}) EXPECT_EQ(resultType(name), DOUBLE_VAL) << name;
    EXPECT_EQ(resultType("floor"), -1);
    EXPECT_EQ(resultType("asin"), -1);
}

TEST(Registry, TheConjugateOfAComplexNumberIsItsRealPart) {
    const auto variant = complexVariantOf(std::get<RealBody>(info("conj").body));
    EXPECT_EQ(std::get<ComplexToRealBody>(variant->body)({3, 4}), 3);
}

}  // namespace
}  // namespace vorpen
