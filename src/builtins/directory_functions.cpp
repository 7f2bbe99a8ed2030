// SPDX-License-Identifier: GPL-3.0-or-later
#include "builtins/directory_functions.h"

#include <optional>

#include "base/errors.h"

namespace vorpen {
namespace {

/// The mark in front keeps the end of a long path in sight.
std::string shownCurrent(const Dir& paths) { return "{-" + paths.current(); }

std::string trimBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == text.npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

}  // namespace

std::string changeDirectory(Dir& paths, Host& host, std::string_view argument) {
    const std::string wish = trimBlanks(argument);
    if (wish.empty()) return shownCurrent(paths);
    if (wish == "?") {
        if (const std::optional<std::string> chosen = host.chooseFolder("cd ...", paths.current()))
            paths.setCurrent(*chosen);
        return shownCurrent(paths);
    }
    if (wish == "clear") {
        if (host.ask("Vorpen 5a", "The recent path list will be cleared. Are you sure?", false))
            paths.clearRecent();
        return shownCurrent(paths);
    }
    const std::string path = paths.fullName(wish);
    switch (Dir::fileKind(path)) {
        case FileKind::file: raiseRuntimeError("attempt to cd to file " + path, "cd");
        case FileKind::nothing: raiseRuntimeError("can't find directory " + path, "cd");
        case FileKind::directory: paths.setCurrent(wish);
    }
    Require(Dir::fileKind(paths.fullName(".")) == FileKind::directory,
            "something wrong: try using 'clear path' to reset vorpen path", "cd");
    return paths.current();
}

std::vector<std::string> listDirectory(const Dir& paths, std::string_view argument) {
    std::vector<std::string> entries;
    paths.dir(trimBlanks(argument), false, entries);
    return entries;
}

}  // namespace vorpen
