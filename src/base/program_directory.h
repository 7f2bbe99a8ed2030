// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where the program keeps its own files, and where what came with it lies.

#include <optional>
#include <string>

namespace vorpen {

/// What the choice of the program's directory depends on.
struct ProgramPlaces {
    std::optional<std::string> home;  ///< the directory given on the command line
    std::string executableDirectory;  ///< empty when it is not known
    bool executableDirectoryWritable = false;
    std::string userData;  ///< XDG_DATA_HOME, empty when it is not set
    std::string userHome;  ///< HOME, empty when it is not set
    std::string startDirectory;
};

/// The program's directory: the one given; else that of the executable when
/// it is writable and no part of the system; else the user's data directory.
[[nodiscard]] std::string chooseProgramDirectory(const ProgramPlaces& places);

/// The same for this process, started in a directory. It is made when it does
/// not exist; where it cannot be made, saving will say so.
[[nodiscard]] std::string makeProgramDirectory(const std::optional<std::string>& home,
                                               const std::string& startDirectory);

/// The directory of what came with the program, found from the executable, so
/// that an installed program can be moved and a built one finds what was built
/// with it; empty when it is not known.
[[nodiscard]] std::string installedShareDirectory();

}  // namespace vorpen
