// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How a file that holds a user's work is written: into a temporary file in the
// same directory, which takes the place of the old file by a rename once it is
// complete. Whatever goes wrong on the way (a full disk, a crash), the old file
// stays as it was.

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

namespace vorpen {

enum class Durability {
    ofProgram,  ///< holds when the program ends in whatever way
    synced,     ///< holds when the machine does, too; costs a wait for the disk
};

/// Calls `write` with a binary stream and puts what it wrote in the place of
/// the file at `path`, in UTF-8. False, with the old file untouched, when the
/// temporary file could not be made, written in full or renamed. An exception
/// out of `write` removes the temporary file and passes on. A path that is a
/// link keeps the link: the file behind it is replaced. An existing file keeps
/// its permissions. A device or a pipe is written to as it is.
[[nodiscard]] bool replaceFile(const std::string& path, const std::function<void(std::ostream&)>& write,
                               Durability durability = Durability::ofProgram);

/// Removes the temporary files of replaceFile that processes left in a directory
/// when they were killed while they wrote, for targets whose names begin so. One
/// whose process lives, or which anybody has open to write it, is left alone.
void removeAbandonedTemporaries(const std::string& directory, std::string_view nameStart);

}  // namespace vorpen
