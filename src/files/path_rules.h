// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How paths are composed, as rules on text alone: no file system is asked.
// Both "/" and "\" are understood in what a user types; what is composed is
// written with the separator given, so that both styles of path can be used,
// and tested, on any system. A path has no separator at its end unless it is
// the root itself.

#include <string>
#include <string_view>

namespace vorpen {

#ifdef _WIN32
inline constexpr char systemSeparator = '\\';
#else
inline constexpr char systemSeparator = '/';
#endif

/// A path must be shorter than this, the length that the oldest of the
/// systems on which path lists are exchanged can hold.
inline constexpr std::size_t pathLengthLimit = 259;

/// True for a name that begins with "/" or "\", or has a colon in second
/// place.
[[nodiscard]] bool isAbsolutePath(std::string_view name);

/// The path with every "/" and "\" written as the separator.
[[nodiscard]] std::string withSeparator(std::string_view path, char separator);

/// The path without separators at its end. A root ("/", "c:\") stays.
[[nodiscard]] std::string withoutTrailingSeparator(std::string_view path, char separator);

/// Directory and name with one separator between them.
[[nodiscard]] std::string joinPath(std::string_view directory, std::string_view name, char separator);

/// Each component that is exactly ".." removes itself and the component before
/// it; at the root it is dropped. Other dots are left alone.
[[nodiscard]] std::string removeParentSteps(std::string_view path, char separator);

/// The directory that holds the file: all before the last separator, the root
/// for a file in the root, and empty for a name without a separator.
[[nodiscard]] std::string directoryOf(std::string_view path, char separator);

/// The name behind the last separator.
[[nodiscard]] std::string_view fileNameOf(std::string_view path);

/// The full path of a name as a user types it, relative to `current`. The
/// extension (may be empty) is added to a name without any ".".
/// @throws RuntimeError for an empty name, for a character of code 0 in it and
/// for a path that is too long.
[[nodiscard]] std::string composeFullName(std::string_view current, std::string_view name,
                                          std::string_view defaultExtension, char separator);

/// True when the pattern describes the whole name: "*" stands for any run of
/// characters, "?" for one, everything else for itself.
[[nodiscard]] bool matchesPattern(std::string_view name, std::string_view pattern);

}  // namespace vorpen
