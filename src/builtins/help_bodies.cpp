// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/help_bodies.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "base/number_text.h"
#include "builtins/arguments.h"
#include "builtins/engine_context.h"
#include "builtins/helper_programs.h"
#include "console/console_text.h"

namespace vorpen::builtin {
namespace {

/// Each example stands in green on a line of its own, where a click types it.
constexpr std::string_view guide =
    "This is {*Vorpen}. For an introduction see online at\n"
    "https://vorpen.example/introduction\n"
    "\n"
    "This version is young: names and results may still change from one version\n"
    "to the next, so keep copies of the scripts and data that you rely on.\n"
    "\n"
    "Type an expression and see its value. Commas put several into one row, names\n"
    "that stand side by side multiply, and a result with a simple closed form\n"
    "shows it. Click on a green line to type it:\n"
    "\n"
    "{g pi ^ 2 / 4, 5 / 7 + 2 / 3, hbar}\n"
    "\n"
    "A semicolon ends a statement without showing it, and the last answer is\n"
    "called ans:\n"
    "\n"
    "{g r=3; A = pi r^2} \n"
    "{g sqrt(ans)}\n"
    "\n"
    "Square brackets make arrays, and functions work on every element. A function\n"
    "of your own needs one line:\n"
    "\n"
    "{g x = 1:5; x^2 + 1}\n"
    "{g f(t) := exp(-t) cos(3t)}\n"
    "\n"
    "A function can be plotted as it is:\n"
    "\n"
    "{g plot(sinc, -50, 50)} \n"
    "\n"
    "Keep what is longer in a script, a text file with the ending .vrp, and run\n"
    "it with use [name], where [name] is the file's name without the ending. What\n"
    "ends in ;; is shown while a script runs, and indented lines form a block.\n"
    "\n"
    "{g ?}          what you can ask\n"
    "{g ?plot}      about one name, here plot; {g ?\?plot} tells more\n"
    "{g ?func s}    the functions whose names begin with s\n";

std::string textOf(const Value& v) {
    Require(v.isNumericKind() && v.isString(), "the name and the key must be strings", "property");
    return v.text();
}

/// A further part of a query: a number, or a word that stands for one.
std::string detailOf(const Value& v) {
    if (v.isNumericKind() && v.isString()) return v.text();
    return doubleText(scalarArgument(v), 9);
}

std::string joined(std::string text) {
    std::ranges::replace(text, ' ', '_');
    return text;
}

}  // namespace

double help() {
    console().print(guide, true, PrintMode::markup);
    return 0;
}

void property(std::span<FuncArgument> arguments, ExtraOutputs, Value& out) {
    const std::string name = joined(textOf(argumentValue(arguments[0])));
    const std::string key = joined(textOf(argumentValue(arguments[1])));
    std::string query = name + "_" + key;
    if (arguments.size() > 2)
        query += "_" + joined(detailOf(argumentValue(arguments[2])));
    else if (key == "formula")
        query = "formula " + name;
    lookupProperty(engineContext().surroundings(), query, doubleResult(out, "property"));
}

}  // namespace vorpen::builtin
