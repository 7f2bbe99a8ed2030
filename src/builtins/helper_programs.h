// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The two helper programs: one that knows the help texts and one that knows
// physical properties. A helper is given its arguments on the command line,
// writes its answer into a file of a fixed name in the directory that it is
// started in, the program's own, and ends with status 0.
//
// A helper is a program like any other and may misbehave. It is started
// without a shell, what it writes on its standard streams goes nowhere, and
// its time and the size of its files are limited. Its answer counts only when
// it succeeded; an answer of an earlier run is removed before it starts, and
// no more of a file is read than can be shown.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/host.h"
#include "values/mathmatrix.h"

namespace vorpen {

/// A helper that takes longer is ended: the program waits for it.
inline constexpr double secondsForHelper = 5;

/// The most that a helper may write into a file.
inline constexpr std::int64_t largestHelperFile = 16 * 1024 * 1024;

/// The most of a help text that is shown; a console keeps 350 lines.
inline constexpr std::size_t longestHelpText = 256 * 1024;

/// Runs a helper program with one or two arguments and waits for it. The
/// program's directory is searched first, then the host's directories for
/// helpers. 0 means success; a program that is not there answers -1.
[[nodiscard]] int spawnHelper(Host& host, const std::string& program, const std::string& argument,
                              const std::optional<std::string>& second = std::nullopt);

/// The help text on a name, each line with a line feed in front of it; a note
/// when there is none to be had.
[[nodiscard]] std::string callHelp(Host& host, const std::string& name, bool detailed);

/// Asks for a property: a number, a table of pairs in two columns, or a matrix
/// of characters.
/// @throws RuntimeError "problem with database lookup", "vorpen can't find the
///   database result", or "the database result is too large".
void lookupProperty(Host& host, const std::string& query, DoubleValue& result);

}  // namespace vorpen
