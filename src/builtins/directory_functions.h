// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What `cd` and `dir` answer, apart from how a call reaches them.

#include <string>
#include <string_view>
#include <vector>

#include "base/host.h"
#include "files/dir.h"

namespace vorpen {

/// The text that `cd` answers. The argument is empty (show where we are), "?"
/// (let the user choose), "clear" (forget the recent directories, after a
/// question) or a path.
/// @throws RuntimeError attributed to "cd" when the path is no directory.
[[nodiscard]] std::string changeDirectory(Dir& paths, Host& host, std::string_view argument);

/// The entries that `dir` answers; without an argument those of the current
/// directory.
/// @throws RuntimeError "file not found", "path name is too long: ".
[[nodiscard]] std::vector<std::string> listDirectory(const Dir& paths, std::string_view argument);

}  // namespace vorpen
