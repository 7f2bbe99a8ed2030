// SPDX-License-Identifier: GPL-3.0-or-later
// Assignments. Their class follows from the operator, the index and the types
// of both sides; the two tables of forms are the functions makeWhole and
// makeIndexed.

#include <algorithm>

#include "eval/evaluation_statements.h"
#include "eval/indexed_assignment.h"
#include "eval/user_func.h"
#include "frontend/function_declaration.h"
#include "frontend/parser.h"
#include "frontend/statement_compiler.h"
#include "frontend/symbol_table.h"

namespace vorpen {

/// An assignment on its way to a statement.
struct StatementCompiler::Assignment {
    std::string name;
    Value* variable = nullptr;
    bool indexed = false;
    ParsedIndex index;
    char op = '=';
    DisplayMark display;
    EvaluatablePtr rhs;  ///< null for an erasure
    int line = 0;

    [[nodiscard]] bool isErasure() const { return !rhs; }
    [[nodiscard]] bool isPlain() const { return op == '=' && !indexed; }
    [[nodiscard]] bool grows() const { return op == 'C' || op == 'S'; }
};

namespace {

/// The code of `+=`, `-=`, `*=` or `/=`.
int arithmeticCode(char op) {
    switch (op) {
        case 'P': return OP_PLUS;
        case 'M': return OP_MINUS;
        case 'T': return OP_TIMES;
        case 'D': return OP_DIVIDE;
        default: return OP_END;
    }
}

bool isArithmetic(char op) { return arithmeticCode(op) != OP_END; }

bool isSequence(const EvaluatablePtr& index) { return index->elementKind() == ElementKind::sequence; }

/// The forms that a variable of a kind does not have, whatever is assigned.
void refuseWhole(int variableType, char op) {
    if (variableType == LIST_VAL && op != '=' && op != 'C' && op != 'S')
        failToCompile("illegal operator-assignment for a list");
    if (variableType == COMPLEX_VAL && op != '=') failToCompile("not yet implemented for complex type");
    if (variableType <= DOUBLE_VAL && op != '=' && op != 'C' && op != 'S' && !isArithmetic(op))
        failToCompile("illegal operator with assignment");
}

void refuseIndexed(int variableType, char op, const std::vector<EvaluatablePtr>& indices) {
    if (variableType == LIST_VAL) {
        if (op != '=') failToCompile("indexed op-assign to list not yet implemented");
        return;
    }
    if (variableType != DOUBLE_VAL) failToCompile("indexed assignment to non-double not yet implemented");
    if (op != '=' && !isArithmetic(op)) failToCompile("this op-assign not allowed for an indexed lhs");
    if (indices.size() == 1 && isSequence(indices.front()) && op != '=')
        failToCompile("op-assign with sequence lhs is not implemented");
}

/// The target may be computed into while the right side is evaluated when
/// nothing on it reads the target, by name or through code of the user.
bool allowsFastAssignment(const Evaluatable& rhs, const Value* variable) {
    return !rhs.uses(variable) && rhs.isPure();
}

bool mayKeepResult(const Evaluatable& rhs) {
    return rhs.elementKind() == ElementKind::generalFunction &&
           static_cast<const GeneralFuncElement&>(rhs).mayKeepResult();
}

StatementPtr makeArithmetic(int line, DoubleValue* x, char op, EvaluatablePtr rhs) {
    const int code = arithmeticCode(op);
    if (rhs->type() == INTEGER_VAL) return std::make_unique<OpAssignIntStm>(line, x, std::move(rhs), code);
    switch (code) {
        case OP_PLUS: return std::make_unique<AssignPlusDStm>(line, x, std::move(rhs));
        case OP_MINUS: return std::make_unique<AssignMinusDStm>(line, x, std::move(rhs));
        case OP_TIMES: return std::make_unique<AssignTimesDStm>(line, x, std::move(rhs));
        default: return std::make_unique<AssignDivideDStm>(line, x, std::move(rhs));
    }
}

StatementPtr makeWhole(int line, Value* variable, char op, EvaluatablePtr rhs) {
    const bool grows = op == 'C' || op == 'S';
    if (variable->valueType() == LIST_VAL) {
        auto* list = static_cast<ListValue*>(variable);
        if (grows) return std::make_unique<GrowListStm>(line, list, std::move(rhs), op);
        return std::make_unique<ListAssignStm>(line, list, std::move(rhs));
    }
    if (variable->valueType() == COMPLEX_VAL)
        return std::make_unique<ComplexAssignStm>(line, &asComplex(*variable), std::move(rhs));
    if (op == '=' && rhs->type() == UNKNOWN_VAL)
        return std::make_unique<CheckedAssignStm>(line, variable, std::move(rhs));
    auto* x = &asDouble(*variable);
    if (grows) return std::make_unique<GrowAssignDStm>(line, x, std::move(rhs), op);
    if (op != '=') return makeArithmetic(line, x, op, std::move(rhs));
    if (allowsFastAssignment(*rhs, x)) return std::make_unique<FastAssignStm>(line, x, std::move(rhs));
    if (mayKeepResult(*rhs)) return std::make_unique<KeepingAssignStm>(line, x, std::move(rhs));
    return std::make_unique<AssignStm>(line, x, std::move(rhs));
}

StatementPtr makeIndexed(int line, Value* variable, char op, ParsedIndex index, EvaluatablePtr rhs) {
    auto& indices = index.indices;
    if (variable->valueType() == LIST_VAL)
        return std::make_unique<IndexedAnyAssignStm>(line, variable, std::move(indices), std::move(rhs));
    auto* x = &asDouble(*variable);
    if (indices.size() == 2)
        return std::make_unique<IndexedAssignStm>(line, x, std::move(indices[0]), std::move(indices[1]),
                                                  std::move(rhs), op);
    if (!isSequence(indices.front()))
        return std::make_unique<SingleIndexedAssignStm>(line, x, std::move(indices[0]), index.mode,
                                                        std::move(rhs), op);
    std::unique_ptr<SequenceElement> sequence(static_cast<SequenceElement*>(indices.front().release()));
    return std::make_unique<SingleIndexed_SeqAssignStm>(line, x, std::move(sequence), index.mode,
                                                        std::move(rhs));
}

}  // namespace

// ---- the two sides

Value* StatementCompiler::assignable(const std::string& name) {
    const Symbol symbol = symbols_.classify(name);
    if (symbol.isConstant()) failToCompile("you can't assign to a constant");
    return symbol.foundHere;
}

void StatementCompiler::readLeftSide(Assignment& a, TokenList& tokens, bool indexed) {
    a.name = tokens.front().text;
    a.indexed = indexed;
    a.variable = assignable(a.name);
    std::size_t assignAt = 1;
    if (indexed) {
        if (!a.variable) failToCompile("Indexing an undeclared variable on the lhs");
        assignAt = tokens[2].is(TOK_ASSIGN) ? 2 : 3;
        const std::span<Token> behindName = std::span<Token>(tokens).subspan(1, assignAt - 1);
        a.index = Parser(symbols_).parseIndex(*a.variable, tokens.front().code, behindName);
        if (a.index.consumed == 0) failToCompile("you can't assign to a function call");
        if (a.index.consumed != assignAt - 1) failToCompile("incorrectly formed statement or expression");
    }
    a.op = tokens[assignAt].code;
    a.display = removeDisplay(tokens);
    tokens.erase(tokens.begin(), tokens.begin() + static_cast<std::ptrdiff_t>(assignAt));
}

/// The tokens begin with the assignment.
void StatementCompiler::readRightSide(Assignment& a, TokenList& tokens) {
    if (a.op == 'g') {
        // `x << a b` assigns the property b of a.
        if (tokens.size() >= 3) {
            tokens.front() = Token(TOK_NAME, ' ', "property");
            a.op = '=';
        }
    } else {
        tokens.erase(tokens.begin());
        if (a.op == '=' && tokens.size() == 1 && tokens.front().is(TOK_EMPTY)) {
            if (a.index.indices.size() > 1) failToCompile("invalid erasure (more than one index)");
            return;
        }
    }
    a.rhs = Parser(symbols_).parseOperand(tokens);
}

void StatementCompiler::fitVariable(Assignment& a) {
    if (!a.variable) {
        a.variable = symbols_.declareVariable(a.name, a.rhs ? a.rhs->type() : int{DOUBLE_VAL});
        if (a.isErasure()) return;
    }
    if (a.isErasure()) return;
    const int to = a.variable->valueType(), from = a.rhs->type();
    if (a.indexed)
        refuseIndexed(to, a.op, a.index.indices);
    else
        refuseWhole(to, a.op);
    if (from == UNKNOWN_VAL || (to == LIST_VAL && (a.indexed || a.grows()))) return;
    if (from == to || (from < to && to < LIST_VAL)) return;
    if (!a.isPlain() || depth_ != 0 || a.rhs->uses(a.variable))
        failToCompile("incompatible types in assignment");
    if (isReadHere(a.variable))
        failToCompile("variable in use, its base-type can't be changed here: " + a.name);
    a.variable = symbols_.redeclareVariable(a.name, from);
}

// ---- assignments

StatementPtr StatementCompiler::compileAssignment(bool indexed) {
    Assignment a;
    TokenList tokens = takeTokens();
    readLeftSide(a, tokens, indexed);
    readRightSide(a, tokens);
    fitVariable(a);
    a.line = line();
    StatementPtr statement;
    if (a.isErasure()) {
        EvaluatablePtr index = indexed ? std::move(a.index.indices.front()) : nullptr;
        statement = std::make_unique<ErasureStm>(a.line, a.variable, std::move(index), a.index.mode);
    } else if (indexed) {
        statement = makeIndexed(a.line, a.variable, a.op, std::move(a.index), std::move(a.rhs));
    } else {
        statement = makeWhole(a.line, a.variable, a.op, std::move(a.rhs));
    }
    if (a.display.code == '!') return withBreakPoint(std::move(statement), a.variable);
    if (!a.display.shows()) return statement;
    return std::make_unique<AssignAndDisplayStm>(a.line, std::move(statement), a.variable,
                                                 a.display.code == '?' ? a.name : std::string());
}

Value* StatementCompiler::multipleTarget(const std::string& name) {
    const Symbol symbol = symbols_.classify(name);
    if (symbol.isConstant()) failToCompile("you can't assign to a constant");
    if (symbols_.isReserved(symbol))
        failToCompile("multiple assignment may not declare a variable name matching a built-in function");
    if (!symbol.foundHere) return symbols_.declareVariable(name, DOUBLE_VAL);
    if (symbol.foundHere->valueType() != DOUBLE_VAL)
        failToCompile("non-DOUBLE_VAL type not yet allowed in multi-assign");
    return symbol.foundHere;
}

StatementPtr StatementCompiler::compileMultipleAssignment() {
    TokenList tokens = takeTokens();
    removeDisplay(tokens);
    if (tokens.size() < 3) failToCompile("missing rhs");
    if (!tokens[2].is(TOK_NAME) && !tokens[2].is(TOK_BRACKET, ']')) failToCompile("invalid or missing rhs");
    std::size_t start = 2;
    if (tokens[2].is(TOK_BRACKET)) {
        // The values are the arguments of a call.
        tokens[1] = Token(TOK_NAME, '(', "$multiassign");
        tokens[2].code = ')';
        start = 1;
    }
    EvaluatablePtr call = Parser(symbols_).parseOperand(std::span<Token>(tokens).subspan(start));
    const ElementKind kind = call->elementKind();
    if (kind != ElementKind::generalFunction && kind != ElementKind::userFunction)
        failToCompile("invalid rhs for multiple assignment");
    const std::vector<ListedName> names = nameList(tokens.front().items, false);
    if (kind == ElementKind::userFunction &&
        static_cast<int>(names.size()) > static_cast<UserCallElement&>(*call).function().outputCount())
        failToCompile("too many output arguments");
    if (names.empty()) failToCompile("invalid list of names");
    std::vector<Value*> targets;
    for (const ListedName& listed : names) targets.push_back(multipleTarget(listed.name));
    return std::make_unique<MultiAssignStm>(line(), std::move(targets), std::move(call));
}

}  // namespace vorpen
