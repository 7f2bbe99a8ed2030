// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/session.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "base/counted_string.h"
#include "base/little_endian.h"
#include "base/replace_file.h"
#include "builtins_support.h"
#include "engine/calc.h"
#include "values/serial_form.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;
using namespace testing;
using Names = std::vector<std::string>;
using Boxes = std::vector<TestHost::Box>;

const TestHost::Box problem{"vorpen startup", "problem loading previous session"};
const TestHost::Box question{"vorpen exit", "Large matrices will not be saved: ok to exit?"};

std::string record(const std::string& name, const Value& value) {
    std::ostringstream out;
    writeCountedString(out, name);
    writeValue(out, value);
    return out.str();
}

std::string endRecord() {
    std::ostringstream out;
    writeCountedString(out, "");
    return out.str();
}

std::string newFolder() {
    std::string pattern = (fs::temp_directory_path() / "session-XXXXXX").string();
    return mkdtemp(pattern.data());
}

class SessionTest : public ::testing::Test {
protected:
    ~SessionTest() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string path() const { return folder_ + "/vorpen_env.bin"; }
    void put(const std::string& bytes) const { std::ofstream(path(), std::ios::binary | std::ios::trunc) << bytes; }
    [[nodiscard]] std::string stored() const {
        std::ifstream in(path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    /// One run of the program: what was asked and told is in the host.
    void run(const Names& lines, bool isSecondary = false) {
        Calc calc(host_, isSecondary);
        for (const auto& line : lines) {
            calc.beginInput(line, '>');
            calc.run();
        }
        vars_.clear();
        for (const auto& [name, value] : calc.symbols().globals()) vars_ += name + "=" + described(*value) + " ";
    }
    /// The variables that a stored session gives.
    std::string loaded(const std::string& bytes) {
        put(bytes);
        host_.boxes.clear();
        run({});
        return vars_;
    }

    std::string folder_ = newFolder();
    TestHost host_{folder_};
    std::string vars_;
};

TEST_F(SessionTest, BytesOfOneScalar) {
    run({"x=1.5;"});
    EXPECT_EQ(stored(), std::string("\1\0\0\0x\0\1\0\0\0\1\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0\0\xF8\x3F\0\0\0\0\0", 35));
}

TEST_F(SessionTest, VariablesOfAllKindsComeBack) {
    run({"x=1.5;", "m=[1,2;3,4];", "s='text';", "z=1+2*1i;", "L=list(7,'ab',list(1));", "e=[];", "b=m>2;"});
    const std::string before = vars_;
    run({});
    EXPECT_EQ(vars_, before);
    EXPECT_EQ(host_.boxes, Boxes{});
    EXPECT_EQ(host_.questions, Boxes{});
}

TEST_F(SessionTest, ConstantsAndFunctionsAreNotKept) {
    run({"const kk=2", "f(x):=x^2", "x=1;", "clear x"});
    EXPECT_EQ(stored(), endRecord());
}

TEST_F(SessionTest, ASecondaryEngineKeepsToItself) {
    put(record("x", DoubleValue(1)) + endRecord());
    run({"y=2;"}, true);
    EXPECT_EQ(vars_, "y=2 ");
    EXPECT_EQ(stored(), record("x", DoubleValue(1)) + endRecord());
    EXPECT_FALSE(fs::exists(folder_ + "/vorpen_comm.bin"));
}

TEST_F(SessionTest, LargeVariablesAreLeftOutAfterOneQuestion) {
    run({"x=zeros([1,9999]);"});
    EXPECT_EQ(host_.questions, Boxes{});
    run({"y=zeros([1,10000]);", "z=zeros([200,200]);", "a=1;"});
    EXPECT_EQ(host_.questions, Boxes{question});
    run({"x=1;"});
    EXPECT_EQ(vars_, "a=1 x=1 ");
    EXPECT_EQ(host_.questions.size(), 1u);
}

TEST_F(SessionTest, CancelKeepsTheFormerFile) {
    run({"x=1;"});
    const std::string former = stored();
    host_.answers = {false};
    run({"x=2;", "y=zeros([1,10000]);"});
    EXPECT_EQ(stored(), former);
    host_.answers = {true};
    run({"x=2;", "y=zeros([1,10000]);"});
    EXPECT_NE(stored(), former);
}

TEST_F(SessionTest, TheSizeOfItemsIsNotTested) {
    run({"L=list(zeros([1,10000]));"});
    EXPECT_EQ(host_.questions, Boxes{});
    run({"n=size(L[1]);"});
    EXPECT_NE(vars_.find("n=10000"), std::string::npos);
}

TEST_F(SessionTest, EachCutKeepsWhatStandsBefore) {
    const std::string x = record("x", DoubleValue(3)), y = record("yy", listOf({}));
    const std::string whole = x + y + endRecord();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string expected = length < x.size() ? "" : length < x.size() + y.size() ? "x=3 " : "x=3 yy={} ";
        EXPECT_EQ(loaded(whole.substr(0, length)), expected) << length;
        EXPECT_EQ(host_.boxes, Boxes{problem}) << length;
    }
    EXPECT_EQ(loaded(whole), "x=3 yy={} ");
    EXPECT_EQ(host_.boxes, Boxes{});
}

TEST_F(SessionTest, AMissingFileIsTheFirstStart) {
    run({});
    EXPECT_EQ(host_.boxes, Boxes{});
    EXPECT_EQ(stored(), endRecord());
}

TEST_F(SessionTest, ADirectoryInItsPlace) {
    fs::create_directory(path());
    run({"x=1;"});
    EXPECT_EQ(vars_, "x=1 ");
    EXPECT_TRUE(fs::is_directory(path()));
}

TEST_F(SessionTest, NamesThatEndTheLoad) {
    const std::string x = record("x", DoubleValue(3)), y = record("y", DoubleValue(4));
    const auto length = [](std::int32_t n) {
        std::ostringstream out;
        writeLittleEndian(out, n);
        return out.str();
    };
    for (const std::int32_t n : {-1, 100002, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(loaded(x + length(n) + y + endRecord()), "x=3 ") << n;
        EXPECT_EQ(host_.boxes, Boxes{});
    }
    EXPECT_EQ(loaded(x + endRecord() + y), "x=3 ");
    // A name is what stands before its first NUL.
    EXPECT_EQ(loaded(record(std::string("y\0z", 3), DoubleValue(4)) + endRecord()), "y=4 ");
}

TEST_F(SessionTest, RecordsWithOddities) {
    const std::string x = record("x", DoubleValue(3));
    std::ostringstream negative;
    writeCountedString(negative, "n");
    writeLittleEndian(negative, std::int32_t{-1});
    EXPECT_EQ(loaded(negative.str() + x + endRecord()), "x=3 ");
    EXPECT_EQ(loaded(x + record("x", DoubleValue(5)) + endRecord()), "x=5 ");
    EXPECT_EQ(loaded(record("i", integers({1, 2})) + endRecord()), "i=1 2 ");
    // A variable hides what else had its name.
    EXPECT_EQ(loaded(record("pi", DoubleValue(3)) + record("sin", DoubleValue(1)) + record("if", DoubleValue(1)) +
                     record("a b{r}\\", DoubleValue(2)) + endRecord()),
              "a b{r}\\=2 if=1 pi=3 sin=1 ");
    EXPECT_EQ(host_.boxes, Boxes{});
    run({"y=2pi;", "x=[1,2]; x[1]=3;"});
    EXPECT_NE(vars_.find("y=6 "), std::string::npos) << vars_;
}

TEST_F(SessionTest, IntegersBecomeDoubles) {
    put(record("i", integers({1, 2})) + endRecord());
    run({"i[1]=0.5;"});
    EXPECT_EQ(vars_, "i=0.5 2 ");
}

TEST_F(SessionTest, ListsNestedTooDeeplyAreToldAndLeftOut) {
    run({"L=list(1); x=1;", "for k=1:1200 { L=list(L); }", "z=2;"});
    ASSERT_EQ(host_.boxes.size(), 1u);
    EXPECT_EQ(host_.boxes[0].title, "vorpen exit");
    EXPECT_EQ(host_.boxes[0].text, "'L' is nested too deeply to be saved");
    host_.boxes.clear();
    run({});
    EXPECT_EQ(host_.boxes, Boxes{});
    EXPECT_EQ(vars_.substr(0, 1), "k");
    EXPECT_NE(vars_.find("x=1 z=2"), std::string::npos);
}

TEST_F(SessionTest, DeepListsOfAFileAreDamage) {
    std::ostringstream deep;
    deep << record("x", DoubleValue(3));
    writeCountedString(deep, "L");
    for (int i = 0; i < 100000; ++i)
        for (const std::int32_t field : {1, 1, 6, 3}) writeLittleEndian(deep, field);
    EXPECT_EQ(loaded(deep.str()), "x=3 ");
    EXPECT_EQ(host_.boxes, Boxes{problem});
}

/// Runs work in a process of its own; its exit status, or -1 for a signal.
template <class Work>
int inChild(Work&& work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(SessionTest, AFullDiskLeavesTheFormerFiles) {
    run({"x=1;", "y=[1,2,3];"});
    const std::string former = stored();
    const int status = inChild([this] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
        run({"x=zeros([1,5000]);"});
        const TestHost::Box told{"vorpen exit", "the session could not be saved; the former one is kept"};
        _exit(host_.boxes == Boxes{told} ? 0 : 1);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(stored(), former);
    // Nothing is left lying about.
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 3);
}

TEST_F(SessionTest, AFullFileSystemLeavesTheFormerFiles) {
    if (mount("none", folder_.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "no small file system to be had";
    run({"x=1;"});
    const std::string former = stored();
    run({"y=zeros([1,9000]);", "z=y;"});
    EXPECT_EQ(stored(), former);
    EXPECT_EQ(host_.boxes.size(), 1u);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 3);
    umount(folder_.c_str());
}

TEST_F(SessionTest, ACrashWhileWritingLeavesTheFormerFile) {
    run({"x=1;"});
    const std::string former = stored();
    const int status = inChild([this] {
        static_cast<void>(replaceFile(
            path(),
            [](std::ostream& out) {
                out << "half" << std::flush;
                std::raise(SIGKILL);
            },
            Durability::synced));
    });
    EXPECT_EQ(status, -1);
    EXPECT_EQ(stored(), former);
    run({});
    EXPECT_EQ(vars_, "x=1 ");
}

}  // namespace
}  // namespace vorpen
