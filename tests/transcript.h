// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A transcript is a session on paper: the lines that someone types and what
// the console shows for each. A file holds several of them:
//
//     === name-of-the-case
//     # a remark
//     [file demo.vrp]
//     x=1
//     [end]
//     > 1+2*3
//     7
//
// A line that begins with "> " is typed; the lines below it are what the
// console shows. Blanks are folded and empty lines dropped on both sides
// before they are compared. Some expected lines are patterns:
//
//     *            alone: any lines, none included
//     /regex/      the shown line matches the regular expression as a whole
//     ~ text       numbers in the line are compared to 1e-6 relative
//     ~1e-9 text   the same, with that tolerance
//
// "=== name [markup]" compares the lines with their markup. "[file NAME]" to
// "[end]" is written into the case's own folder before the session starts,
// "[expect file NAME]" to "[end]" is compared with a file that it left behind.

#include <map>
#include <string>
#include <vector>

namespace vorpen {

struct TranscriptStep {
    std::string typed;  ///< in UTF-8
    std::vector<std::string> expected;
};

struct Transcript {
    std::string name;
    bool markup = false;
    std::map<std::string, std::string> files;
    std::map<std::string, std::string> expectedFiles;
    std::vector<TranscriptStep> steps;
};

/// Reads a file of transcripts.
/// @throws std::runtime_error with the file and line of what cannot be read.
std::vector<Transcript> readTranscripts(const std::string& path);

/// Lines with blanks folded and empty lines dropped.
std::vector<std::string> foldLines(const std::vector<std::string>& lines);

/// Whether shown lines are the expected ones. Both are folded here.
bool linesMatch(const std::vector<std::string>& expected, const std::vector<std::string>& shown);

std::vector<std::string> splitLines(const std::string& text);

}  // namespace vorpen
