// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A symbol table and a parser without an engine, for tests that look at the
// tree that a text compiles to.

#include <string>
#include <typeinfo>
#include <variant>

#include "base/errors.h"
#include "eval/elements.h"
#include "eval/user_func.h"
#include "frontend/input.h"
#include "frontend/parser.h"
#include "frontend/scanner.h"
#include "frontend/symbol_table.h"

namespace vorpen {

class ParseSession {
public:
    ParseSession() : symbols(functions), parser(symbols) {}

    static TokenList scan(const std::string& text) {
        InputSource input(text, SourceMode::typed);
        return scanLine(text, input).tokens;
    }

    EvaluatablePtr parse(const std::string& text) {
        TokenList tokens = scan(text);
        return parser.parseExpression(tokens);
    }
    EvaluatablePtr parseAlone(const std::string& text) {
        TokenList tokens = scan(text);
        return parser.parseOperand(tokens);
    }

    /// What the text evaluates to: the elements, row by row, with "; " between
    /// rows.
    std::string value(const std::string& text) { return show(*parse(text)); }
    static std::string show(Evaluatable& element) {
        Workspace workspace(element.type());
        const Value& v = *element.pValue(workspace.get());
        if (v.isString()) return v.text();
        std::string out, item;
        for (int row = 0; row < v.nrow(); ++row) {
            if (row > 0) out += "; ";
            for (int column = 0; column < v.ncol(); ++column) {
                if (column > 0) out += ' ';
                v.stringItem(item, row + column * v.nrow(), 9);
                out += item;
            }
        }
        return out;
    }

    /// The message of the failure, with a letter for its kind: s syntax, r run
    /// time, o operator, p plain; "none" when there is none.
    std::string failure(const std::string& text) {
        try {
            show(*parse(text));
            return "none";
        } catch (const SyntaxError& e) {
            return "s " + e.message;
        } catch (const RuntimeError& e) {
            return "r " + e.message;
        } catch (const OperatorFailure& e) {
            return std::string("o ") + e.code;
        } catch (const PlainFailure& e) {
            return "p " + e.message;
        }
    }

    DoubleValue& declare(const std::string& name, std::initializer_list<double> numbers, int nrow = 1) {
        auto& v = asDouble(*symbols.declareVariable(name, DOUBLE_VAL));
        v.setSizeShapeMark(static_cast<std::int64_t>(numbers.size()), nrow, 0);
        int i = 0;
        for (double x : numbers) v[i++] = x;
        return v;
    }
    ListValue& declareList(const std::string& name) {
        return static_cast<ListValue&>(*symbols.declareVariable(name, LIST_VAL));
    }

    /// A quick function of the expression.
    UserFunc& define(const std::string& name, std::vector<std::string> parameters, const std::string& body) {
        FunctionDesc desc;
        desc.name = name;
        desc.paramKinds.assign(parameters.size(), DOUBLE_VAL);
        desc.paramNames = std::move(parameters);
        desc.flags = FUNCTION_QUICK_ELIGIBLE;
        UserFunc& function = functions.declare(desc);
        function.resetFunction(desc);
        symbols.openScope(function);
        auto expression = parseAlone(body);
        Value& target = function.returnTarget();
        symbols.closeScope();
        function.finishFunction(std::make_unique<ReturnStm>(0, std::move(expression), &target));
        return function;
    }

    UserFunctionTable functions;
    SymbolTable symbols;
    Parser parser;
};

}  // namespace vorpen
