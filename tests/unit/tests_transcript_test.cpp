// SPDX-License-Identifier: GPL-3.0-or-later

// The comparison that the transcripts stand on.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "transcript.h"

namespace vorpen {
namespace {

bool matches(const std::string& expected, const std::string& shown) {
    return linesMatch(splitLines(expected), splitLines(shown));
}

TEST(TranscriptLines, BlanksAreFoldedAndEmptyLinesDropped) {
    EXPECT_TRUE(matches("  1   2\n\n3\n", "1 2\n3"));
    EXPECT_TRUE(matches("1\t2", "1 2"));
    EXPECT_FALSE(matches("12", "1 2"));
    EXPECT_FALSE(matches("1\n2", "1 2"));
    EXPECT_TRUE(matches("", "\n \n"));
}

TEST(TranscriptLines, EachLineHasToBeThere) {
    EXPECT_FALSE(matches("1", ""));
    EXPECT_FALSE(matches("", "1"));
    EXPECT_FALSE(matches("1\n2", "1"));
    EXPECT_FALSE(matches("1", "1\n2"));
    EXPECT_FALSE(matches("text", "Text"));
}

TEST(TranscriptLines, StarStandsForAnyLines) {
    EXPECT_TRUE(matches("*", ""));
    EXPECT_TRUE(matches("1\n*\n4", "1\n2\n3\n4"));
    EXPECT_TRUE(matches("1\n*\n4", "1\n4"));
    EXPECT_TRUE(matches("*\n4\n*", "1\n4\n5"));
    EXPECT_FALSE(matches("1\n*\n4", "1\n2\n3"));
    EXPECT_FALSE(matches("*\n4", "4\n5"));
}

TEST(TranscriptLines, RegularExpressionMatchesAsAWhole) {
    EXPECT_TRUE(matches("/1[23]+/", "1232"));
    EXPECT_FALSE(matches("/12/", "123"));
    EXPECT_FALSE(matches("/12/", "012"));
    EXPECT_TRUE(matches("/", "/"));
}

TEST(TranscriptLines, NumbersWithinATolerance) {
    EXPECT_TRUE(matches("~ x = 1.5", "x = 1.5000001"));
    EXPECT_FALSE(matches("~ x = 1.5", "x = 1.50001"));
    EXPECT_FALSE(matches("~ x = 1.5", "y = 1.5"));
    EXPECT_FALSE(matches("~ 1 2", "1"));
    EXPECT_TRUE(matches("~1e-3 1.5", "1.501"));
    EXPECT_FALSE(matches("~1e-9 1.5", "1.5000001"));
    EXPECT_TRUE(matches("~ 0", "1e-13"));
    EXPECT_FALSE(matches("~ 0", "1e-9"));
    EXPECT_TRUE(matches("~ nan -inf", "nan -inf"));
    EXPECT_FALSE(matches("~ nan", "1"));
    EXPECT_FALSE(matches("~ inf", "-inf"));
    EXPECT_TRUE(matches("~ 1.0000001e+300", "1e+300"));
}

class TranscriptFile : public testing::Test {
protected:
    ~TranscriptFile() override { std::filesystem::remove(path_); }
    std::vector<Transcript> read(const std::string& text) {
        std::ofstream(path_) << text;
        return readTranscripts(path_);
    }

private:
    std::string path_ = testing::TempDir() + "transcript_file_test.case";
};

TEST_F(TranscriptFile, HasCasesWithFilesAndSteps) {
    const auto cases = read(
        "# remark\n"
        "=== one [markup]\n"
        "# remark\n"
        "[file a/b.vrp]\n"
        "x=1\n"
        "> no step\n"
        "[end]\n"
        "> use a/b\n"
        "1\n"
        "# output\n"
        ">\n"
        "[expect file out.txt]\n"
        "2\n"
        "[end]\n"
        "\n"
        "=== two\n"
        "> 1\n");
    ASSERT_EQ(cases.size(), 2u);
    EXPECT_EQ(cases[0].name, "one");
    EXPECT_TRUE(cases[0].markup);
    EXPECT_EQ(cases[0].files.at("a/b.vrp"), "x=1\n> no step\n");
    EXPECT_EQ(cases[0].expectedFiles.at("out.txt"), "2\n");
    ASSERT_EQ(cases[0].steps.size(), 2u);
    EXPECT_EQ(cases[0].steps[0].typed, "use a/b");
    EXPECT_EQ(cases[0].steps[0].expected, (std::vector<std::string>{"1", "# output"}));
    EXPECT_EQ(cases[0].steps[1].typed, "");
    EXPECT_EQ(cases[1].name, "two");
    EXPECT_FALSE(cases[1].markup);
}

TEST_F(TranscriptFile, TellsWhatItCannotRead) {
    EXPECT_THROW(read("text\n=== one\n"), std::runtime_error);
    EXPECT_THROW(read("=== one\ntext\n> 1\n"), std::runtime_error);
    EXPECT_THROW(read("=== one\n[file a]\nx\n"), std::runtime_error);
    EXPECT_THROW(readTranscripts("/no/such.case"), std::runtime_error);
}

}  // namespace
}  // namespace vorpen
