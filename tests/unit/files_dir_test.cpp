// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "base/counted_string.h"
#include "base/errors.h"
#include "base/little_endian.h"
#include "base/replace_file.h"
#include "builtins/directory_functions.h"
#include "files/path_rules.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

class ScriptedHost final : public Host {
public:
    void messageBox(std::string_view title, std::string_view text) override {
        boxes.push_back(std::string(title) + ": " + std::string(text));
    }
    bool ask(std::string_view title, std::string_view text, bool safe) override {
        boxes.push_back(std::string(title) + ": " + std::string(text));
        return answer.value_or(safe);
    }
    std::optional<std::string> chooseFolder(std::string_view title, std::string_view start) override {
        boxes.push_back(std::string(title) + " " + std::string(start));
        return folder;
    }
    std::string programDirectory() override { return {}; }

    std::vector<std::string> boxes;
    std::optional<bool> answer;
    std::optional<std::string> folder;
};

class DirTest : public testing::Test {
protected:
    DirTest() {
        std::string name = fs::temp_directory_path() / "vorpen-dir-XXXXXX";
        folder_ = fs::canonical(mkdtemp(name.data())).string();
        paths_.setCurrent(folder_);
    }
    ~DirTest() override { fs::remove_all(folder_); }

    void file(const std::string& name, const std::string& content = "x") {
        const fs::path path = fs::path(folder_) / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }
    [[nodiscard]] std::string content(const std::string& name) const {
        std::ifstream in(fs::path(folder_) / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::string cd(std::string_view argument) {
        try {
            return changeDirectory(paths_, host_, argument);
        } catch (const RuntimeError& error) {
            return "failure " + error.message;
        }
    }
    std::vector<std::string> list(std::string_view argument) {
        try {
            return listDirectory(paths_, argument);
        } catch (const RuntimeError& error) {
            return {"failure " + error.message};
        }
    }

    std::string folder_;
    Dir paths_;
    ScriptedHost host_;
};

using Names = std::vector<std::string>;

std::string pathFailure(std::string_view current, std::string_view name) {
    try {
        return "no failure: " + composeFullName(current, name, {}, '/');
    } catch (const RuntimeError& error) {
        return error.message;
    }
}

TEST(PathRules, AbsoluteNames) {
    for (const char* name : {"/a", "\\a", "c:a", "c:\\a", "/"}) EXPECT_TRUE(isAbsolutePath(name)) << name;
    for (const char* name : {"a", "a/b", ".", "", "ab:c", ".."}) EXPECT_FALSE(isAbsolutePath(name)) << name;
}

TEST(PathRules, ParentStepsOfBothStyles) {
    const std::pair<const char*, const char*> rows[] = {
        {"/a/b/..", "/a"},
        {"/a/b/../c", "/a/c"},
        {"/a/../..", "/"},
        {"/..", "/"},
        {"/../a", "/a"},
        {"/a/b/c/../../d", "/a/d"},
        {"/a..b", "/a..b"},
        {"/a/...", "/a/..."},
        {"/a/..b/c..", "/a/..b/c.."},
        {"/a//..", "/"},
        {"/a/./b", "/a/./b"},
        {"/a/..", "/"},
        {"a/..", ""},
        {"/", "/"},
    };
    for (const auto& [path, result] : rows) EXPECT_EQ(removeParentSteps(path, '/'), result) << path;
    EXPECT_EQ(removeParentSteps("c:\\a\\b\\..", '\\'), "c:\\a");
    EXPECT_EQ(removeParentSteps("a\\b\\..\\c", '\\'), "a\\c");
    EXPECT_EQ(removeParentSteps("c:\\a\\..\\..", '\\'), "c:\\");
    EXPECT_EQ(removeParentSteps("c:a\\..", '\\'), "c:\\");
    EXPECT_EQ(removeParentSteps("\\a\\b..c\\..", '\\'), "\\a");
}

TEST(PathRules, JoinAndCut) {
    EXPECT_EQ(joinPath("/a", "b", '/'), "/a/b");
    EXPECT_EQ(joinPath("/", "b", '/'), "/b");
    EXPECT_EQ(joinPath("c:\\", "b", '\\'), "c:\\b");
    EXPECT_EQ(withoutTrailingSeparator("/a//", '/'), "/a");
    EXPECT_EQ(withoutTrailingSeparator("/", '/'), "/");
    EXPECT_EQ(withoutTrailingSeparator("c:\\", '\\'), "c:\\");
    EXPECT_EQ(withSeparator("a/b\\c", '\\'), "a\\b\\c");
    EXPECT_EQ(withSeparator("a/b\\c", '/'), "a/b/c");
    EXPECT_EQ(directoryOf("/a/b.vrp", '/'), "/a");
    EXPECT_EQ(directoryOf("/b.vrp", '/'), "/");
    EXPECT_EQ(directoryOf("c:\\b.vrp", '\\'), "c:\\");
    EXPECT_EQ(directoryOf("b.vrp", '/'), "");
    EXPECT_EQ(fileNameOf("/a/b.c"), "b.c");
    EXPECT_EQ(fileNameOf("b"), "b");
}

TEST(PathRules, FullNames) {
    EXPECT_EQ(composeFullName("/a/b", "c", "txt", '/'), "/a/b/c.txt");
    EXPECT_EQ(composeFullName("/a/b", "c.d", "txt", '/'), "/a/b/c.d");
    EXPECT_EQ(composeFullName("/a/b", "dir.new/data", "txt", '/'), "/a/b/dir.new/data");
    EXPECT_EQ(composeFullName("/a/b", "../t", "txt", '/'), "/a/t");
    EXPECT_EQ(composeFullName("/a/b", "c", "", '/'), "/a/b/c");
    EXPECT_EQ(composeFullName("/a/b", ".", "", '/'), "/a/b");
    EXPECT_EQ(composeFullName("/a/b", "..", "", '/'), "/a");
    EXPECT_EQ(composeFullName("/a/b", "/x/y", "", '/'), "/x/y");
    EXPECT_EQ(composeFullName("/", "x", "", '/'), "/x");
    EXPECT_EQ(composeFullName("/a", "sub\\out", "txt", '/'), "/a/sub/out.txt");
    EXPECT_EQ(composeFullName("/a", "c:x", "txt", '/'), "c:x.txt");
    EXPECT_EQ(composeFullName("c:\\a\\b", "..", "", '\\'), "c:\\a");
    EXPECT_EQ(composeFullName("c:\\a", "b/c", "txt", '\\'), "c:\\a\\b\\c.txt");
    EXPECT_EQ(composeFullName("c:\\a", "d:\\x", "", '\\'), "d:\\x");
}

TEST(PathRules, FullNamesThatFail) {
    EXPECT_EQ(pathFailure("/a", ""), "missing or empty file name");
    const std::string longest(257, 'n');
    EXPECT_EQ(composeFullName("/", longest, {}, '/').size(), 258u);
    EXPECT_EQ(pathFailure("/", longest + "n"), "path name is too long: " + longest + "n");
}

TEST(PathRules, Patterns) {
    const std::pair<const char*, const char*> matches[] = {
        {"a.txt", "*.txt"}, {"a.txt", "*"},         {"a.txt", "?.txt"},
        {"a.txt", "a*t"},   {"abc", "a*b*c"},       {"", ""},
        {"", "*"},          {"a", "*a*"},           {"aXbXc", "a*X?"},
        {"a[1]", "a[1]"},   {"a.txt.txt", "*.txt"},
    };
    for (const auto& [name, pattern] : matches) EXPECT_TRUE(matchesPattern(name, pattern)) << name << pattern;
    const std::pair<const char*, const char*> others[] = {
        {"a.txt", "*.dat"}, {"a.txt", "?"}, {"A", "a"}, {"", "?"}, {"ab", "a"}, {"a", "ab"}, {"abd", "a*c"},
    };
    for (const auto& [name, pattern] : others) EXPECT_FALSE(matchesPattern(name, pattern)) << name << pattern;
    EXPECT_FALSE(matchesPattern(std::string(100000, 'a'), "*a*a*a*a*a*b"));
}

TEST_F(DirTest, CurrentAndRecent) {
    EXPECT_EQ(paths_.current(), folder_);
    fs::create_directories(folder_ + "/sub/deep");
    int changes = 0;
    paths_.setObserver([&] { ++changes; });
    paths_.setCurrent("sub/");
    EXPECT_EQ(paths_.current(), folder_ + "/sub");
    paths_.setCurrent("deep");
    paths_.setCurrent("../..");
    EXPECT_EQ(paths_.current(), folder_);
    EXPECT_EQ(paths_.recent(), (std::set<std::string>{folder_, folder_ + "/sub", folder_ + "/sub/deep"}));
    EXPECT_EQ(changes, 3);
    paths_.setCurrent("/");
    EXPECT_EQ(paths_.current(), "/");
    EXPECT_EQ(paths_.fullName("x"), "/x");
    EXPECT_EQ(Dir(folder_).recent().size(), 1u);
}

TEST_F(DirTest, FullNameOfAFileThatMustExist) {
    file("a.txt");
    EXPECT_EQ(paths_.fullName("a", true, "txt"), folder_ + "/a.txt");
    EXPECT_EQ(paths_.fullName("b", false, "txt"), folder_ + "/b.txt");
    try {
        static_cast<void>(paths_.fullName("b", true, "txt"));
        FAIL();
    } catch (const RuntimeError& error) {
        EXPECT_EQ(error.message, "file not found: b");
    }
}

TEST_F(DirTest, KindsOfFiles) {
    file("a.txt");
    fs::create_symlink("nowhere", folder_ + "/broken");
    EXPECT_EQ(Dir::fileKind(folder_), FileKind::directory);
    EXPECT_EQ(Dir::fileKind(folder_ + "/a.txt"), FileKind::file);
    EXPECT_EQ(Dir::fileKind(folder_ + "/b"), FileKind::nothing);
    EXPECT_EQ(Dir::fileKind(folder_ + "/broken"), FileKind::nothing);
    EXPECT_EQ(Dir::fileKind(folder_ + "/a.txt/x"), FileKind::nothing);
}

TEST_F(DirTest, CdShowsAndChanges) {
    fs::create_directories(folder_ + "/my dir");
    file("a.txt");
    EXPECT_EQ(cd(""), "{-" + folder_);
    EXPECT_EQ(cd("my dir"), folder_ + "/my dir");
    EXPECT_EQ(cd(""), "{-" + folder_ + "/my dir");
    EXPECT_EQ(cd(".."), folder_);
    EXPECT_EQ(cd("."), folder_);
    EXPECT_EQ(cd("nosuch"), "failure in cd: can't find directory " + folder_ + "/nosuch");
    EXPECT_EQ(cd("a.txt"), "failure in cd: attempt to cd to file " + folder_ + "/a.txt");
    EXPECT_EQ(paths_.current(), folder_);
    EXPECT_EQ(cd("/"), "/");
    EXPECT_EQ(cd(".."), "/");
}

TEST_F(DirTest, CdAsksForAFolder) {
    fs::create_directories(folder_ + "/sub");
    EXPECT_EQ(cd("?"), "{-" + folder_);
    EXPECT_EQ(host_.boxes, Names{"cd ... " + folder_});
    host_.folder = folder_ + "/sub";
    EXPECT_EQ(cd("?"), "{-" + folder_ + "/sub");
}

TEST_F(DirTest, CdClearAsksFirst) {
    EXPECT_EQ(cd("clear"), "{-" + folder_);
    EXPECT_EQ(paths_.recent().size(), 1u);
    ASSERT_EQ(host_.boxes.size(), 1u);
    EXPECT_EQ(host_.boxes[0], "Vorpen 5a: The recent path list will be cleared. Are you sure?");
    host_.answer = true;
    EXPECT_EQ(cd("clear"), "{-" + folder_);
    EXPECT_TRUE(paths_.recent().empty());
}

TEST_F(DirTest, DirListsByName) {
    file("b.txt");
    file("a.txt");
    file("c/x.txt");
    file(".hidden");
    EXPECT_EQ(list(""), (Names{".hidden", "a.txt", "b.txt", "c <DIR>  "}));
    EXPECT_EQ(list("*"), (Names{".hidden", "a.txt", "b.txt", "c <DIR>  "}));
    EXPECT_EQ(list("*.txt"), (Names{"a.txt", "b.txt"}));
    EXPECT_EQ(list("?.txt"), (Names{"a.txt", "b.txt"}));
    EXPECT_EQ(list("c"), Names{"x.txt"});
    EXPECT_EQ(list("c/"), Names{"x.txt"});
    EXPECT_EQ(list("c*"), Names{"c <DIR>  "});
    EXPECT_EQ(list("c/*.txt"), Names{"x.txt"});
    EXPECT_EQ(list("a.txt"), Names{"a.txt"});
    EXPECT_EQ(list("*.zzz"), Names{"failure file not found"});
    EXPECT_EQ(list("nosuch/*"), Names{"failure file not found"});
    EXPECT_EQ(list("nosuch"), Names{"failure file not found"});
    EXPECT_EQ(list("*/x.txt"), Names{"failure file not found"});
    const std::string name(300, 'n');
    EXPECT_EQ(list(name), Names{"failure path name is too long: " + name});
    std::vector<std::string> entries;
    paths_.dir("*", true, entries);
    EXPECT_EQ(entries, Names{"c <DIR>  "});
}

TEST_F(DirTest, DirOfAnEmptyFolderIsEmpty) {
    fs::create_directories(folder_ + "/hollow");
    EXPECT_EQ(list("hollow"), Names{});
    EXPECT_EQ(list("hollow/*"), Names{});
    EXPECT_EQ(list("hollow/*.txt"), Names{"failure file not found"});
}

TEST_F(DirTest, NamesOutsideAscii) {
    file("caf\xC3\xA9/\xC3\xBC.txt");
    EXPECT_EQ(list("caf*"), Names{"caf\xE9 <DIR>  "});
    EXPECT_EQ(cd("caf\xE9"), folder_ + "/caf\xE9");
    EXPECT_EQ(list(""), Names{"\xFC.txt"});
}

TEST_F(DirTest, FindsScripts) {
    file("a.vrp");
    file("plain.txt");
    file("sub/b.vrp");
    file("other/a.vrp");
    EXPECT_EQ(paths_.findScript("a"), folder_ + "/a.vrp");
    EXPECT_EQ(paths_.findScript("a.vrp"), folder_ + "/a.vrp");
    EXPECT_EQ(paths_.findScript("plain.txt"), folder_ + "/plain.txt");
    EXPECT_EQ(paths_.findScript("plain"), std::nullopt);
    EXPECT_EQ(paths_.findScript("sub"), std::nullopt);
    EXPECT_EQ(paths_.findScript(""), std::nullopt);
    EXPECT_EQ(paths_.findScript("b"), std::nullopt);
    paths_.setCurrent("sub");
    EXPECT_EQ(paths_.findScript("../a"), folder_ + "/a.vrp");
    EXPECT_EQ(paths_.findScript(folder_ + "/a"), folder_ + "/a.vrp");
    EXPECT_EQ(paths_.findScript(folder_ + "/b"), std::nullopt);
    paths_.setCurrent("..");
    EXPECT_EQ(paths_.findScript("b"), folder_ + "/sub/b.vrp");
    paths_.setCurrent("other");
    EXPECT_EQ(paths_.findScript("a"), folder_ + "/other/a.vrp");
    paths_.clearRecent();
    EXPECT_EQ(paths_.findScript("b"), std::nullopt);
    paths_.addScriptDirectory(folder_ + "/sub");
    EXPECT_EQ(paths_.findScript("b"), folder_ + "/sub/b.vrp");
}

TEST_F(DirTest, PathFileHasAFixedLayout) {
    Dir one("/ab");
    one.save(folder_);
    const std::string record("\3\0\0\0/ab\0", 8);
    EXPECT_EQ(content("vorpen_cd.bin"), std::string("\1\0\0\0", 4) + record + record);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
}

TEST_F(DirTest, PathFileHoldsTwentyRecords) {
    for (int i = 10; i < 35; ++i) paths_.setCurrent("/p" + std::to_string(i));
    paths_.save(folder_);
    EXPECT_EQ(content("vorpen_cd.bin").substr(0, 4), std::string("\x14\0\0\0", 4));
    Dir other(folder_);
    other.load(folder_, host_);
    EXPECT_EQ(host_.boxes, Names{});
    EXPECT_EQ(other.current(), folder_);
    EXPECT_EQ(other.recent().size(), 21u);
    EXPECT_TRUE(other.recent().contains(folder_));
    EXPECT_TRUE(other.recent().contains("/p10"));
    EXPECT_FALSE(other.recent().contains("/p34"));
}

TEST_F(DirTest, StoredDirectoryComesBack) {
    fs::create_directories(folder_ + "/sub");
    paths_.setCurrent("sub");
    paths_.save(folder_);
    Dir other(folder_);
    other.load(folder_, host_);
    EXPECT_EQ(other.current(), folder_ + "/sub");
    fs::remove(folder_ + "/sub");
    Dir third(folder_);
    third.load(folder_, host_);
    EXPECT_EQ(third.current(), folder_);
    EXPECT_EQ(host_.boxes, Names{});
}

TEST_F(DirTest, StoredDirectoryIsARecentOneAlthoughItsRecordHadNoRoom) {
    fs::create_directories(folder_ + "/sub");
    for (int i = 10; i < 35; ++i) paths_.setCurrent("/" + std::to_string(i));
    paths_.setCurrent(folder_ + "/sub");
    paths_.save(folder_);
    Dir other(folder_);
    other.load(folder_, host_);
    EXPECT_EQ(other.current(), folder_ + "/sub");
    EXPECT_TRUE(other.recent().contains(folder_ + "/sub"));
    EXPECT_EQ(other.recent().size(), 22u);
}

TEST_F(DirTest, MissingOrDamagedPathFile) {
    const Names problem = {"vorpen startup: problem loading path list"};
    paths_.load(folder_ + "/nowhere", host_);
    EXPECT_EQ(host_.boxes, Names{});
    const std::string head("\2\0\0\0\0\0\0\0\0", 9), record("\2\0\0\0/x\0", 7);
    for (const std::string& damaged : {std::string(), std::string("\1\0", 2), std::string("\1\0\0\0", 4),
                                       head, head + record, head + record + std::string("\5\0\0\0/y", 6)}) {
        file("vorpen_cd.bin", damaged);
        host_.boxes.clear();
        Dir other(folder_);
        other.load(folder_, host_);
        EXPECT_EQ(host_.boxes, problem) << damaged.size();
        EXPECT_EQ(other.current(), folder_);
        EXPECT_EQ(other.recent().contains("/x"), damaged.size() > 15);
    }
    host_.boxes.clear();
    file("vorpen_cd.bin", head + record + record);
    paths_.load(folder_, host_);
    EXPECT_EQ(host_.boxes, Names{});
    EXPECT_EQ(paths_.current(), folder_);
}

TEST_F(DirTest, SaveWithoutADirectoryIsSilent) {
    paths_.save(folder_ + "/nowhere");
    EXPECT_FALSE(fs::exists(folder_ + "/nowhere"));
}

std::string counted(std::int32_t length, const std::string& bytes) {
    std::ostringstream out;
    writeLittleEndian(out, length);
    return out.str() + bytes;
}

TEST(CountedString, LengthsThatNoPathHas) {
    std::istringstream negative(counted(-1, "abc")), large(counted(100002, "abc")), cut(counted(5, "abc"));
    EXPECT_EQ(readCountedString(negative), "");
    EXPECT_EQ(negative.get(), 'a');
    EXPECT_EQ(readCountedString(large), "");
    EXPECT_EQ(large.get(), 'a');
    EXPECT_EQ(readCountedString(cut), std::nullopt);
    std::istringstream longest(counted(100001, std::string(100002, 'p')));
    EXPECT_EQ(readCountedString(longest)->size(), 100002u);
    std::istringstream nul(counted(5, std::string("ab\0cd\0", 6)));
    EXPECT_EQ(readCountedString(nul), "ab");
    std::istringstream empty("");
    EXPECT_EQ(readCountedString(empty), std::nullopt);
}

TEST(LittleEndian, BytesComeLowestFirst) {
    std::ostringstream out;
    writeLittleEndian(out, std::int32_t{0x01020304});
    writeLittleEndian(out, 1.0);
    const std::vector<std::int32_t> values = {1, -1};
    writeLittleEndian(out, std::span<const std::int32_t>(values));
    EXPECT_EQ(out.str(), std::string("\4\3\2\1\0\0\0\0\0\0\xF0\x3F\1\0\0\0\xFF\xFF\xFF\xFF", 20));
    std::istringstream in(out.str());
    std::int32_t number = 0;
    double real = 0;
    std::vector<std::int32_t> back(2);
    EXPECT_TRUE(readLittleEndian(in, number));
    EXPECT_TRUE(readLittleEndian(in, real));
    EXPECT_TRUE(readLittleEndian(in, std::span<std::int32_t>(back)));
    EXPECT_EQ(number, 0x01020304);
    EXPECT_EQ(real, 1.0);
    EXPECT_EQ(back, values);
    EXPECT_FALSE(readLittleEndian(in, number));
    EXPECT_EQ(number, 0x01020304);
}

TEST_F(DirTest, ReplacedFileIsOldOrNew) {
    file("work.dat", "old");
    fs::permissions(folder_ + "/work.dat", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("work.dat", folder_ + "/link.dat");
    const std::string path = folder_ + "/work.dat";
    EXPECT_THROW(static_cast<void>(replaceFile(path,
                                               [](std::ostream& out) {
                                                   out << "half";
                                                   throw RuntimeError("stop");
                                               })),
                 RuntimeError);
    EXPECT_EQ(content("work.dat"), "old");
    EXPECT_FALSE(replaceFile(path, [](std::ostream& out) { out.setstate(std::ios::badbit); }));
    EXPECT_EQ(content("work.dat"), "old");
    EXPECT_TRUE(replaceFile(folder_ + "/link.dat", [](std::ostream& out) { out << "new"; }));
    EXPECT_EQ(content("work.dat"), "new");
    EXPECT_TRUE(fs::is_symlink(folder_ + "/link.dat"));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_FALSE(replaceFile(folder_ + "/nowhere/x", [](std::ostream&) {}));
    EXPECT_FALSE(replaceFile(folder_, [](std::ostream&) {}));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 2);
}

}  // namespace
}  // namespace vorpen
