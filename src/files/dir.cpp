// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/dir.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "base/counted_string.h"
#include "base/encoding.h"
#include "base/errors.h"
#include "base/little_endian.h"
#include "base/replace_file.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view pathFileName = "vorpen_cd.bin";

/// The path file is read by programs that have room for this many records.
constexpr std::size_t storedPathLimit = 20;

std::string nameFromSystem(const std::string& name) { return isValidUtf8(name) ? fromUtf8(name) : name; }

std::string pathFile(const std::string& directory) {
    return toUtf8(directory + "/" + std::string(pathFileName));
}

/// The names in a directory that match, with their kinds marked.
std::vector<std::string> matchingEntries(const std::string& directory, std::string_view pattern,
                                         bool directoriesOnly) {
    std::error_code failure;
    fs::directory_iterator entry(toUtf8(directory), failure);
    Require(!failure, "file not found");
    std::vector<std::pair<std::string, bool>> found;
    for (; entry != fs::directory_iterator(); entry.increment(failure)) {
        std::string name = nameFromSystem(entry->path().filename().string());
        std::error_code unknownKind;
        const bool isDirectory = entry->is_directory(unknownKind);
        if (matchesPattern(name, pattern) && (isDirectory || !directoriesOnly))
            found.emplace_back(std::move(name), isDirectory);
    }
    Require(!failure, "FindNextFile error in Dir::dir");
    std::sort(found.begin(), found.end());
    std::vector<std::string> entries;
    entries.reserve(found.size());
    for (auto& [name, isDirectory] : found)
        entries.push_back(isDirectory ? name + " <DIR>  " : std::move(name));
    return entries;
}

}  // namespace

void Dir::setCurrent(std::string_view path) {
    current_ = withoutTrailingSeparator(fullName(path), systemSeparator);
    recent_.insert(current_);
    changed();
}

void Dir::clearRecent() {
    recent_.clear();
    changed();
}

std::string Dir::fullName(std::string_view name, bool mustExist, std::string_view defaultExtension) const {
    std::string path = composeFullName(current_, name, defaultExtension, systemSeparator);
    if (mustExist && fileKind(path) == FileKind::nothing)
        raiseRuntimeError("file not found: " + std::string(name));
    return path;
}

FileKind Dir::fileKind(const std::string& path) {
    std::error_code failure;
    const fs::file_status status = fs::status(toUtf8(path), failure);
    if (fs::is_directory(status)) return FileKind::directory;
    return fs::exists(status) ? FileKind::file : FileKind::nothing;
}

void Dir::dir(std::string_view pattern, bool directoriesOnly, std::vector<std::string>& entries) const {
    const std::string path = fullName(pattern.empty() ? "." : pattern);
    const bool wild = path.find_first_of("*?") != path.npos;
    if (!wild && fileKind(path) == FileKind::directory) {
        entries = matchingEntries(path, "*", directoriesOnly);
        return;
    }
    const std::string_view last = fileNameOf(path);
    entries = matchingEntries(directoryOf(path, systemSeparator), last, directoriesOnly);
    // Every directory has itself as an entry that is not listed, so a pattern
    // that describes "." is never without a match.
    Require(!entries.empty() || directoriesOnly || matchesPattern(".", last), "file not found");
}

std::optional<std::string> Dir::findScript(std::string_view name) const {
    if (name.empty()) return std::nullopt;
    std::vector<std::string> names = {std::string(name)};
    if (name.find('.') == name.npos) {
        names = {std::string(name) + ".vrp"};
    } else if (fileNameOf(name).find('.') == std::string_view::npos) {
        names.push_back(std::string(name) + ".vrp");
    }
    const auto lookIn = [&](const std::string& directory) -> std::optional<std::string> {
        for (const std::string& candidate : names) {
            std::string path = composeFullName(directory, candidate, {}, systemSeparator);
            if (fileKind(path) == FileKind::file) return path;
        }
        return std::nullopt;
    };
    if (auto found = lookIn(current_)) return found;
    if (isAbsolutePath(name)) return std::nullopt;
    for (const std::string& directory : recent_)
        if (auto found = lookIn(directory)) return found;
    for (const std::string& directory : scriptDirectories_)
        if (auto found = lookIn(directory)) return found;
    return std::nullopt;
}

void Dir::save(const std::string& directory) const {
    const auto write = [this](std::ostream& out) {
        const std::size_t count = std::min(recent_.size(), storedPathLimit);
        writeLittleEndian(out, static_cast<std::int32_t>(count));
        writeCountedString(out, current_);
        auto path = recent_.begin();
        for (std::size_t i = 0; i < count; ++i) writeCountedString(out, *path++);
    };
    // The path list is a convenience; a program directory that cannot be
    // written must not keep the user from leaving.
    static_cast<void>(replaceFile(pathFile(directory), write, Durability::synced));
}

void Dir::load(const std::string& directory, Host& host) {
    std::ifstream in(pathFile(directory), std::ios::binary);
    if (!in) return;
    std::int32_t count = 0;
    std::optional<std::string> text;
    if (readLittleEndian(in, count)) text = readCountedString(in);
    if (text && isAbsolutePath(*text) && fileKind(*text) == FileKind::directory) {
        current_ = withoutTrailingSeparator(withSeparator(*text, systemSeparator), systemSeparator);
        recent_.insert(current_);  // there may have been no room for its record
    }
    for (std::int32_t i = 0; text && i < count; ++i) {
        text = readCountedString(in);
        if (text && !text->empty()) recent_.insert(*text);
    }
    if (!text) host.messageBox("vorpen startup", "problem loading path list");
    changed();
}

}  // namespace vorpen
