// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/program_directory.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/host.h"

namespace vorpen {
namespace {

constexpr std::string_view systemDirectories[] = {"/usr", "/opt", "/bin", "/sbin", "/lib", "/snap", "/nix"};

bool isBelow(std::string_view path, std::string_view directory) {
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

bool isSystemDirectory(std::string_view path) {
    for (const auto directory : systemDirectories)
        if (isBelow(path, directory)) return true;
    return false;
}

std::string environmentText(const char* name) {
    const char* text = std::getenv(name);
    return text ? text : "";
}

}  // namespace

std::string chooseProgramDirectory(const ProgramPlaces& places) {
    if (places.home) return *places.home;
    if (!places.executableDirectory.empty() && places.executableDirectoryWritable &&
        !isSystemDirectory(places.executableDirectory))
        return places.executableDirectory;
    // A relative directory is no valid setting and is to be ignored (XDG Base
    // directories, version 0.8).
    if (places.userData.starts_with('/')) return places.userData + "/vorpen";
    if (places.userHome.starts_with('/')) return places.userHome + "/.local/share/vorpen";
    return places.startDirectory;
}

std::string makeProgramDirectory(const std::optional<std::string>& home, const std::string& startDirectory) {
    ProgramPlaces places;
    places.home = home;
    places.executableDirectory = executableDirectory();
    places.executableDirectoryWritable = access(places.executableDirectory.c_str(), W_OK) == 0;
    places.userData = environmentText("XDG_DATA_HOME");
    places.userHome = environmentText("HOME");
    places.startDirectory = startDirectory;
    const std::string directory = chooseProgramDirectory(places);
    std::error_code ignored;
    std::filesystem::create_directories(directory, ignored);
    return directory;
}

std::string installedShareDirectory() {
    const std::string directory = executableDirectory();
    return directory.empty() ? std::string() : directory + "/../share/vorpen";
}

}  // namespace vorpen
