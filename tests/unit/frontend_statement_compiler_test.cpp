// SPDX-License-Identifier: GPL-3.0-or-later

// Which class a form of statement compiles to, and what is refused.

#include <gtest/gtest.h>

#include "eval/control_flow.h"
#include "eval/evaluation_statements.h"
#include "eval/indexed_assignment.h"
#include "unit/statement_session.h"

namespace vorpen {
namespace {

class StatementForms : public testing::Test {
protected:
    StatementForms() { session.run("x=1.5; v=[1.5,2]; m=[1,2;3,4]; w=1i; L=list(1,2); M=list(3);"); }

    /// The single statement of a text, as its class; null when it is another.
    template <class Class>
    Class* compileAs(const std::string& text) {
        compiled = session.compile(text);
        return dynamic_cast<Class*>(compiled.get());
    }
    template <class Class>
    bool is(const std::string& text) {
        return compileAs<Class>(text) && typeid(*compiled) == typeid(Class);
    }

    StatementSession session;
    StatementPtr compiled;
};

// ---- without index

TEST_F(StatementForms, DoubleTargets) {
    EXPECT_TRUE(is<CheckedAssignStm>("x=L[1];"));
    EXPECT_TRUE(is<AssignStm>("x=x+1;"));
    EXPECT_TRUE(is<AssignStm>("x=v[x];"));
    EXPECT_TRUE(is<FastAssignStm>("x=v+1;"));
    EXPECT_TRUE(is<FastAssignStm>("x=3;"));
    EXPECT_TRUE(is<FastAssignStm>("x=v[end];"));
    EXPECT_TRUE(is<GrowAssignDStm>("x,=3;"));
    EXPECT_TRUE(is<GrowAssignDStm>("x;=3;"));
    EXPECT_TRUE(is<OpAssignIntStm>("x+=1;"));
    EXPECT_TRUE(is<OpAssignIntStm>("x/=[1,2];"));
    EXPECT_TRUE(is<AssignPlusDStm>("x+=1.5;"));
    EXPECT_TRUE(is<AssignMinusDStm>("x-=v;"));
    EXPECT_TRUE(is<AssignTimesDStm>("x*=L[1];"));
    EXPECT_TRUE(is<AssignDivideDStm>("x/=0.5;"));
}

TEST_F(StatementForms, ARightSideThatRunsCodeOfTheUserIsEvaluatedAside) {
    session.run("f(a) := a+x;");
    EXPECT_TRUE(is<AssignStm>("x=f(1);"));
    EXPECT_TRUE(is<AssignStm>("v=[1,2]+f(1);"));
}

TEST_F(StatementForms, ComplexAndListTargets) {
    EXPECT_TRUE(is<ComplexAssignStm>("w=2;"));
    EXPECT_TRUE(is<ComplexAssignStm>("w=1i;"));
    EXPECT_TRUE(is<ComplexAssignStm>("w=L[1];"));
    EXPECT_TRUE(is<ListAssignStm>("L=M;"));
    EXPECT_TRUE(is<ListAssignStm>("L=M[1];"));
    EXPECT_TRUE(is<GrowListStm>("L,=3;"));
    EXPECT_TRUE(is<GrowListStm>("L;=M;"));
    EXPECT_EQ(session.failure("w+=1;"), "s not yet implemented for complex type");
    EXPECT_EQ(session.failure("w,=1;"), "s not yet implemented for complex type");
    EXPECT_EQ(session.failure("L+=1;"), "s illegal operator-assignment for a list");
}

TEST_F(StatementForms, ADoubleTargetRefusesTheRest) {
    EXPECT_EQ(session.failure("x<<y;"), "s incorrectly formed statement or expression");
    EXPECT_EQ(session.failure("x+=1i;"), "s incompatible types in assignment");
    EXPECT_EQ(session.failure("x,=M;"), "s incompatible types in assignment");
}

TEST_F(StatementForms, Erasures) {
    EXPECT_TRUE(is<ErasureStm>("x=[];"));
    EXPECT_TRUE(is<ErasureStm>("v[1]=[];"));
    EXPECT_TRUE(is<ErasureStm>("L[1]=[];"));
    EXPECT_TRUE(is<ErasureStm>("w=[];"));
    EXPECT_TRUE(is<ErasureStm>("fresh=[];"));
    EXPECT_EQ(session.variable("fresh").valueType(), DOUBLE_VAL);
    EXPECT_EQ(session.failure("m[1,2]=[];"), "s invalid erasure (more than one index)");
}

// ---- with index

TEST_F(StatementForms, IndexedTargets) {
    EXPECT_TRUE(is<SingleIndexedAssignStm>("v[1]=2;"));
    EXPECT_TRUE(is<SingleIndexedAssignStm>("v.1=2;"));
    EXPECT_TRUE(is<SingleIndexedAssignStm>("m\\1=2;"));
    EXPECT_TRUE(is<SingleIndexedAssignStm>("m\\\\x=2;"));
    EXPECT_TRUE(is<SingleIndexedAssignStm>("m[1,:]=2;"));
    EXPECT_TRUE(is<SingleIndexedAssignStm>("m[:,1]+=2;"));
    EXPECT_TRUE(is<SingleIndexedAssignStm>("v[v>1]/=2;"));
    EXPECT_TRUE(is<SingleIndexed_SeqAssignStm>("v[1:2]=2;"));
    EXPECT_TRUE(is<SingleIndexed_SeqAssignStm>("m[1:2,:]=2;"));
    EXPECT_TRUE(is<IndexedAssignStm>("m[1,2]=2;"));
    EXPECT_TRUE(is<IndexedAssignStm>("m[1:2,2]*=2;"));
    EXPECT_TRUE(is<IndexedAnyAssignStm>("L[1]='a';"));
}

TEST_F(StatementForms, IndexedTargetsThatAreRefused) {
    EXPECT_EQ(session.failure("w[1]=2;"), "s indexed assignment to non-double not yet implemented");
    EXPECT_EQ(session.failure("v[1],=2;"), "s this op-assign not allowed for an indexed lhs");
    EXPECT_EQ(session.failure("v[1:2]+=2;"), "s op-assign with sequence lhs is not implemented");
    EXPECT_EQ(session.failure("L[1]+=2;"), "s indexed op-assign to list not yet implemented");
    EXPECT_EQ(session.failure("v[1]=1i;"), "s incompatible types in assignment");
    EXPECT_EQ(session.failure("v[1]=M;"), "s incompatible types in assignment");
    EXPECT_EQ(session.failure("nosuch[1]=2;"), "s Indexing an undeclared variable on the lhs");
    EXPECT_EQ(session.failure("v.sin=2;"), "s you can't assign to a function call");
    EXPECT_EQ(session.failure("v[1,2,3]=2;"), "s too many indices");
}

TEST_F(StatementForms, InAFunctionAGlobalIsNoTarget) {
    EXPECT_EQ(session.failure("f(a) := { v[1]=a; return a; }"),
              "s Indexing an undeclared variable on the lhs");
    session.run("f(a) := { x=a; return x; }\r\ny=f(7);");
    EXPECT_EQ(session.number("x"), 1.5);
    EXPECT_EQ(session.number("y"), 7);
}

// ---- types

TEST_F(StatementForms, ADeclarationTakesTheTypeOfTheRightSide) {
    session.run("a1=3; a2=1i; a3=list(1); a4=L[1]; a5='text';");
    EXPECT_EQ(session.variable("a1").valueType(), DOUBLE_VAL);
    EXPECT_EQ(session.variable("a2").valueType(), COMPLEX_VAL);
    EXPECT_EQ(session.variable("a3").valueType(), LIST_VAL);
    EXPECT_EQ(session.variable("a4").valueType(), DOUBLE_VAL);
    EXPECT_EQ(session.variable("a5").valueType(), DOUBLE_VAL);
    EXPECT_EQ(session.variable("a5").text(), "text");
}

TEST_F(StatementForms, ATypeChangesOnlyBetweenInputs) {
    session.run("x=1i;");
    EXPECT_EQ(session.variable("x").valueType(), COMPLEX_VAL);
    session.run("x=2;");
    EXPECT_EQ(session.variable("x").valueType(), COMPLEX_VAL);
    session.run("x=list(1);");
    session.run("x=2;");
    EXPECT_EQ(session.variable("x").valueType(), DOUBLE_VAL);
    EXPECT_EQ(session.failure("y=x; x=1i;"), "s variable in use, its base-type can't be changed here: x");
    EXPECT_EQ(session.failure("x=x+1i;"), "s incompatible types in assignment");
    EXPECT_EQ(session.failure("while 0; x=1i;"), "s incompatible types in assignment");
    EXPECT_EQ(session.failure("{ x=1i; }"), "s incompatible types in assignment");
    EXPECT_EQ(session.failure("if 0; 1; else x=1i;"), "s incompatible types in assignment");
}

// ---- display

TEST_F(StatementForms, DisplayMarks) {
    EXPECT_TRUE(is<EvalStm>("x+1"));
    EXPECT_TRUE(is<EvalAndDisplayStm>("x+1;;"));
    EXPECT_TRUE(is<EvalAndDisplayStm>("x+1;?"));
    EXPECT_TRUE(is<BreakPointStm>("x+1;!"));
    EXPECT_TRUE(is<AssignAndDisplayStm>("x=1;;"));
    EXPECT_TRUE(is<AssignAndDisplayStm>("v[1]=1;?"));
    EXPECT_TRUE(is<BreakPointStm>("x=1;!"));
}

TEST_F(StatementForms, TypedLinesShowTheirLastStatement) {
    compiled = session.compile("x+1", SourceMode::typed);
    EXPECT_TRUE(dynamic_cast<EvalAndDisplayStm*>(compiled.get()));
    compiled = session.compile("y=x /. x=3", SourceMode::typed);
    auto* block = dynamic_cast<BlockStm*>(compiled.get());
    ASSERT_TRUE(block);
    EXPECT_FALSE(dynamic_cast<AssignAndDisplayStm*>(block->statements().back().get()));
}

// ---- inputs and blocks

TEST_F(StatementForms, AnInputIsNothingAStatementOrABlock) {
    EXPECT_EQ(session.compile(""), nullptr);
    EXPECT_EQ(session.compile("# a remark"), nullptr);
    EXPECT_TRUE(is<BlockStm>("x=1; x=2;"));
    EXPECT_TRUE(is<BlockStm>("{ x=1; x=2; }"));
    EXPECT_TRUE(is<FastAssignStm>("{ x=1; }"));
    EXPECT_TRUE(is<BlockStm>("{ }"));
}

TEST_F(StatementForms, ControlStatements) {
    EXPECT_TRUE(is<IfStm>("if x: x=1;"));
    EXPECT_TRUE(is<UnlessStm>("unless x: x=1;"));
    EXPECT_TRUE(is<IfElseStm>("if x: x=1; else x=2;"));
    EXPECT_TRUE(is<WhileStm>("while x: x=0;"));
    EXPECT_TRUE(is<ForStm>("for i=1:3; x=i;"));
    EXPECT_TRUE(is<ForInStm>("for i in v: x=i;"));
    EXPECT_TRUE(is<ForInStm>("for k,i in v x=i;"));
    EXPECT_TRUE(is<IfStm>("if x { x=1; }"));
    EXPECT_TRUE(is<IfElseStm>("if x\r\n    x=1;\r\nelse\r\n    x=2;\r\n"));
    EXPECT_TRUE(is<BlockStm>("if x\r\n    x=1;\r\nx=2;\r\n"));
    EXPECT_EQ(compileAs<IfStm>("\r\n\r\nif x\r\n    x=1;\r\n")->line(), 3);
}

TEST_F(StatementForms, ABlockStopsAtItsEnd) {
    session.run("s=0;\r\nfor i=1:3\r\n    for j=1:2\r\n        s=s+1;\r\n    s=s+10;\r\ns=s+100;\r\n");
    EXPECT_EQ(session.number("s"), 136);
    session.run("s=0;\r\nfor i=1:3 {\r\ns=s+1;\r\ns=s+1 }\r\ns=s+100;\r\n");
    EXPECT_EQ(session.number("s"), 106);
    session.run("s=0; if 0 { s=1; } else { s=2; } s=s+10;");
    EXPECT_EQ(session.number("s"), 12);
}

TEST_F(StatementForms, BreakAndContinueKnowTheirLoop) {
    session.run("s=0; while 1 { s=s+1; if s>4: break; }");
    EXPECT_EQ(session.number("s"), 5);
    EXPECT_EQ(session.failure("break;"), "u");
    EXPECT_EQ(session.failure("if 1: continue;"), "u");
    EXPECT_TRUE(runState().goesOn());
    EXPECT_EQ(session.failure("break 2;"), "s extraneous characters or missing ; after break statement");
    EXPECT_EQ(session.failure("continue 2;"), "s extraneous characters or missing ; after continue");
}

TEST_F(StatementForms, QueriesAreAnsweredWhileCompilingAndEndTheirLine) {
    session.run("?sin; x=77;\r\nv=[9];\r\n");
    EXPECT_EQ(session.queries.size(), 1u);
    EXPECT_EQ(session.number("x"), 1.5);
    EXPECT_EQ(session.items("v"), std::vector<double>{9});
}

TEST_F(StatementForms, NestingHasALimit) {
    const auto nested = [](int n, const std::string& inner) {
        std::string text;
        for (int i = 0; i < n; ++i) text += "if 1: ";
        return text + inner;
    };
    EXPECT_EQ(session.failure(nested(maxBlockDepth, "x=2;")), "none");
    EXPECT_EQ(session.number("x"), 2);
    EXPECT_EQ(session.failure(nested(maxBlockDepth + 1, "x=3;")), "s blocks nested too deeply");
    EXPECT_EQ(session.failure(nested(100000, "x=3;")), "s blocks nested too deeply");
    std::string script;
    for (int i = 0; i < 300; ++i) script += std::string(4 * static_cast<std::size_t>(i), ' ') + "if 1\r\n";
    EXPECT_EQ(session.failure(script), "s blocks nested too deeply");
}

TEST_F(StatementForms, AFailureLeavesACleanCompiler) {
    InputSource input("x=5; y=nosuch", SourceMode::text);
    StatementCompiler compiler(session.symbols, input);
    EXPECT_THROW(compiler.compileAll(), SyntaxError);
    EXPECT_FALSE(compiler.hasStatement());
    EXPECT_EQ(compiler.depth(), 0);
    EXPECT_EQ(compiler.compileAll(), nullptr);
}

// ---- keywords that yield no statement

TEST_F(StatementForms, DeclarationsAndClearing) {
    EXPECT_EQ(session.compile("const k1=2*3"), nullptr);
    EXPECT_EQ(session.symbols.classify("k1").foundConstant, 6);
    EXPECT_EQ(session.failure("const k1=7"), "s attempt to change value of a const");
    EXPECT_EQ(session.failure("const k2=[1,2]"), "o ]");
    EXPECT_EQ(session.failure("const k2=x"), "s invalid const expression");
    EXPECT_EQ(session.failure("const k2"), "s invalid const expression");
    EXPECT_EQ(session.failure("const x=2"), "s const name clash");
    EXPECT_EQ(session.failure("global x=2"), "s invalid global declaration");
    EXPECT_EQ(session.failure("global x"), "s invalid command at global scope");
    EXPECT_EQ(session.failure("persistent x"), "s invalid command at global scope");
    session.run("clear x v");
    EXPECT_TRUE(session.symbols.classify("x").isUnknown());
    EXPECT_TRUE(session.symbols.classify("v").isUnknown());
    session.run("clear x");
    EXPECT_EQ(session.lines, (std::vector<std::string>{"clear x: no such symbol"}));
    EXPECT_EQ(session.failure("clear sin"), "s attempt to clear built-in function sin");
    EXPECT_EQ(session.failure("if 1: clear m"), "s the 'clear' keyword can only be invoked at zero depth");
    EXPECT_EQ(session.failure("m=1; clear m"), "s variable in use, can't be cleared here: m");
    EXPECT_EQ(session.failure("m=1; clear reset"), "s variable in use, can't be cleared here: m");
}

TEST_F(StatementForms, KeywordsOutOfPlace) {
    EXPECT_EQ(session.failure("else x=1"), "s stray 'else' keyword");
    EXPECT_EQ(session.failure("end"), "s stray 'end' keyword");
    EXPECT_EQ(session.failure("return 1"), "s stray 'return' keyword");
    EXPECT_EQ(session.failure("x=1; use y"), "s 'use' keyword must be at the beginning of a line");
    EXPECT_EQ(session.failure("unless 1: 5; else 6;"), "s 'else' not allowed after unless");
    EXPECT_EQ(session.failure("}"), "s unexpected closing bracket");
    for (const char* word : {"while", "if", "unless", "for", "clear", "const", "global", "persistent", "use",
                             "function", "funcdec"})
        EXPECT_EQ(session.failure(word), "s incomplete statement") << word;
    EXPECT_EQ(session.failure("if x"), "o e");
    EXPECT_EQ(session.failure("while x:"), "o e");
    EXPECT_EQ(session.failure("for i=1:3"), "o e");
}

TEST_F(StatementForms, EndOfAFunction) {
    EXPECT_EQ(session.failure("function y=f(a)\r\ny=a;\r\nend 5\r\n"),
              "s continuation after 'end' is not allowed");
    session.run("function y=f(a)\r\ny=a;\r\nend; x=f(8);\r\n");
    EXPECT_EQ(session.number("x"), 8);
}

TEST_F(StatementForms, Returns) {
    EXPECT_EQ(session.failure("f(a) := { return *a; }"), "s binary operator with no lhs");
    EXPECT_EQ(session.failure("function y*=f(a)\r\nreturn 1i;\r\nend\r\n"),
              "s wrong return type. double was expected");
    session.run("f(a) := { return -a; }\r\nx=f(3);");
    EXPECT_EQ(session.number("x"), -3);
    session.run("function y=g1(a)\r\ny=a;\r\nreturn\r\ny=0;\r\nend\r\nx=g1(4);");
    EXPECT_EQ(session.number("x"), 4);
}

// ---- several targets

TEST_F(StatementForms, MultipleAssignments) {
    EXPECT_TRUE(is<MultiAssignStm>("[a1,a2]=[1,2];"));
    EXPECT_EQ(session.failure("[a1,a2]=5;"), "s invalid or missing rhs");
    EXPECT_EQ(session.failure("[a1,a2]+=[1,2];"), "s invalid multiple assignment syntax");
    EXPECT_EQ(session.failure("(a1)=2;"), "s invalid multiple assignment syntax");
    EXPECT_EQ(session.failure("[a1,a2]=x;"), "s invalid rhs for multiple assignment");
    EXPECT_EQ(session.failure("[a1,pi]=[1,2];"), "s you can't assign to a constant");
    EXPECT_EQ(session.failure("[a1,w]=[1,2];"), "s non-DOUBLE_VAL type not yet allowed in multi-assign");
    EXPECT_EQ(session.failure("[a1,sin]=[1,2];"),
              "s multiple assignment may not declare a variable name matching a built-in function");
    EXPECT_EQ(session.failure("[a1,2]=[1,2];"), "s invalid list of names");
    EXPECT_EQ(session.failure("[a1,a2,a3]=[1,2];"), "r too many output arguments");
    session.run("f(a) := a;");
    EXPECT_EQ(session.failure("[a1,a2]=f(1);"), "s too many output arguments");
}

TEST_F(StatementForms, Loops) {
    EXPECT_EQ(session.failure("for i=1"), "o e");
    EXPECT_EQ(session.failure("for i;"), "s incomplete 'for' statement");
    EXPECT_EQ(session.failure("for 5=1:3; 4;"), "s incomplete 'for' statement");
    EXPECT_EQ(session.failure("for i,j;"), "s incomplete 'for' statement");
    EXPECT_EQ(session.failure("for i,5 in v: 4;"), "s missing name after comma");
    EXPECT_EQ(session.failure("for i,j=1:3; 4;"), "s in the 'for i,x' form you must use 'in' not '='");
    EXPECT_EQ(session.failure("for i in 5: 4;"), "s after 'in' you must put a name");
    EXPECT_EQ(session.failure("for i in nosuch: 4;"), "s incorrect variable name after 'in'");
    EXPECT_EQ(session.failure("for i of v: 4;"), "s 'for' expression missing = or 'in'");
    EXPECT_EQ(session.failure("for pi=1:3; 5;"), "s you can't use a constant as a loop variable");
    EXPECT_EQ(session.failure("for sin=1:3; 5;"), "s you can't use a function name as a loop variable");
}

}  // namespace
}  // namespace vorpen
