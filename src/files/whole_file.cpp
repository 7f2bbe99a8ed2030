// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/encoding.h"

namespace vorpen {
namespace {

/// Of files that do not tell their size, like pipes.
constexpr std::size_t firstRoom = std::size_t{1} << 16;

class OpenFile {
public:
    explicit OpenFile(const std::string& path) : number_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (number_ >= 0) close(number_);
    }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    /// Where to begin; a regular file gets one byte more than it has, so that
    /// its end is seen at once.
    [[nodiscard]] std::size_t expectedSize() const {
        struct stat facts {};
        if (fstat(number_, &facts) != 0 || !S_ISREG(facts.st_mode)) return firstRoom;
        return static_cast<std::size_t>(facts.st_size) + 1;
    }
    /// The number of bytes, 0 at the end of the file, or below 0.
    ssize_t read(char* bytes, std::size_t room) const {
        ssize_t got;
        do got = ::read(number_, bytes, room);
        while (got < 0 && errno == EINTR);
        return got;
    }

private:
    int number_;
};

}  // namespace

std::optional<FileText> readWholeFile(const std::string& path) {
    const OpenFile file(toUtf8(path));
    if (!file.isOpen()) return std::nullopt;
    std::size_t room = file.expectedSize();
    FileText result{std::make_unique_for_overwrite<char[]>(room), 0};
    for (;;) {
        const ssize_t got = file.read(result.bytes.get() + result.size, room - result.size);
        if (got < 0) return std::nullopt;
        if (got == 0) return result;
        result.size += static_cast<std::size_t>(got);
        if (result.size < room) continue;
        auto larger = std::make_unique_for_overwrite<char[]>(2 * room);
        std::memcpy(larger.get(), result.bytes.get(), result.size);
        result.bytes = std::move(larger);
        room *= 2;
    }
}

}  // namespace vorpen
