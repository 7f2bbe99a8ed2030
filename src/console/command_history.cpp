// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/command_history.h"

#include <algorithm>
#include <cstdint>
#include <fstream>

#include "base/counted_string.h"
#include "base/encoding.h"
#include "base/little_endian.h"
#include "base/replace_file.h"

namespace vorpen {
namespace {

std::string historyFile(const std::string& directory) { return toUtf8(directory + "/vorpen_comm.bin"); }

/// A line that is too long to be read back takes its place as an empty one, so
/// that the lines behind it are found.
std::string_view storedText(const std::string& line) {
    return line.size() <= static_cast<std::size_t>(storedLengthLimit) ? std::string_view(line)
                                                                      : std::string_view();
}

}  // namespace

void CommandHistory::add(std::string_view line) {
    if (line == entries_[lastAddedIndex_]) return;
    if (writeIndex_ >= size()) {
        lastAddedIndex_ = size();
        entries_.emplace_back(line);
        writeIndex_ = size() % capacity;
    } else {
        entries_[writeIndex_] = line;
        lastAddedIndex_ = writeIndex_;
        writeIndex_ = (writeIndex_ + 1) % capacity;
    }
    readIndex_ = writeIndex_;
}

void CommandHistory::beginSearch(std::string_view prefix) {
    readIndex_ = writeIndex_;
    searchPrefix_ = prefix;
}

const std::string& CommandHistory::previous() {
    for (int step = 0; step < capacity; ++step) {
        readIndex_ = readIndex_ > 0 ? readIndex_ - 1 : size() - 1;
        if (isFound(readIndex_)) return entries_[readIndex_];
    }
    return blank_;
}

const std::string& CommandHistory::next() {
    int slot = readIndex_;
    for (int step = 0; step < capacity; ++step) {
        slot = slot + 1 < size() ? slot + 1 : 0;
        if (slot == writeIndex_) return blank_;
        if (isFound(slot)) {
            readIndex_ = slot;
            return entries_[slot];
        }
    }
    return blank_;
}

void CommandHistory::saveHistory(const std::string& directory) const {
    const int count = std::min(size(), storedEntries);
    const int first = size() < storedEntries ? 0 : (readIndex_ - storedEntries + size()) % size();
    const auto write = [&](std::ostream& out) {
        writeLittleEndian(out, std::int32_t{count});
        for (int i = 0; i < count; ++i) writeCountedString(out, storedText(entries_[(first + i) % size()]));
    };
    static_cast<void>(replaceFile(historyFile(directory), write, Durability::synced));
}

void CommandHistory::loadHistory(const std::string& directory) {
    std::ifstream in(historyFile(directory), std::ios::binary);
    std::int32_t count = 0;
    if (!in || !readLittleEndian(in, count)) return;
    for (std::int32_t i = 0; i < count; ++i) {
        const auto line = readCountedString(in);
        if (!line) break;
        add(*line);
    }
    readIndex_ = count >= 0 && count <= size() ? count : size();
}

}  // namespace vorpen
