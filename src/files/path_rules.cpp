// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/path_rules.h"

#include <algorithm>
#include <vector>

#include "base/errors.h"

namespace vorpen {
namespace {

constexpr std::string_view separators = "/\\";

/// How much of a path is its root: "/" is one character, "c:\" three, "c:" two.
std::size_t rootLength(std::string_view path, char separator) {
    const std::size_t drive = path.size() > 1 && path[1] == ':' ? 2 : 0;
    return drive + (path.size() > drive && path[drive] == separator ? 1 : 0);
}

}  // namespace

bool isAbsolutePath(std::string_view name) {
    if (name.empty()) return false;
    return separators.find(name[0]) != separators.npos || (name.size() > 1 && name[1] == ':');
}

std::string withSeparator(std::string_view path, char separator) {
    std::string result(path);
    std::replace_if(
        result.begin(), result.end(), [](char c) { return c == '/' || c == '\\'; }, separator);
    return result;
}

std::string withoutTrailingSeparator(std::string_view path, char separator) {
    const std::size_t root = rootLength(path, separator);
    while (path.size() > root && path.back() == separator) path.remove_suffix(1);
    return std::string(path);
}

std::string joinPath(std::string_view directory, std::string_view name, char separator) {
    std::string result(directory);
    if (result.empty() || result.back() != separator) result += separator;
    return result.append(name);
}

std::string removeParentSteps(std::string_view path, char separator) {
    if (path.find("..") == path.npos) return std::string(path);
    const std::size_t root = rootLength(path, separator);
    std::vector<std::string_view> kept;
    for (std::size_t at = root; at <= path.size();) {
        const std::size_t end = std::min(path.find(separator, at), path.size());
        const std::string_view component = path.substr(at, end - at);
        if (component != "..") {
            kept.push_back(component);
        } else {
            while (!kept.empty() && kept.back().empty()) kept.pop_back();
            if (!kept.empty()) kept.pop_back();
        }
        at = end + 1;
    }
    std::string result(path.substr(0, root));
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (i > 0) result += separator;
        result += kept[i];
    }
    // Steps that used up all components of a drive end at its root.
    if (kept.empty() && !result.empty() && result.back() == ':') result += separator;
    return result;
}

std::string directoryOf(std::string_view path, char separator) {
    const std::size_t last = path.find_last_of(separators);
    if (last == path.npos) return {};
    return std::string(path.substr(0, std::max(last, rootLength(path, separator))));
}

std::string_view fileNameOf(std::string_view path) {
    const std::size_t last = path.find_last_of(separators);
    return last == path.npos ? path : path.substr(last + 1);
}

std::string composeFullName(std::string_view current, std::string_view name,
                            std::string_view defaultExtension, char separator) {
    Require(!name.empty(), "missing or empty file name");
    // The system would take what stands before it for the name.
    Require(name.find('\0') == name.npos, "invalid file name");
    std::string file = withSeparator(name, separator);
    if (!defaultExtension.empty() && file.find('.') == file.npos) file.append(".").append(defaultExtension);
    std::string path = isAbsolutePath(file) ? file
                       : file == "."        ? std::string(current)
                                            : joinPath(current, file, separator);
    path = removeParentSteps(path, separator);
    if (path.size() >= pathLengthLimit) raiseRuntimeError("path name is too long: " + std::string(name));
    return path;
}

bool matchesPattern(std::string_view name, std::string_view pattern) {
    // Only the last "*" has to be tried again with a longer run: what stands
    // before it has matched at its earliest place.
    constexpr std::size_t none = std::string_view::npos;
    std::size_t n = 0, p = 0, star = none, starName = 0;
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            starName = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == name[n])) {
            ++p;
            ++n;
        } else if (star != none) {
            p = star + 1;
            n = ++starName;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == none;
}

}  // namespace vorpen
