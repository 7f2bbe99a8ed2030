// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <random>
#include <system_error>

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

/// A name beside the target that two running programs do not share.
fs::path temporaryName(const fs::path& target) {
    static std::mt19937_64 generator{std::random_device{}()};
    return target.string() + "." + std::to_string(generator() % 1'000'000'000u) + ".tmp";
}

/// Waits until what was written to a file is on the disk; false when it could
/// not be written there.
bool reachesDisk(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    // Systems of files without a disk have nothing to wait for.
    const bool done = fsync(file) == 0 || errno == EINVAL || errno == EROFS;
    close(file);
    return done;
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
        std::ofstream device(target, std::ios::binary);
        if (device) write(device);
        device.close();
        return static_cast<bool>(device);
    }
    TemporaryFile temporary(temporaryName(target));
    std::ofstream stream(temporary.path(), std::ios::binary | std::ios::trunc);
    if (!stream) return false;
    write(stream);
    stream.close();
    if (!stream) return false;
    if (durability == Durability::synced && !reachesDisk(temporary.path())) return false;
    if (fs::exists(old)) fs::permissions(temporary.path(), old.permissions(), failure);
    return temporary.renameTo(target);
}

}  // namespace vorpen
