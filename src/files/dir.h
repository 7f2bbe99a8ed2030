// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The engine's notion of where it is: a current directory of its own and the
// directories that were used lately. Everything that takes the name of a file
// from the user turns it into a full path here, so that `cd` holds for
// scripts and data files alike. The process's own directory never changes.
// Paths are text in the program's encoding; they are translated to UTF-8 at
// the calls of the file system.

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/host.h"
#include "files/path_rules.h"

namespace vorpen {

enum class FileKind { nothing = 0, file = 1, directory = 2 };

class Dir {
public:
    /// Starts in a directory, which becomes the first recent one.
    explicit Dir(std::string_view start = {}) {
        if (!start.empty()) setCurrent(start);
    }

    /// A full path without a separator at its end.
    [[nodiscard]] const std::string& current() const { return current_; }
    [[nodiscard]] const std::set<std::string>& recent() const { return recent_; }

    /// Makes a directory the current one and adds it to the recent ones. The
    /// caller has tested that it exists.
    void setCurrent(std::string_view path);
    void clearRecent();

    /// Called when the current directory or the recent ones have changed, by
    /// what shows them to the user.
    void setObserver(std::function<void()> observer) { observer_ = std::move(observer); }

    /// The full path of a name that the user typed; an empty extension adds
    /// none.
    /// @throws RuntimeError "missing or empty file name", "path name is too
    /// long: " or, when it must exist and does not, "file not found: " with
    /// the name as it was given.
    [[nodiscard]] std::string fullName(std::string_view name, bool mustExist = false,
                                       std::string_view defaultExtension = {}) const;

    [[nodiscard]] static FileKind fileKind(const std::string& path);

    /// The names in a directory that match a pattern, or the name of one file,
    /// sorted. A directory's name has " <DIR>  " behind it.
    /// @throws RuntimeError "file not found" when nothing matches.
    void dir(std::string_view pattern, bool directoriesOnly, std::vector<std::string>& entries) const;

    /// A further place where scripts are looked for, after all others.
    void addScriptDirectory(std::string_view path) { scriptDirectories_.emplace_back(path); }

    /// The full path of a script: in the current directory, then in the recent
    /// ones, then in those of addScriptDirectory. A name without an extension
    /// gets "vrp".
    [[nodiscard]] std::optional<std::string> findScript(std::string_view name) const;

    /// Writes "vorpen_cd.bin" into the directory; a failure is silent.
    void save(const std::string& directory) const;

    /// Reads "vorpen_cd.bin" from the directory. A missing file changes
    /// nothing, a damaged one is told in a message box, and what was read
    /// before the damage counts. A stored current directory that no longer
    /// exists is left aside.
    void load(const std::string& directory, Host& host);

private:
    void changed() const {
        if (observer_) observer_();
    }

    std::string current_;
    std::set<std::string> recent_;
    std::vector<std::string> scriptDirectories_;
    std::function<void()> observer_;
};

}  // namespace vorpen
