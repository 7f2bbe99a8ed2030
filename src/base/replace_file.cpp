// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/replace_file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <random>
#include <streambuf>
#include <system_error>
#include <utility>

namespace vorpen {
namespace {

namespace fs = std::filesystem;

/// Removes a file that was not renamed before the scope ended.
class TemporaryFile {
public:
    explicit TemporaryFile(fs::path path) : path_(std::move(path)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::error_code ignored;
        if (!path_.empty()) fs::remove(path_, ignored);
    }
    [[nodiscard]] const fs::path& path() const { return path_; }
    [[nodiscard]] bool renameTo(const fs::path& target) {
        std::error_code failure;
        fs::rename(path_, target, failure);
        if (failure) return false;
        path_.clear();
        return true;
    }

private:
    fs::path path_;
};

constexpr std::string_view temporaryEnding = ".tmp";

/// A name beside the target that two running programs do not share. It has the
/// process in it, so that it is known when nobody will use the file any more.
fs::path temporaryName(const fs::path& target) {
    static std::mt19937_64 generator{std::random_device{}()};
    return target.string() + "." + std::to_string(getpid()) + "-" + std::to_string(generator() % 1'000'000'000u) +
           std::string(temporaryEnding);
}

std::optional<pid_t> numberOf(std::string_view digits) {
    pid_t number = 0;
    const auto [end, fault] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (fault != std::errc() || end != digits.data() + digits.size() || number < 0) return std::nullopt;
    return number;
}

/// The process that a temporary file belongs to, if this is the name of one.
std::optional<pid_t> ownerOf(std::string_view name) {
    if (!name.ends_with(temporaryEnding)) return std::nullopt;
    name.remove_suffix(temporaryEnding.size());
    name.remove_prefix(std::min(name.rfind('.') + 1, name.size()));
    const std::size_t dash = name.find('-');
    if (dash == name.npos || !numberOf(name.substr(dash + 1))) return std::nullopt;
    return numberOf(name.substr(0, dash));
}

/// Whether nobody holds the file: not another machine either, which has other
/// processes of the same numbers.
bool isUnlocked(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) return false;
    const bool unlocked = flock(file, LOCK_EX | LOCK_NB) == 0;
    close(file);
    return unlocked;
}

/// A file to write to. What goes to the system begins at a multiple of the
/// page size in the file and in memory: where the one lies a few bytes behind
/// the other, as numbers do behind the head of a file, copying takes up to
/// three times as long on current processors.
class OutputFile final : public std::streambuf {
public:
    explicit OutputFile(const fs::path& path)
        : file_(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)),
          buffer_(static_cast<char*>(std::aligned_alloc(pageBytes, bufferBytes))) {
        if (!buffer_) throw std::bad_alloc();
        // See isUnlocked; where there are no locks, there is none.
        if (file_ >= 0) flock(file_, LOCK_EX | LOCK_NB);
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() override {
        if (file_ >= 0) close(file_);
    }

    [[nodiscard]] bool isOpen() const { return file_ >= 0; }

    /// Passes everything on and closes the file; false when it was not stored.
    [[nodiscard]] bool finish(Durability durability) {
        bool stored = passOn();
        // Where there is no disk, there is nothing to wait for.
        if (stored && durability == Durability::synced)
            stored = fsync(file_) == 0 || errno == EINVAL || errno == EROFS;
        return close(std::exchange(file_, -1)) == 0 && stored;
    }

protected:
    int_type overflow(int_type c) override {
        if (used_ == bufferBytes && !passOn()) return traits_type::eof();
        if (c != traits_type::eof()) buffer_.get()[used_++] = traits_type::to_char_type(c);
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        std::streamsize taken = 0;
        while (taken < count) {
            if (used_ == bufferBytes && !passOn()) break;
            const std::size_t piece = std::min(bufferBytes - used_, static_cast<std::size_t>(count - taken));
            std::memcpy(buffer_.get() + used_, bytes + taken, piece);
            used_ += piece;
            taken += static_cast<std::streamsize>(piece);
        }
        return taken;
    }
    int sync() override { return passOn() ? 0 : -1; }

private:
    static constexpr std::size_t pageBytes = 4096;
    // Stays in the second-level cache, and is long enough that the system
    // takes large pages for the file.
    static constexpr std::size_t bufferBytes = std::size_t{1} << 20;

    bool passOn() {
        const char* next = buffer_.get();
        for (std::size_t rest = std::exchange(used_, 0); rest > 0 && !failed_;) {
            const ssize_t written = write(file_, next, rest);
            if (written > 0) {
                next += written;
                rest -= static_cast<std::size_t>(written);
            } else if (written == 0 || errno != EINTR) {
                failed_ = true;
            }
        }
        return !failed_;
    }

    struct Free {
        void operator()(char* block) const { std::free(block); }
    };
    int file_;
    std::unique_ptr<char, Free> buffer_;
    std::size_t used_ = 0;
    bool failed_ = false;
};

/// False when not all could be stored.
bool writeAll(OutputFile& file, const std::function<void(std::ostream&)>& write, Durability durability) {
    std::ostream stream(&file);
    write(stream);
    return stream.good() && file.finish(durability);
}

}  // namespace

bool replaceFile(const std::string& path, const std::function<void(std::ostream&)>& write,
                 Durability durability) {
    std::error_code failure;
    fs::path target(path);
    if (fs::is_symlink(target, failure)) {
        const fs::path behind = fs::canonical(target, failure);
        if (!failure) target = behind;
    }
    const fs::file_status old = fs::status(target, failure);
    if (fs::exists(old) && !fs::is_regular_file(old)) {
        OutputFile device(target);
        return device.isOpen() && writeAll(device, write, Durability::ofProgram);
    }
    TemporaryFile temporary(temporaryName(target));
    OutputFile file(temporary.path());
    if (!file.isOpen() || !writeAll(file, write, durability)) return false;
    if (fs::exists(old)) fs::permissions(temporary.path(), old.permissions(), failure);
    return temporary.renameTo(target);
}

void removeAbandonedTemporaries(const std::string& directory, std::string_view nameStart) {
    std::error_code failure;
    for (auto entry = fs::directory_iterator(directory, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        if (!name.starts_with(nameStart)) continue;
        const auto owner = ownerOf(name);
        if (!owner || *owner == 0 || kill(*owner, 0) == 0 || errno != ESRCH) continue;
        std::error_code ignored;
        if (entry->is_regular_file(ignored) && !entry->is_symlink(ignored) && isUnlocked(entry->path()))
            fs::remove(entry->path(), ignored);
    }
}

}  // namespace vorpen
