// SPDX-License-Identifier: GPL-3.0-or-later
#include "console/command_history.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "base/counted_string.h"
#include "base/little_endian.h"

namespace vorpen {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

class HistoryTest : public ::testing::Test {
protected:
    HistoryTest() {
        std::string pattern = (fs::temp_directory_path() / "history-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~HistoryTest() override { fs::remove_all(folder_); }

    void put(const std::string& bytes) { std::ofstream(folder_ + "/vorpen_comm.bin", std::ios::binary) << bytes; }
    [[nodiscard]] std::string stored() const {
        std::ifstream in(folder_ + "/vorpen_comm.bin", std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    /// The lines of the file; fails unless it is used up exactly.
    [[nodiscard]] Lines storedLines() const {
        std::istringstream in(stored());
        std::int32_t count = 0;
        EXPECT_TRUE(readLittleEndian(in, count));
        Lines lines;
        for (int i = 0; i < count; ++i) lines.push_back(readCountedString(in).value_or("<end>"));
        EXPECT_EQ(in.peek(), EOF);
        return lines;
    }
    [[nodiscard]] CommandHistory loaded() const {
        CommandHistory history;
        history.loadHistory(folder_);
        return history;
    }

    std::string folder_;
};

std::string fileOf(std::int32_t count, const Lines& lines) {
    std::ostringstream out;
    writeLittleEndian(out, count);
    for (const auto& line : lines) writeCountedString(out, line);
    return out.str();
}

Lines numbered(int first, int last) {
    Lines lines;
    for (int i = first; i <= last; ++i) lines.push_back("line " + std::to_string(i));
    return lines;
}

CommandHistory historyOf(const Lines& lines) {
    CommandHistory history;
    for (const auto& line : lines) history.add(line);
    return history;
}

TEST_F(HistoryTest, BeginsWithAnEmptyEntry) {
    CommandHistory history;
    EXPECT_EQ(history.entries(), Lines{""});
    history.add("");
    EXPECT_EQ(history.entries(), Lines{""});
}

TEST_F(HistoryTest, ARepetitionIsNotStored) {
    EXPECT_EQ(historyOf({"a", "b", "b", "a", ""}).entries(), (Lines{"", "a", "b", "a", ""}));
}

TEST_F(HistoryTest, TheOldestIsOverwrittenInAFullRing) {
    CommandHistory history = historyOf(numbered(1, 59));
    EXPECT_EQ(history.entries().size(), 60u);
    EXPECT_EQ(history.writeIndex(), 0);
    history.add("line 60");
    history.add("line 60");
    history.add("line 61");
    EXPECT_EQ(history.entries().size(), 60u);
    EXPECT_EQ(history.entries()[0], "line 60");
    EXPECT_EQ(history.entries()[1], "line 61");
    EXPECT_EQ(history.entries()[2], "line 2");
    EXPECT_EQ(history.writeIndex(), 2);
    history.beginSearch("");
    EXPECT_EQ(history.previous(), "line 61");
    EXPECT_EQ(history.previous(), "line 60");
    EXPECT_EQ(history.previous(), "line 59");
}

TEST_F(HistoryTest, RecallFindsLinesWithThePrefix) {
    CommandHistory history = historyOf({"plot(x)", "y=3", "plot(y)", "z"});
    history.beginSearch("pl");
    EXPECT_EQ(history.previous(), "plot(y)");
    EXPECT_EQ(history.previous(), "plot(x)");
    EXPECT_EQ(history.previous(), "plot(y)");  // round the ring
    EXPECT_EQ(history.previous(), "plot(x)");
    EXPECT_EQ(history.next(), "plot(y)");
    history.beginSearch("q");
    EXPECT_EQ(history.previous(), "");
    EXPECT_EQ(history.next(), "");
    history.beginSearch("");
    EXPECT_EQ(history.previous(), "z");
    EXPECT_EQ(history.previous(), "plot(y)");
    EXPECT_EQ(history.next(), "z");
}

TEST_F(HistoryTest, NextEndsAtTheNewestOfAFullRing) {
    CommandHistory history = historyOf(numbered(1, 70));
    history.beginSearch("");
    EXPECT_EQ(history.previous(), "line 70");
    EXPECT_EQ(history.previous(), "line 69");
    EXPECT_EQ(history.next(), "line 70");
    EXPECT_EQ(history.next(), "");
    EXPECT_EQ(history.next(), "");
}

TEST_F(HistoryTest, BytesOfTheFile) {
    historyOf({"ab"}).saveHistory(folder_);
    EXPECT_EQ(stored(), std::string("\2\0\0\0\0\0\0\0\0\2\0\0\0ab\0", 16));
}

TEST_F(HistoryTest, TheLastThirtyAreStored) {
    historyOf(numbered(1, 28)).saveHistory(folder_);
    EXPECT_EQ(storedLines().size(), 29u);
    historyOf(numbered(1, 29)).saveHistory(folder_);
    EXPECT_EQ(storedLines().front(), "");
    EXPECT_EQ(storedLines().size(), 30u);
    historyOf(numbered(1, 45)).saveHistory(folder_);
    EXPECT_EQ(storedLines(), numbered(16, 45));
    historyOf(numbered(1, 100)).saveHistory(folder_);
    EXPECT_EQ(storedLines(), numbered(71, 100));
}

TEST_F(HistoryTest, WhatIsStoredEndsAtTheRecallPosition) {
    CommandHistory history = historyOf(numbered(1, 45));
    history.beginSearch("");
    for (int i = 0; i < 3; ++i) (void)history.previous();
    history.saveHistory(folder_);
    EXPECT_EQ(storedLines(), numbered(13, 42));
}

TEST_F(HistoryTest, ComesBack) {
    historyOf({"a", "b"}).saveHistory(folder_);
    CommandHistory history = loaded();
    EXPECT_EQ(history.entries(), (Lines{"", "a", "b"}));
    EXPECT_EQ(history.readIndex(), 3);
    history.beginSearch("");
    EXPECT_EQ(history.previous(), "b");
    history.add("c");
    history.saveHistory(folder_);
    EXPECT_EQ(storedLines(), (Lines{"", "a", "b", "c"}));
}

TEST_F(HistoryTest, ThirtyLinesAndNoNewOneDropTheNewest) {
    historyOf(numbered(1, 45)).saveHistory(folder_);
    const CommandHistory history = loaded();
    EXPECT_EQ(history.entries().size(), 31u);
    EXPECT_EQ(history.readIndex(), 30);
    history.saveHistory(folder_);
    Lines expected = numbered(16, 44);
    expected.insert(expected.begin(), "");
    EXPECT_EQ(storedLines(), expected);
}

TEST_F(HistoryTest, MissingAndCutFiles) {
    EXPECT_EQ(loaded().entries(), Lines{""});
    const std::string whole = fileOf(3, {"", "abc", "de"});
    for (std::size_t length = 0; length < whole.size(); ++length) {
        put(whole.substr(0, length));
        const CommandHistory history = loaded();
        const Lines expected = length < 4 + 5 + 8 ? Lines{""} : Lines{"", "abc"};
        EXPECT_EQ(history.entries(), expected) << length;
        EXPECT_LE(history.readIndex(), static_cast<int>(history.entries().size()));
        history.saveHistory(folder_);
    }
}

TEST_F(HistoryTest, DamagedCounts) {
    for (const std::int32_t count : {-1, 0, 2, 100, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        put(fileOf(count, {"a", "b"}));
        const CommandHistory history = loaded();
        EXPECT_EQ(history.entries().size(), count <= 0 ? 1u : 3u) << count;
        EXPECT_GE(history.readIndex(), 0);
        EXPECT_LE(history.readIndex(), static_cast<int>(history.entries().size()));
        history.saveHistory(folder_);
    }
}

TEST_F(HistoryTest, DamagedLengths) {
    // No bytes are read behind a length that no line has.
    std::ostringstream bytes;
    writeLittleEndian(bytes, std::int32_t{3});
    writeCountedString(bytes, "a");
    writeLittleEndian(bytes, std::int32_t{-5});
    writeCountedString(bytes, "b");
    put(bytes.str());
    EXPECT_EQ(loaded().entries(), (Lines{"", "a", "", "b"}));
}

TEST_F(HistoryTest, TheLongestLineOfAFile) {
    for (const int length : {100001, 100002}) {
        const std::string line(static_cast<std::size_t>(length), 'x');
        put(fileOf(1, {line}));
        EXPECT_EQ(loaded().entries().back(), length == 100001 ? line : "") << length;
    }
}

TEST_F(HistoryTest, ALineTooLongForTheFileDoesNotHideTheOthers) {
    historyOf({"a", std::string(200000, 'x'), "b"}).saveHistory(folder_);
    EXPECT_EQ(loaded().entries(), (Lines{"", "a", "", "b"}));
}

TEST_F(HistoryTest, AFileThatCannotBeWrittenIsPassedOver) {
    historyOf({"a"}).saveHistory(folder_ + "/nowhere");
    fs::create_directory(folder_ + "/vorpen_comm.bin");
    historyOf({"a"}).saveHistory(folder_);
    EXPECT_EQ(loaded().entries(), Lines{""});
}

}  // namespace
}  // namespace vorpen
