// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/language_bodies.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

#include "base/number_text.h"
#include "builtins/arguments.h"
#include "builtins/directory_functions.h"
#include "builtins/engine_context.h"
#include "display/display.h"
#include "eval/run_state.h"

namespace vorpen::builtin {
namespace {

/// The digits of numbers inside a text.
constexpr int textPrecision = 9;

std::string textArgument(const Value& v, std::string_view name) {
    Require(v.isString() && v.isNumericKind(), "argument must be a string", name);
    return v.text();
}

/// The optional text argument of `cd` and `dir`.
std::string pathArgument(std::span<FuncArgument> arguments) {
    if (arguments.empty() || argumentValue(arguments[0]).isEmpty()) return {};
    return textArgument(argumentValue(arguments[0]), {});
}

/// A truth value of its own for each of the two.
Value* truthValue(IntValue& value, int truth) {
    value.assignInt(truth);
    value.setMark(FORM_BOOL);
    return &value;
}

/// One term of a polynomial with its sign.
std::string termText(double coefficient, int power, bool isFirst) {
    std::string text;
    const bool isPlainPower = power > 0 && std::fabs(coefficient) == 1;
    if (isPlainPower)
        text = coefficient < 0 ? "-" : "";
    else
        appendDoubleText(text, coefficient, textPrecision);
    if (!isFirst && !text.starts_with('-')) text.insert(0, "+");
    if (power > 0) text += 'x';
    if (power > 1) text += '^' + std::to_string(power);
    return text;
}

}  // namespace

void makeList(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    ListValue list;
    list.setSizeShapeMark(static_cast<std::int64_t>(arguments.size()), arguments.empty() ? 0 : 1, FORM_TEXT);
    for (std::size_t i = 0; i < arguments.size(); ++i)
        list.data()[i].set(newValueCopy(argumentValue(arguments[i])));
    static_cast<ListValue&>(result).adopt(std::move(list));
}

void display(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    for (const FuncArgument& argument : arguments) Display(argumentValue(argument), true, false, true);
    makeEmpty(out);
}

void assertTrue(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    if (!argumentValue(arguments[0]).allNonZero()) {
        const Value* text = arguments.size() > 1 ? &argumentValue(arguments[1]) : nullptr;
        if (text && text->isString()) raiseUserText(text->text());
        raiseRuntimeError("assertion failed");
    }
    makeEmpty(out);
}

void switchBreakpoints(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    bool on = true;
    if (!arguments.empty()) {
        const Value& wish = argumentValue(arguments[0]);
        Require(wish.size() == 1 && wish.isNumericKind(), "non-scalar argument", "debug");
        on = wish.doubleValue() != 0;
    }
    out.assignInt(std::exchange(engineContext().debugEnabled, on));
}

void fail(const Value& text, const DoubleValue* name, Value&) {
    const std::string message = textArgument(text, "error");
    raiseUserText(name && !name->isEmpty() ? "in " + textArgument(*name, "error") + ": " + message : message);
}

void assignEach(std::span<FuncArgument> arguments, ExtraOutputs extraOutputs, Value& out) {
    const std::size_t targets = 1 + (extraOutputs ? extraOutputs->size() : 0);
    Require(targets <= arguments.size(), "too many output arguments");
    // A value may be a target itself, as in [a,b]=[b,a].
    std::vector<DoubleValue> values(targets);
    for (std::size_t i = 0; i < targets; ++i) values[i].copyFrom(argumentValue(arguments[i]));
    out.assign(values[0]);
    for (std::size_t i = 1; i < targets; ++i) (*extraOutputs)[i - 1]->assign(values[i]);
}

void polynomialText(const Value& v, IntValue& out) {
    DoubleValue scratch;
    const DoubleValue& coefficients = asDoubles(v, scratch);
    std::string text;
    for (int power = 0; power < coefficients.size(); ++power)
        if (coefficients[power] != 0) text += termText(coefficients[power], power, text.empty());
    out.assignString(text.empty() ? "0" : text);
}

void changeDirectory(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const EngineContext& context = engineContext();
    out.assignString(
        vorpen::changeDirectory(context.directories(), context.surroundings(), pathArgument(arguments)));
}

void listDirectory(std::span<FuncArgument> arguments, ExtraOutputs, Value& result) {
    const std::vector<std::string> entries =
        vorpen::listDirectory(engineContext().directories(), pathArgument(arguments));
    const auto count = static_cast<std::int64_t>(entries.size());
    ListValue list;
    list.setSizeShapeMark(count, static_cast<int>(count), FORM_TEXT);
    for (std::int64_t i = 0; i < count; ++i) {
        auto item = std::make_unique<IntValue>();
        item->assignString(entries[i]);
        list.data()[i].set(std::move(item));
    }
    static_cast<ListValue&>(result).adopt(std::move(list));
}

Value* lastAnswer(int) { return &runState().ans(); }

Value* trueValue(int) {
    static IntValue value;
    return truthValue(value, 1);
}

Value* falseValue(int) {
    static IntValue value;
    return truthValue(value, 0);
}

Value* programPath(int flag) {
    static IntValue answer;
    Host& host = engineContext().surroundings();
    answer.assignString(flag == 0 ? host.startDirectory() : host.programDirectory());
    return &answer;
}

Value* timeOfDay(int) {
    static IntValue answer;
    const std::tm now = engineContext().surroundings().localTime();
    shapeResult(answer, 1, 3);
    answer[0] = now.tm_hour;
    answer[1] = now.tm_min;
    answer[2] = now.tm_sec;
    return &answer;
}

Value* dateText(int) {
    static IntValue answer;
    static constexpr std::array days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::tm now = engineContext().surroundings().localTime();
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s %s %2d %04d", days.at(now.tm_wday), months.at(now.tm_mon),
                  now.tm_mday, 1900 + now.tm_year);
    answer.assignString(text.data());
    return &answer;
}

}  // namespace vorpen::builtin
