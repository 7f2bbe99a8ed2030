// SPDX-License-Identifier: GPL-3.0-or-later

// Heads of functions as they are read, the entries they make, and bodies that
// wait in a file.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "base/errors.h"
#include "base/output.h"
#include "eval/run_state.h"
#include "frontend/function_declaration.h"
#include "frontend/statement_compiler.h"
#include "frontend/symbol_table.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

class Recorder final : public Output {
public:
    void print(std::string_view text, bool, PrintMode) override { lines.emplace_back(text); }
    std::vector<std::string> lines;
};

TokenList tokensOf(const std::string& text) {
    InputSource source(text, SourceMode::text);
    std::string line;
    source.getLine(line, false, false);
    auto statements = splitStatements(scanLine(line, source), false);
    return statements.empty() ? TokenList() : std::move(statements.front());
}

FunctionDesc headOf(const std::string& text, DefinitionMode mode) {
    FunctionDesc desc;
    const TokenList tokens = tokensOf(text);
    (void)parseHead(tokens, mode, desc);
    return desc;
}

std::string failureOf(const std::string& text, DefinitionMode mode) {
    try {
        headOf(text, mode);
    } catch (const SyntaxError& failure) {
        return failure.message;
    }
    return "no failure";
}

using Names = std::vector<std::string>;
using Kinds = std::vector<int>;

TEST(FunctionHead, QuickForm) {
    const FunctionDesc desc = headOf("f(a, b) := a+b", DefinitionMode::quick);
    EXPECT_EQ(desc.name, "f");
    EXPECT_EQ(desc.paramNames, (Names{"a", "b"}));
    EXPECT_EQ(desc.paramKinds, (Kinds{DOUBLE_VAL, DOUBLE_VAL}));
    EXPECT_EQ(desc.outputNames, Names{""});
    EXPECT_EQ(desc.outputKinds, Kinds{DOUBLE_VAL});
    EXPECT_TRUE(desc.has(FUNCTION_QUICK_ELIGIBLE));
    EXPECT_FALSE(desc.has(FUNCTION_VECTORISED));
}

TEST(FunctionHead, EndsAtTheSignOfDefinition) {
    FunctionDesc desc;
    const TokenList tokens = tokensOf("f(a) := a+1");
    EXPECT_EQ(parseHead(tokens, DefinitionMode::quick, desc), 2u);
    desc = {};
    const TokenList bare = tokensOf("f := 1");
    EXPECT_EQ(parseHead(bare, DefinitionMode::quick, desc), 1u);
    EXPECT_EQ(desc.parameterCount(), 0);
}

TEST(FunctionHead, Outputs) {
    EXPECT_EQ(headOf("function y=f(x)", DefinitionMode::function).outputNames, Names{"y"});
    EXPECT_EQ(headOf("function y*=f(x)", DefinitionMode::function).outputKinds, Kinds{COMPLEX_VAL});
    EXPECT_EQ(headOf("function y[]=f(x)", DefinitionMode::function).outputKinds, Kinds{LIST_VAL});
    const FunctionDesc two = headOf("function [a, b*, c[]] = f(x)", DefinitionMode::function);
    EXPECT_EQ(two.outputNames, (Names{"a", "b", "c"}));
    EXPECT_EQ(two.outputKinds, (Kinds{DOUBLE_VAL, COMPLEX_VAL, LIST_VAL}));
    EXPECT_EQ(headOf("function f", DefinitionMode::function).outputNames, Names{""});
    EXPECT_EQ(headOf("function y=f()", DefinitionMode::function).parameterCount(), 0);
}

TEST(FunctionHead, Parameters) {
    const FunctionDesc desc = headOf("function y=f(x, ^z, w*, ^l[])", DefinitionMode::function);
    EXPECT_EQ(desc.paramNames, (Names{"x", "z", "w", "l"}));
    EXPECT_EQ(desc.paramKinds, (Kinds{DOUBLE_VAL, DOUBLE_VAL, COMPLEX_VAL, LIST_VAL}));
    EXPECT_EQ(desc.byReference, 0b1010u);
}

TEST(FunctionHead, Defaults) {
    const FunctionDesc desc = headOf("f(a, b:2, c:-1.5, d:1e3) := a", DefinitionMode::quick);
    EXPECT_EQ(desc.defaults, (std::vector<double>{2, -1.5, 1000}));
    EXPECT_EQ(desc.minArguments(), 1);
    EXPECT_EQ(desc.parameterCount(), 4);
}

TEST(FunctionHead, WhatAllowsAQuickCall) {
    const auto quick = [](const std::string& text, DefinitionMode mode) {
        return headOf(text, mode).has(FUNCTION_QUICK_ELIGIBLE);
    };
    EXPECT_TRUE(quick("f := 1", DefinitionMode::quick));
    EXPECT_TRUE(quick("function y=f(a,b)", DefinitionMode::function));
    EXPECT_FALSE(quick("f(a,b,c) := 1", DefinitionMode::quick));
    EXPECT_FALSE(quick("f(a*) := 1", DefinitionMode::quick));
    EXPECT_FALSE(quick("f(a[]) := 1", DefinitionMode::quick));
    EXPECT_FALSE(quick("f(a:1) := 1", DefinitionMode::quick));
    EXPECT_FALSE(quick("f(^a) := 1", DefinitionMode::quick));
    EXPECT_FALSE(quick("function [a,b]=f(x)", DefinitionMode::function));
    EXPECT_FALSE(quick("function y*=f(x)", DefinitionMode::function));
}

TEST(FunctionHead, Failures) {
    constexpr auto quick = DefinitionMode::quick;
    constexpr auto function = DefinitionMode::function;
    EXPECT_EQ(failureOf("function f := 1", function), "do not use ':=' with the keyword 'function'");
    EXPECT_EQ(failureOf("function [a,b] f(x)", function), "invalid function declaration");
    EXPECT_EQ(failureOf("function 3", function), "invalid function declaration");
    EXPECT_EQ(failureOf("function f(x) 3", function), "invalid function declaration");
    EXPECT_EQ(failureOf("funcdec [a,b]", DefinitionMode::declaration), "invalid function declaration");
    EXPECT_EQ(failureOf("function [a+b]=f(x)", function), "invalid list of names");
    EXPECT_EQ(failureOf("f(3) := 1", quick), "invalid item in argument list");
    EXPECT_EQ(failureOf("f(while) := 1", quick), "invalid item in argument list");
    EXPECT_EQ(failureOf("f(^) := 1", quick), "unattached '^' in argument list");
    EXPECT_EQ(failureOf("f(a+b) := 1", quick), "missing comma or semicolon");
    EXPECT_EQ(failureOf("f(a:1, b) := 1", quick), "missing default value");
    EXPECT_EQ(failureOf("f(a:x) := 1", quick), "default value must be a number");
    EXPECT_EQ(failureOf("f(a:1i) := 1", quick), "default value must be a number");
    EXPECT_EQ(failureOf("f(a, a) := 1", quick), "repeated name in argument list");
    EXPECT_EQ(failureOf("f ::= 1", DefinitionMode::vectorisedQuick),
              "can't vectorize a function with no arguments");
}

Token name(const std::string& text, char code) { return {TOK_NAME, code, text}; }

/// The scanner refuses some of these heads itself.
TEST(FunctionHead, MarksWithoutTheirSign) {
    const auto failure = [](TokenList parameters) -> std::string {
        Token bracket(TOK_BRACKET, ')');
        bracket.items = std::move(parameters);
        const TokenList tokens = {name("f", '('), bracket, Token(TOK_DEFINE, ':')};
        FunctionDesc desc;
        try {
            (void)parseHead(tokens, DefinitionMode::quick, desc);
        } catch (const SyntaxError& fault) {
            return fault.message;
        }
        return "no failure";
    };
    EXPECT_EQ(failure({name("a", '*')}), "incorrect use of '*' in parameter list");
    EXPECT_EQ(failure({name("a", '['), Token(TOK_INT, 0, "1")}),
              "incorrect use of '['. Use [] to indicate a list");
    EXPECT_EQ(failure({name("a", '['), Token(TOK_EMPTY, 0)}), "no failure");
    EXPECT_EQ(failure({name("a", ':'), Token(TOK_SEP, ':')}), "default value must be a number");
    EXPECT_EQ(failure({name("a", ':'), Token(TOK_SEP, ':'), Token(TOK_UNARY, '-')}),
              "default value must be a number");
}

TEST(FunctionHead, AsManyParametersAsBits) {
    const auto head = [](int count) {
        std::string text = "f(";
        for (int i = 0; i < count; ++i) text += (i ? ",^p" : "^p") + std::to_string(i);
        return text + ") := 1";
    };
    EXPECT_EQ(headOf(head(32), DefinitionMode::quick).byReference, 0xFFFFFFFFu);
    EXPECT_EQ(failureOf(head(33), DefinitionMode::quick), "exceeded maximum permitted number of arguments");
}

TEST(FunctionNameList, TakesSeparatorsAndMarks) {
    const TokenList tokens = tokensOf("a, b* , c[]");
    const auto names = nameList(tokens, true);
    ASSERT_EQ(names.size(), 3u);
    EXPECT_EQ(names[1].name, "b");
    EXPECT_EQ(names[1].type, COMPLEX_VAL);
    EXPECT_EQ(names[2].type, LIST_VAL);
    EXPECT_THROW((void)nameList(tokens, false), SyntaxError);
    EXPECT_EQ(nameList(tokensOf("a, b"), false).size(), 2u);
    EXPECT_THROW((void)nameList(tokensOf("a, 3"), true), SyntaxError);
    EXPECT_TRUE(nameList({}, true).empty());
}

class FunctionDefinitions : public testing::Test {
protected:
    void SetUp() override { setOutput(&recorder); }
    void TearDown() override {
        setOutput(nullptr);
        runState().reset();
        if (!folder.empty()) fs::remove_all(folder);
    }

    /// Compiles a text; answers the failure's message.
    std::string compile(const std::string& text, SourceMode mode = SourceMode::text) {
        InputSource source(text, mode);
        StatementCompiler compiler(symbols, source);
        try {
            StatementPtr statement = compiler.compileAll();
            compilePendingFunctions(compiler);
            runState().start();
            if (statement) statement->exe();
        } catch (const SyntaxError& failure) {
            return failure.message;
        } catch (const RuntimeError& failure) {
            return failure.message;
        }
        return "";
    }

    double valueOf(const std::string& expression) {
        EXPECT_EQ(compile("result=" + expression), "");
        return symbols.classify("result").found->doubleValue();
    }

    std::string writeFile(const std::string& name, const std::string& text) {
        if (folder.empty()) {
            std::string pattern = (fs::temp_directory_path() / "functions-XXXXXX").string();
            folder = mkdtemp(pattern.data());
        }
        const std::string path = (folder / name).string();
        std::ofstream(path) << text;
        return path;
    }

    /// Makes a function known by its head in a file.
    void knowFromFile(const std::string& path, int line, const std::string& head) {
        FunctionSource source;
        source.text = path;
        source.line = line;
        source.typed = false;
        defineFunction(symbols, headOf(head, DefinitionMode::function), source);
    }

    Recorder recorder;
    UserFunctionTable functions;
    SymbolTable symbols{functions};
    fs::path folder;
};

TEST_F(FunctionDefinitions, RecordWhereTheyWereRead) {
    EXPECT_EQ(compile("f(x) := x+1", SourceMode::typed), "");
    const FunctionSource& typed = functions.find("f")->source();
    EXPECT_TRUE(typed.typed);
    EXPECT_NE(typed.text.find("x+1"), std::string::npos);
    EXPECT_EQ(compile("function y=gg(x)\ry=x;\rend"), "");
    const FunctionSource& pasted = functions.find("gg")->source();
    EXPECT_FALSE(pasted.typed);
}

TEST_F(FunctionDefinitions, CloseTheScopeAndLeaveNoEntryAfterAFailure) {
    EXPECT_EQ(compile("f(x) := nosuch(x)"), "unrecognised name {g 'nosuch'");
    EXPECT_EQ(functions.find("f"), nullptr);
    EXPECT_EQ(symbols.scopeLevel(), 0);
    EXPECT_EQ(recorder.lines, Names{"in function f"});
    EXPECT_EQ(valueOf("3"), 3);
}

TEST_F(FunctionDefinitions, AHeadThatIsRefusedLeavesTheFunction) {
    EXPECT_EQ(compile("f(x) := x+1"), "");
    EXPECT_EQ(compile("f(3) := 1"), "invalid item in argument list");
    EXPECT_EQ(compile("function y=f(x) 3"), "invalid function declaration");
    EXPECT_EQ(valueOf("f(1)"), 2);
}

TEST_F(FunctionDefinitions, NoteTheEventsOfTheMouse) {
    EXPECT_FALSE(functions.onMoveEnabled);
    EXPECT_EQ(compile("onMove(x) := 1"), "");
    EXPECT_TRUE(functions.onMoveEnabled);
    EXPECT_FALSE(functions.onDragEnabled || functions.onDragableEnabled);
    EXPECT_EQ(compile("onDrag(x) := 1"), "");
    EXPECT_EQ(compile("onDragable(x) := 1"), "");
    EXPECT_TRUE(functions.onDragEnabled && functions.onDragableEnabled);
}

TEST_F(FunctionDefinitions, ABodyMayBeBracedOverALine) {
    EXPECT_EQ(compile("f(x) := { if x>2: return 10; return 20; }"), "");
    EXPECT_EQ(valueOf("f(3)+f(1)"), 30);
}

TEST_F(FunctionDefinitions, BodiesInAFileAreCompiledLater) {
    const auto path = writeFile("lib.vrp",
                                "# a remark\nfunction y = twice(x)\n    y = 2*x;\nend\n"
                                "function y = again(x)\n    y = twice(twice(x));\nend\n");
    knowFromFile(path, 2, "function y = twice(x)");
    knowFromFile(path, 5, "function y = again(x)");
    EXPECT_TRUE(functions.find("again")->isPending());
    EXPECT_EQ(valueOf("again(3)"), 12);
    EXPECT_FALSE(functions.find("again")->isPending());
}

TEST_F(FunctionDefinitions, ADeclarationIsNotCompiledFromItsLine) {
    EXPECT_EQ(compile("funcdec f(x)"), "");
    EXPECT_FALSE(functions.find("f")->isPending());
    EXPECT_EQ(compile("result=f(1)"), "function f is declared but has no body");
}

TEST_F(FunctionDefinitions, AFileThatFailsLosesItsFunctions) {
    const auto path = writeFile("lib.vrp",
                                "function y = good(x)\n    y = x;\nend\n"
                                "function y = other(x)\n    y = nosuch;\nend\n");
    knowFromFile(path, 1, "function y = good(x)");
    knowFromFile(path, 4, "function y = other(x)");
    EXPECT_EQ(compile("result=1"), "unrecognised name {g 'nosuch'");
    EXPECT_EQ(recorder.lines, (Names{"in function other", "in file lib.vrp"}));
    EXPECT_EQ(functions.find("good"), nullptr);
    EXPECT_EQ(functions.find("other"), nullptr);
    EXPECT_EQ(symbols.scopeLevel(), 0);
}

TEST_F(FunctionDefinitions, AFileThatHasGoneOrChangedFails) {
    knowFromFile((fs::temp_directory_path() / "no-such-file.vrp").string(), 1, "function y = f(x)");
    EXPECT_EQ(compile("result=1"), "could not open the file of function f");
    const auto path = writeFile("lib.vrp", "function y = hh(x)\n    y = x;\nend\n");
    knowFromFile(path, 1, "function y = gg(x)");
    EXPECT_EQ(compile("result=1"), "invalid function declaration");
    knowFromFile(path, 9, "function y = gg(x)");
    EXPECT_EQ(compile("result=1"), "invalid function declaration");
    EXPECT_EQ(functions.find("gg"), nullptr);
}

TEST_F(FunctionDefinitions, ARemovedFunctionIsSafeToCallFromAFormerTree) {
    EXPECT_EQ(compile("f(x) := x+1"), "");
    InputSource source("result=f(1)", SourceMode::text);
    StatementCompiler compiler(symbols, source);
    StatementPtr statement = compiler.compileAll();
    functions.remove("f");
    try {
        statement->exe();
        FAIL();
    } catch (const RuntimeError& failure) {
        EXPECT_EQ(failure.message, "function f has been cleared");
    }
    statement.reset();
    functions.forgetRemoved();
}

}  // namespace
}  // namespace vorpen
