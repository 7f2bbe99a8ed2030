// SPDX-License-Identifier: GPL-3.0-or-later
#include "terminal/options.h"

namespace vorpen {
namespace {

struct Flag {
    std::string_view name;
    void (*set)(Options&);
};

struct OptionWithValue {
    std::string_view name;
    void (*set)(Options&, std::string_view value);
};

// clang-format off
constexpr Flag flags[] = {
    {"--echo",       [](Options& o) { o.echo = true; }},
    {"--markup",     [](Options& o) { o.markup = true; }},
    {"--session",    [](Options& o) { o.session = true; }},
    {"--no-session", [](Options& o) { o.session = false; }},
    {"--version",    [](Options& o) { o.version = true; }},
    {"--help",       [](Options& o) { o.help = true; }},
    {"-h",           [](Options& o) { o.help = true; }},
};

constexpr OptionWithValue optionsWithValue[] = {
    {"-e",     [](Options& o, std::string_view value) { o.lines.emplace_back(value); }},
    {"--home", [](Options& o, std::string_view value) { o.home = value; }},
};
// clang-format on

bool takeFlag(Options& options, std::string_view word) {
    for (const auto& flag : flags)
        if (word == flag.name) {
            flag.set(options);
            return true;
        }
    return false;
}

/// The option whose value stands in the same word (`--home=DIR`) or, with an
/// empty rest, in the next one.
const OptionWithValue* findOptionWithValue(std::string_view word, std::optional<std::string_view>& value) {
    for (const auto& option : optionsWithValue) {
        if (!word.starts_with(option.name)) continue;
        const std::string_view rest = word.substr(option.name.size());
        if (rest.empty()) return &option;
        if (rest[0] == '=') {
            value = rest.substr(1);
            return &option;
        }
    }
    return nullptr;
}

void takeScript(Options& options, std::string_view name) {
    if (options.script) options.fault = "more than one script: '" + std::string(name) + "'";
    options.script = name;
}

}  // namespace

Options parseOptions(const std::vector<std::string_view>& arguments) {
    Options options;
    bool onlyNames = false;
    for (std::size_t i = 0; i < arguments.size() && options.fault.empty(); ++i) {
        const std::string_view word = arguments[i];
        std::optional<std::string_view> value;
        if (onlyNames || word.empty() || word[0] != '-' || word == "-") {
            takeScript(options, word);
        } else if (word == "--") {
            onlyNames = true;
        } else if (takeFlag(options, word)) {
            continue;
        } else if (const auto* option = findOptionWithValue(word, value); !option) {
            options.fault = "unknown option '" + std::string(word) + "'";
        } else if (value) {
            option->set(options, *value);
        } else if (i + 1 < arguments.size()) {
            option->set(options, arguments[++i]);
        } else {
            options.fault = "the option " + std::string(word) + " needs a value";
        }
    }
    return options;
}

const std::string_view helpText =
    "Usage: vorpen-cli [options] [script.vrp]\n"
    "\n"
    "A scientific calculator and small array language. Without a script and -e it\n"
    "reads lines: at a prompt on a terminal, else from standard input.\n"
    "\n"
    "  -e TEXT        run TEXT as one typed line; may be repeated\n"
    "  --echo         show each typed line with its number before its output\n"
    "  --markup       leave the markup in the output\n"
    "  --home DIR     the program's directory: session files, the folder resource,\n"
    "                 helper programs and their results\n"
    "  --session      load the session at the start and save it at the end\n"
    "  --no-session   do neither; a prompt on a terminal does both by default\n"
    "  --version      show the version\n"
    "  --help, -h     show this help\n"
    "\n"
    "Exit status: 0, or 1 when a line failed, or 2 for wrong options.\n";

}  // namespace vorpen
