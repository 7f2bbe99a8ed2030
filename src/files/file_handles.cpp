// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/file_handles.h"

#include <sys/stat.h>

#include <algorithm>
#include <csignal>

#include "base/encoding.h"
#include "base/errors.h"

namespace vorpen {
namespace {

bool holds(std::string_view text, char letter) { return text.find(letter) != text.npos; }

/// Children of the program do not inherit the file.
std::string streamMode(const OpenMode& mode) {
    std::string text = mode.append ? "a" : mode.write ? "w" : "r";
    if (mode.binary) text += 'b';
    return text + 'e';
}

/// A pipe that nobody reads any more is a failed write and not the end of the
/// program.
class BrokenPipeIsNoEnd {
public:
    explicit BrokenPipeIsNoEnd(bool matters) : before_(matters ? std::signal(SIGPIPE, SIG_IGN) : SIG_ERR) {}
    BrokenPipeIsNoEnd(const BrokenPipeIsNoEnd&) = delete;
    BrokenPipeIsNoEnd& operator=(const BrokenPipeIsNoEnd&) = delete;
    ~BrokenPipeIsNoEnd() {
        if (before_ != SIG_ERR) std::signal(SIGPIPE, before_);
    }

private:
    void (*before_)(int);
};

}  // namespace

OpenMode OpenMode::parse(std::string_view text) {
    OpenMode mode;
    const std::size_t point = text.find('.');
    if (point != text.npos) mode.extension = text.substr(point + 1);
    const std::string_view letters = text.substr(0, point);
    mode.append = holds(letters, 'a');
    mode.write = mode.append || holds(letters, 'w');
    mode.binary = holds(letters, 'b');
    mode.failureIsError = holds(letters, '!');
    mode.failureIsQuiet = holds(letters, 'q');
    mode.readsAndWrites = mode.write && holds(letters, 'r');
    return mode;
}

int FileHandles::freeSlot() const {
    for (int slot = 1; slot <= mostOpen; ++slot)
        if (!slots_[slot].file) return slot;
    raiseRuntimeError("max number of files already open", "fopen");
}

bool FileHandles::open(int slot, const std::string& path, const OpenMode& mode) {
    Slot& place = slots_[slot];
    place.file.reset(std::fopen(toUtf8(path).c_str(), streamMode(mode).c_str()));
    struct stat facts {};
    const bool known = place.file && fstat(fileno(place.file.get()), &facts) == 0;
    // A directory can be opened for reading, but there is nothing in it to read.
    if (!known || S_ISDIR(facts.st_mode)) place.file.reset();
    place.binary = mode.binary;
    place.write = mode.write;
    place.isPipe = !S_ISREG(facts.st_mode);
    if (place.file || (mode.write && !mode.append)) fileCount_ = std::max(fileCount_, slot + 1);
    return place.file != nullptr;
}

bool FileHandles::closes(Slot& slot) {
    const BrokenPipeIsNoEnd guard(slot.isPipe);
    const bool writtenBefore = !std::ferror(slot.file.get()) || !slot.write;
    return (std::fclose(slot.file.release()) == 0 || !slot.write) && writtenBefore;
}

void FileHandles::close(int id) {
    bool stored = true;
    if (id > 0) {
        stored = closes(checked(id));
        if (id == fileCount_ - 1) --fileCount_;
    } else {
        for (Slot& slot : slots_)
            if (slot.file) stored = closes(slot) && stored;
        fileCount_ = 1;
    }
    Require(stored, "the file could not be written in full", "fclose");
}

bool FileHandles::atEnd(int id) { return std::feof(checked(id).file.get()) != 0; }

void FileHandles::readBytes(int id, std::int64_t count,
                            const std::function<void(std::span<const char>)>& take) {
    std::FILE* file = readable(id).file.get();
    std::array<char, 1 << 14> piece;
    while (count > 0 && !std::feof(file)) {
        const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(count, piece.size()));
        const std::size_t got = std::fread(piece.data(), 1, wanted, file);
        take(std::span(piece).first(got));
        count -= static_cast<std::int64_t>(got);
        if (got < wanted) return;
    }
}

std::optional<std::string> FileHandles::readLine(int id) {
    std::FILE* file = readable(id).file.get();
    if (std::feof(file)) return std::nullopt;
    std::string line;
    int c;
    while ((c = getc_unlocked(file)) != EOF && c != '\n') {
        line += static_cast<char>(c);
        Require(line.size() < longestLine, "line too long", "fread");
    }
    if (c == EOF && line.empty()) return std::nullopt;
    if (c == '\n' && line.ends_with('\r')) line.pop_back();
    return line;
}

std::size_t FileHandles::write(int id, std::string_view bytes) {
    Slot& slot = writable(id);
    const BrokenPipeIsNoEnd guard(slot.isPipe);
    return std::fwrite(bytes.data(), 1, bytes.size(), slot.file.get());
}

void FileHandles::flush() {
    for (Slot& slot : slots_) {
        if (!slot.file || !slot.write) continue;
        const BrokenPipeIsNoEnd guard(slot.isPipe);
        std::fflush(slot.file.get());
    }
}

FileHandles::Slot& FileHandles::checked(int id) {
    Require(id >= 1 && id < fileCount_, "illegal file id");
    Require(slots_[id].file != nullptr, "file not open");
    return slots_[id];
}

FileHandles::Slot& FileHandles::readable(int id) {
    Slot& slot = checked(id);
    Require(!slot.write, "can't read from output file", "fread");
    return slot;
}

FileHandles::Slot& FileHandles::writable(int id) {
    Slot& slot = checked(id);
    Require(slot.write, "can't write to input file", "fwrite");
    return slot;
}

FileHandles& fileHandles() {
    static FileHandles handles;
    return handles;
}

}  // namespace vorpen
