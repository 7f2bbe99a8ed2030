// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/replace_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace vorpen {
namespace {

namespace fs = std::filesystem;

class ReplaceFile : public testing::Test {
protected:
    ReplaceFile() {
        std::string name = (fs::temp_directory_path() / "vorpen-replace-XXXXXX").string();
        folder_ = mkdtemp(name.data());
    }
    ~ReplaceFile() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string path(const std::string& name) const { return (folder_ / name).string(); }
    [[nodiscard]] bool has(const std::string& name) const { return fs::exists(folder_ / name); }
    void make(const std::string& name) const { std::ofstream(folder_ / name) << "text"; }

    /// The number of a process that has ended.
    static std::string endedProcess() {
        const pid_t process = fork();
        if (process == 0) _exit(0);
        waitpid(process, nullptr, 0);
        return std::to_string(process);
    }

    fs::path folder_;
};

TEST_F(ReplaceFile, theTemporaryFileTellsWhoseItIs) {
    std::string during;
    ASSERT_TRUE(replaceFile(path("data.bin"), [&](std::ostream&) {
        for (const auto& entry : fs::directory_iterator(folder_)) during = entry.path().filename();
        removeAbandonedTemporaries(folder_.string(), "data");
    }));
    EXPECT_TRUE(during.starts_with("data.bin." + std::to_string(getpid()) + "-")) << during;
    EXPECT_TRUE(has("data.bin"));
    EXPECT_FALSE(has(during));
}

TEST_F(ReplaceFile, whatAKilledProcessLeftIsRemoved) {
    const std::string left = "data.bin." + endedProcess() + "-5.tmp";
    make(left);
    removeAbandonedTemporaries(folder_.string(), "data");
    EXPECT_FALSE(has(left));
}

TEST_F(ReplaceFile, whatAProcessOfAnotherMachineWritesStays) {
    const std::string left = "data.bin." + endedProcess() + "-5.tmp";
    make(left);
    const int file = open(path(left).c_str(), O_WRONLY);
    ASSERT_EQ(flock(file, LOCK_EX), 0);
    removeAbandonedTemporaries(folder_.string(), "data");
    EXPECT_TRUE(has(left));
    close(file);
}

TEST_F(ReplaceFile, filesOfOthersStay) {
    const std::string dead = endedProcess();
    const std::string names[] = {"data.bin", "other.bin." + dead + "-5.tmp", "data.bin." + std::to_string(getppid()) + "-5.tmp",
                                 "data.bin." + dead + ".tmp", "data.bin." + dead + "-x.tmp", "data." + dead + "-5.bin",
                                 "data.bin.0-5.tmp", "data.bin.-1-5.tmp", "data.tmp", "data.bin.99999999999999-5.tmp"};
    for (const auto& name : names) make(name);
    fs::create_directory(folder_ / ("data." + dead + "-6.tmp"));
    fs::create_symlink(path("data.bin"), folder_ / ("data." + dead + "-7.tmp"));
    removeAbandonedTemporaries(folder_.string(), "data");
    for (const auto& name : names) EXPECT_TRUE(has(name)) << name;
    EXPECT_TRUE(has("data." + dead + "-6.tmp"));
    EXPECT_TRUE(has("data." + dead + "-7.tmp"));
}

TEST_F(ReplaceFile, aFolderThatIsNotThereIsNoFault) { removeAbandonedTemporaries(path("nowhere"), "data"); }

}  // namespace
}  // namespace vorpen
