// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the two helper programs share: where their data files are, how these
// are read, and how an answer is handed back. A helper stands beside its data,
// in one folder or as an installation puts them; a build folder has links in
// the places of an installation.

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vorpen::helper {

/// What a helper ends with.
enum Status { answered = 0, failed = 1, wrongArguments = 2 };

/// The folder of data files of that name; empty when there is none.
[[nodiscard]] std::filesystem::path findDataFolder(const std::string& name);

/// The files with the ending ".txt" in a folder and below, in their order.
[[nodiscard]] std::vector<std::filesystem::path> textFilesIn(const std::filesystem::path& folder);

/// The lines of a file, without line ends; none when it cannot be read.
[[nodiscard]] std::vector<std::string> readLines(const std::filesystem::path& file);

/// Writes the answer into a file of the working directory. False when it could
/// not be written in full.
[[nodiscard]] bool writeAnswer(const std::string& fileName, const std::string& text);

[[nodiscard]] std::string trimmed(std::string_view text);
[[nodiscard]] std::string lowerCase(std::string_view text);
/// The words between blanks.
[[nodiscard]] std::vector<std::string> words(std::string_view text);

/// How many single characters must be changed, added, dropped or exchanged with
/// their neighbour to get from one word to the other (the restricted distance
/// of F. J. Damerau, A technique for computer detection and correction of
/// spelling errors, Commun. ACM 7, 171, 1964).
[[nodiscard]] int spellingDistance(std::string_view a, std::string_view b);

}  // namespace vorpen::helper
