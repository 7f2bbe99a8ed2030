// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/event_functions.h"

#include <algorithm>

#include "base/errors.h"
#include "base/output.h"
#include "eval/run_state.h"

namespace vorpen {
namespace {

DoubleValue rowOf(std::span<const double> numbers) {
    DoubleValue row;
    row.setSizeShapeMark(static_cast<std::int64_t>(numbers.size()), 1, FORM_NUMERIC);
    std::ranges::copy(numbers, row.data());
    return row;
}

/// The first number of a result; 0 for one that holds none.
double firstNumber(const Value& result) {
    return result.isEmpty() || result.valueType() > DOUBLE_VAL ? 0 : result.doubleValue();
}

}  // namespace

double EventFunctions::callFunction(std::string_view name, std::array<double, 2> place,
                                    std::span<const double> second) {
    constexpr int mostInputs = 2;
    UserFunc* function = functions_.find(name);
    if (function == nullptr) return 0;
    Require(function->depth() == 0, "recursion not allowed in mouse function");
    Require(function->minArguments() <= mostInputs, "too many parameters for a mouse function");
    Require(function->desc().byReference == 0, "a mouse function takes no parameter by reference");
    DoubleValue where = rowOf(place), what = rowOf(second);
    std::array<FuncArgument, mostInputs> arguments;
    arguments[0].value = &where;
    arguments[1].value = &what;
    const auto inputs = static_cast<std::size_t>(std::min(function->parameterCount(), mostInputs));
    const auto result = newHolder(function->outputType());
    const auto call = [&] {
        const RunPause pause;
        function->call(std::span(arguments).first(inputs), nullptr, *result);
    };
    if (runner_)
        runner_(call);
    else
        call();
    return firstNumber(*result);
}

bool* EventFunctions::flagOf(std::string_view name) const {
    if (name == "onMove") return &functions_.onMoveEnabled;
    if (name == "onDrag") return &functions_.onDragEnabled;
    if (name == "onDragable") return &functions_.onDragableEnabled;
    return nullptr;
}

bool EventFunctions::isEnabled(std::string_view name) const {
    const bool* flag = flagOf(name);
    return flag == nullptr || *flag;
}

void EventFunctions::disable(std::string_view name) {
    if (bool* flag = flagOf(name)) *flag = false;
}

void EventFunctions::print(std::string_view text) { output().print(text, true, PrintMode::markup); }

}  // namespace vorpen
