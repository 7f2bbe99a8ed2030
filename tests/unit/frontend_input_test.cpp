// SPDX-License-Identifier: GPL-3.0-or-later
#include "frontend/input.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "files/dir.h"
#include "frontend/scanner.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class InputTest : public testing::Test {
protected:
    InputTest() {
        std::string name = fs::temp_directory_path() / "vorpen-input-XXXXXX";
        folder_ = fs::canonical(mkdtemp(name.data())).string();
        paths_.setCurrent(folder_);
    }
    ~InputTest() override { fs::remove_all(folder_); }

    void file(const std::string& name, const std::string& content) {
        const fs::path path = fs::path(folder_) / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }

    /// All lines of the input. Blocks are reported as the scanner does.
    Lines rest() {
        Lines lines;
        std::string line;
        while (input_.getLine(line, false, false)) {
            lines.push_back(line);
            static_cast<void>(scanLine(line, input_));
        }
        return lines;
    }
    Lines typed(const std::string& text) {
        input_.beginText(text, '>');
        return rest();
    }
    Lines pasted(const std::string& text) {
        input_.beginText(text, 'c');
        return rest();
    }
    Lines script(const std::string& content) {
        file("script.vrp", content);
        return typed("use script");
    }
    std::string plainFailure(const std::string& text, char kind = '>') {
        try {
            input_.beginText(text, kind);
            rest();
        } catch (const PlainFailure& failure) {
            return failure.message;
        }
        return "no failure";
    }

    std::string folder_;
    Dir paths_;
    UserInput input_{paths_};
};

TEST_F(InputTest, TypedLine) {
    EXPECT_EQ(typed("x=1"), Lines{"x=1"});
    EXPECT_EQ(input_.lineNumber(), 0);
    EXPECT_TRUE(input_.isInteractive());
    EXPECT_EQ(typed("   y=2"), Lines{"y=2"});
    EXPECT_EQ(input_.lineNumber(), 0);
    EXPECT_EQ(typed(""), Lines{});
    EXPECT_EQ(typed("   "), Lines{});
    std::string name = "something";
    input_.sourceName(name);
    EXPECT_EQ(name, "");
}

TEST_F(InputTest, CommentsInTypedLines) {
    EXPECT_EQ(typed("# remark"), Lines{});
    EXPECT_EQ(typed("## marker"), Lines{});
    EXPECT_EQ(typed("##end_input"), Lines{});
    EXPECT_EQ(typed("1 # kept for the scanner"), Lines{"1 # kept for the scanner"});
}

TEST_F(InputTest, EndIsFalseOrASignal) {
    input_.beginText("x", '>');
    std::string line;
    EXPECT_TRUE(input_.getLine(line, true, false));
    EXPECT_FALSE(input_.getLine(line, false, false));
    EXPECT_EQ(line, "");
    try {
        input_.getLine(line, true, false);
        FAIL();
    } catch (const OperatorFailure& failure) {
        EXPECT_EQ(failure.code, 'e');
    }
}

TEST_F(InputTest, PastedTextHasNumberedLines) {
    input_.beginText("a\r\nb\rc", 'c');
    std::string line;
    for (const auto& [text, number] : {std::pair("a", 1), std::pair("b", 2), std::pair("c", 3)}) {
        ASSERT_TRUE(input_.getLine(line, false, false));
        EXPECT_EQ(line, text);
        EXPECT_EQ(input_.lineNumber(), number);
        EXPECT_FALSE(input_.isInteractive());
    }
    EXPECT_FALSE(input_.getLine(line, false, false));
    EXPECT_EQ(typed("x"), Lines{"x"});
    EXPECT_TRUE(input_.isInteractive());
}

TEST_F(InputTest, LineFeedsAloneFail) {
    const std::string message = "unexpected newline found when reading input";
    EXPECT_EQ(plainFailure("a\nb", 'c'), message);
    EXPECT_EQ(plainFailure("a\r\nb\nc", 'c'), message);
    EXPECT_EQ(plainFailure("# a\nb", 'c'), message);
    EXPECT_EQ(pasted("a\n"), Lines{"a"});
}

TEST_F(InputTest, ScriptLinesEndEitherWay) {
    EXPECT_EQ(script("a\r\nb\n\n  \nc"), (Lines{"a", "b", "c"}));
    EXPECT_EQ(script(""), Lines{});
    EXPECT_EQ(script("\n\n"), Lines{});
    EXPECT_EQ(script("# only\n"), Lines{});
}

TEST_F(InputTest, ScriptInUtf8IsTranslated) {
    EXPECT_EQ(script("'\xC3\xA9'"), Lines{"'\xE9'"});
    EXPECT_EQ(script("\xEF\xBB\xBFx=1"), Lines{"x=1"});
    EXPECT_EQ(script("'\xE9'"), Lines{"'\xE9'"});
}

TEST_F(InputTest, LineNumbersOfAScript) {
    file("s.vrp", "\n# one\na\n\n  b\n");
    input_.beginText("use s", '>');
    std::string line, name;
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_EQ(input_.lineNumber(), 3);
    input_.sourceName(name);
    EXPECT_EQ(name, folder_ + "/s.vrp");
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_EQ(line, "{b");
    EXPECT_EQ(input_.lineNumber(), 5);
}

TEST_F(InputTest, BlockComments) {
    EXPECT_EQ(script("a\n##\nb\n# c\n  ## end\nd"), (Lines{"a", "d"}));
    EXPECT_EQ(input_.commentStartLine(), -1);
    EXPECT_EQ(script("a\n## to the end\nb"), Lines{"a"});
    EXPECT_EQ(pasted("a\r\n##\r\nb\r\n##\r\nc"), (Lines{"a", "c"}));
    file("s.vrp", "\n##\nhelp\n##\nx");
    input_.beginText("use s", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_EQ(input_.commentStartLine(), 2);
}

TEST_F(InputTest, EndMarkerEndsAFile) {
    EXPECT_EQ(script("a\n##end_input\nb\n"), Lines{"a"});
    EXPECT_EQ(script("a\n b\n##end_input here\nc"), (Lines{"a", "b"}));
    EXPECT_EQ(script("a\n    b\n##end_input\nc"), (Lines{"a", "{b", "}"}));
    EXPECT_EQ(pasted("a\r\n##end_input\r\nb"), (Lines{"a", "b"}));
}

TEST_F(InputTest, IndentationBecomesBraces) {
    EXPECT_EQ(script("a\n    b\n    c\nd"), (Lines{"a", "{b", "c", "}d"}));
    EXPECT_EQ(script("a\n    b\n        c\nd"), (Lines{"a", "{b", "{c", "}}d"}));
    EXPECT_EQ(script("a\n        b\nc"), (Lines{"a", "{{b", "}}c"}));
    EXPECT_EQ(pasted("a\r\n    b\r\nc"), (Lines{"a", "{b", "}c"}));
}

TEST_F(InputTest, WidthsOfIndentation) {
    for (int width = 0; width < 12; ++width) {
        const int level = (width + 2) / 4;
        const Lines lines = script("a\n" + std::string(static_cast<std::size_t>(width), ' ') + "b\nc");
        EXPECT_EQ(lines[1], std::string(static_cast<std::size_t>(level), '{') + "b") << width;
    }
    EXPECT_EQ(script("a\n\tb\n  \tc\n\t  d\ne"), (Lines{"a", "{b", "c", "{d", "}}e"}));
}

TEST_F(InputTest, CommentsAndBlankLinesLeaveIndentationAlone) {
    EXPECT_EQ(script("a\n    b\n# c\n\n    d\ne"), (Lines{"a", "{b", "d", "}e"}));
}

TEST_F(InputTest, RawLinesLeaveIndentationAlone) {
    file("s.vrp", "a\n        b\nc\n");
    input_.beginText("use s", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    ASSERT_TRUE(input_.getLine(line, false, true));
    EXPECT_EQ(line, "b");
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_EQ(line, "c");
}

TEST_F(InputTest, EndOfAScriptClosesItsBlocks) {
    EXPECT_EQ(script("for i=1:3\n    s=s+i;\n"), (Lines{"for i=1:3", "{s=s+i;", "}"}));
    EXPECT_EQ(script("for i=1:3 {\n s=s+i;\n"), (Lines{"for i=1:3 {", "s=s+i;", "}"}));
    EXPECT_EQ(script("for i=1:3 {\n s=\"{\";\n }\n"), (Lines{"for i=1:3 {", "s=\"{\";", "}"}));
    EXPECT_EQ(pasted("a\r\n    b"), (Lines{"a", "{b", "}"}));
    file("a.vrp", "if x\n    if y\n        z");
    EXPECT_EQ(typed("use a; rest"), (Lines{"if x", "{if y", "{z", "}}", "rest"}));
    file("b.vrp", "use a\nw");
    EXPECT_EQ(typed("use b"), (Lines{"if x", "{if y", "{z", "}}", "w"}));
}

TEST_F(InputTest, OpenTypedBlockIsNotClosed) {
    EXPECT_EQ(typed("for i=1:3 {"), Lines{"for i=1:3 {"});
    EXPECT_EQ(typed("x"), Lines{"x"});
}

TEST_F(InputTest, UseReadsAScriptInPlace) {
    file("a.vrp", "x\ny");
    EXPECT_EQ(typed("use a"), (Lines{"x", "y"}));
    EXPECT_EQ(typed("  use   a.vrp  "), (Lines{"x", "y"}));
    EXPECT_EQ(typed("use a;  z=1; w"), (Lines{"x", "y", "z=1; w"}));
    EXPECT_EQ(input_.lineNumber(), 0);
    EXPECT_EQ(typed("use a;"), (Lines{"x", "y"}));
    EXPECT_EQ(typed("use a # remark; z"), (Lines{"x", "y"}));
    EXPECT_EQ(typed("use a; use a"), (Lines{"x", "y", "x", "y"}));
    EXPECT_EQ(typed("use a; # remark"), (Lines{"x", "y"}));
    file("b.vrp", "p\nuse a; lost\nq");
    EXPECT_EQ(typed("use b"), (Lines{"p", "x", "y", "q"}));
    EXPECT_EQ(pasted("use a; z\r\nw"), (Lines{"x", "y", "z", "w"}));
}

TEST_F(InputTest, UseTakesQuotedNames) {
    file("my file.vrp", "x");
    EXPECT_EQ(typed("use 'my file'"), Lines{"x"});
    EXPECT_EQ(typed("use \"my file\"; y"), (Lines{"x", "y"}));
    EXPECT_EQ(typed("use my file"), Lines{"x"});
    EXPECT_EQ(plainFailure("use 'my file"), "missing closing inverted comma after 'use'");
}

TEST_F(InputTest, UseIsALineOfItsOwn) {
    file("a.vrp", "x");
    EXPECT_EQ(typed("y; use a"), Lines{"y; use a"});
    EXPECT_EQ(typed("user=3"), Lines{"user=3"});
    EXPECT_EQ(typed("use"), Lines{"use"});
    input_.beginText("y +\r\nuse a", 'c');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    ASSERT_TRUE(input_.getLine(line, false, true));
    EXPECT_EQ(line, "use a");
    input_.abandon();
}

TEST_F(InputTest, MissingScripts) {
    EXPECT_EQ(plainFailure("use nosuch"), "could not find script file 'nosuch.vrp'");
    EXPECT_EQ(plainFailure("use nosuch.txt"), "could not find script file 'nosuch.txt'");
    EXPECT_EQ(plainFailure("use "), "could not find script file '.vrp'");
    file("a.vrp", "x\nuse nosuch\n");
    EXPECT_EQ(plainFailure("use a; y"), "line 2: could not find script file 'nosuch.vrp'");
    EXPECT_EQ(paths_.current(), folder_);
    fs::create_directory(folder_ + "/d.vrp");
    EXPECT_EQ(plainFailure("use d"), "could not find script file 'd.vrp'");
}

TEST_F(InputTest, UnreadableScripts) {
    ASSERT_EQ(mkfifo((folder_ + "/pipe.vrp").c_str(), 0600), 0);
    EXPECT_EQ(plainFailure("use pipe"), "could not open script file 'pipe.vrp'");
}

TEST_F(InputTest, ScriptsThatUseEachOtherEnd) {
    file("a.vrp", "use b\n");
    file("b.vrp", "x\nuse a\n");
    EXPECT_EQ(plainFailure("use a"), "line 2: too many nested scripts");
    file("own.vrp", "use own");
    EXPECT_EQ(plainFailure("use own"), "line 1: too many nested scripts");
    EXPECT_EQ(paths_.current(), folder_);
    EXPECT_EQ(typed("x"), Lines{"x"});
}

TEST_F(InputTest, NestingToTheLimit) {
    for (int i = 1; i < 100; ++i) file("n" + std::to_string(i) + ".vrp", "use n" + std::to_string(i + 1));
    file("n100.vrp", "deep");
    EXPECT_EQ(typed("use n1"), Lines{"deep"});
    file("n100.vrp", "use n101");
    file("n101.vrp", "deeper");
    EXPECT_EQ(plainFailure("use n1"), "line 1: too many nested scripts");
}

TEST_F(InputTest, ScriptFindsItsNeighbours) {
    file("sub/a.vrp", "use b\nuse deep/c\nuse b");
    file("sub/b.vrp", "x");
    file("sub/deep/c.vrp", "y");
    input_.beginText("use sub/a; z", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_EQ(paths_.current(), folder_ + "/sub");
    EXPECT_EQ(rest(), (Lines{"y", "x", "z"}));
    EXPECT_EQ(paths_.current(), folder_);
}

TEST_F(InputTest, ScriptOfARecentDirectoryIsFound) {
    file("sub/a.vrp", "x");
    paths_.setCurrent("sub");
    paths_.setCurrent("..");
    EXPECT_EQ(typed("use a"), Lines{"x"});
}

TEST_F(InputTest, BeginFileRunsAScript) {
    file("a.vrp", "x");
    input_.beginFile("a");
    EXPECT_EQ(rest(), Lines{"x"});
    EXPECT_EQ(paths_.current(), folder_);
}

TEST_F(InputTest, AbandonKeepsThePlaceOfTheFailure) {
    file("sub/a.vrp", "x\n  y = 2 +* 3  \nz");
    input_.beginText("use sub/a; w", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    ASSERT_TRUE(input_.getLine(line, false, true));
    input_.abandon();
    EXPECT_EQ(input_.errorLine(), 2);
    EXPECT_EQ(input_.errorText(), "  y = 2 +* 3  ");
    EXPECT_EQ(paths_.current(), folder_);
    EXPECT_FALSE(input_.getLine(line, false, false));
    EXPECT_EQ(typed("again"), Lines{"again"});
}

TEST_F(InputTest, AbandonBehindAUseShowsTheTypedLine) {
    file("a.vrp", "x");
    input_.beginText("use a; y = foo", '>');
    rest();
    input_.abandon();
    EXPECT_EQ(input_.errorLine(), 0);
    EXPECT_EQ(input_.errorText(), "use a; y = foo");
}

TEST_F(InputTest, AbandonInPastedTextShowsOneLine) {
    input_.beginText("x\r\ny\r\nz", 'c');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    ASSERT_TRUE(input_.getLine(line, false, false));
    input_.abandon();
    EXPECT_EQ(input_.errorLine(), 2);
    EXPECT_EQ(input_.errorText(), "y");
}

TEST_F(InputTest, StatementEndsWithItsSource) {
    file("a.vrp", "x\ny = 1 +\n\n# end\n");
    input_.beginText("use a; 2", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    ASSERT_TRUE(input_.getLine(line, false, false));
    try {
        static_cast<void>(scanLine(line, input_));
        FAIL();
    } catch (const SyntaxError& error) {
        EXPECT_EQ(error.message, "dangling operator or more input needed");
    }
    input_.abandon();
    EXPECT_EQ(input_.errorLine(), 2);
    EXPECT_EQ(input_.errorText(), "y = 1 +");
}

TEST_F(InputTest, MissingBodyIsTakenFromTheSourceBefore) {
    file("a.vrp", "if x");
    input_.beginText("use a", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_THROW(input_.getLine(line, true, false), OperatorFailure);
}

TEST_F(InputTest, FunctionsOfAFile) {
    file("f.vrp", "x\n##\nhelp\n##\nfunction y = f(x)\n    y=x;\nend\n# c\nfunctional=1\nfunction g\nend");
    std::optional<InputSource> source = InputSource::openFile(folder_ + "/f.vrp");
    ASSERT_TRUE(source);
    auto found = source->scanForFunction();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->text, "function y = f(x)");
    EXPECT_EQ(found->lineNumber, 5);
    EXPECT_EQ(found->commentStartLine, 2);
    std::string line;
    ASSERT_TRUE(source->getLine(line, false, false));
    EXPECT_EQ(line, "{y=x;");
    found = source->scanForFunction();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->text, "function g");
    EXPECT_EQ(found->lineNumber, 10);
    EXPECT_FALSE(source->scanForFunction());
    EXPECT_FALSE(InputSource::openFile(folder_ + "/nosuch.vrp"));
    EXPECT_FALSE(InputSource::openFile(folder_));
}

TEST_F(InputTest, SeekGoesToALine) {
    file("f.vrp", "a\n    b\n  function y=f\n        c\n  end\nd");
    std::optional<InputSource> source = InputSource::openFile(folder_ + "/f.vrp");
    ASSERT_TRUE(source);
    source->seekLine(3);
    std::string line;
    ASSERT_TRUE(source->getLine(line, false, false));
    EXPECT_EQ(line, "function y=f");
    EXPECT_EQ(source->lineNumber(), 3);
    ASSERT_TRUE(source->getLine(line, false, false));
    EXPECT_EQ(line, "{c");
    ASSERT_TRUE(source->getLine(line, false, false));
    EXPECT_EQ(line, "}end");
    source->seekLine(1000);
    EXPECT_FALSE(source->getLine(line, false, false));
}

TEST_F(InputTest, DeepIndentationIsAClearFailure) {
    file("s.vrp", "a\n" + std::string(100000, ' ') + "b");
    input_.beginText("use s", '>');
    std::string line;
    ASSERT_TRUE(input_.getLine(line, false, false));
    ASSERT_TRUE(input_.getLine(line, false, false));
    EXPECT_THROW(static_cast<void>(scanLine(line, input_)), SyntaxError);
}

}  // namespace
}  // namespace vorpen
