// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The lines typed so far, for recall: a ring of the last 60, of which the last
// 30 are kept from one session to the next in the file "vorpen_comm.bin".
//
// Two cursors walk the ring. The write position is the slot of the next line.
// The recall position moves with each recall and comes back to the write
// position with each line that is added; what is saved ends at the recall
// position.

#include <string>
#include <string_view>
#include <vector>

namespace vorpen {

class CommandHistory {
public:
    static constexpr int capacity = 60;
    /// The history file is read by programs that have room for this many.
    static constexpr int storedEntries = 30;

    /// Stores a line, unless it repeats the one added last.
    void add(std::string_view line);

    /// Begins a recall at the newest line; only lines with this prefix are
    /// found.
    void beginSearch(std::string_view prefix);
    /// The next older line that is found, the empty one where there is none.
    [[nodiscard]] const std::string& previous();
    /// The next newer line that is found, the empty one at the newest.
    [[nodiscard]] const std::string& next();

    /// Writes the history file into the directory; a failure is silent.
    void saveHistory(const std::string& directory) const;
    /// Adds the lines of the history file. A missing file changes nothing, and
    /// of a damaged one what was read before the damage counts.
    void loadHistory(const std::string& directory);

    [[nodiscard]] const std::vector<std::string>& entries() const { return entries_; }
    [[nodiscard]] int readIndex() const { return readIndex_; }
    [[nodiscard]] int writeIndex() const { return writeIndex_; }

private:
    [[nodiscard]] int size() const { return static_cast<int>(entries_.size()); }
    [[nodiscard]] bool isFound(int slot) const { return entries_[slot].starts_with(searchPrefix_); }

    // The empty entry of the start stays in the ring like any other.
    std::vector<std::string> entries_ = std::vector<std::string>(1);
    int writeIndex_ = 1;
    int readIndex_ = 1;
    int lastAddedIndex_ = 0;
    std::string searchPrefix_;
    const std::string blank_;
};

}  // namespace vorpen
