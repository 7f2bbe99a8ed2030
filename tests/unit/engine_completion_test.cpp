// SPDX-License-Identifier: GPL-3.0-or-later
#include "engine/completion.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "engine/calc.h"
#include "test_host.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;

class CompletionTest : public testing::Test {
protected:
    CompletionTest() {
        fs::remove_all(folder);
        fs::create_directories(folder / "resource");
        fs::create_directories(folder / "data sets");
        std::ofstream(folder / "resource" / "zigzag.vrp");
        std::ofstream(folder / "data sets" / "a.txt");
        std::ofstream(folder / "data.txt");
        std::ofstream(folder / ".hidden");
        for (const char* line : {"longvalue=1;", "longfun(x):=x;", "const longconst=2;"}) {
            calc.beginInput(line, '>');
            calc.run();
        }
    }
    ~CompletionTest() override { fs::remove_all(folder); }

    std::vector<std::string> names(std::string_view line) {
        const Completion found = completionAt(calc, line, line.size());
        start = found.start;
        return found.candidates;
    }

    fs::path folder = fs::temp_directory_path() / ("vorpen-completion-" + std::to_string(getpid()));
    TestHost host{folder.string()};
    Calc calc{host, true};
    std::size_t start = 0;
};

using Names = std::vector<std::string>;

TEST_F(CompletionTest, NamesOfAllKinds) {
    EXPECT_EQ(names("2+long"), (Names{"longconst", "longfun", "longvalue"}));
    EXPECT_EQ(start, 2u);
    EXPECT_EQ(names("eigv"), (Names{"eigval", "eigvec", "eigvv"}));
    EXPECT_EQ(names("unl"), (Names{"unless"}));
    EXPECT_EQ(names("zig"), (Names{"zigzag"}));
    EXPECT_EQ(names("2longv"), (Names{"longvalue"}));
    EXPECT_EQ(start, 1u);
}

TEST_F(CompletionTest, NothingWhereNoNameBegins) {
    EXPECT_EQ(names(""), Names{});
    EXPECT_EQ(names("2+"), Names{});
    EXPECT_EQ(names("12"), Names{});
    EXPECT_EQ(names("x=\"long"), Names{});
    EXPECT_EQ(names("nosuchname"), Names{});
}

TEST_F(CompletionTest, AQuoteBehindANameTransposes) { EXPECT_EQ(names("x'+longv"), (Names{"longvalue"})); }

TEST_F(CompletionTest, PathsInsideTheQuotesOfFileCommands) {
    EXPECT_EQ(names("x=load(\"da"), (Names{"data sets/", "data.txt"}));
    EXPECT_EQ(start, 8u);
    EXPECT_EQ(names("x=load(\"data sets/"), (Names{"data sets/a.txt"}));
    EXPECT_EQ(names("load('" + (folder / "data.").string()), (Names{(folder / "data.txt").string()}));
    EXPECT_EQ(names("fopen(\".h"), (Names{".hidden"}));
    EXPECT_EQ(names("load(\"nosuch/"), Names{});
    EXPECT_EQ(names("load(\"a\"); x=\"da"), Names{});
}

TEST_F(CompletionTest, SomeCommandsNeedNoQuotes) {
    EXPECT_EQ(names("cd da"), (Names{"data sets/", "data.txt"}));
    EXPECT_EQ(names("x=1; use data."), (Names{"data.txt"}));
    EXPECT_EQ(start, 9u);
}

TEST_F(CompletionTest, OnlyWhatStandsBeforeTheCaretCounts) {
    EXPECT_EQ(completionAt(calc, "longv+long", 5).candidates, (Names{"longvalue"}));
    EXPECT_EQ(completionAt(calc, "longv", 100).candidates, (Names{"longvalue"}));
}

}  // namespace
}  // namespace vorpen
