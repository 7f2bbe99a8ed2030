// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the tests of built-in functions share: making arguments, calling
// bodies, and describing what came out as one comparable text.

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "base/errors.h"
#include "base/number_text.h"
#include "base/output.h"
#include "builtins/engine_context.h"
#include "eval/function_types.h"
#include "test_host.h"
#include "values/list_value.h"

namespace vorpen::testing {

/// A matrix from its elements column after column.
inline DoubleValue matrix(int rows, const std::vector<double>& items, int mark = 0) {
    DoubleValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), rows, mark);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

inline DoubleValue row(const std::vector<double>& items, int mark = 0) { return matrix(1, items, mark); }

inline DoubleValue column(const std::vector<double>& items) { return matrix(static_cast<int>(items.size()), items); }

inline DoubleValue empty() { return {}; }

/// A string in doubles, as a string argument arrives.
inline DoubleValue text(std::string_view s) {
    DoubleValue v;
    v.assignString(s);
    return v;
}

inline IntValue integers(const std::vector<int>& items) {
    IntValue v;
    v.setSizeShapeMark(static_cast<std::int64_t>(items.size()), 1, 0);
    std::copy(items.begin(), items.end(), v.data());
    return v;
}

inline ListValue listOf(const std::vector<const Value*>& items) {
    ListValue list;
    list.setSizeShapeMark(static_cast<std::int64_t>(items.size()), items.empty() ? 0 : 1, FORM_TEXT);
    for (std::size_t i = 0; i < items.size(); ++i) list.data()[i].set(newValueCopy(*items[i]));
    return list;
}

/// Elements row by row: "1 2; 3 4", a string in quotes, a list in braces, and
/// the mark in front unless it is told by that: "bool: 1 0".
inline std::string described(const Value& v) {
    std::string out;
    if (v.valueType() == LIST_VAL) {
        const auto& list = static_cast<const ListValue&>(v);
        out = list.nrow() == 1 || list.isEmpty() ? "{" : "column {";
        for (int i = 0; i < list.size(); ++i) out += (i ? ", " : "") + described(*list[i].get());
        return out + "}" + (list.form() == FORM_TEXT ? "" : " without form");
    }
    if (v.isString() && v.nrow() <= 1) return "'" + v.text() + "'";
    if (v.mark() != 0) out = std::string(formName(v.form())) + ": ";
    if (v.form() == FORM_3D) out += std::to_string(v.planes()) + " planes: ";
    if (v.isEmpty()) return out + "[]";
    for (int r = 0; r < v.nrow(); ++r)
        for (int c = 0; c < v.ncol(); ++c) {
            if (r + c > 0) out += c == 0 ? "; " : " ";
            std::string item;
            v.stringItem(item, c * v.nrow() + r, 9);
            out += item;
        }
    return out;
}

/// What a call that must fail says; "operator x" for an operator failure.
template <class Call>
std::string failure(Call&& call) {
    try {
        call();
    } catch (const RuntimeError& error) {
        return error.message;
    } catch (const OperatorFailure& error) {
        return std::string("operator ") + error.code;
    } catch (const PlainFailure& error) {
        return error.message;
    } catch (const std::bad_alloc&) {
        return "out of memory";
    }
    return "no failure";
}

// ---- calls by the signature of the body; the result, or the failure

inline std::string called(VectorToDoubleBody body, const Value& in) {
    DoubleValue out;
    out.assignString("what the workspace held before");
    body(in, out);
    if (in.valueType() == DOUBLE_VAL) {
        // A body may be asked to write over its argument.
        DoubleValue same = asDouble(in);
        body(same, same);
        if (described(same) != described(out)) return "differs in place: " + described(same);
    }
    return described(out);
}

inline std::string called(VectorToIntBody body, const Value& in) {
    IntValue out;
    out.assignString("what the workspace held before");
    body(in, out);
    return described(out);
}

inline std::string called(TwoArgBody body, const Value& first, const DoubleValue* second = nullptr) {
    DoubleValue out;
    out.assignString("what the workspace held before");
    body(first, second, out);
    if (first.valueType() == DOUBLE_VAL) {
        DoubleValue same = asDouble(first);
        body(same, second, same);
        if (described(same) != described(out)) return "differs in place: " + described(same);
    }
    return described(out);
}

inline std::string called(TwoArgBody body, const Value& first, const DoubleValue& second) {
    return called(body, first, &second);
}

/// Points are delivered in the result, too.
inline std::string called(FunctorBody body, const DoubleValue& parameters, const DoubleValue& points) {
    DoubleValue out;
    out.setSizeShapeMark(points.size(), points.nrow(), 0);
    body(parameters, points, out);
    DoubleValue same = points;
    body(parameters, same, same);
    if (described(same) != described(out)) return "differs in place: " + described(same);
    return described(out);
}

template <class Out>
std::string called(GeneralBody body, const std::vector<Value*>& values) {
    std::vector<FuncArgument> arguments(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) arguments[i].value = values[i];
    Out out;
    body(arguments, nullptr, out);
    return described(out);
}

template <class Body, class... Arguments>
std::string failed(Body body, const Arguments&... arguments) {
    return failure([&] { (void)called(body, arguments...); });
}

template <class Out>
std::string failedGeneral(GeneralBody body, const std::vector<Value*>& values) {
    return failure([&] { (void)called<Out>(body, values); });
}

/// Collects what is printed while it lives.
class RecordedOutput final : public Output {
public:
    RecordedOutput() { setOutput(this); }
    ~RecordedOutput() override { setOutput(nullptr); }
    void print(std::string_view line, bool ownLine, PrintMode) override {
        lines.push_back((ownLine ? "" : "... ") + std::string(line));
    }
    std::vector<std::string> lines;
};

/// An engine with a host and a directory for the bodies that ask for one.
class TestEngine {
public:
    explicit TestEngine(const std::string& directory = "/") : host(directory), paths(directory) {
        engineContext() = {};
        engineContext().host = &host;
        engineContext().paths = &paths;
    }
    ~TestEngine() { engineContext() = {}; }
    TestHost host;
    Dir paths;
};

}  // namespace vorpen::testing
