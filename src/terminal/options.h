// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The command line of the terminal program as a record.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

struct Options {
    std::vector<std::string> lines;     ///< the texts of -e, in order
    std::optional<std::string> script;  ///< run after the lines
    std::optional<std::string> home;    ///< the program's directory
    std::optional<bool> session;        ///< unset: only at a prompt on a terminal
    bool echo = false;
    bool markup = false;
    bool version = false;
    bool help = false;
    std::string fault;  ///< what is wrong with the command line; empty when all is well
};

/// Reads the arguments behind the program's name. With a fault the other
/// fields are of no use.
[[nodiscard]] Options parseOptions(const std::vector<std::string_view>& arguments);

/// What --help prints.
extern const std::string_view helpText;

}  // namespace vorpen
