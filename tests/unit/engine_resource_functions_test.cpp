// SPDX-License-Identifier: GPL-3.0-or-later

// Resource files that a transcript cannot hold, and what a menu asks of the
// functions that were read.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "base/errors.h"
#include "console/terminal_text.h"
#include "engine/calc.h"
#include "terminal/typed_session.h"
#include "test_host.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class ResourceFiles : public ::testing::Test {
protected:
    ResourceFiles() : folder_(makeFolder()), host_((folder_ / "home").string()) {
        fs::create_directories(folder_ / "home/resource");
        fs::create_directories(folder_ / "share/resource");
        host_.share = (folder_ / "share").string();
        calc_ = std::make_unique<Calc>(host_, true);
        session_ = std::make_unique<TypedSession>(
            *calc_, false, [this](const std::string& line) { shown_.push_back(terminalText(line, false)); });
    }
    ~ResourceFiles() override {
        session_.reset();
        calc_.reset();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void write(const std::string& name, const std::string& text, const std::string& place = "home") {
        std::ofstream(folder_ / place / "resource" / name, std::ios::binary) << text;
    }

    /// The lines that a typed line shows, without blanks at their ends.
    Lines type(const std::string& line) {
        shown_.clear();
        session_->typeLine(line);
        return shown();
    }
    Lines shown() {
        session_->finishOutput();
        Lines lines;
        for (auto line : shown_) {
            while (!line.empty() && line.back() == ' ') line.pop_back();
            if (!line.empty()) lines.push_back(line);
        }
        return lines;
    }
    std::string lastShown(const std::string& line) {
        const Lines lines = type(line);
        return lines.empty() ? "" : lines.back();
    }

    static fs::path makeFolder() {
        std::string pattern = (fs::temp_directory_path() / "resource-XXXXXX").string();
        return fs::canonical(mkdtemp(pattern.data()));
    }

    fs::path folder_;
    TestHost host_;
    std::unique_ptr<Calc> calc_;
    std::unique_ptr<TypedSession> session_;
    Lines shown_;
};

const std::string square = "function y = sq(x)\n    y = x^2;\nend\n";

TEST_F(ResourceFiles, OfTheProgramsDirectoryComeBeforeThoseThatCameWithTheProgram) {
    write("sq.vrp", square, "share");
    write("cube.vrp", "function y = cube(x)\n    y = x^3;\nend\n", "share");
    write("cube.vrp", "function y = cube(x)\n    y = 1000+x;\nend\n");
    EXPECT_EQ(lastShown("sq(3)"), "9");
    EXPECT_EQ(lastShown("cube(3)"), "1003");
}

TEST_F(ResourceFiles, OfNoUseStayUnknown) {
    write("folder.txt", square);
    fs::create_directory(folder_ / "home/resource/dir.vrp");
    mkfifo((folder_ / "home/resource/pipe.vrp").c_str(), 0600);
    fs::create_symlink(folder_ / "nowhere", folder_ / "home/resource/link.vrp");
    EXPECT_EQ(lastShown("folder(1)"), "unrecognised name 'folder'");
    EXPECT_EQ(lastShown("dir2(1)"), "unrecognised name 'dir2'");
    EXPECT_EQ(lastShown("link(1)"), "unrecognised name 'link'");
    EXPECT_EQ(lastShown("pipe(1)"), "could not open resource file 'pipe.vrp'");
    EXPECT_EQ(lastShown("1+1"), "2");
}

TEST_F(ResourceFiles, ThatCannotBeReadAreNamed) {
    write("secret.vrp", square);
    fs::permissions(folder_ / "home/resource/secret.vrp", fs::perms::none);
    const std::string message = lastShown("secret(1)");
    // The superuser reads it all the same, and finds another name in it.
    EXPECT_TRUE(message == "could not open resource file 'secret.vrp'" ||
                message == "unrecognised name 'secret'")
        << message;
    EXPECT_EQ(lastShown("1+1"), "2");
}

TEST_F(ResourceFiles, OfArbitraryBytesDoNoHarm) {
    std::string bytes;
    unsigned state = 12345;
    for (int i = 0; i < 20000; ++i) bytes += static_cast<char>((state = state * 1103515245u + 12345u) >> 16);
    write("junk.vrp", bytes);
    EXPECT_EQ(lastShown("junk(1)"), "unrecognised name 'junk'");
    write("worse.vrp", bytes + "\nfunction y = worse(" + bytes);
    EXPECT_FALSE(type("worse(1)").empty());
    write("inside.vrp", "function y = inside(x)\n" + bytes + "\nend\n");
    EXPECT_FALSE(type("inside(1)").empty());
    write("zeros0.vrp", std::string(5000, '\0'));
    EXPECT_EQ(lastShown("zeros0(1)"), "unrecognised name 'zeros0'");
    write("brackets.vrp", "function y = brackets" + std::string(20000, '('));
    EXPECT_FALSE(type("brackets(1)").empty());
    EXPECT_EQ(lastShown("1+1"), "2");
    EXPECT_TRUE(calc_->functions().functions().empty());
}

TEST_F(ResourceFiles, MayCallEachOtherInALongChain) {
    constexpr int count = 3000;
    for (int i = 0; i < count; ++i) {
        const std::string name = "link" + std::to_string(i);
        const std::string next = i + 1 < count ? "link" + std::to_string(i + 1) + "(x-1)" : "x";
        write(name + ".vrp",
              "function y = " + name + "(x)\n    y = 0;\n    if x>0: y = 1+" + next + ";\nend\n");
    }
    EXPECT_EQ(lastShown("link0(20)"), "20");
}

TEST_F(ResourceFiles, WithCarriageReturnsAndUtf8AreScriptsLikeAnyOther) {
    write("sq.vrp",
          "##\r\nL\xc3\xa4nge zum Quadrat\r\n##\r\nfunction y = sq(x)\r\n    y = x^2;\r\nend\r\n"
          "function y = bare(x)\r\n    y = x;\r\nend\r\n");
    EXPECT_EQ(lastShown("sq(3)"), "9");
    const FunctionSource& source = calc_->functions().find("sq")->source();
    EXPECT_EQ(source.line, 4);
    EXPECT_EQ(source.commentStartLine, 1);
    EXPECT_EQ(calc_->functions().find("bare")->source().line, 7);
    EXPECT_EQ(calc_->functions().find("bare")->source().commentStartLine, -1);
    EXPECT_FALSE(source.typed);
    EXPECT_EQ(fs::path(source.text).filename(), "sq.vrp");
}

TEST_F(ResourceFiles, NamesAreWordsAndNoPaths) {
    std::ofstream(folder_ / "home/outside.vrp") << "function y = outside(x)\n    y = 1;\nend\n";
    ResourceFunctions& resources = calc_->resources();
    for (const char* name : {"../outside", "resource/../../outside", "", ".", "a b", "outside"})
        EXPECT_FALSE(resources.load(name)) << name;
}

TEST_F(ResourceFiles, AreListedApartAndRemoved) {
    write("sq.vrp", square);
    write("half.vrp", "function half(x)\n    return x/2\nend\n");
    write("outer.vrp", "function y = outer(x)\n    y = sq(x);\nend\n");
    type("own(x) := x+half(x)");
    EXPECT_EQ(lastShown("outer(3)+own(2)"), "12");
    EXPECT_EQ(calc_->resources().list(),
              "Resources:\n--Quick functions:\n   half\n--User Functions:\n   outer   sq");
    shown_.clear();
    calc_->resources().removeAll();
    EXPECT_EQ(shown(), (Lines{"half removed", "outer removed", "sq removed", "3 functions removed"}));
    EXPECT_EQ(calc_->resources().list(), "Resources:\n--Quick functions:\n\n--User Functions:\n");
    EXPECT_NE(calc_->functions().find("own"), nullptr);

    write("sq.vrp", "function y = sq(x)\n    y = x^3;\nend\n");
    EXPECT_EQ(lastShown("outer(3)"), "27");
    shown_.clear();
    calc_->resources().removeAll();
    calc_->resources().removeAll();
    EXPECT_EQ(shown().back(), "0 functions removed");
}

TEST_F(ResourceFiles, AFunctionOfTheUserIsNoneOfTheFolder) {
    write("sq.vrp", square);
    EXPECT_EQ(lastShown("sq(3)"), "9");
    type("sq(x) := x+1");
    shown_.clear();
    calc_->resources().removeAll();
    EXPECT_EQ(shown(), Lines{"0 functions removed"});
    EXPECT_EQ(lastShown("sq(3)"), "4");
}

TEST_F(ResourceFiles, ThatFailInEvalDoNotFailTheNextLine) {
    write("bad.vrp", "function y = bad(x)\n    y = nosuch;\nend\n");
    EXPECT_EQ(lastShown("eval(\"bad(1)\")"), "Not yet implemented (Evaluate bad(1))");
    EXPECT_EQ(type("1+1"), Lines{"2"});
    EXPECT_EQ(type("1+"), (Lines{"1+", "dangling operator or more input needed"}));
}

}  // namespace
}  // namespace vorpen
